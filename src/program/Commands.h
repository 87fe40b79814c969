#pragma once

#include <cstdint>
#include <filesystem>
#include <optional>
#include <string>

#include "history/HistoryExport.h"
#include "history/HistoryImport.h"
#include "program/ExitCode.h"
#include "program/WatchLine.h"

namespace tidewell {

enum class StatusIconShape;
enum class PanelScheme;
enum class InsightsReportPaper;

/// The desktop application: the status item and its windows, until Quit. Needs a display.
struct ApplicationOptions {
    bool demo = false;
    std::string demoScenario = "steady";
    std::optional<StatusIconShape> icon{};  ///< Else what suits the panel.
    std::optional<PanelScheme> panel{};     ///< Else a picture that can be read on any panel.
};
[[nodiscard]] ExitCode runApplication(const ApplicationOptions& options);

/// One line for each change of what the status item would show, on standard output.
struct WatchOptions {
    WatchFormat format = WatchFormat::text;
    bool once = false;
    bool demo = false;
    std::string demoScenario = "steady";
};
[[nodiscard]] ExitCode runWatch(const WatchOptions& options);

/// Where `graph` puts its picture, and as what.
struct GraphOutput {
    enum class Format { png, svg };
    std::filesystem::path file{};
    Format format = Format::png;
};
/// By the end of the name, in any letter case; else empty.
[[nodiscard]] std::optional<GraphOutput> graphOutput(const std::string& path);

/// The readings of the last hours: in a file as a picture, else on standard output as text.
struct GraphOptions {
    std::optional<std::int64_t> hours{};  ///< Else by the preferences.
    std::optional<GraphOutput> output{};
    bool dark = false;      ///< Of a picture, as the next two.
    double pixelRatio = 2;  ///< Pixels to a point.
    double textScale = 1;   ///< How much larger than usual the letters are.
    bool demo = false;
    std::string demoScenario = "steady";
};
[[nodiscard]] ExitCode runGraph(const GraphOptions& options);

struct AccountSetOptions {
    std::optional<std::string> provider;
    std::optional<std::string> username;
    std::optional<std::string> region;
    std::optional<std::string> patientID;
    bool passwordFromInput = false;
};
/// Reads the password from standard input, checks the account with its service and stores it; with a person
/// alone, follows that one of those who share with the stored account.
[[nodiscard]] ExitCode runAccountSet(const AccountSetOptions& options);
[[nodiscard]] ExitCode runAccountShow();
/// One person to a line of standard output: the id, two spaces, the name, and "  (selected)" behind the one
/// who is followed. What else there is to say goes to standard error.
[[nodiscard]] ExitCode runAccountConnections();
/// Tries the stored account, and unless it is refused lets a running program try again too.
[[nodiscard]] ExitCode runAccountReconnect();
[[nodiscard]] ExitCode runAccountClear();

/// One setting, or all of them without a key.
[[nodiscard]] ExitCode runSettingsGet(const std::optional<std::string>& key);
[[nodiscard]] ExitCode runSettingsSet(const std::string& key, const std::string& value);

/// Silences alerts for as long as `length` says, and says which and until when.
[[nodiscard]] ExitCode runSnooze(const std::string& length);
/// Ends a snooze.
[[nodiscard]] ExitCode runResume();

/// Sends a test alert through the desktop's notifications; good only when it was sent.
[[nodiscard]] ExitCode runTestAlert();
/// Says whether an alert would be seen and heard now, worst first; good only when all is well. Asks the
/// desktop and the service itself.
[[nodiscard]] ExitCode runDoctor(bool asJson);

/// What is saved of the account, how, and what is wrong with it; and of how many others there is something.
[[nodiscard]] ExitCode runHistoryStatus(bool asJson);
/// Shows what saving means, asks unless it is accepted beforehand, and begins to save. A shorter retention
/// asks as runHistoryRetention() does.
struct HistoryEnableOptions {
    std::optional<std::int64_t> retentionDays{};  ///< Else as it was, or 90.
    bool accept = false;
    bool yes = false;  ///< Deletes older readings without being asked.
};
[[nodiscard]] ExitCode runHistoryEnable(const HistoryEnableOptions& options);
[[nodiscard]] ExitCode runHistoryDisable();
/// Asks, unless `yes`, when readings would be deleted by it.
[[nodiscard]] ExitCode runHistoryRetention(std::int64_t days, bool yes);
/// Of the account, or of all, for which nobody need be signed in; asks unless `yes`.
[[nodiscard]] ExitCode runHistoryDelete(bool all, bool yes);
struct HistoryExportOptions {
    std::filesystem::path file{};
    std::optional<HistoryExportFormat> format{};  ///< Else by the end of the file's name, or CSV.
    std::optional<std::int64_t> days{};           ///< The last ones; else everything.
    bool force = false;                           ///< Replaces a file that exists.
};
[[nodiscard]] ExitCode runHistoryExport(const HistoryExportOptions& options);
struct HistoryImportOptions {
    std::filesystem::path file{};
    bool dryRun = false;
    std::optional<std::string> timeZone{};
    std::optional<DateOrder> dateOrder{};
};
[[nodiscard]] ExitCode runHistoryImport(const HistoryImportOptions& options);

/// What a period of saved readings, or of a file, comes to. Until enough is saved, how far that has come.
struct InsightsOptions {
    std::optional<std::int64_t> days{};            ///< The last ones; else 14, or everything in the file.
    std::optional<std::string> from{};             ///< A date, or a moment in ISO 8601.
    std::optional<std::string> to{};               ///< A date, which is the last one, or a moment.
    std::optional<std::string> timeZone{};         ///< Else the one in force.
    std::optional<std::string> collectionStart{};  ///< Else as saved, or the first reading of the file.
    std::optional<std::filesystem::path> csv{};    ///< A file that `history import` could read.
    std::optional<DateOrder> dateOrder{};          ///< Of that file.
    bool json = false;
    std::optional<std::filesystem::path> pdf{};  ///< One page, instead of lines on standard output ...
    std::optional<std::filesystem::path>
        png{};  ///< ... and the same as a picture; of both, as the next four:
    std::optional<InsightsReportPaper> paper{};  ///< Else the locale's.
    std::optional<std::string> name{};           ///< On the page.
    bool withReadings = false;                   ///< As CSV beside it.
    bool force = false;                          ///< Replaces files that exist.
};
[[nodiscard]] ExitCode runInsights(const InsightsOptions& options);

/// Writes "tidewell: " and the message as one line to standard error; the code is passed through.
ExitCode report(const CommandError& error);

}  // namespace tidewell
