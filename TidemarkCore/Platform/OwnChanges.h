#pragma once

#include "FileURL.h"

#include <initializer_list>
#include <memory>

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

}  // namespace tidemark
