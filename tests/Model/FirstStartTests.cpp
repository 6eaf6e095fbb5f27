#include "FirstStart.h"
#include "ModelFixture.h"

#include <fstream>

namespace tidemark {

using testing::ElementsAre;

/// A start with no folder in the settings.
class FirstStartTest : public ModelTest {
protected:
    Workspace& workspace()
    {
        m_workspace = std::make_unique<Workspace>(m_home.url("support"), m_files, m_clock);
        return *m_workspace;
    }

    std::vector<std::string> paths() const
    {
        std::vector<std::string> result;
        for (const WatchedFolder& folder : m_workspace->controller().settings().folders)
            result.push_back(folder.path);
        return result;
    }
};

TEST_F(FirstStartTest, WatchesDesktopAndThenDownloadsByTheDefaultRules)
{
    m_home.makeFolder("Downloads");
    m_home.makeFolder("Desktop");
    EXPECT_TRUE(seedStandardFolders(workspace()));
    EXPECT_THAT(paths(), ElementsAre(m_home.path("Desktop"), m_home.path("Downloads")));
    for (const WatchedFolder& folder : savedSettings().folders) {
        EXPECT_EQ(folder.rules.size(), AppModel::defaultRules().size());
        EXPECT_TRUE(folder.sortsMarkdown);
    }
    EXPECT_FALSE(savedSettings().hasOnboarded);
}

TEST_F(FirstStartTest, LeavesOutWhatTheUserDoesNotHave)
{
    struct Row {
        const char* name;
        const char* configuration;
        std::vector<std::string> folders;
    };
    const std::string home = m_home.path();
    m_home.makeFolder("Downloads");
    m_home.makeFolder("Schreibtisch");
    const Row rows[] = {
        {"no desktop", "", {home + "/Downloads"}},
        {"the desktop is the home folder", "XDG_DESKTOP_DIR=\"$HOME/\"\n", {home + "/Downloads"}},
        {"both are", "XDG_DESKTOP_DIR=\"$HOME/\"\nXDG_DOWNLOAD_DIR=\"$HOME\"\n", {}},
        {"elsewhere", "XDG_DESKTOP_DIR=\"$HOME/Schreibtisch\"\n",
            {home + "/Schreibtisch", home + "/Downloads"}},
        {"does not exist", "XDG_DOWNLOAD_DIR=\"$HOME/none\"\n", {}},
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(row.name);
        std::filesystem::remove_all(m_home.path("support"));
        const std::string configuration = qEnvironmentVariable("XDG_CONFIG_HOME").toStdString();
        std::filesystem::create_directories(configuration);
        std::ofstream{configuration + "/user-dirs.dirs"} << row.configuration;
        EXPECT_EQ(seedStandardFolders(workspace()), !row.folders.empty());
        EXPECT_EQ(paths(), row.folders);
    }
}

TEST_F(FirstStartTest, ChangesNothingWhenFoldersAreConfigured)
{
    m_home.makeFolder("Desktop");
    writeSettings(watching({"mine"}));
    EXPECT_FALSE(seedStandardFolders(workspace()));
    EXPECT_THAT(paths(), ElementsAre(m_home.path("mine")));
}

TEST_F(FirstStartTest, GoesOnWhenTheSettingsCannotBeSaved)
{
    m_home.makeFolder("Desktop");
    Workspace& made = workspace();
    m_files.setFaults({failEvery(FileCall::writeAtomically, std::errc::no_space_on_device)});
    EXPECT_TRUE(seedStandardFolders(made));
    EXPECT_THAT(paths(), ElementsAre(m_home.path("Desktop")));
    EXPECT_FALSE(m_home.holds("support/settings.json"));
}

}  // namespace tidemark
