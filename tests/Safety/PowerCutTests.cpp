#include "DiskModel.h"
#include "JSONCoders.h"
#include "SafetyFixture.h"

#include <algorithm>
#include <filesystem>

namespace tidemark {
namespace {

namespace fs = std::filesystem;

/// Holds what a disk may be after a power cut against what the product promises.
class CutDisk {
public:
    CutDisk(const World& world, const DiskModel::Disk& disk)
        : m_world(world)
        , m_disk(disk)
    {
    }

    void check()
    {
        readOwnFiles();
        for (const auto& [content, origin] : m_world.origins())
            checkFile(content, origin);
    }

    /// What lies in a Trash has its record there, so that every program can bring it back. This goes for
    /// file systems that keep changes in their order.
    void checkTrashes() const
    {
        for (const auto& [path, content] : m_disk) {
            const fs::path files = fs::path{path}.parent_path();
            if (files.filename() != "files" || !m_world.origins().contains(content))
                continue;
            const std::string record =
                (files.parent_path() / "info" / fs::path{path}.filename()).string() + ".trashinfo";
            const auto found = m_disk.find(record);
            EXPECT_TRUE(found != m_disk.end() && found->second.starts_with("[Trash Info]\nPath=")
                && found->second.ends_with('\n'))
                << record;
        }
    }

private:
    void readOwnFiles()
    {
        const std::string settings = m_world.supportFolder() + "/settings.json";
        ASSERT_TRUE(m_disk.contains(settings));
        EXPECT_NO_THROW(JSONCoders::decode<Settings>(m_disk.at(settings), settings));
        const auto journal = m_disk.find(m_world.supportFolder() + "/journal.json");
        if (journal != m_disk.end()) {
            EXPECT_NO_THROW(
                m_journal = JSONCoders::decode<Journal>(journal->second, journal->first));
        }
    }

    void checkFile(const std::string& content, const std::string& origin) const
    {
        const auto original = m_disk.find(origin);
        bool isThere = original != m_disk.end() && original->second == content;
        for (const auto& [path, found] : m_disk) {
            if (found != content || path == origin || path.ends_with(".tmp"))
                continue;
            isThere = true;
            EXPECT_TRUE(isNamed(origin, path)) << "the journal does not know " << path;
        }
        EXPECT_TRUE(isThere) << "lost: " << origin;
    }

    bool isNamed(const std::string& origin, const std::string& place) const
    {
        return std::ranges::any_of(m_journal.sweeps, [&](const SweepRecord& sweep) {
            return std::ranges::any_of(sweep.entries, [&](const JournalEntry& entry) {
                const bool isTrashed = entry.op == JournalEntry::Op::trash && entry.to == origin
                    && place.find("Trash") != std::string::npos;
                return entry.from == origin && (entry.to == place || isTrashed);
            });
        });
    }

    const World& m_world;
    const DiskModel::Disk& m_disk;
    Journal m_journal;
};

class PowerCut : public SafetyTest {
protected:
    static std::vector<TracedCall> callsOf(World& world)
    {
        TracedOutcome outcome = world.run([](const TracedCall&) { return CallVerdict{}; });
        EXPECT_EQ(outcome.status, 0) << outcome.error;
        return std::move(outcome.calls);
    }
};

TEST_P(PowerCut, AtAnyMomentLosesNoFileAndNoRecord)
{
    inWorld([](World& world) {
        std::vector<std::string> disks;
        if (world.scenario().needsDisk)
            disks.push_back(world.place() + "/disk");
        DiskModel model{world.place(), disks};
        std::size_t cuts = 0;
        for (const TracedCall& call : callsOf(world)) {
            SCOPED_TRACE("the power fails after " + call.text());
            ASSERT_TRUE(model.apply(call)) << "the model does not know this call";
            if (!call.changesTheDisk())
                continue;
            for (const auto order : {DiskModel::Order::inOrder, DiskModel::Order::any}) {
                for (const DiskModel::Disk& disk : model.possibleDisks(order)) {
                    ++cuts;
                    CutDisk cut{world, disk};
                    cut.check();
                    if (order == DiskModel::Order::inOrder)
                        cut.checkTrashes();
                    ASSERT_FALSE(testing::Test::HasFailure())
                        << (order == DiskModel::Order::any ? "in any order" : "in order");
                }
            }
        }
        EXPECT_GT(cuts, 20U);
        printCounts(std::to_string(cuts) + " disks after a power cut");
    });
}

/// Follows the steps that bring the journal to the disk.
class DurabilityChecker {
public:
    DurabilityChecker(std::string journal, const World& world)
        : m_journal(std::move(journal))
        , m_world(world)
    {
    }

