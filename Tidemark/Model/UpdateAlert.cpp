#include "UpdateAlert.h"

#include "UpdateError.h"

#include <QString>

namespace tidemark {

namespace {

/// A version comes from a server and may be any text.
std::string shown(const std::string& version)
{
    constexpr int longest = 40;
    const QString text = QString::fromStdString(version);
    return text.size() <= longest ? version
                                  : (text.left(longest) + QStringLiteral("…")).toStdString();
}

bool isReadOnlyLocation(const std::exception_ptr& error)
{
    try {
        std::rethrow_exception(error);
    } catch (const UpdateError& updateError) {
        return updateError.kind() == UpdateError::Case::readOnlyLocation;
    } catch (...) {
        return false;
    }
}

}  // namespace

UpdateAlert UpdateAlert::newVersion(const std::string& version, const std::string& running)
{
    return {.message = "A new version of Tidemark is available",
        .informativeText = "Tidemark " + shown(version) + " is ready to install — you have "
            + running + ". The app will update itself and relaunch.",
        .buttons = {"Install", "Later"}};
}

UpdateAlert UpdateAlert::upToDate(const std::string& running)
{
    return {.message = "You're up to date",
        .informativeText = "Tidemark " + running + " is the latest version.",
        .buttons = {"OK"}};
}

UpdateAlert UpdateAlert::failure(const std::exception_ptr& error, const std::string& downloadPage)
{
    if (isReadOnlyLocation(error)) {
        return {.message = "Move Tidemark to Applications",
            .informativeText =
                "Tidemark is running from a read-only location (like a disk image or the Downloads "
                "folder). "
                "Drag it to your Applications folder, reopen it, then check for updates again.",
            .buttons = {"OK"}};
    }
    return {.message = "Update failed",
        .informativeText =
            "Couldn't install the update. Please try again later, or download it from "
            + downloadPage + ".",
        .buttons = {"OK"}};
}

}  // namespace tidemark
