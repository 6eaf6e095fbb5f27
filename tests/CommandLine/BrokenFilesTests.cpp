#include "CommandLineFixture.h"

#include <gmock/gmock.h>

#include <algorithm>
#include <filesystem>
#include <fstream>
#include <functional>
#include <ostream>

namespace tidemark {
namespace {

namespace fs = std::filesystem;
using testing::HasSubstr;

/// A way in which a file of the support folder cannot be read.
struct Damage {
    const char* name;
    std::function<void(const std::string& path)> makeFile;
    const char* reason;

    friend void PrintTo(const Damage& damage, std::ostream* stream) { *stream << damage.name; }
};

std::function<void(const std::string&)> holding(std::string content)
{
    return [content = std::move(content)](const std::string& path) {
        std::ofstream{path, std::ios::binary} << content;
    };
}

/// Larger than anything that is read, without taking room on the disk.
void makeHugeFile(const std::string& path)
{
    holding("{}")(path);
    fs::resize_file(path, (std::uintmax_t{1} << 30U) + 1);
}

std::string nameOf(const testing::TestParamInfo<Damage>& info)
{
    return info.param.name;
}

class BrokenFiles : public CommandLineFixture, public testing::WithParamInterface<Damage> {
protected:
    void damage(const std::string& name) const
    {
        m_path = supportPath(name);
        home().makeFolder("data/Tidemark");
        fs::remove(m_path);
        GetParam().makeFile(m_path);
    }

    void expectOneLineWithReason(const Outcome& outcome) const
    {
        EXPECT_THAT(outcome.error, testing::StartsWith("tidemarkctl: "));
        EXPECT_THAT(outcome.error, HasSubstr(m_path));
        EXPECT_THAT(outcome.error, HasSubstr(GetParam().reason));
        EXPECT_THAT(outcome.error, testing::Not(HasSubstr("filesystem error")));
        EXPECT_EQ(std::ranges::count(outcome.error, '\n'), 1);
    }

