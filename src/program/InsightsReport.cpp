#include "program/InsightsReport.h"

#include <fmt/format.h>

#include <algorithm>
#include <boost/json/array.hpp>
#include <cmath>
#include <iterator>
#include <ranges>

#include "insights/InsightsTexts.h"
#include "support/Json.h"

namespace tidewell {

namespace {

json::value jsonOf(const std::optional<double>& number)
{
    return number ? json::value(*number) : json::value(nullptr);
}

json::string textOf(Date date)
{
    std::string text;
    appendStoredDate(text, date);
    return json::string{text};
}

json::object jsonOf(const DateInterval& interval)
{
    return {{"start", textOf(interval.start)}, {"end", textOf(interval.end)}};
}

std::string dateText(std::chrono::sys_days date) { return isoText(Date{date}).substr(0, 10); }

json::object jsonOf(const InsightsCoverage& coverage)
{
    json::array days;
    for (const auto& [date, covered, total] : coverage.days)
        days.push_back(json::object{{"date", dateText(date)},
                                    {"coveredDuration", covered.count()},
                                    {"totalDuration", total.count()}});
    json::array hours;
    for (const auto& [hour, covered, total] : coverage.hours)
        hours.push_back(json::object{
            {"hour", hour}, {"coveredDuration", covered.count()}, {"totalDuration", total.count()}});
    return {{"coveredDuration", coverage.coveredDuration.count()},
            {"totalDuration", coverage.totalDuration.count()},
            {"days", std::move(days)},
            {"hours", std::move(hours)},
            {"hasMissingNightWarning", coverage.hasMissingNightWarning}};
}

json::object jsonOf(const InsightsAGP& agp)
{
    json::array bins;
    for (const auto& [startMinute, dayCount, percentiles] : agp.bins) {
        json::object bin{{"startMinute", startMinute}, {"dayCount", dayCount}, {"percentiles", nullptr}};
        if (percentiles)
            bin["percentiles"] = json::object{{"p5Mgdl", percentiles->p5Mgdl},
                                              {"p25Mgdl", percentiles->p25Mgdl},
                                              {"medianMgdl", percentiles->medianMgdl},
                                              {"p75Mgdl", percentiles->p75Mgdl},
                                              {"p95Mgdl", percentiles->p95Mgdl}};
        bins.push_back(std::move(bin));
    }
    return {{"bins", std::move(bins)},
            {"contributingDayCount", agp.contributingDayCount},
            {"timeZoneIdentifier", agp.timeZoneIdentifier}};
}

json::object jsonOf(const InsightsGMI& gmi)
{
    if (gmi.available)
        return {{"available", *gmi.available}};
    return {{"unavailable", rawValue(gmi.unavailable)}};
}

json::object jsonOf(const InsightsSummary& summary)
{
    json::array bands;
    for (const auto& [band, count, fraction] : summary.bands)
        bands.push_back(json::object{{"band", rawValue(band)}, {"count", count}, {"fraction", fraction}});
    return {{"interval", jsonOf(summary.interval)},
            {"readingCount", summary.readingCount},
            {"availableInterval", jsonOf(summary.availableInterval)},
            {"meanMgdl", jsonOf(summary.meanMgdl)},
            {"standardDeviationMgdl", jsonOf(summary.standardDeviationMgdl)},
            {"medianMgdl", jsonOf(summary.medianMgdl)},
            {"q1Mgdl", jsonOf(summary.q1Mgdl)},
            {"q3Mgdl", jsonOf(summary.q3Mgdl)},
            {"iqrMgdl", jsonOf(summary.iqrMgdl)},
            {"bands", std::move(bands)},
            {"coverage", jsonOf(summary.coverage)},
            {"collectionCoverage", jsonOf(summary.collectionCoverage)},
            {"agp", jsonOf(summary.agp)},
            {"gmi", jsonOf(summary.gmi)}};
}

json::array jsonOf(const std::vector<InsightsEpisode>& episodes)
{
    json::array array;
    for (const auto& episode : episodes)
        array.push_back(json::object{{"kind", rawValue(episode.kind)},
                                     {"interval", jsonOf(episode.interval)},
                                     {"duration", episode.interval.duration().count()},
                                     {"extremeMgdl", episode.extremeMgdl},
                                     {"startsAtGap", episode.startsAtGap},
                                     {"endsAtGap", episode.endsAtGap},
                                     {"isExtended", episode.isExtended}});
    return array;
}

/// "2026-03-02 08:15" by the clock of a zone.
std::string localText(Date date, TimeZone zone)
{
    std::string text = isoText(date + zone.offset(date)).substr(0, 16);
    text[10] = ' ';
    return text;
}

constexpr int barCells = 20;
constexpr int labelWidth = 24;

/// A bar of up to twenty cells; anything above nothing shows.
std::string bar(double fraction)
{
    static constexpr std::array<std::string_view, 8> parts{"", "▏", "▎", "▍", "▌", "▋", "▊", "▉"};
    const int eighths =
        fraction > 0 ? std::max(1, static_cast<int>(std::lround(fraction * barCells * 8))) : 0;
    std::string text;
    for (int cell = 0; cell < eighths / 8; ++cell)
        text += "█";
    return text.append(parts[static_cast<std::size_t>(eighths % 8)]);
}

class Lines {
public:
    Lines(const InsightsReport& report, GlucoseUnits unit) : report_{report}, unit_{unit} {}

