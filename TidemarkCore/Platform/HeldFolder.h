#pragma once

#include "FileDescriptor.h"
#include "FileURL.h"

#include <cstdint>
#include <utility>

namespace tidemark {

/// A folder that was looked at, for what is done in it afterwards.
///
/// It stays that folder whatever other programs put in its place: a link that led to it then has been followed
/// once, and one that comes there later leads nowhere. FileManager makes and uses it. Safe from any thread.
class HeldFolder {
public:
    /// Tells a folder from every other one.
    struct Identity {
        std::uint64_t device = 0;
        std::uint64_t inode = 0;

        bool operator==(const Identity&) const = default;
    };

    /// `descriptor` is open for it on a real disk.
    HeldFolder(FileURL url, Identity identity, FileDescriptor descriptor)
        : m_url(std::move(url))
        , m_identity(identity)
        , m_descriptor(std::move(descriptor))
    {
    }

    /// Where it was found.
    const FileURL& url() const { return m_url; }

    const Identity& identity() const { return m_identity; }

    /// For the system calls that take a folder and a name in it (O_PATH).
    int descriptor() const { return m_descriptor.get(); }

private:
    FileURL m_url;
    Identity m_identity;
    FileDescriptor m_descriptor;
};

/// An entry of a folder that is held, whether or not anything stands there. Not for longer than the folder.
struct HeldEntry {
    const HeldFolder& folder;
    FileURL
        url;  ///< Its name in the folder is the last component; the rest only tells people about it.

    const char* name() const { return url.lastPathComponent().data(); }
};

}  // namespace tidemark
