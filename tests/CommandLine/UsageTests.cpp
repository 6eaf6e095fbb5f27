#include "CommandLineFixture.h"

#include <gmock/gmock.h>

#include <algorithm>
#include <ostream>

namespace tidemark {
namespace {

using testing::HasSubstr;
using testing::StartsWith;

struct WrongUse {
    const char* name;
    std::vector<std::string> arguments;
    const char* complaint;

    friend void PrintTo(const WrongUse& use, std::ostream* stream) { *stream << use.name; }
};

class WrongUsage : public CommandLineFixture, public testing::WithParamInterface<WrongUse> { };

TEST_P(WrongUsage, IsOneLineThatSaysWhatIsWrongAndTouchesNothing)
{
    const Outcome outcome = run(GetParam().arguments);

    EXPECT_EQ(outcome.status, 2);
    EXPECT_EQ(outcome.output, "");
    EXPECT_THAT(outcome.error, StartsWith("tidemarkctl: "));
    EXPECT_THAT(outcome.error, HasSubstr(GetParam().complaint));
    EXPECT_THAT(outcome.error, HasSubstr("tidemarkctl --help"));
    EXPECT_EQ(std::ranges::count(outcome.error, '\n'), 1);
    EXPECT_TRUE(outcome.error.ends_with('\n'));
    EXPECT_THAT(everything(), testing::IsEmpty());
}

INSTANTIATE_TEST_SUITE_P(Usage, WrongUsage,
    testing::Values(WrongUse{"nothing", {}, "no command given"},
        WrongUse{"optionOnly", {"--json"}, "no command given"},
        WrongUse{"unknownCommand", {"tidy"}, "unknown command 'tidy'"},
        WrongUse{"emptyCommand", {""}, "unknown command ''"},
        WrongUse{"commandInCapitals", {"Status"}, "unknown command 'Status'"},
        WrongUse{"unknownOption", {"status", "--all"}, "unknown option '--all'"},
        WrongUse{"unknownOptionWithValue", {"status", "--all=1"}, "unknown option '--all'"},
        WrongUse{"unknownShortOption", {"status", "-j"}, "unknown option '-j'"},
        WrongUse{"shortenedOption", {"status", "--js"}, "unknown option '--js'"},
        WrongUse{"switchWithValue", {"status", "--json=yes"}, "--json takes no value"},
        WrongUse{"supportWithoutValue", {"status", "--support"}, "--support needs a value"},
        WrongUse{"emptySupport", {"status", "--support", ""}, "--support needs a folder"},
        WrongUse{"emptySupportAfterEquals", {"status", "--support="}, "--support needs a folder"},
        WrongUse{"supportTwice", {"status", "--support", "a", "--support", "b"},
            "--support is given twice"},
        WrongUse{"nowWithoutValue", {"sweep", "--now"}, "--now needs a value"},
        WrongUse{"nowInWords", {"sweep", "--now", "tomorrow"}, "not 'tomorrow'"},
        WrongUse{"nowWithoutZone", {"sweep", "--now", "2024-05-03T14:05:00"}, "--now needs a date"},
        WrongUse{"nowOfNoDay", {"preview", "--now", "2024-02-30T00:00:00Z"}, "--now needs a date"},
        WrongUse{"emptyNow", {"undo", "--now="}, "--now needs a date"},
        WrongUse{"nowForStatus", {"status", "--now", "2024-05-03T14:05:00Z"},
            "--now does not belong to status"},
        WrongUse{"nowBeforeActivity", {"--now", "2024-05-03T14:05:00Z", "activity"},
            "--now does not belong to activity"},
        WrongUse{"limitBelowZero", {"activity", "--limit", "-1"}, "not '-1'"},
        WrongUse{"limitFarBelowZero", {"activity", "--limit", "-99999999999999999999"},
            "--limit needs a whole number"},
        WrongUse{"limitNoNumber", {"activity", "--limit", "ten"}, "not 'ten'"},
        WrongUse{"limitWithRest", {"activity", "--limit", "5x"}, "not '5x'"},
        WrongUse{"limitFraction", {"activity", "--limit", "1.5"}, "not '1.5'"},
        WrongUse{"emptyLimit", {"activity", "--limit", ""}, "not ''"},
        WrongUse{"limitForSweep", {"sweep", "--limit", "5"}, "--limit does not belong to sweep"},
        WrongUse{"surplusForStatus", {"status", "all"}, "status takes no argument 'all'"},
        WrongUse{"surplusForSweep", {"sweep", "--", "--json"}, "sweep takes no argument '--json'"},
        WrongUse{"surplusForList", {"folders", "list", "x"}, "folders list takes no argument 'x'"},
        WrongUse{"unknownFolders", {"folders", "drop"}, "unknown command 'folders drop'"},
        WrongUse{"addNothing", {"folders", "add"}, "folders add needs at least one folder"},
        WrongUse{
            "removeNothing", {"folders", "remove"}, "folders remove needs at least one folder"},
        WrongUse{"addEmptyPath", {"folders", "add", ""}, "empty path"},
        WrongUse{"notUTF8", {"status", "caf\xE9"}, R"(the argument 'caf\xe9' is not valid UTF-8)"},
        WrongUse{"valueNotUTF8", {"status", "--support", "\xFF"}, R"('\xff' is not valid UTF-8)"},
        WrongUse{"pathNotUTF8", {"folders", "add", "/\xC0\xAF"}, R"('/\xc0\xaf' is not valid)"},
        WrongUse{"newlineInArgument", {"a\nb"}, R"(unknown command 'a\nb')"},
        WrongUse{"escapeInArgument", {"\x1b[31m"}, R"(unknown command '\x1b[31m')"}),
    [](const auto& row) { return std::string{row.param.name}; });

class Help : public CommandLineFixture { };

TEST_F(Help, TellsAllCommandsOnStandardOutput)
{
    const Outcome outcome = run({"--help"});

    EXPECT_EQ(outcome.status, 0);
    EXPECT_EQ(outcome.error, "");
    for (const char* command : {"status", "preview", "sweep", "undo", "activity", "pause", "resume",
             "folders add PATH", "folders remove PATH", "--support DIR", "--json"})
        EXPECT_THAT(outcome.output, HasSubstr(command));
    EXPECT_THAT(everything(), testing::IsEmpty());
}

TEST_F(Help, OfACommandIsItsOwn)
{
    for (const char* command :
        {"status", "preview", "sweep", "undo", "activity", "pause", "resume", "folders"}) {
        SCOPED_TRACE(command);
        const Outcome outcome = run({command, "--help"});

        EXPECT_EQ(outcome.status, 0);
        EXPECT_THAT(outcome.output, StartsWith(std::string{"Usage: tidemarkctl "} + command));
    }
    EXPECT_THAT(run({"folders", "add", "--help"}).output, HasSubstr("folders add PATH..."));
}

TEST_F(Help, NamesTheVersion)
{
    const Outcome outcome = run({"--version"});

    EXPECT_EQ(outcome.status, 0);
    EXPECT_THAT(outcome.output, testing::MatchesRegex("tidemarkctl [0-9]+\\.[0-9]+\\.[0-9]+\n"));
}

}  // namespace
}  // namespace tidemark
