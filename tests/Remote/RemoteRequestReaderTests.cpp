#include "RemoteRequestReader.h"

#include "RawSockets.h"

#include <gmock/gmock.h>

namespace tidemark {

using State = RemoteRequestReader::State;
using RemoteProtocol::MessageKind;

TEST(RemoteRequestReader, TakesARequestInAnyTwoPieces)
{
    const std::string bytes = wholeRequest("status");
    for (std::size_t cut = 0; cut < bytes.size(); ++cut) {
        SCOPED_TRACE(testing::Message() << "cut at byte " << cut);
        RemoteRequestReader reader;
        EXPECT_EQ(reader.take(bytes.substr(0, cut)), State::incomplete);
        EXPECT_EQ(reader.take(bytes.substr(cut)), State::complete);
        EXPECT_EQ(reader.takeText(), "status");
    }
}

TEST(RemoteRequestReader, KnowsNonsenseByTheFirstByteThatShowsIt)
{
    RemoteRequestReader wrongVersion;
    EXPECT_EQ(wrongVersion.take("\x02"), State::broken);

    const std::string wrongKind = greeting() + framed(MessageKind::final, "");
    RemoteRequestReader reader;
    EXPECT_EQ(reader.take(wrongKind.substr(0, 5)), State::incomplete);
    EXPECT_EQ(reader.take(wrongKind.substr(5)), State::broken);
    EXPECT_EQ(reader.take(wholeRequest("status")), State::broken);
}

TEST(RemoteRequestReader, KnowsALengthByItsBytes)
{
    const std::string header = framed(MessageKind::request, std::string(0x12345, 'x')).substr(0, 5);
    EXPECT_EQ(header, std::string("\x45\x23\x01\x00\x01", 5));
    const RemoteProtocol::Header read = RemoteProtocol::header("\x45\x23\x01\xff\x03");
    EXPECT_EQ(read.length, 0xff012345);
    EXPECT_TRUE(read.is(MessageKind::final));
}

TEST(RemoteRequestReader, AcceptsOneMebibyteAndNoMore)
{
    const std::string longest(RemoteProtocol::longestRequest, 'x');
    RemoteRequestReader reader;
    EXPECT_EQ(reader.take(wholeRequest(longest)), State::complete);
    EXPECT_EQ(reader.take("x"), State::broken);

    RemoteRequestReader other;
    EXPECT_EQ(other.take(wholeRequest(longest + 'x').substr(0, 6)), State::broken);
}

}  // namespace tidemark
