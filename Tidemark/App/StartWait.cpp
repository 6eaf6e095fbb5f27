#include "StartWait.h"

#include <QCoreApplication>

namespace tidemark {

StartWait::StartWait(const EndSignals& signals, bool isAwaited)
    : m_signals(signals)
    , m_isAwaited(isAwaited)
{
}

void StartWait::goOn()
{
    constexpr qint64 patience = 3000;  // milliseconds
    if (m_signals.isPending())
        throw StartGivenUp{"ended while waiting for a tidemarkctl command"};
    if (!m_since.isValid())
        m_since.start();
    if (m_isAwaited && !m_message && m_since.elapsed() > patience)
        tell();
    if (!m_message)
        return;
    // Without the sockets: a signal is waited for above.
    QCoreApplication::processEvents(QEventLoop::ExcludeSocketNotifiers);
    if (!m_message->isVisible())
        throw StartGivenUp{"not started, since a tidemarkctl command is still at work"};
}

void StartWait::tell()
{
    m_message = std::make_unique<QMessageBox>(QMessageBox::Information, QStringLiteral("Tidemark"),
        QStringLiteral("Tidemark starts as soon as a tidemarkctl command has finished that is at "
                       "work on your folders."),
        QMessageBox::Cancel);
    m_message->setModal(false);
    m_message->show();
}

}  // namespace tidemark
