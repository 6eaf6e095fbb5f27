#include "PseudoTerminal.h"

#include <fcntl.h>
#include <poll.h>
#include <pty.h>
#include <unistd.h>

#include <array>
#include <stdexcept>

namespace tidemark {

PseudoTerminal::PseudoTerminal()
{
    int master = -1;
    int slave = -1;
    struct winsize size = {.ws_row = 24, .ws_col = 60, .ws_xpixel = 0, .ws_ypixel = 0};
    std::array<char, 256> path{};
    if (::openpty(&master, &slave, path.data(), nullptr, &size) != 0)
        throw std::runtime_error{"cannot open a pseudo terminal"};
    m_master = FileDescriptor{master};
    m_slave = FileDescriptor{slave};
    m_path = path.data();
    // Not for the programs under test: they open their end by its path.
    ::fcntl(master, F_SETFD, FD_CLOEXEC);
    ::fcntl(slave, F_SETFD, FD_CLOEXEC);
}

std::string PseudoTerminal::readUntil(std::string_view text)
{
    constexpr int minute = 60'000;
    while (m_text.find(text) == std::string::npos) {
        if (!readMore(minute))
            throw std::runtime_error{"the program never printed: " + std::string{text}};
    }
    return m_text;
}

std::string PseudoTerminal::readAll()
{
    while (readMore(0)) { }
    return m_text;
}

bool PseudoTerminal::readMore(int milliseconds)
{
    struct pollfd waiting = {.fd = m_master.get(), .events = POLLIN, .revents = 0};
    if (::poll(&waiting, 1, milliseconds) <= 0)
        return false;
    std::array<char, 4096> buffer{};
    const ssize_t count = ::read(m_master.get(), buffer.data(), buffer.size());
    if (count > 0)
        m_text.append(buffer.data(), static_cast<std::size_t>(count));
    return count > 0;
}

}  // namespace tidemark
