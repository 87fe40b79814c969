#pragma once

#include <gtest/gtest.h>

#include <cmath>
#include <cstdint>
#include <string_view>
#include <vector>

#include "insights/InsightsCalculation.h"

// What tests of Insights share.

namespace tidewell {

inline TimeZone zoneNamed(std::string_view name) { return TimeZone::named(name).value(); }
inline Date utc(std::string_view text) { return dateFromIso(text).value(); }

inline InsightsReading sample(double seconds, double mgdL, double sampleDuration = 300, double fetched = 0)
{
    return {mgdL, dateFromUnix(seconds), Seconds{sampleDuration}, dateFromUnix(fetched)};
}

/// One value from `start` up to before `end`, every `step` seconds.
inline void addSteady(std::vector<InsightsReading>& readings, Date start, Date end, double mgdL = 100,
                      double step = 300)
{
    for (Date date = start; date < end; date += Seconds{step})
        readings.push_back(sample(unixSeconds(date), mgdL, step));
}

/// As figures of different programs agree: to a billionth.
inline void expectClose(double actual, double expected, std::string_view what)
{
    EXPECT_NEAR(actual, expected, 1e-9 * std::max(1.0, std::abs(expected))) << what;
}

}  // namespace tidewell
