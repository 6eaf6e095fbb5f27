#pragma once

#include "UpdateInfo.h"

#include <QObject>
#include <QTimer>

#include <chrono>
#include <functional>
#include <memory>
#include <optional>
#include <string>

class QNetworkAccessManager;
class QNetworkReply;

namespace tidemark {

/// One look at the update feed, while it is under way (Updater::check). Destroying it ends it.
///
/// Lives in the thread that made it, which needs an event loop.
class UpdateCheck final : public QObject {
public:
    /// The newer version; nothing where there is none, or none could be learned of.
    using Done = std::function<void(std::optional<UpdateInfo>)>;

    /// How patient it is.
    struct Limits {
        std::chrono::milliseconds silence = std::chrono::seconds{10};  ///< Without any progress.
        std::chrono::milliseconds whole = std::chrono::seconds{60};
        qint64 body = qint64{1} << 20U;  ///< Bytes, after decompression.
    };

    UpdateCheck(const QUrl& manifest, std::string currentVersion, QNetworkAccessManager& session,
        Done done, const Limits& limits);
    ~UpdateCheck() override;

private:
    void request(const QUrl& manifest, QNetworkAccessManager& session);
    void madeProgress();
    void takeBody();
    void replyFinished();
    void abandonReply();
    void finish(std::optional<std::string> body);

    const std::string m_currentVersion;
    const Limits m_limits;
    Done m_done;
    std::unique_ptr<QNetworkReply> m_reply;  ///< Null once it has ended.
    QTimer m_silence;
    QTimer m_whole;
    std::string m_body;
};

}  // namespace tidemark
