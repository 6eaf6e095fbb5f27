#include "FeedReader.h"

#include "UpdateAddresses.h"
#include "Updater.h"

#include <QCoreApplication>
#include <QNetworkAccessManager>

#include <sys/resource.h>
#include <unistd.h>

#include <cstdio>

namespace tidemark::FeedReader {

namespace {

/// A body is limited, but Qt keeps an answer's head of any length.
void limitMemory()
{
#ifndef TIDEMARK_IS_SANITIZED  // sanitizers reserve more than there is
    constexpr rlim_t most = rlim_t{256} << 20U;
    const rlimit limit{.rlim_cur = most, .rlim_max = most};
    ::setrlimit(RLIMIT_DATA, &limit);
    const rlimit noCore{.rlim_cur = 0, .rlim_max = 0};
    ::setrlimit(RLIMIT_CORE, &noCore);
#endif
}

bool print(const UpdateInfo& update)
{
    const std::string text = Updater::announcementOf(update);
    return std::fwrite(text.data(), 1, text.size(), stdout) == text.size();
}

}  // namespace

void run(const std::string& runningVersion)
{
    limitMemory();
    bool isPrinted = true;
    QNetworkAccessManager session;
    const auto check = Updater::check(QUrl{QString::fromStdString(UpdateAddresses::feed())},
        runningVersion, session, [&isPrinted](const std::optional<UpdateInfo>& update) {
            isPrinted = !update || print(*update);
            QCoreApplication::quit();
        });
    QCoreApplication::exec();
    isPrinted = std::fflush(stdout) == 0 && isPrinted;
    // Qt would wait at its end for a name server that still owes an answer.
    ::_exit(isPrinted ? 0 : 1);
}

}  // namespace tidemark::FeedReader
