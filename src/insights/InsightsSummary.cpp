#include "insights/InsightsSummary.h"

#include <utility>

namespace tidewell {

std::string_view rawValue(InsightsBand band)
{
    using enum InsightsBand;
    switch (band) {
    case veryLow: return "veryLow";
    case low: return "low";
    case inRange: return "inRange";
    case high: return "high";
    case veryHigh: return "veryHigh";
    }
    std::unreachable();
}

std::string_view rawValue(InsightsGMIUnavailableReason reason)
{
    using enum InsightsGMIUnavailableReason;
    switch (reason) {
    case noReadings: return "noReadings";
    case collectingHistory: return "collectingHistory";
    case shortInterval: return "shortInterval";
    case insufficientCoverage: return "insufficientCoverage";
    }
    std::unreachable();
}

double InsightsCoverage::fraction() const
{
    return totalDuration > Seconds{0} ? coveredDuration / totalDuration : 0;
}

bool InsightsCoverage::isSufficient() const { return fraction() >= sufficientCoverage; }

}  // namespace tidewell
