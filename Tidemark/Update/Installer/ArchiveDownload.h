#pragma once

#include "FileDescriptor.h"
#include "FileURL.h"
#include "UpdateInstaller.h"

#include <QObject>
#include <QTimer>

#include <chrono>
#include <cstdint>
#include <exception>
#include <memory>

class QNetworkAccessManager;
class QNetworkReply;

namespace tidemark {

/// Fetches an archive into a file, while it is under way. Destroying it ends it.
///
/// Lives in the thread that made it, which needs an event loop.
class ArchiveDownload final : public QObject {
public:
    /// Called once, from the event loop; may destroy the download. Null when the whole archive is in the file.
    using Done = std::function<void(std::exception_ptr failure)>;

    struct Limits {
        std::chrono::milliseconds silence = std::chrono::seconds{30};  ///< Without any progress.
        std::chrono::milliseconds whole = std::chrono::hours{2};
        std::int64_t bytes = std::int64_t{256} << 20;
    };

    /// Writes to `file`, which must not exist yet. Failures: UpdateError of the kind `download` for an answer
    /// that is not HTTP over TLS with status 200, redirects followed, or that is larger than the limit;
    /// filesystem_error for the file; runtime_error for the network.
    ArchiveDownload(const QUrl& url, const FileURL& file, QNetworkAccessManager& session,
        const Limits& limits, UpdateInstaller::Progress progress, Done done);
    ~ArchiveDownload() override;

private:
    void giveUpAfter(QTimer& timer, const char* reason);
    void request(const QUrl& url, QNetworkAccessManager& session);
    void madeProgress();
    void takeHead();
    void takeBody();
    void replyFinished();
    void requireGoodAnswer() const;
    void write(const QByteArray& bytes);
    void abandonReply();
    void finish(std::exception_ptr failure);

    /// Ends the download if `work` throws.
    template <typename Work>
    void guarded(Work work);

    const FileURL m_url;
    const Limits m_limits;
    UpdateInstaller::Progress m_progress;
    Done m_done;
    FileDescriptor m_file;
    std::unique_ptr<QNetworkReply> m_reply;  ///< Null once it has ended.
    QTimer m_silence;
    QTimer m_whole;
    std::int64_t m_received = 0;
    bool m_isFinished = false;
};

}  // namespace tidemark
