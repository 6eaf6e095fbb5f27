#include "ModelFixture.h"

#include "JournalStore.h"

#include <thread>

namespace tidemark {

using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using testing::SizeIs;

using AppModelSweep = ModelTest;

TEST_F(AppModelSweep, ASweepWithoutFoldersDoesNothingAndIsNoError)
{
    start();
    std::optional<SweepOutcome> outcome;
    model().sweep({.done = [&](const SweepOutcome& ended) { outcome = ended; }});
    finishWork();
    ASSERT_TRUE(outcome && outcome->report);
    EXPECT_THAT(outcome->report->record.entries, IsEmpty());
    EXPECT_FALSE(model().didError());
    EXPECT_FALSE(m_home.holds("support/journal.json"));
}

TEST_F(AppModelSweep, MovesFilesAndTellsEachOnTheMainThread)
{
    writeSettings(watching({"in"}, {filingPapers()}));
    addFile("in/one.pdf");
    addFile("in/two.pdf");
    addFile("in/other.txt");
    start();
    std::vector<std::string> told;
    QObject::connect(m_model.get(), &AppModel::performed, m_model.get(),
        [&](const JournalEntry& entry) { told.push_back(entry.from); });

    model().sweepNow();
    finishWork();

    EXPECT_THAT(filed(), ElementsAre("one.pdf", "two.pdf"));
    EXPECT_THAT(told, ElementsAre(m_home.path("in/one.pdf"), m_home.path("in/two.pdf")));
    EXPECT_THAT(model().activity(), SizeIs(2));
    EXPECT_FALSE(model().didError());
}

TEST_F(AppModelSweep, WhilePausedASweepDoesNothingAndClearsTheError)
{
    Settings settings = watching({"in"}, {filingPapers()});
    writeSettings(settings);
    addFile("in/one.pdf");
    start();
    m_files.setFaults({failEvery(FileCall::writeAtomically, std::errc::no_space_on_device)});
    model().togglePause();
    ASSERT_TRUE(model().didError());

    model().sweepNow();
    finishWork();
    EXPECT_FALSE(model().didError());
    EXPECT_TRUE(m_home.holds("in/one.pdf"));
    EXPECT_FALSE(m_home.holds("support/journal.json"));
}

TEST_F(AppModelSweep, AFolderThatCannotBeReadIsAnErrorThatTheLogNames)
{
    writeSettings(watching({"in", "gone"}, {filingPapers()}));
    addFile("in/one.pdf");
    start();
    std::filesystem::remove(m_home.path("gone"));

    model().sweepNow();
    finishWork();
    EXPECT_TRUE(model().didError());
    EXPECT_TRUE(m_home.holds("in/one.pdf"));
    EXPECT_THAT(m_log.lines, ElementsAre(HasSubstr(m_home.path("gone"))));
    ASSERT_TRUE(m_workspace->failures().load());
    EXPECT_THAT(m_workspace->failures().load()->reason, HasSubstr(m_home.path("gone")));

    // The same failure again is no news.
    model().sweepNow();
    finishWork();
    EXPECT_THAT(m_log.lines, SizeIs(1));

    m_home.makeFolder("gone");
    model().sweepNow();
    finishWork();
    EXPECT_FALSE(model().didError());
    EXPECT_THAT(filed(), ElementsAre("one.pdf"));
    EXPECT_EQ(m_workspace->failures().load(), std::nullopt);
}

TEST_F(AppModelSweep, NothingIsMovedWhenTheJournalCannotBeWritten)
{
    writeSettings(watching({"in"}, {filingPapers()}));
    addFile("in/one.pdf");
    addFile("in/two.pdf");
    start();
    m_files.setFaults({failEvery(FileCall::writeAtomically,
        m_home.url("support").appending("journal.json"), std::errc::read_only_file_system)});

    model().sweepNow();
    finishWork();
    EXPECT_TRUE(model().didError());
    EXPECT_THAT(m_home.names("in"), ElementsAre("one.pdf", "two.pdf"));
    EXPECT_THAT(m_log.lines, ElementsAre(HasSubstr("journal.json")));
}

TEST_F(AppModelSweep, AFileThatCannotBeMovedDoesNotStopTheOthersAndIsNoErrorOfTheSweep)
{
    writeSettings(watching({"in"}, {filingPapers()}));
    const FileURL stuck = addFile("in/one.pdf");
    addFile("in/two.pdf");
    start();
    m_files.setFaults({failEvery(FileCall::moveItem, stuck, std::errc::permission_denied)});

    model().sweepNow();
    finishWork();
    EXPECT_THAT(filed(), ElementsAre("two.pdf"));
    EXPECT_FALSE(model().didError());
    EXPECT_THAT(m_log.lines, ElementsAre(HasSubstr("one.pdf")));
}

TEST_F(AppModelSweep, UndoPutsTheFilesBackAndPauses)
{
    writeSettings(watching({"in"}, {filingPapers()}));
    addFile("in/one.pdf");
    start();
    model().sweepNow();
    finishWork();
    ASSERT_THAT(filed(), SizeIs(1));

    model().undoLast();
    EXPECT_TRUE(model().settings().isPaused);
    EXPECT_EQ(model().statusText(), "Paused");
    EXPECT_TRUE(savedSettings().isPaused);
    finishWork();
    EXPECT_TRUE(m_home.holds("in/one.pdf"));
    EXPECT_THAT(filed(), IsEmpty());
    EXPECT_FALSE(model().canUndo());
    EXPECT_THAT(model().activity(), IsEmpty());
}

TEST_F(AppModelSweep, AnUndoThatFailsLeavesSweepingPausedAndTheJournalAsItWas)
{
    writeSettings(watching({"in"}, {filingPapers()}));
    addFile("in/one.pdf");
    start();
    model().sweepNow();
    finishWork();
    m_files.setFaults({failEvery(FileCall::moveItem, std::errc::permission_denied)});

    model().undoLast();
    finishWork();
    EXPECT_TRUE(model().settings().isPaused);
    EXPECT_FALSE(model().didError());
    EXPECT_TRUE(model().canUndo());
    EXPECT_THAT(filed(), ElementsAre("one.pdf"));
}

TEST_F(AppModelSweep, AnAskedForUndoPausesOnlyWhenThereIsSomethingToUndo)
{
    start();
    std::optional<UndoOutcome> outcome;
    model().undo({}, [&](const UndoOutcome& ended) { outcome = ended; });
    finishWork();
    ASSERT_TRUE(outcome && outcome->report);
    EXPECT_EQ(outcome->report->record, std::nullopt);
    EXPECT_FALSE(model().settings().isPaused);

    m_home.write("support/journal.json", "no journal");
    model().undo({}, [&](const UndoOutcome& ended) { outcome = ended; });
    finishWork();
    EXPECT_FALSE(outcome->report);
    EXPECT_THAT(outcome->failure.value_or(""), HasSubstr("journal.json"));
    EXPECT_FALSE(model().settings().isPaused);
}

TEST_F(AppModelSweep, ASweepUsesTheSettingsOfTheMomentItWasAskedFor)
{
    writeSettings(watching({"in"}, {filingPapers()}));
    addFile("in/one.pdf");
    start();
    model().sweepNow();
    model().togglePause();
    finishWork();
    EXPECT_THAT(filed(), ElementsAre("one.pdf"));
}

TEST_F(AppModelSweep, SweepsAndUndoRunInTheOrderInWhichTheyWereAskedFor)
{
    writeSettings(watching({"in"}, {filingPapers()}));
    addFile("in/one.pdf");
    start();
    model().sweepNow();
    model().undoLast();
    finishWork();
    EXPECT_TRUE(m_home.holds("in/one.pdf"));
    EXPECT_FALSE(model().canUndo());
}

TEST_F(AppModelSweep, StoppingFinishesTheFileThatIsBeingMovedAndNoOther)
{
    writeSettings(watching({"in"}, {filingPapers()}));
    addFile("in/one.pdf");
    addFile("in/two.pdf");
    start();
    std::vector<std::string> told;
    QObject::connect(m_model.get(), &AppModel::performed, m_model.get(),
        [&](const JournalEntry& entry) { told.push_back(entry.from); });

    m_files.gate.close();
    model().sweepNow();
    model().sweepNow();
    m_files.gate.waitUntilSomebodyWaits();
    bool hasStopped = false;
    model().stop([&] { hasStopped = true; });
    m_files.gate.open();
    EXPECT_TRUE(runUntil([&] { return hasStopped; }));

    EXPECT_THAT(filed(), ElementsAre("one.pdf"));
    EXPECT_THAT(m_home.names("in"), ElementsAre("two.pdf"));
    EXPECT_THAT(told, ElementsAre(m_home.path("in/one.pdf")));
}

TEST_F(AppModelSweep, TheModelMayGoWhileAFileIsBeingMoved)
{
    writeSettings(watching({"in"}, {filingPapers()}));
    addFile("in/one.pdf");
    addFile("in/two.pdf");
    start();
    m_files.gate.close();
    model().sweepNow();
    m_files.gate.waitUntilSomebodyWaits();
    std::thread opener{[&] { m_files.gate.open(); }};
    m_model.reset();
    opener.join();

    EXPECT_TRUE(m_home.holds("Filed/one.pdf"));
    const Journal journal = JournalStore{m_workspace->journalURL(), m_realFiles}.load();
    ASSERT_EQ(journal.sweeps.size(), 1U);
    EXPECT_EQ(journal.sweeps.front().entries.size(), filed().size());
}

TEST_F(AppModelSweep, ASweepAskedForAfterAnUndoFindsSweepingPaused)
{
    writeSettings(watching({"in"}, {filingPapers()}));
    addFile("in/one.pdf");
    start();
    model().sweepNow();
    finishWork();
    addFile("in/new.pdf");

    std::optional<UndoOutcome> undone;
    std::optional<SweepOutcome> swept;
    model().undo({}, [&](const UndoOutcome& outcome) { undone = outcome; });
    model().sweep({.done = [&](const SweepOutcome& outcome) { swept = outcome; }});
    EXPECT_TRUE(runUntil([&] { return undone && swept; }));

    EXPECT_TRUE(swept->report && swept->report->wasPaused);
    EXPECT_THAT(m_home.names("in"), ElementsAre("new.pdf", "one.pdf"));
}

}  // namespace tidemark
