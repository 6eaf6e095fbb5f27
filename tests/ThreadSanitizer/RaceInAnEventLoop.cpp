#include <QCoreApplication>
#include <QProcess>
#include <QTimer>

#include <atomic>
#include <thread>

namespace {

/// A race that the main thread runs into, whatever the timing: nothing that both threads know of orders
/// their writes.
void race()
{
    int unguarded = 0;
    std::atomic<bool> hasWritten = false;
    std::thread other{[&] {
        ++unguarded;
        hasWritten.store(true, std::memory_order_relaxed);
    }};
    while (!hasWritten.load(std::memory_order_relaxed))
        std::this_thread::yield();
    ++unguarded;
    other.join();
}

}  // namespace

/// Races where most of our code runs: on the main thread, below Qt's event loop, after a child has been
/// started.
int main(int argc, char** argv)
{
    QCoreApplication application{argc, argv};
    QProcess::execute(QStringLiteral("/bin/true"));
    QTimer::singleShot(0, [] {
        race();
        QCoreApplication::quit();
    });
    return QCoreApplication::exec();
}
