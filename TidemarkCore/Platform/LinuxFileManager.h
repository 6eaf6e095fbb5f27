#pragma once

#include "FileManager.h"
#include "OwnChanges.h"
#include "Trash.h"

namespace tidemark {

/// The real file system, by the kernel's own calls.
class LinuxFileManager final : public FileManager {
public:
    /// Trashes into the user's own Trash (`$XDG_DATA_HOME/Trash`) and those of other file systems.
    /// `ownChanges` is told of every change that is made through this file manager, before it is made;
    /// null when nobody watches.
    explicit LinuxFileManager(OwnChangeRecorder* ownChanges = nullptr);

    bool fileExists(const FileURL& url) override;
    bool fileExists(const HeldEntry& entry) override;
    bool directoryExists(const FileURL& url) override;
    FileURL resolvingLinks(const FileURL& url) override;
    std::vector<DirectoryEntry> contentsOfDirectory(const FileURL& folder) override;
    std::vector<DirectoryEntry> contentsWithFlags(
        const FileURL& folder, const NameTest& flagMatters) override;
    bool visitNames(const FileURL& folder, const NameVisitor& visit) override;
    bool visitNames(const HeldFolder& folder, const NameVisitor& visit) override;
    void requireListable(const FileURL& folder) override;
    FileFacts facts(const FileURL& url) override;
    HeldFolder hold(const FileURL& folder) override;
    HeldFolder holdBelow(const HeldFolder& above, const FileURL& folder) override;
    HeldFolder createDirectory(const FileURL& folder) override;
    HeldFolder createDirectoryBelow(const HeldFolder& above, const FileURL& folder) override;
    void flushDirectory(const FileURL& folder) override;
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
    OwnChanges m_ownChanges;
    Trash m_trash;
};

}  // namespace tidemark
