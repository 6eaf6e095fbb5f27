#pragma once

#include "Date.h"

#include <cmath>
#include <limits>

namespace tidemark {

/// Later than every moment.
inline constexpr Date never{Seconds{std::numeric_limits<double>::infinity()}};

/// When something of the date `start` reaches the age `age`: a moment at which `hasReached` says yes, or
/// `never`. `hasReached` is a test of the difference between a moment and `start` against `age`, which says
/// no at present and, after its first yes, always yes; so the answer lies after the present.
template <typename Test>
Date firstMoment(Date start, Seconds age, const Test& hasReached)
{
    const Date sum = start + age;
    if (!std::isfinite(sum.time_since_epoch().count()))
        return never;  // an endless age, or one of a date that is none
    if (hasReached(sum))
        return sum;
    // The sum was rounded down. The next number is greater than the exact sum, so its distance from `start`
    // is greater than `age` and cannot be rounded to less.
    return Date{
        Seconds{std::nextafter(sum.time_since_epoch().count(), never.time_since_epoch().count())}};
}

}  // namespace tidemark
