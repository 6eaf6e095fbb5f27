#include "ComingOfAge.h"

#include "Matcher.h"
#include "StabilityGate.h"

#include <gtest/gtest.h>

#include <cmath>
#include <limits>
#include <random>

using namespace tidemark;

namespace {

constexpr double infinity = std::numeric_limits<double>::infinity();
constexpr double notANumber = std::numeric_limits<double>::quiet_NaN();
constexpr Date now{Seconds{1714745100}};
constexpr Seconds grace{60};

/// Ages in seconds.
FileInfo file(std::string name, double modified, double added = 1e6, double lastOpened = 1e6)
{
    return {.url = FileURL("/in/" + std::move(name)),
        .modified = now - Seconds(modified),
        .added = now - Seconds(added),
        .lastOpened = now - Seconds(lastOpened),
        .created = now,
        .frontMatter = std::nullopt,
        .isScreenCapture = false};
}

Rule rule(RuleMatch match, bool isEnabled = true)
{
    return {.name = "rule",
        .isEnabled = isEnabled,
        .match = std::move(match),
        .action = RuleAction::fixed(SweepAction::trash())};
}

Rule after(double minAge, AgeBasis basis = AgeBasis::modified)
{
    return rule({.minAge = Seconds(minAge), .ageBasis = basis});
}

/// In how many seconds.
std::optional<double> due(
    const FileInfo& info, const std::vector<Rule>& rules, Seconds gracePeriod = grace)
{
    const auto moment = ComingOfAge::of(info, rules, gracePeriod, now);
    return moment ? std::optional((*moment - now).count()) : std::nullopt;
}

}  // namespace

TEST(ComingOfAge, IsTheEndOfTheGracePeriodOrTheAgeThatTheEarliestFittingRuleWants)
{
    struct Row {
        const char* name;
        FileInfo file;
        std::vector<Rule> rules;
        std::optional<double> due;
    };
    const Rule any = rule({});
    const Rule png = rule({.fileTypes = {"png"}});
    for (const Row& row :
        {
            Row{"no rules", file("a", 10), {}, std::nullopt},
            Row{"a rule without age", file("a", 10), {any}, 50},
            Row{"just now", file("a", 0), {any}, 60},
            Row{"modified in the future", file("a", -100), {any}, 160},
            Row{"a rule of another type", file("a.txt", 10), {png}, std::nullopt},
            Row{"a rule of its type, in capitals", file("A.PNG", 10), {png}, 50},
            Row{"a rule for another name", file("a", 10), {rule({.namePattern = "b*"})},
                std::nullopt},
            Row{"a rule for screen captures", file("a", 10), {rule({.screenCaptureOnly = true})},
                std::nullopt},
            Row{"a disabled rule", file("a", 10), {rule({}, false)}, std::nullopt},
            Row{"a disabled rule before another", file("a", 70), {rule({}, false), after(100)}, 30},
            Row{"rested, too young for its rule", file("a", 70), {after(100)}, 30},
            Row{"not rested, of age before it is", file("a", 10), {after(20)}, 50},
            Row{"not rested, of age long ago", file("a", 10), {after(100, AgeBasis::added)}, 50},
            Row{"not rested, of age later", file("a", 10), {after(100)}, 90},
            Row{"the later rule is the earlier due", file("a", 70), {after(300), after(200)}, 130},
            Row{"the earlier of two that fit", file("a", 70), {after(200), after(300)}, 130},
            Row{"a rule without age behind one with", file("a", 10), {after(300), any}, 50},
            Row{"a later rule that does not fit", file("a", 70),
                {after(300), rule({.fileTypes = {"png"}, .minAge = Seconds(100)})}, 230},
            Row{"the date added", file("a", 70, 20), {after(100, AgeBasis::added)}, 80},
            Row{"the date of opening", file("a", 70, 20, 40), {after(100, AgeBasis::lastOpened)},
                60},
            Row{"added in the future", file("a", 70, -5), {after(0, AgeBasis::added)}, 5},
            Row{"an unfinished download", file("a.PART", 10), {any}, std::nullopt},
            Row{"an unfinished download that rests", file("a.part", 70), {after(100)},
                std::nullopt},
            Row{"an unfinished ending in the middle", file("a.part.mp4", 10), {any}, 50},
            Row{"of age already", file("a", 70), {any}, std::nullopt},
            Row{"of age by one of two rules", file("a", 70), {after(100), any}, std::nullopt},
            Row{"of age this very moment", file("a", 60), {after(60)}, std::nullopt},
        }) {
        EXPECT_EQ(due(row.file, row.rules), row.due) << row.name;
    }
}

