#pragma once

#include "Executor.h"
#include "Journal.h"
#include "JournalReplay.h"
#include "LinuxFileManager.h"
#include "Place.h"

#include <cstddef>
#include <string>
#include <vector>

namespace tidemark::bench {

/// A folder of files to be moved into another one, and a support folder with a journal of earlier sweeps.
///
/// All of it can be brought back to the start, so that moves are measured again and again.
class MoveSample {
public:
    /// Makes a folder of this name in `place`. Without entries in `before` there is no journal file. Throws
    /// filesystem_error.
    MoveSample(Place place, const std::string& name, std::size_t files, Journal before);

    /// As if nothing had been moved; it is on the disk when this returns.
    void reset();

    FileManager& fileManager() { return m_fileManager; }
    FileURL settingsURL() const { return m_support.appending("settings.json"); }
    FileURL journalURL() const { return m_support.appending("journal.json"); }

    std::size_t count() const { return m_names.size(); }
    FileURL source(std::size_t index) const { return m_from.appending(m_names[index]); }
    FileURL destination(std::size_t index) const { return m_to.appending(m_names[index]); }

    /// What moves the first `count` files.
    SweepPlan plan(std::size_t count) const;

    /// The journal's texts, as a sweep that moves the files writes them.
    const JournalReplay& replay() const { return m_replay; }

    /// That the journal now is as long as the replay's after `count` entries: else something else was
    /// measured than is compared. Throws std::logic_error.
    void requireJournalAfter(std::size_t count) const;

private:
    void writeSettings();
    JournalReplay makeReplay() const;

    Place m_place;
    FileURL m_from;
    FileURL m_to;
    FileURL m_support;
    LinuxFileManager m_fileManager;
    std::vector<std::string> m_names;
    Journal m_before;
    JournalReplay m_replay;
};

}  // namespace tidemark::bench
