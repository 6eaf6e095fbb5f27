#include "Updater.h"

#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <string>
#include <string_view>

namespace {

/// Whether the application, to which the updater announces what it has found, learns the same. Addresses
/// are the same if they are asked for in the same way: QUrl tells "#" and "%23" in a fragment apart, but
/// writes both as "%23".
bool isKeptByAnnouncement(const tidemark::UpdateInfo& update, std::string_view currentVersion)
{
    using namespace tidemark;
    const auto learned = Updater::updateIn(Updater::announcementOf(update), currentVersion);
    return learned && learned->version == update.version && learned->notes == update.notes
        && learned->downloadURL.toEncoded() == update.downloadURL.toEncoded();
}

}  // namespace

/// Whatever a server sends as the update feed: it is read without harm, and what comes of it keeps its
/// promises.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    using namespace tidemark;
    constexpr const char* currentVersion = "1.2";
    const std::string feed{reinterpret_cast<const char*>(data), size};
    const auto update = Updater::updateIn(feed, currentVersion);
    if (!update)
        return 0;
    const bool isNewer = Updater::isNewer(update->version, currentVersion)
        && !Updater::isNewer(currentVersion, update->version);
    const bool isHttps =
        update->downloadURL.isValid() && update->downloadURL.scheme() == QStringLiteral("https");
    if (!isNewer || !isHttps || !isKeptByAnnouncement(*update, currentVersion))
        std::abort();
    return 0;
}
