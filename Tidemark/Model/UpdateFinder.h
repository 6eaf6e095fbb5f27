#pragma once

#include "UpdateInfo.h"

#include <functional>
#include <memory>
#include <optional>
#include <string>

namespace tidemark {

/// Looks for a newer version. For the main thread.
class UpdateFinder {
public:
    /// A search that is under way. Destroying it ends it, and nobody is told then.
    class Search {
    public:
        virtual ~Search() = default;
    };

    /// Nothing where there is none newer, and where none could be learned of. May destroy the search.
    using Found = std::function<void(std::optional<UpdateInfo> update)>;

    virtual ~UpdateFinder() = default;

    /// Returns at once; `found` is called once, from the event loop. Throws nothing.
    [[nodiscard]] virtual std::unique_ptr<Search> find(
        const std::string& currentVersion, Found found) = 0;
};

}  // namespace tidemark
