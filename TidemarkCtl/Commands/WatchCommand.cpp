#include "CommandFailure.h"
#include "Commands.h"
#include "EndSignals.h"
#include "LiveModel.h"
#include "ProgressLine.h"
#include "SupportFolder.h"
#include "Syslog.h"
#include "WatchPrinter.h"

#include <QCoreApplication>

#include <sys/stat.h>
#include <unistd.h>

#include <functional>
#include <optional>
#include <string>

namespace tidemark {

namespace {

/// Whether what is printed goes to systemd's journal anyway (systemd.exec(5), "$JOURNAL_STREAM").
bool printsIntoJournal()
{
    struct stat output;
    if (::fstat(STDOUT_FILENO, &output) != 0)
        return false;
    return qgetenv("JOURNAL_STREAM").toStdString()
        == std::to_string(output.st_dev) + ':' + std::to_string(output.st_ino);
}

/// Tells on the terminal that another command is waited for, until that is over or the user has enough.
class Waiting {
public:
    explicit Waiting(const EndSignals& signals)
        : m_signals(signals)
    {
    }

    void goOn()
    {
        if (m_signals.isPending())
            throw CommandFailure{"ended while waiting for another tidemarkctl"};
        if (!m_line)
            m_line.emplace().show("waiting for another tidemarkctl to finish");
    }

    void end() { m_line.reset(); }

private:
    const EndSignals& m_signals;
    std::optional<ProgressLine> m_line;
};

}  // namespace

ExitStatus runWatch(const Invocation& invocation)
{
    // Qt's own event loop is smaller than GLib's and does as well here.
    qputenv("QT_NO_GLIB", "1");
    int count = 0;
    QCoreApplication application{count, nullptr};

    std::function<void()> end;
    const EndSignals signals{[&end] { end(); }};
    Waiting waiting{signals};
    bool isReplaced = false;
    NoFolderChooser nobodyToAsk;
    Syslog syslog;
    NoSystemLog noLog;
    LiveOptions options{
        .folderChooser = nobodyToAsk,
        .log = printsIntoJournal() ? static_cast<SystemLog&>(noLog) : syslog,
        .initiative = AppModel::Initiative::always,
        .requiresReadableSettings = true,
        .watchBackend = invocation.watchBackend,
        .whileWaiting = [&waiting] { waiting.goOn(); },
        .whenReplaced =
            [&isReplaced] {
                isReplaced = true;
                QCoreApplication::quit();
            },
    };
    if (invocation.supportFolder)
        options.supportFolder = supportFolder(invocation);
    LiveModel live{options};
    waiting.end();
    end = [&] { live.stop([] { QCoreApplication::quit(); }); };

    WatchPrinter printer{live.model(), [&end] { end(); }};
    printer.printStart(live.isFirstStart());
    QCoreApplication::exec();
    if (isReplaced)
        throw CommandFailure{"another Tidemark has taken over, since the lock of "
            + live.supportFolder().path() + " was removed"};
    printer.printEnd();
    return exitDone;
}

}  // namespace tidemark
