#include "MeasuredLoop.h"

#include <QAbstractEventDispatcher>
#include <QCoreApplication>
#include <QEventLoop>
#include <QTimer>

#include <algorithm>
#include <array>
#include <chrono>
#include <optional>
#include <stdexcept>
#include <utility>

namespace tidemark::bench {

namespace {

/// What Qt keeps references to.
struct Arguments {
    int count = 1;
    std::array<char, 6> name{"bench"};
    std::array<char*, 2> pointers{name.data(), nullptr};
};

}  // namespace

/// Whatever the loop does reaches an object through notify(): posted functions, timers and descriptors alike.
class MeasuredLoop::Application final : private Arguments, public QCoreApplication {
public:
    Application()
        : QCoreApplication(Arguments::count, Arguments::pointers.data())
    {
        const QAbstractEventDispatcher* dispatcher = eventDispatcher();
        connect(dispatcher, &QAbstractEventDispatcher::awake, this, [this] { roundBegins(); });
        connect(dispatcher, &QAbstractEventDispatcher::aboutToBlock, this, [this] { turnEnds(); });
    }

    bool notify(QObject* receiver, QEvent* event) override
    {
        if (!m_began)
            m_began = Clock::now();
        return QCoreApplication::notify(receiver, event);
    }

    void turnEnds()
    {
        if (m_began)
            m_turns.push_back(Clock::now() - *m_began);
        m_began.reset();
        m_isInRound = false;
        if (m_isDone && m_isDone())
            m_loop->exit();
    }

    /// Returns whether it came to that within the time.
    bool runUntil(std::function<bool()> isDone, std::chrono::milliseconds patience)
    {
        constexpr int impatient = 1;
        QEventLoop loop;
        QTimer timer;
        QObject::connect(&timer, &QTimer::timeout, &loop, [&] { loop.exit(impatient); });
        timer.start(patience);
        m_loop = &loop;
        m_isDone = std::move(isDone);
        const int result = loop.exec();
        m_isDone = nullptr;
        turnEnds();
        return result != impatient;
    }

    std::vector<Seconds> takeTurns() { return std::exchange(m_turns, {}); }

private:
    using Clock = std::chrono::steady_clock;

    /// A round is: what was posted, a look for what is new (a wait, if nothing had been posted), then
    /// timers and descriptors. What those do before a round and what was posted belong to one turn.
    void roundBegins()
    {
        if (m_isInRound)
            turnEnds();
        m_isInRound = true;
    }

    std::optional<Clock::time_point> m_began;
    bool m_isInRound = false;
    std::vector<Seconds> m_turns;
    QEventLoop* m_loop = nullptr;
    std::function<bool()> m_isDone;  // while the loop runs
};

MeasuredLoop::MeasuredLoop()
{
    // The loop of `tidemarkctl watch`.
    qputenv("QT_NO_GLIB", "1");
    m_application = std::make_unique<Application>();
}

MeasuredLoop::~MeasuredLoop() = default;

void MeasuredLoop::post(std::function<void()> work)
{
    QMetaObject::invokeMethod(m_application.get(), std::move(work), Qt::QueuedConnection);
}

void MeasuredLoop::runUntil(const std::function<bool()>& isDone)
{
    constexpr std::chrono::minutes patience{2};
    if (!isDone() && !m_application->runUntil(isDone, patience))
        throw std::runtime_error("what the event loop was to do has not come to an end");
}

std::vector<Seconds> MeasuredLoop::takeTurns()
{
    return m_application->takeTurns();
}

Seconds MeasuredLoop::takeLongestTurn()
{
    const std::vector<Seconds> turns = takeTurns();
    return turns.empty() ? Seconds{0} : *std::ranges::max_element(turns);
}

}  // namespace tidemark::bench
