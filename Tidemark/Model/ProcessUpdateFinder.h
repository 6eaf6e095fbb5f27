#pragma once

#include "SystemLog.h"
#include "UpdateFinder.h"

#include <QStringList>

#include <chrono>

namespace tidemark {

/// Has another process, the updater, look for a newer version, so that neither the libraries for it nor
/// what a server sends come into this one.
///
/// The process prints the text of a feed that announces the version, or nothing. A process that fails,
/// prints too much or takes too long is ended and has found nothing, which the log tells; one whose
/// search is destroyed is ended at once.
class ProcessUpdateFinder final : public UpdateFinder {
public:
    struct Limits {
        std::chrono::milliseconds whole = std::chrono::seconds{75};
        qint64 output = qint64{4} << 20U;  ///< Bytes.
        std::chrono::milliseconds restAtFirst{0};  ///< Before the first process is started.
    };

    /// The process gets the current version after `arguments`. `log` outlives the finder and its searches.
    ProcessUpdateFinder(
        QString program, QStringList arguments, const Limits& limits, SystemLog& log);

    std::unique_ptr<Search> find(const std::string& currentVersion, Found found) override;

private:
    const QString m_program;
    const QStringList m_arguments;
    Limits m_limits;
    SystemLog& m_log;
};

}  // namespace tidemark
