#include "StandardFolders.h"

#include "AppSupport.h"
#include "ScopedEnvironment.h"
#include "TemporaryFolder.h"

#include <gtest/gtest.h>

#include <pwd.h>
#include <sys/stat.h>
#include <unistd.h>

#include <filesystem>

namespace tidemark {

class StandardFoldersTest : public testing::Test {
protected:
    StandardFoldersTest()
    {
        m_folder.makeFolder("home/Desktop");
        m_folder.makeFolder("home/Downloads");
    }

    void configure(const std::string& text) { m_folder.write("home/.config/user-dirs.dirs", text); }
    FileURL folder(std::string_view path) { return FileURL::directory(m_folder.path(path)); }

    TemporaryFolder m_folder;
    ScopedHome m_home{m_folder.path("home")};
};

TEST_F(StandardFoldersTest, WithoutConfigurationTheyHaveTheUsualNames)
{
    EXPECT_EQ(StandardFolders::home(), folder("home"));
    EXPECT_EQ(StandardFolders::desktop(), folder("home/Desktop"));
    EXPECT_EQ(StandardFolders::downloads(), folder("home/Downloads"));
}

TEST_F(StandardFoldersTest, WhatDoesNotExistIsNotThere)
{
    std::filesystem::remove(m_folder.path("home/Desktop"));
    std::filesystem::remove(m_folder.path("home/Downloads"));
    m_folder.write("home/Downloads", "a file");
    EXPECT_EQ(StandardFolders::desktop(), std::nullopt);
    EXPECT_EQ(StandardFolders::downloads(), std::nullopt);
    m_folder.makeFolder("home/Desktop");
    EXPECT_EQ(StandardFolders::desktop(), folder("home/Desktop"));
}

TEST_F(StandardFoldersTest, ALinkToAFolderIsAFolder)
{
    std::filesystem::remove(m_folder.path("home/Desktop"));
    m_folder.makeFolder("elsewhere");
    m_folder.makeLink("home/Desktop", "../elsewhere");
    EXPECT_EQ(StandardFolders::desktop(), folder("home/Desktop"));
}

struct ConfigurationRow {
    const char* name;
    std::string text;
    std::optional<std::string> expected;  // below the temporary folder
};

TEST_F(StandardFoldersTest, TheUsersConfigurationCounts)
{
    m_folder.makeFolder("home/Schreib tisch");
    m_folder.makeFolder("home/quo\"te\\$");
    m_folder.makeFolder("elsewhere");
    m_folder.makeLink("alias", "home");
    const std::optional<std::string> none;
    const ConfigurationRow rows[] = {
        {"in home", "XDG_DESKTOP_DIR=\"$HOME/Schreib tisch\"\n", "home/Schreib tisch"},
        {"absolute", "XDG_DESKTOP_DIR=\"" + m_folder.path("elsewhere") + "\"", "elsewhere"},
        {"trailing slash", "XDG_DESKTOP_DIR=\"$HOME/Schreib tisch/\"", "home/Schreib tisch"},
        {"blanks", "  XDG_DESKTOP_DIR = \t\"$HOME/Schreib tisch\"  \r\n", "home/Schreib tisch"},
        {"escapes", "XDG_DESKTOP_DIR=\"$HOME/quo\\\"te\\\\\\$\"\n", "home/quo\"te\\$"},
        {"the last line counts", "XDG_DESKTOP_DIR=\"/none\"\nXDG_DESKTOP_DIR=\"$HOME/Desktop\"\n",
            "home/Desktop"},
        {"comment", "#XDG_DESKTOP_DIR=\"/none\"\n", "home/Desktop"},
        {"another folder", "XDG_DESKTOP_DIRECTORY=\"/none\"\nXDG_MUSIC_DIR=\"/none\"\n",
            "home/Desktop"},
        {"relative", "XDG_DESKTOP_DIR=\"Schreib tisch\"\n", "home/Desktop"},
        {"no quotes", "XDG_DESKTOP_DIR=$HOME/elsewhere\n", "home/Desktop"},
        {"no closing quote", "XDG_DESKTOP_DIR=\"$HOME/Schreib tisch\n", "home/Desktop"},
        {"another variable", "XDG_DESKTOP_DIR=\"$HOMER/a\"\n", "home/Desktop"},
        {"empty", "XDG_DESKTOP_DIR=\"\"\n", "home/Desktop"},
        {"missing", "XDG_DESKTOP_DIR=\"$HOME/none\"\n", none},
        {"home itself", "XDG_DESKTOP_DIR=\"$HOME\"\n", none},
        {"home with slash", "XDG_DESKTOP_DIR=\"$HOME/\"\n", none},
        {"home by its path", "XDG_DESKTOP_DIR=\"" + m_folder.path("home") + "\"\n", none},
        {"home by detours", "XDG_DESKTOP_DIR=\"$HOME/Desktop/..\"\n", none},
        {"home by a link", "XDG_DESKTOP_DIR=\"" + m_folder.path("alias") + "\"\n", none},
    };
    for (const ConfigurationRow& row : rows) {
        configure(row.text);
        const std::optional<FileURL> desktop = StandardFolders::desktop();
        ASSERT_EQ(desktop.has_value(), row.expected.has_value()) << row.name;
        EXPECT_TRUE(!desktop || *desktop == folder(*row.expected))
            << row.name << ": " << desktop->path();
        EXPECT_EQ(StandardFolders::downloads(), folder("home/Downloads")) << row.name;
    }
}

TEST_F(StandardFoldersTest, EachHasItsOwnLine)
{
    m_folder.makeFolder("home/a");
    m_folder.makeFolder("home/b");
    configure("XDG_DOWNLOAD_DIR=\"$HOME/a\"\nXDG_DESKTOP_DIR=\"$HOME/b\"\n");
    EXPECT_EQ(StandardFolders::desktop(), folder("home/b"));
    EXPECT_EQ(StandardFolders::downloads(), folder("home/a"));
}

TEST_F(StandardFoldersTest, TheConfigurationsPlaceFollowsTheEnvironment)
{
    m_folder.write("config/user-dirs.dirs", "XDG_DESKTOP_DIR=\"$HOME/Downloads\"\n");
    {
        const ScopedEnvironment config{"XDG_CONFIG_HOME", m_folder.path("config")};
        EXPECT_EQ(StandardFolders::desktop(), folder("home/Downloads"));
    }
    const ScopedEnvironment config{"XDG_CONFIG_HOME", "relative"};
    EXPECT_EQ(StandardFolders::desktop(), folder("home/Desktop"));
}

TEST_F(StandardFoldersTest, WithoutHOMETheUserDatabaseTellsIt)
{
    const struct passwd* user = ::getpwuid(::getuid());
    for (const std::optional<std::string>& value : {std::optional<std::string>{},
             std::optional<std::string>{""}, std::optional<std::string>{"relative"}}) {
        const ScopedEnvironment home{"HOME", value};
        if (user && user->pw_dir[0] == '/')
            EXPECT_EQ(StandardFolders::home(), FileURL::directory(user->pw_dir));
        else
            EXPECT_THROW(StandardFolders::home(), std::filesystem::filesystem_error);
    }
}

TEST_F(StandardFoldersTest, ThisApplicationsFilesAreInTheDataFolder)
{
    EXPECT_EQ(AppSupport::folder(), folder("home/.local/share/Tidemark"));
    {
        const ScopedEnvironment data{"XDG_DATA_HOME", m_folder.path("data/")};
        EXPECT_EQ(AppSupport::folder(), folder("data/Tidemark"));
    }
    for (const char* invalid : {"", "data", "./data", "~/data"}) {
        const ScopedEnvironment data{"XDG_DATA_HOME", invalid};
        EXPECT_EQ(AppSupport::folder(), folder("home/.local/share/Tidemark")) << invalid;
    }
}

TEST_F(StandardFoldersTest, ThisApplicationsFolderIsForTheUserAlone)
{
    EXPECT_FALSE(m_folder.holds("home/.local"));
    EXPECT_EQ(AppSupport::fileURL("settings.json"),
        m_folder.url("home/.local/share/Tidemark/settings.json"));
    for (const char* path : {"home/.local", "home/.local/share", "home/.local/share/Tidemark"}) {
        struct stat status = {};
        ASSERT_EQ(::stat(m_folder.path(path).c_str(), &status), 0);
        EXPECT_EQ(status.st_mode & 07777, 0700U) << path;
    }
    EXPECT_EQ(AppSupport::fileURL("journal.json").lastPathComponent(), "journal.json");
}

TEST_F(StandardFoldersTest, AFileInTheApplicationsPlaceIsAnError)
{
    m_folder.write("home/.local/share/Tidemark", "");
    EXPECT_THROW(AppSupport::fileURL("settings.json"), std::filesystem::filesystem_error);
}

}  // namespace tidemark
