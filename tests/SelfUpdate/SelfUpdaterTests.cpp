#include "EventLoop.h"
#include "HttpsServer.h"
#include "OtherProcess.h"
#include "PrivateMounts.h"
#include "ScopedEnvironment.h"
#include "SelfUpdater.h"
#include "SleepingProcess.h"
#include "TestBundle.h"
#include "TrustingSession.h"
#include "ZipFile.h"

#include <QFileSystemWatcher>
#include <QTcpServer>
#include <QTcpSocket>

#include <gmock/gmock.h>

#include <sys/stat.h>
#include <unistd.h>

#include <filesystem>
#include <functional>
#include <memory>
#include <optional>

namespace tidemark {

using namespace std::chrono_literals;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;
using Case = UpdateError::Case;

namespace {

namespace fs = std::filesystem;

const QString path = QStringLiteral("/update.zip");

/// What came of an installation.
struct Outcome {
    std::optional<Case> kind = {};
    std::string reason = {};  ///< Empty when it went well.
};

Outcome outcomeOf(const std::exception_ptr& failure)
{
    try {
        if (failure)
            std::rethrow_exception(failure);
    } catch (const UpdateError& error) {
        return {.kind = error.kind(), .reason = error.what()};
    } catch (const std::exception& error) {
        return {.reason = error.what()};
    }
    return {};
}

QByteArray bytesOf(const std::string& text)
{
    return QByteArray::fromStdString(text);
}

}  // namespace

/// Version 1.2 is installed, and 1.3 lies on the server.
class SelfUpdaterTest : public testing::Test {
public:
    /// Whatever came of it, nothing but a swap touches the installed bundle.
    ~SelfUpdaterTest() override
    {
        EXPECT_EQ(m_installed.snapshot(), m_before);
        EXPECT_THAT(m_root.names("tmp"), IsEmpty());
        EXPECT_THAT(m_root.names("Applications"), ElementsAre("Tidemark.app"));
    }

    SelfUpdaterTest(const SelfUpdaterTest&) = delete;
    SelfUpdaterTest& operator=(const SelfUpdaterTest&) = delete;

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

    SelfUpdaterTest()
        : m_installed(m_root, "Applications/Tidemark.app", "1.2", m_developer)
        , m_new(m_upload, "Tidemark.app", "1.3", m_developer)
        , m_before(m_installed.snapshot())
    {
        m_root.makeFolder("tmp");
        serve(m_new.archive());
    }

    void serve(const std::string& archive)
    {
        m_server.serve(path, HttpsServer::answer(200, bytesOf(archive)));
    }

    SelfUpdater::Options options()
    {
        return {
            .bundle = m_installed.url(),
            .runningVersion = "1.2",
            .identity = m_developer.identity(),
            .temporaryDirectory = m_root.makeFolder("tmp"),
            .process = m_application.id(),
        };
    }

    static SelfUpdater::MakeSession makeSession()
    {
        return [] { return std::make_unique<TrustingSession>(s_authority->clientConfiguration()); };
    }

    Outcome install(SelfUpdater::Options options, const QUrl& url)
    {
        SelfUpdater updater{std::move(options), makeSession()};
        std::optional<Outcome> outcome;
        updater.install(
            {.version = "1.3", .downloadURL = url, .notes = ""},
            [this](std::int64_t received, std::optional<std::int64_t> total) {
                m_received = received;
                m_total = total;
            },
            [&](const std::exception_ptr& failure) { outcome = outcomeOf(failure); });
        EXPECT_FALSE(outcome) << "from the event loop";
        EXPECT_TRUE(runUntil([&] { return outcome.has_value(); }));
        return outcome.value_or(Outcome{});
    }

    Outcome install() { return install(options(), m_server.url(path)); }

    /// The swap, after a good end: the new bundle is there and runs.
    void expectSwap()
    {
        const auto expected = m_new.snapshot();
        EXPECT_EQ(m_installed.snapshot(), m_before);
        m_application.end();
        const std::string note = "Applications/Tidemark.app.started";
        const QFileSystemWatcher watcher{{QString::fromStdString(m_root.path("Applications"))}};
        EXPECT_TRUE(runUntil([&] { return m_root.holds(note); }));
        EXPECT_EQ(m_root.read(note), "1.3 \n");
        EXPECT_EQ(m_installed.snapshot(), expected);
        fs::remove(m_root.path(note));
        m_before = expected;
    }

