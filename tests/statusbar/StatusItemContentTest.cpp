#include "statusbar/StatusItemContent.h"

namespace tidewell {
namespace {

constexpr Date start = dateFromUnix(1'772'438'400);  // 2026-03-02T08:00:00Z

/// The state as the view model makes it of a reading that is `age` old at `start`.
StatusBarState showing(double mgdL, Seconds age, std::string trend = "Flat")
{
    const GlucoseReading reading =
        makeReading(mgdL, std::move(trend), start - age, Seconds{300}, GlucoseProvider::dexcom);
    StatusBarState state;
    state.iconState = StatusBarIconState::value;
    state.presentedReading = reading;
    state.freshness = readingFreshness(reading.date, start);
    state.statusTitle = statusTitle(reading, *state.freshness, AppSettings{});
    state.accessibilityValue = spokenGlucose(reading, start, AppSettings{});
    return state;
}

StatusItemContent content(const StatusBarState& state, Date now = start, AppSettings settings = {})
{
    return statusItemContent(state, settings, now, TimeZone::utc());
}

TEST(StatusItemContent, showsValueFillAndTooltipByFreshness)
{
    using enum StatusButtonLook;
    struct Case {
        StatusBarState state;
        std::string value, arrow, label;
        StatusButtonLook look;
        std::string tooltipTitle, tooltipText;
    };
    const std::vector<Case> cases{
        {showing(120, Seconds{30}), "120", "→", "120 →", plain, "120 mg/dL →",
         "Measured at 07:59, less than 5 minutes ago, steady"},
        {showing(72, Seconds{300}, "SingleDown"), "72", "↓", "72 ↓", redFill, "72 mg/dL ↓",
         "Measured at 07:55, 5 minutes ago, falling"},
        {showing(270, Seconds{0}, "DoubleUp"), "270", "↑↑", "270 ↑↑", orangeFill, "270 mg/dL ↑↑",
         "Measured at 08:00, less than 5 minutes ago, rising quickly"},
        {showing(60, Seconds{900}), "60 ?", "", "60 ?", plain, "60 mg/dL ?",
         "Last glucose reading was 15 minutes ago.\n"
         "Check your sensor connection and sensor app if readings do not resume."},
        {showing(60, Seconds{3600}), "-- ?", "", "-- ?", plain, "-- ?",
         "Last glucose reading was 1 hour ago.\n"
         "Check your sensor connection and sensor app if readings do not resume."},
        {StatusBarState{}, "", "", "", plain, "Tidewell", "Waiting for the first reading."},
    };
    for (const Case& c : cases) {
        SCOPED_TRACE(c.label);
        const StatusItemContent seen = content(c.state);
        EXPECT_EQ(seen.value, c.value);
        EXPECT_EQ(seen.arrow, c.arrow);
        EXPECT_EQ(seen.label, c.label);
        EXPECT_EQ(seen.look, c.look);
        EXPECT_EQ(seen.tooltipTitle, c.tooltipTitle);
        EXPECT_EQ(seen.tooltipText, c.tooltipText);
        EXPECT_EQ(seen.accessibilityLabel, "Tidewell");
        EXPECT_EQ(seen.accessibilityValue, c.state.accessibilityValue);
        EXPECT_EQ(seen.iconState, c.state.iconState);
    }
    EXPECT_EQ(content(showing(99, Seconds{0}), start, {.measurementUnit = "mmol/L"}).tooltipTitle,
              "5.5 mmol/L →");
}

TEST(StatusItemContent, showsTheAgeOfTheMomentWhenTheStateIsLate)
{
    const StatusItemContent stale = content(showing(60, Seconds{0}), start + Seconds{900});
    EXPECT_EQ(stale.label, "60 ?");
    EXPECT_EQ(stale.look, StatusButtonLook::plain);
    EXPECT_EQ(stale.indicator, StatusIndicator::warning);
    EXPECT_EQ(stale.accessibilityValue,
              "Stale glucose reading. Last known value 60, received 15 minutes ago.");
    EXPECT_EQ(content(showing(60, Seconds{900}), start + Seconds{2700}).label, "-- ?");
    // And the other way round: a clock that was set back does not undo what the state knows.
    EXPECT_EQ(content(showing(60, Seconds{3600}), start - Seconds{86'400}).label, "-- ?");
}

TEST(StatusItemContent, theTooltipSaysWhatGoesOnAndWhatIsWrong)
{
    const std::string age = "Measured at 08:00, less than 5 minutes ago, steady";
    StatusBarState state = showing(120, Seconds{0});
    state.activity = StatusBarActivity::refreshing;
    EXPECT_EQ(content(state).tooltipText, age + "\nRefreshing glucose…");
    state.activity.reset();
    state.nextRetryAt = start + Seconds{30};
    EXPECT_EQ(content(state).tooltipText, age) << "a retry without a problem is nobody's business";
    state.currentError = {.title = "No internet connection available.",
                          .message = "Connect to the internet to retrieve glucose data."};
    state.alertProblem = "There is no notification server.\nStart one.";
    EXPECT_EQ(content(state).tooltipText,
              age +
                  "\nNo internet connection available.\nConnect to the internet to retrieve glucose data.\n"
                  "Next retry at 08:00\nThere is no notification server.\nStart one.");
}

TEST(StatusItemContent, saysThatAlertsAreSnoozedWhileThatSilencesAny)
{
    StatusBarState state = showing(120, Seconds{0});
    state.alertsSnoozedUntil = start + Seconds{1800};
    EXPECT_TRUE(content(state).alertsSnoozed);
    EXPECT_TRUE(
        content(state).tooltipText.ends_with("\nLow, high and rapid-change alerts snoozed until 08:30"));
    EXPECT_FALSE(content(state, start + Seconds{1800}).alertsSnoozed);
    EXPECT_FALSE(content(state, start + Seconds{1800}).tooltipText.contains("snoozed"));
    EXPECT_FALSE(content(state, start, {.alertsEnabled = false}).alertsSnoozed);
    EXPECT_FALSE(
        content(state, start,
                {.snoozeLowAlerts = false, .snoozeHighAlerts = false, .snoozeRapidChangeAlerts = false})
            .alertsSnoozed);
}

TEST(StatusItemContent, theBadgeWarnsBeforeItTellsOfAnUpdate)
{
    using enum StatusIndicator;
    const StatusBarState good = showing(120, Seconds{0});
    EXPECT_EQ(content(good).indicator, none);
    for (const bool update : {false, true}) {
        StatusBarState state = good;
        state.updateAvailable = update;
        EXPECT_EQ(content(state).indicator, update ? updateAvailable : none);
        EXPECT_EQ(content(state, start + Seconds{900}).indicator, warning);
        state.currentError = {.title = "T"};
        EXPECT_EQ(content(std::exchange(state, good)).indicator, warning);
        state.alertProblem = "There is no notification server.";
        EXPECT_EQ(content(std::exchange(state, good)).indicator, warning);
        state.historyProblem = "The disk is full.";
        EXPECT_EQ(content(std::exchange(state, good)).indicator, warning);
        state.bookkeepingProblem = "The disk is full.";
        EXPECT_EQ(content(state).indicator, warning);
        EXPECT_TRUE(content(state).tooltipText.contains("cannot remember")) << content(state).tooltipText;
    }
}

}  // namespace
}  // namespace tidewell
