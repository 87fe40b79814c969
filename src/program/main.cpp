#include <CLI/CLI.hpp>
#include <cstdio>

#include "config/AppSettingsKeys.h"
#include "platform/linux/DesktopHelper.h"
#include "program/Commands.h"
#include "program/Process.h"
#include "support/Log.h"
#include "ui/InsightsReportPage.h"
#include "ui/StatusIconPainter.h"

namespace tidewell {

namespace {

constexpr const char* notice =
    "Tidewell is no medical device. Keep the alarms of your phone or receiver switched on,\n"
    "and never decide on treatment by what it shows.\n\n"
    "Exit codes: 0 good, 1 failure, 2 usage, 3 not running, 4 no fresh reading, 5 sign-in needed, 6 keyring.";

/// Adds --demo, alone or with a scenario of the simulator.
void addDemo(CLI::App& command, bool& demo, std::string& scenario)
{
    command
        .add_option_function<std::string>(
            "--demo",
            [&demo, &scenario](const std::string& name) {
                demo = true;
                if (!name.empty())
                    scenario = name;
            },
            "Use the built-in simulator instead of an account, \"libre\" for LibreLinkUp; nothing is saved")
        ->expected(0, 1)
        ->default_str("")
        ->option_text("[=SCENARIO]");
}

ExitCode run(int count, char** values)
{
    CLI::App app{"Shows the current glucose reading of a continuous glucose monitor in the status area.",
                 "tidewell"};
    app.footer(notice);
    app.set_version_flag("--version", std::string{"tidewell "} + TIDEWELL_VERSION);
    bool verbose = false;
    app.add_flag("--verbose", verbose, "Write what happens to standard error")->disable_flag_override();

    ApplicationOptions application;
    addDemo(app, application.demo, application.demoScenario);

    std::string icon;
    std::string panel;
    app.add_option(
           "--icon", icon,
           "How the panel shows the value: stacked (value over arrow, in a square), wide (in one line) "
           "or dot (a coloured drop, for panels that write the value beside it); else by the panel")
        ->check(CLI::IsMember({"stacked", "wide", "dot"}))
        ->option_text("stacked|wide|dot");
    app.add_option("--panel", panel,
                   "The panel's background, light or dark; else the value stands on a plate of its own")
        ->check(CLI::IsMember({"light", "dark"}))
        ->option_text("light|dark");

    WatchOptions watch;
    std::string format = "text";
    auto* watchCommand =
        app.add_subcommand("watch", "Print one line for each change, without a display; posts no alerts");
    watchCommand->fallthrough();  // --verbose may follow it.
    watchCommand
        ->add_option("--format", format,
                     "text, json, or what a status bar reads: waybar, i3blocks, polybar or tmux")
        ->check(CLI::IsMember(watchFormatNames()))
        ->capture_default_str();
    watchCommand->add_flag("--once", watch.once, "End with the first reading or problem")
        ->disable_flag_override();
    addDemo(*watchCommand, watch.demo, watch.demoScenario);

    GraphOptions graph;
    std::optional<std::string> graphFile;
    std::string graphTheme = "light";
    auto* graphCommand = app.add_subcommand(
        "graph", "Draw the readings of the last hours: on the terminal, or as a picture in a file");
    graphCommand->fallthrough();
    graphCommand->add_option("--hours", graph.hours, "1, 3, 6, 12 or 24; else as the preferences say")
        ->check(CLI::IsMember(
            std::vector<std::int64_t>(graphTimeWindowHourOptions.begin(), graphTimeWindowHourOptions.end())));
    graphCommand->add_option("--output", graphFile, "A file whose name ends in .png or .svg");
    graphCommand->add_option("--theme", graphTheme, "Of a picture: light or dark")
        ->check(CLI::IsMember({"light", "dark"}))
        ->capture_default_str();
    graphCommand->add_option("--scale", graph.pixelRatio, "Of a .png: pixels to a point, 1 to 4")
        ->check(CLI::Range(1.0, 4.0))
        ->capture_default_str();
    graphCommand->add_option("--text-scale", graph.textScale, "Of a picture: size of its letters, 1 to 2")
        ->check(CLI::Range(1.0, 2.0))
        ->capture_default_str();
    addDemo(*graphCommand, graph.demo, graph.demoScenario);

    auto* account = app.add_subcommand("account", "The account that is followed");
    account->require_subcommand(1);
    AccountSetOptions set;
    auto* accountSet = account->add_subcommand("set", "Sign in: check the account and store it");
    accountSet->add_option("--provider", set.provider, "dexcom or libreLinkUp");
    accountSet->add_option("--username", set.username,
                           "dexcom: user name, e-mail address or phone number; libreLinkUp: the follower's "
                           "e-mail address");
    accountSet->add_option("--region", set.region,
                           "dexcom: us, ous (outside the United States) or jp; libreLinkUp: ae, ap, au, ca, "
                           "cn, de, eu, eu2, fr, jp, la, ru or us");
    accountSet->add_option("--patient", set.patientID,
                           "libreLinkUp: the person to follow, by the id that \"account connections\" lists; "
                           "alone: another person of the stored account");
    accountSet->add_flag("--password-stdin", set.passwordFromInput, "Read the password from standard input")
        ->disable_flag_override();
    auto* accountShow = account->add_subcommand("show", "Show the account, without its password");
    auto* accountConnections =
        account->add_subcommand("connections", "List the people whose readings it can see: id and name");
    auto* accountReconnect = account->add_subcommand(
        "reconnect", "Try the account again, after what it needed was done elsewhere");
    auto* accountClear = account->add_subcommand("clear", "Sign out: remove the account and its password");

    auto* settings = app.add_subcommand("settings", "The preferences");
    std::optional<std::string> getKey;
    std::string setKey;
    std::string setValue;
    auto* settingsGet = settings->add_subcommand("get", "Print one setting, or all");
    settingsGet->add_option("key", getKey, "The setting's name");
    auto* settingsSet = settings->add_subcommand("set", "Change one setting");
    settingsSet->add_option("key", setKey, "The setting's name")->required();
    settingsSet->add_option("value", setValue, "Its new value")->required();
    settings->require_subcommand(0, 1);

    std::string snoozeFor;
    auto* snooze = app.add_subcommand("snooze", "Silence alerts for a while, by the categories selected");
    snooze->add_option("duration", snoozeFor, "30m, 2h, 1h30m, or 90 for minutes; at most 24 hours")
        ->required();
    auto* resume = app.add_subcommand("resume", "Let alerts come again");
    auto* testAlert = app.add_subcommand("test-alert", "Send a test alert to the desktop");
    bool doctorJson = false;
    auto* doctor =
        app.add_subcommand("doctor", "Say whether an alert would be seen and heard now, and what to do");
    doctor->add_flag("--json", doctorJson, "Print a JSON array of findings")->disable_flag_override();

    auto* history = app.add_subcommand("history", "The readings saved on this computer");
    history->require_subcommand(1);
    bool historyJson = false;
    auto* historyStatus = history->add_subcommand("status", "Say what is saved, and whether all is well");
    historyStatus->add_flag("--json", historyJson, "Print a JSON object")->disable_flag_override();
    HistoryEnableOptions enable;
    const CLI::IsMember retentions{std::vector<std::int64_t>{30, 90}};
    auto* historyEnable = history->add_subcommand("enable", "Save readings from now on, encrypted");
    historyEnable->add_option("--retention", enable.retentionDays, "How many days to keep: 30 or 90")
        ->check(retentions);
    historyEnable->add_flag("--accept", enable.accept, "Accept what it shows without being asked")
        ->disable_flag_override();
    historyEnable->add_flag("--yes", enable.yes, "Delete older readings without being asked")
        ->disable_flag_override();
    auto* historyDisable = history->add_subcommand("disable", "Save no more; what is saved stays");
    std::int64_t retentionDays = 90;
    bool yes = false;
    auto* historyRetention = history->add_subcommand("retention", "Keep readings for 30 or 90 days");
    historyRetention->add_option("days", retentionDays, "30 or 90")->required()->check(retentions);
    historyRetention->add_flag("--yes", yes, "Delete older readings without being asked")
        ->disable_flag_override();
    bool deleteAll = false;
    auto* historyDelete = history->add_subcommand("delete", "Delete what is saved, and its key");
    historyDelete->add_flag("--all", deleteAll, "Of every account and person")->disable_flag_override();
    historyDelete->add_flag("--yes", yes, "Delete without being asked")->disable_flag_override();
    HistoryExportOptions exported;
    auto* historyExport = history->add_subcommand("export", "Write saved readings to a file, not encrypted");
    historyExport->add_option("file", exported.file, "The file")->required();
    historyExport->add_option("--format", exported.format, "csv or json; else by the end of the file's name")
        ->transform(CLI::CheckedTransformer(std::map<std::string, HistoryExportFormat>{
            {"csv", HistoryExportFormat::csv}, {"json", HistoryExportFormat::json}}));
    historyExport->add_option("--days", exported.days, "Only the last days")->check(CLI::Range(1, 90));
    historyExport->add_flag("--force", exported.force, "Replace a file that exists")->disable_flag_override();
    HistoryImportOptions imported;
    auto* historyImport =
        history->add_subcommand("import",
                                "Add the readings of a file: exports of Tidewell, CSV, reports of "
                                "Dexcom Clarity and LibreView");
    historyImport->add_option("file", imported.file, "The file")->required();
    historyImport->add_flag("--dry-run", imported.dryRun, "Only say what it would do")
        ->disable_flag_override();
    historyImport->add_option("--time-zone", imported.timeZone,
                              "Of times that name none, for example Europe/Berlin");
    historyImport
        ->add_option("--date-order", imported.dateOrder,
                     "Of dates like 01-02-2026: day-first or "
                     "month-first")
        ->transform(CLI::CheckedTransformer(std::map<std::string, DateOrder>{
            {"day-first", DateOrder::dayFirst}, {"month-first", DateOrder::monthFirst}}));
    InsightsOptions insights;
    auto* insightsCommand = app.add_subcommand(
        "insights", "Say what the readings of a period come to: time in ranges, averages, profile, episodes");
    insightsCommand->add_option("--days", insights.days, "The last days; else 14, or all that the file has")
        ->check(CLI::Range(1, 36'600));
    insightsCommand->add_option("--from", insights.from, "A date (2026-03-01) or a moment in ISO 8601");
    insightsCommand->add_option("--to", insights.to, "The last date, or a moment; else now");
    insightsCommand->add_option(
        "--time-zone", insights.timeZone,
        "Whose days and times of day, for example Europe/Berlin; else the one in force");
    insightsCommand->add_option("--collection-start", insights.collectionStart,
                                "When saving began, a date or a moment; else as is known");
    insightsCommand->add_option("--csv", insights.csv,
                                "Instead of saved history: a file that \"history import\" could read");
    insightsCommand->add_option("--date-order", insights.dateOrder, "Of its dates: day-first or month-first")
        ->transform(CLI::CheckedTransformer(std::map<std::string, DateOrder>{
            {"day-first", DateOrder::dayFirst}, {"month-first", DateOrder::monthFirst}}));
    insightsCommand
        ->add_flag("--json", insights.json, "Print everything as a JSON object, in mg/dL and seconds")
        ->disable_flag_override();
    insightsCommand->add_option("--pdf", insights.pdf,
                                "Write one page to take along into this file, which is not encrypted");
    insightsCommand->add_option("--png", insights.png, "Write that page as a picture");
    insightsCommand->add_option("--paper", insights.paper, "Of the page: a4 or letter; else the locale's")
        ->transform(CLI::CheckedTransformer(std::map<std::string, InsightsReportPaper>{
            {"a4", InsightsReportPaper::a4}, {"letter", InsightsReportPaper::letter}}));
    insightsCommand->add_option("--name", insights.name, "A name on the page; else there is none");
    insightsCommand
        ->add_flag("--with-csv", insights.withReadings,
                   "Attach the readings of the period: a CSV file beside the page")
        ->disable_flag_override();
    insightsCommand->add_flag("--force", insights.force, "Replace files that exist")->disable_flag_override();
    app.require_subcommand(0, 1);

    try {
        app.parse(count, values);
    } catch (const CLI::ParseError& error) {
        if (error.get_exit_code() == 0)
            return static_cast<ExitCode>(app.exit(error));
        return report({ExitCode::usage, std::string{error.what()} + ". See \"tidewell --help\"."});
    }
    if ((!icon.empty() || !panel.empty()) && !app.get_subcommands().empty())
        return report({ExitCode::usage, "--icon and --panel go with the application alone."});
    if (!icon.empty())
        application.icon = icon == "wide"  ? StatusIconShape::wide
                           : icon == "dot" ? StatusIconShape::dot
                                           : StatusIconShape::stacked;
    if (!panel.empty())
        application.panel = panel == "light" ? PanelScheme::light : PanelScheme::dark;
    if (application.demo && !app.get_subcommands().empty()) {
        if (!*watchCommand && !*graphCommand)
            return report(
                {ExitCode::usage,
                 "--demo goes with the application, with \"tidewell watch\" and with \"tidewell graph\"."});
        if (!std::exchange(watch.demo, true))
            watch.demoScenario = application.demoScenario;
        if (!std::exchange(graph.demo, true))
            graph.demoScenario = application.demoScenario;
    }
    if (graphFile) {
        graph.output = graphOutput(*graphFile);
        if (!graph.output)
            return report({ExitCode::usage, "--output takes a file whose name ends in .png or .svg."});
    }
    graph.dark = graphTheme == "dark";
    setLogSink(systemLogSink(verbose ? LogLevel::debug : LogLevel::warning));

    if (*watchCommand) {
        watch.format = watchFormat(format).value_or(WatchFormat::text);
        return runWatch(watch);
    }
    if (*graphCommand)
        return runGraph(graph);
    if (*accountSet)
        return runAccountSet(set);
    if (*accountShow)
        return runAccountShow();
    if (*accountConnections)
        return runAccountConnections();
    if (*accountReconnect)
        return runAccountReconnect();
    if (*accountClear)
        return runAccountClear();
    if (*settingsSet)
        return runSettingsSet(setKey, setValue);
    if (*settings || *settingsGet)
        return runSettingsGet(getKey);
    if (*snooze)
        return runSnooze(snoozeFor);
    if (*resume)
        return runResume();
    if (*testAlert)
        return runTestAlert();
    if (*doctor)
        return runDoctor(doctorJson);
    if (*historyStatus)
        return runHistoryStatus(historyJson);
    if (*historyEnable)
        return runHistoryEnable(enable);
    if (*historyDisable)
        return runHistoryDisable();
    if (*historyRetention)
        return runHistoryRetention(retentionDays, yes);
    if (*historyDelete)
        return runHistoryDelete(deleteAll, yes);
    if (*historyExport)
        return runHistoryExport(exported);
    if (*historyImport)
        return runHistoryImport(imported);
    if (*insightsCommand)
        return runInsights(insights);
    return runApplication(application);
}

}  // namespace

ExitCode report(const CommandError& error)
{
    std::string line = error.message;
    for (auto& character : line)
        if (character == '\n' || character == '\r')
            character = ' ';
    (void)std::fflush(stdout);  // What was said before comes first.
    (void)std::fprintf(stderr, "tidewell: %s\n", line.c_str());
    return error.code;
}

}  // namespace tidewell

int main(int count, char** values)
{
    tidewell::beDesktopHelperWhenAsked(count, values);
    tidewell::hardenProcess();
    tidewell::processArguments() = {count, values};
    return static_cast<int>(tidewell::afterOutput(tidewell::run(count, values)));
}
