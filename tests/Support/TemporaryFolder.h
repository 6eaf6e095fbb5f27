#pragma once

#include "FileURL.h"

#include <filesystem>
#include <string>
#include <string_view>
#include <vector>

namespace tidemark {

/// A folder of its own for one test, below the system's temporary folder or another one, removed with
/// everything in it at the end of the scope.
class TemporaryFolder {
public:
    TemporaryFolder();
    explicit TemporaryFolder(const std::filesystem::path& parent);
    ~TemporaryFolder();

    TemporaryFolder(const TemporaryFolder&) = delete;
    TemporaryFolder& operator=(const TemporaryFolder&) = delete;

    const std::string& path() const { return m_path; }
    FileURL url() const { return FileURL::directory(m_path); }

    /// The path of something inside; `relative` may have several components.
    std::string path(std::string_view relative) const;
    FileURL url(std::string_view relative) const;

    /// Writes a file, making the folders above it, and returns where it is.
    FileURL write(std::string_view relative, std::string_view content) const;

    /// The content of a file; fails the test and is empty when there is none.
    std::string read(std::string_view relative) const;

    FileURL makeFolder(std::string_view relative) const;
    FileURL makeLink(std::string_view relative, std::string_view target) const;

    /// Whether anything stands there, a dangling link included.
    bool holds(std::string_view relative) const;

    /// The names in a folder, sorted; hidden ones too.
    std::vector<std::string> names(std::string_view relative = "") const;

private:
    std::string m_path;
};

}  // namespace tidemark
