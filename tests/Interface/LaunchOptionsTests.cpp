#include "LaunchOptions.h"

#include <gtest/gtest.h>

#include <vector>

namespace tidemark {

TEST(LaunchOptions, AreUnderstood)
{
    using Mode = LaunchOptions::Mode;
    struct Row {
        std::vector<const char*> arguments;
        LaunchOptions options;
    };
    const Row rows[] = {
        {{}, {}},
        {{"--help"}, {.mode = Mode::help}},
        {{"-h"}, {.mode = Mode::help}},
        {{"--version"}, {.mode = Mode::version}},
        {{"-v"}, {.mode = Mode::version}},
        {{"--autostart"}, {.isAutostart = true}},
        {{"--service"}, {.isService = true}},
        {{"--sweep"}, {.action = AppAction::sweep}},
        {{"--toggle-pause"}, {.action = AppAction::togglePause}},
        {{"--undo"}, {.action = AppAction::undo}},
        {{"--undo", "--sweep"}, {.action = AppAction::undo, .wrong = "--sweep"}},
        {{"sweep"}, {.wrong = "sweep"}},
        {{"--nonsense"}, {.wrong = "--nonsense"}},
        {{""}, {.wrong = ""}},
    };
    for (const Row& row : rows) {
        SCOPED_TRACE(row.arguments.empty() ? "none" : row.arguments.front());
        EXPECT_EQ(LaunchOptions::parse(row.arguments), row.options);
    }
}

TEST(LaunchOptions, ActionsHaveTheNamesOfTheDesktopFile)
{
    for (const AppAction action : {AppAction::sweep, AppAction::togglePause, AppAction::undo})
        EXPECT_EQ(actionNamed(nameOf(action)), action);
    EXPECT_EQ(actionNamed("--sweep"), std::nullopt);
}

}  // namespace tidemark
