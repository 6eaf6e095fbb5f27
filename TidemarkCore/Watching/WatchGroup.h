#pragma once

#include "DirectoryIdentity.h"
#include "WatchBackend.h"

#include <cstddef>
#include <functional>
#include <string>
#include <string_view>
#include <unordered_map>

namespace tidemark {

struct WatchedDirectory;

/// Something happened in a watched directory: a hint to look there, since events merge and come late.
struct WatchEvent {
    std::string_view handle;  ///< The directory's.
    std::string_view name;  ///< The entry in it, or "." for the attributes of the directory itself.
    bool isDirectory = false;  ///< The entry is one, or was.
    bool isOwn = false;  ///< This process did it.
    bool isGone = false;  ///< The directory itself no longer exists; there is no entry.
};

/// One event queue of the kernel and the directories watched through it. For one thread.
class WatchGroup {
public:
    struct Watched {
        std::string handle;  ///< Names the directory in events.
        int error = 0;  ///< The errno if it cannot be watched.
    };

    struct Drained {
        std::size_t events = 0;
        bool isEmptied = true;  ///< Otherwise there is more to read.
        bool hasOverflowed = false;  ///< Events were lost.
    };

    using Sink = std::function<void(const WatchEvent&)>;

    explicit WatchGroup(WatchBackend backend)
        : m_backend(backend)
    {
    }
    virtual ~WatchGroup() = default;

    WatchGroup(const WatchGroup&) = delete;
    WatchGroup& operator=(const WatchGroup&) = delete;

    WatchBackend backend() const { return m_backend; }

    /// Readable while events wait.
    virtual int descriptor() const = 0;

    /// Watches an open directory. One that is watched already keeps its handle.
    virtual Watched watch(int directory) = 0;

    /// Whether the open directory is the one that `handle` names.
    virtual bool isSame(int directory, const std::string& handle) const = 0;

    /// Ends a watch as far as that goes without the directory at hand.
    virtual void abandon(const std::string& handle) = 0;

    /// Ends the watch of an open directory.
    virtual void unwatch(int directory, const std::string& handle) = 0;

    /// Reads what waits, but not forever.
    virtual Drained drain(const Sink& sink) = 0;

    /// Watches that were abandoned but still take up room.
    virtual std::size_t abandonedCount() const = 0;

    /// Whether the open directory has such a watch, which can be taken up again without taking more room.
    virtual bool isAbandoned(int directory) const = 0;

    /// Nothing for a handle that belongs to no directory.
    WatchedDirectory* find(std::string_view handle) const;

    /// Keeps who is meant by `handle`.
    void assign(const std::string& handle, WatchedDirectory& directory);

    /// Forgets it, if it is still `directory` who is meant.
    void unassign(const std::string& handle, const WatchedDirectory& directory);

    std::size_t directoryCount() const { return m_directories.size(); }

private:
    struct Hash {
        using is_transparent = void;
        std::size_t operator()(std::string_view text) const
        {
            return std::hash<std::string_view>{}(text);
        }
    };

    WatchBackend m_backend;
    std::unordered_map<std::string, WatchedDirectory*, Hash, std::equal_to<>> m_directories;
};

}  // namespace tidemark
