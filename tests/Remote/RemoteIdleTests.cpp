#include "RemoteFixture.h"

#include <QAbstractEventDispatcher>
#include <QEventLoop>
#include <QTimer>

#include <chrono>

namespace tidemark {

using RemoteIdle = RemoteTest;

namespace {

/// How often the event loop wakes up within a time.
int wakeUps(std::chrono::milliseconds time)
{
    int count = 0;
    QObject counter;
    QObject::connect(QAbstractEventDispatcher::instance(), &QAbstractEventDispatcher::awake,
        &counter, [&] { ++count; });
    QEventLoop loop;
    QTimer::singleShot(time, Qt::PreciseTimer, &loop, &QEventLoop::quit);
    loop.exec();
    return count;
}

}  // namespace

TEST_F(RemoteIdle, CausesNoWakeUps)
{
    // Absence cannot be told, so this one looks for a while.
    constexpr std::chrono::milliseconds time{200};
    const int withoutServer = wakeUps(time);

    serve();
    const RawClient silent{m_folder.url()};
    const RawClient stuck{m_folder.url()};
    ASSERT_TRUE(stuck.write(wholeRequest("sweep").substr(0, 3)));
    const RemoteClient waiting = ask("sweep");
    m_requests.at(0).reply->send("half");
    const RemoteClient notReading = ask("activity");
    m_requests.at(1).reply->finish(std::string(5'000'000, 'x'));
    pumpAll();

    EXPECT_LE(wakeUps(time), withoutServer + 1);
    EXPECT_FALSE(silent.isClosed());
    EXPECT_FALSE(stuck.isClosed());
    EXPECT_TRUE(m_requests.at(0).reply->isConnected());
    EXPECT_TRUE(m_requests.at(1).reply->isConnected());
}

}  // namespace tidemark
