#include "ChildProcess.h"
#include "RemoteFixture.h"

#include <sys/stat.h>

#include <filesystem>
#include <system_error>

namespace tidemark {

using RemoteServerSocket = RemoteTest;
using testing::HasSubstr;

namespace fs = std::filesystem;

TEST_F(RemoteServerSocket, IsForTheUserAloneWhateverTheUmask)
{
    const mode_t umask = ::umask(0);
    serve();
    ::umask(umask);
    struct stat status = {};
    ASSERT_EQ(::lstat(m_folder.path("socket").c_str(), &status), 0);
    EXPECT_TRUE(S_ISSOCK(status.st_mode));
    EXPECT_EQ(status.st_mode & 07777, 0600U);
}

TEST_F(RemoteServerSocket, GoesWithTheServer)
{
    serve();
    EXPECT_TRUE(m_folder.holds("socket"));
    m_server.reset();
    EXPECT_FALSE(m_folder.holds("socket"));
    EXPECT_FALSE(RemoteClient::connect(m_folder.url()));
}

TEST_F(RemoteServerSocket, GoesWithTheServerFromAFolderThatWasRenamed)
{
    m_folder.makeFolder("old");
    serve(m_folder.url("old"));
    fs::rename(m_folder.path("old"), m_folder.path("new"));
    EXPECT_TRUE(RemoteClient::connect(m_folder.url("new")));
    m_server.reset();
    EXPECT_FALSE(m_folder.holds("new/socket"));
}

TEST_F(RemoteServerSocket, AnotherOnesStays)
{
    serve();
    fs::remove(m_folder.path("socket"));
    const RawServer other{m_folder.url()};
    m_server.reset();
    EXPECT_TRUE(m_folder.holds("socket"));
    EXPECT_TRUE(RemoteClient::connect(m_folder.url()));
}

TEST_F(RemoteServerSocket, ThatWasRemovedIsNoConcern)
{
    serve();
    fs::remove(m_folder.path("socket"));
    m_server.reset();
    EXPECT_FALSE(m_folder.holds("socket"));
}

TEST_F(RemoteServerSocket, ReplacesTheOneOfAKilledProcess)
{
    ChildProcess killed{[&] {
        const RawServer server{m_folder.url()};
        return 0;
    }};
    ASSERT_EQ(killed.wait(), 0);
    ASSERT_TRUE(m_folder.holds("socket"));
    EXPECT_FALSE(RemoteClient::connect(m_folder.url()));
    serve();
    expectService();
}

TEST_F(RemoteServerSocket, ReplacesNothingThatIsNoSocket)
{
    m_folder.write("socket", "precious");
    try {
        serve();
        FAIL() << "it serves";
    } catch (const fs::filesystem_error& error) {
        EXPECT_EQ(error.code(), std::errc::file_exists);
        EXPECT_EQ(error.path1(), m_folder.path("socket"));
    }
    EXPECT_EQ(m_folder.read("socket"), "precious");

    fs::remove(m_folder.path("socket"));
    m_folder.makeLink("socket", "elsewhere");
    EXPECT_THROW(serve(), fs::filesystem_error);
    EXPECT_TRUE(m_folder.holds("socket"));

    fs::remove(m_folder.path("socket"));
    m_folder.makeFolder("socket");
    EXPECT_THROW(serve(), fs::filesystem_error);
    EXPECT_TRUE(m_folder.holds("socket"));
}

TEST_F(RemoteServerSocket, AFolderThatIsMissingIsAnError)
{
    try {
        serve(m_folder.url("missing"));
        FAIL() << "it serves";
    } catch (const fs::filesystem_error& error) {
        EXPECT_EQ(error.code(), std::errc::no_such_file_or_directory);
        EXPECT_THAT(error.path1().string(), HasSubstr("missing"));
    }
}

TEST_F(RemoteServerSocket, MayLieDeeperThanASocketsAddressReaches)
{
    const std::string deep = std::string(150, 'a') + '/' + std::string(149, 'b');
    m_folder.makeFolder(deep);
    serve(m_folder.url(deep));
    EXPECT_TRUE(m_folder.holds(deep + "/socket"));
    std::optional<RemoteClient> client = RemoteClient::connect(m_folder.url(deep));
    ASSERT_TRUE(client);
    client->send("status");
    nextRequest().reply->finish("all is well");
    EXPECT_EQ(finalMessage(*client), "all is well");
    m_server.reset();
    EXPECT_FALSE(m_folder.holds(deep + "/socket"));
}

TEST_F(RemoteServerSocket, BelongsToOneFolderAlone)
{
    m_folder.makeFolder("one");
    m_folder.makeFolder("two");
    serve(m_folder.url("one"));
    EXPECT_TRUE(RemoteClient::connect(m_folder.url("one")));
    EXPECT_FALSE(RemoteClient::connect(m_folder.url("two")));
}

}  // namespace tidemark
