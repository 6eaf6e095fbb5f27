#include "Operations.h"

#include "AppSupport.h"
#include "LocalOperations.h"
#include "RemoteOperations.h"

#include <chrono>
#include <thread>

namespace tidemark {

std::unique_ptr<Operations> Operations::open(
    const FileURL& supportFolder, const std::function<void()>& willWait)
{
    // Nobody tells when a lock becomes free or a socket appears, and short commands are over soon.
    constexpr std::chrono::milliseconds pause{20};
    AppSupport::create(supportFolder);
    for (bool isFirst = true;; isFirst = false) {
        if (auto lock = SupportLock::tryAcquire(supportFolder))
            return std::make_unique<LocalOperations>(std::move(*lock), supportFolder);
        if (auto client = RemoteClient::connect(supportFolder))
            return std::make_unique<RemoteOperations>(std::move(*client));
        if (isFirst)
            willWait();
        std::this_thread::sleep_for(pause);
    }
}

}  // namespace tidemark
