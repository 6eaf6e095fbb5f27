#pragma once

#include "FileManager.h"

#include <mutex>
#include <optional>
#include <system_error>
#include <vector>

namespace tidemark {

/// The calls of a FileManager, by name.
enum class FileCall {
    fileExists,
    directoryExists,
    resolvingLinks,
    contentsOfDirectory,
    requireListable,
    facts,
    hold,
    createDirectory,
    flushDirectory,
    moveItem,
    trashItem,
    setCreationDate,
    readFile,
    readPrefix,
    writeAtomically,
    identity,
};

/// Which calls fail, and how. A condition that is not set holds for every call.
struct FileFault {
    /// Whether the call that fails has done its work all the same: the report got lost, not the deed.
    enum class Moment { beforeTheEffect, afterTheEffect };

    std::optional<int>
        call;  ///< Counted from 0, over calls of every kind or, with `kind`, of that one.
    std::optional<FileCall> kind;
    std::optional<FileURL>
        url;  ///< Only calls with this as their (first) URL, `isDirectory` aside.
    std::errc error = std::errc::io_error;
    Moment moment = Moment::beforeTheEffect;
};

/// The call with this number fails.
FileFault failAt(int call, std::errc error);

/// Of the calls of this kind the one with this number fails.
FileFault failAt(FileCall kind, int call, std::errc error);

/// Every call of this kind fails, or every one for `url`.
FileFault failEvery(FileCall kind, std::errc error);
FileFault failEvery(FileCall kind, const FileURL& url, std::errc error);

/// The same fault, but the call does its work before it fails.
FileFault afterTheEffect(FileFault fault);

/// Passes every call on to another file manager, but lets chosen ones fail with a filesystem_error. Safe
/// from any thread. The other file manager must outlive it.
class FaultInjectingFileManager : public FileManager {
public:
    explicit FaultInjectingFileManager(FileManager& files);
    FaultInjectingFileManager(FileManager& files, FileFault fault);
    FaultInjectingFileManager(FileManager& files, std::vector<FileFault> faults);

    /// Replaces the faults; the calls are counted on.
    void setFaults(std::vector<FileFault> faults);

    /// Whether any call was made to fail so far.
    bool faultFired() const;

    int callCount() const;
    int callCount(FileCall kind) const;

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
    template <typename Action>
    auto performing(FileCall kind, const FileURL& url, Action action);

    /// Counts the call and finds the fault that it runs into.
    std::optional<FileFault> faultOfNextCall(FileCall kind, const FileURL& url);

    FileManager& m_files;
    mutable std::mutex m_mutex;
    std::vector<FileFault> m_faults;
    std::vector<FileCall> m_calls;
    bool m_fired = false;
};

}  // namespace tidemark
