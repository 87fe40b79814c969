#include "statusbar/StatusBarMenu.h"

#include <algorithm>

#include <fmt/format.h>

namespace tidewell {
namespace {

constexpr Date start = dateFromUnix(1'772'438'400);  // 2026-03-02T08:00:00Z

/// The state of a reading that is `age` old at `start`, and of one five minutes before.
StatusBarState showing(double mgdL, Seconds age)
{
    const auto reading = [](double value, Date date) {
        return makeReading(value, "Flat", date, Seconds{300}, GlucoseProvider::dexcom);
    };
    StatusBarState state;
    state.presentedReading = reading(mgdL, start - age);
    state.freshness = readingFreshness(start - age, start);
    state.glucoseHistory = {reading(mgdL - 4, start - age - Seconds{300}), *state.presentedReading};
    return state;
}

/// One item to a word: "[x]" disabled, "(x)" and "(•x)" choices, "--" separators, "{…}" submenus; details of
/// an alert follow it after slashes.
std::string text(const std::vector<MenuItem>& menu)
{
    std::string all;
    for (const MenuItem& item : menu) {
        std::string one = item.title;
        for (const std::string& detail : item.details)
            one += " / " + detail;
        if (item.kind == MenuItem::Kind::separator)
            one = "--";
        else if (item.kind == MenuItem::Kind::choice)
            one = fmt::format("({}{})", item.checked ? "•" : "", one);
        else if (!item.enabled)
            one = "[" + one + "]";
        if (!item.children.empty())
            one += "{" + text(item.children) + "}";
        all += (all.empty() ? "" : "|") + one;
    }
    return all;
}

std::vector<MenuItem> menu(const StatusBarState& state, Date now = start, const AppSettings& settings = {},
                           const MenuPlaces& places = {.insights = true, .settings = true})
{
    return statusBarMenu(state, settings, places, now, TimeZone::utc());
}

/// What follows the graph and the last update.
std::string rest(const StatusBarState& state, Date now = start, const MenuPlaces& places = {true, true})
{
    const std::vector<MenuItem> all = menu(state, now, {}, places);
    return text({all.begin() + 2, all.end()});
}

const std::string snooze = "Snooze alerts (30 min)|Snooze alerts (2 hours)|--|";
const std::string places = "Insights|Settings|Quit";

TEST(StatusBarMenu, hasItsSectionsInOneOrder)
{
    StatusBarState state = showing(120, Seconds{0});
    EXPECT_EQ(rest(state), snooze + places);

    state.nextRetryAt = start + Seconds{30};
    EXPECT_EQ(rest(state), snooze + places) << "a retry without a problem is nobody's business";
    state.currentError = {.title = "T", .message = "M", .remediation = "R"};
    EXPECT_EQ(rest(state), "[T / M / R / Next retry at 08:00]|--|" + snooze + places);
    EXPECT_EQ(rest(state, start + Seconds{4000}), rest(state)) << "one problem at a time";
    state.currentError->message.clear();
    state.updateAvailable = true;
    state.alertProblem = "No notification server.\nStart one.";
    EXPECT_EQ(rest(state),
              "[T / R / Next retry at 08:00]|[No notification server. / Start one.]|--|Update available|" +
                  snooze + places);

    state.historyProblem = "Saved history could not be read.";
    EXPECT_EQ(rest(state),
              "[T / R / Next retry at 08:00]|[No notification server. / Start one.]|[Saved history needs "
              "attention / Saved history could not be read.]|--|Update available|" +
                  snooze + places);

    state.historyProblem.reset();
    state.currentError->needsSignIn = true;
    state.alertProblem.reset();
    state.nextRetryAt.reset();
    EXPECT_EQ(rest(state), "[T / R]|Sign in…|--|Update available|" + snooze + places);
    state.currentError->canReconnect = true;
    EXPECT_EQ(rest(state), "[T / R]|Reconnect|Sign in…|--|Update available|" + snooze + places);

    EXPECT_EQ(rest(showing(120, Seconds{7500})),
              "[Stale glucose reading / Last glucose reading was 2 hours and 5 minutes ago. / Check your "
              "sensor connection and sensor app if readings do not resume.]|--|" +
                  snooze + places);
}

TEST(StatusBarMenu, whatLeavesLowsSilentStandsBelowTheProblemsAndAboveWhatHelps)
{
    StatusBarState state = showing(120, Seconds{0});
    const auto rest = [&state](const AppSettings& settings) {
        const std::vector<MenuItem> all = menu(state, start, settings);
        return text({all.begin() + 2, all.end()});
    };
    const std::string off = "[Alerts are off: a low is not announced.]|";
    const std::string quiet = "[Quiet hours from 22:00 to 07:00: a low is not announced then.]|";
    EXPECT_EQ(rest({.alertsEnabled = false}), off + "--|" + snooze + places);
    state.currentError = {.title = "T", .needsSignIn = true};
    state.historyProblem = "H";
    EXPECT_EQ(rest({.quietHoursEnabled = true}),
              "[T]|[Saved history needs attention / H]|" + quiet + "Sign in…|--|" + snooze + places);
    state = showing(120, Seconds{0});
    state.alertsSnoozedUntil = start + Seconds{60};
    EXPECT_EQ(
        rest({.quietHoursEnabled = true}),
        quiet + "--|[Low, high and rapid-change alerts snoozed until 08:01]|Resume alerts now|--|" + places)
        << "the snooze has one line";
    const std::vector<MenuItem> lines = menuOfLines(menu(state, start, {.alertOnLowThreshold = false}));
    EXPECT_EQ(text({lines.begin() + 4, lines.begin() + 6}),
              "[⚠ Low alerts are off: a low is not announced.]|--");
}

TEST(StatusBarMenu, beforeTheTermsAreAcceptedNothingElseHelps)
{
    StatusBarState state;
    state.currentError = {.title = "T", .needsTerms = true};
    EXPECT_EQ(text(menu(state, start, {}, {})).substr(text({menu(state)[0]}).size()),
              "|[No update yet]|[T]|Show terms…|--|" + snooze + "Quit");
    state.currentError->needsSignIn = state.currentError->canReconnect = true;
    EXPECT_EQ(rest(state), "[T]|Show terms…|--|" + snooze + places);
}

TEST(StatusBarMenu, beforeTheFirstRunStepsAreFinishedTheyAreWhatHelps)
{
    StatusBarState state;
    state.currentError = {.title = "T", .needsSignIn = true, .canReconnect = true, .needsSetup = true};
    EXPECT_EQ(rest(state), "[T]|Finish setting up…|--|" + snooze + places);
    EXPECT_FALSE(menu(state)[1].enabled) << "there is nothing to refresh";
}

TEST(StatusBarMenu, leadsToNewerTermsUntilTheyAreAcceptedWithoutAWarning)
{
    StatusBarState state = showing(120, Seconds{0});
    state.termsPending = true;
    EXPECT_EQ(rest(state), "Show terms…|--|" + snooze + places);
    EXPECT_TRUE(menu(state)[1].enabled);
    state.currentError = {.title = "T", .needsSignIn = true};
    EXPECT_EQ(rest(state), "[T]|Show terms…|Sign in…|--|" + snooze + places);
}

TEST(StatusBarMenu, saysThatChoicesAreForgotten)
{
    StatusBarState state = showing(120, Seconds{0});
    state.bookkeepingProblem = "A could not be written: B.\nC.";
    EXPECT_EQ(
        rest(state),
        "[Tidewell cannot remember what you choose / A could not be written: B. / C.]|--|" + snooze + places);
}

TEST(StatusBarMenu, leadsOnlyToPlacesThatThereAre)
{
    StatusBarState state = showing(120, Seconds{0});
    EXPECT_EQ(rest(state, start, {}), snooze + "Switch account…|Quit");
    EXPECT_EQ(rest(state, start, {.insights = true}), snooze + "Insights|Switch account…|Quit");
    EXPECT_EQ(rest(state, start, {.settings = true}), snooze + "Settings|Quit");
    state.currentError = {.title = "T", .needsSignIn = true};
    EXPECT_EQ(rest(state, start, {}), "[T]|Sign in…|--|" + snooze + "Quit");
}

TEST(StatusBarMenu, aSnoozeNamesWhatItSilencesAndIsGoneWhenItEnds)
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
        const std::vector<MenuItem> all = menu(state, start, settings);
        EXPECT_EQ(text({all.begin() + 2, all.end()}),
                  "[" + each.silenced + " snoozed until 08:14]|Resume alerts now|--|" + places);
    }
    EXPECT_TRUE(rest(state, start + Seconds{839.9}).starts_with("[Low, "));
    EXPECT_EQ(rest(state, start + Seconds{840}), snooze + places);
}

TEST(StatusBarMenu, theLastUpdateSaysWhenOrWhatGoesOnAndRefreshesUnlessThatIsOfNoUse)
{
    StatusBarState state = showing(120, Seconds{0});
    const auto lastUpdate = [&] { return text({menu(state)[1]}); };
    EXPECT_EQ(lastUpdate(), "No update yet");
    state.lastUpdateAt = start - Seconds{61};
    EXPECT_EQ(lastUpdate(), "Last update: 07:58");
    EXPECT_EQ(menu(state)[1].command, MenuCommand::refresh);
    state.activity = StatusBarActivity::authenticating;
    EXPECT_EQ(lastUpdate(), "[Signing in…]");
    state.activity.reset();
    state.currentError = {.title = "T"};
    EXPECT_EQ(lastUpdate(), "Last update: 07:58");
    state.currentError->needsSignIn = true;
    EXPECT_EQ(lastUpdate(), "[Last update: 07:58]");
    state.currentError = {.title = "T", .canReconnect = true};
    EXPECT_EQ(lastUpdate(), "[Last update: 07:58]");
}

TEST(StatusBarMenu, everyCommandDoesWhatItsTitleSays)
{
    using enum MenuCommand;
    StatusBarState state = showing(120, Seconds{0});
    state.currentError = {.title = "T", .needsSignIn = true, .canReconnect = true};
    state.updateAvailable = true;
    std::vector<MenuCommand> found;
    const auto collect = [&](const auto& self, const std::vector<MenuItem>& items) -> void {
        for (const MenuItem& item : items) {
            if (item.command != none)
                found.push_back(item.command);
            EXPECT_EQ(item.command != none || !item.children.empty(),
                      item.kind == MenuItem::Kind::action || item.kind == MenuItem::Kind::choice)
                << item.title;
            self(self, item.children);
        }
    };
    collect(collect, menuOfLines(menu(state)));
    state.currentError->needsTerms = true;
    const std::vector<MenuItem> withTerms = menu(state);
    EXPECT_EQ(std::ranges::count(withTerms, showTerms, &MenuItem::command), 1);
    EXPECT_EQ(found, (std::vector{showGraph, graphWindow1, graphWindow3, graphWindow6, graphWindow12,
                                  graphWindow24, refresh, reconnect, signIn, installUpdate, snooze30Minutes,
                                  snooze2Hours, showInsights, showSettings, quit}));
    for (const auto& [command, hours] : {std::pair{graphWindow1, 1}, {graphWindow24, 24}})
        EXPECT_EQ(graphTimeWindow(command), GraphTimeWindow{hours});
    EXPECT_FALSE(graphTimeWindow(showGraph));
}

TEST(StatusBarMenu, asLinesItHoldsNoMoreThanLinesCanSay)
{
    StatusBarState state = showing(120, Seconds{0});
    state.lastUpdateAt = start;
    state.currentError = {.title = "T", .message = "M"};
    const std::string half(27, 'x');
    state.alertProblem = "A\n" + half + " " + half + "€\n" + half + " " + half + "€y " + std::string(99, 'z');
    const std::vector<MenuItem> lines = menuOfLines(menu(state, start, {.graphTimeWindowHours = 3}));
    EXPECT_EQ(
        text(lines),
        "120 mg/dL →  +4 in 5 min  ▂▂ 3 h{Show graph|--|(1 hour)|(•3 hours)|(6 hours)|(12 hours)|(24 hours)}|"
        "[Last update: 08:00]|Refresh|--|[⚠ T]|[M]|--|[⚠ A]|[" +
            half + " " + half + "€]|[" + half + "]|[" + half + "€y]|[" + std::string(99, 'z') + "]|--|" +
            snooze + places);
    EXPECT_TRUE(lines[0].accessibleText.starts_with("Glucose graph, last 3 hours. 2 readings in this time"));
}

TEST(StatusBarMenu, theGraphsLineIsNoNewerThanItsReading)
{
    struct Case {
        StatusBarState state;
        Date now;
        std::string line;
    };
    for (const Case& each : {
             Case{StatusBarState{}, start, "No readings yet"},
             {showing(120, Seconds{0}), start + Seconds{899}, "120 mg/dL →  +4 in 5 min  ▂▂ 6 h"},
             {showing(120, Seconds{0}), start + Seconds{900}, "120 mg/dL ?  ▂▂ 6 h"},
             {showing(120, Seconds{0}), start + Seconds{3600}, "-- ?  ▂▂ 6 h"},
             {showing(120, Seconds{0}), start + Seconds{7 * 3600}, "-- ?"},
         })
        EXPECT_EQ(menu(each.state, each.now)[0].title, each.line);
    EXPECT_EQ(menu(showing(99, Seconds{0}), start, {.measurementUnit = "mmol/L"})[0].title,
              "5.5 mmol/L →  +0.2 in 5 min  ▁▂ 6 h");
}

TEST(StatusBarMenu, changesOnlyWithWhatItSays)
{
    StatusBarState state = showing(120, Seconds{0});
    state.lastUpdateAt = start;
    const std::vector<MenuItem> atStart = menu(state);
    for (double second = 1; second < 900; second += 7)
        EXPECT_EQ(menu(state, start + Seconds{second}), atStart);
    EXPECT_NE(menu(state, start + Seconds{900}), atStart);
}

}  // namespace
}  // namespace tidewell