    /// What stands at the damaged place, so that a change shows.
    std::pair<fs::file_type, std::uintmax_t> state() const
    {
        const fs::file_type type = fs::symlink_status(m_path).type();
        return {type, type == fs::file_type::regular ? fs::file_size(m_path) : 0};
    }

private:
    mutable std::string m_path;
};

class BrokenSettings : public BrokenFiles { };

TEST_P(BrokenSettings, StopSweepPreviewAndUndo)
{
    writeSettings(watching({"in"}, {filingPapers()}));
    home().write("in/a.pdf", "A");
    ASSERT_EQ(run({"sweep"}).status, 0);
    damage("settings.json");
    const auto before = state();

    for (const char* command : {"sweep", "preview", "undo"}) {
        SCOPED_TRACE(command);
        const Outcome outcome = run({command});

        EXPECT_EQ(outcome.status, 1);
        EXPECT_EQ(outcome.output, "");
        expectOneLineWithReason(outcome);
    }
    EXPECT_EQ(state(), before);
    EXPECT_TRUE(home().holds("Filed/a.pdf"));
}

TEST_P(BrokenSettings, AreToldByStatusAndFolders)
{
    damage("settings.json");

    const Outcome status = run({"status"});
    EXPECT_EQ(status.status, 1);
    EXPECT_THAT(status.output, HasSubstr("The settings cannot be read"));
    expectOneLineWithReason(status);

    const Outcome folders = run({"folders"});
    EXPECT_EQ(folders.status, 1);
    expectOneLineWithReason(folders);

    EXPECT_EQ(run({"status", "--json"}).status, 1);
    EXPECT_EQ(run({"folders", "--json"}).status, 1);
}

TEST_P(BrokenSettings, AreKeptBesideTheNewOnes)
{
    home().makeFolder("in");
    const std::vector<std::vector<std::string>> changes{
        {"pause"}, {"resume"}, {"folders", "add", "in"}};
    for (const std::vector<std::string>& change : changes) {
        SCOPED_TRACE(change.front());
        fs::remove_all(supportPath());
        damage("settings.json");
        const auto before = state();

        const Outcome outcome = run(change);

        EXPECT_EQ(outcome.status, 0);
        expectOneLineWithReason(outcome);
        const std::string marker = "kept as ";
        const auto start = outcome.error.find(marker);
        ASSERT_NE(start, std::string::npos) << outcome.error;
        const std::string kept = outcome.error.substr(
            start + marker.size(), outcome.error.size() - start - marker.size() - 1);
        EXPECT_THAT(kept, testing::StartsWith(supportPath("settings.json.unreadable-")));
        EXPECT_EQ(fs::symlink_status(kept).type(), before.first);
        EXPECT_EQ(run({"status"}).status, 0);
    }
}

TEST_P(BrokenSettings, HaveNoFolderToRemove)
{
    damage("settings.json");
    const auto before = state();

    const Outcome outcome = run({"folders", "remove", "in"});

    EXPECT_EQ(outcome.status, 1);
    expectOneLineWithReason(outcome);
    EXPECT_EQ(state(), before);
}

INSTANTIATE_TEST_SUITE_P(Damage, BrokenSettings,
    testing::Values(Damage{"empty", holding(""), "the file is empty"},
        Damage{"torn", holding(R"({"folders" : [)"), "not valid JSON"},
        Damage{"noJSON", holding("hello"), "line 1"},
        Damage{"anotherShape", holding(R"({"folders":[{"path":7}]})"), "folders[0].path"},
        Damage{"noObject", holding("[]"), "settings.json"},
        Damage{"folder", [](const std::string& path) { fs::create_directory(path); },
            "Is a directory"},
        Damage{"linkToItself",
            [](const std::string& path) { fs::create_symlink("settings.json", path); },
            "Too many levels of symbolic links"},
        Damage{"huge", makeHugeFile, "File too large"}),
    nameOf);

class BrokenJournal : public BrokenFiles { };

TEST_P(BrokenJournal, StopsWhatNeedsItAndStaysAsItIs)
{
    writeSettings(watching({"in"}, {filingPapers()}));
    home().write("in/a.pdf", "A");
    damage("journal.json");
    const auto before = state();

    for (const char* command : {"sweep", "undo", "activity"}) {
        SCOPED_TRACE(command);
        const Outcome outcome = run({command});

        EXPECT_EQ(outcome.status, 1);
        EXPECT_EQ(outcome.output, "");
        expectOneLineWithReason(outcome);
    }
    EXPECT_EQ(state(), before);
    EXPECT_THAT(home().names("in"), testing::ElementsAre("a.pdf"));
    EXPECT_FALSE(parsed(run({"status", "--json"}).output).object()["isPaused"].toBool(true));
}

TEST_P(BrokenJournal, IsNamedByTheStatusWhichWorks)
{
    damage("journal.json");

    const Outcome outcome = run({"status"});
    EXPECT_EQ(outcome.status, 0);
    EXPECT_THAT(outcome.output, HasSubstr("Undo is not possible: "));
    EXPECT_THAT(outcome.output, HasSubstr(GetParam().reason));

    const Outcome document = run({"status", "--json"});
    EXPECT_EQ(document.status, 0);
    EXPECT_FALSE(parsed(document.output).object()["canUndo"].toBool(true));
    expectOneLineWithReason(document);
}

INSTANTIATE_TEST_SUITE_P(Damage, BrokenJournal,
    testing::Values(Damage{"empty", holding(""), "the file is empty"},
        Damage{"torn", holding(R"({"sweeps" : [{"entries" : [)"), "not valid JSON"},
        Damage{"anotherShape",
            holding(R"({"sweeps":[{"id":"0F1E2D3C-4B5A-6978-8796-A5B4C3D2E1F0",)"
                    R"("startedAt":"2025-03-14T09:26:52Z","entries":[{"op":"melt"}]}]})"),
            "sweeps[0].entries[0].op"},
        Damage{"folder", [](const std::string& path) { fs::create_directory(path); },
            "Is a directory"},
        Damage{"huge", makeHugeFile, "File too large"}),
    nameOf);

class OlderFiles : public CommandLineFixture { };

TEST_F(OlderFiles, OfTheSharedRulesAreUnderstood)
{
    home().makeFolder("in");
    home().write("data/Tidemark/settings.json",
        R"({"watchedFolders":[")" + home().path("in")
            + R"("],"rules":[],"somethingNewer":{"a":1}})");

    EXPECT_EQ(text(json({"status"}).object()["statusText"]), "Watching 1 folder");
}

TEST_F(OlderFiles, LastFailureThatCannotBeReadIsNoFailure)
{
    home().write("data/Tidemark/last-failure.json", "{torn");

    const Outcome outcome = run({"status"});

    EXPECT_EQ(outcome.status, 0);
    EXPECT_THAT(outcome.output, testing::Not(HasSubstr("last sweep failed")));
}

}  // namespace
}  // namespace tidemark
