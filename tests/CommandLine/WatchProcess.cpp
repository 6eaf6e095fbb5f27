#include "WatchProcess.h"

#include "SystemCall.h"

#include <fcntl.h>
#include <poll.h>
#include <sys/stat.h>
#include <unistd.h>

#include <algorithm>
#include <array>
#include <fstream>
#include <iterator>
#include <stdexcept>
#include <system_error>
#include <utility>

namespace tidemark {

WatchProcess::WatchProcess(ProgramStart how)
    : WatchProcess(std::move(how), makePipe())
{
}

WatchProcess::WatchProcess(ProgramStart how, Pipe pipe)
    : m_output(std::move(pipe.reader))
    , m_process(printingInto(pipe, how))
    , m_errorFile(std::move(how.errorFile))
{
}

WatchProcess::Pipe WatchProcess::makePipe()
{
    std::array<int, 2> ends{};
    if (::pipe2(ends.data(), O_CLOEXEC) != 0)
        throw std::system_error{systemError(errno), "cannot make a pipe"};
    return {FileDescriptor{ends[0]}, FileDescriptor{ends[1]}};
}

/// A program whose output goes into systemd's journal tells the system's log nothing: what a test provokes
/// does not belong into the log of the machine.
ProgramStart WatchProcess::printingInto(const Pipe& pipe, ProgramStart how)
{
    struct stat output;
    ::fstat(pipe.writer.get(), &output);
    how.environment.try_emplace(
        "JOURNAL_STREAM", std::to_string(output.st_dev) + ':' + std::to_string(output.st_ino));
    how.outputDescriptor = pipe.writer.get();
    return how;
}

std::string WatchProcess::nextLine()
{
    while (!hasLine()) {
        if (!readMore())
            giveUp("the output ended");
    }
    const auto end = m_unread.find('\n');
    m_lines.push_back(m_unread.substr(0, end));
    m_unread.erase(0, end + 1);
    return m_lines.back();
}

std::string WatchProcess::readUntil(std::string_view text)
{
    for (;;) {
        std::string line = nextLine();
        if (line.find(text) != std::string::npos)
            return line;
    }
}

std::vector<std::string> WatchProcess::linesWith(std::string_view text) const
{
    std::vector<std::string> found;
    std::ranges::copy_if(m_lines, std::back_inserter(found),
        [&](const std::string& line) { return line.find(text) != std::string::npos; });
    return found;
}

void WatchProcess::shrinkOutput() const
{
    constexpr int page = 4096;
    ::fcntl(m_output.get(), F_SETPIPE_SZ, page);
}

int WatchProcess::wait()
{
    while (m_output.isOpen() && (hasLine() || readMore())) {
        while (hasLine())
            nextLine();
    }
    return m_process.wait();
}

int WatchProcess::end(int number)
{
    signal(number);
    return wait();
}

bool WatchProcess::readMore()
{
    constexpr int halfAMinute = 30'000;
    struct pollfd waiting = {.fd = m_output.get(), .events = POLLIN, .revents = 0};
    if (uninterrupted([&] { return ::poll(&waiting, 1, halfAMinute); }) <= 0)
        giveUp("nothing came");
    std::array<char, 4096> buffer{};
    const ssize_t count =
        uninterrupted([&] { return ::read(m_output.get(), buffer.data(), buffer.size()); });
    if (count > 0)
        m_unread.append(buffer.data(), static_cast<std::size_t>(count));
    return count > 0;
}

void WatchProcess::giveUp(const std::string& why) const
{
    std::string text = why + " after:\n";
    for (const std::string& line : m_lines)
        text += line + '\n';
    std::ifstream errors{m_errorFile};
    text.append(std::istreambuf_iterator<char>{errors}, {});
    throw std::runtime_error{text};
}

}  // namespace tidemark