    void take(const TracedCall& call)
    {
        using Kind = TracedCall::Kind;
        if (call.result < 0)
            return;
        if (isUsersFile(call) && (call.kind == Kind::rename || call.kind == Kind::link))
            expectJournaled(call);
        if (call.kind == Kind::write)
            m_written[call.path] += call.data;
        else if (call.kind == Kind::sync)
            m_synced.insert(call.path);
        else if (call.kind == Kind::rename && call.otherPath == m_journal)
            replaceJournal(call);
        if (call.kind == Kind::sync && call.path == fs::path{m_journal}.parent_path())
            m_lasting = m_content;
    }

    std::size_t moves() const { return m_moves; }

private:
    bool isUsersFile(const TracedCall& call) const
    {
        return std::ranges::any_of(
            m_world.origins(), [&](const auto& file) { return file.second == call.path; });
    }

    void replaceJournal(const TracedCall& call)
    {
        EXPECT_TRUE(m_synced.contains(call.path)) << "renamed before its content was synced";
        m_content = m_written[call.path];
    }

    void expectJournaled(const TracedCall& call)
    {
        ++m_moves;
        EXPECT_NE(m_lasting.find("\"from\" : \"" + call.path + '"'), std::string::npos)
            << call.text() << " before the journal on the disk named it";
    }

    std::string m_journal;
    const World& m_world;
    std::map<std::string, std::string> m_written;
    std::set<std::string> m_synced;
    std::string m_content;
    std::string m_lasting;
    std::size_t m_moves = 0;
};

TEST_P(PowerCut, FindsEveryMoveInTheJournalOnTheDiskFirst)
{
    if (GetParam().command != "sweep")
        return;
    inWorld([](World& world) {
        DurabilityChecker checker{world.supportFolder() + "/journal.json", world};
        for (const TracedCall& call : callsOf(world))
            checker.take(call);
        const bool isCopied = world.scenario().name.find("Across") != std::string::npos;
        EXPECT_EQ(checker.moves(), isCopied ? 0U : world.scenario().files.size());
    });
}

/// Attributes are part of a file, too, and the model of the disk knows nothing of them.
TEST_P(PowerCut, FlushesACopyWithAllItsAttributesBeforeItGetsItsName)
{
    using Kind = TracedCall::Kind;
    inWorld([](World& world) {
        std::map<std::string, bool> isFlushed;  // copies, by the name they have while they are made
        std::size_t named = 0;
        for (const TracedCall& call : callsOf(world)) {
            if (call.result < 0)
                continue;
            if (call.kind == Kind::write || call.kind == Kind::truncate
                || call.kind == Kind::attribute)
                isFlushed[call.path] = false;
            else if (call.kind == Kind::sync)
                isFlushed[call.path] = true;
            else if (const auto copy = isFlushed.find(call.path); copy != isFlushed.end()
                     && (call.kind == Kind::link || call.kind == Kind::rename)) {
                EXPECT_TRUE(copy->second) << call.text();
                ++named;
            }
        }
        EXPECT_GT(named, 0U);
    });
}

INSTANTIATE_TEST_SUITE_P(Safety, PowerCut, testing::ValuesIn(everyScenario()), scenarioName);

}  // namespace
}  // namespace tidemark
