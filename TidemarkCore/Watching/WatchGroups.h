#pragma once

#include "WatchBackend.h"
#include "WatchGroup.h"

#include <sys/types.h>

#include <array>
#include <compare>
#include <cstdint>
#include <map>
#include <memory>
#include <optional>
#include <set>
#include <vector>

namespace tidemark {

class OwnChangeLog;

/// All event queues of one watcher: a fanotify group for each file system, and one inotify instance for file
/// systems and times in which fanotify cannot be had.
///
/// Both kinds of watches are a ration that the user's other programs need too, so only a part of it is
/// taken: half of the fanotify marks, a quarter of the inotify watches. For one thread.
class WatchGroups {
public:
    struct Options {
        std::optional<WatchBackend> backend;  ///< Use only this one.
        std::optional<std::size_t> limit;  ///< In place of the part of the ration.
        OwnChangeLog* ownChanges = nullptr;
    };

    enum class Purpose {
        root,  ///< A folder that the user named: no limit of ours applies to it.
        below,
    };

    struct Watched {
        WatchGroup* group = nullptr;
        std::string handle;
        int error = 0;  ///< ENOSPC when there is no room for more watches.
        WatchBackend backend = WatchBackend::fanotify;  ///< The last one that was tried.
    };

    explicit WatchGroups(const Options& options);
    ~WatchGroups();

    /// Watches an open directory. `known` is what was found under its name before, or null.
    Watched watch(int directory, Purpose purpose, const WatchedDirectory* known);

    /// A watch was given up, so that there may be room again.
    void noteRoom() { m_full.clear(); }

    /// Whether no more directories below the folders can be watched that way.
    bool isFull(WatchBackend backend) const;

    std::vector<WatchGroup*> groups() const;

    std::size_t directoryCount() const;
    std::size_t abandonedCount() const;

    /// Gives back the queues through which nothing is watched.
    void closeUnused();

    /// Gives all of them back; no directory may refer to them any more.
    void clear();

private:
    struct FileSystem {
        dev_t device = 0;
        std::uint64_t id = 0;

        auto operator<=>(const FileSystem&) const = default;
    };

    static std::optional<FileSystem> fileSystemOf(int directory);
    Watched watchByFanotify(int directory, const FileSystem& fileSystem, Purpose purpose);
    Watched watchByInotify(int directory, Purpose purpose);
    Watched watchBy(WatchGroup& group, int directory, Purpose purpose);
    std::size_t limitOf(WatchBackend backend) const;

    Options m_options;
    std::size_t m_fanotifyLimit;
    std::size_t m_inotifyLimit;
    std::map<FileSystem, std::unique_ptr<WatchGroup>> m_fanotify;
    std::set<FileSystem> m_withoutFanotify;
    std::unique_ptr<WatchGroup> m_inotify;
    std::set<WatchBackend> m_full;
};

}  // namespace tidemark
