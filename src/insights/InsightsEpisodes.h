#pragma once

#include <array>
#include <span>
#include <string_view>
#include <vector>

#include "insights/InsightsWeighting.h"

namespace tidewell {

/// Below 70 and below 54, above 180 and above 250 mg/dL. A very low episode lies within a low one or is one.
enum class InsightsEpisodeKind { low, veryLow, high, veryHigh };
inline constexpr std::array allInsightsEpisodeKinds{InsightsEpisodeKind::low, InsightsEpisodeKind::veryLow,
                                                    InsightsEpisodeKind::high, InsightsEpisodeKind::veryHigh};
/// "low" and so on.
[[nodiscard]] std::string_view rawValue(InsightsEpisodeKind kind);

struct InsightsEpisode {
    InsightsEpisodeKind kind{};
    DateInterval interval{};   ///< Returns of less than 15 minutes are part of it.
    double extremeMgdl = 0;    ///< The lowest or the highest reading.
    bool startsAtGap = false;  ///< Nothing was observed just before: it may have begun earlier.
    bool endsAtGap = false;   ///< Nothing was observed until it was over for 15 minutes: it may have gone on.
    bool isExtended = false;  ///< A low of over 120 minutes.
};

/// The episodes of each kind, as the international consensus on metrics for trials defines them (Battelino et
/// al. 2023, doi 10.1016/S2213-8587(22)00319-9): at least 15 minutes beyond the threshold begin one, at least
/// 15 minutes back end it, counting from where they began. By start; of the same start, in order of kind.
///
/// A gap that is longer than the sample duration is never bridged: it ends what it interrupts. Sensors'
/// clocks are not exact (readings of five minutes come 299 or 302 seconds apart), so a tenth of the sample
/// duration more or less makes no difference to a gap or to the 15 and 120 minutes.
[[nodiscard]] std::vector<InsightsEpisode> insightsEpisodes(
    std::span<const InsightsWeightedReading> weighted);

}  // namespace tidewell
