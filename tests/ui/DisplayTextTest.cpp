#include "ui/DisplayText.h"

#include <gtest/gtest.h>
#include <QCoreApplication>
#include <QFile>
#include <QLocale>
#include <QRegularExpression>
#include <QTranslator>
#include <algorithm>
#include <array>
#include <set>

#include "app/SignInAdvice.h"
#include "app/TermsAgreement.h"
#include "history/GlucoseHistoryError.h"
#include "insights/InsightsCollection.h"
#include "insights/InsightsReportQuality.h"
#include "insights/InsightsTexts.h"
#include "polling/AlertHealth.h"
#include "polling/MissingDataAlert.h"
#include "polling/PollFailure.h"
#include "sources/DexcomAPI.h"
#include "sources/LibreLinkUpAPI.h"
#include "statusbar/SilentLows.h"
#include "statusbar/StatusItemContent.h"
#include "ui/CoreTexts.h"
#include "ui/WindowWalk.h"

namespace tidewell {
namespace {

constexpr Date now = dateFromUnix(1'772'460'000);

/// Answers the core's sources, and nothing else, in letters that are not in any of its texts. Whatever Latin
/// letters are left were not translated, also inside what was filled in.
class GreekTranslator final : public QTranslator {
public:
    GreekTranslator() { QCoreApplication::installTranslator(this); }
    ~GreekTranslator() override { QCoreApplication::removeTranslator(this); }
    GreekTranslator(const GreekTranslator&) = delete;
    GreekTranslator& operator=(const GreekTranslator&) = delete;
    [[nodiscard]] bool isEmpty() const override { return false; }
    [[nodiscard]] QString translate(const char* context, const char* source, const char*, int) const override
    {
        if (std::string_view{context} != "Core")
            return {};
        QString answer = QString::fromUtf8(source);
        for (QChar& letter : answer)
            if (letter.isLetter() && letter.unicode() < 128)
                letter = QChar{static_cast<char16_t>(u'α' + letter.unicode() % 24)};
        return answer;
    }
};

template <class Enum>
std::vector<Enum> upTo(Enum last)
{
    std::vector<Enum> all;
    for (int i = 0; i <= static_cast<int>(last); ++i)
        all.push_back(static_cast<Enum>(i));
    return all;
}

constexpr std::array providers{GlucoseProvider::dexcom, GlucoseProvider::libreLinkUp};

/// Texts as they are shown, each once.
class CoreTexts {
public:
    void add(std::string_view text)
    {
        if (!text.empty())
            texts_.emplace(text);
    }
    void add(const ErrorInfo& error)
    {
        add(error.title);
        add(error.message);
        add(error.remediation);
    }
    void add(const std::vector<MenuItem>& menu)
    {
        for (const MenuItem& item : menu) {
            add(item.title);
            add(item.accessibleText);
            for (const std::string& line : item.details)
                add(line);
            add(item.children);
        }
    }
    void add(const SignInProblem& problem)
    {
        add(problem.title);
        add(problem.message);
        for (const std::string& cause : problem.causes)
            add(cause);
        add(problem.remedy);
    }
    void add(const std::vector<AlertFinding>& findings)
    {
        for (const AlertFinding& finding : findings) {
            add(finding.text);
            add(finding.remedy);
        }
    }
    [[nodiscard]] const std::set<std::string>& all() const { return texts_; }

private:
    std::set<std::string> texts_{};
};

std::vector<std::string> serviceErrors()
{
    std::vector<std::string> texts;
    for (const auto kind : upTo(DexcomError::Kind::transport))
        for (const std::string_view message : {"Please check your credentials.", "Username is required",
                                               "Password is required", "Expected a session id"})
            texts.push_back(
                description(DexcomError{.kind = kind, .message = std::string{message}, .httpStatus = 503}));
    for (const auto kind : upTo(LibreLinkUpError::Kind::invalidReading))
        texts.push_back(description(LibreLinkUpError{.kind = kind, .httpStatus = 503}));
    for (const auto kind : upTo(HttpError::Kind::badAnswer))
        texts.emplace_back(description(HttpError{.kind = kind}));
    return texts;
}

std::vector<ErrorInfo> menuErrors()
{
    std::vector<ErrorInfo> errors{signInRequiredStatus(), clockStatus(Seconds{4000})};
    for (const GlucoseProvider provider : providers) {
        errors.push_back(noDataStatus(provider));
        errors.push_back(noNewDataStatus(provider));
        for (const auto kind : upTo(GlucoseAPIError::Kind::other))
            for (const std::string& text : serviceErrors())
                for (const bool reachable : {false, true})
                    if (kind != GlucoseAPIError::Kind::noReadings)
                        errors.push_back(
                            pollFailureVerdict({.kind = kind, .text = text}, {.provider = provider,
                                                                              .signedInAgain = true,
                                                                              .refusedSignIns = 2,
                                                                              .networkReachable = reachable})
                                .status);
    }
    return errors;
}

void addItems(CoreTexts& texts)
{
    StatusBarState state{.lastUpdateAt = now};
    const auto addState = [&](const AppSettings& settings = {}) {
        for (const bool insights : {false, true}) {
            const auto content = statusItemContent(state, settings, now, TimeZone::utc(),
                                                   {.insights = insights, .settings = insights});
            texts.add(content.menu);
            texts.add(menuOfLines(content.menu).back().title);
            for (const std::string& text :
                 {content.tooltipText, content.accessibilityHelp, content.accessibilityValue})
                texts.add(text);
        }
    };
    for (const double age : {0.0, 400.0, 1000.0, 3500.0, 3700.0, 7260.0, 90'000.0, 200'000.0})
        for (const std::string_view trend : {"DoubleUp", "SingleUp", "FortyFiveUp", "Flat", "FortyFiveDown",
                                             "SingleDown", "DoubleDown", "?"})
            for (const double mgdL : {60.0, 120.0, 300.0})
                for (const std::string_view unit : {"mg/dL", "mmol/L"}) {
                    const auto reading = makeReading(mgdL, std::string{trend}, now - Seconds{age},
                                                     Seconds{300}, GlucoseProvider::dexcom);
                    const AppSettings settings{.measurementUnit = std::string{unit}};
                    state.presentedReading = reading;
                    state.freshness = readingFreshness(reading.date, now);
                    state.glucoseHistory = {makeReading(mgdL - 4, "Flat", reading.date - Seconds{300},
                                                        Seconds{300}, GlucoseProvider::dexcom),
                                            reading};
                    state.accessibilityValue =
                        spokenStatus(spokenGlucose(reading, now, settings), std::nullopt, menuErrors()[0]);
                    addState(settings);
                    texts.add(spokenGraphReading(reading, settings, TimeZone::utc()));
                }
    state = {};
    for (const ErrorInfo& error : menuErrors()) {
        state.currentError = error;
        state.nextRetryAt = now;
        state.accessibilityValue = spokenStatus(spokenGlucose({}, now, {}), std::nullopt, error);
        addState();
    }
    state = {.updateAvailable = true};
    for (const auto activity : upTo(StatusBarActivity::authenticating)) {
        state.activity = activity;
        state.accessibilityValue = spokenStatus(spokenGlucose({}, now, {}), activity, std::nullopt);
        addState();
    }
    state = {.alertsSnoozedUntil = now + Seconds{600}};
    for (int i = 0; i < 8; ++i)
        addState({.snoozeLowAlerts = (i & 1) != 0,
                  .snoozeHighAlerts = (i & 2) != 0,
                  .snoozeRapidChangeAlerts = (i & 4) != 0});
}

void addFindings(CoreTexts& texts)
{
    std::vector<AlertHealthFacts> all(1, {.now = now, .newestReading = now});
    const auto one = [&](auto change) {
        AlertHealthFacts facts = all.front();
        facts.path = {.serverAnswers = true,
                      .serverName = "dunst",
                      .inhibited = false,
                      .soundOutput = true,
                      .muted = false,
                      .volume = 0.8};
        change(facts);
        all.push_back(std::move(facts));
    };
    one([](auto&) {});
    one([](auto& f) { f.path.serverHangs = true; });
    one([](auto& f) { f.path.serverAnswers = false; });
    one([](auto& f) { f.path.lastAlertNotShown = true; });
    one([](auto& f) { f.path.serverName.clear(), f.path.serverPlaysSound = true; });
    one([](auto& f) { f.path.inhibited = true; });
    one([](auto& f) { f.path.soundOutput.reset(); });
    one([](auto& f) { f.path.soundOutput = false; });
    one([](auto& f) { f.path.muted = true; });
    one([](auto& f) { f.path.volume = 0; });
    one([](auto& f) { f.path.volume = 0.1; });
    one([](auto& f) { f.path.soundTheme = false; });
    one([](auto& f) { f.path.lastAlertNotHeard = true; });
    one([](auto& f) { f.path.suspendsAfter = Seconds{1800}; });
    one([](auto& f) { f.hasAccount = false; });
    one([](auto& f) { f.running = false; });
    one([](auto& f) { f.newestReading.reset(); });
    for (const double age : {-4000.0, 120.0, 1000.0, 8000.0})
        one([&](auto& f) { f.newestReading = now - Seconds{age}; });
    for (const auto kind : upTo(GlucoseAPIError::Kind::other))
        for (const std::string& text : {std::string{}, serviceErrors().back()})
            one([&](auto& f) { f.serviceError = {.kind = kind, .text = text}; });
    one([](auto& f) { f.settings.alertsEnabled = false; });
    one([](auto& f) {
        f.settings.alertOnLowThreshold = f.settings.alertOnHighThreshold = f.settings.alertOnRapidFall =
            f.settings.alertOnRapidRise = f.settings.alertOnMissingData = false;
        f.settings.lowGlucoseThreshold = 300;
    });
    for (const bool lows : {false, true})
        for (const std::pair<std::int64_t, std::int64_t> span :
             {std::pair{0, 0}, std::pair{0, 1439}, std::pair{840, 841}, std::pair{9999, 0}})
            one([&](auto& f) {
                f.settings.quietHoursEnabled = true;
                f.settings.allowLowAlertsDuringQuietHours = lows;
                std::tie(f.settings.quietHoursStartMinutes, f.settings.quietHoursEndMinutes) = span;
            });
    one([](auto& f) { f.snoozedUntil = now + Seconds{600}; });
    for (const AlertHealthFacts& facts : all) {
        texts.add(alertFindings(facts));
        for (const auto& warning :
             silentLowWarnings(facts.settings, facts.snoozedUntil, facts.now, facts.zone))
            texts.add(warning.text);
    }
}

void addAlerts(CoreTexts& texts)
{
    const auto add = [&](const GlucoseAlertContent& content) {
        texts.add(content.title);
        texts.add(content.body);
    };
    const auto reading = makeReading(60, "DoubleDown", now, Seconds{300}, GlucoseProvider::dexcom);
    for (const auto kind : upTo(GlucoseAlertKind::rapidRise))
        add(GlucoseAlertEvaluator::content(kind, reading, {}));
    MissingDataAlert missing;
    missing.beginRun(now, 1);
    add(missing.content({}, now + Seconds{900}, TimeZone::utc()));
    missing.recordReading(now, now);
    for (const auto& problem : menuErrors())
        add(missing.content(problem, now + Seconds{4000}, TimeZone::utc()));
    missing.recordReading(now + Seconds{9000}, now);
    add(missing.content({}, now + Seconds{900}, TimeZone::utc()));
}

void addInsights(CoreTexts& texts)
{
    for (const std::string_view text :
         {insightsLoadingText, insightsCalculatingText, insightsUnavailableTitle, insightsUnavailableText,
          insightsEmptyTitle, insightsMeanExplanation, insightsDeviationExplanation, insightsBandsExplanation,
          agpConstructionTitle, insightsProgressTitle, insightsSavingAdvice, insightsSavingOffText})
        texts.add(text);
    texts.add(agpConstruction());
    for (const GlucoseUnits unit : {GlucoseUnits::mgdL, GlucoseUnits::mmolL}) {
        texts.add(agpExplanation(unit));
        texts.add(spokenName(unit));
        for (const auto band : upTo(InsightsBand::veryHigh)) {
            texts.add(bandTitle(band));
            texts.add(bandLimits(band, unit));
        }
        for (const auto reason : upTo(InsightsGMIUnavailableReason::insufficientCoverage))
            for (const std::optional<double> value : {std::optional<double>{}, std::optional{6.5}}) {
                texts.add(gmiCaption({.available = value, .unavailable = reason}));
                texts.add(gmiExplanation({.available = value, .unavailable = reason}, unit));
            }
    }
    for (const double minutes : {1.0, 60.0, 65.0, 1440.0, 1500.0, 2880.0, 20'000.0}) {
        texts.add(insightsDurationText(Seconds{60 * minutes}));
        texts.add(insightsPerDayText(std::min(minutes / 1440, 1.0)));
    }
    for (const auto status : upTo(InsightsCollectionStatus::ready))
        for (const double hours : {1.0, 30.0, 60.0, 71.5}) {
            const auto readiness =
                insightsReadiness({.collectionStatus = status,
                                   .progress = InsightsCollectionProgress{.collected = Seconds{3600 * hours},
                                                                          .coverage = 0.5}});
            texts.add(readiness.title);
            texts.add(readiness.text);
            texts.add(readiness.progress);
        }
    for (int i = 0; i < 16; ++i) {
        InsightsSummary summary{.interval = {now - Seconds{86'400}, now}, .readingCount = 1};
        summary.coverage = {.coveredDuration = Seconds{(i & 1) != 0 ? 1.0 : 0.0},
                            .totalDuration = Seconds{1}};
        summary.collectionCoverage = {.coveredDuration = Seconds{(i & 2) != 0 ? 1.0 : 0.0},
                                      .totalDuration = Seconds{1},
                                      .hasMissingNightWarning = (i & 4) != 0};
        const auto start = (i & 8) != 0 ? std::optional{now - Seconds{30 * 86'400.0}} : std::nullopt;
        if (const auto notice = insightsReportQuality(summary, start))
            texts.add(notice->message);
    }
}

void addRest(CoreTexts& texts)
{
    for (const auto error : upTo(GlucoseHistoryError::deletionIncomplete))
        texts.add(description(error));
    for (const auto error : upTo(GlucoseReadingError::invalidTimestamp))
        texts.add(description(error));
    for (const auto kind : upTo(ConfigurationError::Kind::invalidConfiguration))
        texts.add(description(ConfigurationError{.kind = kind}));
    for (const TermsSection& section : termsOfUse()) {
        texts.add(section.title);
        texts.add(section.text);
    }
    texts.add(nobodySharesProblem());
    for (const GlucoseProvider provider : providers) {
        texts.add(noReadingsProblem(provider));
        for (const auto kind : upTo(GlucoseAPIError::Kind::other))
            for (const std::string& text : serviceErrors())
                for (const std::string_view username : {"ada", "0171 2345678"})
                    texts.add(signInProblem(
                        provider, {.kind = kind, .text = text, .retryAfter = Seconds{300}}, username));
    }
}

TEST(DisplayText, reachesEveryTextOfTheCore)
{
    CoreTexts texts;
    addItems(texts);
    addFindings(texts);
    addAlerts(texts);
    addInsights(texts);
    addRest(texts);
    ASSERT_GT(texts.all().size(), 500U);

    const GreekTranslator greek;
    // What stays as it is: units, names of services and servers, and hours behind a sparkline.
    const QRegularExpression kept{
        QStringLiteral("mg/dL|mmol/L|Dexcom( Share)?|FreeStyle Libre|LibreLinkUp|dunst|Tidewell")};
    const QRegularExpression word{QStringLiteral("[A-Za-z]{2,}")};
    for (const std::string& text : texts.all()) {
        const QString rest = displayText(text).remove(kept);
        EXPECT_FALSE(word.match(rest).hasMatch()) << text << "\n  shows as " << rest.toStdString();
    }
}

/// The sentences between quotation marks in a source file, but for those of the log.
std::vector<std::string> sentencesIn(const QString& path)
{
    QFile file{QStringLiteral(TIDEWELL_SOURCES "/") + path};
    EXPECT_TRUE(file.open(QIODevice::ReadOnly)) << path.toStdString();
    QString code = QString::fromUtf8(file.readAll());
    code.remove(QRegularExpression{QStringLiteral("\\w*[lL]og(_|\\{[^}]*\\})?\\.\\w+\\([^;]*;")});
    static const QRegularExpression literal{QStringLiteral(R"re(("(?:[^"\\]|\\.)*"\s*)+)re")};
    std::vector<std::string> found;
    for (auto matches = literal.globalMatch(code); matches.hasNext();) {
        QString text = matches.next().captured().trimmed();
        text = text.mid(1, text.size() - 2)
                   .remove(QRegularExpression{QStringLiteral("\"\\s+\"")})
                   .replace(QStringLiteral("\\\""), QStringLiteral("\""))
                   .replace(QStringLiteral("{}"), QStringLiteral("7"));
        if (text.size() > 1 && (text[0].isUpper() || text[0] == u'7') && text.contains(u' ') &&
            text.endsWith(u'.'))
            found.push_back(text.toStdString());
    }
    return found;
}

TEST(DisplayText, reachesWhatOnlyALongRunBringsUp)
{
    const GreekTranslator greek;
    const QRegularExpression word{QStringLiteral("[A-Za-z]{2,}")};
    for (const char* const path : {"app/AppDelegate.cpp", "app/OnboardingFlow.cpp", "app/SettingsModel.cpp",
                                   "app/SignInAdvice.cpp", "platform/linux/AutostartFile.cpp",
                                   "program/DoctorFindings.cpp", "program/InsightsReportController.cpp"}) {
        const auto sentences = sentencesIn(QString::fromLatin1(path));
        EXPECT_FALSE(sentences.empty()) << path;
        for (const std::string& text : sentences)
            EXPECT_FALSE(word.match(displayText(text)).hasMatch())
                << path << ": " << text << "\n  shows as " << displayText(text).toStdString();
    }
}

TEST(DisplayText, leavesTextsAloneThatAreNotTheCores)
{
    const GreekTranslator greek;
    const std::string longText(100'000, '.');
    for (const std::string& text :
         {std::string{}, std::string{"gnome-shell"}, std::string{"Somebody's hours"}, std::string{"%1 %2 %9"},
          std::string{"A. B. C. D. E. F. G. H."}, std::string{"\n\n  . \n"}, std::string{"\xff\xfe . \xc3"},
          longText})
        EXPECT_EQ(displayText(text), QString::fromUtf8(text.data(), static_cast<qsizetype>(text.size())));
}

TEST(DisplayText, fillsInWhatTheCoreFilledIn)
{
    EXPECT_EQ(displayText("Next retry at 14:05"), QStringLiteral("Next retry at 14:05"));
    const GreekTranslator greek;
    const auto filled = [](const std::string& text) { return displayText(text).toStdString(); };
    EXPECT_TRUE(filled("Next retry at 14:05").ends_with(" 14:05"));
    // What stands in a gap is no source of another one.
    EXPECT_TRUE(filled("Next retry at %1").ends_with(" %1"));
    EXPECT_TRUE(filled("65 mg/dL ↓↓ (low threshold 70 mg/dL)").starts_with("65 mg/dL ↓↓ ("));
    // Nested without end, and many sentences: bounded.
    std::string nested = "Low";
    for (int i = 0; i < 2000; ++i)
        nested = "Login failed: " + nested;
    EXPECT_FALSE(filled(nested).empty());
    for (const std::string_view piece : {".", "a. ", "1 ", "Low. ", "%1 h "}) {
        std::string many;
        while (many.size() + piece.size() < 8192)
            many += piece;
        EXPECT_GE(displayText(many).size(), 8000);
    }
}

/// What a remedy sends the person to, by the windows' own sources.
constexpr auto controls = std::to_array<std::pair<const char*, const char*>>({
    {"tidewell::SettingsAlertsPage", "Show &alerts"},
    {"tidewell::SettingsAlertsPage", "&Low glucose"},
    {"tidewell::SettingsAlertsPage", "&High glucose"},
    {"tidewell::SettingsAlertsPage", "Rapid &fall"},
    {"tidewell::SettingsAlertsPage", "Rapid &rise"},
    {"tidewell::SettingsAlertsPage", "&No data for 15 minutes"},
    {"tidewell::SettingsAlertsPage", "Let lo&w alerts through"},
    {"tidewell::SettingsAccountPage", "&Reconnect"},
    {"tidewell::SettingsGeneralPage", "Start Tidewell when I &log in"},
    {"tidewell::SettingsWindow", "General"},
    {"tidewell::SettingsWindow", "Glucose"},
    {"tidewell::SettingsWindow", "Insights"},
    {"tidewell::SettingsWindow", "Alerts"},
    {"tidewell::SettingsWindow", "Account"},
});

/// The title of the control that is called so in English; empty when there is none. Those of the menu are
/// texts of the core.
QString controlTitle(const QString& name)
{
    for (const auto& [context, source] : controls)
        if (QString::fromLatin1(source).remove(u'&') == name)
            return QCoreApplication::translate(context, source).remove(u'&');
    for (const char* const source : coreTexts())
        if (QString::fromUtf8(source) == name)
            return displayText(source);
    return {};
}

TEST(DisplayText, namesTheControlsAsTheWindowsDo)
{
    const SpokenLanguage german{QStringLiteral("de")};
    const QRegularExpression name{QStringLiteral("“([^”]+)”|, tab (\\w+)")};
    std::set<QString> named;
    for (const char* const source : coreTexts()) {
        const QString text = QString::fromUtf8(source);
        if (!text.contains(u"settings, tab ") && !text.contains(u"” in the menu"))
            continue;
        const QString shown = displayText(source);
        for (auto names = name.globalMatch(text); names.hasNext();) {
            const auto match = names.next();
            const QString control = match.captured(match.captured(1).isEmpty() ? 2 : 1);
            const QString title = controlTitle(control);
            EXPECT_FALSE(title.isEmpty()) << source;
            EXPECT_TRUE(shown.contains(u'„' + title + u'“'))
                << shown.toStdString() << "\n  lacks " << title.toStdString();
            named.insert(control);
        }
    }
    for (const auto& [context, source] : controls)
        EXPECT_TRUE(named.contains(QString::fromLatin1(source).remove(u'&'))) << source;
}

TEST(DisplayText, knowsNoSourceTwice)
{
    std::set<std::string_view> seen;
    for (const char* const source : coreTexts())
        EXPECT_TRUE(seen.insert(source).second) << source;
}

}  // namespace
}  // namespace tidewell
