#include "EventLoop.h"

#include <QCoreApplication>
#include <QDeadlineTimer>
#include <QEventLoop>
#include <QTimer>

#include <array>

namespace tidemark {

void requireApplication()
{
    if (QCoreApplication::instance())
        return;
    static int count = 1;
    static std::array<char, 6> name{"tests"};
    static std::array<char*, 2> arguments{name.data(), nullptr};
    static const QCoreApplication application{count, arguments.data()};
}

bool runUntil(const std::function<bool()>& condition)
{
    constexpr int longTime = 60'000;
    QDeadlineTimer deadline{longTime};
    QTimer wake;
    wake.start(longTime);
    while (!condition()) {
        if (deadline.hasExpired())
            return false;
        QCoreApplication::processEvents(QEventLoop::WaitForMoreEvents);
    }
    return true;
}

void runPending()
{
    QCoreApplication::processEvents();
}

}  // namespace tidemark
