#pragma once

#include "JournalEntry.h"

namespace tidemark {

/// Follows an undo while it runs, and may end it early. Called on the thread that undoes; must not throw.
class UndoObserver {
public:
    virtual ~UndoObserver() = default;

    /// Asked before each entry. True ends the undo there; a later one goes on.
    virtual bool shouldStop() { return false; }

    /// `place` is the entry's `from`, or where that name was taken, one beside it.
    virtual void didRestore(const JournalEntry& /*entry*/, const FileURL& /*place*/) { }

    /// Nothing was left where the sweep had put the file.
    virtual void didFindGone(const JournalEntry& /*entry*/) { }
};

}  // namespace tidemark
