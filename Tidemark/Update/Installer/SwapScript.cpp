#include "SwapScript.h"

#include "AtomicWrite.h"
#include "Subprocess.h"
#include "SystemCall.h"
#include "WakeUp.h"

#include <sys/stat.h>

#include <array>
#include <string_view>
#include <vector>

namespace tidemark::SwapScript {

namespace {

constexpr mode_t forTheUserAlone = 0700;
constexpr int longestTrial = 5;  // seconds, for a user manager that does not answer

std::vector<std::string> inScope(const std::string& tool, std::vector<std::string> command)
{
    std::vector<std::string> whole{tool, "--user", "--scope", "--collect", "--quiet",
        "--slice=app.slice", "--description=Tidemark", "--"};
    whole.insert(whole.end(), command.begin(), command.end());
    return whole;
}

bool hasScopes(const std::string& tool)
{
    try {
        const WakeUp never;
        const pid_t trial =
            Subprocess::start(inScope(tool, {"/bin/sh", "-c", "exit 0"}), Subprocess::Session::own);
        return Subprocess::wait(trial, never.descriptor(), longestTrial) == 0;
    } catch (const std::system_error&) {
        return false;
    }
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
    // The whole copy reaches the disk before the backup goes. A copy that failed has to go itself, or the backup
    // could not come back; but a bundle that could not be moved aside never goes.
    return R"(#!/bin/sh
while kill -0 )"
        + std::to_string(pid) + R"( 2>/dev/null; do sleep 0.2; done
copy() { { cp -a "$1" "$2" && sync -f "$2"; } 2>/dev/null || { rm -rf "$2"; false; }; }
if rm -rf "$2.bak" && mv -T "$2" "$2.bak" 2>/dev/null && copy "$1" "$2"; then
  rm -rf "$2.bak"
else
  [ -d "$2.bak" ] && [ ! -d "$2" ] && mv "$2.bak" "$2"
fi
rm -rf "${0%.sh}" "$0"
setsid "$2/bin/tidemark" </dev/null >/dev/null 2>&1 &)";
}

pid_t launch(const FileURL& script, const FileURL& newBundle, const FileURL& installedBundle,
    pid_t pid, const std::string& scopeTool)
{
    write(script, pid);
    std::vector<std::string> command{
        "/bin/sh", script.path(), newBundle.path(), installedBundle.path()};
    if (hasScopes(scopeTool))
        command = inScope(scopeTool, std::move(command));
    return Subprocess::start(command, Subprocess::Session::own);
}

}  // namespace tidemark::SwapScript
