#include "TrayHost.h"

#include "EmbeddingTray.h"

#include <QDBusConnection>
#include <QDBusMessage>
#include <QDBusPendingCallWatcher>
#include <QDBusPendingReply>
#include <QDBusServiceWatcher>
#include <QDBusVariant>
#include <QGuiApplication>

namespace tidemark {

namespace {

QString watcherName()
{
    return QStringLiteral("org.kde.StatusNotifierWatcher");
}

QString watcherPath()
{
    return QStringLiteral("/StatusNotifierWatcher");
}

bool hasX11()
{
    return QGuiApplication::platformName() == QStringLiteral("xcb");
}

}  // namespace

TrayHost::TrayHost(QObject* parent)
    : QObject(parent)
{
    m_patience.setSingleShot(true);
    QObject::connect(&m_patience, &QTimer::timeout, this, [this] { patienceEnded(); });
    if (hasX11())
        QCoreApplication::instance()->installNativeEventFilter(this);
}

TrayHost::~TrayHost()
{
    if (QCoreApplication::instance())
        QCoreApplication::instance()->removeNativeEventFilter(this);
}

void TrayHost::start(std::chrono::milliseconds patience)
{
    m_isLooking = true;
    m_patience.setInterval(patience);
    if (QDBusConnection::sessionBus().isConnected()) {
        listen();
        ask();
    } else {
        QMetaObject::invokeMethod(
            this, [this] { answered(false); }, Qt::QueuedConnection);
    }
}

void TrayHost::listen()
{
    QDBusConnection bus = QDBusConnection::sessionBus();
    auto* watcher = new QDBusServiceWatcher{
        watcherName(), bus, QDBusServiceWatcher::WatchForRegistration, this};
    QObject::connect(watcher, &QDBusServiceWatcher::serviceRegistered, this, &TrayHost::ask);
    // From anybody: to listen to the watcher alone, its address would be waited for.
    bus.connect({}, watcherPath(), watcherName(), QStringLiteral("StatusNotifierHostRegistered"),
        this, SLOT(ask()));
}

void TrayHost::ask()
{
    if (m_kind != Kind::none)
        return;
    QDBusMessage question = QDBusMessage::createMethodCall(watcherName(), watcherPath(),
        QStringLiteral("org.freedesktop.DBus.Properties"), QStringLiteral("Get"));
    question.setAutoStartService(false);
    question << watcherName() << QStringLiteral("IsStatusNotifierHostRegistered");
    auto* call =
        new QDBusPendingCallWatcher{QDBusConnection::sessionBus().asyncCall(question), this};
    QObject::connect(call, &QDBusPendingCallWatcher::finished, this, [this, call] {
        const QDBusPendingReply<QDBusVariant> reply = *call;
        call->deleteLater();
        answered(!reply.isError() && reply.value().variant().toBool());
    });
}

void TrayHost::answered(bool isRegistered)
{
    if (isRegistered)
        settleFor(Kind::statusNotifier);
    else
        nothingThere();
    if (std::exchange(m_isLooking, false))
        Q_EMIT looked();
}

void TrayHost::nothingThere()
{
    if (m_didTellMissing || m_kind != Kind::none)
        return;
    m_didTellMissing = true;
    if (hasX11())
        m_patience.start();
    else
        Q_EMIT missing();
}

void TrayHost::patienceEnded()
{
    m_takesEmbedding = true;
    if (EmbeddingTray::isThere())
        settleFor(Kind::embedding);
    else
        Q_EMIT missing();
}

bool TrayHost::nativeEventFilter(const QByteArray& type, void* message, qintptr* /*result*/)
{
    if (m_takesEmbedding && m_kind == Kind::none && EmbeddingTray::isArrival(type, message))
        settleFor(Kind::embedding);
    return false;
}

void TrayHost::settleFor(Kind kind)
{
    if (m_kind != Kind::none)
        return;
    m_patience.stop();
    m_kind = kind;
    Q_EMIT found();
}

}  // namespace tidemark
