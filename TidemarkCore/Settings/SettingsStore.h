#pragma once

#include "Clock.h"
#include "FileManager.h"
#include "Settings.h"

namespace tidemark {

/// Reads and writes the settings file. Keeps nothing between calls.
///
/// Not locked: whoever loads, changes and saves holds the SupportLock meanwhile.
class SettingsStore {
public:
    /// Both services outlive the store.
    SettingsStore(FileURL url, FileManager& fileManager, const Clock& clock);

    const FileURL& url() const { return m_url; }

    /// The default settings when there is no file, which is not made then. Throws filesystem_error when it
    /// cannot be read (file_too_large above 64 MiB), DecodingError when it holds something else.
    Settings load() const;

    /// Replaces the file, making its folder if need be. One that cannot be read is kept beside it as
    /// "settings.json.unreadable-<time>", with "-2" and so on where that name is taken. Throws
    /// filesystem_error; the old file stands then.
    void save(const Settings& settings) const;

    /// The same for settings that take the place of a file that could not be read: it is kept in any case.
    void saveOverUnreadable(const Settings& settings) const;

private:
    bool hasUnreadableFile() const;
    void replaceUnreadableFile(std::string_view text) const;
    FileURL placeBeside() const;

    /// Copies the file to `place`, so that there is no moment without a settings file. False if it cannot
    /// be read at all.
    bool keepCopy(const FileURL& place) const;
    void write(std::string_view text) const;

    FileURL m_url;
    FileManager* m_fileManager;
    const Clock* m_clock;
};

}  // namespace tidemark
