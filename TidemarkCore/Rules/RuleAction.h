#pragma once

#include "FileInfo.h"
#include "SweepAction.h"
#include "TimeZone.h"

#include <string>
#include <variant>

namespace tidemark {

/// What a rule does, as it is stored: the concrete action may still depend on the file. A plain value.
struct RuleAction {
    /// The same for every file.
    struct Fixed {
        SweepAction action;
        bool operator==(const Fixed&) const = default;
    };
    /// Into the folder `into` under a name made of the date.
    struct FileScreenshot {
        FileURL into;
        bool operator==(const FileScreenshot&) const = default;
    };
    /// Into a month folder in `into`.
    struct ArchiveByMonth {
        FileURL into;
        bool operator==(const ArchiveByMonth&) const = default;
    };
    /// Into a month folder in `into` under the note's title.
    struct FileMarkdown {
        FileURL into;
        bool operator==(const FileMarkdown&) const = default;
    };

    std::variant<Fixed, FileScreenshot, ArchiveByMonth, FileMarkdown> value;

    static RuleAction fixed(SweepAction action);
    static RuleAction fileScreenshot(FileURL into);
    static RuleAction archiveByMonth(FileURL into);
    static RuleAction fileMarkdown(FileURL into);

    bool filesMarkdown() const { return std::holds_alternative<FileMarkdown>(value); }

    /// The concrete action for one file. Never fails and never touches the disk. `now` is there for actions
    /// that depend on the moment; none does yet. Months and times are those of the current time zone.
    SweepAction resolve(const FileInfo& file, Date now) const;

    /// The same in a time zone that is known already.
    SweepAction resolve(const FileInfo& file, Date now, const TimeZone& timeZone) const;

    /// An object with one key, the case's name in lower camel case, whose value holds the case's members,
    /// `fixed`'s under "_0".
    void encode(JSONEncoder& encoder) const;
    static RuleAction decode(const JSONDecoder& decoder);

    bool operator==(const RuleAction&) const = default;
};

/// The name of the folder for the month of `date`, such as "2024-05".
std::string monthFolder(Date date, const TimeZone& timeZone);

}  // namespace tidemark
