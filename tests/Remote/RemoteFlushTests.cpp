#include "RemoteFixture.h"

#include <chrono>
#include <future>

namespace tidemark {

using RemoteFlush = RemoteTest;
using std::chrono::milliseconds;
using std::chrono::seconds;

namespace {

const std::string& largeText()
{
    static const std::string text(5'000'000, 'x');
    return text;
}

}  // namespace

TEST_F(RemoteFlush, WritesWhatIsPendingWithoutTheEventLoop)
{
    serve();
    RemoteClient first = ask("activity");
    RemoteClient second = ask("activity");
    for (const Request& request : m_requests)
        request.reply->finish(largeText());
    auto received = std::async(std::launch::async, [&] {
        return std::pair{first.receive(), second.receive()};
    });
    EXPECT_TRUE(m_server->flush(seconds{60}));
    m_server.reset();
    const auto [toFirst, toSecond] = received.get();
    ASSERT_TRUE(toFirst && toSecond);
    EXPECT_TRUE(toFirst->text == largeText());
    EXPECT_TRUE(toSecond->text == largeText());
}

TEST_F(RemoteFlush, EndsAtItsTimeWhenAClientDoesNotRead)
{
    serve();
    const RemoteClient client = ask("activity");
    const Request request = nextRequest();
    request.reply->finish(largeText());
    EXPECT_FALSE(m_server->flush(milliseconds{0}));
    EXPECT_FALSE(m_server->flush(milliseconds{20}));
    EXPECT_TRUE(request.reply->isConnected());
}

TEST_F(RemoteFlush, DoesNotWaitForAClientThatHasLeft)
{
    serve();
    std::optional<RemoteClient> client = ask("activity");
    nextRequest().reply->finish(largeText());
    client.reset();
    EXPECT_TRUE(m_server->flush(std::chrono::hours{1}));
}

TEST_F(RemoteFlush, HasNothingToDoWithoutFinalMessages)
{
    serve();
    EXPECT_TRUE(m_server->flush(std::chrono::hours{1}));
    const RawClient silent{m_folder.url()};
    const RemoteClient client = ask("sweep");
    for (int i = 0; i < 100; ++i)
        m_requests.front().reply->send(std::string(10'000, '.'));
    EXPECT_TRUE(m_server->flush(std::chrono::hours{1}));
}

}  // namespace tidemark
