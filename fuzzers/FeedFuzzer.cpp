#include "Updater.h"

#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <string>

/// Whatever a server sends as the update feed: it is read without harm, and what comes of it keeps its promises.
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
    if (!isNewer || !isHttps)
        std::abort();
    return 0;
}
