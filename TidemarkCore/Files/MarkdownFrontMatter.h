#pragma once

#include "Date.h"

#include <optional>
#include <string>

namespace tidemark {

/// What a Markdown note's metadata block says of it. A plain value.
struct MarkdownFrontMatter {
    std::optional<std::string> title;
    std::optional<std::string> date;  ///< As written, but trimmed and without quotes.

    bool isEmpty() const { return !title && !date; }

    /// The first seven characters of `date` where they are a year and a month, such as "2024-05". The
    /// month's number is not checked.
    std::optional<std::string> month() const;

    /// The local midnight of the day with which `date` begins ("2024-05-03"); nothing if it begins with
    /// no day of the calendar. Reads the current time zone.
    std::optional<Date> createdDate() const;

    bool operator==(const MarkdownFrontMatter&) const = default;
};

}  // namespace tidemark
