#pragma once

#include "UpdateInfo.h"

#include <cstdint>
#include <exception>
#include <functional>
#include <optional>

namespace tidemark {

/// Puts a newer version in place of the running one. For the main thread.
class UpdateInstaller {
public:
    /// How many bytes of the download have arrived, and of how many, as far as the server says.
    using Progress = std::function<void(std::int64_t received, std::optional<std::int64_t> total)>;

    /// Null: the swap waits for this process to end.
    using Done = std::function<void(std::exception_ptr failure)>;

    virtual ~UpdateInstaller() = default;

    /// Returns at once; `done` is called once, from the event loop. Throws nothing.
    virtual void install(const UpdateInfo& update, Progress progress, Done done) = 0;
};

}  // namespace tidemark
