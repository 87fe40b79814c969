#include "polling/MissingDataAlert.h"

#include <gtest/gtest.h>

namespace tidewell {
namespace {

constexpr Date start = dateFromUnix(1'772'438'000);  // 07:53:20 UTC

struct MissingDataAlertTest : testing::Test {
    GlucoseAlertSettings settings{};
    std::optional<Date> snoozedUntil{};
    MissingDataAlert alert{};

    MissingDataAlertTest() { alert.beginRun(start, 0); }

    std::string look(double seconds)
    {
        const auto look =
            alert.look(settings, {.now = start + Seconds{seconds}, .snoozedUntil = snoozedUntil});
        if (look.post)
            return "post";
        return look.again ? fmt::format("at {}", (*look.again - start).count()) : "nothing";
    }
    void read(double newest, double now)
    {
        alert.recordReading(start + Seconds{newest}, start + Seconds{now});
    }
    /// The notification's text at that moment.
    std::string body(double seconds, const std::optional<ErrorInfo>& problem = {})
    {
        return alert.content(problem, start + Seconds{seconds}, TimeZone::utc()).body;
    }
};

TEST_F(MissingDataAlertTest, isDueWhenTheNewestReadingOrTheRunIs900SecondsOld)
{
    EXPECT_EQ(look(0), "at 900");
    EXPECT_EQ(look(899.9), "at 900");
    EXPECT_EQ(look(900), "post");
    read(-30, 5);
    EXPECT_EQ(look(6), "at 870");
    read(270, 310);
    EXPECT_EQ(look(1169), "at 1170");
    EXPECT_EQ(look(1170), "post");
    read(300, 1171);  // Newer, but no end of the gap.
    EXPECT_EQ(look(1200), "post");
    read(301, 1200.9);
    EXPECT_EQ(look(1201), "post");
    read(302, 1201);
    EXPECT_EQ(look(1201), "at 1202");
}

TEST_F(MissingDataAlertTest, tellsAGapOnceAndTheNextOneAfterAFreshReading)
{
    read(0, 10);
    const std::uint64_t first = alert.gap();
    alert.recordTold(first);
    EXPECT_EQ(look(900), "nothing");
    read(600, 1501);  // 901 s old.
    EXPECT_EQ(look(90'000), "nothing");
    alert.beginRun(start + Seconds{1600}, 3);  // The same account goes on.
    EXPECT_EQ(look(90'000), "nothing");
    read(1500, 1700);
    EXPECT_EQ(look(1701), "at 2400");
    alert.recordTold(first);  // Its post ended late.
    EXPECT_EQ(look(2400), "post");
}

TEST_F(MissingDataAlertTest, waitsWhilePreferencesQuietHoursOrASnoozeHoldItBack)
{
    read(0, 10);
    settings.alertOnMissingData = false;
    EXPECT_EQ(look(950), "nothing");
    settings = {.alertsEnabled = false};
    EXPECT_EQ(look(950), "nothing");
    settings = {.quietHoursEnabled = true, .quietHoursStartMinutes = 480, .quietHoursEndMinutes = 495};
    EXPECT_EQ(look(900), "at 960");  // 08:08:20.
    EXPECT_EQ(look(1300), "post");   // 08:15:00.
    settings.allowLowAlertsDuringQuietHours = true;
    EXPECT_EQ(look(900), "post");
    settings = {};
    snoozedUntil = start + Seconds{930};
    EXPECT_EQ(look(900), "at 960");
    EXPECT_EQ(look(930), "post");
    settings.snoozeLowAlerts = false;
    EXPECT_EQ(look(900), "post");
}

TEST_F(MissingDataAlertTest, waitsAfterASleepForAPollThatBeganAfterItOrAMinute)
{
    read(0, 10);
    const Date woken = start + Seconds{28'800};
    alert.hold(woken, 7);
    EXPECT_EQ(look(28'800), "at 28860");
    alert.pollEnded(7);  // It hung through the night.
    EXPECT_EQ(look(28'801), "at 28860");
    EXPECT_EQ(look(28'860), "post");
    alert.pollEnded(8);
    EXPECT_EQ(look(28'801), "post");
    alert.hold(woken, 8);
    EXPECT_EQ(look(20'000), "post") << "the clock was set back: that minute may be hours away";
}

TEST_F(MissingDataAlertTest, clockThatWasSetBackDoesNotMakeAnOldReadingYoung)
{
    read(7200, 7210);
    EXPECT_EQ(look(7220), "at 8100");
    EXPECT_EQ(look(300), "at 1200");  // Back by two hours: from now on it counts by itself.
    EXPECT_EQ(look(1199), "at 1200");
    EXPECT_EQ(look(1200), "post");
    EXPECT_EQ(body(1200), "No new reading has come. No reading since 07:58.");
    EXPECT_EQ(look(6900), "at 8100") << "set right again";
}

TEST_F(MissingDataAlertTest, saysWhatIsWrongAndSinceWhen)
{
    EXPECT_EQ(alert.content({}, start, TimeZone::utc()).title, "No glucose data");
    EXPECT_EQ(body(900), "No new reading has come. No reading since Tidewell started at 07:53.");
    read(-20, 5);
    EXPECT_EQ(body(880), "No new reading has come. Last reading at 07:53, 15 minutes ago.");
    EXPECT_EQ(body(8000), "No new reading has come. Last reading at 07:53, 2 hours and 13 minutes ago.");
    EXPECT_EQ(
        body(880, ErrorInfo{"No internet connection available.", "Connect to the internet.", "Hint"}),
        "No internet connection available. Connect to the internet. Last reading at 07:53, 15 minutes ago.");
    EXPECT_EQ(body(880, ErrorInfo{"Dexcom Share busy", "", "Hint"}),
              "Dexcom Share busy. Last reading at 07:53, 15 minutes ago.");
    const auto elsewhere = TimeZone::named("Asia/Kolkata");
    ASSERT_TRUE(elsewhere);
    EXPECT_TRUE(alert.content({}, start, *elsewhere).body.contains("13:23"));
}

}  // namespace
}  // namespace tidewell
