#include "ModelFixture.h"

#include "OtherProcess.h"

namespace tidemark {

using testing::ElementsAre;
using testing::IsEmpty;
using testing::UnorderedElementsAre;

/// Sweeps for what other processes do, with each of the kernel's interfaces. The quiet time is the test's.
class AppModelWatch : public ModelTest, public testing::WithParamInterface<WatchBackend> {
protected:
    AppModelWatch() { m_backend = GetParam(); }

    AppModel& startWatching(const Settings& settings)
    {
        writeSettings(settings);
        start();
        model().watcher()->settle();
        letQuietTimePass();
        static_cast<void>(sweeps());
        return model();
    }

    /// Everything that happened so far is delivered, and the time goes on.
    void letQuietTimePass(Seconds time = Seconds{1})
    {
        model().watcher()->settle();
        m_time.advance(time);
        model().watcher()->settle();
    }

    /// How many sweeps what happened so far leads to.
    int sweepsForEvents()
    {
        letQuietTimePass();
        return sweeps();
    }

    void elsewhere(const std::string& script) const
    {
        otherProcess("cd '" + m_home.path() + "' && " + script);
    }
};

TEST_P(AppModelWatch, TenEventsInAMomentLeadToOneSweep)
{
    startWatching(watching({"in"}, {filingPapers()}));
    elsewhere("for i in 1 2 3 4 5 6 7 8 9 10; do echo x > in/$i.pdf; done");
    EXPECT_EQ(sweepsForEvents(), 1);
    EXPECT_EQ(filed().size(), 10U);
}

TEST_P(AppModelWatch, EventsWithPausesShorterThanTheQuietTimeLeadToOneSweep)
{
    startWatching(watching({"in"}, {filingPapers()}));
    for (int event = 0; event < 10; ++event) {
        elsewhere("echo x > in/" + std::to_string(event) + ".pdf");
        letQuietTimePass(Seconds{0.2});
        ASSERT_EQ(sweeps(), 0);
    }
    m_time.advance(Seconds{0.7});
    model().watcher()->settle();
    ASSERT_EQ(sweeps(), 0);
    m_time.advance(Seconds{0.1});
    model().watcher()->settle();
    EXPECT_EQ(sweeps(), 1);
}

TEST_P(AppModelWatch, OwnMovesLeadToNoSweep)
{
    Rule within = filingPapers();
    within.action =
        RuleAction::fixed(SweepAction::move(FileURL::directory(m_home.path("in/Filed"))));
    Rule trashing = filingPapers();
    trashing.match.fileTypes = {"dmg"};
    trashing.action = RuleAction::fixed(SweepAction::trash());
    startWatching(watching({"in", "."}, {within, trashing}));
    elsewhere("echo x > in/one.pdf; echo y > in/two.dmg");
    EXPECT_EQ(sweepsForEvents(), 1);
    EXPECT_THAT(m_home.names("in"), ElementsAre("Filed"));

    EXPECT_EQ(sweepsForEvents(), 0);
    model().undoLast();
    finishWork();
    EXPECT_THAT(m_home.names("in"), UnorderedElementsAre("Filed", "one.pdf", "two.dmg"));
    EXPECT_EQ(sweepsForEvents(), 0);
}

TEST_P(AppModelWatch, AFolderThatIsAddedIsWatchedFromThenOn)
{
    startWatching(watching({"in"}));
    m_chooser.answer = {m_home.makeFolder("new")};
    model().addFolder();
    model().watcher()->settle();
    letQuietTimePass();
    static_cast<void>(sweeps());
    elsewhere("echo x > new/one.txt");
    EXPECT_EQ(sweepsForEvents(), 1);
    elsewhere("echo x > in/one.txt");
    EXPECT_EQ(sweepsForEvents(), 1);
}

TEST_P(AppModelWatch, AFolderThatIsRemovedIsWatchedNoMore)
{
    startWatching(watching({"in", "other"}));
    model().removeFolder(m_home.path("other"));
    model().watcher()->settle();
    letQuietTimePass();
    static_cast<void>(sweeps());
    elsewhere("echo x > other/one.txt");
    EXPECT_EQ(sweepsForEvents(), 0);
}

TEST_P(AppModelWatch, TheWatcherGoesOnWhilePausedAndNothingIsSwept)
{
    Settings settings = watching({"in"}, {filingPapers()});
    settings.isPaused = true;
    startWatching(settings);
    elsewhere("echo x > in/one.pdf");
    EXPECT_EQ(sweepsForEvents(), 1);
    EXPECT_THAT(filed(), IsEmpty());
}

TEST_P(AppModelWatch, EventsBeforeAQueuedSweepHasBegunNeedNoOther)
{
    startWatching(watching({"in"}, {filingPapers()}));
    elsewhere("echo x > in/one.pdf");
    m_files.gate.close();
    model().sweepNow();
    m_files.gate.waitUntilSomebodyWaits();
    for (const char* name : {"two", "three", "four"}) {
        elsewhere("echo x > in/" + std::string{name} + ".pdf");
        letQuietTimePass();
        runPending();
    }
    m_files.gate.open();

    EXPECT_EQ(sweeps(), 2);
    EXPECT_EQ(filed().size(), 4U);
}

TEST_P(AppModelWatch, APathThatIsNotAbsoluteIsNotWatched)
{
    Settings settings;
    settings.folders = {{.path = ""}, {.path = "relative"}};
    writeSettings(settings);
    start();
    EXPECT_EQ(model().watcher(), nullptr);
}

INSTANTIATE_TEST_SUITE_P(Backends, AppModelWatch,
    testing::Values(WatchBackend::fanotify, WatchBackend::inotify),
    [](const testing::TestParamInfo<WatchBackend>& backend) {
        return backend.param == WatchBackend::fanotify ? "fanotify" : "inotify";
    });

}  // namespace tidemark
