#include "RemoteAddress.h"

#include "PrivateMounts.h"
#include "RemoteClient.h"
#include "RemoteListener.h"
#include "TemporaryFolder.h"

#include <gmock/gmock.h>

#include <filesystem>
#include <system_error>

namespace tidemark {

namespace {

/// Of the failure to make a listener; no error if it can be made.
std::error_code failureToListen(const FileURL& supportFolder)
{
    try {
        const RemoteListener listener{supportFolder};
    } catch (const std::filesystem::filesystem_error& error) {
        return error.code();
    }
    return {};
}

}  // namespace

TEST(RemoteAddress, WorksByItsPathWhereThereIsNoProc)
{
    const TemporaryFolder folder;
    if (folder.path("socket").size() > 107)
        GTEST_SKIP() << "the temporary folder's path is too long for a socket";
    const std::string deep(200, 'a');
    folder.makeFolder(deep);
    testWithPrivateMounts([&] {
        mountMemory("/proc");
        {
            const RemoteListener listener{folder.url()};
            EXPECT_TRUE(folder.holds("socket"));
            EXPECT_TRUE(RemoteClient::connect(folder.url()));
        }
        EXPECT_FALSE(folder.holds("socket"));
        EXPECT_EQ(failureToListen(folder.url(deep)), std::errc::filename_too_long);
        EXPECT_THROW(RemoteClient::connect(folder.url(deep)), std::filesystem::filesystem_error);
    });
}

TEST(RemoteAddress, TellsFilesApart)
{
    const TemporaryFolder folder;
    const RemoteAddress address{folder.url()};
    EXPECT_FALSE(address.file());
    folder.write("socket", "");
    const auto file = address.file();
    ASSERT_TRUE(file);
    EXPECT_FALSE(file->isSocket);
    EXPECT_EQ(address.file(), file);
    folder.write("other", "");
    std::filesystem::rename(folder.path("other"), folder.path("socket"));
    EXPECT_NE(address.file(), file);
}

}  // namespace tidemark
