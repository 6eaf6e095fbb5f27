#pragma once

#include "SystemLog.h"
#include "UpdateProgress.h"
#include "UpdateServices.h"

#include <QObject>

#include <deque>
#include <functional>
#include <memory>
#include <optional>
#include <string>

namespace tidemark {

/// When to look for a newer version, whether to ask the user, and installing it: the model's part that
/// has to do with updates. For the main thread.
///
/// There is one alert at a time. What else there is to say waits until that one has gone, and is left out
/// if it is no longer true then.
class UpdateFlow final : public QObject {
    Q_OBJECT

public:
    /// Between automatic checks; the first is made at launch.
    static constexpr Seconds checkInterval{21600};

    /// The version that the user left for later when he was asked.
    static constexpr const char* promptedVersionKey = "qrv.update.promptedVersion";

    /// `version` is the running one. `hasOnboarded` tells whether the user may be disturbed without
    /// having asked.
    UpdateFlow(UpdateServices services, std::string version, std::function<bool()> hasOnboarded,
        SystemLog& log);
    ~UpdateFlow() override;

    const std::optional<UpdateInfo>& availableUpdate() const { return m_availableUpdate; }
    bool isUpdating() const { return m_isUpdating; }
    bool isCheckingForUpdate() const { return m_manualSearch != nullptr; }

    /// Nothing before the first bytes have arrived, and when none is being installed.
    const std::optional<UpdateProgress>& progress() const { return m_progress; }

    void scheduleUpdateChecks();
    void checkForUpdate();
    void checkForUpdatesManually();
    void promptForUpdate();
    void installUpdate();

    /// The application ends: no more checks and alerts.
    void stop();

Q_SIGNALS:
    void availableUpdateChanged();
    void isUpdatingChanged();
    void isCheckingForUpdateChanged();
    void progressChanged();

private:
    void take(const UpdateInfo& update);
    void promptUnlessLeftForLater();
    void automaticSearchFound(const std::optional<UpdateInfo>& update);
    void manualSearchFound(const std::optional<UpdateInfo>& update);

    void setUpdating(bool isUpdating);
    void setProgress(std::optional<UpdateProgress> progress);
    void installerIsDone(const std::exception_ptr& failure);

    /// An alert that comes when the one before has gone, if there is still reason for it then.
    struct WaitingAlert {
        UpdateAlert alert;
        std::function<void()> present;
    };

    UpdateAlert prompt() const;
    void present(const UpdateAlert& alert, const UpdateAlerts::Answered& answered);
    void wait(const UpdateAlert& alert, std::function<void()> present);
    void presentNext();
    void withdrawAlert();

    const UpdateServices m_services;
    const std::string m_version;
    const std::function<bool()> m_hasOnboarded;
    SystemLog& m_log;

    std::optional<UpdateInfo> m_availableUpdate;
    bool m_isUpdating = false;
    bool m_isStopping = false;
    std::optional<UpdateProgress> m_progress;
    std::unique_ptr<UpdateFinder::Search> m_automaticSearch;
    std::unique_ptr<UpdateFinder::Search> m_manualSearch;

    std::optional<UpdateAlert> m_shownAlert;
    bool m_isPrompting = false;  ///< The shown alert is the prompt.
    std::deque<WaitingAlert> m_waitingAlerts;
};

}  // namespace tidemark
