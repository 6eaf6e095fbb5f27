#include "RemoteFixture.h"

#include <future>

namespace tidemark {

using RemoteServerTest = RemoteTest;
using RemoteProtocol::MessageKind;
using testing::IsEmpty;

namespace {

struct Conversation {
    std::vector<std::string> interim;
    std::optional<std::string> final;
};

/// Reads until the final message or the end of the connection.
Conversation readAll(RemoteClient& client)
{
    Conversation conversation;
    while (std::optional<RemoteClient::Message> message = client.receive()) {
        if (message->isFinal) {
            conversation.final = std::move(message->text);
            break;
        }
        conversation.interim.push_back(std::move(message->text));
    }
    return conversation;
}

/// Not the same everywhere, so that a piece that is missing or doubled shows.
std::string longText(std::size_t size)
{
    std::string text(size, '\0');
    std::uint32_t state = 1;
    for (char& c : text) {
        state = state * 1'664'525 + 1'013'904'223;
        c = static_cast<char>(state >> 24);
    }
    return text;
}

}  // namespace

TEST_F(RemoteServerTest, AnswersARequest)
{
    serve();
    RemoteClient client = ask("status");
    const Request request = nextRequest();
    EXPECT_EQ(request.text, "status");
    EXPECT_TRUE(request.reply->isConnected());
    request.reply->finish("all is well");
    EXPECT_FALSE(request.reply->isConnected());
    EXPECT_EQ(finalMessage(client), "all is well");
}

TEST_F(RemoteServerTest, PassesAnyBytesOn)
{
    const std::string everyByte = [] {
        std::string text;
        for (int i = 0; i < 256; ++i)
            text += static_cast<char>(i);
        return text;
    }();
    serve();
    for (const std::string& text : {std::string{}, std::string(1, '\0'), everyByte}) {
        RemoteClient client = ask(text);
        const Request request = nextRequest();
        EXPECT_EQ(request.text, text);
        request.reply->finish(text);
        EXPECT_EQ(finalMessage(client), text);
    }
}

TEST_F(RemoteServerTest, SendsInterimMessagesBeforeTheFinalOne)
{
    serve();
    RemoteClient client = ask("sweep");
    const Request request = nextRequest();
    request.reply->send("a third");
    request.reply->send("");
    request.reply->send("two thirds");
    request.reply->finish("done");
    const Conversation conversation = readAll(client);
    EXPECT_THAT(conversation.interim, testing::ElementsAre("a third", "", "two thirds"));
    EXPECT_EQ(conversation.final, "done");
}

TEST_F(RemoteServerTest, AnInterimMessageArrivesBeforeThereIsAFinalOne)
{
    serve();
    RemoteClient client = ask("sweep");
    const Request request = nextRequest();
    request.reply->send("half");
    const std::optional<RemoteClient::Message> message = client.receive();
    ASSERT_TRUE(message);
    EXPECT_EQ(message->text, "half");
    EXPECT_FALSE(message->isFinal);
}

TEST_F(RemoteServerTest, AnswersInAnyOrder)
{
    serve();
    RemoteClient first = ask("first");
    RemoteClient second = ask("second");
    m_requests.at(1).reply->finish("to the second");
    EXPECT_EQ(finalMessage(second), "to the second");
    m_requests.at(0).reply->finish("to the first");
    EXPECT_EQ(finalMessage(first), "to the first");
}

TEST_F(RemoteServerTest, AFinalMessageOfManyMegabytesArrivesWholeWhileOthersAreServed)
{
    const std::string text = longText(50'000'000);
    serve();
    RemoteClient client = ask("activity");
    const Request request = nextRequest();
    request.reply->finish(text);
    EXPECT_TRUE(request.reply->isConnected());
    expectService();

    auto received = std::async(std::launch::async, [&] { return client.receive(); });
    pumpUntil([&] { return !request.reply->isConnected(); });
    const std::optional<RemoteClient::Message> message = received.get();
    ASSERT_TRUE(message);
    EXPECT_TRUE(message->isFinal);
    EXPECT_TRUE(message->text == text);
}

TEST_F(RemoteServerTest, TakesARequestOfOneMebibyte)
{
    const std::string text = longText(RemoteProtocol::longestRequest);
    serve();
    auto answer = std::async(std::launch::async, [&] {
        std::optional<RemoteClient> client = RemoteClient::connect(m_folder.url());
        client->send(text);
        return client->receive();
    });
    const Request request = nextRequest();
    EXPECT_TRUE(request.text == text);
    request.reply->finish("taken");
    EXPECT_EQ(answer.get()->text, "taken");
}

TEST_F(RemoteServerTest, PutsARequestTogetherFromAnyPieces)
{
    const std::string bytes = wholeRequest("status");
    serve();
    for (std::size_t cut = 0; cut <= bytes.size(); ++cut) {
        SCOPED_TRACE(testing::Message() << "cut at byte " << cut);
        const RawClient client{m_folder.url()};
        EXPECT_TRUE(client.write(bytes.substr(0, cut)));
        pumpAll();
        EXPECT_TRUE(client.write(bytes.substr(cut)));
        EXPECT_EQ(nextRequest().text, "status");
    }
}

TEST_F(RemoteServerTest, DropsInterimMessagesThatNobodyReadsButNeverTheFinalOne)
{
    constexpr int count = 8192;
    serve();
    RemoteClient client = ask("sweep");
    const Request request = nextRequest();
    for (int i = 0; i < count; ++i)
        request.reply->send(std::to_string(i) + std::string(1024, '.'));
    request.reply->finish("done");

    auto received = std::async(std::launch::async, [&] { return readAll(client); });
    pumpUntil([&] { return !request.reply->isConnected(); });
    const Conversation conversation = received.get();
    EXPECT_EQ(conversation.final, "done");
    const auto arrived = static_cast<int>(conversation.interim.size());
    EXPECT_GT(arrived, 1000);
    EXPECT_LT(arrived, count / 2);
    for (int i = 0; i < arrived; ++i)
        EXPECT_EQ(std::stoi(conversation.interim[static_cast<std::size_t>(i)]), i);
}

TEST_F(RemoteServerTest, AReplyThatIsNotKeptClosesTheConnection)
{
    RemoteServer server{m_folder.url(), [](const std::string&, const auto&) {}};
    std::optional<RemoteClient> client = RemoteClient::connect(m_folder.url());
    ASSERT_TRUE(client);
    client->send("status");
    pumpAll();
    EXPECT_FALSE(client->receive());
}

TEST_F(RemoteServerTest, AReplyThatIsGivenUpClosesTheConnection)
{
    serve();
    RemoteClient client = ask("status");
    m_requests.clear();
    EXPECT_FALSE(client.receive());
    expectService();
}

TEST_F(RemoteServerTest, AnswersFromWithinTheHandler)
{
    RemoteServer server{m_folder.url(), [](const std::string& text, const auto& reply) {
                            reply->send("on it");
                            reply->finish(text + " done");
                        }};
    std::optional<RemoteClient> client = RemoteClient::connect(m_folder.url());
    ASSERT_TRUE(client);
    client->send("pause");
    pumpAll();
    const Conversation conversation = readAll(*client);
    EXPECT_THAT(conversation.interim, testing::ElementsAre("on it"));
    EXPECT_EQ(conversation.final, "pause done");
}

TEST_F(RemoteServerTest, NothingFollowsTheFinalMessage)
{
    serve();
    RemoteClient client = ask("status");
    const Request request = nextRequest();
    request.reply->finish("once");
    request.reply->send("again");
    request.reply->finish("twice");
    EXPECT_EQ(finalMessage(client), "once");
    EXPECT_FALSE(client.receive());
}

TEST_F(RemoteServerTest, AClientMayLeaveBeforeTheAnswer)
{
    serve();
    {
        const RemoteClient client = ask("sweep");
    }
    const Request request = nextRequest();
    pumpUntil([&] { return !request.reply->isConnected(); });
    request.reply->send("half");
    request.reply->finish("done");
    expectService();
}

TEST_F(RemoteServerTest, AClientMayLeaveUnnoticed)
{
    serve();
    {
        const RemoteClient client = ask("sweep");
    }
    const Request request = nextRequest();
    EXPECT_TRUE(request.reply->isConnected());
    request.reply->send("half");
    EXPECT_FALSE(request.reply->isConnected());
    request.reply->finish("done");
    expectService();
}

TEST_F(RemoteServerTest, AClientMayLeaveInTheMiddleOfTheAnswer)
{
    serve();
    std::optional<RemoteClient> client = ask("activity");
    const Request request = nextRequest();
    request.reply->finish(longText(5'000'000));
    pumpAll();
    EXPECT_TRUE(request.reply->isConnected());
    client.reset();
    pumpUntil([&] { return !request.reply->isConnected(); });
    expectService();
}

TEST_F(RemoteServerTest, ARequestIsTakenFromAClientThatHasLeft)
{
    serve();
    {
        const RawClient client{m_folder.url()};
        ASSERT_TRUE(client.write(wholeRequest("pause")));
    }
    EXPECT_EQ(nextRequest().text, "pause");
}

TEST_F(RemoteServerTest, ARequestCutAtAnyByteCostsNothing)
{
    const std::string bytes = wholeRequest("sweep");
    serve();
    expectService();
    const std::size_t before = openDescriptors();
    for (std::size_t cut = 0; cut < bytes.size(); ++cut) {
        const RawClient client{m_folder.url()};
        EXPECT_TRUE(client.write(bytes.substr(0, cut)));
        // Every other one leaves before the server has looked.
        if (cut % 2 == 0)
            pumpAll();
    }
    pumpAll();
    EXPECT_THAT(m_requests, IsEmpty());
    EXPECT_EQ(openDescriptors(), before);
    expectService();
}

TEST_F(RemoteServerTest, NonsenseClosesTheConnection)
{
    struct Row {
        const char* name;
        std::string bytes;
    };
    const std::string tooLong{"\x01\x00\x00\x10\x01", 5};
    const std::string longest{"\xff\xff\xff\xff\x01", 5};
    const Row rows[] = {
        {"another protocol's version", "\x02" + framed(MessageKind::request, "status")},
        {"no version", framed(MessageKind::request, "status")},
        {"another protocol", "GET / HTTP/1.1\r\n\r\n"},
        {"an interim message", greeting() + framed(MessageKind::interim, "status")},
        {"a final message", greeting() + framed(MessageKind::final, "status")},
        {"no such kind", greeting() + framed(static_cast<MessageKind>(0), "status")},
        {"a byte more than a mebibyte", greeting() + tooLong},
        {"the greatest length", greeting() + longest},
        {"more than one request", wholeRequest("status") + "x"},
        {"noise", longText(1000)},
    };
    serve();
    for (const Row& row : rows) {
        SCOPED_TRACE(row.name);
        const RawClient client{m_folder.url()};
        ASSERT_TRUE(client.write(row.bytes));
        pumpUntil([&] { return client.isClosed(); });
        EXPECT_EQ(client.read(), greeting());
        EXPECT_THAT(m_requests, IsEmpty());
    }
    expectService();
}

TEST_F(RemoteServerTest, WhoSpeaksAfterTheRequestIsNotAnswered)
{
    serve();
    const RawClient client{m_folder.url()};
    ASSERT_TRUE(client.write(wholeRequest("status")));
    const Request request = nextRequest();
    ASSERT_TRUE(client.write(wholeRequest("status")));
    pumpUntil([&] { return client.isClosed(); });
    EXPECT_FALSE(request.reply->isConnected());
    EXPECT_THAT(m_requests, IsEmpty());
    expectService();
}

TEST_F(RemoteServerTest, ItsEndIsNoticedByWhoWaitsForAnAnswer)
{
    serve();
    RemoteClient waiting = ask("sweep");
    RemoteClient inTheMiddle = ask("activity");
    m_requests.at(1).reply->finish(longText(5'000'000));
    std::optional<RemoteClient> notAccepted = RemoteClient::connect(m_folder.url());
    ASSERT_TRUE(notAccepted);
    notAccepted->send("status");
    m_server.reset();
    EXPECT_FALSE(waiting.receive());
    EXPECT_FALSE(inTheMiddle.receive());
    EXPECT_FALSE(notAccepted->receive());
}

TEST_F(RemoteServerTest, AReplyMayOutliveIt)
{
    serve();
    RemoteClient client = ask("sweep");
    Request request = nextRequest();
    m_server.reset();
    EXPECT_FALSE(request.reply->isConnected());
    request.reply->send("half");
    request.reply->finish("done");
    request.reply.reset();
    EXPECT_FALSE(client.receive());
}

}  // namespace tidemark
