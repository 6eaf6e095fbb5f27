#pragma once

#include <memory>
#include <set>
#include <string>
#include <string_view>

namespace tidemark {

class WatchGroup;

/// One directory of a watched tree. It knows its name but no path, so that renaming a folder costs nothing
/// below it. Holds its children; for one thread.
struct WatchedDirectory : std::enable_shared_from_this<WatchedDirectory> {
    struct ByName {
        using is_transparent = void;

        static std::string_view key(std::string_view name) { return name; }
        static std::string_view key(const std::shared_ptr<WatchedDirectory>& directory)
        {
            return directory->name;
        }
        template <typename Left, typename Right>
        bool operator()(const Left& left, const Right& right) const
        {
            return key(left) < key(right);
        }
    };

    WatchedDirectory* parent = nullptr;  ///< Null for the top of a tree.
    std::string name;  ///< In its parent; the top's is its absolute path.
    WatchGroup* group = nullptr;  ///< Watches it.
    std::string handle;  ///< Its name in the group's events.
    std::set<std::shared_ptr<WatchedDirectory>, ByName> children;
    int unwatchedReason = 0;  ///< The errno for which something in it is not watched, or 0.
    bool isQueued = false;  ///< Waits to be read.

    std::string path() const;

    /// Null when it has no such child.
    std::shared_ptr<WatchedDirectory> child(std::string_view childName) const;

    /// Adds a child, whose name must be free.
    WatchedDirectory& add(
        std::string_view childName, WatchGroup& childGroup, std::string childHandle);

    /// Takes it out of its parent.
    void detach();

    const WatchedDirectory& top() const;
    bool isWithin(const WatchedDirectory& other) const;
};

}  // namespace tidemark
