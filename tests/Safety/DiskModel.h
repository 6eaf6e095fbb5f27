#pragma once

#include "TracedCall.h"

#include <cstddef>
#include <map>
#include <set>
#include <string>
#include <string_view>
#include <vector>

namespace tidemark {

/// What a disk may hold when the power fails, worked out from the calls of a program.
///
/// What the model takes for granted: a change of names (a rename between two folders, too) happens wholly
/// or not at all; fsync of a folder makes the changes of its own names lasting, nothing more; fsync of a
/// file makes its content lasting, not its name; content that was not synced is gone, its name may be there.
/// Not modelled: attributes, disks that lie about having written, and file systems that keep half a rename.
class DiskModel {
public:
    enum class Order {
        /// Of each file system, the changes of names survive up to some point in time, as on file systems
        /// with a journal (ext4, XFS, Btrfs); each file system by itself.
        inOrder,
        /// Any change that was not synced may be lost or survive alone, as POSIX allows.
        any,
    };

    using Disk = std::map<std::string, std::string>;  // contents by path; files alone

    /// Begins with what is below `root` now. `disks` are the folders in which other file systems begin.
    DiskModel(std::string root, std::vector<std::string> disks);

    /// Takes in the next call. False for a call that the model does not understand.
    bool apply(const TracedCall& call);

    /// What may be there if the power fails now. Every possible end of what was not synced: each state in
    /// between `inOrder`, and with `any` order all lost, all kept, and every single one lost or kept alone.
    std::vector<Disk> possibleDisks(Order order) const;

private:
    using Node = std::size_t;
    using Names = std::map<Node, std::map<std::string, Node>>;  // the entries of each folder

    struct File {
        std::string content;
        std::string synced;
    };

    /// A change of names: `node` appears, disappears, or both at once.
    struct Change {
        Node node = 0;
        Node oldFolder = nowhere;
        std::string oldName = {};
        Node newFolder = nowhere;
        std::string newName = {};
        std::size_t fileSystem = 0;
        bool isSynced = false;
    };

    struct Place {
        Node folder = nowhere;
        std::string name;
    };

    static constexpr Node nowhere = static_cast<Node>(-1);

    void addExisting(Node folder, const std::string& path);
    Node newNode() { return m_nodes++; }
    Place placeOf(const std::string& path) const;
    Node nodeAt(const std::string& path) const;
    std::size_t fileSystemOf(const std::string& path) const;
    void change(Change change);
    void open(const TracedCall& call);
    void write(const TracedCall& call);
    void sync(const TracedCall& call);
    static void carryOut(const Change& change, Names& names);
    Disk disk(const std::set<std::size_t>& lost, bool keepsContent) const;
    void collect(const Names& names, Node folder, const std::string& path, bool keepsContent,
        Disk& found) const;
    std::vector<std::set<std::size_t>> lossesInOrder() const;
    std::vector<std::set<std::size_t>> lossesInAnyOrder() const;
    std::vector<std::size_t> unsynced(std::size_t fileSystem) const;

    std::string m_root;
    std::vector<std::string> m_disks;
    Node m_nodes = 0;
    Names m_before;  ///< As it was at first.
    Names m_now;
    std::map<Node, File> m_files;
    std::map<int, Node> m_open;
    std::map<int, std::size_t> m_positions;
    std::vector<Change> m_changes;
};

}  // namespace tidemark
