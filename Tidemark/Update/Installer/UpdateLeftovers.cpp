#include "UpdateLeftovers.h"

#include "SystemCall.h"

#include <sys/stat.h>

#include <charconv>
#include <csignal>
#include <ctime>
#include <optional>
#include <string>
#include <string_view>
#include <vector>

namespace tidemark::UpdateLeftovers {

namespace {

namespace fs = std::filesystem;

constexpr std::string_view prefix = "qrv-update-";
constexpr std::time_t longestSwap = std::time_t{24} * 60 * 60;  // seconds

/// The process in the name of a work folder.
std::optional<pid_t> processIn(std::string_view name)
{
    if (!name.starts_with(prefix))
        return {};
    name.remove_prefix(prefix.size());
    pid_t process = 0;
    const auto [rest, error] = std::from_chars(name.begin(), name.end(), process);
    if (error != std::errc{} || rest != name.end() || process <= 0)
        return {};
    return process;
}

bool isGone(pid_t process)
{
    return ::kill(process, 0) != 0 && errno == ESRCH;
}

std::vector<std::string> workFolders(const FileURL& temporaryDirectory)
{
    std::vector<std::string> found;
    std::error_code error;
    for (fs::directory_iterator each{temporaryDirectory.path(), error}, end; !error && each != end;
         each.increment(error)) {
        const auto process = processIn(each->path().filename().string());
        if (process && isGone(*process))
            found.push_back(each->path().string());
    }
    return found;
}

/// Lets its owner look into the folder and those in it, and change them.
void openUp(const fs::path& folder)
{
    std::error_code ignored;
    fs::permissions(folder, fs::perms::owner_all, fs::perm_options::add, ignored);
    for (fs::directory_iterator each{folder, ignored}, end; !ignored && each != end;
         each.increment(ignored)) {
        std::error_code error;
        if (each->symlink_status(error).type() == fs::file_type::directory)
            openUp(each->path());
    }
}

}  // namespace

void removeTree(const FileURL& folder)
{
    std::error_code error;
    const fs::path path = folder.path();
    fs::remove_all(path, error);
    if (!error || fs::symlink_status(path, error).type() != fs::file_type::directory)
        return;
    openUp(path);
    fs::remove_all(path, error);
}

void remove(const FileURL& temporaryDirectory)
{
    for (const std::string& folder : workFolders(temporaryDirectory)) {
        const FileURL script{folder + ".sh"};
        if (mayBeAtWork(script))
            continue;
        removeTree(FileURL::directory(folder));
        std::error_code ignored;
        fs::remove(script.path(), ignored);
    }
}

bool mayBeAtWork(const FileURL& script)
{
    struct stat status = {};
    return ::lstat(systemPath(script), &status) == 0
        && std::time(nullptr) - status.st_mtime < longestSwap;
}

}  // namespace tidemark::UpdateLeftovers
