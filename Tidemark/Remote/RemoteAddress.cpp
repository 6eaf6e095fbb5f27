#include "RemoteAddress.h"

#include "SystemCall.h"

#include <fcntl.h>
#include <sys/socket.h>
#include <sys/stat.h>
#include <sys/un.h>
#include <unistd.h>

#include <string>

namespace tidemark {

namespace {

constexpr const char* socketName = "socket";
constexpr const char* cannotOpen = "cannot open the folder";

/// Not open, with errno set, on failure.
FileDescriptor openFolder(const FileURL& folder)
{
    const char* path = systemPath(folder);
    return FileDescriptor{
        uninterrupted([&] { return ::open(path, O_PATH | O_DIRECTORY | O_CLOEXEC); })};
}

/// Nothing if the path does not fit.
std::optional<sockaddr_un> socketAddress(const std::string& path)
{
    sockaddr_un address = {};
    if (path.size() >= sizeof address.sun_path)
        return std::nullopt;
    address.sun_family = AF_UNIX;
    path.copy(address.sun_path, path.size());
    return address;
}

/// Calls bind or connect. Returns the errno of the failure, else 0.
template <typename Call>
int callWithAddress(Call call, int socket, const std::string& path)
{
    const std::optional<sockaddr_un> address = socketAddress(path);
    if (!address)
        return ENAMETOOLONG;
    const auto* const any = reinterpret_cast<const sockaddr*>(&*address);
    return uninterrupted([&] { return call(socket, any, sizeof *address); }) == 0 ? 0 : errno;
}

}  // namespace

RemoteAddress::RemoteAddress(const FileURL& supportFolder, FileDescriptor folder)
    : m_url(supportFolder.appending(socketName))
    , m_folder(std::move(folder))
{
}

RemoteAddress::RemoteAddress(const FileURL& supportFolder)
    : RemoteAddress(supportFolder, openFolder(supportFolder))
{
    if (!m_folder.isOpen())
        fail(cannotOpen, supportFolder, errno);
}

std::optional<RemoteAddress> RemoteAddress::find(const FileURL& supportFolder)
{
    FileDescriptor folder = openFolder(supportFolder);
    if (folder.isOpen())
        return RemoteAddress{supportFolder, std::move(folder)};
    if (errno != ENOENT)
        fail(cannotOpen, supportFolder, errno);
    return std::nullopt;
}

std::string RemoteAddress::path() const
{
    const std::string folder = "/proc/self/fd/" + std::to_string(m_folder.get());
    // /proc may be missing in a chroot.
    if (::access(folder.c_str(), F_OK) != 0)
        return m_url.path();
    return folder + '/' + socketName;
}

int RemoteAddress::bind(int socket) const
{
    return callWithAddress(::bind, socket, path());
}

int RemoteAddress::connect(int socket) const
{
    return callWithAddress(::connect, socket, path());
}

std::optional<RemoteAddress::File> RemoteAddress::file() const
{
    struct stat status;
    if (::fstatat(m_folder.get(), socketName, &status, AT_SYMLINK_NOFOLLOW) != 0)
        return std::nullopt;
    return File{status.st_dev, status.st_ino, S_ISSOCK(status.st_mode)};
}

int RemoteAddress::remove() const
{
    return ::unlinkat(m_folder.get(), socketName, 0) == 0 ? 0 : errno;
}

}  // namespace tidemark
