#pragma once

#include "Date.h"

#include <QTimeZone>

#include <cstdint>
#include <optional>
#include <string_view>

namespace tidemark {

/// A date as a calendar and a clock on the wall show it (proleptic Gregorian calendar, 24 hours).
struct LocalTime {
    std::int64_t year = 1970;
    unsigned month = 1;
    unsigned day = 1;
    unsigned hour = 0;
    unsigned minute = 0;
    unsigned second = 0;

    bool operator==(const LocalTime&) const = default;
};

/// A time zone with its daylight-saving rules. A cheap value; safe to read from several threads.
class TimeZone {
public:
    /// The process's time zone as it is now: TZ if set, else the system's. UTC when TZ names no zone.
    static TimeZone current();

    /// The zone with an IANA name ("Europe/Berlin"); nothing if the system does not know it.
    static std::optional<TimeZone> named(std::string_view name);

    /// Dates before the year 1 or after 9999 are shown as that range's ends.
    LocalTime localTime(Date date) const;

    /// The first moment of a day: midnight, or where the clocks skip midnight the moment after the gap.
    /// Nothing if the calendar has no such day.
    std::optional<Date> startOfDay(int year, int month, int day) const;

private:
    explicit TimeZone(const QTimeZone& zone);

    QTimeZone m_zone;
};

}  // namespace tidemark
