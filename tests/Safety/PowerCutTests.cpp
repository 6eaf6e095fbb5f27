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

bool isSweep(const Scenario& scenario)
{
    return scenario.command == "sweep";
}

/// Whether its files go to another file system.
bool isCopied(const Scenario& scenario)
{
    return scenario.name.find("Across") != std::string::npos;
}

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

/// Follows the steps that bring the journal to the disk, and each file to its new name and away from the old one.
class DurabilityChecker {
public:
    explicit DurabilityChecker(const World& world)
        : m_journal(world.supportFolder() + "/journal.json")
        , m_world(world)
    {
    }

    void take(const TracedCall& call)
    {
        using Kind = TracedCall::Kind;
        if (call.result < 0)
            return;
        if (call.kind == Kind::write)
            m_written[call.path] += call.data;
        else if (call.kind == Kind::rename && call.otherPath == m_journal)
            replaceJournal(call);
        else if (call.kind == Kind::rename || call.kind == Kind::link)
            takeNewName(call);
        else if (call.kind == Kind::remove && isUsersFile(call.path))
            expectNewNameOnTheDisk(call);
        else if (call.kind == Kind::sync)
            takeSync(call);
    }

    std::size_t moves() const { return m_moves; }
    std::size_t removals() const { return m_removals; }

private:
    bool isUsersFile(const std::string& path) const
    {
        return std::ranges::any_of(
            m_world.origins(), [&](const auto& file) { return file.second == path; });
    }

    /// Which of the user's files this is, or a copy of; "" for none.
    std::string originOf(const std::string& path) const
    {
        if (isUsersFile(path))
            return path;
        const auto written = m_written.find(path);
        if (written == m_written.end())
            return "";
        for (const auto& [content, origin] : m_world.origins()) {
            if (content.starts_with(written->second))  // A hole is not written.
                return origin;
        }
        return "";
    }

    void replaceJournal(const TracedCall& call)
    {
        EXPECT_TRUE(m_synced.contains(call.path)) << "renamed before its content was synced";
        m_content = m_written[call.path];
    }

    void takeNewName(const TracedCall& call)
    {
        const std::string origin = originOf(call.path);
        if (origin.empty())
            return;
        ++m_moves;
        EXPECT_NE(m_lasting.find("\"from\" : \"" + origin + '"'), std::string::npos)
            << call.text() << " before the journal on the disk named it";
        m_newFolders[origin] = fs::path{call.otherPath}.parent_path().string();
        m_lastingNames.erase(origin);
    }

    void expectNewNameOnTheDisk(const TracedCall& call)
    {
        ++m_removals;
        EXPECT_TRUE(m_lastingNames.contains(call.path))
            << call.text() << " before its new name was on the disk";
    }

    void takeSync(const TracedCall& call)
    {
        m_synced.insert(call.path);
        if (call.path == fs::path{m_journal}.parent_path())
            m_lasting = m_content;
        for (const auto& [origin, folder] : m_newFolders) {
            if (folder == call.path)
                m_lastingNames.insert(origin);
        }
    }

    std::string m_journal;
    const World& m_world;
    std::map<std::string, std::string> m_written;
    std::set<std::string> m_synced;
    std::string m_content;
    std::string m_lasting;  ///< The journal that a power cut leaves.
    std::map<std::string, std::string> m_newFolders;  // of every file moved, by its old name
    std::set<std::string> m_lastingNames;  // old names, where a power cut leaves the new one
    std::size_t m_moves = 0;
    std::size_t m_removals = 0;
};

using PowerCutInASweep = PowerCut;

TEST_P(PowerCutInASweep, FindsEveryMoveInTheJournalOnTheDiskFirst)
{
    inWorld([](World& world) {
        DurabilityChecker checker{world};
        for (const TracedCall& call : callsOf(world))
            checker.take(call);
        const std::size_t files = world.scenario().files.size();
        EXPECT_EQ(checker.moves(), files);
        const bool leavesOldNames =
            isCopied(world.scenario()) || world.scenario().name == "ByLinks";
        EXPECT_EQ(checker.removals(), leavesOldNames ? files : 0U);
    });
}

using PowerCutInACopy = PowerCut;

/// Attributes are part of a file, too, and the model of the disk knows nothing of them.
TEST_P(PowerCutInACopy, FlushesItWithAllItsAttributesBeforeItGetsItsName)
{
    using Kind = TracedCall::Kind;
    inWorld([](World& world) {
        std::map<std::string, bool> isFlushed;  // what is written, by the name it has until then
        std::size_t copies = 0;
        for (const TracedCall& call : callsOf(world)) {
            if (call.result < 0)
                continue;
            if (call.kind == Kind::write || call.kind == Kind::truncate
                || call.kind == Kind::attribute)
                isFlushed[call.path] = false;
            else if (call.kind == Kind::sync)
                isFlushed[call.path] = true;
            else if (const auto written = isFlushed.find(call.path); written != isFlushed.end()
                     && (call.kind == Kind::link || call.kind == Kind::rename)) {
                EXPECT_TRUE(written->second) << call.text();
                copies += call.otherPath.starts_with(world.supportFolder() + '/') ? 0U : 1U;
            }
        }
        EXPECT_EQ(copies, world.scenario().files.size());
    });
}

std::vector<Scenario> scenariosThat(bool (*applies)(const Scenario& scenario))
{
    std::vector<Scenario> scenarios = everyScenario();
    std::erase_if(scenarios, [&](const Scenario& scenario) { return !applies(scenario); });
    return scenarios;
}

INSTANTIATE_TEST_SUITE_P(Safety, PowerCut, testing::ValuesIn(everyScenario()), scenarioName);
INSTANTIATE_TEST_SUITE_P(
    Safety, PowerCutInASweep, testing::ValuesIn(scenariosThat(isSweep)), scenarioName);
INSTANTIATE_TEST_SUITE_P(
    Safety, PowerCutInACopy, testing::ValuesIn(scenariosThat(isCopied)), scenarioName);

}  // namespace
}  // namespace tidemark
