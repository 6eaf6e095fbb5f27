#pragma once

#include <compare>
#include <optional>
#include <string>
#include <string_view>

namespace tidemark {

/// An absolute path on the file system, written as a file URL (RFC 8089) where it is stored.
///
/// A plain value. The path is kept as given but for trailing slashes, which become `isDirectory`; nothing
/// is resolved or looked up. Two URLs are equal when both the path and `isDirectory` are.
class FileURL {
public:
    enum class Kind { file, directory };

    FileURL() = default;

    /// `path` is absolute. A trailing slash makes it a directory whatever `kind` says.
    explicit FileURL(std::string path, Kind kind = Kind::file);

    static FileURL directory(std::string path);

    /// Reads an absolute file URL such as "file:///Users/a/Desktop/". Nothing for another scheme, a host
    /// other than "localhost", a relative path, characters that a URL cannot hold, or escapes that give
    /// a NUL or invalid UTF-8.
    static std::optional<FileURL> fromString(std::string_view url);

    /// The absolute URL, percent-encoded; a directory ends in a slash.
    std::string toString() const;

    /// Without trailing slash, but for the root.
    const std::string& path() const { return m_path; }
    bool isDirectory() const { return m_kind == Kind::directory; }

    /// Empty for the root.
    std::string_view lastPathComponent() const;

    /// The folder that holds it; the root's is the root.
    FileURL parent() const;

    /// `name` inside this folder, taken as one path component.
    FileURL appending(std::string_view name, Kind kind = Kind::file) const;

    auto operator<=>(const FileURL&) const = default;

private:
    std::string m_path;
    Kind m_kind = Kind::file;
};

}  // namespace tidemark
