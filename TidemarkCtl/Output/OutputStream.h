#pragma once

#include <cstddef>
#include <string>
#include <string_view>
#include <utility>

namespace tidemark {

/// Writes text to a file descriptor, in large pieces. For one thread.
class OutputStream {
public:
    /// The descriptor stays the caller's.
    explicit OutputStream(int descriptor);

    OutputStream(const OutputStream&) = delete;
    OutputStream& operator=(const OutputStream&) = delete;

    /// Throws CommandFailure when the reader is gone or the disk is full.
    void write(std::string_view text);

    /// Writes what is still held back; what is not flushed is lost. Throws like write.
    void flush();

    /// Gives up what is still held back, for somebody else to write.
    std::string take() { return std::exchange(m_buffer, {}); }

private:
    int m_descriptor;
    std::string m_buffer;
};

}  // namespace tidemark
