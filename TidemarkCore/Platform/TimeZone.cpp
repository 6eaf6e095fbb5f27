#include "TimeZone.h"

#include <QByteArray>
#include <QDateTime>

#include <algorithm>
#include <cmath>

namespace tidemark {

namespace {

using std::chrono::days;
using std::chrono::sys_days;
using std::chrono::year;
using std::chrono::year_month_day;

constexpr std::int64_t secondsAt(sys_days day)
{
    return std::chrono::sys_seconds{day}.time_since_epoch().count();
}

constexpr std::int64_t earliestShown = secondsAt(year{1} / 1 / 1);
constexpr std::int64_t latestShown = secondsAt(sys_days{year{9999} / 12 / 31} + days{1}) - 1;

/// Longer than any zone is away from UTC, even together with a jump across the date line.
constexpr std::int64_t longestOffset = std::int64_t{48} * 3600;

/// Before this no zone had rules; and asked for the first centuries, Qt works out those of a POSIX rule in TZ
/// for ever.
constexpr std::int64_t earliestOffset = secondsAt(year{1700} / 1 / 1);

std::int64_t offsetFromUTC(const QTimeZone& zone, std::int64_t moment)
{
    moment = std::max(moment, earliestOffset);
    return zone.offsetFromUtc(QDateTime::fromMSecsSinceEpoch(moment * 1000, Qt::UTC));
}

LocalTime calendarTime(std::int64_t localSeconds)
{
    const std::chrono::sys_seconds moment{std::chrono::seconds{localSeconds}};
    const sys_days day = std::chrono::floor<days>(moment);
    const year_month_day calendar{day};
    const std::chrono::hh_mm_ss clock{moment - day};
    return {static_cast<int>(calendar.year()), static_cast<unsigned>(calendar.month()),
        static_cast<unsigned>(calendar.day()), static_cast<unsigned>(clock.hours().count()),
        static_cast<unsigned>(clock.minutes().count()),
        static_cast<unsigned>(clock.seconds().count())};
}

/// The first moment between the two at which the zone's clocks show `local` or later. At `before` they
/// show less, at `after` they do not.
std::int64_t firstMomentShowing(
    std::int64_t local, std::int64_t before, std::int64_t after, const QTimeZone& zone)
{
    while (after - before > 1) {
        const std::int64_t middle = before + (after - before) / 2;
        if (middle + offsetFromUTC(zone, middle) < local)
            before = middle;
        else
            after = middle;
    }
    return after;
}

QTimeZone systemZone()
{
    constexpr char zoneFiles[] = "/usr/share/zoneinfo/";
    QByteArray name = qgetenv("TZ");
    if (name.startsWith(':'))
        name.remove(0, 1);
    // Qt takes names only, the C library also takes the file that holds the zone.
    if (name.startsWith(zoneFiles))
        return QTimeZone{name.mid(static_cast<qsizetype>(sizeof(zoneFiles)) - 1)};
    if (qEnvironmentVariableIsSet("TZ") && name.isEmpty())
        return QTimeZone::utc();
    return QTimeZone::systemTimeZone();
}

}  // namespace

TimeZone::TimeZone(const QTimeZone& zone)
    : m_zone(zone)
{
}

TimeZone TimeZone::current()
{
    const QTimeZone zone = systemZone();
    return TimeZone{zone.isValid() ? zone : QTimeZone::utc()};
}

std::optional<TimeZone> TimeZone::named(std::string_view name)
{
    const QTimeZone zone{QByteArray{name.data(), static_cast<qsizetype>(name.size())}};
    // Qt takes no name at all for the system's zone.
    if (name.empty() || !zone.isValid())
        return std::nullopt;
    return TimeZone{zone};
}

LocalTime TimeZone::localTime(Date date) const
{
    // Clamped before the cast, which is undefined for what no integer holds.
    const double seconds = std::clamp(std::floor(date.time_since_epoch().count()),
        static_cast<double>(earliestShown), static_cast<double>(latestShown));
    const auto moment = static_cast<std::int64_t>(seconds);
    return calendarTime(
        std::clamp(moment + offsetFromUTC(m_zone, moment), earliestShown, latestShown));
}

std::optional<Date> TimeZone::startOfDay(int years, int month, int day) const
{
    // Beyond these the calendar's types would wrap around.
    if (month < 1 || month > 12 || day < 1 || day > 31)
        return std::nullopt;
    const year_month_day calendar{year{years}, std::chrono::month{static_cast<unsigned>(month)},
        std::chrono::day{static_cast<unsigned>(day)}};
    if (!calendar.ok() || years != static_cast<int>(calendar.year()))
        return std::nullopt;

    const std::int64_t midnight = secondsAt(calendar);
    const std::int64_t before = midnight - longestOffset;
    const std::int64_t after = midnight + longestOffset;
    const std::int64_t offset = offsetFromUTC(m_zone, before);
    // Away from the days on which the clocks change, the same offset holds all around.
    if (offset == offsetFromUTC(m_zone, after))
        return Date{Seconds{static_cast<double>(midnight - offset)}};
    return Date{Seconds{static_cast<double>(firstMomentShowing(midnight, before, after, m_zone))}};
}

}  // namespace tidemark