    static TestAuthority* s_authority;

    const TestDeveloper m_developer;
    const TemporaryFolder m_root;
    const TemporaryFolder m_upload;
    const TestBundle m_installed;
    const TestBundle m_new;
    std::map<std::string, std::string> m_before;
    SleepingProcess m_application;
    HttpsServer m_server{*s_authority};
    std::int64_t m_received = 0;
    std::optional<std::int64_t> m_total;
};

TestAuthority* SelfUpdaterTest::s_authority = nullptr;

TEST_F(SelfUpdaterTest, ReplacesTheBundleWhenTheApplicationHasEnded)
{
    const auto size = static_cast<std::int64_t>(m_new.archive().size());

    const Outcome outcome = install();

    EXPECT_EQ(outcome.reason, "");
    EXPECT_EQ(m_received, size);
    EXPECT_EQ(m_total, size);
    const std::string work = "qrv-update-" + std::to_string(m_application.id());
    EXPECT_THAT(m_root.names("tmp"), ElementsAre(work, work + ".sh"));
    EXPECT_THAT(m_root.names("tmp/" + work), ElementsAre("Info.json", "unpacked", "update.zip"));
    expectSwap();
}

TEST_F(SelfUpdaterTest, FollowsARedirectThatEndsIn200)
{
    m_server.serve(QStringLiteral("/latest"), HttpsServer::redirect("/further"));
    m_server.serve(QStringLiteral("/further"), HttpsServer::redirect("/update.zip"));

    EXPECT_EQ(install(options(), m_server.url(QStringLiteral("/latest"))).reason, "");
    expectSwap();
}

TEST_F(SelfUpdaterTest, AnyOtherStatusIsAFailedDownload)
{
    for (const int status : {201, 206, 400, 401, 403, 404, 410, 500, 503}) {
        m_server.serve(path, HttpsServer::answer(status, bytesOf(m_new.archive())));
        const Outcome outcome = install();
        EXPECT_EQ(outcome.kind, Case::download) << status << ' ' << outcome.reason;
    }
}

TEST_F(SelfUpdaterTest, ARedirectThatEndsIn404IsAFailedDownload)
{
    m_server.serve(path, HttpsServer::redirect("/gone"));
    EXPECT_EQ(install().kind, Case::download);
}

TEST_F(SelfUpdaterTest, ARedirectLoopEnds)
{
    m_server.serve(path, HttpsServer::redirect("/update.zip"));
    EXPECT_NE(install().reason, "");
}

TEST_F(SelfUpdaterTest, NothingIsFetchedWithoutTLS)
{
    QUrl plain = m_server.url(path);
    plain.setScheme(QStringLiteral("http"));
    EXPECT_EQ(install(options(), plain).kind, Case::download);
    EXPECT_EQ(install(options(), QUrl::fromLocalFile(QStringLiteral("/etc/hostname"))).kind,
        Case::download);
    EXPECT_THAT(m_server.requests(), IsEmpty());

    QTcpServer server;
    ASSERT_TRUE(server.listen(QHostAddress::LocalHost));
    m_server.serve(path,
        HttpsServer::redirect(
            "http://127.0.0.1:" + QByteArray::number(server.serverPort()) + "/update.zip"));
    EXPECT_NE(install().reason, "");
    EXPECT_FALSE(server.hasPendingConnections());
}

TEST_F(SelfUpdaterTest, AServerThatIsNotTrustedIsNotAsked)
{
    const TestAuthority stranger;
    HttpsServer server{stranger};
    server.serve(path, HttpsServer::answer(200, bytesOf(m_new.archive())));
    EXPECT_NE(install(options(), server.url(path)).reason, "");
    EXPECT_THAT(server.requests(), IsEmpty());
}

TEST_F(SelfUpdaterTest, AServerThatFallsSilentIsNotWaitedFor)
{
    const struct {
        const char* name;
        QByteArray sent;
    } cases[] = {
        {"before it answers", ""},
        {"in the middle of the head", "HTTP/1.1 200 OK\r\nContent-Le"},
        {"before the body", "HTTP/1.1 200 OK\r\nContent-Length: 1000\r\n\r\n"},
        {"in the middle of the body", "HTTP/1.1 200 OK\r\nContent-Length: 1000\r\n\r\nPK"},
    };
    for (const auto& each : cases) {
        SCOPED_TRACE(each.name);
        m_server.serve(path, [&](QSslSocket& socket) { socket.write(each.sent); });
        SelfUpdater::Options impatient = options();
        impatient.download.silence = 300ms;
        EXPECT_THAT(install(impatient, m_server.url(path)).reason, HasSubstr("silent"));
    }
}

TEST_F(SelfUpdaterTest, AServerThatIsFarTooSlowIsGivenUp)
{
    QTimer drip;
    drip.setInterval(5);
    m_server.serve(path, [&](QSslSocket& socket) {
        socket.write("HTTP/1.1 200 OK\r\nContent-Length: 1000000\r\n\r\n");
        QObject::connect(&drip, &QTimer::timeout, &socket, [&socket] { socket.write("P"); });
        drip.start();
    });
    SelfUpdater::Options impatient = options();
    impatient.download.whole = 300ms;
    EXPECT_THAT(install(impatient, m_server.url(path)).reason, HasSubstr("too slow"));
}

TEST_F(SelfUpdaterTest, ANetworkThatIsNotThereIsAFailure)
{
    QTcpServer closed;
    ASSERT_TRUE(closed.listen(QHostAddress::LocalHost));
    QUrl url = m_server.url(path);
    url.setPort(closed.serverPort());
    closed.close();
    const Outcome outcome = install(options(), url);
    EXPECT_NE(outcome.reason, "");
    EXPECT_EQ(outcome.kind, std::nullopt);
}

TEST_F(SelfUpdaterTest, AnArchiveThatEndsEarlyIsAFailure)
{
    const QByteArray archive = bytesOf(m_new.archive());
    m_server.serve(path,
        HttpsServer::bytes("HTTP/1.1 200 OK\r\nContent-Length: "
            + QByteArray::number(archive.size()) + "\r\n\r\n" + archive.left(500)));
    EXPECT_NE(install().reason, "");
}

TEST_F(SelfUpdaterTest, AnArchiveThatIsTooLargeIsNotFetched)
{
    SelfUpdater::Options small = options();
    small.download.bytes = 1000;
    m_server.serve(path, [](QSslSocket& socket) {
        socket.write("HTTP/1.1 200 OK\r\nContent-Length: 1001\r\n\r\n");
    });
    EXPECT_EQ(install(small, m_server.url(path)).kind, Case::download);
}

TEST_F(SelfUpdaterTest, AnArchiveWithoutAnEndIsNotFetched)
{
    SelfUpdater::Options small = options();
    small.download.bytes = 8 << 20;
    m_server.serve(path, [](QSslSocket& socket) {
        socket.write("HTTP/1.1 200 OK\r\nContent-Type: application/zip\r\n\r\n");
        const auto sendMore = [&socket] {
            if (socket.encryptedBytesToWrite() < 1 << 20)
                socket.write(QByteArray(1 << 18, 'x'));
        };
        QObject::connect(
            &socket, &QSslSocket::encryptedBytesWritten, &socket, sendMore, Qt::QueuedConnection);
        sendMore();
    });
    EXPECT_EQ(install(small, m_server.url(path)).kind, Case::download);
    EXPECT_LE(m_received, small.download.bytes);
    EXPECT_GT(m_received, 0);
}

TEST_F(SelfUpdaterTest, WhatCannotBeUnpackedIsRefused)
{
    const TestBundle& bundle = m_new;
    const struct {
        const char* name;
        std::string archive;
    } cases[] = {
        {"nothing", ""},
        {"a page", "<html></html>"},
        {"half an archive", bundle.archive().substr(0, bundle.archive().size() / 2)},
        {"an absolute path", ZipFile::bytes({{"/tmp/a", "x"}})},
        {"..", ZipFile::bytes({{"../a", "x"}})},
        {"a link out", ZipFile::bytes({ZipFile::link("Tidemark.app/a", "../../b")})},
        {"a device", ZipFile::bytes({{"Tidemark.app/a", "", S_IFBLK | 0644}})},
    };
    for (const auto& each : cases) {
        serve(each.archive);
        const Outcome outcome = install();
        EXPECT_EQ(outcome.kind, Case::unpack) << each.name << ": " << outcome.reason;
    }
}

TEST_F(SelfUpdaterTest, ABombIsNotUnpacked)
{
    SelfUpdater::Options small = options();
    small.unpacking.unpackedBytes = 100;
    const Outcome outcome = install(small, m_server.url(path));
    EXPECT_EQ(outcome.kind, Case::unpack);
    EXPECT_THAT(outcome.reason, HasSubstr("too large"));
}

TEST_F(SelfUpdaterTest, AnArchiveToolThatFailsIsTold)
{
    SelfUpdater::Options failing = options();
    failing.archiveTool = "/bin/false";
    EXPECT_EQ(install(failing, m_server.url(path)).kind, Case::unpack);
}

TEST_F(SelfUpdaterTest, ABundleInAFolderOfTheArchiveIsNotFound)
{
    serve(m_new.archive("folder/"));
    EXPECT_EQ(install().kind, Case::notFound);
    serve(ZipFile::bytes({{"Tidemark.APP/a", "x"}, {"app", "x"}, {".app", "x"}, {"a.app.x", "x"}}));
    EXPECT_EQ(install().kind, Case::notFound);
}

TEST_F(SelfUpdaterTest, WhatTheDeveloperHasNotSignedIsRefused)
{
    const TestDeveloper stranger;
    m_new.sign(stranger, "1.3");
    serve(m_new.archive());
    EXPECT_EQ(install().kind, Case::badSignature);

    m_new.sign(m_developer, "1.3");
    m_new.write("share/more", "x");
    serve(m_new.archive());
    EXPECT_EQ(install().kind, Case::badSignature);
}

TEST_F(SelfUpdaterTest, ABundleOfAnotherTeamIsRefused)
{
    m_new.signText(m_developer, m_new.manifest("TEAM000002", "1.3"));
    serve(m_new.archive());
    const Outcome outcome = install();
    EXPECT_EQ(outcome.kind, Case::badSignature);
    EXPECT_THAT(outcome.reason, HasSubstr("another team"));
}

TEST_F(SelfUpdaterTest, AnotherVersionThanAnnouncedIsRefused)
{
    const TestBundle other{m_upload, "other/Tidemark.app", "1.4", m_developer};
    const TemporaryFolder folder;
    const TestBundle newer{folder, "Tidemark.app", "1.4", m_developer};
    serve(newer.archive());
    EXPECT_EQ(install().kind, Case::badSignature);
}

TEST_F(SelfUpdaterTest, AVersionThatIsNotNewerIsRefused)
{
    SelfUpdater::Options same = options();
    same.runningVersion = "1.3";
    EXPECT_EQ(install(same, m_server.url(path)).kind, Case::badSignature);
}

TEST_F(SelfUpdaterTest, NothingIsDownloadedForAPlaceThatCannotBeWrittenTo)
{
    const FileURL vanishing = m_root.makeFolder("AppTranslocation/x/Tidemark.app");
    for (const auto& bundle : {std::optional{vanishing}, std::optional<FileURL>{},
             std::optional{FileURL::directory("/usr/lib/Tidemark.app")},
             std::optional{FileURL::directory("/proc/Tidemark.app")}}) {
        SelfUpdater::Options elsewhere = options();
        elsewhere.bundle = bundle;
        const Outcome outcome = install(elsewhere, m_server.url(path));
        EXPECT_EQ(outcome.kind, Case::readOnlyLocation) << outcome.reason;
    }
    EXPECT_THAT(m_server.requests(), IsEmpty());
}

TEST_F(SelfUpdaterTest, NothingIsDownloadedWithoutAKey)
{
    for (const char* key : {"", "RWQ", "no key"}) {
        SelfUpdater::Options keyless = options();
        keyless.identity.publicKey = key;
        EXPECT_EQ(install(keyless, m_server.url(path)).kind, Case::badSignature) << key;
    }
    EXPECT_THAT(m_server.requests(), IsEmpty());
}

TEST_F(SelfUpdaterTest, ClearsWhatAnEarlierAttemptHasLeft)
{
    const std::string work = "tmp/qrv-update-" + std::to_string(m_application.id());
    m_root.write(work + "/unpacked/Tidemark.app/evil", "x");
    m_root.write(work + "/update.zip", "x");
    EXPECT_EQ(install().reason, "");
    EXPECT_THAT(m_root.names(work + "/unpacked"), ElementsAre("Tidemark.app"));
    expectSwap();
}

TEST_F(SelfUpdaterTest, FollowsNoLinkInPlaceOfTheWorkFolder)
{
    const std::string work = "tmp/qrv-update-" + std::to_string(m_application.id());
    m_root.write("elsewhere/file", "kept");
    m_root.makeLink(work, m_root.path("elsewhere"));
    EXPECT_EQ(install().reason, "");
    EXPECT_THAT(m_root.names("elsewhere"), ElementsAre("file"));
    struct stat status = {};
    EXPECT_EQ(::lstat(m_root.path(work).c_str(), &status), 0);
    EXPECT_EQ(status.st_mode, S_IFDIR | 0700U);
    expectSwap();
}

TEST_F(SelfUpdaterTest, ATemporaryDirectoryThatIsNotThereIsAFailure)
{
    SelfUpdater::Options homeless = options();
    homeless.temporaryDirectory = FileURL::directory("/nowhere");
    EXPECT_THAT(install(homeless, m_server.url(path)).reason, HasSubstr("/nowhere/qrv-update-"));
    EXPECT_THAT(m_server.requests(), IsEmpty());
}

TEST_F(SelfUpdaterTest, OneAtATime)
{
    SelfUpdater updater{options(), makeSession()};
    std::vector<std::string> reasons;
    const auto note = [&](const std::exception_ptr& failure) {
        reasons.push_back(outcomeOf(failure).reason);
    };
    const UpdateInfo update{.version = "1.3", .downloadURL = m_server.url(path), .notes = ""};
    updater.install(update, {}, note);
    updater.install(update, {}, note);
    EXPECT_TRUE(runUntil([&] { return reasons.size() == 2; }));
    EXPECT_THAT(reasons, ElementsAre("an update is being installed already", ""));
    updater.install(update, {}, note);
    EXPECT_TRUE(runUntil([&] { return reasons.size() == 3; }));
    EXPECT_EQ(reasons.back(), "an update is being installed already");
    expectSwap();
}

TEST_F(SelfUpdaterTest, CanTryAgainAfterAFailure)
{
    SelfUpdater updater{options(), makeSession()};
    const UpdateInfo update{.version = "1.3", .downloadURL = m_server.url(path), .notes = ""};
    for (const bool isWhole : {false, true}) {
        serve(isWhole ? m_new.archive() : "no archive");
        std::optional<Outcome> outcome;
        updater.install(
            update, {}, [&](const std::exception_ptr& failure) { outcome = outcomeOf(failure); });
        ASSERT_TRUE(runUntil([&] { return outcome.has_value(); }));
        EXPECT_EQ(outcome->reason.empty(), isWhole) << outcome->reason;
    }
    expectSwap();
}

TEST_F(SelfUpdaterTest, DestructionEndsADownload)
{
    bool isAsked = false;
    m_server.serve(path, [&](QSslSocket&) { isAsked = true; });
    {
        SelfUpdater updater{options(), makeSession()};
        updater.install({.version = "1.3", .downloadURL = m_server.url(path), .notes = ""}, {},
            [](const std::exception_ptr&) { ADD_FAILURE() << "called"; });
        EXPECT_TRUE(runUntil([&] { return isAsked; }));
    }
    EXPECT_TRUE(runUntil([&] { return m_server.connections() == 0; }));
}

TEST_F(SelfUpdaterTest, DestructionEndsTheArchiveTool)
{
    const FileURL tool =
        m_root.write("tool", "#!/bin/sh\n: >'" + m_root.path("begun") + "'\nexec sleep 1000\n");
    ASSERT_EQ(::chmod(tool.path().c_str(), 0700), 0);
    SelfUpdater::Options hanging = options();
    hanging.archiveTool = tool.path();
    const QFileSystemWatcher watcher{{QString::fromStdString(m_root.path())}};
    SelfUpdater updater{hanging, makeSession()};
    updater.install({.version = "1.3", .downloadURL = m_server.url(path), .notes = ""}, {},
        [](const std::exception_ptr&) { ADD_FAILURE() << "called"; });
    EXPECT_TRUE(runUntil([&] { return m_root.holds("begun"); }));
}

/// A tool in the place of systemd-run, found by PATH, that tells by a file that it was called and then
/// does as `then` says.
class ScopeTool {
public:
    explicit ScopeTool(const std::string& then)
        : m_path("PATH", m_folder.path() + ':' + qgetenv("PATH").toStdString())
    {
        const FileURL tool = m_folder.write(
            "systemd-run", "#!/bin/sh\n: >'" + m_folder.path("called") + "'\n" + then);
        EXPECT_EQ(::chmod(tool.path().c_str(), 0700), 0);
    }

