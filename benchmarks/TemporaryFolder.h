#pragma once

#include "FileURL.h"

namespace tidemark::bench {

/// A folder with a fresh name that goes away with everything in it.
class TemporaryFolder {
public:
    /// Throws filesystem_error when none can be made in `parent`.
    explicit TemporaryFolder(const FileURL& parent);
    ~TemporaryFolder();
    TemporaryFolder(const TemporaryFolder&) = delete;
    TemporaryFolder& operator=(const TemporaryFolder&) = delete;

    const FileURL& url() const { return m_url; }

private:
    FileURL m_url;
};

}  // namespace tidemark::bench
