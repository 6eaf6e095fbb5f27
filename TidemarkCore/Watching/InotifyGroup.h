#pragma once

#include "FileDescriptor.h"
#include "OwnChangeLog.h"
#include "WatchGroup.h"

#include <memory>
#include <vector>

namespace tidemark {

/// Watches directories of any file system through inotify.
///
/// A handle is the watch descriptor. The kernel does not say who made a change: own ones are those that the
/// log knows; without a log every change counts as another program's.
class InotifyGroup final : public WatchGroup {
public:
    /// `ownChanges` may be null and must outlive the group's constructor only. Throws system_error if the user
    /// has no instance left.
    explicit InotifyGroup(OwnChangeLog* ownChanges);

    int descriptor() const override { return m_queue.get(); }
    Watched watch(int directory) override;
    bool isSame(int directory, const std::string& handle) const override;
    void abandon(const std::string& handle) override;
    void unwatch(int directory, const std::string& handle) override;
    Drained drain(const Sink& sink) override;
    std::size_t abandonedCount() const override { return 0; }
    bool isAbandoned(int /*directory*/) const override { return false; }

private:
    void readEvents(std::size_t size, const Sink& sink, Drained& drained);
    bool isOwn(int watch, std::string_view name) const;

    FileDescriptor m_queue;
    std::unique_ptr<OwnChangeLog::Reader> m_ownChanges;
    std::vector<char> m_buffer;
    std::unordered_map<int, DirectoryIdentity> m_identities;
};

}  // namespace tidemark
