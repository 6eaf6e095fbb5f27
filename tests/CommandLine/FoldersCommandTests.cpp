#include "CommandLineFixture.h"

#include <gmock/gmock.h>

#include <algorithm>
#include <filesystem>

namespace tidemark {
namespace {

using testing::ElementsAre;
using testing::HasSubstr;

class FoldersCommand : public CommandLineFixture {
protected:
    std::vector<std::string> watchedPaths() const
    {
        std::vector<std::string> paths;
        const QJsonArray folders = json({"folders"}).array();
        for (const auto& folder : folders)
            paths.push_back(text(folder.toObject()["path"]));
        return paths;
    }
};

TEST_F(FoldersCommand, ListSaysWhatToDoWhenThereAreNone)
{
    const Outcome outcome = run({"folders"});

    EXPECT_EQ(outcome.status, 0);
    EXPECT_EQ(outcome.output,
        "No folders watched yet. Add one with: tidemarkctl folders add ~/Downloads\n");
    EXPECT_THAT(everything(), testing::IsEmpty());
    EXPECT_TRUE(json({"folders", "list"}).array().isEmpty());
}

TEST_F(FoldersCommand, AddGivesTheDefaultRules)
{
    home().makeFolder("Inbox");

    const Outcome outcome = run({"folders", "add", "Inbox"});

    EXPECT_EQ(outcome.status, 0) << outcome.error;
    EXPECT_EQ(
        outcome.output, "Watching ~/Inbox\nSee what a sweep would do with: tidemarkctl preview\n");
    const QJsonArray folders = json({"folders"}).array();
    ASSERT_EQ(folders.size(), 1);
    const QJsonObject folder = folders[0].toObject();
    EXPECT_EQ(text(folder["path"]), home().path("Inbox"));
    EXPECT_TRUE(folder["sortsMarkdown"].toBool());
    const QJsonArray rules = folder["rules"].toArray();
    ASSERT_EQ(rules.size(), 3);
    EXPECT_EQ(text(rules[0].toObject()["action"].toObject()["fileScreenshot"].toObject()["into"]),
        "file://" + home().path("Desktop/Screenshots/"));
    EXPECT_EQ(text(rules[2].toObject()["action"].toObject()["archiveByMonth"].toObject()["into"]),
        "file://" + home().path("Downloads/Archive/"));
}

TEST_F(FoldersCommand, PathsAreMadeAbsoluteAndClean)
{
    home().makeFolder("a/b");
    home().makeFolder("real/inner");
    home().makeFolder("real/target");
    home().makeLink("link", "real/inner");
    struct Row {
        const char* given;
        const char* watched;
    };
    for (const Row& row : std::vector<Row>{{".", "a"}, {"b/", "a/b"}, {"./b//.", "a/b"},
             {"..//a/b/..", "a"}, {"../link", "link"}, {"../link/../target", "real/target"}}) {
        SCOPED_TRACE(row.given);
        ASSERT_EQ(runIn(home().path("a"), {"folders", "add", row.given}).status, 0);
        EXPECT_THAT(watchedPaths(), ElementsAre(home().path(row.watched)));
        ASSERT_EQ(runIn(home().path("a"), {"folders", "remove", row.given}).status, 0);
        EXPECT_THAT(watchedPaths(), ElementsAre());
    }
}

TEST_F(FoldersCommand, AddSkipsWhatIsWatchedAlready)
{
    home().makeFolder("a");
    home().makeFolder("b");
    run({"folders", "add", "a"});
    const QJsonDocument before = json({"folders"});

    const Outcome outcome = run({"folders", "add", "a/", "b", "./b"});

    EXPECT_EQ(outcome.status, 0);
    EXPECT_EQ(outcome.output,
        "Watching ~/b\nAlready watching ~/a\nAlready watching ~/b\n"
        "See what a sweep would do with: tidemarkctl preview\n");
    EXPECT_THAT(watchedPaths(), ElementsAre(home().path("a"), home().path("b")));
    EXPECT_EQ(json({"folders"}).array()[0], before.array()[0]);
}

TEST_F(FoldersCommand, AddRefusesWhatIsNoFolderAndSavesNothing)
{
    home().makeFolder("good");
    home().write("file", "");
    home().makeLink("dangling", "nowhere");
    home().makeLink("loop", "loop");
    for (const char* bad : {"missing", "file", "dangling", "loop", "file/below"}) {
        SCOPED_TRACE(bad);
        const Outcome outcome = run({"folders", "add", "good", bad});

        EXPECT_EQ(outcome.status, 1);
        EXPECT_EQ(outcome.output, "");
        EXPECT_THAT(outcome.error, HasSubstr(home().path(bad)));
        EXPECT_EQ(std::ranges::count(outcome.error, '\n'), 1);
        EXPECT_FALSE(std::filesystem::exists(supportPath("settings.json")));
    }
}

TEST_F(FoldersCommand, AddRefusesTheFolderOfTidemarksOwnFiles)
{
    home().makeFolder("In");
    ASSERT_EQ(run({"folders", "add", "In"}).status, 0);
    std::filesystem::create_symlink(supportPath(""), home().path("link"));

    for (const std::string& path : {supportPath(""), home().path("link")}) {
        const Outcome outcome = run({"folders", "add", path});
        EXPECT_EQ(outcome.status, 1) << path;
        EXPECT_THAT(outcome.error, HasSubstr("Tidemark keeps its own files there")) << path;
    }
    EXPECT_THAT(watchedPaths(), ElementsAre(home().path("In")));
}

TEST_F(FoldersCommand, SettingsThatWatchTidemarksOwnFilesSweepNothing)
{
    Settings settings = watching({"in"}, {filingPapers()});
    settings.gracePeriod = Seconds{0};
    Rule everything = filingPapers();
    everything.match.namePattern = "*";
    settings.folders.push_back({.path = supportPath(""), .rules = {everything}});
    writeSettings(settings);
    home().write("in/a.pdf", "A");
    const auto before = home().read("data/Tidemark/settings.json");

    for (const char* command : {"sweep", "preview"}) {
        const Outcome outcome = run({command});
        EXPECT_EQ(outcome.status, 1) << command;
        EXPECT_THAT(outcome.error, HasSubstr("Tidemark keeps its own files there")) << command;
    }
    EXPECT_EQ(home().read("data/Tidemark/settings.json"), before);
    EXPECT_TRUE(home().holds("in/a.pdf"));
}

TEST_F(FoldersCommand, AddAndRemovePrintTheFoldersAsJSON)
{
    home().makeFolder("a");

    EXPECT_EQ(json({"folders", "add", "a"}).array().size(), 1);
    EXPECT_EQ(json({"folders", "remove", "a"}).array().size(), 0);
}

TEST_F(FoldersCommand, RemoveTakesWhatIsGoneOrWasStoredInAnotherForm)
{
    Settings settings = watching({"a"}, {});
    settings.folders.push_back({.path = "/gone/for/good", .rules = {}});
    settings.folders.push_back({.path = "/odd/./form//", .rules = {}});
    settings.folders.push_back({.path = "no path at all", .rules = {}});
    writeSettings(settings);

    EXPECT_EQ(
        run({"folders", "remove", "/gone/for/good", "/odd/form", "no path at all"}).status, 0);

    EXPECT_THAT(watchedPaths(), ElementsAre(home().path("a")));
}

TEST_F(FoldersCommand, RemoveTouchesNoFile)
{
    writeSettings(watching({"a", "b"}, {filingPapers()}));
    home().write("a/one.pdf", "one");
    home().write("b/two.pdf", "two");

    EXPECT_EQ(run({"folders", "remove", "a"}).status, 0);
    EXPECT_EQ(home().read("a/one.pdf"), "one");
    EXPECT_EQ(home().read("b/two.pdf"), "two");

    EXPECT_EQ(run({"sweep"}).status, 0);
    EXPECT_THAT(home().names("a"), ElementsAre("one.pdf"));
    EXPECT_THAT(home().names("b"), testing::IsEmpty());
}

TEST_F(FoldersCommand, RemoveOfWhatIsNotWatchedFailsAndSavesNothing)
{
    writeSettings(watching({"a"}, {}));
    home().makeFolder("b");

    const Outcome outcome = run({"folders", "remove", "a", "b"});

    EXPECT_EQ(outcome.status, 1);
    EXPECT_EQ(outcome.error, "tidemarkctl: " + home().path("b") + " is not watched\n");
    EXPECT_THAT(watchedPaths(), ElementsAre(home().path("a")));
}

TEST_F(FoldersCommand, ListShowsWhatTheDefaultRulesDo)
{
    home().makeFolder("Inbox");
    run({"folders", "add", "Inbox"});

    EXPECT_EQ(run({"folders"}).output,
        "~/Inbox\n"
        "  File Markdown notes    -> ~/Inbox/Notes, by month\n"
        "  File screenshots       -> ~/Desktop/Screenshots, named by time\n"
        "  Clean up installers    -> Trash\n"
        "  Archive old downloads  -> ~/Downloads/Archive, by month\n");
}

TEST_F(FoldersCommand, ListShowsRulesAndWhichAreOff)
{
    Rule off = filingPapers();
    off.isEnabled = false;
    Settings settings = watching({"a"}, {filingPapers(), off});
    settings.folders[0].sortsMarkdown = true;
    writeSettings(settings);

    EXPECT_EQ(run({"folders"}).output,
        "~/a\n"
        "  File Markdown notes  -> ~/a/Notes, by month\n"
        "  File papers          -> ~/Filed\n"
        "  File papers (off)    -> ~/Filed\n");
}

}  // namespace
}  // namespace tidemark
