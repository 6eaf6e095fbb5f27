#pragma once

#include "FileDescriptor.h"
#include "FileURL.h"

#include <sys/types.h>

#include <optional>

namespace tidemark {

/// The place of a support folder's socket: its file "socket".
///
/// It holds the folder open and reaches the file through that, so the folder's path may be longer than the
/// 107 bytes that fit into a socket's address, and everything is about one folder even if it is renamed
/// meanwhile.
class RemoteAddress {
public:
    /// What tells one file from another, as long as it exists.
    struct File {
        dev_t device = 0;
        ino_t inode = 0;
        bool isSocket = false;

        bool operator==(const File&) const = default;
    };

    /// Throws filesystem_error if the folder cannot be opened.
    explicit RemoteAddress(const FileURL& supportFolder);

    /// The same, but nothing if there is no such folder.
    static std::optional<RemoteAddress> find(const FileURL& supportFolder);

    /// Of the socket's file; for messages.
    const FileURL& url() const { return m_url; }

    /// Binds or connects a socket. Returns the errno of the failure, else 0; ENAMETOOLONG only for a long
    /// path on a system without /proc.
    int bind(int socket) const;
    int connect(int socket) const;

    /// What stands there, links not followed; nothing if that cannot be told.
    std::optional<File> file() const;

    /// Removes the file, which must not be a folder. Returns the errno of the failure, else 0.
    int remove() const;

private:
    RemoteAddress(const FileURL& supportFolder, FileDescriptor folder);

    /// A path that leads to the socket's file, short where that is possible.
    std::string path() const;

    FileURL m_url;
    FileDescriptor m_folder;
};

}  // namespace tidemark
