#pragma once

#include "SweepObserver.h"
#include "UndoObserver.h"

#include <atomic>
#include <functional>
#include <optional>

namespace tidemark {

/// Follows work on the thread that does it, and has what happens told on the main thread.
class WorkFollower final : public SweepObserver, public UndoObserver {
public:
    /// Each is called on the main thread; empty ones are left out.
    struct Listener {
        std::function<void(const FileURL& folder)> willScan = {};
        std::function<void(std::size_t index, std::size_t count)> willPerform = {};
        std::function<void(const JournalEntry& entry)> didPerform = {};
        std::function<void(const JournalEntry& entry, const FileURL& place)> didRestore = {};
    };
    using Post = std::function<void(std::function<void()>)>;

    /// `post` runs a function on the main thread later; `stop` ends the work between two files.
    WorkFollower(Listener listener, Post post, const std::atomic<bool>& stop);

    /// When the first file comes of age that was too young for the sweep.
    std::optional<Date> comingOfAge() const { return m_comingOfAge; }

    void willScan(const FileURL& folder) override;
    void willComeOfAge(Date earliest) override { m_comingOfAge = earliest; }
    void willPerform(std::size_t index, std::size_t count) override;
    void didPerform(const JournalEntry& entry) override;
    void didRestore(const JournalEntry& entry, const FileURL& place) override;
    bool shouldStop() override { return m_stop; }

private:
    Listener m_listener;
    Post m_post;
    const std::atomic<bool>& m_stop;
    std::optional<Date> m_comingOfAge;
};

}  // namespace tidemark
