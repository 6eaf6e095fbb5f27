#pragma once

#include "Journal.h"
#include "Scenario.h"
#include "ScopedEnvironment.h"
#include "Settings.h"
#include "TracedProcess.h"

#include <sys/types.h>

#include <map>
#include <set>
#include <string>
#include <vector>

namespace tidemark {

/// What was found after something went wrong, beside every file at one place.
struct Leftovers {
    std::set<std::string>
        inTrashWindow;  ///< In the Trash with a record, unknown to undo; by content.
    std::set<std::string> withdrawn;  ///< The same, and its entry has been taken back.
    std::set<std::string> inLinkWindow;  ///< Under two names.
    std::set<std::string>
        unknownCopies;  ///< Still at its place, and twice, the other not journaled.
    std::set<std::string> copied;  ///< Whole on two file systems.
    /// Still at its place, though the journal says that it is in the Trash, at a place not known yet: undo
    /// takes it for another file that came later and gives it a free name.
    std::set<std::string> announced;
    int temporaries = 0;  ///< Hidden temporary files of a copy.
    int placeholders = 0;  ///< Empty files that a move by placeholder was going to replace.
};

/// The files of a scenario on a real disk, and what must be true of them whatever happens.
///
/// Each file's content is unlike any other's. HOME and XDG_* point into the place for the world's life time.
class World {
public:
    /// Works in `place`, an empty folder; "disk" in it is another file system if the scenario needs one.
    World(std::string place, Scenario scenario);

    const Scenario& scenario() const { return m_scenario; }
    const std::string& place() const { return m_place; }

    /// Whether its files carry an extended attribute, which `check` looks for: not every disk keeps any.
    bool hasExtendedAttributes() const { return m_hasExtendedAttributes; }

    /// Where every file was before any sweep, by its content.
    const std::map<std::string, std::string>& origins() const { return m_origins; }

    /// Takes all away and makes the files of the scenario anew.
    void reset();

    /// Runs the scenario's command by the real program. Calls that the scenario refuses do not reach
    /// `judge`; they are recorded.
    TracedOutcome run(const std::function<CallVerdict(const TracedCall&)>& judge) const;

    /// Expects every file whole and exactly once, but for the windows that are known, nothing overwritten,
    /// journal and settings readable, and every moved file in the journal.
    Leftovers check() const;

    /// Sweeps once more if wanted, then undoes all sweeps, as the next process would, and expects all files
    /// back at their places but for what `leftovers` tells.
    void bringBack(const Leftovers& leftovers, bool sweepsFirst) const;

    /// Whether everything stands where the command brings it when nothing goes wrong.
    bool isDone() const;

    Journal journal() const;
    std::string supportFolder() const { return m_place + "/home/.local/share/Tidemark"; }

private:
    /// One name of a file on the disk.
    struct Found {
        std::string path;
        dev_t device;
        ino_t inode;
        mode_t mode;
        timespec modified;
        std::string attribute;  ///< The extended one that `write` gave it; "" for none.
    };
    using Files = std::map<std::string, std::vector<Found>>;  // by content

    Settings settings() const;
    void write(const std::string& relative) const;
    void sweep() const;
    Files files() const;
    static bool isTemporary(const std::string& path);
    static bool isBeside(const std::string& path, const std::string& origin);
    void checkAttributes(const std::string& content, const Found& found) const;
    void noteAnnounced(const Journal& journal, Leftovers& leftovers) const;
    void checkBack(const std::string& content, const std::vector<Found>& found,
        const Leftovers& leftovers) const;
    void checkFile(const std::string& content, const std::vector<Found>& found,
        const Journal& journal, Leftovers& leftovers) const;
    void checkNamed(const std::string& content, const Found& found, const Journal& journal,
        Leftovers& leftovers) const;
    void checkTrashRecord(const std::string& path, const std::string& origin) const;
    void checkForeign(const std::string& content, const Found& found, Leftovers& leftovers) const;
    void checkSettings() const;
    bool isOwnFile(const std::string& path) const;

    std::string m_place;
    Scenario m_scenario;
    ScopedHome m_home;
    ScopedEnvironment m_zone{"TZ", "UTC"};
    /// Whether files have an extended attribute: where one of the file systems takes none, a file that has one
    /// would not be moved there.
    bool m_hasExtendedAttributes;
    std::map<std::string, std::string> m_origins;  // of every file, by content
    std::set<std::string> m_bystanders;  // contents
};

}  // namespace tidemark
