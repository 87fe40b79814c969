#include "insights/InsightsEpisodes.h"

#include <algorithm>
#include <optional>
#include <tuple>
#include <utility>

#include "insights/InsightsSummary.h"

namespace tidewell {

namespace {

constexpr Seconds shortestRun{15min};
constexpr Seconds longLow{120min};
/// Of the sample duration.
constexpr double clockJitter = 0.1;

bool isBeyond(InsightsEpisodeKind kind, double mgdL)
{
    using enum InsightsEpisodeKind;
    switch (kind) {
    case low: return mgdL < lowBelow;
    case veryLow: return mgdL < veryLowBelow;
    case high: return mgdL > highAbove;
    case veryHigh: return mgdL > veryHighAbove;
    }
    std::unreachable();
}

bool isOfLows(InsightsEpisodeKind kind)
{
    return kind == InsightsEpisodeKind::low || kind == InsightsEpisodeKind::veryLow;
}

/// Goes through the readings of one kind of episode.
class EpisodeFinder {
public:
    EpisodeFinder(InsightsEpisodeKind kind, std::vector<InsightsEpisode>& found) : kind_{kind}, found_{found}
    {
    }

    /// `end` is when the next reading begins, or the end of this one's time where there is a gap.
    void take(const InsightsWeightedReading& weighted, Date end, bool afterGap)
    {
        jitter_ = weighted.reading.sampleDuration * clockJitter;
        const double value = weighted.reading.mgdL;
        if (isBeyond(kind_, value)) {
            back_.reset();
            if (!episode_)
                episode_ = {.kind = kind_,
                            .interval = {weighted.observed.start, {}},
                            .extremeMgdl = value,
                            .startsAtGap = afterGap};
            episode_->interval.end = end;
            episode_->extremeMgdl = isOfLows(kind_) ? std::min(episode_->extremeMgdl, value)
                                                    : std::max(episode_->extremeMgdl, value);
            begun_ = begun_ || episode_->interval.duration() >= shortestRun - jitter_;
            return;
        }
        if (!episode_)
            return;
        if (!back_)
            back_ = weighted.observed.start;
        // Before an episode has begun, the first reading back ends the run.
        if (!begun_ || end - *back_ >= shortestRun - jitter_)
            finish(false);
    }

    void finish(bool atGap)
    {
        if (episode_ && begun_) {
            episode_->endsAtGap = atGap;
            episode_->isExtended =
                kind_ == InsightsEpisodeKind::low && episode_->interval.duration() > longLow + jitter_;
            found_.push_back(*episode_);
        }
        episode_.reset();
        back_.reset();
        begun_ = false;
    }

private:
    InsightsEpisodeKind kind_;
    std::vector<InsightsEpisode>& found_;
    std::optional<InsightsEpisode> episode_{};  ///< Or the run that may become one.
    bool begun_ = false;                        ///< The run has lasted long enough.
    std::optional<Date> back_{};                ///< Since when it is over, not yet long enough.
    Seconds jitter_{};
};

}  // namespace

std::string_view rawValue(InsightsEpisodeKind kind)
{
    using enum InsightsEpisodeKind;
    switch (kind) {
    case low: return "low";
    case veryLow: return "veryLow";
    case high: return "high";
    case veryHigh: return "veryHigh";
    }
    std::unreachable();
}

std::vector<InsightsEpisode> insightsEpisodes(std::span<const InsightsWeightedReading> weighted)
{
    std::vector<InsightsEpisode> found;
    for (const InsightsEpisodeKind kind : allInsightsEpisodeKinds) {
        EpisodeFinder finder{kind, found};
        bool afterGap = true;
        for (std::size_t i = 0; i < weighted.size(); ++i) {
            const DateInterval& observed = weighted[i].observed;
            const bool beforeGap =
                i + 1 == weighted.size() || weighted[i + 1].observed.start - observed.end >
                                                weighted[i].reading.sampleDuration * clockJitter;
            finder.take(weighted[i], beforeGap ? observed.end : weighted[i + 1].observed.start, afterGap);
            if (beforeGap)
                finder.finish(true);
            afterGap = beforeGap;
        }
    }
    std::ranges::sort(found, {}, [](const auto& e) { return std::tuple{e.interval.start, e.kind}; });
    return found;
}

}  // namespace tidewell
