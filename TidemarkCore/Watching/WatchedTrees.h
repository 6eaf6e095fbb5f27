#pragma once

#include "FileDescriptor.h"
#include "FileURL.h"
#include "LinkWalk.h"
#include "WatchGroups.h"
#include "WatchStatus.h"
#include "WatchedDirectory.h"

#include <ctime>
#include <deque>
#include <memory>
#include <optional>
#include <set>
#include <string>
#include <string_view>
#include <vector>

namespace tidemark {

/// The watched folders with everything below them: which directories there are, and the watch on each.
///
/// The top folders are watched at once, what is below them step by step (`scan`), breadth first, so that the
/// upper folders win when the watches run out. Events are hints only: the entry is looked up again and compared
/// with what is known. For one thread.
class WatchedTrees {
public:
    WatchedTrees(std::vector<FileURL> folders, const WatchGroups::Options& options);
    ~WatchedTrees();

    WatchedTrees(const WatchedTrees&) = delete;
    WatchedTrees& operator=(const WatchedTrees&) = delete;

    /// Watches the folders where their paths lead now, one for each folder in order. What is watched already
    /// stays; a folder that came, went or was replaced counts as a change, but for the first call.
    void follow(const std::vector<LinkWalk::Result>& paths);

    /// Something was mounted or unmounted at this absolute path.
    void mountChanged(const std::string& path);

    /// The event queues to poll.
    std::vector<int> descriptors() const;

    struct Drained {
        std::size_t events = 0;
        bool isEmptied = true;
    };

    /// Takes in what the event queues hold.
    Drained drain();

    /// Reads up to `count` of the directories that wait to be read.
    void scan(std::size_t count);
    bool isScanning() const { return !m_queue.empty(); }

    /// Whether a top folder was lost, so that the paths have to be followed again.
    bool hasLoss() const { return m_hasLoss; }

    /// Whether another program changed something since the last call.
    bool takeChange();

    /// For which kinds of watches there was no room since the last call.
    std::set<WatchBackend> takeLimits();

    /// Whether `status` may say something else than at the last call; not while folders are looked up.
    bool takeStatusChange();

    /// One for each folder, in order.
    std::vector<WatchStatus> status() const;

private:
    struct Root {
        FileURL folder;
        LinkWalk::Result path;
        std::shared_ptr<WatchedDirectory> directory;  ///< Two roots may share one.
        int error = 0;
    };

    enum class Watch { abandon, keep };

    bool isUnchanged(const Root& root, const LinkWalk::Result& path) const;
    void detach(Root& root);
    void attach(Root& root);
    WatchGroups::Watched watchRoot(int directory);
    bool makeRoom();
    void rebuild();

    void takeIn(WatchGroup& group, const WatchEvent& event);
    void lookUp(WatchedDirectory& directory, std::string_view name);
    void lookUp(WatchedDirectory& directory, const FileDescriptor& opened, const std::string& name);
    void noteMissing(WatchedDirectory& directory, const std::string& name, int error);
    void adopt(WatchedDirectory& directory, const std::string& name, WatchGroups::Watched watched);
    void noteOlderChange(int directory);
    void read(WatchedDirectory& directory);

    void enqueue(WatchedDirectory& directory);
    void noteUnwatched(WatchedDirectory& directory, int error);
    void retryUnwatched();
    void drop(WatchedDirectory& directory, Watch watch);
    void release(WatchedDirectory& directory, Watch watch);
    static FileDescriptor open(const WatchedDirectory& directory);
    bool isRoot(const WatchedDirectory& directory) const { return directory.parent == nullptr; }

    std::vector<Root> m_roots;
    WatchGroups m_groups;
    std::deque<std::weak_ptr<WatchedDirectory>> m_queue;
    std::set<std::weak_ptr<WatchedDirectory>, std::owner_less<>> m_unwatched;
    std::set<WatchBackend> m_limits;
    std::optional<timespec> m_watchingSince;  ///< While what is there already is looked up.
    bool m_isFollowing = false;  ///< The folders were followed at least once.
    bool m_hasRoom = false;  ///< Watches were given up since there was no room.
    bool m_hasLoss = false;
    bool m_hasChange = false;
    bool m_isStatusNew = true;
};

}  // namespace tidemark
