#include "FolderText.h"

#include "FileURL.h"
#include "PlainText.h"
#include "StandardFolders.h"

#include <filesystem>

namespace tidemark {

QString FolderText::name(const std::string& path)
{
    const FileURL url = FileURL::directory(path);
    const std::string_view last = url.lastPathComponent();
    return oneLine(last.empty() ? std::string_view{path} : last);
}

QString FolderText::displayPath(const std::string& path)
{
    try {
        return displayPath(path, StandardFolders::home().path());
    } catch (const std::filesystem::filesystem_error&) {
        return oneLine(path);  // there is no home folder to leave out
    }
}

QString FolderText::displayPath(const std::string& path, const std::string& home)
{
    const bool isInHome = path.starts_with(home)
        && (path.size() == home.size() || path.at(home.size()) == '/') && home != "/";
    return oneLine(isInHome ? '~' + path.substr(home.size()) : path);
}

QString FolderText::symbol(const std::string& path)
{
    if (path.ends_with("/Desktop"))
        return QStringLiteral("menubar.dock.rectangle");
    if (path.ends_with("/Downloads"))
        return QStringLiteral("arrow.down.circle");
    return QStringLiteral("folder");
}

}  // namespace tidemark
