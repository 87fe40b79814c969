#include "config/QuietHours.h"

#include <gtest/gtest.h>

#include <limits>

#include <fmt/format.h>

namespace tidewell {
namespace {

TEST(QuietHours, areFromTheStartMinuteToBeforeTheEndMinute)
{
    /// The quiet minutes of a day that begins at local midnight, and the first and last of them.
    struct Case {
        std::int64_t from;
        std::int64_t to;
        int quiet;
        std::vector<int> quietAt;
        std::vector<int> loudAt;
    };
    constexpr std::int64_t huge = std::numeric_limits<std::int64_t>::max();
    const std::vector<Case> cases{
        {1320, 420, 540, {1320, 1410, 1439, 0, 419}, {420, 1319}},
        {420, 1320, 900, {420, 1319}, {419, 1320}},
        {0, 1, 1, {0}, {1, 1439}},
        {600, 600, 1440, {0, 600, 1439}, {}},
        {0, 0, 1440, {0, 1439}, {}},
        {0, 1440, 1440, {0, 1439}, {}},
        // Out of range: no minute reaches them, and nothing else happens.
        {-60, 420, 420, {0, 419}, {420, 1439}},
        {420, 2000, 1020, {420, 1439}, {419}},
        {2000, 420, 420, {0, 419}, {420}},
        {1320, -5, 120, {1320, 1439}, {0}},
        {huge, -huge, 0, {}, {0, 1439}},
        {-huge, huge, 1440, {0, 1439}, {}},
    };
    constexpr Date midnight = dateFromUnix(1'772'409'600);
    for (const Case& c : cases) {
        SCOPED_TRACE(fmt::format("{} to {}", c.from, c.to));
        const auto quiet = [&](double second) {
            return isQuiet(midnight + Seconds{second}, TimeZone::utc(), c.from, c.to);
        };
        int count = 0;
        for (int minute = 0; minute < 1440; ++minute) {
            EXPECT_EQ(quiet(minute * 60), quiet(minute * 60 + 59.99)) << minute;
            count += quiet(minute * 60);
        }
        EXPECT_EQ(count, c.quiet);
        for (const int minute : c.quietAt)
            EXPECT_TRUE(quiet(minute * 60)) << minute;
        for (const int minute : c.loudAt)
            EXPECT_FALSE(quiet(minute * 60)) << minute;
    }
}

TEST(QuietHours, areReadOffTheLocalClock)
{
    /// Quiet from 02:00 to 03:00 and from 22:00 to 07:00, at a moment in UTC.
    struct Case {
        std::string zone;
        std::string utc;
        bool twoToThree;
        bool night;
    };
    const std::vector<Case> cases{
        // The clock goes from 02:00 to 03:00: that hour is never.
        {"Europe/Berlin", "2026-03-29T00:59:59Z", false, true},
        {"Europe/Berlin", "2026-03-29T01:00:00Z", false, true},
        {"Europe/Berlin", "2026-03-29T04:59:59Z", false, true},
        {"Europe/Berlin", "2026-03-29T05:00:00Z", false, false},
        // It goes from 03:00 back to 02:00: that hour comes twice.
        {"Europe/Berlin", "2026-10-25T00:00:00Z", true, true},
        {"Europe/Berlin", "2026-10-25T00:59:59Z", true, true},
        {"Europe/Berlin", "2026-10-25T01:30:00Z", true, true},
        {"Europe/Berlin", "2026-10-25T02:00:00Z", false, true},
        {"Europe/Berlin", "2026-10-25T05:59:59Z", false, true},
        {"Europe/Berlin", "2026-10-25T06:00:00Z", false, false},
        {"Asia/Kathmandu", "2026-03-02T16:14:59Z", false, false},
        {"Asia/Kathmandu", "2026-03-02T16:15:00Z", false, true},
        {"America/New_York", "2026-03-03T02:59:59Z", false, false},
        {"America/New_York", "2026-03-03T03:00:00Z", false, true},
        {"Pacific/Kiritimati", "1969-12-31T12:40:00Z", true, true},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.zone + " " + c.utc);
        const TimeZone zone = TimeZone::named(c.zone).value();
        const Date at = dateFromIso(c.utc).value();
        EXPECT_EQ(isQuiet(at, zone, 120, 180), c.twoToThree);
        EXPECT_EQ(isQuiet(at, zone, 1320, 420), c.night);
    }
}

}  // namespace
}  // namespace tidewell
