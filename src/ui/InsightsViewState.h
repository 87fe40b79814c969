#pragma once

#include <chrono>
#include <memory>
#include <optional>
#include <string>

#include "insights/InsightsCollection.h"
#include "ui/InsightsReportPage.h"

namespace tidewell {

/// The period of a report, as a person picks it.
struct InsightsPeriod {
    /// Up to now; empty for the dates.
    std::optional<int> days = 14;
    std::chrono::sys_days from{};  ///< Local dates, both part of the period.
    std::chrono::sys_days to{};
    bool operator==(const InsightsPeriod&) const = default;
};

/// Everything that the Insights window says.
struct InsightsViewState {
    enum class Phase {
        loading,      ///< Nothing is known yet: saved history is being read.
        calculating,  ///< Nothing is known yet: the readings are there.
        collecting,   ///< The report is not open.
        report,       ///< `report`, also one without readings.
        unavailable   ///< Saved history cannot be read.
    };
    Phase phase = Phase::loading;
    InsightsPeriod period{};
    /// What is shown is being renewed.
    bool isBusy = false;
    InsightsReadinessPresentation readiness{};  ///< Of collecting, and so is the next.
    std::optional<InsightsCollectionProgress> progress{};
    std::string advice{};  ///< What helps now; of collecting and unavailable.
    std::shared_ptr<const InsightsReportContent> report{};
    bool isSaving = true;          ///< Whether the report's history still grows.
    bool offersSaving = false;     ///< Of collecting: that readings are saved again is what helps now.
    bool showsCompletion = false;  ///< The report has just opened, and the person has not said "seen" yet.
    bool isDemonstration = false;  ///< The readings are nobody's own.
};

}  // namespace tidewell
