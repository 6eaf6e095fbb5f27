#include "WatchedFolders.h"

#include "ScopedEnvironment.h"
#include "TemporaryFolder.h"

#include <gmock/gmock.h>

#include <filesystem>

namespace tidemark {

using testing::ElementsAre;
using testing::IsEmpty;

class WatchedFoldersTest : public testing::Test {
protected:
    WatchedFoldersTest()
    {
        m_folder.makeFolder("home/Desktop");
        m_folder.makeFolder("home/Downloads");
    }

    void configure(const std::string& text) { m_folder.write("home/.config/user-dirs.dirs", text); }
    void remove(std::string_view path) { std::filesystem::remove(m_folder.path(path)); }
    FileURL folder(std::string_view path) { return FileURL::directory(m_folder.path(path)); }

    TemporaryFolder m_folder;
    ScopedHome m_home{m_folder.path("home")};
};

TEST_F(WatchedFoldersTest, TheDesktopComesBeforeTheDownloads)
{
    EXPECT_THAT(
        WatchedFolders::standard(), ElementsAre(folder("home/Desktop"), folder("home/Downloads")));
}

TEST_F(WatchedFoldersTest, AMissingFolderIsLeftOut)
{
    remove("home/Desktop");
    EXPECT_THAT(WatchedFolders::standard(), ElementsAre(folder("home/Downloads")));
    m_folder.makeFolder("home/Desktop");
    remove("home/Downloads");
    EXPECT_THAT(WatchedFolders::standard(), ElementsAre(folder("home/Desktop")));
}

TEST_F(WatchedFoldersTest, AFolderThatIsSetToTheHomeFolderIsLeftOut)
{
    configure("XDG_DESKTOP_DIR=\"$HOME\"\n");
    EXPECT_THAT(WatchedFolders::standard(), ElementsAre(folder("home/Downloads")));
    configure("XDG_DOWNLOAD_DIR=\"$HOME/\"\n");
    EXPECT_THAT(WatchedFolders::standard(), ElementsAre(folder("home/Desktop")));
}

TEST_F(WatchedFoldersTest, FoldersAreWhereTheUserHasThem)
{
    m_folder.makeFolder("home/Schreibtisch");
    m_folder.makeFolder("elsewhere");
    configure("XDG_DOWNLOAD_DIR=\"" + m_folder.path("elsewhere")
        + "\"\nXDG_DESKTOP_DIR=\"$HOME/Schreibtisch\"\n");
    EXPECT_THAT(
        WatchedFolders::standard(), ElementsAre(folder("home/Schreibtisch"), folder("elsewhere")));
}

TEST_F(WatchedFoldersTest, ThereMayBeNone)
{
    remove("home/Desktop");
    configure("XDG_DOWNLOAD_DIR=\"$HOME/\"\n");
    EXPECT_THAT(WatchedFolders::standard(), IsEmpty());
    const ScopedEnvironment home{"HOME", m_folder.path("none")};
    EXPECT_THAT(WatchedFolders::standard(), IsEmpty());
}

}  // namespace tidemark
