#include "ModelFixture.h"

namespace tidemark {

using testing::ElementsAre;
using testing::IsEmpty;

/// What is swept without an event. The alarm and the clock are the test's.
class AppModelFollowUp : public ModelTest {
protected:
    /// Watches "in" by `rules` with a grace period of a minute.
    Settings withGracePeriod(const std::vector<Rule>& rules) const
    {
        Settings settings = watching({"in"}, rules);
        settings.gracePeriod = Seconds{60};
        settings.hasOnboarded = true;
        return settings;
    }

    Rule filingOldPapers(double days) const
    {
        Rule rule = filingPapers();
        rule.match.minAge = Seconds{days * secondsPerDay};
        return rule;
    }

    /// The time until the alarm rings; nothing when it is not set.
    std::optional<Seconds> untilAlarm() const
    {
        if (!m_alarm.date())
            return std::nullopt;
        return *m_alarm.date() - m_clock.now();
    }

    /// The time passes up to the alarm, which then rings.
    void letAlarmRing()
    {
        ASSERT_TRUE(m_alarm.date());
        m_clock.set(*m_alarm.date());
        m_alarm.ring();
        finishWork();
    }

    void sweep()
    {
        model().sweepNow();
        finishWork();
    }
};

TEST_F(AppModelFollowUp, AFileThatRestsIsSweptWhenItsGracePeriodIsOver)
{
    writeSettings(withGracePeriod({filingPapers()}));
    start();
    addFile("in/one.pdf", Seconds{20});
    sweep();
    EXPECT_THAT(filed(), IsEmpty());
    EXPECT_EQ(untilAlarm(), Seconds{40});

    letAlarmRing();
    EXPECT_THAT(filed(), ElementsAre("one.pdf"));
    EXPECT_EQ(untilAlarm(), std::nullopt);
}

TEST_F(AppModelFollowUp, AFileThatTurnsOldEnoughIsSweptThatDay)
{
    writeSettings(withGracePeriod({filingOldPapers(30)}));
    start();
    addFile("in/one.pdf", Seconds{29.5 * secondsPerDay});
    sweep();
    EXPECT_EQ(untilAlarm(), Seconds{0.5 * secondsPerDay});
    letAlarmRing();
    EXPECT_THAT(filed(), ElementsAre("one.pdf"));
}

TEST_F(AppModelFollowUp, TheAlarmIsSetForOneFileAfterTheOther)
{
    writeSettings(withGracePeriod({filingPapers()}));
    start();
    addFile("in/one.pdf", Seconds{50});
    addFile("in/two.pdf", Seconds{10});
    sweep();
    EXPECT_EQ(untilAlarm(), Seconds{10});
    letAlarmRing();
    EXPECT_THAT(filed(), ElementsAre("one.pdf"));
    EXPECT_EQ(untilAlarm(), Seconds{40});
    letAlarmRing();
    EXPECT_THAT(filed(), ElementsAre("one.pdf", "two.pdf"));
    EXPECT_EQ(untilAlarm(), std::nullopt);
}

TEST_F(AppModelFollowUp, NoAlarmIsSetForWhatNeverComesOfAge)
{
    Rule disabled = filingOldPapers(30);
    disabled.isEnabled = false;
    struct Row {
        const char* name;
        std::vector<Rule> rules;
        const char* file;
    };
    const Row rows[] = {
        {"no rule fits", {filingPapers()}, "in/one.txt"},
        {"the rule is off", {disabled}, "in/one.pdf"},
        {"the download is unfinished", {filingPapers()}, "in/one.pdf.part"},
        {"no rule", {}, "in/one.pdf"},
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(row.name);
        writeSettings(withGracePeriod(row.rules));
        const FileURL file = addFile(row.file);
        start(AppModel::Initiative::always);
        sweep();
        EXPECT_EQ(untilAlarm(), std::nullopt);
        std::filesystem::remove(file.path());
    }
}

TEST_F(AppModelFollowUp, ASweepAsIfItWereAnotherTimeDoesNotMoveTheAlarm)
{
    writeSettings(withGracePeriod({filingPapers()}));
    start();
    addFile("in/one.pdf", Seconds{20});
    sweep();
    for (const double away : {-1e7, -10.0, 10.0}) {
        model().sweep({.now = m_clock.now() + Seconds{away}});
        finishWork();
        EXPECT_EQ(untilAlarm(), Seconds{40});
    }
}

TEST_F(AppModelFollowUp, AnActionThatFailedSetsNoAlarm)
{
    writeSettings(withGracePeriod({filingPapers()}));
    start();
    addFile("in/one.pdf", Seconds{100});
    m_files.setFaults({failEvery(FileCall::moveItem, std::errc::permission_denied)});
    sweep();
    EXPECT_EQ(untilAlarm(), std::nullopt);
}

TEST_F(AppModelFollowUp, WhilePausedThereIsNoAlarmAndAfterwardsThereIs)
{
    writeSettings(withGracePeriod({filingPapers()}));
    start();
    addFile("in/one.pdf");
    sweep();
    EXPECT_EQ(untilAlarm(), Seconds{60});

    model().togglePause();
    EXPECT_EQ(untilAlarm(), std::nullopt);
    sweep();
    EXPECT_EQ(untilAlarm(), std::nullopt);

    model().togglePause();
    finishWork();
    EXPECT_EQ(untilAlarm(), Seconds{60});
}

TEST_F(AppModelFollowUp, ASweepThatFailsIsTriedAgainWithGrowingPauses)
{
    writeSettings(withGracePeriod({filingPapers()}));
    start();
    addFile("in/one.pdf", Seconds{100});
    std::filesystem::rename(m_home.path("in"), m_home.path("away"));
    sweep();
    EXPECT_EQ(untilAlarm(), Seconds{60});
    letAlarmRing();
    EXPECT_EQ(untilAlarm(), Seconds{120});

    std::filesystem::rename(m_home.path("away"), m_home.path("in"));
    letAlarmRing();
    EXPECT_FALSE(model().didError());
    EXPECT_THAT(filed(), ElementsAre("one.pdf"));
    EXPECT_EQ(untilAlarm(), std::nullopt);
}

TEST_F(AppModelFollowUp, AtLaunchWhatCameOfAgeMeanwhileIsDueAtOnce)
{
    writeSettings(withGracePeriod({filingPapers()}));
    addFile("in/one.pdf", Seconds{100});
    start();
    EXPECT_EQ(untilAlarm(), Seconds{0});
    letAlarmRing();
    EXPECT_THAT(filed(), ElementsAre("one.pdf"));
}

TEST_F(AppModelFollowUp, AtLaunchTheAlarmIsSetForWhatComesOfAgeLater)
{
    writeSettings(withGracePeriod({filingPapers()}));
    addFile("in/one.pdf", Seconds{20});
    start();
    EXPECT_EQ(untilAlarm(), Seconds{40});
}

TEST_F(AppModelFollowUp, AtLaunchAFolderThatCannotBeReadIsReported)
{
    writeSettings(withGracePeriod({filingPapers()}));
    std::filesystem::remove(m_home.path("in"));
    start();
    EXPECT_EQ(untilAlarm(), Seconds{0});
    letAlarmRing();
    EXPECT_TRUE(model().didError());
}

TEST_F(AppModelFollowUp, NothingIsPlannedAtLaunchBeforeTheUserHasAgreedOrWhilePaused)
{
    struct Row {
        const char* name;
        AppModel::Initiative initiative;
        bool hasOnboarded;
        bool isPaused;
        bool isPlanned;
    };
    const Row rows[] = {
        {"agreed", AppModel::Initiative::onceOnboarded, true, false, true},
        {"not agreed", AppModel::Initiative::onceOnboarded, false, false, false},
        {"not asked", AppModel::Initiative::always, false, false, true},
        {"paused", AppModel::Initiative::onceOnboarded, true, true, false},
        {"not asked but paused", AppModel::Initiative::always, false, true, false},
    };
    addFile("in/one.pdf", Seconds{100});
    for (const Row& row : rows) {
        SCOPED_TRACE(row.name);
        Settings settings = withGracePeriod({filingPapers()});
        settings.hasOnboarded = row.hasOnboarded;
        settings.isPaused = row.isPaused;
        writeSettings(settings);
        start(row.initiative);
        EXPECT_EQ(untilAlarm().has_value(), row.isPlanned);
    }
}

TEST_F(AppModelFollowUp, AFirstStartLooksForNothingAtOnceButAfterwards)
{
    m_looksAtLaunch = false;
    writeSettings(withGracePeriod({filingPapers()}));
    addFile("in/one.pdf", Seconds{100});
    start(AppModel::Initiative::always);
    EXPECT_EQ(untilAlarm(), std::nullopt);
    model().togglePause();
    model().togglePause();
    finishWork();
    EXPECT_EQ(untilAlarm(), Seconds{0});
}

TEST_F(AppModelFollowUp, EditedSettingsRestAMinuteBeforeFilesAreSweptByThem)
{
    const Rule rule = filingOldPapers(30);
    writeSettings(withGracePeriod({rule}));
    addFile("in/one.pdf", Seconds{7 * secondsPerDay});
    start();
    EXPECT_EQ(untilAlarm(), Seconds{23 * secondsPerDay});

    model().editRule(m_home.path("in"), rule.id, 5);
    finishWork();
    EXPECT_EQ(untilAlarm(), Seconds{60});
    m_clock.advance(Seconds{30});
    model().editRule(m_home.path("in"), rule.id, 6);
    finishWork();
    EXPECT_EQ(untilAlarm(), Seconds{60});
    model().editRule(m_home.path("in"), rule.id, 60);
    finishWork();
    EXPECT_EQ(untilAlarm(), Seconds{53 * secondsPerDay - 30});
    EXPECT_TRUE(m_home.holds("in/one.pdf"));
}

TEST_F(AppModelFollowUp, AnAlarmThatRingsTooEarlyIsSetAgain)
{
    writeSettings(withGracePeriod({filingPapers()}));
    start();
    addFile("in/one.pdf");
    sweep();
    const auto due = m_alarm.date();
    EXPECT_EQ(sweeps(), 1);

    m_clock.advance(Seconds{-5000});
    m_alarm.ring();
    EXPECT_EQ(sweeps(), 0);
    EXPECT_EQ(m_alarm.date(), due);
}

TEST_F(AppModelFollowUp, AFileThatIsWrittenOnAndOnIsLeftAlone)
{
    writeSettings(withGracePeriod({filingPapers()}));
    start();
    addFile("in/one.pdf");
    sweep();
    for (int minute = 0; minute < 10; ++minute) {
        m_clock.advance(Seconds{50});
        addFile("in/one.pdf");  // written on
        m_clock.advance(Seconds{10});
        m_alarm.ring();
        finishWork();
        ASSERT_THAT(filed(), IsEmpty());
        ASSERT_EQ(untilAlarm(), Seconds{50});
    }
    letAlarmRing();
    EXPECT_THAT(filed(), ElementsAre("one.pdf"));
}

TEST_F(AppModelFollowUp, ADownloadIsSweptAGracePeriodAfterItsLastChangeUnderItsFinalName)
{
    writeSettings(withGracePeriod({filingPapers()}));
    start();
    addFile("in/one.pdf.part", Seconds{5});
    sweep();
    EXPECT_EQ(untilAlarm(), std::nullopt);
    std::filesystem::rename(m_home.path("in/one.pdf.part"), m_home.path("in/one.pdf"));
    sweep();
    EXPECT_EQ(untilAlarm(), Seconds{55});
    letAlarmRing();
    EXPECT_THAT(filed(), ElementsAre("one.pdf"));
}

}  // namespace tidemark
