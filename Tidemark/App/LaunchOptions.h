#pragma once

#include <optional>
#include <span>
#include <string>

namespace tidemark {

/// What the application can be asked to do besides being there.
enum class AppAction { sweep, togglePause, undo };

/// The name by which other programs ask for it: that of the desktop file's action.
const char* nameOf(AppAction action);
std::optional<AppAction> actionNamed(const std::string& name);

/// How the application is started. A plain value.
struct LaunchOptions {
    enum class Mode { run, help, version };

    Mode mode = Mode::run;
    std::optional<AppAction> action = {};
    bool isAutostart = false;  ///< By the session, at login.
    bool isService = false;  ///< By the session bus, which then tells what to do.
    std::optional<std::string> wrong = {};  ///< The argument that cannot be understood.

    /// `arguments` are those after the program's name.
    static LaunchOptions parse(std::span<const char* const> arguments);

    /// Whether somebody waits for something to be seen.
    bool isAwaited() const { return !isAutostart && !isService; }

    /// What --help prints.
    static std::string helpText();

    bool operator==(const LaunchOptions&) const = default;
};

}  // namespace tidemark
