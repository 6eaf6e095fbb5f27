#pragma once

#include "LaunchOptions.h"

#include <QObject>
#include <QStringList>
#include <QVariantMap>

#include <functional>

namespace tidemark {

/// The application on the session bus: how other programs activate it (org.freedesktop.Application of the
/// Desktop Entry Specification). For the main thread.
class ApplicationService : public QObject {
    Q_OBJECT
    Q_CLASSINFO("D-Bus Interface", "org.freedesktop.Application")

public:
    struct Commands {
        std::function<void(const std::string& activationToken)> bringForward;
        std::function<void(AppAction)> perform;
    };

    static QString name() { return QStringLiteral("io.tidemark.Tidemark"); }
    static QString path() { return QStringLiteral("/io/tidemark/Tidemark"); }
    static QString interface() { return QStringLiteral("org.freedesktop.Application"); }

    /// Is not there when there is no session bus, or when the name is taken by an application that serves
    /// another support folder.
    explicit ApplicationService(Commands commands);
    ~ApplicationService() override;

public Q_SLOTS:
    // The interface's own names. `platformData` may hold "activation-token".
    void Activate(const QVariantMap& platformData);
    void Open(const QStringList& uris, const QVariantMap& platformData);
    void ActivateAction(
        const QString& action, const QVariantList& parameters, const QVariantMap& platformData);

private:
    Commands m_commands;
};

}  // namespace tidemark
