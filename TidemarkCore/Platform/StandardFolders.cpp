#include "StandardFolders.h"

#include "Folders.h"
#include "SystemCall.h"
#include "Text.h"

#include <QByteArray>

#include <pwd.h>
#include <sys/stat.h>
#include <unistd.h>

#include <fstream>
#include <vector>

namespace tidemark::StandardFolders {

namespace {

/// The home folder of the user database; empty when it has none.
std::string homeInUserDatabase()
{
    std::vector<char> buffer(1024);
    struct passwd entry;
    struct passwd* found = nullptr;
    for (;;) {
        const int error = ::getpwuid_r(::getuid(), &entry, buffer.data(), buffer.size(), &found);
        if (error == ERANGE)
            buffer.resize(buffer.size() * 2);
        else if (error != EINTR)
            return found && found->pw_dir ? found->pw_dir : "";
    }
}

/// An environment variable that is to hold an absolute path; empty when it does not.
std::string absolutePath(const char* variable)
{
    std::string path = qgetenv(variable).toStdString();
    return path.starts_with('/') ? path : std::string{};
}

FileURL configurationHome()
{
    const std::string configured = absolutePath("XDG_CONFIG_HOME");
    return configured.empty() ? home().appending(".config") : FileURL::directory(configured);
}

/// Takes `prefix` and the blanks after it off the front of `text`.
bool skip(std::string_view& text, std::string_view prefix)
{
    if (!text.starts_with(prefix))
        return false;
    text = trimmedOfWhitespace(text.substr(prefix.size()));
    return true;
}

/// What stands between the quotes at the front of `text`, without the shell's escapes; nothing when the
/// closing quote is missing.
std::optional<std::string> unquoted(std::string_view text)
{
    std::string value;
    for (std::size_t i = 0; i < text.size() && text[i] != '"'; ++i) {
        if (text[i] == '\\' && i + 1 < text.size())
            ++i;
        value += text[i];
        if (i + 1 < text.size() && text[i + 1] == '"')
            return value;
    }
    return std::nullopt;
}

/// Reads a line such as `XDG_DESKTOP_DIR="$HOME/Desktop"`; nothing when it is about something else.
std::optional<FileURL> folderOnLine(std::string_view line, std::string_view variable)
{
    line = trimmedOfWhitespaceAndNewlines(line);
    if (!skip(line, variable) || !skip(line, "=") || !line.starts_with('"'))
        return std::nullopt;
    line.remove_prefix(1);
    const bool isInHome = line.starts_with("$HOME/") || line.starts_with("$HOME\"");
    const std::optional<std::string> value = unquoted(line);
    if (!value)
        return std::nullopt;
    if (isInHome)
        return FileURL::directory(home().path() + value->substr(std::string_view{"$HOME"}.size()));
    return value->starts_with('/') ? std::optional{FileURL::directory(*value)} : std::nullopt;
}

/// What the user's configuration says; the last line counts. A file that cannot be read says nothing.
std::optional<FileURL> configured(std::string_view variable)
{
    std::optional<FileURL> folder;
    std::ifstream file{configurationHome().appending("user-dirs.dirs").path()};
    for (std::string line; std::getline(file, line);) {
        if (std::optional<FileURL> found = folderOnLine(line, variable))
            folder = std::move(found);
    }
    return folder;
}

/// Compared by what the paths lead to: the home folder may be reached through a link.
bool isHome(const FileURL& folder)
{
    struct stat status;
    struct stat homeStatus;
    return ::stat(folder.path().c_str(), &status) == 0
        && ::stat(home().path().c_str(), &homeStatus) == 0 && status.st_dev == homeStatus.st_dev
        && status.st_ino == homeStatus.st_ino;
}

std::optional<FileURL> userFolder(std::string_view variable, std::string_view defaultName)
{
    const FileURL folder =
        configured(variable).value_or(home().appending(defaultName, FileURL::Kind::directory));
    if (!Folders::isFolder(folder) || isHome(folder))
        return std::nullopt;
    return folder;
}

}  // namespace

FileURL home()
{
    std::string path = absolutePath("HOME");
    if (path.empty())
        path = homeInUserDatabase();
    if (!path.starts_with('/'))
        fail("there is no home folder", FileURL{}, ENOENT);
    return FileURL::directory(path);
}

std::optional<FileURL> desktop()
{
    return userFolder("XDG_DESKTOP_DIR", "Desktop");
}

std::optional<FileURL> downloads()
{
    return userFolder("XDG_DOWNLOAD_DIR", "Downloads");
}

FileURL dataHome()
{
    const std::string configured = absolutePath("XDG_DATA_HOME");
    if (!configured.empty())
        return FileURL::directory(configured);
    return FileURL::directory(home().appending(".local").appending("share").path());
}

}  // namespace tidemark::StandardFolders
