#pragma once

#include "TemporaryFolder.h"
#include "TestDeveloper.h"

#include <map>
#include <string>

#include <sys/types.h>

namespace tidemark {

/// A bundle on the disk that somebody has signed.
class TestBundle {
public:
    /// Makes the folder "<name>" in `parent`; its program tells `version` and ends.
    TestBundle(const TemporaryFolder& parent, std::string name, const std::string& version,
        const TestDeveloper& developer);

    FileURL url() const { return FileURL::directory(m_parent.path(m_name)); }
    std::string path(const std::string& relative) const
    {
        return m_parent.path(m_name + '/' + relative);
    }

    /// Writes or replaces a file, without signing it.
    void write(const std::string& relative, const std::string& content, mode_t mode = 0644) const;

    /// Writes the manifest of what is there now, and its signature.
    void sign(const TestDeveloper& developer, const std::string& version) const;

    /// Writes this manifest and its signature.
    void signText(const TestDeveloper& developer, const std::string& manifest) const;

    /// The manifest of what is there now.
    std::string manifest(const std::string& team, const std::string& version) const;

    /// Every file, folder and link in it with its mode and content.
    std::map<std::string, std::string> snapshot() const;

    /// The bytes of a zip archive with the bundle in it, below `prefix`.
    std::string archive(const std::string& prefix = "") const;

private:
    const TemporaryFolder& m_parent;
    std::string m_name;
};

}  // namespace tidemark
