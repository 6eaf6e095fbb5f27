#include "UpdateCheck.h"

#include "SafeRequest.h"
#include "Updater.h"

#include <QNetworkAccessManager>
#include <QNetworkReply>

#include <utility>

namespace tidemark {

namespace {

/// Whether the answer arrived whole. Qt counts an answer that tells of an error as an error, too; here every
/// status is as good as any.
bool hasWholeAnswer(const QNetworkReply& reply)
{
    const QNetworkReply::NetworkError error = reply.error();
    const bool isAboutContent =
        error >= QNetworkReply::ContentAccessDenied && error <= QNetworkReply::UnknownContentError;
    const bool isTheServers =
        error >= QNetworkReply::InternalServerError && error <= QNetworkReply::UnknownServerError;
    // "Bad request" and the like.
    const bool isAboutRequest = error == QNetworkReply::ProtocolInvalidOperationError
        && reply.attribute(QNetworkRequest::HttpStatusCodeAttribute).isValid();
    return error == QNetworkReply::NoError || isAboutContent || isTheServers || isAboutRequest;
}

}  // namespace

std::unique_ptr<UpdateCheck> Updater::check(const QUrl& manifest, std::string currentVersion,
    QNetworkAccessManager& session, UpdateCheck::Done done, const UpdateCheck::Limits& limits)
{
    return std::make_unique<UpdateCheck>(
        manifest, std::move(currentVersion), session, std::move(done), limits);
}

UpdateCheck::UpdateCheck(const QUrl& manifest, std::string currentVersion,
    QNetworkAccessManager& session, Done done, const Limits& limits)
    : m_currentVersion(std::move(currentVersion))
    , m_limits(limits)
    , m_done(std::move(done))
{
    for (QTimer* timer : {&m_silence, &m_whole}) {
        timer->setSingleShot(true);
        QObject::connect(timer, &QTimer::timeout, this, [this] { finish({}); });
    }
    // Qt would read local files, too, and a feed that anybody can change on its way is none.
    if (manifest.scheme() == QStringLiteral("https"))
        request(manifest, session);
    else
        finish({});
}

UpdateCheck::~UpdateCheck()
{
    abandonReply();
}

void UpdateCheck::abandonReply()
{
    if (!m_reply)
        return;
    // Only from this: what it does itself hangs by its signals, too.
    m_reply->disconnect(this);
    m_reply->abort();
    // Not at once, since it may be in the middle of one of them.
    m_reply.release()->deleteLater();
}

void UpdateCheck::request(const QUrl& manifest, QNetworkAccessManager& session)
{
    m_reply.reset(session.get(safeRequest(manifest)));
    // What arrives beyond waits in the kernel until it has been seen that it is too much.
    m_reply->setReadBufferSize(m_limits.body + 1);
    const auto follow = [this](auto signal, auto slot) {
        QObject::connect(m_reply.get(), signal, this, slot);
    };
    follow(&QNetworkReply::encrypted, &UpdateCheck::madeProgress);
    follow(&QNetworkReply::redirected, &UpdateCheck::madeProgress);
    follow(&QNetworkReply::metaDataChanged, &UpdateCheck::madeProgress);
    follow(&QNetworkReply::readyRead, &UpdateCheck::takeBody);
    follow(&QNetworkReply::finished, &UpdateCheck::replyFinished);
    m_silence.start(m_limits.silence);
    m_whole.start(m_limits.whole);
}

void UpdateCheck::madeProgress()
{
    m_silence.start(m_limits.silence);
}

void UpdateCheck::takeBody()
{
    madeProgress();
    const auto room = static_cast<std::size_t>(m_limits.body) + 1 - m_body.size();
    const QByteArray bytes = m_reply->read(static_cast<qint64>(room));
    m_body.append(bytes.constData(), static_cast<std::size_t>(bytes.size()));
    if (m_body.size() > static_cast<std::size_t>(m_limits.body))
        finish({});
}

void UpdateCheck::replyFinished()
{
    const bool hasAnswer = hasWholeAnswer(*m_reply);
    // The last bytes may come together with the end.
    while (m_reply && m_reply->bytesAvailable() > 0)
        takeBody();
    if (m_reply)
        finish(hasAnswer ? std::optional{std::move(m_body)} : std::nullopt);
}

void UpdateCheck::finish(std::optional<std::string> body)
{
    m_silence.stop();
    m_whole.stop();
    abandonReply();
    // From the event loop, so that whoever hears of it may destroy this and the session.
    QMetaObject::invokeMethod(
        this,
        [this, body = std::move(body)]() mutable {
            std::optional<UpdateInfo> update;
            if (body)
                update = Updater::updateIn(std::move(*body), m_currentVersion);
            const Done done = std::move(m_done);
            done(std::move(update));
        },
        Qt::QueuedConnection);
}

}  // namespace tidemark
