#include "EventLoop.h"
#include "HttpsServer.h"
#include "TrustingSession.h"
#include "Updater.h"

#include <QNetworkReply>
#include <QPointer>
#include <QTimer>

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <memory>
#include <optional>
#include <string>

namespace tidemark {

using namespace std::chrono_literals;
using testing::Each;
using testing::HasSubstr;
using testing::Not;
using testing::SizeIs;

namespace {

const QByteArray feed = R"({"version": "1.3", "url": "https://example.org/update.zip"})";
const QString path = QStringLiteral("/latest.json");

/// The bytes in the format that HTTP calls "deflate".
QByteArray deflated(const QByteArray& bytes)
{
    constexpr int lengthBefore = 4;
    return qCompress(bytes).mid(lengthBefore);
}

}  // namespace

class UpdateCheckTest : public testing::Test {
protected:
    static void SetUpTestSuite()
    {
        requireApplication();
        s_authority = new TestAuthority;
    }

    static void TearDownTestSuite()
    {
        delete s_authority;
        s_authority = nullptr;
    }

    void begin(const QUrl& manifest)
    {
        m_calls = 0;
        m_found.reset();
        m_check = Updater::check(
            manifest, "1.2", m_session,
            [this](std::optional<UpdateInfo> update) {
                ++m_calls;
                m_found = std::move(update);
            },
            m_limits);
    }

    /// The version found; empty for none.
    std::string find(const QUrl& manifest)
    {
        begin(manifest);
        EXPECT_EQ(m_calls, 0);
        EXPECT_TRUE(runUntil([this] { return m_calls > 0; }));
        m_check.reset();
        return m_found ? m_found->version : "";
    }

    std::string find(HttpsServer::Handler handler)
    {
        m_server.serve(path, std::move(handler));
        return find(m_server.url(path));
    }

    static TestAuthority* s_authority;

