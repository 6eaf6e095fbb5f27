#include "FeedReader.h"

#include "MemoryLimit.h"
#include "TemporaryDirectory.h"
#include "UpdateAddresses.h"
#include "UpdateLeftovers.h"
#include "Updater.h"

#include <QCoreApplication>
#include <QNetworkAccessManager>

#include <unistd.h>

#include <cstdio>

namespace tidemark::FeedReader {

namespace {

bool print(const UpdateInfo& update)
{
    const std::string text = Updater::announcementOf(update);
    return std::fwrite(text.data(), 1, text.size(), stdout) == text.size();
}

/// An installation that was killed leaves hundreds of megabytes.
void tidyUp()
{
    try {
        UpdateLeftovers::remove(TemporaryDirectory::folder());
    } catch (const std::runtime_error&) {
        // Without such a folder there is nothing in it.
    }
}

}  // namespace

void run(const std::string& runningVersion)
{
    tidyUp();
    const MemoryLimit limit;
    bool isPrinted = true;
    QNetworkAccessManager session;
    [[maybe_unused]] const auto check =
        Updater::check(QUrl{QString::fromStdString(UpdateAddresses::feed())}, runningVersion,
            session, [&isPrinted](const std::optional<UpdateInfo>& update) {
                isPrinted = !update || print(*update);
                QCoreApplication::quit();
            });
    QCoreApplication::exec();
    isPrinted = std::fflush(stdout) == 0 && isPrinted;
    // Qt would wait at its end for a name server that still owes an answer.
    ::_exit(isPrinted ? 0 : 1);
}

}  // namespace tidemark::FeedReader
