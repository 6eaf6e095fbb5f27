#pragma once

#include "FileManager.h"
#include "SweepPlan.h"

#include <cstddef>
#include <cstdint>
#include <memory_resource>
#include <optional>
#include <string>
#include <string_view>
#include <unordered_map>
#include <unordered_set>
#include <vector>

namespace tidemark {

/// The disk as it would be after moves that are only imagined.
///
/// What exists is asked of the real one; the folders that would be made, the names that would be taken and
/// those that the plan's files would leave are remembered here. Nothing is changed. For one thread.
class ImaginedDisk {
public:
    /// Both outlive it. The plan's files are taken to exist: it has just been made from them.
    ImaginedDisk(FileManager& real, const SweepPlan& plan);

    /// Whether anything would stand at `name` in the folder with this path.
    bool isTaken(std::string_view folder, std::string_view name);

    /// Makes the folder with this path, which outlives the disk, and every missing parent. Throws
    /// filesystem_error when something else is in the way.
    void makeFolder(std::string_view path);

    /// Whether a file is at the place that action number `action` names: its own still, or one that an
    /// earlier action has brought there.
    bool isThere(std::size_t action);

    /// That file leaves its place.
    void leave(std::size_t action);

    /// A file comes to stand at `name`, which outlives the disk, in the folder with this path.
    void take(std::string_view folder, std::string_view name);

private:
    struct Hash {
        using is_transparent = void;
        std::size_t operator()(std::string_view text) const
        {
            return std::hash<std::string_view>()(text);
        }
    };
    template <typename Value>
    using ByText = std::unordered_map<std::string, Value, Hash, std::equal_to<>>;

    /// A file of the plan in its folder.
    struct Source {
        std::size_t nameHash = 0;
        std::uint32_t action = 0;
    };

    struct Folder {
        explicit Folder(std::pmr::memory_resource* memory)
            : taken(memory)
        {
        }

        bool exists = false;  // really, or made here
        bool isImagined = false;  // made here: nothing real can stand in it
        std::pmr::unordered_set<std::string_view> taken;
        std::vector<Source> sources;  // by the hash of their names
        std::size_t lookUps = 0;
        std::optional<std::vector<std::size_t>> realNames;  // sorted hashes of all there are
    };

    Folder& folderAt(std::string_view path);
    Folder& folderOf(std::size_t action);
    void findSameFiles(const Folder& folder);
    std::string_view sourceName(std::uint32_t action) const;
    bool hasLeft(const Folder& folder, std::string_view name) const;
    bool existsReally(Folder& known, std::string_view folder, std::string_view name);
    void listRealNames(Folder& known, std::string_view folder);

    FileManager* m_real;
    const SweepPlan* m_plan;
    std::vector<std::uint32_t>
        m_files;  // by action: the number of the first one with the same file
    std::vector<bool> m_hasLeft;  // by such numbers
    std::pmr::monotonic_buffer_resource m_memory;
    ByText<Folder> m_folders;  // by path without links: one folder may have several spellings
    ByText<Folder*> m_spellings;
    const ByText<Folder*>::value_type* m_lastSpelling = nullptr;  // mostly asked for again
    std::string m_path;  // kept, since it is built for every question
};

}  // namespace tidemark
