#include "polling/AlertHealth.h"

#include <algorithm>
#include <cmath>
#include <string_view>
#include <utility>

#include <fmt/format.h>

#include "config/QuietHours.h"
#include "polling/GlucoseAlertEvaluator.h"
#include "statusbar/ReadingPresentation.h"
#include "statusbar/StatusBarMenu.h"

namespace tidewell {

namespace {

using Severity = AlertFinding::Severity;
using Findings = std::vector<AlertFinding>;

/// Below this share of the usual maximum, a sound is easily missed in the next room.
constexpr double lowVolume = 0.2;
constexpr std::int64_t minutesOfDay = 1440;
/// Further ahead of our clock than this, a reading raises no alert.
constexpr Seconds futureTolerance{60};

constexpr std::string_view testAlertCommand = "tidewell test-alert";
constexpr std::string_view signInCommand = "tidewell account set";
constexpr std::string_view louderCommand = "pactl set-sink-volume @DEFAULT_SINK@ 60%";

void problem(Findings& findings, std::string_view subject, std::string text, std::string_view remedy,
             std::string_view command = {})
{
    findings.push_back({Severity::problem, std::string{subject}, std::move(text), std::string{remedy},
                        std::string{command}});
}

void caution(Findings& findings, std::string_view subject, std::string text, std::string_view remedy,
             std::string_view command = {})
{
    findings.push_back({Severity::caution, std::string{subject}, std::move(text), std::string{remedy},
                        std::string{command}});
}

void good(Findings& findings, std::string_view subject, std::string text)
{
    findings.push_back({Severity::good, std::string{subject}, std::move(text)});
}

/// Where the settings have the switch, by its title there.
std::string switchOn(std::string_view title)
{
    return fmt::format("Switch on “{}” in the settings, tab Alerts.", title);
}

std::string settingCommand(std::string_view key, std::string_view value)
{
    return fmt::format("tidewell settings set {} {}", key, value);
}

/// "dunst", or "The notification server" when it did not say its name.
std::string serverName(const AlertPath& path)
{
    return path.serverName.empty() ? "The notification server" : path.serverName;
}

void addNotifications(Findings& findings, const AlertPath& path)
{
    if (path.serverHangs) {
        problem(findings, "notifications", "The notification server does not answer: alerts are not shown.",
                "Restart it, or log out of the desktop and in again.");
        return;
    }
    if (!path.serverAnswers) {
        problem(findings, "notifications", "There is no notification server: alerts are not shown.",
                "Start one: desktops bring their own, elsewhere install dunst or mako and start it with the "
                "session.");
        return;
    }
    if (path.lastAlertNotShown)
        problem(findings, "notifications", serverName(path) + " did not show the last alert.",
                "Restart it, or log out of the desktop and in again; then send a test alert.",
                testAlertCommand);
    else
        good(findings, "notifications", serverName(path) + " answers and shows notifications.");
    if (path.inhibited.value_or(false))
        problem(findings, "doNotDisturb", "“Do not disturb” is on: alerts may be neither shown nor heard.",
                "Switch it off in the desktop's notification settings.");
    else if (path.inhibited)
        good(findings, "doNotDisturb", "“Do not disturb” is off.");
}

void addSound(Findings& findings, const AlertPath& path)
{
    if (!path.soundOutput) {
        caution(findings, "soundOutput", "Whether there is a sound output cannot be told.",
                "Send a test alert and listen.", testAlertCommand);
    } else if (!*path.soundOutput) {
        problem(findings, "soundOutput", "There is no sound output: alerts are silent.",
                "Connect speakers or headphones.", "pactl info");
    } else {
        good(findings, "soundOutput", "There is a sound output.");
        if (path.muted.value_or(false))
            problem(findings, "volume", "The sound is muted: alerts are silent.",
                    "Switch the sound of the computer on.", "pactl set-sink-mute @DEFAULT_SINK@ 0");
        else if (path.volume && !(*path.volume >= 0.005))
            problem(findings, "volume", "The volume is at zero: alerts are silent.",
                    "Turn up the sound of the computer.", louderCommand);
        else if (path.volume && *path.volume < lowVolume)
            caution(findings, "volume",
                    fmt::format("The volume is at {:.0f} %: an alert is easily missed.", *path.volume * 100),
                    "Turn up the sound of the computer.", louderCommand);
        else if (path.volume)
            good(findings, "volume",
                 fmt::format("The volume is at {:.0f} %.", std::min(*path.volume, 10.0) * 100));
    }
    if (path.serverPlaysSound)
        good(findings, "sounds", serverName(path) + " plays the alert sounds.");
    else if (!path.soundTheme)
        problem(findings, "sounds", "The desktop's alert sounds are not installed: alerts are silent.",
                "Install the package sound-theme-freedesktop.");
    else if (path.lastAlertNotHeard)
        problem(findings, "sounds", "The sound of the last alert could not be played.",
                "Send a test alert. If it is silent too, log out of the desktop and in again, and see that "
                "libcanberra is installed.",
                testAlertCommand);
    else
        good(findings, "sounds", "The alert sounds are installed.");
}

/// Whether the newest reading is one that alerts are decided by.
bool isFresh(const AlertHealthFacts& facts)
{
    return facts.newestReading && *facts.newestReading <= facts.now + futureTolerance &&
           facts.now - *facts.newestReading < staleAge;
}

/// What the service said last, when that was no reading.
void addServiceError(Findings& findings, const AlertHealthFacts& facts)
{
    using enum GlucoseAPIError::Kind;
    const GlucoseAPIError& error = *facts.serviceError;
    // It passes by itself, and matters only once readings are missing.
    const auto passing = [&](std::string text, std::string_view remedy) {
        (isFresh(facts) ? caution : problem)(findings, "account", std::move(text), remedy, {});
    };
    const std::string detail = error.text.empty() ? "." : ": " + error.text;
    switch (error.kind) {
    case transport:
        passing("The glucose service cannot be reached.",
                "Check the internet connection; Tidewell tries again by itself.");
        return;
    case credentialsRefused:
        problem(findings, "account", "The service refuses the user name or the password.",
                "Sign in again from the menu.", signInCommand);
        return;
    case accountLocked:
        problem(findings, "account", "The service has locked the account after too many failed sign-ins.",
                "Wait a while, then sign in again from the menu.", signInCommand);
        return;
    case sessionExpired:
        problem(findings, "account", "The session has ended, and a new sign-in did not help.",
                "Sign in again from the menu.", signInCommand);
        return;
    case rateLimited:
        passing("The service asks Tidewell to wait.",
                "Wait: Tidewell asks again by itself. Fewer programs on one account help.");
        return;
    case accountActionRequired:
        problem(findings, "account", "Your account needs attention" + detail,
                "Resolve it in the service's own app, then choose “Reconnect” in the settings, tab Account.",
                "tidewell account reconnect");
        return;
    case noReadings:
        passing("The service has no readings.",
                "See that the sensor is active and that its readings appear in the sharing app.");
        return;
    case serverTrouble:
    case other:
        passing("The service answers with an error" + detail,
                "Wait: Tidewell asks again by itself. If it lasts, check the account.");
        return;
    }
    std::unreachable();
}

void addData(Findings& findings, const AlertHealthFacts& facts)
{
    if (!facts.hasAccount) {
        problem(findings, "account", "No glucose account is signed in.", "Sign in from the menu.",
                signInCommand);
        return;
    }
    if (facts.serviceError)
        addServiceError(findings, facts);
    else if (facts.newestReading)
        good(findings, "account", "The account is signed in, and the service answers.");

    if (!facts.newestReading) {
        if (facts.running && !facts.serviceError)
            problem(findings, "data", "No reading has come yet.", "Wait a few minutes, then look again.");
        return;
    }
    const Seconds age = facts.now - *facts.newestReading;
    if (isFresh(facts))
        good(findings, "data",
             age < Seconds{60} ? "The newest reading is less than a minute old."
                               : fmt::format("The newest reading is {} old.", elapsedPhrase(age)));
    else if (age < Seconds{0})
        problem(findings, "data",
                fmt::format("The newest reading is dated {} in the future: it raises no alert.",
                            elapsedPhrase(-age)),
                "Check the date and time of this computer and of the phone with the sensor.");
    else if (age < expiredAge)
        problem(findings, "data",
                fmt::format("The newest reading is {} old: it raises no alert any more.", elapsedPhrase(age)),
                "See that the sensor is active and that its readings appear in the sharing app.");
    else
        problem(findings, "data",
                fmt::format("There has been no reading for {}: no alert comes.", elapsedPhrase(age)),
                "See that the sensor is active, that the phone has a network, and that its readings appear "
                "in the sharing app.");
}

void addCategories(Findings& findings, const AppSettings& settings)
{
    const GlucoseUnits units = glucoseAlertSettings(settings).units;
    const auto shown = [units](double mgdL) {
        return fmt::format("{} {}", formatGlucose(mgdL, units), rawValue(units));
    };
    const auto category = [&](bool on, std::string_view subject, std::string_view name,
                              std::string_view comes, std::string_view title, std::string_view key) {
        if (on)
            good(findings, subject, fmt::format("{} come {}.", name, comes));
        else
            caution(findings, subject, fmt::format("{} are off.", name), switchOn(title),
                    settingCommand(key, "true"));
    };
    category(settings.alertOnLowThreshold, "low", "Low alerts",
             fmt::format("at {} and below", shown(settings.lowGlucoseThreshold)), "Low glucose",
             "alertOnLowThreshold");
    category(settings.alertOnRapidFall, "rapidFall", "Rapid-fall alerts", "with each fast fall", "Rapid fall",
             "alertOnRapidFall");
    category(settings.alertOnHighThreshold, "high", "High alerts",
             fmt::format("at {} and above", shown(settings.highGlucoseThreshold)), "High glucose",
             "alertOnHighThreshold");
    category(settings.alertOnRapidRise, "rapidRise", "Rapid-rise alerts", "with a fast rise", "Rapid rise",
             "alertOnRapidRise");
    category(settings.alertOnMissingData, "missingData", "Missing-data alerts",
             "when there has been no reading for 15 minutes", "No data for 15 minutes", "alertOnMissingData");
    if (settings.lowGlucoseThreshold >= settings.highGlucoseThreshold)
        caution(findings, "thresholds",
                fmt::format("The low threshold ({}) is not below the high one ({}).",
                            shown(settings.lowGlucoseThreshold), shown(settings.highGlucoseThreshold)),
                "Choose others in the settings, tab Glucose.", settingCommand("lowGlucoseThreshold", "72"));
}

std::string timeOfDay(std::int64_t minutes)
{
    return fmt::format("{:02}:{:02}", minutes / 60 % 24, minutes % 60);
}

void addQuietHours(Findings& findings, const AlertHealthFacts& facts)
{
    constexpr std::string_view subject = "quietHours";
    const std::string letLowsThrough = switchOn("Let low alerts through");
    const std::string letCommand = settingCommand("allowLowAlertsDuringQuietHours", "true");
    const AppSettings& settings = facts.settings;
    const std::int64_t from = settings.quietHoursStartMinutes;
    const std::int64_t to = settings.quietHoursEndMinutes;
    const bool lowsCome = settings.allowLowAlertsDuringQuietHours;
    if (!settings.quietHoursEnabled) {
        good(findings, subject, "Quiet hours are off.");
        return;
    }
    if (from == to) {
        (lowsCome ? caution : problem)(findings, subject,
                                       lowsCome ? "Quiet hours last all day: only lows are told."
                                                : "Quiet hours last all day: no alert comes.",
                                       "Choose two different times in the settings, tab Alerts.",
                                       settingCommand("quietHoursStartMinutes", "22:00"));
        return;
    }
    const auto isTime = [](std::int64_t minutes) { return minutes >= 0 && minutes < minutesOfDay; };
    const bool now = isQuiet(facts.now, facts.zone, from, to);
    if (!isTime(from) || !isTime(to)) {
        (now && !lowsCome ? problem : caution)(
            findings, subject, "The times of the quiet hours are not valid.",
            "Choose them anew in the settings, tab Alerts.",
            settingCommand(isTime(from) ? "quietHoursEndMinutes" : "quietHoursStartMinutes",
                           isTime(from) ? "07:00" : "22:00"));
        return;
    }
    const std::string span = fmt::format("Quiet hours from {} to {}", timeOfDay(from), timeOfDay(to));
    if (now && lowsCome)
        caution(findings, subject, span + ": now only lows are told.", "Nothing to do if that is meant so.");
    else if (now)
        caution(findings, subject, span + ": now no alert comes, not even for a low.", letLowsThrough,
                letCommand);
    else if (!lowsCome)
        caution(findings, subject, span + ": no alert comes then, not even for a low.", letLowsThrough,
                letCommand);
    else
        good(findings, subject, span + " let lows through.");
}

void addSnooze(Findings& findings, const AlertHealthFacts& facts)
{
    const AppSettings& settings = facts.settings;
    const bool lasts = facts.snoozedUntil && *facts.snoozedUntil > facts.now;
    const bool silences =
        settings.snoozeLowAlerts || settings.snoozeHighAlerts || settings.snoozeRapidChangeAlerts;
    if (!lasts)
        good(findings, "snooze", "Alerts are not snoozed.");
    else if (!silences)
        good(findings, "snooze", snoozeLine(*facts.snoozedUntil, settings, facts.zone) + ".");
    else
        caution(findings, "snooze", snoozeLine(*facts.snoozedUntil, settings, facts.zone) + ".",
                "Choose “Resume alerts now” in the menu.", "tidewell resume");
}

Findings worstFirst(const Findings& findings)
{
    Findings sorted;
    for (const Severity severity : {Severity::problem, Severity::caution, Severity::note, Severity::good})
        std::ranges::copy_if(findings, std::back_inserter(sorted),
                             [severity](const AlertFinding& f) { return f.severity == severity; });
    return sorted;
}

}  // namespace

std::vector<AlertFinding> alertFindings(const AlertHealthFacts& facts)
{
    Findings findings;
    if (facts.running)
        good(findings, "tidewell", "Tidewell is running.");
    else
        problem(findings, "tidewell", "Tidewell is not running: nobody watches for alerts.",
                "Start Tidewell.", "tidewell");
    if (facts.settings.alertsEnabled)
        good(findings, "alerts", "Alerts are on.");
    else
        problem(findings, "alerts", "Alerts are off.", switchOn("Show alerts"),
                settingCommand("alertsEnabled", "true"));
    addNotifications(findings, facts.path);
    addData(findings, facts);
    addSound(findings, facts.path);
    if (facts.settings.alertsEnabled) {
        addCategories(findings, facts.settings);
        addQuietHours(findings, facts);
        addSnooze(findings, facts);
    }
    if (facts.path.suspendsAfter)
        caution(findings, "suspend",
                fmt::format("The computer suspends itself after {} without use: asleep, it tells nothing.",
                            elapsedPhrase(*facts.path.suspendsAfter)),
                "Switch automatic suspend off in the desktop's power settings.");
    return worstFirst(findings);
}

}  // namespace tidewell
