#pragma once

#include <QString>

#include <string>

namespace tidemark {

/// How a watched folder is called in the interface.
namespace FolderText {

/// The last part of its path.
QString name(const std::string& path);

/// The path, with "~" for the home folder at its beginning.
QString displayPath(const std::string& path);

/// The same with this home folder.
QString displayPath(const std::string& path, const std::string& home);

/// The symbol of the Desktop, of Downloads, or of any folder.
QString symbol(const std::string& path);

}  // namespace FolderText

}  // namespace tidemark
