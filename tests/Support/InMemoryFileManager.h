#pragma once

#include "FileManager.h"

#include <cstdint>
#include <initializer_list>
#include <map>
#include <mutex>
#include <set>
#include <utility>

namespace tidemark {

/// A whole file system in memory, with the promises of FileManager. Safe from any thread.
///
/// Names are told apart by case. Paths may lead through links and hold "." and "..". It has one device, so
/// that no move crosses file systems, and a creation date can be set. What is set up through the methods
/// that FileManager does not have ignores unreadable and read-only folders, makes missing parents, and
/// throws filesystem_error when there is nothing at a path.
class InMemoryFileManager final : public FileManager {
public:
    /// An empty root.
    InMemoryFileManager();

    /// Files by path and content.
    InMemoryFileManager(std::initializer_list<std::pair<std::string, std::string>> files);

    void addFile(const std::string& path, std::string content);
    void addFolder(const std::string& path);
    void addLink(const std::string& path, std::string target);

    /// A fifo, say: an entry that is neither file, folder nor link.
    void addSpecialFile(const std::string& path);

    /// Takes a file, link or folder away with what is in it, as another program may do.
    void remove(const std::string& path);

    /// Moves an entry with what is in it, as another program may do.
    void relocate(const std::string& from, const std::string& to);

    /// The date that new entries get; 1 January 2025 UTC at first.
    void setNow(Date now);

    void setModified(const std::string& path, std::optional<Date> date);
    void setAdded(const std::string& path, std::optional<Date> date);
    void setLastOpened(const std::string& path, std::optional<Date> date);
    void setCreated(const std::string& path, std::optional<Date> date);
    void setAllDates(const std::string& path, std::optional<Date> date);
    void setScreenCapture(const std::string& path, bool isScreenCapture = true);
    void setCloudStatus(const std::string& path, CloudStatus status);

    /// The facts and the content of an entry, or the list of a folder, answer permission_denied.
    void makeUnreadable(const std::string& path);

    /// Nothing can be made in, moved out of or renamed in this folder: permission_denied.
    void makeReadOnly(const std::string& folder);

    /// Undoes makeUnreadable and makeReadOnly.
    void makeAccessible(const std::string& path);

    /// trashItem moves into "/trash/files" and tells so, unless this is set: then it tells nothing.
    void hideTrashLocation(bool hide = true);

    /// setCreationDate throws not_supported, like a Linux file system.
    void refuseCreationDates(bool refuse = true);

    /// The content of every file, wherever it lies.
    std::multiset<std::string> contentsOfEveryFile() const;

    /// Nothing when no file is there; a link is not followed.
    std::optional<std::string> content(const std::string& path) const;

    /// Every path but the root, sorted by bytes; folders end in a slash.
    std::vector<std::string> tree() const;

    bool fileExists(const FileURL& url) override;
    bool fileExists(const HeldEntry& entry) override;
    bool directoryExists(const FileURL& url) override;
    FileURL resolvingLinks(const FileURL& url) override;
    std::vector<DirectoryEntry> contentsOfDirectory(const FileURL& folder) override;
    void requireListable(const FileURL& folder) override;
    FileFacts facts(const FileURL& url) override;
    HeldFolder hold(const FileURL& folder) override;
    HeldFolder holdBelow(const HeldFolder& above, const FileURL& folder) override;
    HeldFolder createDirectory(const FileURL& folder) override;
    HeldFolder createDirectoryBelow(const HeldFolder& above, const FileURL& folder) override;
    void flushDirectory(const FileURL&) override { }  ///< It has no disk.
    using FileManager::moveItem;
    void moveItem(const HeldEntry& from, const HeldEntry& to) override;
    using FileManager::trashItem;
    std::optional<FileURL> trashItem(const HeldEntry& file) override;
    void setCreationDate(const FileURL& url, Date date) override;
    std::string readFile(const FileURL& url, std::size_t maxBytes) override;
    std::string readPrefix(const FileURL& url, std::size_t maxBytes) override;
    void writeAtomically(const FileURL& url, std::span<const std::string_view> pieces) override;
    std::optional<FileIdentity> identity(const FileURL& url) override;

private:
    enum class Kind { file, folder, link, special };
    enum class LastLink { follow, keep };

    struct Node {
        Kind kind = Kind::file;
        std::string content;  ///< A link's target.
        FileFacts facts;
        bool isUnreadable = false;
        bool isReadOnly = false;
        std::uint64_t inode = 0;
        std::int64_t version = 0;  ///< Grows with every change of the content.
    };
    using Nodes = std::map<std::string, Node>;

    Node newNode(Kind kind, std::string content = {});
    void add(const std::string& path, Node node);
    void addParents(const std::string& path);
    Node& existing(const std::string& path);

    /// The path without links, "." and ".." in its folders; the last component need not exist.
    std::string resolve(const FileURL& url, LastLink lastLink) const;

    /// What stands at `url`, a link at its end followed or not; nothing when that is known to be nothing.
    const Node* find(const FileURL& url, LastLink lastLink) const;
    const Node& nodeAt(const std::string& resolved, const FileURL& url) const;
    void requireListableAt(const std::string& resolved, const FileURL& url) const;
    const Node& regularFileAt(const std::string& resolved, const FileURL& url) const;
    void requireWritableParent(const std::string& resolved, const FileURL& url) const;
    std::string freeTrashPath(std::string_view name) const;
    HeldFolder make(const FileURL& folder);
    HeldFolder held(const FileURL& folder) const;
    void requireInPlace(const HeldFolder& folder) const;
    void rename(const std::string& from, const std::string& to);

    mutable std::mutex m_mutex;
    Nodes m_nodes;
    Date m_now;
    std::uint64_t m_lastInode = 0;
    std::int64_t m_lastVersion = 0;
    bool m_hidesTrashLocation = false;
    bool m_refusesCreationDates = false;
};

}  // namespace tidemark