    std::string text()
    {
        addHead();
        if (summary().readingCount == 0)
            return text_;
        addBands();
        addFigures();
        addEpisodes();
        addProfile();
        addCoverage();
        return text_;
    }

private:
    [[nodiscard]] const InsightsSummary& summary() const { return report_.result.summary; }
    [[nodiscard]] std::string value(double mgdL) const { return formatGlucose(mgdL, unit_); }

    template <class... Arguments>
    void add(fmt::format_string<Arguments...> format, Arguments&&... arguments)
    {
        fmt::format_to(std::back_inserter(text_), format, std::forward<Arguments>(arguments)...);
        text_.erase(text_.find_last_not_of(' ') + 1);
        text_ += '\n';
    }
    void figure(std::string_view label, const std::string& value, std::string_view explanation)
    {
        add("{:{}}{}", label, labelWidth, value);
        if (!explanation.empty())
            add("  {}", explanation);
    }

    void addHead()
    {
        const auto& interval = summary().interval;
        add("{} to {}, {}", localText(interval.start, report_.zone), localText(interval.end, report_.zone),
            report_.zone.name());
        if (report_.quality)
            add("{}", report_.quality->message);
        if (report_.collection && !report_.collection->isSaving)
            add("{}", insightsSavingOffText);
        if (const auto impossible = report_.result.impossibleReadings; impossible > 0)
            add("Left out, since no sensor can have measured it: {} reading{}.", impossible,
                impossible == 1 ? "" : "s");
        if (summary().readingCount == 0)
            add("{}. Choose another one with --days, or with --from and --to.", insightsEmptyTitle);
    }

    void addBands()
    {
        add("\nTime in ranges, {}", rawValue(unit_));
        for (const auto& [band, count, fraction] : std::views::reverse(summary().bands))
            add("  {:11}{:20}{:>5.1f} %  {:>18}  {}", bandTitle(band), bandLimits(band, unit_),
                fraction * 100, insightsPerDayText(fraction), bar(fraction));
        add("  {}\n", insightsBandsExplanation);
    }

    void addFigures()
    {
        const auto& figures = summary();
        const auto unitName = rawValue(unit_);
        figure("Mean glucose", fmt::format("{} {}", value(*figures.meanMgdl), unitName),
               insightsMeanExplanation);
        figure("Standard deviation", fmt::format("{} {}", value(*figures.standardDeviationMgdl), unitName),
               insightsDeviationExplanation);
        if (const auto variation = report_.result.coefficientOfVariationPercent)
            figure("Variation (CV)",
                   fmt::format("{:.1f} %, target: at most {:g} %", *variation,
                               coefficientOfVariationTargetPercent),
                   {});
        figure("Median",
               fmt::format("{} {}, the middle half from {} to {}", value(*figures.medianMgdl), unitName,
                           value(*figures.q1Mgdl), value(*figures.q3Mgdl)),
               {});
        figure("GMI",
               figures.gmi.available
                   ? fmt::format("{:.1f} %, {}", *figures.gmi.available, gmiCaption(figures.gmi))
                   : std::string{gmiCaption(figures.gmi)},
               gmiExplanation(figures.gmi, unit_));
        figure("Time active",
               fmt::format("{:.1f} %, {} of {}", report_.result.timeActivePercent,
                           insightsDurationText(figures.coverage.coveredDuration),
                           insightsDurationText(figures.coverage.totalDuration)),
               {});
    }

