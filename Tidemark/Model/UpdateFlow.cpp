#include "UpdateFlow.h"

#include "FailureText.h"

#include <QPointer>

#include <algorithm>
#include <utility>

namespace tidemark {

namespace {

constexpr std::size_t installButton = 0;

std::string reasonOf(const std::exception_ptr& failure)
{
    try {
        std::rethrow_exception(failure);
    } catch (const std::exception& error) {
        return failureText(error);
    } catch (...) {
        return "for an unknown reason";
    }
}

}  // namespace

UpdateFlow::UpdateFlow(UpdateServices services, std::string version,
    std::function<bool()> hasOnboarded, SystemLog& log)
    : m_services(std::move(services))
    , m_version(std::move(version))
    , m_hasOnboarded(std::move(hasOnboarded))
    , m_log(log)
{
}

UpdateFlow::~UpdateFlow()
{
    stop();
}

void UpdateFlow::stop()
{
    m_isStopping = true;
    m_services.countdown.cancel();
    m_automaticSearch.reset();
    if (std::exchange(m_manualSearch, {}))
        Q_EMIT isCheckingForUpdateChanged();
    m_waitingAlerts.clear();
    withdrawAlert();
}

// Checking

void UpdateFlow::scheduleUpdateChecks()
{
    if (m_isStopping)
        return;
    m_services.countdown.start(checkInterval, [this] {
        checkForUpdate();
        scheduleUpdateChecks();
    });
}

void UpdateFlow::checkForUpdate()
{
    if (m_isStopping)
        return;
    m_automaticSearch = m_services.finder.find(m_version,
        [this](const std::optional<UpdateInfo>& update) { automaticSearchFound(update); });
}

void UpdateFlow::automaticSearchFound(const std::optional<UpdateInfo>& update)
{
    m_automaticSearch.reset();
    if (!update)
        return;
    take(*update);
    promptUnlessLeftForLater();
}

void UpdateFlow::checkForUpdatesManually()
{
    if (m_isUpdating || m_manualSearch || m_isStopping)
        return;
    m_manualSearch = m_services.finder.find(
        m_version, [this](const std::optional<UpdateInfo>& update) { manualSearchFound(update); });
    Q_EMIT isCheckingForUpdateChanged();
}

void UpdateFlow::manualSearchFound(const std::optional<UpdateInfo>& update)
{
    m_manualSearch.reset();
    Q_EMIT isCheckingForUpdateChanged();
    if (!update)
        return present(UpdateAlert::upToDate(m_version), {});
    take(*update);
    promptForUpdate();
}

void UpdateFlow::take(const UpdateInfo& update)
{
    if (m_availableUpdate == update)
        return;
    m_availableUpdate = update;
    Q_EMIT availableUpdateChanged();
}

// Asking

/// What nobody has asked for.
void UpdateFlow::promptUnlessLeftForLater()
{
    const bool wasLeftForLater = m_availableUpdate
        && m_services.defaults.string(promptedVersionKey) == m_availableUpdate->version;
    if (!m_availableUpdate || wasLeftForLater || !m_hasOnboarded() || m_shownAlert == prompt())
        return;
    if (m_shownAlert && !m_isPrompting)
        wait(prompt(), [this] { promptUnlessLeftForLater(); });
    else
        promptForUpdate();
}

void UpdateFlow::promptForUpdate()
{
    if (!m_availableUpdate || m_isUpdating || m_isStopping)
        return;
    const UpdateAlert alert = prompt();
    if (m_shownAlert && m_shownAlert != alert) {
        if (!m_isPrompting)
            return wait(alert, [this] { promptForUpdate(); });
        withdrawAlert();  // there is something newer by now
    }
    present(alert, [this, version = m_availableUpdate->version](std::size_t button) {
        m_isPrompting = false;
        if (button == installButton)
            installUpdate();
        else
            m_services.defaults.set(promptedVersionKey, version);
    });
    m_isPrompting = true;
}

UpdateAlert UpdateFlow::prompt() const
{
    return UpdateAlert::newVersion(m_availableUpdate->version, m_version);
}

/// Shows the alert now, or after the one that is up.
void UpdateFlow::present(const UpdateAlert& alert, const UpdateAlerts::Answered& answered)
{
    if (m_shownAlert == alert)
        return m_services.alerts.bringForward();
    if (m_shownAlert)
        return wait(alert, [this, alert, answered] { present(alert, answered); });
    m_shownAlert = alert;
    m_services.alerts.show(alert, [this, answered](std::size_t button) {
        m_shownAlert.reset();
        if (answered)
            answered(button);
        presentNext();
    });
}

void UpdateFlow::wait(const UpdateAlert& alert, std::function<void()> present)
{
    const bool isWaiting = std::ranges::any_of(
        m_waitingAlerts, [&](const WaitingAlert& each) { return each.alert == alert; });
    if (!isWaiting)
        m_waitingAlerts.push_back({alert, std::move(present)});
}

void UpdateFlow::presentNext()
{
    while (!m_shownAlert && !m_waitingAlerts.empty()) {
        const WaitingAlert next = std::move(m_waitingAlerts.front());
        m_waitingAlerts.pop_front();
        next.present();
    }
}

void UpdateFlow::withdrawAlert()
{
    m_isPrompting = false;
    if (std::exchange(m_shownAlert, {}))
        m_services.alerts.withdraw();
}

// Installing

void UpdateFlow::installUpdate()
{
    if (!m_availableUpdate || m_isUpdating || m_isStopping)
        return;
    // The menu may have answered it.
    if (m_isPrompting)
        withdrawAlert();
    setUpdating(true);
    const QPointer<UpdateFlow> flow{this};
    m_services.installer.install(
        *m_availableUpdate,
        [flow](std::int64_t received, std::optional<std::int64_t> total) {
            if (flow)
                flow->setProgress(UpdateProgress{.received = received, .total = total});
        },
        [flow](const std::exception_ptr& failure) {
            if (flow)
                flow->installerIsDone(failure);
        });
    presentNext();
}

void UpdateFlow::installerIsDone(const std::exception_ptr& failure)
{
    if (m_isStopping)
        return;
    // What comes next is the new version's.
    if (!failure)
        return m_services.quit();
    m_log.warn("the update failed: " + reasonOf(failure));
    setProgress({});
    setUpdating(false);
    present(UpdateAlert::failure(failure, m_services.downloadPage), {});
}

void UpdateFlow::setUpdating(bool isUpdating)
{
    if (std::exchange(m_isUpdating, isUpdating) != isUpdating)
        Q_EMIT isUpdatingChanged();
}

void UpdateFlow::setProgress(std::optional<UpdateProgress> progress)
{
    if (m_progress == progress)
        return;
    m_progress = progress;
    Q_EMIT progressChanged();
}

}  // namespace tidemark
