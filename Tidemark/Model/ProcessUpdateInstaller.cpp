#include "ProcessUpdateInstaller.h"

#include "InstallReport.h"
#include "Updater.h"

#include <QCoreApplication>
#include <QProcess>

#include <stdexcept>
#include <utility>

namespace tidemark {

namespace {

constexpr qsizetype longestLine = 1 << 16;
constexpr int patience =
    15'000;  // milliseconds: for files to be removed, and for a swap that begins just then

std::exception_ptr failureOf(const std::string& reason)
{
    return std::make_exception_ptr(std::runtime_error{reason});
}

}  // namespace

ProcessUpdateInstaller::ProcessUpdateInstaller(QString program, QStringList arguments)
    : m_program(std::move(program))
    , m_arguments(std::move(arguments))
{
}

ProcessUpdateInstaller::~ProcessUpdateInstaller()
{
    if (!m_process)
        return;
    m_process->disconnect();
    m_process->terminate();
    if (!m_process->waitForFinished(patience)) {
        m_process->kill();
        m_process->waitForFinished();
    }
}

void ProcessUpdateInstaller::install(const UpdateInfo& update, Progress progress, Done done)
{
    // Two swaps of one bundle would move each other's files.
    if (m_process || m_isSwapWaiting) {
        QMetaObject::invokeMethod(
            QCoreApplication::instance(),
            [done = std::move(done)] { done(failureOf("an update is being installed already")); },
            Qt::QueuedConnection);
        return;
    }
    m_progress = std::move(progress);
    m_done = std::move(done);
    start(update);
}

void ProcessUpdateInstaller::start(const UpdateInfo& update)
{
    m_unread.clear();
    m_result.reset();
    m_process = std::make_unique<QProcess>();
    QProcess* const process = m_process.get();
    QObject::connect(
        process, &QProcess::readyReadStandardOutput, process, [this] { takeReports(); });
    // From the event loop, so that whoever hears of the end may destroy the process.
    QObject::connect(
        process, &QProcess::finished, process, [this] { processHasEnded(); }, Qt::QueuedConnection);
    QObject::connect(
        process, &QProcess::errorOccurred, process,
        [this](QProcess::ProcessError error) {
            if (error == QProcess::FailedToStart)
                finish(failureOf(
                    "cannot start the updater: " + m_process->errorString().toStdString()));
        },
        Qt::QueuedConnection);
    process->setProcessChannelMode(QProcess::ForwardedErrorChannel);
    process->start(m_program, m_arguments);
    process->write(QByteArray::fromStdString(Updater::announcementOf(update)));
    process->closeWriteChannel();
}

void ProcessUpdateInstaller::takeReports()
{
    m_unread += m_process->readAllStandardOutput();
    qsizetype begin = 0;
    for (qsizetype end = m_unread.indexOf('\n'); end >= 0; end = m_unread.indexOf('\n', begin)) {
        takeReport({m_unread.constData() + begin, static_cast<std::size_t>(end - begin)});
        begin = end + 1;
    }
    m_unread.remove(0, begin);
    if (m_unread.size() > longestLine)
        m_process->kill();
}

void ProcessUpdateInstaller::takeReport(std::string_view line)
{
    std::optional<InstallReport> report = InstallReport::parse(line);
    if (!report)
        return;
    if (const auto* progress = std::get_if<UpdateProgress>(&report->content))
        m_progress(progress->received, progress->total);
    else
        m_result = std::move(*report);
}

void ProcessUpdateInstaller::processHasEnded()
{
    takeReports();
    m_isSwapWaiting =
        m_result && std::holds_alternative<InstallReport::SwapWaits>(m_result->content);
    if (m_isSwapWaiting)
        return finish(nullptr);
    const auto* failure =
        m_result ? std::get_if<InstallReport::Failure>(&m_result->content) : nullptr;
    finish(failure ? failure->error() : failureOf("the updater ended before it was done"));
}

void ProcessUpdateInstaller::finish(const std::exception_ptr& failure)
{
    m_process->disconnect();
    m_process.release()->deleteLater();
    m_progress = {};
    const Done done = std::exchange(m_done, {});
    done(failure);
}

}  // namespace tidemark
