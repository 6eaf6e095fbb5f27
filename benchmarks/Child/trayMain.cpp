// What takes in the tray icons of programs that tidemark-bench measures: a watcher of StatusNotifierItems
// that has a host, see the StatusNotifierItem page of freedesktop.org. It prints "icon" for each that
// comes.

#include "TrayWatcher.h"

#include <QCoreApplication>
#include <QDBusConnection>

#include <cstdio>

int main(int count, char** arguments)
{
    QCoreApplication application(count, arguments);
    tidemark::bench::TrayWatcher watcher;
    QDBusConnection bus = QDBusConnection::sessionBus();
    const bool isThere =
        bus.registerObject("/StatusNotifierWatcher", &watcher, QDBusConnection::ExportAllContents)
        && bus.registerService("org.kde.StatusNotifierWatcher");
    if (!isThere) {
        std::fputs("tidemark-bench-tray: there is no session bus for it\n", stderr);
        return 1;
    }
    std::puts("ready");
    std::fflush(stdout);
    return QCoreApplication::exec();
}
