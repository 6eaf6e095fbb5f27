#include "CommandFailure.h"
#include "ModelFixture.h"
#include "Operations.h"
#include "RemoteControl.h"
#include "SupportLock.h"

#include <QScopeGuard>

#include <future>

namespace tidemark {

using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;

namespace {

enum class Doer { thisProcess, theModel };

class Progress final : public SweepObserver {
public:
    void willScan(const FileURL& folder) override { scanned.push_back(folder.path()); }
    void willPerform(std::size_t index, std::size_t count) override
    {
        positions.emplace_back(index, count);
    }

    std::vector<std::string> scanned;
    std::vector<std::pair<std::size_t, std::size_t>> positions;
};

}  // namespace

/// The commands that change something, carried out by the caller and by a model that serves the folder: they
/// come to the same.
class OperationsTest : public ModelTest, public testing::WithParamInterface<Doer> {
protected:
    /// Begins to serve the support folder, if that is this test's.
    void serve()
    {
        if (GetParam() == Doer::thisProcess)
            return;
        m_lock.emplace(SupportLock::acquire(m_home.url("support")));
        start();
        m_control.emplace(model(), m_home.url("support"));
    }

    /// Runs `work` as another process would, while this one goes on.
    template <typename Work>
    auto elsewhere(Work work)
    {
        MainQueue queue;
        bool isDone = false;
        auto result = std::async(std::launch::async, [&] {
            const auto done = qScopeGuard([&] { queue.post([&] { isDone = true; }); });
            return work(*Operations::open(m_home.url("support"), [] {}));
        });
        EXPECT_TRUE(runUntil([&] { return isDone; }));
        return result.get();
    }

    std::vector<GivenPath> given(const std::string& path) const
    {
        return {{.asGiven = path, .clean = m_home.path(path)}};
    }

