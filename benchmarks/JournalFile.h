#pragma once

#include "Clock.h"
#include "LinuxFileManager.h"
#include "Place.h"
#include "SweepController.h"

#include <cstddef>
#include <memory>

namespace tidemark::bench {

/// A support folder with a journal of so many entries and no settings.
class JournalFile {
public:
    /// Throws filesystem_error.
    JournalFile(const Place& place, std::size_t entries);

    FileURL url() const { return m_support.appending("journal.json"); }

    /// A controller that has not read the journal yet. The file outlives it.
    std::unique_ptr<SweepController> makeController();

private:
    FileURL m_support;
    LinuxFileManager m_fileManager;
    SystemClock m_clock;
};

}  // namespace tidemark::bench
