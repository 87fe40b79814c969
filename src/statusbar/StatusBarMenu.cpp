#include "statusbar/StatusBarMenu.h"

#include <algorithm>
#include <array>
#include <ranges>
#include <utility>

#include <fmt/format.h>

#include "statusbar/GlucoseSparkline.h"
#include "statusbar/SeenReading.h"
#include "statusbar/SilentLows.h"

namespace tidewell {

namespace {

struct WindowChoice {
    MenuCommand command;
    GraphTimeWindow window;
    std::string_view title;
};

constexpr std::array<WindowChoice, 5> windowChoices{{
    {MenuCommand::graphWindow1, GraphTimeWindow::hours1, "1 hour"},
    {MenuCommand::graphWindow3, GraphTimeWindow::hours3, "3 hours"},
    {MenuCommand::graphWindow6, GraphTimeWindow::hours6, "6 hours"},
    {MenuCommand::graphWindow12, GraphTimeWindow::hours12, "12 hours"},
    {MenuCommand::graphWindow24, GraphTimeWindow::hours24, "24 hours"},
}};

MenuItem textItem(std::string title)
{
    return {.kind = MenuItem::Kind::text, .title = std::move(title), .enabled = false};
}

std::vector<std::string> linesOf(std::string_view text)
{
    std::vector<std::string> lines;
    for (const auto line : std::views::split(text, '\n'))
        lines.emplace_back(std::string_view{line});
    return lines;
}

MenuItem separator() { return {.kind = MenuItem::Kind::separator, .enabled = false}; }

/// Adds item after item, from the top of the menu to its end.
class Builder {
public:
    Builder(const StatusBarState& state, const AppSettings& settings, Date now, TimeZone zone)
        : state_{state},
          settings_{settings},
          now_{now},
          zone_{zone},
          seen_{seenReading(state, now)},
          needsTerms_{state.currentError && state.currentError->needsTerms},
          needsSetup_{state.currentError && state.currentError->needsSetup},
          canReconnect_{!needsTerms_ && !needsSetup_ && state.currentError &&
                        state.currentError->canReconnect},
          needsSignIn_{!needsTerms_ && !needsSetup_ && state.currentError && state.currentError->needsSignIn},
          waitsForPerson_{needsTerms_ || needsSetup_ || canReconnect_ || needsSignIn_}
    {
    }

    std::vector<MenuItem> build(const MenuPlaces& places)
    {
        addGraph();
        addLastUpdate();
        addProblems();
        if (state_.updateAvailable)
            items_.push_back({.title = "Update available", .command = MenuCommand::installUpdate});
        addSnooze();
        addPlaces(places);
        return std::move(items_);
    }

private:
    void addGraph()
    {
        const GlucoseGraphContent graph{.glucoseHistory = state_.glucoseHistory,
                                        .settings = settings_,
                                        .timeWindow = graphTimeWindow(settings_.graphTimeWindowHours),
                                        .now = now_,
                                        .zone = zone_};
        MenuItem item{.kind = MenuItem::Kind::graph,
                      .title = graphLine(graph),
                      .accessibleText = graphAccessibilityLabel(graph)};
        for (const auto& [command, window, title] : windowChoices)
            item.children.push_back({.kind = MenuItem::Kind::choice,
                                     .title = std::string{title},
                                     .command = command,
                                     .checked = window == graph.timeWindow});
        items_.push_back(std::move(item));
    }

    /// "120 mg/dL →  +4 in 5 min  ▂▃▄▄ 6 h", as much of it as there is.
    [[nodiscard]] std::string graphLine(const GlucoseGraphContent& graph) const
    {
        std::vector<std::string> parts;
        if (seen_)
            parts.push_back(readingTitle(*seen_, settings_));
        if (seen_ && seen_->freshness == ReadingFreshness::current)
            parts.push_back(glucoseChangeText(graph));
        if (const std::string sparkline = glucoseSparkline(graph); !sparkline.empty())
            parts.push_back(fmt::format("{} {} h", sparkline, static_cast<int>(graph.timeWindow)));
        std::erase(parts, "");
        return parts.empty() ? "No readings yet" : fmt::format("{}", fmt::join(parts, "  "));
    }

