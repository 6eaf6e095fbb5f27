#include "FileContent.h"

#include "SystemCall.h"

#include <linux/fs.h>
#include <sys/ioctl.h>
#include <unistd.h>

#include <algorithm>
#include <memory>

namespace tidemark::FileContent {

namespace {

constexpr std::size_t bufferSize = std::size_t{1} << 20;

/// Copies one file part by part.
class Copier {
public:
    Copier(int source, int destination, const FileURL& from, const FileURL& to)
        : m_source(source)
        , m_destination(destination)
        , m_from(from)
        , m_to(to)
        , m_buffer(std::make_unique<char[]>(bufferSize))
    {
    }

    void copy(off_t size)
    {
        off_t at = 0;
        while (at < size) {
            const off_t data = seek(at, SEEK_DATA).value_or(size);
            if (data >= size)
                break;
            const off_t hole = std::min(seek(data, SEEK_HOLE).value_or(size), size);
            copyRange(data, hole);
            at = hole;
        }
        // What comes after the last data is a hole.
        if (uninterrupted([&] { return ::ftruncate(m_destination, size); }) != 0)
            failed(errno);
    }

private:
    [[noreturn]] void failed(int error) const { fail("cannot copy", m_from, m_to, error); }

    /// Nothing when there is no more data. A file system that knows no holes has data everywhere.
    std::optional<off_t> seek(off_t at, int whence) const
    {
        const off_t found = ::lseek(m_source, at, whence);
        if (found >= 0)
            return found;
        if (errno == ENXIO)
            return std::nullopt;
        if (errno == EINVAL || errno == ENOTSUP)
            return whence == SEEK_DATA ? std::optional{at} : std::nullopt;
        failed(errno);
    }

    void copyRange(off_t at, off_t end) const
    {
        while (at < end) {
            const std::size_t size = std::min(bufferSize, static_cast<std::size_t>(end - at));
            const ssize_t got =
                uninterrupted([&] { return ::pread(m_source, m_buffer.get(), size, at); });
            if (got < 0)
                failed(errno);
            // Shorter than it was: somebody writes it, and the end of the move will say so.
            if (got == 0)
                return;
            write(static_cast<std::size_t>(got), at);
            at += got;
        }
    }

    void write(std::size_t size, off_t at) const
    {
        const char* data = m_buffer.get();
        while (size > 0) {
            const ssize_t written =
                uninterrupted([&] { return ::pwrite(m_destination, data, size, at); });
            if (written < 0)
                failed(errno);
            if (written == 0)
                failed(EIO);
            data += written;
            at += written;
            size -= static_cast<std::size_t>(written);
        }
    }

    int m_source;
    int m_destination;
    const FileURL& m_from;
    const FileURL& m_to;
    std::unique_ptr<char[]> m_buffer;
};

}  // namespace

void copy(int source, int destination, off_t size, const FileURL& from, const FileURL& to)
{
    if (::ioctl(destination, FICLONE, source) == 0)
        return;
    Copier{source, destination, from, to}.copy(size);
}

}  // namespace tidemark::FileContent
