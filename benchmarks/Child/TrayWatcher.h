#pragma once

#include <QObject>
#include <QStringList>

#include <cstdio>

namespace tidemark::bench {

/// org.kde.StatusNotifierWatcher, as much as Qt asks of it.
class TrayWatcher : public QObject {
    Q_OBJECT
    Q_CLASSINFO("D-Bus Interface", "org.kde.StatusNotifierWatcher")
    Q_PROPERTY(QStringList RegisteredStatusNotifierItems READ items)
    Q_PROPERTY(bool IsStatusNotifierHostRegistered READ hasHost)
    Q_PROPERTY(int ProtocolVersion READ version)

public:
    QStringList items() const { return {}; }
    bool hasHost() const { return true; }
    int version() const { return 0; }

public Q_SLOTS:
    void RegisterStatusNotifierHost(const QString& /*service*/) {
    }  // NOLINT: the interface's own name
    void RegisterStatusNotifierItem(const QString& service)  // NOLINT: the interface's own name
    {
        std::puts("icon");
        std::fflush(stdout);
        Q_EMIT StatusNotifierItemRegistered(service);
    }

Q_SIGNALS:
    void StatusNotifierItemRegistered(const QString& service);
    void StatusNotifierHostRegistered();
};

}  // namespace tidemark::bench
