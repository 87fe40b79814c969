#include "polling/AlertHealth.h"

#include <limits>

namespace tidewell {
namespace {

/// 2026-03-02 07:53:20 UTC.
constexpr Date now = dateFromUnix(1'772'438'000);

/// Everything is well: a desktop with sound, and a reading of this minute.
AlertHealthFacts wellFacts()
{
    return {.now = now,
            .path = {.serverAnswers = true,
                     .serverName = "dunst",
                     .inhibited = false,
                     .soundOutput = true,
                     .muted = false,
                     .volume = 0.6},
            .newestReading = now - Seconds{125}};
}

std::string line(const AlertFinding& finding)
{
    constexpr std::array words{"problem", "caution", "note", "good"};
    return fmt::format("{} {}: {}", words.at(static_cast<std::size_t>(finding.severity)), finding.subject,
                       finding.text);
}

std::vector<std::string> lines(const std::vector<AlertFinding>& findings, bool goodOnes)
{
    std::vector<std::string> all;
    for (const AlertFinding& finding : findings)
        if (goodOnes == (finding.severity == AlertFinding::Severity::good))
            all.push_back(line(finding));
    return all;
}

TEST(AlertHealth, saysWhatIsWellInAFixedOrder)
{
    EXPECT_EQ(lines(alertFindings(wellFacts()), false), std::vector<std::string>{});
    EXPECT_EQ(
        lines(alertFindings(wellFacts()), true),
        (std::vector<std::string>{
            "good tidewell: Tidewell is running.", "good alerts: Alerts are on.",
            "good notifications: dunst answers and shows notifications.",
            "good doNotDisturb: “Do not disturb” is off.",
            "good account: The account is signed in, and the service answers.",
            "good data: The newest reading is 2 minutes old.", "good soundOutput: There is a sound output.",
            "good volume: The volume is at 60 %.", "good sounds: The alert sounds are installed.",
            "good low: Low alerts come at 72 mg/dL and below.",
            "good rapidFall: Rapid-fall alerts come with each fast fall.",
            "good high: High alerts come at 270 mg/dL and above.",
            "good rapidRise: Rapid-rise alerts come with a fast rise.",
            "good missingData: Missing-data alerts come when there has been no "
            "reading for 15 minutes.",
            "good quietHours: Quiet hours are off.", "good snooze: Alerts are not snoozed."}));
}

using Facts = AlertHealthFacts;
using Error = GlucoseAPIError;

/// What is wrong once something has been changed about facts that are well: "problem subject" and so on, and
/// a piece of the first one's text.
struct Case {
    std::string name;
    std::function<void(Facts&)> change;
    std::vector<std::string> expected{};
    std::string text{};
};

void expectFindings(const std::vector<Case>& cases)
{
    for (const Case& c : cases) {
        SCOPED_TRACE(c.name);
        Facts facts = wellFacts();
        c.change(facts);
        std::vector<std::string> found;
        std::string first;
        AlertFinding::Severity worst = AlertFinding::Severity::problem;
        for (const AlertFinding& finding : alertFindings(facts)) {
            EXPECT_GE(finding.severity, worst) << "not worst first";
            worst = finding.severity;
            const bool isGood = finding.severity == AlertFinding::Severity::good;
            EXPECT_EQ(finding.remedy.empty(), isGood) << finding.subject;
            EXPECT_EQ(finding.remedy.ends_with('.'), !isGood) << finding.remedy;
            EXPECT_FALSE(finding.remedy.contains("tidewell ") || finding.remedy.contains("pactl"))
                << "a command among the words: " << finding.remedy;
            EXPECT_TRUE(finding.command.empty() || finding.command.starts_with("tidewell") ||
                        finding.command.starts_with("pactl "))
                << finding.command;
            if (isGood)
                continue;
            const std::string whole = line(finding);
            found.push_back(whole.substr(0, whole.find(':')));
            if (first.empty())
                first = finding.text;
        }
        EXPECT_EQ(found, c.expected);
        EXPECT_TRUE(first.contains(c.text)) << first;
    }
}

TEST(AlertHealth, saysWhatKeepsAnAlertFromBeingSeenOrHeard)
{
    expectFindings({
        {"no server", [](Facts& f) { f.path.serverAnswers = false; }, {"problem notifications"}, "no notif"},
        {"hangs",
         [](Facts& f) { f.path.serverAnswers = !(f.path.serverHangs = true); },
         {"problem notifications"},
         "does not answer"},
        {"inhibited", [](Facts& f) { f.path.inhibited = true; }, {"problem doNotDisturb"}, "disturb"},
        {"inhibited unknown", [](Facts& f) { f.path.inhibited.reset(); }},
        {"refused",
         [](Facts& f) { f.path.lastAlertNotShown = true; },
         {"problem notifications"},
         "last alert"},
        {"refused, then gone",
         [](Facts& f) { f.path.serverAnswers = !(f.path.lastAlertNotShown = true); },
         {"problem notifications"},
         "There is no notif"},
        {"not heard", [](Facts& f) { f.path.lastAlertNotHeard = true; }, {"problem sounds"}, "last alert"},
        {"not heard, then played by the server",
         [](Facts& f) { f.path.lastAlertNotHeard = f.path.serverPlaysSound = true; }},
        {"no output", [](Facts& f) { f.path.soundOutput = false; }, {"problem soundOutput"}, "no sound outp"},
        {"output unknown", [](Facts& f) { f.path.soundOutput.reset(); }, {"caution soundOutput"}},
        {"muted", [](Facts& f) { f.path.muted = true; }, {"problem volume"}, "muted"},
        {"volume 0", [](Facts& f) { f.path.volume = 0; }, {"problem volume"}, "at zero"},
        {"volume odd",
         [](Facts& f) { f.path.volume = std::numeric_limits<double>::quiet_NaN(); },
         {"problem volume"}},
        {"volume 12 %", [](Facts& f) { f.path.volume = 0.12; }, {"caution volume"}, "12 %"},
        {"volume 20 %", [](Facts& f) { f.path.volume = 0.2; }},
        {"volume unknown", [](Facts& f) { f.path.volume.reset(); }},
        {"no sounds", [](Facts& f) { f.path.soundTheme = false; }, {"problem sounds"}, "not installed"},
        {"no sounds of ours", [](Facts& f) { f.path.serverPlaysSound = !(f.path.soundTheme = false); }},
        {"suspends",
         [](Facts& f) { f.path.suspendsAfter = Seconds{1200}; },
         {"caution suspend"},
         "after 20 minutes"},
        {"not running", [](Facts& f) { f.running = false; }, {"problem tidewell"}, "not running"},
        {"everything at once",
         [](Facts& f) {
             f.running = false;
             f.path = {.serverPlaysSound = true, .muted = true, .suspendsAfter = Seconds{600}};
             f.settings.alertOnRapidRise = false;
             f.newestReading = now - Seconds{9999};
         },
         {"problem tidewell", "problem notifications", "problem data", "caution soundOutput",
          "caution rapidRise", "caution suspend"}},
    });
}

TEST(AlertHealth, saysWhatIsWrongWithAccountAndData)
{
    const auto failing = [](Error::Kind kind, double age = 125) {
        return [kind, age](Facts& f) {
            f.serviceError = Error{.kind = kind, .text = "Said so"};
            f.newestReading = now - Seconds{age};
        };
    };
    using enum Error::Kind;
    expectFindings({
        {"no account",
         [](Facts& f) { f = {.now = now, .path = f.path, .hasAccount = false}; },
         {"problem account"},
         "No glucose account"},
        {"refused", failing(credentialsRefused), {"problem account"}, "password"},
        {"locked", failing(accountLocked), {"problem account"}, "locked"},
        {"session", failing(sessionExpired), {"problem account"}, "session"},
        {"person", failing(accountActionRequired), {"problem account"}, "needs attention: Said so"},
        {"network, fresh", failing(transport), {"caution account"}, "cannot be reached"},
        {"network, old", failing(transport, 900), {"problem account", "problem data"}},
        {"wait", failing(rateLimited), {"caution account"}, "to wait"},
        {"none there", failing(noReadings), {"caution account"}, "no readings"},
        {"5xx", failing(serverTrouble), {"caution account"}, "an error: Said so"},
        {"other", failing(other), {"caution account"}},
        {"899 s", failing(rateLimited, 899), {"caution account"}},
        {"stale", [](Facts& f) { f.newestReading = now - Seconds{900}; }, {"problem data"}, "15 minutes old"},
        {"expired",
         [](Facts& f) { f.newestReading = now - Seconds{7200}; },
         {"problem data"},
         "no reading for 2 hours"},
        {"ahead", [](Facts& f) { f.newestReading = now + Seconds{180}; }, {"problem data"}, "3 minutes in"},
        {"a little ahead", [](Facts& f) { f.newestReading = now + Seconds{60}; }},
        {"no reading yet", [](Facts& f) { f.newestReading.reset(); }, {"problem data"}, "No reading"},
        {"not running, not asked",
         [](Facts& f) {
             f.newestReading.reset();
             f.running = false;
         },
         {"problem tidewell"}},
        {"failing from the start",
         [](Facts& f) {
             f.newestReading.reset();
             f.serviceError = Error{.kind = transport};
         },
         {"problem account"}},
    });
}

TEST(AlertHealth, saysWhichPreferencesHoldAlertsBack)
{
    const auto quiet = [](std::int64_t from, std::int64_t to, bool lows) {
        return [=](Facts& f) {
            f.settings.quietHoursEnabled = true;
            f.settings.quietHoursStartMinutes = from;
            f.settings.quietHoursEndMinutes = to;
            f.settings.allowLowAlertsDuringQuietHours = lows;
        };
    };
    expectFindings({
        {"off",
         [](Facts& f) {
             f.settings = {.alertsEnabled = false, .alertOnLowThreshold = false, .quietHoursEnabled = true};
             f.snoozedUntil = now + Seconds{60};
         },
         {"problem alerts"},
         "Alerts are off"},
        {"each category",
         [](Facts& f) {
             f.settings = {.alertOnLowThreshold = false,
                           .alertOnHighThreshold = false,
                           .alertOnRapidFall = false,
                           .alertOnRapidRise = false,
                           .alertOnMissingData = false};
         },
         {"caution low", "caution rapidFall", "caution high", "caution rapidRise", "caution missingData"},
         "Low alerts are off."},
        {"crossed",
         [](Facts& f) { f.settings.lowGlucoseThreshold = 300; },
         {"caution thresholds"},
         "(300 mg/dL) is not below the high one (270 mg/dL)"},
        {"quiet now", quiet(470, 480, false), {"caution quietHours"}, "07:50 to 08:00: now no alert"},
        {"quiet now but lows", quiet(470, 480, true), {"caution quietHours"}, "now only lows"},
        {"quiet at night",
         quiet(1320, 420, false),
         {"caution quietHours"},
         "22:00 to 07:00: no alert comes th"},
        {"quiet at night but lows", quiet(1320, 420, true)},
        {"quiet all day", quiet(0, 0, false), {"problem quietHours"}, "all day"},
        {"quiet all day but lows", quiet(300, 300, true), {"caution quietHours"}, "only lows"},
        {"quiet nonsense", quiet(-5, 5000, false), {"problem quietHours"}, "not valid"},
        {"quiet nonsense, not now", quiet(2000, 420, false), {"caution quietHours"}, "not valid"},
        {"snoozed",
         [](Facts& f) { f.snoozedUntil = now + Seconds{1800}; },
         {"caution snooze"},
         "Low, high and rapid-change alerts snoozed until 08:23."},
        {"snooze of nothing",
         [](Facts& f) {
             f.settings = {
                 .snoozeLowAlerts = false, .snoozeHighAlerts = false, .snoozeRapidChangeAlerts = false};
             f.snoozedUntil = now + Seconds{1800};
         }},
        {"snooze over", [](Facts& f) { f.snoozedUntil = now; }},
    });
}

TEST(AlertHealth, showsThresholdsInTheUnitOnDisplayAndTimesOfTheZone)
{
    Facts facts = wellFacts();
    facts.settings.measurementUnit = "mmol/L";
    facts.zone = TimeZone::named("America/New_York").value();
    facts.snoozedUntil = now + Seconds{1800};
    std::string all;
    for (const AlertFinding& finding : alertFindings(facts))
        all += line(finding) + "\n";
    EXPECT_TRUE(all.contains("at 4.0 mmol/L and below")) << all;
    EXPECT_TRUE(all.contains("snoozed until 03:23.")) << all;
}

}  // namespace
}  // namespace tidewell
