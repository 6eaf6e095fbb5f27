#include "ModelFixture.h"

#include <QSignalSpy>

#include <thread>

namespace tidemark {

using testing::IsEmpty;

namespace {

SweepRecord sweepOf(int count, int firstNumber)
{
    SweepRecord record{.startedAt = Date{Seconds{1'700'000'000}}};
    for (int number = firstNumber; number < firstNumber + count; ++number)
        record.entries.push_back({.op = JournalEntry::Op::move,
            .from = "/a/" + std::to_string(number),
            .to = "/b/" + std::to_string(number),
            .at = Date{Seconds{1'700'000'000}}});
    return record;
}

/// Notes on which thread the journal is read.
class ReadingWitness final : public FaultInjectingFileManager {
public:
    using FaultInjectingFileManager::FaultInjectingFileManager;

    std::string readFile(const FileURL& url, std::size_t maxBytes) override
    {
        if (url.lastPathComponent() == "journal.json") {
            ++reads;
            if (std::this_thread::get_id() == m_mainThread)
                ++readsOnMainThread;
        }
        return FaultInjectingFileManager::readFile(url, maxBytes);
    }

    std::atomic<int> reads = 0;
    std::atomic<int> readsOnMainThread = 0;

private:
    const std::thread::id m_mainThread = std::this_thread::get_id();
};

}  // namespace

using AppModelJournal = ModelTest;

TEST_F(AppModelJournal, TheTwentyNewestEntriesAreShownNewestFirst)
{
    writeJournal({.sweeps = {sweepOf(18, 0), sweepOf(12, 18)}});
    start();
    ASSERT_EQ(model().activity().size(), 20U);
    for (int index = 0; index < 20; ++index)
        EXPECT_EQ(model().activity().at(static_cast<std::size_t>(index)).fromPath,
            "/a/" + std::to_string(29 - index));
    EXPECT_TRUE(model().canUndo());
}

TEST_F(AppModelJournal, WithoutAJournalThereIsNothingToUndo)
{
    start();
    EXPECT_THAT(model().activity(), IsEmpty());
    EXPECT_FALSE(model().canUndo());
}

TEST_F(AppModelJournal, AnUnreadableJournalShowsAsEmpty)
{
    writeJournal({.sweeps = {sweepOf(3, 0)}});
    start();
    ASSERT_TRUE(model().canUndo());

    m_home.write("support/journal.json", "{\"sweeps\" : [");
    model().refresh();
    finishWork();
    EXPECT_THAT(model().activity(), IsEmpty());
    EXPECT_FALSE(model().canUndo());
}

TEST_F(AppModelJournal, ObserversAreToldWhenUndoBecomesPossible)
{
    writeSettings(watching({"in"}, {filingPapers()}));
    start();
    QSignalSpy undoChanges{m_model.get(), &AppModel::canUndoChanged};
    QSignalSpy activityChanges{m_model.get(), &AppModel::activityChanged};
    for (const char* name : {"in/one.pdf", "in/two.pdf"}) {
        addFile(name);
        model().sweepNow();
        finishWork();
    }
    EXPECT_TRUE(model().canUndo());
    EXPECT_EQ(undoChanges.count(), 1);
    EXPECT_EQ(activityChanges.count(), 2);
}

TEST_F(AppModelJournal, TheMainThreadNeverReadsTheJournal)
{
    ReadingWitness files{m_realFiles};
    writeSettings(watching({"in"}, {filingPapers()}));
    writeJournal({.sweeps = {sweepOf(30, 0)}});
    addFile("in/one.pdf");
    Workspace workspace{m_home.url("support"), files, m_clock};
    m_model = std::make_unique<AppModel>(workspace,
        AppModel::Services{.folderChooser = m_chooser,
            .alarm = m_alarm,
            .log = m_log,
            .time = m_time,
            .ownChanges = m_ownChanges},
        AppModel::Options{});
    finishWork();
    EXPECT_EQ(model().activity().size(), 20U);

    model().sweepNow();
    finishWork();
    EXPECT_EQ(model().activity().front().fileName(), "one.pdf");
    model().setGracePeriodSeconds(3);
    model().undoLast();
    finishWork();
    EXPECT_EQ(model().activity().front().fileName(), "29");

    EXPECT_GT(files.reads, 0);
    EXPECT_EQ(files.readsOnMainThread, 0);
    m_model.reset();
}

}  // namespace tidemark
