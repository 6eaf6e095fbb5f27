#include "PatientOutput.h"

#include "SystemCall.h"

#include <poll.h>
#include <unistd.h>

#include <algorithm>

namespace tidemark {

/// A pipe or a terminal that is ready takes so much without making the writer wait.
static constexpr std::size_t mostBytesAtOnce = 512;

PatientOutput::PatientOutput(int descriptor, std::function<void(int error)> onFailure)
    : m_descriptor(descriptor)
    , m_onFailure(std::move(onFailure))
    , m_notifier(descriptor, QSocketNotifier::Write)
{
    m_notifier.setEnabled(false);
    QObject::connect(&m_notifier, &QSocketNotifier::activated, &m_notifier,
        [this] { writeUntil(Clock::now()); });
}

void PatientOutput::write(std::string_view text)
{
    if (m_hasFailed || m_pending.size() + text.size() > mostPending)
        return;
    m_pending += text;
    writeUntil(Clock::now());
}

void PatientOutput::finish(std::chrono::milliseconds atMost)
{
    writeUntil(Clock::now() + atMost);
}

void PatientOutput::writeUntil(Clock::time_point deadline)
{
    while (!m_pending.empty() && waitUntilReady(deadline))
        writeOnce();
    m_notifier.setEnabled(!m_pending.empty());
}

bool PatientOutput::waitUntilReady(Clock::time_point deadline) const
{
    using std::chrono::milliseconds;
    const auto rest = std::chrono::ceil<milliseconds>(deadline - Clock::now());
    const int timeout = static_cast<int>(std::max(rest, milliseconds{0}).count());
    struct pollfd output = {.fd = m_descriptor, .events = POLLOUT, .revents = 0};
    return ::poll(&output, 1, timeout) == 1;
}

void PatientOutput::writeOnce()
{
    const std::string_view rest = std::string_view{m_pending}.substr(m_written, mostBytesAtOnce);
    const ssize_t written =
        uninterrupted([&] { return ::write(m_descriptor, rest.data(), rest.size()); });
    const int error = written < 0 ? errno : 0;
    if (written >= 0) {
        m_written += static_cast<std::size_t>(written);
        if (m_written == m_pending.size())
            forgetPending();
    } else if (error != EAGAIN) {  // which comes when another one writes there, too, and was faster
        m_hasFailed = true;
        forgetPending();
        m_onFailure(error);
    }
}

void PatientOutput::forgetPending()
{
    m_pending.clear();
    m_written = 0;
}

}  // namespace tidemark