TEST(ComingOfAge, KeepsWithinItsBound)
{
    const FileInfo young = file("a", 10);
    const std::vector<Rule> rules{after(100)};
    const Date moment = now + Seconds(90);

    EXPECT_EQ(ComingOfAge::of(young, rules, grace, now, moment + Seconds(1)), moment);
    EXPECT_EQ(ComingOfAge::of(young, rules, grace, now, moment), std::nullopt);
    EXPECT_EQ(ComingOfAge::of(young, rules, grace, now, moment - Seconds(1)), std::nullopt);
    EXPECT_EQ(ComingOfAge::of(young, rules, grace, now, now + Seconds(50)), std::nullopt);
}

TEST(ComingOfAge, NeverComesWithNumbersThatAreNone)
{
    struct Row {
        const char* name;
        double modified;
        double added;
        std::optional<double> minAge;
        double gracePeriod;
        std::optional<double> due;
    };
    constexpr double largest = std::numeric_limits<double>::max();
    for (const Row& row :
        {
            Row{"endless age", 70, 20, infinity, 60, std::nullopt},
            Row{"endless age, not rested", 10, 20, infinity, 60, std::nullopt},
            Row{"largest age of a date in the future", 70, -largest, largest, 60, std::nullopt},
            Row{"an age that is no number counts as reached", 10, 20, notANumber, 60, 50},
            Row{"an age below everything is reached", 10, 20, -infinity, 60, 50},
            Row{"a date that is no number counts as reached", 10, notANumber, 100, 60, 50},
            Row{"a date after everything", 70, -infinity, 100, 60, std::nullopt},
            Row{"a date before everything", 10, infinity, 100, 60, 50},
            Row{"endless grace period", 70, 20, std::nullopt, infinity, std::nullopt},
            Row{"a grace period that is no number", 70, 20, std::nullopt, notANumber, std::nullopt},
            Row{"a grace period below everything", 10, 20, 100, -infinity, 80},
            Row{"modified before everything", infinity, 20, 100, 60, 80},
            Row{"modified after everything", -infinity, 20, std::nullopt, 60, std::nullopt},
            Row{"modified at no time", notANumber, 20, std::nullopt, 60, std::nullopt},
            Row{"largest grace period of a date in the future", -largest, 20, std::nullopt, largest,
                std::nullopt},
        }) {
        Rule aged = after(0, AgeBasis::added);
        aged.match.minAge.reset();
        if (row.minAge)
            aged.match.minAge = Seconds(*row.minAge);
        EXPECT_EQ(
            due(file("a", row.modified, row.added), {aged}, Seconds(row.gracePeriod)), row.due)
            << row.name;
    }
}

TEST(ComingOfAge, TellsAMomentAtWhichTheFileIsLetThroughHoweverUglyTheNumbers)
{
    std::mt19937_64 random(20240503);  // NOLINT: the same numbers in every run
    const auto someAge = [&] {
        const double magnitude = std::uniform_real_distribution(-9.0, 11.0)(random);
        return std::pow(10.0, magnitude);
    };
    int nudged = 0;
    int young = 0;
    for (int round = 0; round < 40'000; ++round) {
        FileInfo info = file("a", 0);
        info.modified = now - Seconds(someAge());
        info.added = now - Seconds(someAge());
        const Seconds gracePeriod(someAge());
        const std::vector<Rule> rules{after(someAge(), AgeBasis::added)};
        const auto isThrough = [&](Date moment) {
            return StabilityGate::isStable(info, gracePeriod, moment)
                && Matcher::matches(rules[0].match, info, moment);
        };

        const auto moment = ComingOfAge::of(info, rules, gracePeriod, now);

        ASSERT_EQ(moment.has_value(), !isThrough(now));
        if (!moment)
            continue;
        ++young;
        ASSERT_GT(*moment, now);
        ASSERT_TRUE(isThrough(*moment));
        const Date sum = std::max(info.modified + gracePeriod, info.added + *rules[0].match.minAge);
        nudged += isThrough(sum) ? 0 : 1;
        // At most a few steps of a double too late.
        ASSERT_LT((*moment - sum).count(), 1e-4);
    }
    EXPECT_GT(young, 4'000);
    EXPECT_GT(nudged, 100);  // or else the numbers were not ugly enough to show anything
}
