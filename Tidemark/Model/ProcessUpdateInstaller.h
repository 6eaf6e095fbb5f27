#pragma once

#include "InstallReport.h"
#include "UpdateInstaller.h"

#include <QByteArray>
#include <QStringList>

#include <memory>
#include <optional>
#include <string_view>

class QProcess;

namespace tidemark {

/// Has another process install an update, the updater, for the reasons of ProcessUpdateFinder.
///
/// One at a time: a second update fails, and the first goes on. Nothing more is installed once a swap waits.
class ProcessUpdateInstaller final : public UpdateInstaller {
public:
    /// The process reads the text of a feed that announces the version, and prints InstallReports.
    ProcessUpdateInstaller(QString program, QStringList arguments);

    /// Ends what is under way, and waits until it has tidied up, for some seconds at most; `done` is not
    /// called any more. Where it comes too late, the swap follows the end of this process.
    ~ProcessUpdateInstaller() override;

    ProcessUpdateInstaller(const ProcessUpdateInstaller&) = delete;
    ProcessUpdateInstaller& operator=(const ProcessUpdateInstaller&) = delete;

    /// Fails as the process reports, and with runtime_error when it ends without a report.
    void install(const UpdateInfo& update, Progress progress, Done done) override;

private:
    void start(const UpdateInfo& update);
    void takeReports();
    void takeReport(std::string_view line);
    void processHasEnded();
    void finish(const std::exception_ptr& failure);

    const QString m_program;
    const QStringList m_arguments;
    std::unique_ptr<QProcess> m_process;  ///< Null but while one is under way.
    QByteArray m_unread;  ///< The beginning of a line.
    std::optional<InstallReport> m_result;  ///< How it went, as far as has been told.
    Progress m_progress;
    Done m_done;
    bool m_isSwapWaiting = false;
};

}  // namespace tidemark
