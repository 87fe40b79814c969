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

/// The menu as one line: "[x]" disabled, "--" separator.
std::string menuText(const StatusBarState& state, Date now = start)
{
    std::string text;
    for (const MenuItem& item : content(state, now).menu) {
        const bool separator = item.kind == MenuItem::Kind::separator;
        text += separator ? "--" : item.enabled ? item.title : "[" + item.title + "]";
        text += "|";
    }
    return text;
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
    EXPECT_TRUE(stale.warningBadge);
    EXPECT_EQ(stale.accessibilityValue,
              "Stale glucose reading. Last known value 60, received 15 minutes ago.");
    EXPECT_EQ(content(showing(60, Seconds{900}), start + Seconds{2700}).label, "-- ?");
    // And the other way round: a clock that was set back does not undo what the state knows.
    EXPECT_EQ(content(showing(60, Seconds{3600}), start - Seconds{86'400}).label, "-- ?");
}

TEST(StatusItemContent, putsProblemRetryAndSignInIntoTheMenu)
{
    const std::string snooze = "Snooze alerts (30 min)|Snooze alerts (2 hours)|--|";
    const std::string commands = snooze + "Refresh|Switch account…|--|Quit|";
    StatusBarState state = showing(120, Seconds{0});
    EXPECT_EQ(menuText(state), commands);

    state.activity = StatusBarActivity::refreshing;
    EXPECT_EQ(menuText(state), snooze + "[Refresh]|Switch account…|--|Quit|");
    EXPECT_EQ(content(state).tooltipText,
              "Measured at 08:00, less than 5 minutes ago, steady\nRefreshing glucose…");
    state.activity.reset();

    state.nextRetryAt = start + Seconds{30};
    EXPECT_EQ(menuText(state), commands) << "a retry without a problem is nobody's business";
    state.currentError = {.title = "No internet connection available.",
                          .message = "Connect to the internet to retrieve glucose data."};
    const std::string problem =
        "[No internet connection available.]|[Connect to the internet to retrieve "
        "glucose data.]|[Next retry at 08:00]|--|";
    EXPECT_EQ(menuText(state), problem + commands);
    EXPECT_EQ(menuText(state, start + Seconds{4000}), problem + commands) << "one problem at a time";
    EXPECT_EQ(content(state).tooltipText,
              "Measured at 08:00, less than 5 minutes ago, steady\nNo internet connection available.\n"
              "Connect to the internet to retrieve glucose data.\n"
              "Next retry at 08:00");
    EXPECT_TRUE(content(state).warningBadge);

    state.currentError = {
        .title = "Sign in required", .message = "M", .remediation = "R", .needsSignIn = true};
    state.nextRetryAt.reset();
    EXPECT_EQ(menuText(state), "[Sign in required]|[M]|[R]|--|Sign in…|--|" + snooze + "[Refresh]|--|Quit|");

    state.currentError->canReconnect = true;
    EXPECT_EQ(menuText(state),
              "[Sign in required]|[M]|[R]|--|Reconnect|Sign in…|--|" + snooze + "[Refresh]|--|Quit|");
    EXPECT_EQ(content(state).menu[4].command, MenuCommand::reconnect);

    EXPECT_EQ(
        menuText(showing(120, Seconds{7500})),
        "[Stale glucose reading]|[Last glucose reading was 2 hours and 5 minutes ago.]|[Check your sensor "
        "connection and sensor app if readings do not resume.]|--|" +
            commands);
    const std::vector<MenuItem> menu = content(showing(120, Seconds{0})).menu;
    EXPECT_EQ(menu[0].command, MenuCommand::snooze30Minutes);
    EXPECT_EQ(menu[1].command, MenuCommand::snooze2Hours);
    EXPECT_EQ(menu[3].command, MenuCommand::refresh);
    EXPECT_EQ(menu[4].command, MenuCommand::signIn);
    EXPECT_EQ(menu[6].command, MenuCommand::quit);
}

TEST(StatusItemContent, aSnoozeNamesWhatItSilencesAndIsGoneWhenItEnds)
{
    StatusBarState state = showing(120, Seconds{0});
    state.alertsSnoozedUntil = start + Seconds{840};
    struct Case {
        bool low, high, rapid;
        std::string silenced;
    };
    const std::vector<Case> cases{
        {true, true, true, "Low, high and rapid-change alerts"},
        {true, false, true, "Low and rapid-change alerts"},
        {false, true, false, "High alerts"},
        {false, false, true, "Rapid-change alerts"},
        {false, false, false, "No alerts (no category is selected)"},
    };
    for (const Case& each : cases) {
        const AppSettings settings{.snoozeLowAlerts = each.low,
                                   .snoozeHighAlerts = each.high,
                                   .snoozeRapidChangeAlerts = each.rapid};
        const auto menu = content(state, start, settings).menu;
        EXPECT_EQ(menu[0].title, each.silenced + " snoozed until 08:14");
        EXPECT_FALSE(menu[0].enabled);
        EXPECT_EQ(menu[1].title, "Resume alerts now");
        EXPECT_EQ(menu[1].command, MenuCommand::resumeAlerts);
        EXPECT_EQ(menu[2].kind, MenuItem::Kind::separator);
    }
    EXPECT_TRUE(menuText(state, start + Seconds{839.9}).starts_with("[Low, "));
    EXPECT_TRUE(menuText(state, start + Seconds{840}).starts_with("Snooze alerts (30 min)|Snooze"));
}

TEST(StatusItemContent, whatKeepsAlertsFromBeingNoticedStandsBelowTheProblem)
{
    StatusBarState state = showing(120, Seconds{0});
    state.alertProblem = "There is no notification server.\nStart one.";
    EXPECT_TRUE(menuText(state).starts_with("[There is no notification server.]|[Start one.]|--|Snooze"));
    EXPECT_TRUE(content(state).tooltipText.ends_with("\nThere is no notification server.\nStart one."));
    EXPECT_FALSE(content(state).warningBadge) << "the badge speaks of the value";
    state.currentError = {.title = "T", .message = "M"};
    EXPECT_TRUE(menuText(state).starts_with("[T]|[M]|[There is no notification server.]|[Start one.]|--|"));
}

}  // namespace
}  // namespace tidewell
