#include "OutputStream.h"

#include "CommandFailure.h"
#include "SystemCall.h"

#include <unistd.h>

namespace tidemark {

static constexpr std::size_t bufferSize = std::size_t{64} << 10U;

OutputStream::OutputStream(int descriptor)
    : m_descriptor(descriptor)
{
}

void OutputStream::write(std::string_view text)
{
    m_buffer += text;
    if (m_buffer.size() >= bufferSize)
        flush();
}

void OutputStream::flush()
{
    const std::string text = take();
    std::string_view rest = text;
    while (!rest.empty()) {
        const ssize_t written =
            uninterrupted([&] { return ::write(m_descriptor, rest.data(), rest.size()); });
        if (written < 0)
            throw CommandFailure{
                "cannot write to standard output: " + systemError(errno).message()};
        rest.remove_prefix(static_cast<std::size_t>(written));
    }
}

}  // namespace tidemark
