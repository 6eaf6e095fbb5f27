#pragma once

#include "Folders.h"
#include "HeldFolder.h"
#include "OwnChanges.h"
#include "SystemCall.h"

#include <cerrno>

namespace tidemark {

/// A file's way from one folder to another, or to another name in the same. Its errors name both places.
struct Move {
    HeldEntry from;
    HeldEntry to;
    OwnChanges ownChanges;

    [[noreturn]] void failed(int error) const { fail("cannot move", from.url, to.url, error); }

    /// Throws what errno says.
    void require(bool succeeded) const
    {
        if (!succeeded)
            failed(errno);
    }

    /// A file that comes into a folder which is elsewhere by now would be where nobody looks for it.
    void requireFoldersInPlace() const
    {
        Folders::requireInPlace(from.folder);
        if (&to.folder != &from.folder)
            Folders::requireInPlace(to.folder);
    }
};

}  // namespace tidemark
