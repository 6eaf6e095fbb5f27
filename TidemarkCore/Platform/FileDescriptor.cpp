#include "FileDescriptor.h"

#include <unistd.h>

#include <utility>

namespace tidemark {

FileDescriptor::FileDescriptor(FileDescriptor&& other) noexcept
    : m_descriptor(std::exchange(other.m_descriptor, -1))
{
}

FileDescriptor& FileDescriptor::operator=(FileDescriptor&& other) noexcept
{
    if (this != &other) {
        close();
        m_descriptor = std::exchange(other.m_descriptor, -1);
    }
    return *this;
}

FileDescriptor::~FileDescriptor()
{
    close();
}

int FileDescriptor::close()
{
    if (!isOpen())
        return 0;
    // Linux has let go of the descriptor even when close reports EINTR: never closed twice.
    return ::close(std::exchange(m_descriptor, -1));
}

}  // namespace tidemark
