#include "ArgumentParser.h"

#include <gtest/gtest.h>

#include <limits>
#include <ostream>

namespace tidemark {
namespace {

struct Row {
    const char* name;
    std::vector<const char*> arguments;
    Invocation expected;

    friend void PrintTo(const Row& row, std::ostream* stream) { *stream << row.name; }
};

const Date may3 = *parseISO8601("2024-05-03T14:05:00Z");

class ArgumentParsing : public testing::TestWithParam<Row> { };

TEST_P(ArgumentParsing, FindsWhatIsMeant)
{
    EXPECT_EQ(parseArguments(GetParam().arguments), GetParam().expected);
}

INSTANTIATE_TEST_SUITE_P(Arguments, ArgumentParsing,
    testing::Values(Row{"command", {"status"}, {.command = Command::status}},
        Row{"optionBehind", {"status", "--json"}, {.command = Command::status, .json = true}},
        Row{"optionBefore", {"--json", "status"}, {.command = Command::status, .json = true}},
        Row{"supportBefore", {"--support", "/s", "undo"},
            {.command = Command::undo, .supportFolder = "/s"}},
        Row{"supportWithEquals", {"undo", "--support=/s=t"},
            {.command = Command::undo, .supportFolder = "/s=t"}},
        Row{"supportThatLooksLikeAnOption", {"undo", "--support", "--json"},
            {.command = Command::undo, .supportFolder = "--json"}},
        Row{"now", {"sweep", "--now", "2024-05-03T14:05:00Z"},
            {.command = Command::sweep, .now = may3}},
        Row{"nowInAnotherZone", {"preview", "--now=2024-05-03T16:05:00+02:00"},
            {.command = Command::preview, .now = may3}},
        Row{"limit", {"activity", "--limit", "0"}, {.command = Command::activity, .limit = 0}},
        Row{"usualLimit", {"activity"}, {.command = Command::activity, .limit = 20}},
        Row{"hugeLimit", {"activity", "--limit", "99999999999999999999"},
            {.command = Command::activity, .limit = std::numeric_limits<int>::max()}},
        Row{"folders", {"folders"}, {.command = Command::listFolders}},
        Row{"foldersList", {"folders", "list"}, {.command = Command::listFolders}},
        Row{"optionsBetweenPaths", {"folders", "add", "a", "--json", "b"},
            {.command = Command::addFolders, .json = true, .paths = {"a", "b"}}},
        Row{"pathsAfterTheEndOfOptions", {"folders", "remove", "--", "--json", "-x"},
            {.command = Command::removeFolders, .paths = {"--json", "-x"}}},
        Row{"singleDashIsAPath", {"folders", "add", "-"},
            {.command = Command::addFolders, .paths = {"-"}}},
        Row{"help", {"-h"}, {.mode = Invocation::Mode::help}},
        Row{"helpOfACommand", {"folders", "add", "--help"},
            {.mode = Invocation::Mode::help, .command = Command::addFolders}},
        Row{"version", {"--version"}, {.mode = Invocation::Mode::version}}),
    [](const auto& row) { return std::string{row.param.name}; });

}  // namespace
}  // namespace tidemark
