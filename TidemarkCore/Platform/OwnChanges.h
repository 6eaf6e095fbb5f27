#pragma once

#include "FileURL.h"

#include <cerrno>
#include <initializer_list>
#include <memory>
#include <utility>

namespace tidemark {

/// A change of files that this process is making; it is over when the object goes.
class OwnChange {
public:
    virtual ~OwnChange() = default;
};

/// Is told which entries of folders this process is about to change, so that whoever watches those folders
/// can tell its changes from those of others. Safe from any thread.
class OwnChangeRecorder {
public:
    virtual ~OwnChangeRecorder() = default;

    /// Called right before the system call that makes, changes, moves or removes `entries` (for a move the old
    /// and the new place); hold the answer until that call has returned. Never fails: an entry whose folder
    /// does not exist is left out.
    [[nodiscard]] virtual std::unique_ptr<OwnChange> begin(
        std::initializer_list<FileURL> entries) = 0;
};

/// Whom those who make the system calls tell of their changes. A small value to be passed down; an empty one
/// means that nobody watches, and then nothing is done. Safe from any thread like the recorder, which must
/// outlive it.
class OwnChanges {
public:
    /// Lasts as long as the change; its end leaves errno as the system call has set it.
    class Guard {
    public:
        explicit Guard(std::unique_ptr<OwnChange> change)
            : m_change(std::move(change))
        {
        }
        Guard(Guard&&) noexcept = default;
        Guard& operator=(Guard&&) = delete;
        ~Guard()
        {
            const int error = errno;
            m_change.reset();
            errno = error;
        }

    private:
        std::unique_ptr<OwnChange> m_change;
    };

    OwnChanges() = default;
    explicit OwnChanges(OwnChangeRecorder* recorder)
        : m_recorder(recorder)
    {
    }

    /// See OwnChangeRecorder. Several system calls in a row that change the same entries may share a guard. A
    /// file that was open for writing is changed once more when it is closed, under the name that it has then.
    [[nodiscard]] Guard begin(std::initializer_list<FileURL> entries) const
    {
        return Guard{m_recorder != nullptr ? m_recorder->begin(entries) : nullptr};
    }

private:
    OwnChangeRecorder* m_recorder = nullptr;
};

}  // namespace tidemark
