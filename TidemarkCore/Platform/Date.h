#pragma once

#include <chrono>
#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

namespace tidemark {

/// A duration in seconds. Day counts are multiples of `secondsPerDay`; no calendar is involved.
using Seconds = std::chrono::duration<double>;

/// A moment on the wall clock, in seconds since 1970 UTC.
using Date = std::chrono::time_point<std::chrono::system_clock, Seconds>;

inline constexpr double secondsPerDay = 86'400;

/// The earliest date there is, 1 January of the year 1 UTC: older than any age a rule can ask for.
inline constexpr Date distantPast{Seconds{-62'135'596'800.0}};

/// The date of a `timespec`-like pair, as the kernel reports file times.
Date dateFromUnixTime(std::int64_t seconds, std::uint32_t nanoseconds);

/// ISO 8601 (RFC 3339) in UTC to whole seconds, such as "2025-03-14T09:26:53Z". Fractions of a second
/// are dropped towards the past; dates outside the years 0000 to 9999 are brought to that range's ends.
std::string formatISO8601(Date date);

/// Reads what `formatISO8601` writes, with any zone ("Z", "+02:00", "+0200"). Nothing for any other
/// text: no fractions, no missing zone, no day that the calendar does not have.
std::optional<Date> parseISO8601(std::string_view text);

}  // namespace tidemark
