#pragma once

#include <utility>

namespace tidemark {

/// Owns an open file descriptor and closes it.
class FileDescriptor {
public:
    FileDescriptor() = default;
    explicit FileDescriptor(int descriptor)
        : m_descriptor(descriptor)
    {
    }
    FileDescriptor(FileDescriptor&& other) noexcept;
    FileDescriptor& operator=(FileDescriptor&& other) noexcept;
    ~FileDescriptor();

    int get() const { return m_descriptor; }
    bool isOpen() const { return m_descriptor >= 0; }

    /// Closes it now and returns what close(2) returned.
    int close();

    /// Gives the descriptor up to the caller, who closes it.
    int release() { return std::exchange(m_descriptor, -1); }

private:
    int m_descriptor = -1;
};

}  // namespace tidemark
