#include "ProcessUpdateFinder.h"

#include "Updater.h"

#include <QProcess>
#include <QTimer>

#include <signal.h>
#include <sys/prctl.h>

#include <utility>

namespace tidemark {

namespace {

class ProcessSearch final : public QObject, public UpdateFinder::Search {
public:
    ProcessSearch(std::string currentVersion, UpdateFinder::Found found,
        const ProcessUpdateFinder::Limits& limits)
        : m_currentVersion(std::move(currentVersion))
        , m_found(std::move(found))
        , m_limits(limits)
    {
        QObject::connect(
            &m_process, &QProcess::readyReadStandardOutput, this, [this] { takeOutput(); });
        QObject::connect(&m_process, &QProcess::finished, this, [this] { processHasEnded(); });
        QObject::connect(
            &m_process, &QProcess::errorOccurred, this, [this](QProcess::ProcessError error) {
                if (error == QProcess::FailedToStart)
                    finish({});
            });
        m_patience.setSingleShot(true);
        QObject::connect(&m_patience, &QTimer::timeout, this, [this] { finish({}); });
    }

    ~ProcessSearch() override
    {
        m_process.disconnect(this);
        m_process.kill();
        m_process.waitForFinished();
    }

    void start(const QString& program, const QStringList& arguments)
    {
        m_process.setStandardInputFile(QProcess::nullDevice());
        m_process.setProcessChannelMode(QProcess::ForwardedErrorChannel);
        // Whatever ends this process, nobody waits for the other any more.
        m_process.setChildProcessModifier([] { ::prctl(PR_SET_PDEATHSIG, SIGKILL); });
        m_patience.start(m_limits.whole);
        m_process.start(program, arguments, QIODevice::ReadOnly);
    }

private:
    void takeOutput()
    {
        m_output += m_process.readAllStandardOutput();
        if (m_output.size() > m_limits.output)
            finish({});
    }

    void processHasEnded()
    {
        takeOutput();
        const bool didWell =
            m_process.exitStatus() == QProcess::NormalExit && m_process.exitCode() == 0;
        finish(
            didWell ? Updater::updateIn(m_output.toStdString(), m_currentVersion) : std::nullopt);
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
    QProcess m_process;
    QTimer m_patience;
    QByteArray m_output;
    bool m_isFinished = false;
};

}  // namespace

ProcessUpdateFinder::ProcessUpdateFinder(
    QString program, QStringList arguments, const Limits& limits)
    : m_program(std::move(program))
    , m_arguments(std::move(arguments))
    , m_limits(limits)
{
}

std::unique_ptr<UpdateFinder::Search> ProcessUpdateFinder::find(
    const std::string& currentVersion, Found found)
{
    auto search = std::make_unique<ProcessSearch>(currentVersion, std::move(found), m_limits);
    search->start(m_program, m_arguments + QStringList{QString::fromStdString(currentVersion)});
    return search;
}

}  // namespace tidemark
