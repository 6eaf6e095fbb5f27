#pragma once

#include "DirectoryIdentity.h"
#include "OwnChanges.h"

#include <cstdint>
#include <list>
#include <memory>
#include <mutex>
#include <string_view>

namespace tidemark {

/// Remembers the changes of this process for readers of event queues that do not say who made a change.
///
/// An entry is known by its folder's identity and its name, so any path to it will do. It is forgotten as
/// soon as every reader has emptied its queue once after the change was over: the kernel queues an event
/// before the call that caused it returns, so no time-out is needed. Without a reader nothing is kept.
///
/// Another program's change of the very same entry within that time counts as an own one. Safe from any
/// thread; changes and readers may outlive the log.
class OwnChangeLog final : public OwnChangeRecorder {
    struct Entries;

    /// Up to which moment a reader has seen the changes.
    struct Position {
        std::uint64_t draining = 0;
        std::uint64_t drained = 0;
    };

public:
    OwnChangeLog();
    ~OwnChangeLog() override;

    std::unique_ptr<OwnChange> begin(std::initializer_list<FileURL> entries) override;

    /// How many entries are remembered.
    std::size_t size() const;

    /// One reader of one event queue, for use by one thread. What changes after it was made is kept for it.
    class Reader {
    public:
        explicit Reader(OwnChangeLog& log);
        ~Reader();

        Reader(const Reader&) = delete;
        Reader& operator=(const Reader&) = delete;

        /// To be called around every look at the queue: what was over when `beginDrain` was called is
        /// forgotten once `endDrain` says that the queue was empty.
        void beginDrain();
        void endDrain();

        bool isOwn(const DirectoryIdentity& folder, std::string_view name) const;

    private:
        std::shared_ptr<Entries> m_entries;
        std::list<Position>::iterator m_position;
    };

private:
    class Change;

    std::shared_ptr<Entries> m_entries;
};

}  // namespace tidemark
