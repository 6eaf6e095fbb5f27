#include "FileAttributes.h"

#include "SystemCall.h"

#include <sys/xattr.h>
#include <unistd.h>

#include <algorithm>
#include <string_view>
#include <vector>

namespace tidemark::FileAttributes {

namespace {

constexpr const char* accessList = "system.posix_acl_access";
constexpr mode_t permissionBits = 07777;

/// Copies what belongs to one file.
class Copier {
public:
    Copier(int source, int destination, const struct stat& status, const FileURL& from,
        const FileURL& to)
        : m_source(source)
        , m_destination(destination)
        , m_status(status)
        , m_from(from)
        , m_to(to)
    {
    }

    /// The order matters: a new owner takes privileges away, an access list changes the mode, and dates
    /// come last because every change sets them.
    void copy()
    {
        copyOwner();
        copyExtendedAttributes();
        copyMode();
        copyDates();
    }

private:
    [[noreturn]] void failed(int error) const
    {
        fail("cannot keep the attributes of", m_from, m_to, error);
    }

    struct stat destinationStatus() const
    {
        struct stat status;
        if (::fstat(m_destination, &status) != 0)
            failed(errno);
        return status;
    }

    void copyOwner() const
    {
        const struct stat now = destinationStatus();
        if ((now.st_uid != m_status.st_uid || now.st_gid != m_status.st_gid)
            && ::fchown(m_destination, m_status.st_uid, m_status.st_gid) != 0)
            failed(errno);
    }

    void copyExtendedAttributes() const
    {
        const std::vector<std::string> names = attributeNames();
        for (const std::string& name : names)
            copyExtendedAttribute(name);
        // The folder may have given the new file an access list of its own.
        if (std::ranges::find(names, accessList) == names.end()
            && ::fremovexattr(m_destination, accessList) != 0 && errno != ENODATA
            && errno != ENOTSUP)
            failed(errno);
    }

    std::vector<std::string> attributeNames() const
    {
        const std::string list = readAll([this](char* buffer, std::size_t size) {
            return ::flistxattr(m_source, buffer, size);
        }).value_or("");
        std::vector<std::string> names;
        for (std::string_view rest = list; !rest.empty();) {
            names.emplace_back(rest.substr(0, rest.find('\0')));
            rest.remove_prefix(std::min(rest.size(), names.back().size() + 1));
        }
        return names;
    }

    void copyExtendedAttribute(const std::string& name) const
    {
        const bool isSystems = name.starts_with("security.") || name.starts_with("trusted.");
        const auto value = readAll([&](char* buffer, std::size_t size) {
            return ::fgetxattr(m_source, name.c_str(), buffer, size);
        });
        if (value && ::fsetxattr(m_destination, name.c_str(), value->data(), value->size(), 0) != 0
            && !isSystems)
            failed(errno);
    }

    /// Asks `get` for the size first and then for the data until both agree. Nothing where there is none.
    template <typename Get>
    std::optional<std::string> readAll(Get get) const
    {
        for (;;) {
            const ssize_t size = get(nullptr, 0);
            if (size < 0 && (errno == ENOTSUP || errno == ENODATA))
                return std::nullopt;
            if (size < 0)
                failed(errno);
            std::string data(static_cast<std::size_t>(size), '\0');
            const ssize_t got = get(data.data(), data.size());
            if (got >= 0) {
                data.resize(static_cast<std::size_t>(got));
                return data;
            }
            if (errno != ERANGE)
                failed(errno);
        }
    }

    void copyMode() const
    {
        const mode_t mode = m_status.st_mode & permissionBits;
        if (::fchmod(m_destination, mode) != 0)
            failed(errno);
        // Some file systems take any mode and keep another.
        if ((destinationStatus().st_mode & permissionBits) != mode)
            failed(ENOTSUP);
    }

    void copyDates() const
    {
        const struct timespec times[] = {m_status.st_atim, m_status.st_mtim};
        if (::futimens(m_destination, times) != 0)
            failed(errno);
        // Some file systems cut a date that they cannot hold; a coarser clock is no loss.
        constexpr time_t coarsestClock = 2;  // seconds
        const time_t kept = destinationStatus().st_mtim.tv_sec;
        if (kept < m_status.st_mtim.tv_sec - coarsestClock || kept > m_status.st_mtim.tv_sec)
            failed(EOVERFLOW);
    }

    int m_source;
    int m_destination;
    const struct stat& m_status;
    const FileURL& m_from;
    const FileURL& m_to;
};

}  // namespace

void copy(
    int source, int destination, const struct stat& status, const FileURL& from, const FileURL& to)
{
    Copier{source, destination, status, from, to}.copy();
}

}  // namespace tidemark::FileAttributes
