#include "platform/linux/SharedPollerState.h"

#include <QDBusMetaType>
#include <algorithm>
#include <cmath>

#include "sources/ReadingLimits.h"
#include "statusbar/StatusBarStateNames.h"

namespace tidewell {
namespace {

/// Of any text that is taken. Titles, messages and remedies are a sentence or two each.
constexpr qsizetype longestText = 500;
constexpr qsizetype longestTrendWord = 64;
/// What a sample may stand for; sensors have one or five minutes, and gaps none.
constexpr uint longestSample = 900;
/// How far ahead of the clock a reading may be: an old one must not pass for new for long.
constexpr Seconds readingTolerance{300};
/// The service's longest wait, and the longest backoff, are an hour.
constexpr Seconds longestPlan{3600};
/// More would not be tried.
constexpr uint mostRefusedSignIns = 100;

/// Rounded down, so that the moment stays within its second.
qlonglong milliseconds(Date date)
{
    // Moments that were milliseconds already stay what they were.
    return static_cast<qlonglong>(std::floor(unixSeconds(date) * 1000 + 0.001));
}

/// Text as it may stand in a message, and on a terminal.
QString cleanText(QString text, qsizetype longest)
{
    text.truncate(longest);
    for (QChar& character : text)
        if (character < u' ' || (character >= QChar{0x7f} && character < QChar{0xa0}))
            character = u' ';
    return text;
}

QString busText(std::string_view text)
{
    return cleanText(QString::fromUtf8(text.data(), static_cast<qsizetype>(text.size())), longestText);
}

std::string takenText(const QVariantMap& properties, const char* name)
{
    return cleanText(properties.value(QLatin1String(name)).toString(), longestText).toStdString();
}

/// A moment no later than `latest`.
std::optional<Date> takenMoment(const QVariantMap& properties, const char* name, Date latest)
{
    const qlonglong value = properties.value(QLatin1String(name)).toLongLong();
    const Date date = dateFromUnix(static_cast<double>(value) / 1000);
    return value > 0 && date <= latest ? std::optional{date} : std::nullopt;
}

std::optional<GlucoseReading> possibleReading(const SharedReading& shared, Date now)
{
    const auto source = glucoseProvider(shared.source.toStdString());
    const Date date = dateFromUnix(static_cast<double>(shared.time) / 1000);
    if (!source || !isPossibleValue(shared.mgdL) || !isPossibleTime(date, now) ||
        date > now + readingTolerance || shared.sampleDuration < 1 || shared.sampleDuration > longestSample ||
        shared.trend.size() > longestTrendWord)
        return std::nullopt;
    return makeReading(shared.mgdL, cleanText(shared.trend, longestTrendWord).toStdString(), date,
                       Seconds{static_cast<double>(shared.sampleDuration)}, *source);
}

/// A state without anything, which says what properties there are and of which type.
const QVariantMap& allProperties()
{
    static const QVariantMap properties = [] {
        QVariantMap all = sharedProperties({}, {});
        for (const char* name : {"Profile", "Account"})
            all.insert(QLatin1String(name), QString{});
        for (const char* name : {"Revision", "ReadingsRevision"})
            all.insert(QLatin1String(name), uint{0});
        all.insert(QStringLiteral("PollingSince"), qlonglong{0});
        return all;
    }();
    return properties;
}

}  // namespace

QDBusArgument& operator<<(QDBusArgument& argument, const SharedReading& value)
{
    argument.beginStructure();
    argument << value.time << value.mgdL << value.trend << value.sampleDuration << value.source;
    argument.endStructure();
    return argument;
}

const QDBusArgument& operator>>(const QDBusArgument& argument, SharedReading& value)
{
    argument.beginStructure();
    argument >> value.time >> value.mgdL >> value.trend >> value.sampleDuration >> value.source;
    argument.endStructure();
    return argument;
}

qlonglong sharedMoment(const std::optional<Date>& date) { return date ? milliseconds(*date) : 0; }

QVariantMap sharedProperties(const StatusBarState& state, const PollingProgress& progress)
{
    const GlucoseReading reading = state.presentedReading.value_or(GlucoseReading{});
    const ErrorInfo problem = state.currentError.value_or(ErrorInfo{});
    const auto text = [](std::string_view value) { return QVariant{busText(value)}; };
    const auto moment = [](const std::optional<Date>& date) { return QVariant{sharedMoment(date)}; };
    return {
        {QStringLiteral("StatusTitle"), text(state.statusTitle)},
        {QStringLiteral("TitleColor"), text(rawValue(state.titleColor))},
        {QStringLiteral("IconState"), text(rawValue(state.iconState))},
        {QStringLiteral("Activity"), text(state.activity ? rawValue(*state.activity) : "")},
        {QStringLiteral("Freshness"), text(rawValue(state.freshness))},
        {QStringLiteral("AccessibilityValue"), text(state.accessibilityValue)},
        {QStringLiteral("ReadingTime"),
         moment(state.presentedReading ? std::optional{reading.date} : std::nullopt)},
        {QStringLiteral("ReadingValue"), reading.mgdL},
        {QStringLiteral("ReadingTrend"), text(reading.trendString)},
        {QStringLiteral("ReadingArrow"), text(reading.trendArrow)},
        {QStringLiteral("ReadingCount"), static_cast<uint>(state.glucoseHistory.size())},
        {QStringLiteral("ReadingsChangedSince"), qlonglong{0}},
        {QStringLiteral("ProblemTitle"), text(problem.title)},
        {QStringLiteral("ProblemMessage"), text(problem.message)},
        {QStringLiteral("ProblemRemediation"), text(problem.remediation)},
        {QStringLiteral("ProblemNeedsSignIn"), problem.needsSignIn},
        {QStringLiteral("ProblemCanReconnect"), problem.canReconnect},
        {QStringLiteral("HasWarning"), state.hasWarning},
        {QStringLiteral("AlertsSnoozedUntil"), moment(state.alertsSnoozedUntil)},
        {QStringLiteral("NextRetryTime"), moment(state.nextRetryAt)},
        {QStringLiteral("LastUpdateTime"), moment(state.lastUpdateAt)},
        {QStringLiteral("NextPollTime"), moment(progress.nextPollDate)},
        {QStringLiteral("RetryNotBefore"), moment(progress.retryNotBefore)},
        {QStringLiteral("RefusedSignIns"), static_cast<uint>(progress.refusedSignIns)},
        {QStringLiteral("WaitsForPerson"), progress.requiresAccountAction},
    };
}

std::optional<Date> firstDifference(const std::vector<GlucoseReading>& before,
                                    const std::vector<GlucoseReading>& now)
{
    if (now.empty())
        return before.empty() ? std::nullopt : std::optional{Date{}};
    auto old = std::ranges::lower_bound(before, now.front().date, {}, &GlucoseReading::date);
    const auto [left, right] = std::ranges::mismatch(old, before.end(), now.begin(), now.end());
    if (left == before.end() && right == now.end())
        return std::nullopt;
    if (left == before.end())
        return right->date;
    return right == now.end() ? left->date : std::min(left->date, right->date);
}

QList<SharedReading> sharedReadings(const std::vector<GlucoseReading>& history, qlonglong since)
{
    QList<SharedReading> readings;
    const std::size_t first = history.size() > mostSharedReadings ? history.size() - mostSharedReadings : 0;
    for (std::size_t i = first; i < history.size(); ++i) {
        const GlucoseReading& reading = history[i];
        const qlonglong time = milliseconds(reading.date);
        if (time >= since)
            readings.append({.time = time,
                             .mgdL = reading.mgdL,
                             .trend = busText(reading.trendString),
                             .sampleDuration = static_cast<uint>(reading.sampleDuration.count()),
                             .source = busText(rawValue(reading.source))});
    }
    return readings;
}

QVariantMap knownProperties(const QVariantMap& properties)
{
    QVariantMap known;
    for (auto entry = properties.cbegin(); entry != properties.cend(); ++entry) {
        const auto expected = allProperties().constFind(entry.key());
        if (expected != allProperties().cend() && expected->metaType() == entry->metaType())
            known.insert(entry.key(), entry.value());
    }
    return known;
}

FollowedState followedState(const QVariantMap& properties, Date now)
{
    FollowedState state;
    state.activity = statusBarActivity(takenText(properties, "Activity"));
    ErrorInfo problem{.title = takenText(properties, "ProblemTitle"),
                      .message = takenText(properties, "ProblemMessage"),
                      .remediation = takenText(properties, "ProblemRemediation"),
                      .needsSignIn = properties.value(QStringLiteral("ProblemNeedsSignIn")).toBool(),
                      .canReconnect = properties.value(QStringLiteral("ProblemCanReconnect")).toBool()};
    if (!problem.title.empty() || !problem.message.empty())
        state.currentError = std::move(problem);
    state.nextRetryAt = takenMoment(properties, "NextRetryTime", now + longestPlan);
    state.lastUpdateAt = takenMoment(properties, "LastUpdateTime", now + Seconds{1});
    state.progress = {.nextPollDate = takenMoment(properties, "NextPollTime", now + longestPlan),
                      .retryNotBefore = takenMoment(properties, "RetryNotBefore", now + longestPlan),
                      .refusedSignIns = std::min(properties.value(QStringLiteral("RefusedSignIns")).toUInt(),
                                                 mostRefusedSignIns),
                      .requiresAccountAction = properties.value(QStringLiteral("WaitsForPerson")).toBool()};
    return state;
}

std::optional<std::vector<GlucoseReading>> readingsIn(const QDBusMessage& answer, Date now)
{
    if (answer.type() != QDBusMessage::ReplyMessage || answer.signature() != QLatin1String("a(xdsus)"))
        return std::nullopt;
    const auto argument = answer.arguments().at(0).value<QDBusArgument>();
    std::vector<GlucoseReading> readings;
    argument.beginArray();
    for (std::size_t count = 0; !argument.atEnd() && count < mostSharedReadings; ++count) {
        SharedReading shared;
        argument >> shared;
        if (auto reading = possibleReading(shared, now))
            readings.push_back(std::move(*reading));
    }
    argument.endArray();
    return readings;
}

}  // namespace tidewell
