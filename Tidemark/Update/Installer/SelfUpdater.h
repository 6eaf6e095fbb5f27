#pragma once

#include "ArchiveDownload.h"
#include "ArchiveInspection.h"
#include "BundleVerifier.h"
#include "DeveloperIdentity.h"
#include "MainQueue.h"
#include "SerialQueue.h"
#include "TimeSource.h"
#include "UpdateError.h"
#include "UpdateInstaller.h"
#include "WakeUp.h"

#include <atomic>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

namespace tidemark {

/// Replaces the bundle that runs with a newer one that its developer has signed.
///
/// The archive is downloaded, inspected, unpacked and verified in a folder of the user's own below the
/// temporary directory, and a script then waits for this process to end and swaps the bundles. Every
/// failure before that leaves the installed bundle untouched, and nothing behind; afterwards what lies
/// there is the script's. For the main thread; what takes long happens on a thread of its own.
class SelfUpdater final : public UpdateInstaller {
public:
    struct Options {
        /// The bundle that runs; nothing for a program outside of one, which is not replaced.
        std::optional<FileURL> bundle;
        std::string runningVersion;
        DeveloperIdentity identity = DeveloperIdentity::configured();
        ArchiveDownload::Limits download = {};
        ArchiveInspection::Limits unpacking = {};
        std::string archiveTool = "/usr/bin/bsdtar";

        /// In place of the user's own (TemporaryDirectory::folder).
        std::optional<FileURL> temporaryDirectory = {};

        /// The process for whose end the script waits.
        pid_t process = 0;

        /// Called when the network is no longer needed, before anything else is started.
        std::function<void()> downloaded = [] {};
    };

    using MakeSession = std::function<std::unique_ptr<QNetworkAccessManager>()>;

    /// Every download has a network session of its own, so that there is none between them, and no thread.
    SelfUpdater(Options options, MakeSession makeSession);

    /// See cancel().
    ~SelfUpdater() override;

    SelfUpdater(const SelfUpdater&) = delete;
    SelfUpdater& operator=(const SelfUpdater&) = delete;

    /// Fails with UpdateError in its cases and with what the network or the disk threw in all others. The
    /// location is looked at first, and whether there is a key to check the bundle with: otherwise
    /// nothing is downloaded. One at a time: a second one fails, and the first goes on. Nothing more is
    /// installed once the swap waits.
    void install(const UpdateInfo& update, Progress progress, Done done) override;

    /// Ends what is under way; `done` is not called any more. Does not wait for the network. Returns
    /// whether it came too late, so that the swap waits for the application's end. Nothing can be
    /// installed afterwards.
    bool cancel();

private:
    struct Places;

    std::shared_ptr<const Places> prepare() const;
    void download(const UpdateInfo& update, Progress progress);
    void unpackAndLaunch(const std::string& version);

    // On the worker's thread.
    void unpack() const;
    FileURL newBundle() const;
    void verifySignature(const FileURL& bundle, const std::string& announcedVersion) const;
    void launchSwap(const FileURL& newBundle, const FileURL& destination);
    void run(const std::string& executable, const std::vector<std::string>& arguments,
        UpdateError::Case failure) const;

    void finish(std::exception_ptr failure);

    const Options m_options;
    const MakeSession m_makeSession;
    std::shared_ptr<const Places> m_places;  ///< Changed only while the worker rests.
    Done m_done;
    std::atomic<bool> m_hasLaunched = false;  ///< The script waits for the end of the application.
    std::unique_ptr<QNetworkAccessManager> m_session;
    std::unique_ptr<ArchiveDownload> m_download;
    MainQueue m_main;
    SteadyTime m_time;
    std::atomic<bool> m_isCancelled = false;
    WakeUp m_cancel;
    std::unique_ptr<SerialQueue> m_worker;  ///< Null but while it works. Goes first.
};

}  // namespace tidemark
