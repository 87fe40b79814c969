#include "statusbar/SilentLows.h"

#include <limits>

#include "config/QuietHours.h"

namespace tidewell {
namespace {

using enum SilentLowCause;

constexpr Date start = dateFromUnix(1'772'438'400);  // 2026-03-02T08:00:00Z

std::vector<SilentLowWarning> warnings(const AppSettings& settings, std::optional<Date> snoozedUntil = {},
                                       Date now = start, TimeZone zone = TimeZone::utc())
{
    return silentLowWarnings(settings, snoozedUntil, now, zone);
}

TEST(SilentLows, eachSettingThatSilencesLowsIsNamedUnlessAnotherMakesItMeaningless)
{
    const Date snooze = start + Seconds{1800};
    const AppSettings night{.quietHoursEnabled = true};
    const SilentLowWarning nightly{quietHours,
                                   "Quiet hours from 22:00 to 07:00: a low is not announced then.", false};
    const SilentLowWarning snoozed{SilentLowCause::snooze, "Low alerts are snoozed until 08:30.", true};
    struct Case {
        AppSettings settings;
        std::optional<Date> snoozedUntil;
        std::vector<SilentLowWarning> expected;
    };
    const std::vector<Case> cases{
        {{}, {}, {}},
        {{.alertOnHighThreshold = false, .alertOnRapidFall = false, .alertOnMissingData = false}, {}, {}},
        {night, {}, {nightly}},
        {night, snooze, {nightly, snoozed}},
        {{.quietHoursEnabled = true, .allowLowAlertsDuringQuietHours = true}, snooze, {snoozed}},
        {{.snoozeLowAlerts = false}, snooze, {}},
        {{}, start, {}},
        {{.alertOnLowThreshold = false, .quietHoursEnabled = true},
         snooze,
         {{lowAlertsOff, "Low alerts are off: a low is not announced."}}},
        {{.alertsEnabled = false, .alertOnLowThreshold = false, .quietHoursEnabled = true},
         snooze,
         {{alertsOff, "Alerts are off: a low is not announced."}}},
    };
    for (const Case& c : cases)
        EXPECT_EQ(warnings(c.settings, c.snoozedUntil), c.expected);
}

TEST(SilentLows, timesAreOfTheZone)
{
    const TimeZone kathmandu = TimeZone::named("Asia/Kathmandu").value();  // 13:45 there.
    const AppSettings settings{
        .quietHoursEnabled = true, .quietHoursStartMinutes = 825, .quietHoursEndMinutes = 826};
    const auto found = warnings(settings, start + Seconds{60}, start, kathmandu);
    ASSERT_EQ(found.size(), 2U);
    EXPECT_TRUE(found[0].isInForce);
    EXPECT_EQ(found[1].text, "Low alerts are snoozed until 13:46.");
}

/// The quiet minutes that a text speaks of.
std::vector<bool> minutesOf(const std::string& text)
{
    if (text.empty())
        return std::vector<bool>(1440, false);
    if (text == "Quiet hours last all day: a low is not announced.")
        return std::vector<bool>(1440, true);
    int h1 = -1, m1 = -1, h2 = -1, m2 = -1;
    EXPECT_EQ(std::sscanf(text.c_str(), "Quiet hours from %2d:%2d to %2d:%2d: a low is not announced then.",
                          &h1, &m1, &h2, &m2),
              4)
        << text;
    std::vector<bool> minutes(1440, false);
    for (int minute = h1 * 60 + m1; minute != h2 * 60 + m2; minute = (minute + 1) % 1440)
        minutes[static_cast<std::size_t>(minute)] = true;
    return minutes;
}

TEST(SilentLows, quietHoursAreToldAsAlertsKeepThem)
{
    constexpr auto least = std::numeric_limits<std::int64_t>::min();
    constexpr auto most = std::numeric_limits<std::int64_t>::max();
    constexpr std::array<std::int64_t, 13> bounds{least, -61,  -1,   0,    1,    420, 600,
                                                  1320,  1439, 1440, 1441, 2000, most};
    const Date midnight = start - Seconds{8 * 3600};
    for (const std::int64_t from : bounds) {
        for (const std::int64_t to : bounds) {
            SCOPED_TRACE(fmt::format("{} to {}", from, to));
            const AppSettings settings{
                .quietHoursEnabled = true, .quietHoursStartMinutes = from, .quietHoursEndMinutes = to};
            const auto found = warnings(settings);
            const std::vector<bool> told = minutesOf(found.empty() ? "" : found.front().text);
            std::vector<bool> kept(1440);
            for (std::size_t minute = 0; minute < kept.size(); ++minute) {
                const Date at = midnight + Seconds{60.0 * static_cast<double>(minute)};
                kept[minute] = isQuiet(at, TimeZone::utc(), from, to);
                const auto then = warnings(settings, {}, at);
                EXPECT_EQ(!then.empty() && then.front().isInForce, kept[minute]) << minute;
            }
            EXPECT_EQ(told, kept);
        }
    }
}

}  // namespace
}  // namespace tidewell
