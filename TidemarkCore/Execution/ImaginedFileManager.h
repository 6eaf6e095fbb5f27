#pragma once

#include "FileManager.h"

#include <string>
#include <unordered_map>
#include <unordered_set>

namespace tidemark {

/// The file system as it would be after moves that are only imagined.
///
/// What exists is asked of the real one; moves, trashing and new folders are remembered here and change
/// nothing on the disk. Other changes throw not_supported. For one thread.
class ImaginedFileManager final : public FileManager {
public:
    /// `real` outlives it.
    explicit ImaginedFileManager(FileManager& real);

    bool fileExists(const FileURL& url) override;
    bool directoryExists(const FileURL& url) override;
    std::vector<DirectoryEntry> contentsOfDirectory(const FileURL& folder) override;
    FileFacts facts(const FileURL& url) override;
    void createDirectory(const FileURL& folder) override;
    void moveItem(const FileURL& from, const FileURL& to) override;
    std::optional<FileURL> trashItem(const FileURL& url) override;
    void setCreationDate(const FileURL& url, Date date) override;
    std::string readFile(const FileURL& url, std::size_t maxBytes) override;
    std::string readPrefix(const FileURL& url, std::size_t maxBytes) override;
    void writeAtomically(const FileURL& url, std::span<const std::string_view> pieces) override;
    std::optional<FileIdentity> identity(const FileURL& url) override;

private:
    enum class Imagined { nothing, file, folder };

    FileManager* m_real;
    std::unordered_map<std::string, Imagined> m_changes;  // by path
    std::unordered_set<std::string> m_knownFolders;       // real ones that were asked for already
};

}  // namespace tidemark
