#include "LaunchOptions.h"

#include <array>

namespace tidemark {

namespace {

struct NamedAction {
    AppAction action;
    const char* option;
    const char* name;
};

constexpr std::array namedActions{
    NamedAction{AppAction::sweep, "--sweep", "sweep-now"},
    NamedAction{AppAction::togglePause, "--toggle-pause", "pause-or-resume"},
    NamedAction{AppAction::undo, "--undo", "undo-last-sweep"},
};

std::optional<AppAction> actionOf(const std::string& option)
{
    for (const NamedAction& each : namedActions) {
        if (each.option == option)
            return each.action;
    }
    return std::nullopt;
}

}  // namespace

const char* nameOf(AppAction action)
{
    for (const NamedAction& each : namedActions) {
        if (each.action == action)
            return each.name;
    }
    return "";
}

std::optional<AppAction> actionNamed(const std::string& name)
{
    for (const NamedAction& each : namedActions) {
        if (each.name == name)
            return each.action;
    }
    return std::nullopt;
}

LaunchOptions LaunchOptions::parse(std::span<const char* const> arguments)
{
    LaunchOptions options;
    for (const std::string argument : arguments) {
        const auto action = actionOf(argument);
        if (argument == "--help" || argument == "-h")
            options.mode = Mode::help;
        else if (argument == "--version" || argument == "-v")
            options.mode = Mode::version;
        else if (argument == "--autostart")
            options.isAutostart = true;
        else if (argument == "--service")
            options.isService = true;
        else if (action && !options.action)
            options.action = action;
        else if (!options.wrong)
            options.wrong = argument;
    }
    return options;
}

std::string LaunchOptions::helpText()
{
    return "Usage: tidemark [OPTION]\n"
           "\n"
           "Keeps chosen folders tidy, with an icon in the panel. Started again, it brings its\n"
           "windows to the front.\n"
           "\n"
           "  --sweep         sweep now\n"
           "  --toggle-pause  pause sweeping, or resume it\n"
           "  --undo          undo the last sweep, and pause\n"
           "  --autostart     start as at login, if it was ever started before\n"
           "  --service       start as the session bus does: without a window\n"
           "  -h, --help      show this help\n"
           "  -v, --version   show the version\n"
           "\n"
           "tidemarkctl does the same from a terminal.\n";
}

}  // namespace tidemark
