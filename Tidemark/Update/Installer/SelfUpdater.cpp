#include "SelfUpdater.h"

#include "InstallLocation.h"
#include "MinisignSignature.h"
#include "Subprocess.h"
#include "SwapScript.h"
#include "SystemCall.h"
#include "TemporaryDirectory.h"
#include "Text.h"
#include "UpdateLeftovers.h"

#include <QNetworkAccessManager>

#include <sys/stat.h>
#include <unistd.h>

#include <filesystem>
#include <utility>

namespace tidemark {

namespace {

namespace fs = std::filesystem;

constexpr mode_t forTheUserAlone = 0700;

void makeFolder(const FileURL& folder)
{
    if (::mkdir(systemPath(folder), forTheUserAlone) != 0)
        fail("cannot make", folder, errno);
}

/// It may be of an updater that was killed before it could tell: two scripts would move each other's files.
void requireNoSwap(const FileURL& script)
{
    if (UpdateLeftovers::mayBeAtWork(script))
        throw std::runtime_error{"an update waits for the end of the application already"};
}

}  // namespace

/// Where everything lies during one installation.
struct SelfUpdater::Places {
    Places(const FileURL& temporary, pid_t process)
        : work(
            temporary.appending("qrv-update-" + std::to_string(process), FileURL::Kind::directory))
        , download(work.appending("download"))
        , archive(work.appending("update.zip"))
        , unpacked(work.appending("unpacked", FileURL::Kind::directory))
        , script(temporary.appending("qrv-update-" + std::to_string(process) + ".sh"))
    {
    }

    const FileURL work;
    const FileURL download;
    const FileURL archive;
    const FileURL unpacked;
    const FileURL script;
};

SelfUpdater::SelfUpdater(Options options, MakeSession makeSession)
    : m_options(std::move(options))
    , m_makeSession(std::move(makeSession))
{
}

SelfUpdater::~SelfUpdater()
{
    cancel();
}

bool SelfUpdater::cancel()
{
    m_isCancelled = true;
    m_cancel.signal();
    m_download.reset();
    m_worker.reset();
    if (m_places && !m_hasLaunched)
        UpdateLeftovers::removeTree(m_places->work);
    m_places.reset();
    m_done = {};
    return m_hasLaunched;
}

void SelfUpdater::install(const UpdateInfo& update, Progress progress, Done done)
{
    // Two scripts for one bundle would move each other's files.
    if (m_done || m_hasLaunched) {
        m_main.post([done = std::move(done)] {
            done(std::make_exception_ptr(
                std::runtime_error{"an update is being installed already"}));
        });
        return;
    }
    m_done = std::move(done);
    try {
        m_places = prepare();
        download(update, std::move(progress));
    } catch (...) {
        m_main.post([this, failure = std::current_exception()] { finish(failure); });
    }
}

/// Everything that can be known before something is downloaded.
std::shared_ptr<const SelfUpdater::Places> SelfUpdater::prepare() const
{
    InstallLocation::requireReplaceable(m_options.bundle);
    if (!MinisignPublicKey::parse(m_options.identity.publicKey))
        throw UpdateError{UpdateError::Case::badSignature,
            "this program was built without the key that updates are signed with"};
    if (::access(m_options.archiveTool.c_str(), X_OK) != 0)
        throw UpdateError{UpdateError::Case::unpack, "cannot run " + m_options.archiveTool};
    const FileURL temporary =
        m_options.temporaryDirectory ? *m_options.temporaryDirectory : TemporaryDirectory::folder();
    auto places = std::make_shared<const Places>(temporary, m_options.process);
    requireNoSwap(places->script);
    UpdateLeftovers::removeTree(places->work);
    makeFolder(places->work);
    return places;
}

void SelfUpdater::download(const UpdateInfo& update, Progress progress)
{
    m_session = m_makeSession();
    m_download = std::make_unique<ArchiveDownload>(update.downloadURL, m_places->download,
        *m_session, m_options.download, std::move(progress),
        [this, version = update.version](const std::exception_ptr& failure) {
            m_download.reset();
            m_session.reset();
            if (failure)
                return finish(failure);
            try {
                unpackAndLaunch(version);
            } catch (...) {  // no thread was to be had
                finish(std::current_exception());
            }
        });
}

void SelfUpdater::unpackAndLaunch(const std::string& version)
{
    m_options.downloaded();
    m_worker = std::make_unique<SerialQueue>("io.tidemark.update", m_time);
    m_worker->async([this, version] {
        std::exception_ptr failure;
        try {
            fs::rename(m_places->download.path(), m_places->archive.path());
            unpack();
            const FileURL bundle = newBundle();
            verifySignature(bundle, version);
            launchSwap(bundle, *m_options.bundle);
        } catch (...) {
            failure = std::current_exception();
        }
        m_main.post([this, failure] { finish(failure); });
    });
}

void SelfUpdater::unpack() const
{
    ArchiveInspection::requireHarmless(m_places->archive, m_options.unpacking, m_isCancelled);
    makeFolder(m_places->unpacked);
    // With the modes as they are in the archive, which are signed, and nothing else that a file can have.
    run(m_options.archiveTool,
        {"-x", "-p", "-o", "--no-acls", "--no-fflags", "--no-xattrs", "-f",
            m_places->archive.path(), "-C", m_places->unpacked.path()},
        UpdateError::Case::unpack);
}

FileURL SelfUpdater::newBundle() const
{
    for (const fs::directory_entry& entry : fs::directory_iterator{m_places->unpacked.path()})
        if (pathExtension(entry.path().filename().string()) == "app")
            return FileURL::directory(entry.path().string());
    throw UpdateError{UpdateError::Case::notFound, "there is no application in the archive"};
}

void SelfUpdater::verifySignature(const FileURL& bundle, const std::string& announcedVersion) const
{
    BundleVerifier{m_options.identity, m_options.runningVersion}.verify(
        bundle, announcedVersion, m_isCancelled);
}

void SelfUpdater::launchSwap(const FileURL& newBundle, const FileURL& destination)
{
    SwapScript::launch(m_places->script, newBundle, destination, m_options.process, m_cancel);
    m_hasLaunched = true;
}

void SelfUpdater::run(const std::string& executable, const std::vector<std::string>& arguments,
    UpdateError::Case failure) const
{
    std::vector<std::string> command{executable};
    command.insert(command.end(), arguments.begin(), arguments.end());
    const pid_t process = Subprocess::start(command, Subprocess::Session::shared);
    const int status = Subprocess::wait(process, m_cancel.descriptor());
    if (status != 0)
        throw UpdateError{failure, executable + " failed with status " + std::to_string(status)};
}

void SelfUpdater::finish(std::exception_ptr failure)
{
    if (failure && m_places)
        UpdateLeftovers::removeTree(m_places->work);
    m_places.reset();
    m_download.reset();
    m_session.reset();
    m_worker.reset();
    if (const Done done = std::exchange(m_done, {}))
        done(std::move(failure));
}

}  // namespace tidemark