    std::optional<SupportLock> m_lock;
    std::optional<RemoteControl> m_control;
};

TEST_P(OperationsTest, ASweepMovesFilesAndTellsHowFarItIs)
{
    writeSettings(watching({"in", "more"}, {filingPapers()}));
    addFile("in/one.pdf", Seconds{9});
    addFile("more/two.pdf", Seconds{9});
    serve();
    Progress progress;
    const SweepReport report = elsewhere(
        [&](Operations& operations) { return operations.sweep(m_clock.now(), progress); });

    EXPECT_THAT(filed(), ElementsAre("one.pdf", "two.pdf"));
    EXPECT_EQ(report.record.entries.size(), 2U);
    EXPECT_EQ(report.record.startedAt, m_clock.now());
    EXPECT_TRUE(report.watchesFolders);
    EXPECT_FALSE(report.wasPaused);
    EXPECT_THAT(report.failures, IsEmpty());
    EXPECT_THAT(progress.scanned, ElementsAre(m_home.path("in"), m_home.path("more")));
    EXPECT_THAT(progress.positions, ElementsAre(std::pair(0U, 2U), std::pair(1U, 2U)));
}

TEST_P(OperationsTest, ASweepWhilePausedSaysSo)
{
    Settings settings = watching({"in"}, {filingPapers()});
    settings.isPaused = true;
    writeSettings(settings);
    addFile("in/one.pdf");
    serve();
    Progress progress;
    const SweepReport report =
        elsewhere([&](Operations& operations) { return operations.sweep({}, progress); });
    EXPECT_TRUE(report.wasPaused);
    EXPECT_TRUE(m_home.holds("in/one.pdf"));
}

TEST_P(OperationsTest, ASweepOfAFolderThatIsGoneFailsWithItsPath)
{
    writeSettings(watching({"in"}, {filingPapers()}));
    serve();
    std::filesystem::remove(m_home.path("in"));
    Progress progress;
    try {
        elsewhere([&](Operations& operations) { return operations.sweep({}, progress); });
        FAIL();
    } catch (const std::filesystem::filesystem_error& error) {
        EXPECT_EQ(GetParam(), Doer::thisProcess);
        EXPECT_EQ(error.path1(), m_home.path("in"));
    } catch (const CommandFailure& failure) {
        EXPECT_EQ(GetParam(), Doer::theModel);
        EXPECT_THAT(failure.what(), HasSubstr(m_home.path("in")));
    }
}

TEST_P(OperationsTest, AnUndoRestoresAndPauses)
{
    writeSettings(watching({"in"}, {filingPapers()}));
    addFile("in/one.pdf", Seconds{9});
    serve();
    Progress progress;
    elsewhere([&](Operations& operations) { return operations.sweep(m_clock.now(), progress); });

    const UndoReport report =
        elsewhere([&](Operations& operations) { return operations.undo({}); });
    EXPECT_TRUE(m_home.holds("in/one.pdf"));
    EXPECT_TRUE(report.record);
    EXPECT_TRUE(report.didPause);
    ASSERT_EQ(report.restored.size(), 1U);
    EXPECT_EQ(report.restored[0].place, m_home.path("in/one.pdf"));
    EXPECT_TRUE(savedSettings().isPaused);

    const UndoReport again = elsewhere([&](Operations& operations) { return operations.undo({}); });
    EXPECT_FALSE(again.record);
    EXPECT_FALSE(again.didPause);
}

TEST_P(OperationsTest, PausingAndResumingAreSavedAndKnownWhenSoAlready)
{
    writeSettings(watching({"in"}));
    serve();
    const auto setPaused = [&](bool isPaused) {
        return elsewhere([&](Operations& operations) { return operations.setPaused(isPaused); });
    };
    EXPECT_FALSE(setPaused(true).wasSoAlready);
    EXPECT_TRUE(savedSettings().isPaused);
    EXPECT_TRUE(setPaused(true).wasSoAlready);
    EXPECT_FALSE(setPaused(false).wasSoAlready);
    EXPECT_FALSE(savedSettings().isPaused);
    EXPECT_TRUE(setPaused(false).wasSoAlready);
    if (m_model) {
        EXPECT_EQ(model().statusText(), "Watching 1 folder");
    }
}

TEST_P(OperationsTest, FoldersAreAddedAndRemoved)
{
    writeSettings({});
    m_home.makeFolder("in");
    serve();
    const FolderChanges added =
        elsewhere([&](Operations& operations) { return operations.addFolders(given("in")); });
    EXPECT_THAT(added.changed, ElementsAre(m_home.path("in")));
    EXPECT_EQ(added.folders, savedSettings().folders);
    if (m_model) {
        EXPECT_NE(model().watcher(), nullptr);
    }

    const FolderChanges again =
        elsewhere([&](Operations& operations) { return operations.addFolders(given("in")); });
    EXPECT_THAT(again.alreadyWatched, ElementsAre(m_home.path("in")));

    const FolderChanges removed =
        elsewhere([&](Operations& operations) { return operations.removeFolders(given("in")); });
    EXPECT_THAT(removed.changed, ElementsAre(m_home.path("in")));
    EXPECT_THAT(savedSettings().folders, IsEmpty());
    if (m_model) {
        EXPECT_EQ(model().watcher(), nullptr);
    }
}

TEST_P(OperationsTest, AFolderThatIsNoneIsRefusedForTheSameReason)
{
    writeSettings({});
    serve();
    try {
        elsewhere([&](Operations& operations) { return operations.addFolders(given("none")); });
        FAIL();
    } catch (const CommandFailure& failure) {
        EXPECT_EQ(
            failure.what(), "cannot watch " + m_home.path("none") + ": there is no such folder");
    }
    if (m_model) {
        EXPECT_FALSE(model().didError());
    }
}

INSTANTIATE_TEST_SUITE_P(Doers, OperationsTest, testing::Values(Doer::thisProcess, Doer::theModel),
    [](const testing::TestParamInfo<Doer>& doer) {
        return doer.param == Doer::thisProcess ? "thisProcess" : "theModel";
    });

}  // namespace tidemark
