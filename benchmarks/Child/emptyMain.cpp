// What tidemark-bench measures `tidemarkctl watch` beside: a program of the same libraries that only waits.

#include <QCoreApplication>
#include <QTimer>

#include <cstdio>

int main(int count, char** arguments)
{
    // The loop of `tidemarkctl watch`, which is the smaller one.
    qputenv("QT_NO_GLIB", "1");
    QCoreApplication application(count, arguments);
    QTimer::singleShot(0, [] {
        std::puts("ready");
        std::fflush(stdout);
    });
    return QCoreApplication::exec();
}