    void addLastUpdate()
    {
        std::string title = "No update yet";
        if (state_.activity)
            title = activityLine(*state_.activity);
        else if (state_.lastUpdateAt)
            title = "Last update: " + localTimeOfDay(*state_.lastUpdateAt, zone_);
        items_.push_back({.kind = MenuItem::Kind::lastUpdate,
                          .title = std::move(title),
                          .command = MenuCommand::refresh,
                          .enabled = !state_.activity && !waitsForPerson_});
    }

    void addAlert(std::string title, std::vector<std::string> details)
    {
        std::erase(details, "");
        items_.push_back({.kind = MenuItem::Kind::alert,
                          .title = std::move(title),
                          .details = std::move(details),
                          .enabled = false});
    }

    void addProblems()
    {
        const std::size_t before = items_.size();
        if (const auto problem = shownProblem(state_, seen_)) {
            const std::string retry = state_.nextRetryAt ? nextRetryLine(*state_.nextRetryAt, zone_) : "";
            addAlert(problem->title, {problem->message, problem->remediation, retry});
        }
        if (state_.alertProblem) {
            const std::vector<std::string> lines = linesOf(*state_.alertProblem);
            addAlert(lines.front(), {lines.begin() + 1, lines.end()});
        }
        if (state_.historyProblem)
            addAlert("Saved history needs attention", {*state_.historyProblem});
        if (state_.bookkeepingProblem)
            addAlert("Tidewell cannot remember what you choose", linesOf(*state_.bookkeepingProblem));
        for (SilentLowWarning& warning :
             silentLowWarnings(settings_, state_.alertsSnoozedUntil, now_, zone_)) {
            if (warning.cause != SilentLowCause::snooze)
                addAlert(std::move(warning.text), {});
        }
        if (needsSetup_)
            items_.push_back({.title = "Finish setting up…", .command = MenuCommand::finishSetup});
        if (needsTerms_ || state_.termsPending)
            items_.push_back({.title = "Show terms…", .command = MenuCommand::showTerms});
        if (canReconnect_)
            items_.push_back({.title = "Reconnect", .command = MenuCommand::reconnect});
        if (canReconnect_ || needsSignIn_)
            items_.push_back({.title = "Sign in…", .command = MenuCommand::signIn});
        if (items_.size() > before)
            items_.push_back(separator());
    }

    void addSnooze()
    {
        if (state_.alertsSnoozedUntil && *state_.alertsSnoozedUntil > now_) {
            items_.push_back(textItem(snoozeLine(*state_.alertsSnoozedUntil, settings_, zone_)));
            items_.push_back({.title = "Resume alerts now", .command = MenuCommand::resumeAlerts});
        } else {
            items_.push_back({.title = "Snooze alerts (30 min)", .command = MenuCommand::snooze30Minutes});
            items_.push_back({.title = "Snooze alerts (2 hours)", .command = MenuCommand::snooze2Hours});
        }
        items_.push_back(separator());
    }

    void addPlaces(const MenuPlaces& places)
    {
        if (places.insights)
            items_.push_back({.title = "Insights", .command = MenuCommand::showInsights});
        if (places.settings)
            items_.push_back({.title = "Settings", .command = MenuCommand::showSettings});
        else if (!waitsForPerson_)
            items_.push_back({.title = "Switch account…", .command = MenuCommand::signIn});
        items_.push_back({.title = "Quit", .command = MenuCommand::quit});
    }

