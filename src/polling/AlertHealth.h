#pragma once

#include <optional>
#include <string>
#include <vector>

#include "config/AppConfiguration.h"
#include "sources/GlucoseAPIProtocol.h"
#include "support/TimeText.h"

namespace tidewell {

/// What the desktop says about notifications and sound, as far as it can be asked; empty where it cannot.
struct AlertPath {
    bool serverAnswers = false;  ///< A notification server is there and answers.
    bool serverHangs = false;    ///< It is there and does not answer.
    std::string serverName{};
    std::optional<bool> inhibited{};  ///< "Do not disturb" is on.
    bool serverPlaysSound = false;
    std::optional<bool> soundOutput{};  ///< There is an output, and its server answers.
    std::optional<bool> muted{};
    std::optional<double> volume{};  ///< 0 ... 1 of the usual maximum.
    bool soundTheme = true;          ///< The sounds that we would play are installed.
    /// As the running program saw it; another process cannot know.
    bool lastAlertNotShown = false;          ///< The server refused the last alert or did not confirm it.
    bool lastAlertNotHeard = false;          ///< The sound that we played for the last alert failed.
    std::optional<Seconds> suspendsAfter{};  ///< The machine suspends itself when nobody uses it for so long.
    bool operator==(const AlertPath&) const = default;
};

/// Everything that decides whether an alert would be seen and heard now.
struct AlertHealthFacts {
    Date now{};
    TimeZone zone = TimeZone::utc();
    AppSettings settings{};
    std::optional<Date> snoozedUntil{};
    AlertPath path{};
    bool hasAccount = true;
    std::optional<GlucoseAPIError> serviceError{};  ///< Of the last request, when it failed.
    std::optional<Date> newestReading{};
    bool running = true;  ///< Tidewell itself runs.
};

/// One thing that was looked at.
struct AlertFinding {
    enum class Severity {
        problem,  ///< An alert would not be seen, or not be heard.
        caution,  ///< Some alerts would not come, or not at some times.
        note,     ///< Nothing about alerts, but worth knowing.
        good,
    };
    Severity severity = Severity::good;
    /// A stable word for scripts: tidewell, alerts, notifications, doNotDisturb, account, data, soundOutput,
    /// volume, sounds, low, rapidFall, high, rapidRise, missingData, thresholds, quietHours, snooze, suspend,
    /// statusArea, savedHistory, startAtLogin, setup, terms, bookkeeping.
    std::string subject{};
    std::string text{};     ///< One sentence.
    std::string remedy{};   ///< What to do, in words that name the control; a sentence, empty for good ones.
    std::string command{};  ///< What does the same in a terminal, for whoever is there; may be empty.
    bool operator==(const AlertFinding&) const = default;
};

/// Worst first, within a severity in the order of the subjects. Pure.
///
/// What could not be asked and what follows from another finding has none of its own: without an account
/// there is nothing to say of data, and while alerts are off nothing of categories, quiet hours and snooze.
/// Quiet hours and a snooze that end by themselves are cautions: the person wants them.
[[nodiscard]] std::vector<AlertFinding> alertFindings(const AlertHealthFacts& facts);

}  // namespace tidewell
