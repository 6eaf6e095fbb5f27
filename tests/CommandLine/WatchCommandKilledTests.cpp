#include "WatchFixture.h"

#include <algorithm>
#include <filesystem>

namespace tidemark {
namespace {

namespace fs = std::filesystem;

using testing::IsEmpty;

/// Watches two folders whose papers are filed, whose pictures are renamed into a folder that is swept, too, and
/// whose installers go to the Trash.
class WatchCommandKilled : public WatchFixture {
protected:
    static constexpr const char* trash = "data/Trash/files";

    WatchCommandKilled()
    {
        const auto into = [this](const char* folder) {
            return FileURL::directory(home().path(folder));
        };
        Settings settings = watching({"one", "two"},
            {filingPapers(),
                {.name = "Months",
                    .match = {.fileTypes = {"txt"}},
                    .action = RuleAction::archiveByMonth(into("two/Months"))},
                {.name = "Installers",
                    .match = {.fileTypes = {"dmg"}},
                    .action = RuleAction::fixed(SweepAction::trash())}});
        writeSettings(settings);
    }

    void addFiles(int first, int perKind) const
    {
        for (const char* folder : {"one", "two"}) {
            for (int i = first; i < first + perKind; ++i) {
                for (const char* extension : {".pdf", ".txt", ".dmg"}) {
                    // Names that are taken already in the other folder, so that numbers are needed, too.
                    const std::string name = std::to_string(i) + extension;
                    home().write(folder + ('/' + name), folder + ('/' + name));
                }
            }
        }
    }

    std::multiset<std::string> files() const { return contents({"one", "two", "Filed", trash}); }

    /// Starts, and kills it when so many files have been told.
    void killAfter(int moved) const
    {
        WatchProcess process{watch()};
        for (int i = 0; i < moved; ++i)
            process.readUntil(" -> ");
        EXPECT_EQ(process.end(SIGKILL), -SIGKILL);
    }

    /// The files that have not been moved, by the paths that are their contents, too.
    std::multiset<std::string> atTheirPlaces() const
    {
        std::multiset<std::string> found;
        for (const char* folder : {"one", "two"}) {
            for (const std::string& name : home().names(folder)) {
                if (name != "Months")
                    found.insert(std::string{folder}.append(1, '/').append(name));
            }
        }
        return found;
    }

    std::multiset<std::string> movedFiles() const
    {
        std::multiset<std::string> moved = files();
        for (const std::string& still : atTheirPlaces())
            moved.erase(still);
        return moved;
    }

    std::set<std::string> journaled() const
    {
        std::set<std::string> names;
        for (const SweepRecord& sweep : journal().sweeps) {
            for (const JournalEntry& entry : sweep.entries)
                names.insert(fs::relative(entry.from, home().path()).string());
        }
        return names;
    }

    /// Files in the Trash that undo will not find, and never moves: the kill came before their place was noted.
    std::multiset<std::string> trashedWithoutANote() const
    {
        std::multiset<std::string> unknown = contents({trash});
        for (const SweepRecord& sweep : journal().sweeps) {
            for (const JournalEntry& entry : sweep.entries) {
                if (entry.op == JournalEntry::Op::trash && entry.to != entry.from)
                    unknown.erase(fs::relative(entry.from, home().path()).string());
            }
        }
        return unknown;
    }
};

TEST_F(WatchCommandKilled, AtAnyMomentLosesNoFileAndNoRecord)
{
    constexpr int kills = 25;
    constexpr int perKind = 4;
    int cutShort = 0;
    std::multiset<std::string> before;
    for (int kill = 0; kill < kills; ++kill) {
        SCOPED_TRACE(testing::Message() << "kill " << kill);
        addFiles(kill * perKind, perKind);
        before = files();
        killAfter(kill % 12);

        EXPECT_EQ(files(), before);
        EXPECT_THAT(movedFiles(), testing::IsSubsetOf(journaled()));
        cutShort += atTheirPlaces().empty() ? 0 : 1;
    }
    EXPECT_GT(cutShort, 0) << "the kills came too late";

    addFiles(kills * perKind, perKind);
    before = files();
    WatchProcess process{watch()};
    while (!atTheirPlaces().empty())
        process.nextLine();
    EXPECT_EQ(process.end(), 0);
    EXPECT_EQ(files(), before);

    const std::multiset<std::string> lost = trashedWithoutANote();
    EXPECT_LE(lost.size(), kills);
    RecordProperty("trashedWithoutANote", static_cast<int>(lost.size()));
    while (!journal().sweeps.empty())
        ASSERT_EQ(run({"undo"}).status, 0);
    EXPECT_EQ(files(), before);
    EXPECT_EQ(contents({trash}), lost);
    EXPECT_EQ(atTheirPlaces().size(), before.size() - lost.size());
    EXPECT_THAT(contents({"Filed", "two/Months"}), IsEmpty());
}

TEST_F(WatchCommandKilled, LeavesNothingThatBlocksTheNext)
{
    addFiles(0, 5);
    killAfter(1);

    WatchProcess next{watch()};
    while (!atTheirPlaces().empty())
        next.nextLine();

    EXPECT_EQ(next.end(), 0);
    EXPECT_THAT(home().names("data/Tidemark"),
        testing::IsSubsetOf({"journal.json", "last-failure.json", "lock", "settings.json"}));
}

}  // namespace
}  // namespace tidemark
