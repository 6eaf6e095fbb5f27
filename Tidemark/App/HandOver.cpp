#include "HandOver.h"

#include "AppSupport.h"
#include "ApplicationService.h"
#include "Clock.h"
#include "CommandFailure.h"
#include "LinuxFileManager.h"
#include "Operations.h"
#include "SettingsStore.h"

#include <QDBusConnection>
#include <QDBusConnectionInterface>
#include <QDBusMessage>

namespace tidemark {

namespace {

bool isOnBus()
{
    const QDBusConnection bus = QDBusConnection::sessionBus();
    return bus.isConnected() && bus.interface()->isServiceRegistered(ApplicationService::name());
}

void callOverBus(const QString& method, const QVariantList& arguments)
{
    QDBusMessage message = QDBusMessage::createMethodCall(ApplicationService::name(),
        ApplicationService::path(), ApplicationService::interface(), method);
    message.setArguments(arguments);
    const QDBusMessage answer = QDBusConnection::sessionBus().call(message);
    if (answer.type() == QDBusMessage::ErrorMessage)
        throw CommandFailure{"Tidemark is running already, but does not answer: "
            + answer.errorMessage().toStdString()};
}

}  // namespace

/// Whether sweeping is paused by what the settings file says.
static bool isPaused(const FileURL& supportFolder)
{
    LinuxFileManager files;
    const SystemClock clock;
    return SettingsStore{supportFolder.appending("settings.json"), files, clock}.load().isPaused;
}

static void performBySocket(AppAction action)
{
    const FileURL supportFolder = AppSupport::folder();
    const auto operations = Operations::open(supportFolder, [] {});
    SweepObserver nobody;
    switch (action) {
    case AppAction::sweep:
        operations->sweep({}, nobody);
        return;
    case AppAction::togglePause:
        operations->setPaused(!isPaused(supportFolder));
        return;
    case AppAction::undo:
        operations->undo({});
        return;
    }
}

void HandOver::carryOut() const
{
    QVariantMap platformData;
    if (!activationToken.empty())
        platformData.insert(
            QStringLiteral("activation-token"), QString::fromStdString(activationToken));
    if (options.action && isOnBus())
        callOverBus(QStringLiteral("ActivateAction"),
            {QString::fromUtf8(nameOf(*options.action)), QVariantList{}, platformData});
    else if (options.action)
        performBySocket(*options.action);
    else if (!options.isAwaited())
        return;
    else if (isOnBus())
        callOverBus(QStringLiteral("Activate"), {platformData});
    else
        throw CommandFailure{
            "Tidemark is running already, and cannot be brought to the front: it is "
            "\"tidemarkctl watch\", or there is no session bus"};
}

}  // namespace tidemark
