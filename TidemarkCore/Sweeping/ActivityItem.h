#pragma once

#include "Date.h"
#include "JournalEntry.h"

#include <string>
#include <string_view>

namespace tidemark {

/// One row of the list of what was done lately. A plain value.
struct ActivityItem {
    JournalEntry::Op op = JournalEntry::Op::move;
    std::string fromPath;
    std::string toPath;
    Date date;

    static ActivityItem of(const JournalEntry& entry);

    /// The row's identity in lists: the path before, "|", and the seconds since 1970 as the shortest
    /// decimal fraction that reads back equal, such as "1741944413.0".
    std::string id() const;

    /// The name before.
    std::string_view fileName() const;

    /// Such as "Filed report.pdf". It tells the old name, by which the user knows the file.
    std::string summary() const;

    bool operator==(const ActivityItem&) const = default;
};

}  // namespace tidemark