    const StatusBarState& state_;
    const AppSettings& settings_;
    Date now_;
    TimeZone zone_;
    std::optional<SeenReading> seen_;
    bool needsTerms_;    ///< The terms of use have to be accepted first.
    bool needsSetup_;    ///< The first-run steps have to be finished first.
    bool canReconnect_;  ///< The same account may be tried again.
    bool needsSignIn_;
    bool waitsForPerson_;  ///< Nothing is polled until the person has done something.
    std::vector<MenuItem> items_{};
};

/// How many characters of an alert stand in one line: panels make their menu as wide as its longest line.
constexpr std::size_t lineLength = 56;

std::size_t characterCount(std::string_view text)
{
    return static_cast<std::size_t>(
        std::ranges::count_if(text, [](char byte) { return (byte & 0xc0) != 0x80; }));
}

/// Adds a text, broken between its words.
void addWrapped(std::vector<MenuItem>& lines, std::string text)
{
    std::ranges::replace(text, '\n', ' ');
    std::string line;
    for (const auto range : std::views::split(text, ' ')) {
        const std::string_view word{range};
        if (!line.empty() && characterCount(line) + 1 + characterCount(word) > lineLength)
            lines.push_back(textItem(std::exchange(line, {})));
        line += line.empty() ? "" : " ";
        line += word;
    }
    lines.push_back(textItem(std::move(line)));
}

void addGraphLine(std::vector<MenuItem>& lines, const MenuItem& graph)
{
    MenuItem line{.title = graph.title, .accessibleText = graph.accessibleText};
    line.children = {{.title = "Show graph", .command = MenuCommand::showGraph}, separator()};
    line.children.insert(line.children.end(), graph.children.begin(), graph.children.end());
    lines.push_back(std::move(line));
}

}  // namespace

std::optional<GraphTimeWindow> graphTimeWindow(MenuCommand command)
{
    const auto choice = std::ranges::find(windowChoices, command, &WindowChoice::command);
    return choice == windowChoices.end() ? std::nullopt : std::optional{choice->window};
}

std::vector<MenuItem> statusBarMenu(const StatusBarState& state, const AppSettings& settings,
                                    const MenuPlaces& places, Date now, TimeZone zone)
{
    return Builder{state, settings, now, zone}.build(places);
}

std::vector<MenuItem> menuOfLines(const std::vector<MenuItem>& menu)
{
    std::vector<MenuItem> lines;
    std::optional<MenuItem::Kind> previous;
    for (const MenuItem& item : menu) {
        switch (item.kind) {
        case MenuItem::Kind::graph: addGraphLine(lines, item); break;
        case MenuItem::Kind::lastUpdate:
            lines.push_back(textItem(item.title));
            lines.push_back(
                {.title = std::string{refreshTitle}, .command = item.command, .enabled = item.enabled});
            lines.push_back(separator());
            break;
        case MenuItem::Kind::alert:
            if (previous == MenuItem::Kind::alert)
                lines.push_back(separator());
            addWrapped(lines, "⚠ " + item.title);
            for (const std::string& detail : item.details)
                addWrapped(lines, detail);
            break;
        case MenuItem::Kind::action:
        case MenuItem::Kind::choice:
        case MenuItem::Kind::text:
        case MenuItem::Kind::separator: lines.push_back(item); break;
        }
        previous = item.kind;
    }
    return lines;
}

std::string snoozeLine(Date until, const AppSettings& settings, TimeZone zone)
{
    std::vector<std::string_view> silenced;
    if (settings.snoozeLowAlerts)
        silenced.emplace_back("low");
    if (settings.snoozeHighAlerts)
        silenced.emplace_back("high");
    if (settings.snoozeRapidChangeAlerts)
        silenced.emplace_back("rapid-change");
    std::string alerts = "No alerts (no category is selected)";
    if (!silenced.empty()) {
        const std::string_view last = silenced.back();
        silenced.pop_back();
        alerts =
            fmt::format("{}{}{} alerts", fmt::join(silenced, ", "), silenced.empty() ? "" : " and ", last);
        alerts.front() = static_cast<char>(alerts.front() - 'a' + 'A');
    }
    return alerts + " snoozed until " + localTimeOfDay(until, zone);
}

}  // namespace tidewell
