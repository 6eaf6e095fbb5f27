#pragma once

#include <cstdint>
#include <string>
#include <vector>

namespace tidemark {

/// One system call about files, as a tracer sees it. A plain value.
struct TracedCall {
    enum class Kind {
        look,  ///< Asks for facts, names or attributes, or moves the place to read from.
        open,  ///< Opens what is there.
        create,  ///< Opens and may make or empty a file; a file without a name, too.
        read,
        write,
        clone,  ///< Shares another file's content, or copies it within the kernel.
        truncate,
        attribute,  ///< Changes mode, owner, dates or extended attributes.
        sync,
        makeFolder,
        link,
        symlink,
        rename,
        remove,
        removeFolder,
        close,
    };

    std::string name = {};  ///< Such as "renameat2".
    Kind kind = Kind::look;
    std::string path = {};  ///< Absolute; what it is about, or the old name.
    std::string otherPath = {};  ///< The new name of a rename or link.
    int descriptor = -1;  ///< The argument; -1 when it takes a path alone.
    int flags = 0;  ///< Of opening.
    std::string data = {};  ///< What it writes.
    std::int64_t offset = -1;  ///< Where it writes, or the new size; -1: where the file stands.
    long result = 0;  ///< A negative errno for a failure.

    /// Whether a kill before it and a kill after it may leave different disks.
    bool changesTheDisk() const;

    /// The same for everything that differs from run to run but the random part of names.
    std::string text() const;
};

/// Which calls are followed, and what their arguments mean; indices of arguments, -1 for none.
struct TracedCallShape {
    long number;
    const char* name;
    TracedCall::Kind kind;
    int folder = -1;  ///< The descriptor that `path` is relative to.
    int path = -1;
    int otherFolder = -1;
    int otherPath = -1;
    int descriptor = -1;
};

const std::vector<TracedCallShape>& tracedCallShapes();

}  // namespace tidemark
