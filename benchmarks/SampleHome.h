#pragma once

#include "Place.h"

#include <string>
#include <vector>

namespace tidemark::bench {

/// A home folder of somebody who has Tidemark keep their Desktop and Downloads tidy.
class SampleHome {
public:
    /// Makes it anew in `place`. Throws filesystem_error.
    SampleHome(const Place& place, std::size_t journalEntries);

    /// What a program needs to take it for its home: "NAME=value".
    std::vector<std::string> environment() const;

    /// Has a file appear that a rule files at once.
    void addNote() const;

private:
    FileURL folder(std::string_view name) const;

    FileURL m_home;
};

}  // namespace tidemark::bench
