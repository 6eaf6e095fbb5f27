#pragma once

#include "HeldFolder.h"

#include <functional>
#include <map>
#include <set>
#include <string>
#include <string_view>

namespace tidemark {

/// The names in folders that files were wanted at and that were found taken.
///
/// The thousandth file of one name asks the disk for one number then, not for a thousand. What another
/// program removes meanwhile still counts as taken; what this one moves away has to be told. For one thread.
class TakenNames {
public:
    /// Whether `name` was seen in the folder, or else what `look` says; if so, it is known from then on.
    bool isTaken(
        const HeldFolder& folder, std::string_view name, const std::function<bool()>& look);

    /// The entry is about to go away, and no name is looked for before: its own may be among those.
    void forget(const HeldEntry& entry);

private:
    struct Order {
        bool operator()(const HeldFolder::Identity& one, const HeldFolder::Identity& other) const
        {
            return one.device != other.device ? one.device < other.device : one.inode < other.inode;
        }
    };

    std::map<HeldFolder::Identity, std::set<std::string, std::less<>>, Order> m_names;
};

}  // namespace tidemark