    HttpsServer m_server{*s_authority};
    TrustingSession m_session{s_authority->clientConfiguration()};
    // Long for what a busy machine does by itself; tests of time-outs shorten them.
    UpdateCheck::Limits m_limits{.silence = 60s, .whole = 120s};
    std::unique_ptr<UpdateCheck> m_check;
    std::optional<UpdateInfo> m_found;
    int m_calls = 0;
};

TestAuthority* UpdateCheckTest::s_authority = nullptr;

TEST_F(UpdateCheckTest, FindsWhatTheFeedAnnounces)
{
    EXPECT_EQ(find(HttpsServer::answer(200, feed)), "1.3");
    EXPECT_EQ(m_found->downloadURL, QUrl{QStringLiteral("https://example.org/update.zip")});
    EXPECT_EQ(m_found->notes, "");
}

TEST_F(UpdateCheckTest, AnOlderVersionIsNoUpdate)
{
    EXPECT_EQ(find(HttpsServer::answer(
                  200, R"({"version": "1.2.0", "url": "https://example.org/update.zip"})")),
        "");
}

TEST_F(UpdateCheckTest, TheStatusDoesNotMatter)
{
    for (const int status : {200, 201, 203, 299, 400, 401, 403, 404, 405, 409, 410, 418, 429, 500,
             501, 502, 503, 504, 599})
        EXPECT_EQ(find(HttpsServer::answer(status, feed)), "1.3") << status;
}

TEST_F(UpdateCheckTest, TheContentTypeDoesNotMatter)
{
    EXPECT_EQ(
        find(HttpsServer::answer(200, feed, "Content-Type: text/html; charset=utf-16\r\n")), "1.3");
}

TEST_F(UpdateCheckTest, AnAnswerThatIsNoFeedIsNoUpdate)
{
    EXPECT_EQ(find(HttpsServer::answer(200, {})), "");
    EXPECT_EQ(find(HttpsServer::answer(404, "<html>not found</html>")), "");
    EXPECT_EQ(find(HttpsServer::bytes({})), "");
    EXPECT_EQ(find(HttpsServer::bytes("SSH-2.0-OpenSSH\r\n\r\n")), "");
}

TEST_F(UpdateCheckTest, AnAnswerWithoutALengthEndsWithTheConnection)
{
    EXPECT_EQ(
        find(HttpsServer::bytes("HTTP/1.1 200 OK\r\nConnection: close\r\n\r\n" + feed)), "1.3");
    EXPECT_EQ(find(HttpsServer::bytes("HTTP/1.0 200 OK\r\n\r\n" + feed)), "1.3");
}

TEST_F(UpdateCheckTest, AnAnswerThatIsCutOffIsNoUpdate)
{
    const QByteArray withBlanks = feed + "     ";
    for (const QByteArray status : {"200 OK", "404 Not Found"}) {
        const QByteArray head = "HTTP/1.1 " + status
            + "\r\nContent-Length: " + QByteArray::number(withBlanks.size()) + "\r\n\r\n";
        EXPECT_EQ(find(HttpsServer::bytes(head + withBlanks)), "1.3");
        EXPECT_EQ(find(HttpsServer::bytes(head + feed)), "") << status.toStdString();
        EXPECT_EQ(find(HttpsServer::bytes(head + feed.left(20))), "") << status.toStdString();
    }
}

TEST_F(UpdateCheckTest, AsksForAFreshCopyAndTellsNothingOfTheUser)
{
    find(HttpsServer::answer(
        200, feed, "Set-Cookie: who=me\r\nCache-Control: max-age=3600\r\nETag: \"1\"\r\n"));
    find(HttpsServer::answer(200, feed));
    ASSERT_THAT(m_server.requests(), SizeIs(2));
    EXPECT_THAT(m_server.requests(), Each(HasSubstr("GET /latest.json HTTP/1.1\r\n")));
    EXPECT_THAT(m_server.requests(), Each(HasSubstr("User-Agent: Tidemark\r\n")));
    for (const char* header :
        {"Cookie:", "If-None-Match:", "If-Modified-Since:", "Accept-Language: C"})
        EXPECT_THAT(m_server.requests(), Each(Not(HasSubstr(header))));
}

TEST_F(UpdateCheckTest, FollowsRedirects)
{
    m_server.serve(QStringLiteral("/new.json"), HttpsServer::answer(200, feed));
    m_server.serve(QStringLiteral("/relative"), HttpsServer::redirect("/new.json"));
    EXPECT_EQ(find(m_server.url(QStringLiteral("/relative"))), "1.3");
    EXPECT_EQ(
        find(HttpsServer::redirect(m_server.url(QStringLiteral("/relative")).toEncoded())), "1.3");
    HttpsServer other{*s_authority};
    other.serve(path, HttpsServer::answer(404, feed));
    EXPECT_EQ(find(HttpsServer::redirect(other.url(path).toEncoded())), "1.3");
}

TEST_F(UpdateCheckTest, ARedirectLoopEnds)
{
    EXPECT_EQ(find(HttpsServer::redirect("/latest.json")), "");
    // Qt asks again where a connection was closed meanwhile; so it is not always the same number.
    EXPECT_LE(m_server.requests().size(), 100U);
}

TEST_F(UpdateCheckTest, DoesNotFollowAwayFromHttps)
{
    // Would be found, were it asked for.
    QTcpServer plain;
    bool wasAsked = false;
    QObject::connect(&plain, &QTcpServer::newConnection, [&] {
        wasAsked = true;
        QTcpSocket* socket = plain.nextPendingConnection();
        socket->write("HTTP/1.0 200 OK\r\n\r\n" + feed);
        socket->disconnectFromHost();
    });
    ASSERT_TRUE(plain.listen(QHostAddress::LocalHost));
    const QByteArray http =
        "http://127.0.0.1:" + QByteArray::number(plain.serverPort()) + "/latest.json";
    EXPECT_EQ(find(HttpsServer::redirect(http)), "");
    EXPECT_EQ(find(QUrl{QString::fromLatin1(http)}), "");
    EXPECT_FALSE(wasAsked);
}

TEST_F(UpdateCheckTest, ReadsNoLocalFiles)
{
    const TemporaryFolder folder;
    const QUrl local = QUrl::fromLocalFile(
        QString::fromStdString(folder.write("latest.json", feed.toStdString()).path()));
    EXPECT_EQ(find(local), "");
    EXPECT_EQ(find(HttpsServer::redirect(local.toEncoded())), "");
    EXPECT_EQ(find(HttpsServer::redirect("data:application/json," + feed.toPercentEncoding())), "");
    EXPECT_EQ(find(QUrl{}), "");
}

TEST_F(UpdateCheckTest, ACertificateOfSomebodyElseIsNotTrusted)
{
    const TestAuthority unknown;
    HttpsServer server{unknown};
    server.serve(path, HttpsServer::answer(200, feed));
    EXPECT_EQ(find(server.url(path)), "");
    EXPECT_THAT(server.requests(), SizeIs(0));
}

TEST_F(UpdateCheckTest, ACertificateOfAnotherHostIsNotTrusted)
{
    HttpsServer other{*s_authority, QHostAddress{QStringLiteral("127.0.0.2")}};
    other.serve(path, HttpsServer::answer(200, feed));
    EXPECT_EQ(find(other.url(path)), "");
    EXPECT_THAT(other.requests(), SizeIs(0));
}

TEST_F(UpdateCheckTest, NobodyListeningIsNoUpdate)
{
    QUrl url;
    {
        const HttpsServer gone{*s_authority};
        url = gone.url(path);
    }
    EXPECT_EQ(find(url), "");
}

TEST_F(UpdateCheckTest, AnUnknownHostIsNoUpdate)
{
    EXPECT_EQ(find(QUrl{QStringLiteral("https://nowhere.invalid/latest.json")}), "");
}

TEST_F(UpdateCheckTest, AServerThatIsSilentIsGivenUp)
{
    m_limits.silence = 100ms;
    QTcpServer withoutHandshake;
    ASSERT_TRUE(withoutHandshake.listen(QHostAddress::LocalHost));
    EXPECT_EQ(
        find(QUrl{QStringLiteral("https://127.0.0.1:%1/").arg(withoutHandshake.serverPort())}), "");
    EXPECT_EQ(find([](QSslSocket& /*socket*/) {}), "");
    EXPECT_EQ(find([](QSslSocket& socket) { socket.write("HTTP/1.1 200 OK\r\nContent-Le"); }), "");
    // All of it, but for the end.
    EXPECT_EQ(find([](QSslSocket& socket) {
        socket.write("HTTP/1.1 200 OK\r\nContent-Length: 1000\r\n\r\n" + feed);
    }),
        "");
}

TEST_F(UpdateCheckTest, AServerThatDribblesIsGivenUp)
{
    std::size_t sent = 0;
    // A busy machine may need longer for the first byte.
    for (m_limits.whole = 500ms; sent == 0 && m_limits.whole < 60s; m_limits.whole *= 2) {
        EXPECT_EQ(find([&](QSslSocket& socket) {
            socket.write("HTTP/1.1 200 OK\r\n\r\n" + feed);
            auto* timer = new QTimer{&socket};
            QObject::connect(timer, &QTimer::timeout, &socket, [&] {
                socket.write(" ");
                ++sent;
            });
            timer->start(1ms);
        }),
            "");
    }
    EXPECT_GT(sent, 0U);
}

TEST_F(UpdateCheckTest, ABodyOfTheLargestSizeIsTaken)
{
    const QByteArray largest = feed + QByteArray(m_limits.body - feed.size(), ' ');
    EXPECT_EQ(find(HttpsServer::answer(200, largest)), "1.3");
    EXPECT_EQ(find(HttpsServer::bytes("HTTP/1.0 200 OK\r\n\r\n" + largest)), "1.3");
    EXPECT_EQ(
        find(HttpsServer::answer(200, deflated(largest), "Content-Encoding: deflate\r\n")), "1.3");
}

TEST_F(UpdateCheckTest, ABodyThatIsTooLargeIsGivenUp)
{
    const QByteArray tooLarge = feed + QByteArray(m_limits.body + 1 - feed.size(), ' ');
    EXPECT_EQ(find(HttpsServer::answer(200, tooLarge)), "");
    EXPECT_EQ(find(HttpsServer::bytes("HTTP/1.0 200 OK\r\n\r\n" + tooLarge)), "");
    EXPECT_EQ(
        find(HttpsServer::answer(200, deflated(tooLarge), "Content-Encoding: deflate\r\n")), "");
}

TEST_F(UpdateCheckTest, ABodyThatGrowsAHundredfoldByDecompressionIsGivenUp)
{
    const QByteArray bomb = deflated(feed + QByteArray(100 * m_limits.body, ' '));
    ASSERT_LT(bomb.size(), m_limits.body);
    EXPECT_EQ(find(HttpsServer::answer(200, bomb, "Content-Encoding: deflate\r\n")), "");
}

TEST_F(UpdateCheckTest, ABodyWithoutEndIsGivenUp)
{
    qint64 sent = 0;
    QPointer<QSslSocket> connection;
    EXPECT_EQ(find([&](QSslSocket& socket) {
        connection = &socket;
        const QByteArray portion(65536, ' ');
        QObject::connect(
            &socket, &QSslSocket::encryptedBytesWritten, &socket, [&sent, &socket, portion] {
                if (socket.encryptedBytesToWrite() == 0) {
                    socket.write(portion);
                    sent += portion.size();
                }
            });
        socket.write("HTTP/1.1 200 OK\r\n\r\n" + feed);
    }),
        "");
    // The client takes no more, so that the server hears of the end.
    EXPECT_TRUE(runUntil([&] { return connection.isNull(); }));
    EXPECT_GE(sent, m_limits.body);
}

TEST_F(UpdateCheckTest, HeadersWithoutEndAreGivenUp)
{
    QPointer<QSslSocket> connection;
    m_limits.whole = 2s;
    EXPECT_EQ(find([&](QSslSocket& socket) {
        connection = &socket;
        const QByteArray portion = "X-More: " + QByteArray(4000, 'x') + "\r\n";
        QObject::connect(&socket, &QSslSocket::encryptedBytesWritten, &socket, [&socket, portion] {
            if (socket.encryptedBytesToWrite() == 0)
                socket.write(portion);
        });
        socket.write("HTTP/1.1 200 OK\r\n");
    }),
        "");
    EXPECT_TRUE(runUntil([&] { return connection.isNull(); }));
}

TEST_F(UpdateCheckTest, EndsWithoutAWordWhenItIsDestroyed)
{
    bool isAsked = false;
    bool isOver = false;
    m_server.serve(path, [&](QSslSocket& socket) {
        isAsked = true;
        QObject::connect(&socket, &QObject::destroyed, [&] { isOver = true; });
    });
    begin(m_server.url(path));
    EXPECT_TRUE(runUntil([&] { return isAsked; }));
    m_check.reset();
    EXPECT_TRUE(runUntil([&] { return isOver; }));
    EXPECT_EQ(m_calls, 0);
}

TEST_F(UpdateCheckTest, MayBeDestroyedRightAfterItsBeginning)
{
    begin(m_server.url(path));
    m_check.reset();
    begin(QUrl{QStringLiteral("http://example.org/latest.json")});
    m_check.reset();
    m_server.serve(path, HttpsServer::answer(200, feed));
    EXPECT_EQ(find(m_server.url(path)), "1.3");
    EXPECT_EQ(m_calls, 1);
}

TEST_F(UpdateCheckTest, WhoHearsTheResultMayDestroyCheckAndSession)
{
    for (const int status : {200, 302}) {
        m_server.serve(path, HttpsServer::answer(status, feed));
        auto session = std::make_unique<TrustingSession>(s_authority->clientConfiguration());
        bool isDone = false;
        m_check = Updater::check(m_server.url(path), "1.2", *session, [&](const auto& /*update*/) {
            m_check.reset();
            session.reset();
            isDone = true;
        });
        EXPECT_TRUE(runUntil([&] { return isDone; }));
    }
}

TEST_F(UpdateCheckTest, SeveralAtOnceDoNotMixUp)
{
    m_server.serve(QStringLiteral("/a"), HttpsServer::answer(200, feed));
    m_server.serve(QStringLiteral("/b"), HttpsServer::answer(404, {}));
    std::vector<std::string> found;
    std::vector<std::unique_ptr<UpdateCheck>> checks;
    for (const char* each : {"/a", "/b", "/a"})
        checks.push_back(Updater::check(
            m_server.url(QString::fromLatin1(each)), "1.2", m_session,
            [&](const std::optional<UpdateInfo>& update) {
                found.push_back(update ? update->version : "none");
            },
            m_limits));
    EXPECT_TRUE(runUntil([&] { return found.size() == 3; }));
    EXPECT_THAT(found, testing::UnorderedElementsAre("1.3", "1.3", "none"));
}

TEST_F(UpdateCheckTest, IsPatientForTenSeconds)
{
    const UpdateCheck::Limits limits;
    EXPECT_EQ(limits.silence, 10s);
    EXPECT_EQ(limits.whole, 60s);
    EXPECT_EQ(limits.body, 1024 * 1024);
}

}  // namespace tidemark
