#include "RemoteClient.h"

#include "ChildProcess.h"
#include "RawSockets.h"
#include "TemporaryFolder.h"

#include <gmock/gmock.h>

#include <sys/stat.h>
#include <unistd.h>

#include <filesystem>
#include <system_error>
#include <vector>

namespace tidemark {

using RemoteProtocol::MessageKind;

namespace {

/// Connects, sends a request, and has the server take it.
RemoteClient ask(const FileURL& supportFolder, RawServer& server)
{
    RemoteClient client = RemoteClient::connect(supportFolder).value();
    client.send("status");
    server.accept(wholeRequest("status").size());
    return client;
}

/// Tells another process, or hears from one.
class Pipe {
public:
    Pipe()
    {
        int ends[2];
        if (::pipe(ends) != 0)
            throw std::system_error{errno, std::generic_category()};
        m_read = FileDescriptor{ends[0]};
        m_write = FileDescriptor{ends[1]};
    }

    void tell() const { EXPECT_EQ(::write(m_write.get(), "x", 1), 1); }

    /// False if the other process ends without a word; it must be the only one that could speak.
    bool hears()
    {
        m_write.close();
        char byte = 0;
        return ::read(m_read.get(), &byte, 1) == 1;
    }

private:
    FileDescriptor m_read;
    FileDescriptor m_write;
};

template <typename Call>
std::error_code failureOf(Call call, const std::string& path)
{
    try {
        call();
    } catch (const std::filesystem::filesystem_error& error) {
        EXPECT_EQ(error.path1(), path);
        return error.code();
    }
    return {};
}

}  // namespace

TEST(RemoteClient, IsNotThereWhenNobodyServes)
{
    const TemporaryFolder folder;
    folder.makeFolder("no socket");
    EXPECT_FALSE(RemoteClient::connect(folder.url("no folder")));
    EXPECT_FALSE(RemoteClient::connect(folder.url("no socket")));

    {
        folder.makeFolder("stale");
        const RawServer server{folder.url("stale")};
        EXPECT_TRUE(RemoteClient::connect(folder.url("stale")));
    }
    EXPECT_TRUE(folder.holds("stale/socket"));
    EXPECT_FALSE(RemoteClient::connect(folder.url("stale")));
}

TEST(RemoteClient, WhatIsNoSocketIsAnErrorSinceNobodyCanEverServeThere)
{
    const TemporaryFolder folder;
    folder.write("support/socket", "");
    const auto connect = [&] { RemoteClient::connect(folder.url("support")); };
    EXPECT_EQ(failureOf(connect, folder.path("support/socket")), std::errc::not_a_socket);
}

TEST(RemoteClient, AFolderThatCannotBeOneIsAnError)
{
    const TemporaryFolder folder;
    folder.write("file", "");
    const std::string path = folder.path("file");
    EXPECT_EQ(failureOf([&] { RemoteClient::connect(folder.url("file")); }, path),
        std::errc::not_a_directory);
}

TEST(RemoteClient, AServerOfAnotherUserIsAnError)
{
    if (::geteuid() != 0)
        GTEST_SKIP() << "only root can be two users";
    const TemporaryFolder folder;
    folder.makeFolder("open");
    ASSERT_EQ(::chmod(folder.path().c_str(), 0755), 0);
    ASSERT_EQ(::chmod(folder.path("open").c_str(), 0777), 0);
    Pipe ready;
    const ChildProcess other{[&] {
        if (!becomeOrdinaryUser())
            return 1;
        const RawServer server{folder.url("open")};
        ready.tell();
        return ::pause();
    }};
    ASSERT_TRUE(ready.hears());
    const std::string path = folder.path("open/socket");
    EXPECT_EQ(failureOf([&] { RemoteClient::connect(folder.url("open")); }, path),
        std::errc::operation_not_permitted);
}

TEST(RemoteClient, TrustsAServerOfRoot)
{
    if (::geteuid() != 0)
        GTEST_SKIP() << "only root can be two users";
    const TemporaryFolder folder;
    const RawServer server{folder.url()};
    ASSERT_EQ(::chmod(folder.path().c_str(), 0755), 0);
    ASSERT_EQ(::chmod(folder.path("socket").c_str(), 0666), 0);
    ChildProcess other{
        [&] { return becomeOrdinaryUser() && RemoteClient::connect(folder.url()) ? 0 : 1; }};
    EXPECT_EQ(other.wait(), 0);
}

TEST(RemoteClient, NoticesAServerThatIsKilled)
{
    const TemporaryFolder folder;
    Pipe ready;
    Pipe served;
    ChildProcess killed{[&] {
        RawServer server{folder.url()};
        ready.tell();
        server.accept(wholeRequest("sweep").size());
        server.write(greeting() + framed(MessageKind::interim, "half"));
        served.tell();
        return ::pause();
    }};
    ASSERT_TRUE(ready.hears());
    std::optional<RemoteClient> client = RemoteClient::connect(folder.url());
    ASSERT_TRUE(client);
    client->send("sweep");
    ASSERT_TRUE(served.hears());
    killed.kill();
    ASSERT_TRUE(client->receive());
    EXPECT_FALSE(client->receive());
    EXPECT_FALSE(RemoteClient::connect(folder.url()));
}

TEST(RemoteClient, ReadsWhatIsWholeOfAnAnswerCutAtAnyByte)
{
    const std::string start = greeting() + framed(MessageKind::interim, "half");
    const std::string whole = start + framed(MessageKind::final, "done");
    const TemporaryFolder folder;
    RawServer server{folder.url()};
    for (std::size_t cut = 0; cut <= whole.size(); ++cut) {
        SCOPED_TRACE(testing::Message() << "cut at byte " << cut);
        RemoteClient client = ask(folder.url(), server);
        server.write(whole.substr(0, cut));
        server.closeConnection();
        std::vector<std::string> messages;
        while (const auto message = client.receive())
            messages.push_back(message->text);
        std::vector<std::string> expected;
        if (cut >= start.size())
            expected.emplace_back("half");
        if (cut >= whole.size())
            expected.emplace_back("done");
        EXPECT_EQ(messages, expected);
    }
}

TEST(RemoteClient, AnotherVersionOfTheProtocolIsAClearError)
{
    const TemporaryFolder folder;
    RawServer server{folder.url()};
    RemoteClient client = ask(folder.url(), server);
    server.write("\x02");
    server.closeConnection();
    const std::string path = folder.path("socket");
    EXPECT_EQ(failureOf([&] { client.receive(); }, path), std::errc::protocol_not_supported);
}

TEST(RemoteClient, HearsOfAnotherVersionEvenIfTheServerHasGoneBeforeTheRequest)
{
    const TemporaryFolder folder;
    RawServer server{folder.url()};
    RemoteClient client = RemoteClient::connect(folder.url()).value();
    server.accept(0);
    server.write("\x02");
    server.closeConnection();
    client.send("status");
    const std::string path = folder.path("socket");
    EXPECT_EQ(failureOf([&] { client.receive(); }, path), std::errc::protocol_not_supported);
}

TEST(RemoteClient, NonsenseIsAnError)
{
    const TemporaryFolder folder;
    RawServer server{folder.url()};
    const std::string path = folder.path("socket");
    for (const int kind : {0, 1, 4, 255}) {
        RemoteClient client = ask(folder.url(), server);
        server.write(greeting() + framed(static_cast<MessageKind>(kind), "?"));
        EXPECT_EQ(failureOf([&] { client.receive(); }, path), std::errc::protocol_error);
    }
}

TEST(RemoteClient, DoesNotSendMoreThanTheServerTakes)
{
    const TemporaryFolder folder;
    const RawServer server{folder.url()};
    RemoteClient client = RemoteClient::connect(folder.url()).value();
    const std::string text(RemoteProtocol::longestRequest + 1, 'x');
    const std::string path = folder.path("socket");
    EXPECT_EQ(failureOf([&] { client.send(text); }, path), std::errc::message_size);
}

}  // namespace tidemark
