#pragma once

#include "UpdateFinder.h"

#include <QStringList>

#include <chrono>

namespace tidemark {

/// Has another process, the updater, look for a newer version, so that neither the libraries for it nor what a server
/// sends come into this one.
///
/// The process prints the text of a feed that announces the version, or nothing. A process that fails, prints too
/// much or takes too long is ended and has found nothing; so is one whose search is destroyed, at once.
class ProcessUpdateFinder final : public UpdateFinder {
public:
    struct Limits {
        std::chrono::milliseconds whole = std::chrono::seconds{75};
        qint64 output = qint64{4} << 20U;  ///< Bytes.
    };

    /// The process gets the current version after `arguments`.
    ProcessUpdateFinder(QString program, QStringList arguments, const Limits& limits);

    std::unique_ptr<Search> find(const std::string& currentVersion, Found found) override;

private:
    const QString m_program;
    const QStringList m_arguments;
    const Limits m_limits;
};

}  // namespace tidemark
