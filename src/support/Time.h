#pragma once

#include <chrono>

namespace tidewell {

using namespace std::chrono_literals;

/// A duration in seconds, as every part of the system counts it.
using Seconds = std::chrono::duration<double>;

/// A moment: seconds since 1970-01-01 00:00 UTC as double, so microseconds survive until the year 2255.
using Date = std::chrono::sys_time<Seconds>;

/// The moment `seconds` after 1970-01-01 00:00 UTC.
[[nodiscard]] constexpr Date dateFromUnix(double seconds) { return Date{Seconds{seconds}}; }

/// Seconds since 1970-01-01 00:00 UTC.
[[nodiscard]] constexpr double unixSeconds(Date date) { return date.time_since_epoch().count(); }

}  // namespace tidewell
