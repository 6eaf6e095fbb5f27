#pragma once

#include "CommandLineFixture.h"
#include "Journal.h"
#include "WatchProcess.h"

#include <gmock/gmock.h>

#include <set>
#include <string>
#include <vector>

namespace tidemark {

/// Runs the real `tidemarkctl watch` in a home folder of its own, beside other commands and programs.
///
/// Every line that it prints is waited for, and nothing else. A sweep for an event comes after a second of
/// quiet, so tests that only need some sweep let it find files that are due when it starts.
class WatchFixture : public CommandLineFixture {
protected:
    /// How it is started; its complaints are kept apart from those of the commands beside it.
    ProgramStart watch(const std::vector<std::string>& options = {}) const;

    /// What it wrote on standard error.
    std::string complaints() const { return m_streams.read("err"); }

    /// Makes it run without root's power over every file; for a user who has none it changes nothing.
    static ProgramStart asOrdinaryUser(ProgramStart how);

    /// Has files "*.pdf" in "in" moved into "Filed", `gracePeriod` after their last change.
    void fileMyPapers(Seconds gracePeriod = Seconds{0}) const;

    /// Writes files with contents of their own: "in/000.pdf" and so on.
    void addPapers(int count, const std::string& folder = "in") const;

    /// The contents of all files below these folders, which need not exist.
    std::multiset<std::string> contents(const std::vector<std::string>& folders) const;

    /// Read anew, every value checked.
    Journal journal() const;
    /// The paths of everything that the journal says was moved, without their folders, sorted.
    std::vector<std::string> journaledNames() const;

    /// In seconds since 1970, by the file's own stamps: when it was written, and when it was renamed.
    double writtenAt(const std::string& file) const;
    double movedAt(const std::string& file) const;

private:
    TemporaryFolder m_streams;
};

/// Run once with each of the kernel's interfaces for watching.
class WatchOnBackend : public WatchFixture, public testing::WithParamInterface<const char*> {
protected:
    ProgramStart watch() const { return WatchFixture::watch({"--backend", GetParam()}); }
};

inline auto bothBackends()
{
    return testing::Values("fanotify", "inotify");
}

inline std::string backendName(const testing::TestParamInfo<const char*>& backend)
{
    return backend.param;
}

/// Tells of what happens to the files of a folder, which must exist, from now on.
class FileEvents {
public:
    /// `mask` is inotify(7)'s; files that are made in the folder or moved into it if not given.
    explicit FileEvents(const std::string& folder, unsigned mask = arrivals);

    /// Waits until it has happened to this name so often. Throws after half a minute.
    void waitFor(const std::string& name, int times = 1);

    /// How often it has happened to this name so far.
    int count(const std::string& name);

private:
    static const unsigned arrivals;

    bool readMore(int milliseconds);

    FileDescriptor m_inotify;
    std::multiset<std::string> m_names;
};

}  // namespace tidemark
