#include "ProgressLine.h"

#include "DisplayText.h"
#include "SystemCall.h"
#include "Terminal.h"

#include <unistd.h>

#include <chrono>
#include <string_view>

namespace tidemark {

static constexpr std::chrono::milliseconds patience{500};
static constexpr std::chrono::milliseconds interval{100};
static constexpr std::string_view erased = "\r\x1b[K";

static void writeToTerminal(std::string_view text)
{
    // A terminal that takes no more text misses nothing but its own progress.
    static_cast<void>(
        uninterrupted([&] { return ::write(STDERR_FILENO, text.data(), text.size()); }));
}

static void draw(const std::string& text)
{
    // The last column stays free: a terminal would wrap the line there.
    const std::size_t columns = Terminal::columns(STDERR_FILENO) - 1;
    writeToTerminal(std::string{erased} + clippedToWidth(displayText(text), columns));
}

ProgressLine::ProgressLine()
{
    if (Terminal::canRedraw(STDERR_FILENO))
        m_thread = std::thread{[this] { run(); }};
}

ProgressLine::~ProgressLine()
{
    {
        const std::lock_guard lock{m_mutex};
        m_hasEnded = true;
    }
    m_ended.notify_all();
    if (m_thread.joinable())
        m_thread.join();
}

void ProgressLine::show(std::string text)
{
    const std::lock_guard lock{m_mutex};
    m_text = std::move(text);
}

void ProgressLine::run()
{
    std::unique_lock lock{m_mutex};
    std::string drawn;
    for (auto pause = patience; !m_ended.wait_for(lock, pause, [this] { return m_hasEnded; });
         pause = interval) {
        if (m_text == drawn)
            continue;
        drawn = m_text;
        // Not under the lock: a slow terminal must not hold the sweep up.
        lock.unlock();
        draw(drawn);
        lock.lock();
    }
    if (!drawn.empty())
        writeToTerminal(erased);
}

}  // namespace tidemark
