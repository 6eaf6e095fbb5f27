#pragma once

#include "Date.h"
#include "FileManager.h"
#include "Place.h"

#include <cstddef>

namespace tidemark::bench {

/// A folder of files as downloads leave them, watched with the default rules.
///
/// Every hundred files are two screenshots, two installers and a Markdown note, the others documents,
/// pictures and archives, all but the notes empty. Names have about 25 characters, the dates of the last
/// change lie in the three years before now.
class SampleFolder {
public:
    /// Makes the folder in `place`. Throws filesystem_error.
    SampleFolder(const Place& place, std::size_t files);

    const FileURL& files() const { return m_files; }

    /// A support folder whose settings file everything into folders that do not exist yet.
    FileURL supportBeforeFirstSweep() const;

    /// A support folder whose settings file everything into folders that are there.
    FileURL supportLater() const;

    /// A moment at which every file is old enough for the rules.
    static Date sweepDate();

private:
    void makeFiles(std::size_t count) const;
    void writeSettings(const FileURL& support, const FileURL& destinations) const;

    FileURL m_root;
    FileURL m_files;
};

}  // namespace tidemark::bench
