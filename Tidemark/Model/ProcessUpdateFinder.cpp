#include "ProcessUpdateFinder.h"

#include "Updater.h"

#include <QProcess>
#include <QTimer>

#include <utility>

namespace tidemark {

namespace {

class ProcessSearch final : public QObject, public UpdateFinder::Search {
public:
    ProcessSearch(std::string currentVersion, UpdateFinder::Found found,
        const ProcessUpdateFinder::Limits& limits, SystemLog& log)
        : m_currentVersion(std::move(currentVersion))
        , m_found(std::move(found))
        , m_limits(limits)
        , m_log(log)
    {
        QObject::connect(
            &m_process, &QProcess::readyReadStandardOutput, this, [this] { takeOutput(); });
        QObject::connect(&m_process, &QProcess::finished, this, [this] { processHasEnded(); });
        QObject::connect(
            &m_process, &QProcess::errorOccurred, this, [this](QProcess::ProcessError error) {
                if (error == QProcess::FailedToStart)
                    giveUp("it cannot be started: " + m_process.errorString().toStdString());
            });
        m_patience.setSingleShot(true);
        QObject::connect(
            &m_patience, &QTimer::timeout, this, [this] { giveUp("it takes too long"); });
    }

    ~ProcessSearch() override
    {
        m_process.disconnect(this);
        m_process.kill();
        m_process.waitForFinished();
    }

    void start(const QString& program, const QStringList& arguments)
    {
        m_process.setProgram(program);
        m_process.setArguments(arguments);
        m_process.setStandardInputFile(QProcess::nullDevice());
        m_process.setProcessChannelMode(QProcess::ForwardedErrorChannel);
        if (m_limits.restAtFirst.count() == 0)
            start();
        else
            QTimer::singleShot(m_limits.restAtFirst, this, [this] { start(); });
    }

private:
    void start()
    {
        m_patience.start(m_limits.whole);
        m_process.start(QIODevice::ReadOnly);
    }

    void takeOutput()
    {
        m_output += m_process.readAllStandardOutput();
        if (m_output.size() > m_limits.output)
            giveUp("it tells too much");
    }

    void processHasEnded()
    {
        takeOutput();
        if (m_process.exitStatus() != QProcess::NormalExit)
            giveUp("it was ended");
        else if (m_process.exitCode() != 0)
            giveUp("it ended with status " + std::to_string(m_process.exitCode()));
        else
            finish(Updater::updateIn(m_output.toStdString(), m_currentVersion));
    }

    void giveUp(const std::string& reason)
    {
        if (!m_isFinished)
            m_log.warn("the updater found out nothing: " + reason);
        finish({});
    }

    void finish(std::optional<UpdateInfo> update)
    {
        if (std::exchange(m_isFinished, true))
            return;
        m_process.kill();
        // From the event loop, so that whoever hears of it may destroy this.
        QMetaObject::invokeMethod(
            this,
            [this, update = std::move(update)]() mutable {
                const UpdateFinder::Found found = std::move(m_found);
                found(std::move(update));
            },
            Qt::QueuedConnection);
    }

    const std::string m_currentVersion;
    UpdateFinder::Found m_found;
    const ProcessUpdateFinder::Limits m_limits;
    SystemLog& m_log;
    QProcess m_process;
    QTimer m_patience;
    QByteArray m_output;
    bool m_isFinished = false;
};

}  // namespace

ProcessUpdateFinder::ProcessUpdateFinder(
    QString program, QStringList arguments, const Limits& limits, SystemLog& log)
    : m_program(std::move(program))
    , m_arguments(std::move(arguments))
    , m_limits(limits)
    , m_log(log)
{
}

std::unique_ptr<UpdateFinder::Search> ProcessUpdateFinder::find(
    const std::string& currentVersion, Found found)
{
    auto search =
        std::make_unique<ProcessSearch>(currentVersion, std::move(found), m_limits, m_log);
    m_limits.restAtFirst = {};
    search->start(m_program, m_arguments + QStringList{QString::fromStdString(currentVersion)});
    return search;
}

}  // namespace tidemark
