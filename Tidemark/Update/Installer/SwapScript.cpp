#include "SwapScript.h"

#include "AtomicWrite.h"
#include "Subprocess.h"
#include "SystemCall.h"
#include "WakeUp.h"

#include <sys/stat.h>
#include <unistd.h>

#include <array>
#include <filesystem>
#include <optional>
#include <stdexcept>
#include <string_view>
#include <vector>

namespace tidemark::SwapScript {

namespace {

constexpr mode_t forTheUserAlone = 0700;
constexpr int longestTrial = 5;  // seconds, for a user manager that does not answer
constexpr int longestChange = 5;  // seconds, for one that does not do what it could in the trial

std::vector<std::string> inScope(const std::string& tool, std::vector<std::string> command)
{
    std::vector<std::string> whole{tool, "--user", "--scope", "--collect", "--quiet",
        "--slice=app.slice", "--description=Tidemark", "--"};
    whole.insert(whole.end(), command.begin(), command.end());
    return whole;
}

bool hasScopes(const std::string& tool, const WakeUp& stop)
{
    try {
        const pid_t trial =
            Subprocess::start(inScope(tool, {"/bin/sh", "-c", "exit 0"}), Subprocess::Session::own);
        return Subprocess::wait(trial, stop.descriptor(), longestTrial) == 0;
    } catch (const std::system_error&) {
        return false;
    }
}

/// In the work folder, for the script to compare.
void rememberWhatIsReplaced(const FileURL& script, const FileURL& installedBundle)
{
    const std::filesystem::path work = std::filesystem::path{script.path()}.replace_extension();
    std::filesystem::copy_file(installedBundle.appending("Info.json").path(), work / "Info.json",
        std::filesystem::copy_options::overwrite_existing);
}

/// Nothing if it does not come that far, so that there is nothing to fear of it.
std::optional<pid_t> startedInScope(
    const std::string& tool, const std::vector<std::string>& command)
{
    const pid_t process = Subprocess::start(inScope(tool, command), Subprocess::Session::own);
    // Before that it may still be in the unit, and end with it.
    if (Subprocess::becomes(process, command, longestChange))
        return process;
    return std::nullopt;
}

pid_t start(const std::vector<std::string>& command, const WakeUp& stop, const std::string& tool)
{
    const bool isInScope = hasScopes(tool, stop);
    if (stop.isSignalled())
        throw std::runtime_error{"the update was stopped"};
    if (isInScope) {
        if (const auto process = startedInScope(tool, command))
            return *process;
    }
    return Subprocess::start(command, Subprocess::Session::own);
}

void write(const FileURL& script, pid_t pid)
{
    const std::string content = text(pid);
    const std::array<std::string_view, 1> pieces{content};
    AtomicWrite::write(script, pieces, {});
    if (::chmod(systemPath(script), forTheUserAlone) != 0)
        fail("cannot write", script, errno);
}

}  // namespace

std::string text(pid_t pid)
{
    const std::string process = std::to_string(pid);
    // A process that nobody waits for is a zombie for ever, but has ended. The whole copy is on the disk
    // before the bundle is moved aside, so that a script that is killed, or a power cut, meets two
    // renames at most. One bundle is swapped by one script at a time, and only while it is the one that
    // was to be replaced: two applications may have run from it.
    return R"(#!/bin/sh
while kill -0 )"
        + process + R"( 2>/dev/null && ! grep -qs '^State:.[ZX]' /proc/)" + process
        + R"(/status; do sleep 0.2; done
trap '' HUP INT TERM
swap() {
  cmp -s "$2/Info.json" "${0%.sh}/Info.json" &&
  rm -rf "$2.new" && cp -aT "$1" "$2.new" && sync -f "$2.new" &&
  rm -rf "$2.bak" && mv -T "$2" "$2.bak" && mv -T "$2.new" "$2"
}
{
  if ! flock -w 600 9; then
    :
  elif swap "$1" "$2"; then
    sync -f "$2"
    rm -rf "$2.bak"
  else
    [ -d "$2.bak" ] && [ ! -d "$2" ] && mv -T "$2.bak" "$2"
    rm -rf "$2.new"
  fi
} 9<"${2%/*}/" 2>/dev/null
rm -rf "${0%.sh}" "$0"
trap - HUP INT TERM
setsid -f "$2/bin/tidemark" </dev/null >/dev/null 2>&1)";
}

pid_t launch(const FileURL& script, const FileURL& newBundle, const FileURL& installedBundle,
    pid_t pid, const WakeUp& stop, const std::string& scopeTool)
{
    try {
        write(script, pid);
        rememberWhatIsReplaced(script, installedBundle);
        return start(
            {"/bin/sh", script.path(), newBundle.path(), installedBundle.path()}, stop, scopeTool);
    } catch (...) {
        ::unlink(systemPath(script));
        throw;
    }
}

}  // namespace tidemark::SwapScript
