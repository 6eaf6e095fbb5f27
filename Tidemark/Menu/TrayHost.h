#pragma once

#include <QAbstractNativeEventFilter>
#include <QObject>
#include <QTimer>

#include <chrono>

namespace tidemark {

/// Finds out when there is something that shows tray icons.
///
/// Qt decides how it shows them at the first call to QSystemTrayIcon, and for good: by StatusNotifierItem
/// if a host of such items is registered at that moment, else by XEmbed where there is X11, else not at
/// all. So that call waits for `found`. On X11, where no host comes in some time, a panel that embeds
/// icons will do (System Tray Protocol Specification of freedesktop.org). Otherwise either is waited for,
/// as long as it takes. For the main thread.
class TrayHost : public QObject, private QAbstractNativeEventFilter {
    Q_OBJECT

public:
    enum class Kind {
        none,
        statusNotifier,
        embedding,  ///< XEmbed.
    };

    explicit TrayHost(QObject* parent = nullptr);
    ~TrayHost() override;

    /// Begins to look; what it finds is told later, from the event loop. A panel that starts together with the
    /// session may need `patience`.
    void start(std::chrono::milliseconds patience);

    /// Whether it has begun to look and does not know yet whether there is a host of StatusNotifierItems,
    /// which is a matter of milliseconds.
    bool isLooking() const { return m_isLooking; }

    /// What was found so far.
    Kind kind() const { return m_kind; }

Q_SIGNALS:
    /// Once.
    void found();

    /// Once: there is none right now. One may come yet.
    void missing();

    /// Once: it is no longer looking. After `found`, if that comes of it.
    void looked();

private Q_SLOTS:
    void ask();

private:
    void listen();
    void answered(bool isRegistered);
    void nothingThere();
    void patienceEnded();
    void settleFor(Kind kind);

    /// Hears of a panel for embedded icons that begins.
    bool nativeEventFilter(const QByteArray& type, void* message, qintptr* result) override;

    Kind m_kind = Kind::none;
    bool m_isLooking = false;
    bool m_didTellMissing = false;
    bool m_takesEmbedding = false;  ///< No longer waits for something better.
    QTimer m_patience;
};

}  // namespace tidemark
