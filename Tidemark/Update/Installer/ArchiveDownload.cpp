#include "ArchiveDownload.h"

#include "SafeRequest.h"
#include "SystemCall.h"
#include "UpdateError.h"

#include <QNetworkAccessManager>
#include <QNetworkReply>

#include <fcntl.h>
#include <unistd.h>

#include <utility>

namespace tidemark {

namespace {

constexpr int statusOK = 200;
constexpr qint64 mostBytesInMemory = 1 << 20;
constexpr mode_t forTheUserAlone = 0600;

[[noreturn]] void refuse(const std::string& reason)
{
    throw UpdateError{UpdateError::Case::download, reason};
}

QNetworkRequest archiveRequest(const QUrl& url)
{
    QNetworkRequest request = safeRequest(url);
    // An archive is compressed already, and what is counted and announced are its own bytes then.
    request.setRawHeader("Accept-Encoding", "identity");
    return request;
}

FileDescriptor created(const FileURL& url)
{
    FileDescriptor file{uninterrupted([&] {
        return ::open(
            systemPath(url), O_WRONLY | O_CREAT | O_EXCL | O_NOFOLLOW | O_CLOEXEC, forTheUserAlone);
    })};
    if (!file.isOpen())
        fail("cannot write", url, errno);
    return file;
}

int statusOf(const QNetworkReply& reply)
{
    return reply.attribute(QNetworkRequest::HttpStatusCodeAttribute).toInt();
}

std::optional<std::int64_t> announcedLength(const QNetworkReply& reply)
{
    const QVariant length = reply.header(QNetworkRequest::ContentLengthHeader);
    return length.isValid() ? std::optional<std::int64_t>{length.toLongLong()} : std::nullopt;
}

}  // namespace

ArchiveDownload::ArchiveDownload(const QUrl& url, const FileURL& file,
    QNetworkAccessManager& session, const Limits& limits, UpdateInstaller::Progress progress,
    Done done)
    : m_url(file)
    , m_limits(limits)
    , m_progress(std::move(progress))
    , m_done(std::move(done))
{
    giveUpAfter(m_silence, "the server is silent");
    giveUpAfter(m_whole, "the server is too slow");
    guarded([&] {
        // Qt would read local files, too.
        if (url.scheme() != QStringLiteral("https"))
            refuse("the address of the archive is not https");
        m_file = created(file);
        request(url, session);
    });
}

void ArchiveDownload::giveUpAfter(QTimer& timer, const char* reason)
{
    timer.setSingleShot(true);
    QObject::connect(&timer, &QTimer::timeout, this,
        [this, reason] { finish(std::make_exception_ptr(std::runtime_error{reason})); });
}

ArchiveDownload::~ArchiveDownload()
{
    abandonReply();
}

void ArchiveDownload::abandonReply()
{
    if (!m_reply)
        return;
    // Only from this: what it does itself hangs by its signals, too.
    m_reply->disconnect(this);
    m_reply->abort();
    // Not at once, since it may be in the middle of one of them.
    m_reply.release()->deleteLater();
}

template <typename Work>
void ArchiveDownload::guarded(Work work)
{
    try {
        work();
    } catch (...) {
        finish(std::current_exception());
    }
}

void ArchiveDownload::request(const QUrl& url, QNetworkAccessManager& session)
{
    m_reply.reset(session.get(archiveRequest(url)));
    // A disk that is slower than the network slows the network down.
    m_reply->setReadBufferSize(mostBytesInMemory);
    const auto follow = [this](auto signal, auto slot) {
        QObject::connect(m_reply.get(), signal, this, slot);
    };
    follow(&QNetworkReply::encrypted, &ArchiveDownload::madeProgress);
    follow(&QNetworkReply::redirected, &ArchiveDownload::madeProgress);
    follow(&QNetworkReply::metaDataChanged, &ArchiveDownload::takeHead);
    follow(&QNetworkReply::readyRead, &ArchiveDownload::takeBody);
    follow(&QNetworkReply::finished, &ArchiveDownload::replyFinished);
    m_silence.start(m_limits.silence);
    m_whole.start(m_limits.whole);
}

void ArchiveDownload::madeProgress()
{
    m_silence.start(m_limits.silence);
}

void ArchiveDownload::takeHead()
{
    madeProgress();
    guarded([this] {
        if (statusOf(*m_reply) == statusOK
            && announcedLength(*m_reply).value_or(0) > m_limits.bytes)
            refuse("the archive is too large");
    });
}

void ArchiveDownload::takeBody()
{
    madeProgress();
    guarded([this] {
        const QByteArray bytes = m_reply->readAll();
        // The text that comes with a redirect or an error is of no use.
        if (statusOf(*m_reply) != statusOK)
            return;
        write(bytes);
        if (m_progress)
            m_progress(m_received, announcedLength(*m_reply));
    });
}

void ArchiveDownload::write(const QByteArray& bytes)
{
    m_received += bytes.size();
    if (m_received > m_limits.bytes)
        refuse("the archive is too large");
    for (qsizetype written = 0; written < bytes.size();) {
        const ssize_t count = uninterrupted([&] {
            return ::write(m_file.get(), bytes.constData() + written,
                static_cast<std::size_t>(bytes.size() - written));
        });
        if (count < 0)
            fail("cannot write", m_url, errno);
        written += count;
    }
}

void ArchiveDownload::replyFinished()
{
    // The last bytes may come together with the end.
    if (m_reply->bytesAvailable() > 0)
        takeBody();
    if (!m_isFinished)
        guarded([this] {
            requireGoodAnswer();
            // A network file system tells only here that the disk is full.
            if (m_file.close() != 0)
                fail("cannot write", m_url, errno);
            finish(nullptr);
        });
}

void ArchiveDownload::requireGoodAnswer() const
{
    const int status = statusOf(*m_reply);
    const bool hasAnswer = m_reply->error() == QNetworkReply::NoError
        || (status != 0 && status != statusOK
            && m_reply->error() >= QNetworkReply::ContentAccessDenied);
    if (!hasAnswer)
        throw std::runtime_error{"the download failed: " + m_reply->errorString().toStdString()};
    if (status != statusOK)
        refuse("the server answered " + std::to_string(status));
    if (m_reply->url().scheme() != QStringLiteral("https"))
        refuse("the archive did not come by https");
}

void ArchiveDownload::finish(std::exception_ptr failure)
{
    if (std::exchange(m_isFinished, true))
        return;
    m_silence.stop();
    m_whole.stop();
    abandonReply();
    // From the event loop, so that whoever hears of it may destroy this.
    QMetaObject::invokeMethod(
        this,
        [this, failure = std::move(failure)] {
            const Done done = std::move(m_done);
            done(failure);
        },
        Qt::QueuedConnection);
}

}  // namespace tidemark