    bool wasCalled() const { return m_folder.holds("called"); }
    std::string folder() const { return m_folder.path(); }

private:
    const TemporaryFolder m_folder;
    const ScopedEnvironment m_path;
};

TEST_F(SelfUpdaterTest, WhoeverStopsItBeforeTheScriptRunsHasNoScript)
{
    const ScopeTool tool{"exec sleep 1000\n"};
    const QFileSystemWatcher watcher{{QString::fromStdString(tool.folder())}};
    SelfUpdater updater{options(), makeSession()};
    updater.install({.version = "1.3", .downloadURL = m_server.url(path), .notes = ""}, {},
        [](const std::exception_ptr&) { ADD_FAILURE() << "called"; });
    ASSERT_TRUE(runUntil([&] { return tool.wasCalled(); }));

    EXPECT_FALSE(updater.cancel());

    EXPECT_THAT(m_root.names("tmp"), IsEmpty());
}

TEST_F(SelfUpdaterTest, WhoeverStopsItAfterwardsLeavesTheScriptWhatItCopies)
{
    bool isDone = false;
    SelfUpdater updater{options(), makeSession()};
    updater.install({.version = "1.3", .downloadURL = m_server.url(path), .notes = ""}, {},
        [&](const std::exception_ptr&) { isDone = true; });
    const std::string script = "tmp/qrv-update-" + std::to_string(m_application.id()) + ".sh";
    const QFileSystemWatcher watcher{{QString::fromStdString(m_root.path("tmp"))}};
    ASSERT_TRUE(runUntil([&] { return isDone || m_root.holds(script); }));

    // It may be at its last call before the script runs.
    if (updater.cancel())
        expectSwap();
}

TEST_F(SelfUpdaterTest, WhenTheSwapWaitsAnEndOfTheUpdaterChangesNothing)
{
    {
        SelfUpdater updater{options(), makeSession()};
        bool isDone = false;
        updater.install({.version = "1.3", .downloadURL = m_server.url(path), .notes = ""}, {},
            [&](const std::exception_ptr&) { isDone = true; });
        ASSERT_TRUE(runUntil([&] { return isDone; }));
        EXPECT_TRUE(updater.cancel());
    }
    expectSwap();
}

TEST_F(SelfUpdaterTest, ASwapThatWaitsAlreadyIsLeftToItself)
{
    const std::string script = "tmp/qrv-update-" + std::to_string(m_application.id()) + ".sh";
    m_root.write(script, "of an updater that was killed");
    const Outcome outcome = install();
    EXPECT_THAT(outcome.reason, HasSubstr("waits for the end of the application already"));
    EXPECT_THAT(m_server.requests(), IsEmpty());
    fs::remove(m_root.path(script));
}

TEST_F(SelfUpdaterTest, NothingIsDownloadedWithoutTheArchiveTool)
{
    SelfUpdater::Options without = options();
    without.archiveTool = m_root.path("bsdtar");
    const Outcome outcome = install(without, m_server.url(path));
    EXPECT_EQ(outcome.kind, Case::unpack);
    EXPECT_THAT(outcome.reason, HasSubstr(without.archiveTool));
    EXPECT_THAT(m_server.requests(), IsEmpty());
}

TEST_F(SelfUpdaterTest, TellsWhenTheNetworkIsNoLongerNeeded)
{
    int calls = 0;
    SelfUpdater::Options telling = options();
    telling.downloaded = [&] { ++calls; };
    serve("no archive");
    EXPECT_EQ(install(telling, m_server.url(path)).kind, Case::unpack);
    EXPECT_EQ(calls, 1);
    m_server.serve(path, HttpsServer::answer(404, "none"));
    EXPECT_EQ(install(telling, m_server.url(path)).kind, Case::download);
    EXPECT_EQ(calls, 1);
}

TEST_F(SelfUpdaterTest, AFullDiskIsAFailure)
{
    // Room for what comes before, in turn: nothing, part of the archive, the archive, part of the bundle.
    m_new.write("share/large", std::string(300 << 10, 'x'));
    m_new.sign(m_developer, "1.3");
    serve(m_new.archive());
    testWithPrivateMounts([&] {
        for (const char* size : {"size=8k", "size=64k", "size=340k", "size=500k"}) {
            SCOPED_TRACE(size);
            const TemporaryFolder disk;
            mountMemory(disk.path(), size);
            SelfUpdater::Options full = options();
            full.temporaryDirectory = disk.url();
            HttpsServer server{*s_authority};
            server.serve(path, HttpsServer::answer(200, bytesOf(m_new.archive())));
            SelfUpdater updater{full, makeSession()};
            std::optional<Outcome> outcome;
            updater.install({.version = "1.3", .downloadURL = server.url(path), .notes = ""}, {},
                [&](const std::exception_ptr& failure) { outcome = outcomeOf(failure); });
            EXPECT_TRUE(runUntil([&] { return outcome.has_value(); }));
            EXPECT_NE(outcome->reason, "");
            EXPECT_THAT(disk.names(), IsEmpty());
            EXPECT_EQ(m_installed.snapshot(), m_before);
        }
    });
}

TEST_F(SelfUpdaterTest, InstallsWhatAMakerMakesByTheToolsOfARelease)
{
    if (::access(TIDEMARK_MAKE_BUNDLE, R_OK | X_OK) != 0)
        GTEST_SKIP() << "this user may not look into the source folder";
    const TemporaryFolder release;
    release.write("tree/bin/tidemark",
        "#!/bin/sh\n"
        "case $1 in --version) echo 'tidemark 1.3'; exit;; esac\n"
        "bundle=$(dirname \"$(dirname \"$0\")\")\n"
        "echo '1.3 ' >\"$bundle.started.new\"\n"
        "mv \"$bundle.started.new\" \"$bundle.started\"\n");
    ASSERT_EQ(::chmod(release.path("tree/bin/tidemark").c_str(), 0700), 0);
    release.write("tree/libexec/tidemark/tidemark-updater", "#!/bin/sh\n");
    ASSERT_EQ(::chmod(release.path("tree/libexec/tidemark/tidemark-updater").c_str(), 0700), 0);
    release.write("tree/share/doc/tidemark/copyright", "ours");
    release.write("tree/share/dbus-1/services/x.service", "Exec=/usr/bin/tidemark");
    release.makeFolder("tree/share/empty");
    otherProcess("cd '" + release.path() + R"('
        minisign -G -W -p key.pub -s key.sec >log
        public=`tail -n 1 key.pub`
        ')"
        + std::string{TIDEMARK_MAKE_BUNDLE} + R"(' --tree tree --team TEAM000001 \
            --key key.sec --output out --public-key "$public" >>log)");
    serve(release.read("out/update.zip"));
    SelfUpdater::Options made = options();
    const std::string key = release.read("key.pub");
    const std::size_t line = key.find('\n') + 1;
    made.identity.publicKey = key.substr(line, key.find('\n', line) - line);

    EXPECT_EQ(install(made, m_server.url(path)).reason, "");

    m_application.end();
    const QFileSystemWatcher watcher{{QString::fromStdString(m_root.path("Applications"))}};
    EXPECT_TRUE(runUntil([&] { return m_root.holds("Applications/Tidemark.app.started"); }));
    EXPECT_THAT(m_root.names("Applications/Tidemark.app"),
        ElementsAre("Info.json", "Signature", "bin", "libexec", "share"));
    EXPECT_THAT(m_root.names("Applications/Tidemark.app/share"), ElementsAre("doc"));
    fs::remove(m_root.path("Applications/Tidemark.app.started"));
    m_before = m_installed.snapshot();
}

}  // namespace tidemark
