#include "ActivationRelay.h"

#include "FailureText.h"

#include <QCoreApplication>

#include <chrono>

namespace tidemark {

ActivationRelay::ActivationRelay(
    FileURL supportFolder, std::function<void(const std::string&)> tellFailure)
    : m_supportFolder(std::move(supportFolder))
    , m_tellFailure(std::move(tellFailure))
    , m_service({
          .bringForward = [this](const std::string& token) { bringForward(token); },
          .perform = [this](AppAction action) { perform(action); },
      })
{
    using namespace std::chrono_literals;
    m_patience.setSingleShot(true);
    m_patience.setInterval(3s);
    QObject::connect(&m_patience, &QTimer::timeout, &m_patience, [] { QCoreApplication::quit(); });
    m_patience.start();
}

void ActivationRelay::bringForward(const std::string& activationToken)
{
    HandOver handOver;
    handOver.activationToken = activationToken;
    passOn(handOver);
}

void ActivationRelay::perform(AppAction action)
{
    HandOver handOver;
    handOver.options.action = action;
    passOn(handOver);
}

void ActivationRelay::passOn(const HandOver& handOver)
{
    m_patience.stop();
    try {
        handOver.carryOut(m_supportFolder);
        waitForMore();
    } catch (const std::runtime_error& error) {
        // Later, so that whoever asks is answered before somebody has read it.
        ++m_messages;
        QMetaObject::invokeMethod(
            &m_service, [this, reason = failureText(error)] { tell(reason); },
            Qt::QueuedConnection);
    }
}

void ActivationRelay::tell(const std::string& failure)
{
    m_tellFailure(failure);
    --m_messages;
    waitForMore();
}

void ActivationRelay::waitForMore()
{
    if (m_messages == 0)
        m_patience.start();
}

}  // namespace tidemark
