#pragma once

#include "FileDescriptor.h"
#include "WatchGroup.h"

#include <sys/types.h>

#include <cstdint>
#include <unordered_set>
#include <vector>

namespace tidemark {

/// Watches directories of one file system through fanotify without privileges.
///
/// A handle is the file handle of the directory, which no other directory of the file system ever gets. The
/// kernel tells which changes this process made. A mark follows its directory wherever that is moved.
class FanotifyGroup final : public WatchGroup {
public:
    /// Throws system_error if the kernel has no such group to give.
    FanotifyGroup();

    int descriptor() const override { return m_queue.get(); }
    Watched watch(int directory) override;
    bool isSame(int directory, const std::string& handle) const override;
    void abandon(const std::string& handle) override;
    void unwatch(int directory, const std::string& handle) override;
    Drained drain(const Sink& sink) override;
    std::size_t abandonedCount() const override { return m_abandoned.size(); }
    bool isAbandoned(int directory) const override;

private:
    void readEvents(std::size_t size, const Sink& sink, Drained& drained);
    void readEvent(std::size_t offset, std::size_t size, const Sink& sink, Drained& drained);

    bool isAboutEntry(const std::string& handle, std::string_view name, std::uint64_t mask) const;

    FileDescriptor m_queue;
    pid_t m_process;
    std::vector<char> m_buffer;
    std::unordered_set<std::string> m_abandoned;
};

}  // namespace tidemark
