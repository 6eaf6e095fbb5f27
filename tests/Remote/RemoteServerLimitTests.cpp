#include "ChildProcess.h"
#include "RemoteFixture.h"

#include <QAbstractEventDispatcher>
#include <QSocketNotifier>

#include <fcntl.h>
#include <sys/resource.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>

namespace tidemark {

using RemoteServerLimits = RemoteTest;
using testing::IsEmpty;

namespace {

constexpr std::size_t mostConnections = RemoteServer::mostConnections;

/// Takes every descriptor that this process may have, until the end of the scope.
class ScopedDescriptorShortage {
public:
    ScopedDescriptorShortage()
    {
        ::getrlimit(RLIMIT_NOFILE, &m_limit);
        const rlimit lower{std::min<rlim_t>(m_limit.rlim_cur, 512), m_limit.rlim_max};
        ::setrlimit(RLIMIT_NOFILE, &lower);
        for (int taken = ::dup(0); taken >= 0; taken = ::dup(0))
            m_taken.emplace_back(taken);
    }

    ~ScopedDescriptorShortage() { ::setrlimit(RLIMIT_NOFILE, &m_limit); }

    ScopedDescriptorShortage(const ScopedDescriptorShortage&) = delete;
    ScopedDescriptorShortage& operator=(const ScopedDescriptorShortage&) = delete;

    void giveOneBack() { m_taken.pop_back(); }

private:
    rlimit m_limit = {};
    std::vector<FileDescriptor> m_taken;
};

}  // namespace

TEST_F(RemoteServerLimits, TheClientThatIsSilentForLongestHasToGoWhenAllPlacesAreTaken)
{
    serve();
    std::vector<RawClient> silent;
    for (std::size_t i = 0; i < mostConnections; ++i) {
        silent.emplace_back(m_folder.url());
        // They differ in how much of a request they have sent.
        const std::string bytes = wholeRequest("status");
        EXPECT_TRUE(silent.back().write(bytes.substr(0, i % bytes.size())));
    }
    pumpAll();
    const auto isClosed = [](const RawClient& client) { return client.isClosed(); };
    EXPECT_TRUE(std::ranges::none_of(silent, isClosed));

    expectService();
    EXPECT_TRUE(silent.front().isClosed());
    EXPECT_EQ(std::ranges::count_if(silent, isClosed), 1);

    // There is a free place now.
    expectService();
    EXPECT_EQ(std::ranges::count_if(silent, isClosed), 1);
    EXPECT_THAT(m_requests, IsEmpty());
}

TEST_F(RemoteServerLimits, AFloodOfSilentClientsDoesNotPushOutWhoHasSpokenBefore)
{
    serve();
    std::optional<RemoteClient> client = RemoteClient::connect(m_folder.url());
    ASSERT_TRUE(client);
    client->send("status");
    std::vector<RawClient> silent;
    for (std::size_t i = 0; i < 2 * mostConnections; ++i)
        silent.emplace_back(m_folder.url());
    nextRequest().reply->finish("all is well");
    EXPECT_EQ(finalMessage(*client), "all is well");
    pumpAll();
    expectService();
}

TEST_F(RemoteServerLimits, MoreClientsThanPlacesAreTurnedAwayWhileAllAreAnswered)
{
    serve();
    std::vector<RemoteClient> clients;
    for (std::size_t i = 0; i < mostConnections; ++i)
        clients.push_back(ask("sweep"));

    std::optional<RemoteClient> oneMore = RemoteClient::connect(m_folder.url());
    ASSERT_TRUE(oneMore);
    oneMore->send("status");
    pumpAll();
    EXPECT_FALSE(oneMore->receive());
    EXPECT_EQ(m_requests.size(), mostConnections);

    m_requests.front().reply->finish("done");
    EXPECT_EQ(finalMessage(clients.front()), "done");
    expectService();
}

TEST_F(RemoteServerLimits, WithoutADescriptorLeftAClientIsTurnedAwayAndNothingSpins)
{
    serve();
    // The sanitizers look at what they have not seen before by way of a descriptor.
    expectService();
    pumpAll();
    // Connected, but not accepted so far; the third one leaves again.
    std::vector<RawClient> clients;
    clients.reserve(3);
    for (int i = 0; i < 3; ++i)
        clients.emplace_back(m_folder.url());
    clients.back().close();
    {
        const ScopedDescriptorShortage shortage;
        pumpUntil([&] { return clients[0].isClosed() && clients[1].isClosed(); });
        pumpAll();
        EXPECT_FALSE(QAbstractEventDispatcher::instance()->processEvents(QEventLoop::AllEvents));
    }
    EXPECT_EQ(clients[0].read(), "");
    expectService();
}

TEST_F(RemoteServerLimits, TheLastDescriptorServesAClient)
{
    serve();
    expectService();
    const RawClient first{m_folder.url()};
    const RawClient second{m_folder.url()};
    ScopedDescriptorShortage shortage;
    shortage.giveOneBack();
    pumpUntil([&] { return second.isClosed(); });
    EXPECT_TRUE(first.write(wholeRequest("status")));
    nextRequest().reply->finish("all is well");
    EXPECT_TRUE(first.isClosed());
    EXPECT_EQ(first.read(), greeting() + framed(RemoteProtocol::MessageKind::final, "all is well"));
}

TEST_F(RemoteServerLimits, AProcessOfAnotherUserIsNotLetIn)
{
    if (::geteuid() != 0)
        GTEST_SKIP() << "only root can be two users";
    enum Result { refused, notAUser, noSocket, letIn };
    serve();
    // Nothing but the look at who it is keeps the other user out.
    ASSERT_EQ(::chmod(m_folder.path().c_str(), 0755), 0);
    ASSERT_EQ(::chmod(m_folder.path("socket").c_str(), 0666), 0);
    ChildProcess other{[&]() -> int {
        if (!becomeOrdinaryUser())
            return notAUser;
        std::optional<RemoteClient> client = RemoteClient::connect(m_folder.url());
        if (!client)
            return noSocket;
        client->send("pause");
        return client->receive() ? letIn : refused;
    }};
    bool hasEnded = false;
    const QSocketNotifier end{other.descriptor(), QSocketNotifier::Read};
    QObject::connect(&end, &QSocketNotifier::activated, &end, [&] { hasEnded = true; });
    pumpUntil([&] { return hasEnded; });
    EXPECT_EQ(other.wait(), refused);
    EXPECT_THAT(m_requests, IsEmpty());
    expectService();
}

}  // namespace tidemark
