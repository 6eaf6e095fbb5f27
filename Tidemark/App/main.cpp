#include "ActivationRelay.h"
#include "AlreadyRunning.h"
#include "AppSupport.h"
#include "ApplicationService.h"
#include "CommandFailure.h"
#include "EndSignals.h"
#include "FailureText.h"
#include "FolderPanel.h"
#include "HandOver.h"
#include "LaunchOptions.h"
#include "LinuxFileManager.h"
#include "LiveModel.h"
#include "LiveUpdates.h"
#include "StartWait.h"
#include "Symbols.h"
#include "Syslog.h"
#include "TidemarkApp.h"

#include <QApplication>
#include <QDBusConnection>
#include <QMessageBox>
#include <QScopeGuard>

#include <unistd.h>

#include <cstdio>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <thread>

namespace tidemark {

namespace {

enum ExitStatus { exitDone = 0, exitFailed = 1, exitWrongUsage = 2 };

int fail(const std::string& reason, ExitStatus status)
{
    std::fprintf(stderr, "tidemark: %s\n", reason.c_str());
    return status;
}

int print(const std::string& text)
{
    const bool isWritten = std::fputs(text.c_str(), stdout) >= 0 && std::fflush(stdout) == 0;
    return isWritten ? exitDone : fail("cannot write to standard output", exitFailed);
}

bool hasDisplay()
{
    return qEnvironmentVariableIsSet("DISPLAY") || qEnvironmentVariableIsSet("WAYLAND_DISPLAY")
        || qEnvironmentVariableIsSet("QT_QPA_PLATFORM");
}

/// Qt gives up by abort(), as when a display refuses the connection; that would look like a crash.
void endInsteadOfAborting(QtMsgType type, const QMessageLogContext& context, const QString& text)
{
    std::fprintf(stderr, "%s\n", qPrintable(qFormatLogMessage(type, context, text)));
    if (type == QtFatalMsg)
        ::_exit(exitFailed);
}

/// Whoever starts it by a click sees no terminal.
int tellFailure(const std::string& reason, const LaunchOptions& options)
{
    const int status = fail(reason, exitFailed);
    if (options.isAwaited())
        QMessageBox::warning(nullptr, QStringLiteral("Tidemark"), QString::fromStdString(reason));
    return status;
}

void describe()
{
    QApplication::setApplicationName(QStringLiteral("Tidemark"));
    QApplication::setApplicationVersion(QString::fromStdString(AppModel::version()));
    QApplication::setDesktopFileName(ApplicationService::name());
    QApplication::setWindowIcon(applicationIcon());
    QApplication::setQuitOnLastWindowClosed(false);
}

/// The window that is activated next spends it.
void keepActivationToken(const std::string& token)
{
    if (!token.empty())
        qputenv("XDG_ACTIVATION_TOKEN", QByteArray::fromStdString(token));
}

int runApplication(LiveModel& live, const LaunchOptions& options, const std::function<void()>& quit)
{
    TidemarkApp app{live.model(), quit};
    const auto bringForward = [&app](const std::string& activationToken) {
        keepActivationToken(activationToken);
        app.bringForward();
    };
    const ApplicationService service{{
        .bringForward = bringForward,
        .perform = [&app](AppAction action) { app.perform(action); },
    }};
    live.onBringForward(bringForward);
    app.start(options);
    return QApplication::exec();
}

/// At login it starts for every user of the machine, also for those who have never started it themselves.
bool isUnknownToUser()
{
    try {
        const FileURL settings = AppSupport::folder().appending("settings.json");
        return !LinuxFileManager{}.fileExists(settings);
    } catch (const std::runtime_error&) {
        return false;  // there is something, and the model deals with it
    }
}

int relayActivations(const FileURL& supportFolder)
{
    const ActivationRelay relay{
        supportFolder, [](const std::string& reason) { tellFailure(reason, {}); }};
    return QApplication::exec();
}

/// Of all that start, the one that gets the support folder stays.
int runOrHandOver(const HandOver& handOver, const EndSignals& signals, std::function<void()>& quit)
{
    FolderPanel folderPanel;
    Syslog syslog;
    LiveUpdates updates{syslog};
    bool isReplaced = false;
    try {
        std::optional<StartWait> wait{std::in_place, signals, handOver.options.isAwaited()};
        LiveModel live{{.folderChooser = folderPanel,
            .log = syslog,
            .updates = updates.services([&quit] { quit(); }),
            .whileWaiting = [&wait] { wait->goOn(); },
            .whenReplaced =
                [&isReplaced] {
                    isReplaced = true;
                    QApplication::quit();
                }}};
        wait.reset();
        const auto forgetModel = qScopeGuard([&quit, before = quit] { quit = before; });
        quit = [&live] { live.stop([] { QApplication::quit(); }); };
        const int status = runApplication(live, handOver.options, quit);
        if (!isReplaced)
            return status;
    } catch (const AlreadyRunning& other) {
        if (handOver.options.isService) {
            quit = [] { QApplication::quit(); };
            return relayActivations(other.supportFolder());
        }
        handOver.carryOut(other.supportFolder());
        return exitDone;
    }
    // Not before: the menu would have gone on changing what belongs to the other now.
    throw CommandFailure{"another Tidemark has taken over, since the lock of this one was removed"};
}

int run(int& argc, char** argv, const LaunchOptions& options)
{
    const HandOver handOver{
        .options = options, .activationToken = qgetenv("XDG_ACTIVATION_TOKEN").toStdString()};
    // From other threads as well, which the toolkit starts before they can be waited for.
    const sigset_t before = EndSignals::hold();
    const QApplication application{argc, argv};
    // That takes about as long as to load what there is.
    const std::jthread connecting{[] { QDBusConnection::sessionBus(); }};
    describe();

    std::function<void()> quit = [] { ::_exit(exitFailed); };
    const EndSignals signals{[&] {
        ::pthread_sigmask(SIG_SETMASK, &before, nullptr);
        quit();
    }};
    try {
        return runOrHandOver(handOver, signals, quit);
    } catch (const StartGivenUp& givenUp) {
        return fail(givenUp.what(), exitFailed);
    } catch (const std::runtime_error& error) {
        return tellFailure(failureText(error), options);
    }
}

}  // namespace

}  // namespace tidemark

int main(int argc, char* argv[])
{
    using namespace tidemark;
    const std::span<const char* const> all{argv, static_cast<std::size_t>(argc)};
    const LaunchOptions options = LaunchOptions::parse(all.subspan(all.empty() ? 0 : 1));
    if (options.wrong)
        return fail(
            "unknown argument '" + *options.wrong + "' (see tidemark --help)", exitWrongUsage);
    if (options.mode == LaunchOptions::Mode::help)
        return print(LaunchOptions::helpText());
    if (options.mode == LaunchOptions::Mode::version)
        return print("tidemark " + AppModel::version() + '\n');
    if (options.isAutostart && isUnknownToUser())
        return exitDone;
    if (!hasDisplay())
        return fail("there is no display; \"tidemarkctl watch\" keeps folders tidy without one",
            exitFailed);
    qInstallMessageHandler(endInsteadOfAborting);
    return run(argc, argv, options);
}