    void addEpisodes()
    {
        add("\nEpisodes of at least 15 minutes");
        for (const InsightsEpisodeKind kind : allInsightsEpisodeKinds) {
            std::size_t count = 0;
            std::size_t extended = 0;
            Seconds longest{};
            for (const auto& episode : report_.result.episodes) {
                if (episode.kind != kind)
                    continue;
                ++count;
                extended += episode.isExtended ? 1 : 0;
                longest = std::max(longest, episode.interval.duration());
            }
            const bool lows = kind == InsightsEpisodeKind::low || kind == InsightsEpisodeKind::veryLow;
            const std::array thresholds{lowBelow, veryLowBelow, highAbove, veryHighAbove};
            std::string line = fmt::format("  {} {:18}{:>5}", lows ? "Below" : "Above",
                                           value(thresholds[static_cast<std::size_t>(kind)]), count);
            if (count > 0)
                line += fmt::format("  longest {}", insightsDurationText(longest));
            if (extended > 0)
                line += fmt::format(", over 2 hours: {}", extended);
            add("{}", line);
        }
        add("  Gaps are never bridged: an episode ends where readings are missing. --json lists each one.");
    }

    void addProfile()
    {
        const auto& agp = summary().agp;
        if (agp.contributingDayCount < InsightsAGP::minimumDays) {
            add("\nThe profile of a day needs readings of at least {} different days.",
                InsightsAGP::minimumDays);
            return;
        }
        add("\nProfile of {} day{}, {}: median, middle 50%, middle 90%", agp.contributingDayCount,
            agp.contributingDayCount == 1 ? "" : "s", rawValue(unit_));
        constexpr std::size_t binsPerHour = 4;
        for (std::size_t bin = 0; bin < agp.bins.size(); bin += binsPerHour) {
            const auto& percentiles = agp.bins[bin].percentiles;
            std::string line = fmt::format("  {:02}:00", bin / binsPerHour);
            if (percentiles)
                line += fmt::format("{:>8}{:>8} – {:<5}{:>8} – {}", value(percentiles->medianMgdl),
                                    value(percentiles->p25Mgdl), value(percentiles->p75Mgdl),
                                    value(percentiles->p5Mgdl), value(percentiles->p95Mgdl));
            add("{}", line);
        }
        add("  The first quarter of each hour. Times of day with readings from fewer than {} different days "
            "are left blank.",
            InsightsAGP::minimumDays);
    }

    void addCoverage()
    {
        std::vector<std::string> sparse;
        for (const auto& [date, covered, total] : summary().coverage.days)
            if (const double share = covered / total; share < sufficientCoverage)
                sparse.push_back(fmt::format("  {}  {:>3.0f} %", dateText(date), std::floor(share * 100)));
        if (sparse.empty())
            return;
        add("\nDays with less than 70% of readings: {} of {}", sparse.size(), summary().coverage.days.size());
        constexpr std::size_t mostListed = 14;
        for (std::size_t i = 0; i < std::min(sparse.size(), mostListed); ++i)
            add("{}", sparse[i]);
        if (sparse.size() > mostListed)
            add("  and {} more", sparse.size() - mostListed);
    }

    const InsightsReport& report_;
    GlucoseUnits unit_;
    std::string text_;
};

}  // namespace

std::string insightsDocument(const InsightsReport& report)
{
    json::object document = jsonOf(report.result.summary);
    document["coefficientOfVariationPercent"] = jsonOf(report.result.coefficientOfVariationPercent);
    document["timeActivePercent"] = report.result.timeActivePercent;
    document["episodes"] = jsonOf(report.result.episodes);
    document["impossibleReadings"] = report.result.impossibleReadings;
    document["reportQuality"] = nullptr;
    if (const auto& quality = report.quality)
        document["reportQuality"] =
            json::object{{"kind", rawValue(quality->kind)},
                         {"message", quality->message},
                         {"symbolName", quality->symbolName},
                         {"accessibilityIdentifier", quality->accessibilityIdentifier}};
    document["collectionStatus"] =
        report.collection ? json::value(rawValue(report.collection->collectionStatus)) : json::value(nullptr);
    document["unreadableDays"] = json::array(report.unreadableDays.begin(), report.unreadableDays.end());
    return prettyJson(document);
}

std::string insightsLines(const InsightsReport& report, GlucoseUnits unit)
{
    return Lines{report, unit}.text();
}

std::string insightsCollectionLines(const InsightsCollectionStatusState& state)
{
    const auto readiness = insightsReadiness(state);
    std::string text = fmt::format("{}\n{}\n", readiness.title, readiness.text);
    if (!readiness.progress.empty())
        text += fmt::format("\n{}\n{}\n", insightsProgressTitle, readiness.progress);
    if (!state.isSaving)
        text += fmt::format("\n{}\n", insightsSavingAdvice);
    return text;
}

}  // namespace tidewell
