#pragma once

#include <optional>
#include <string>
#include <string_view>
#include <vector>

#include "insights/InsightsWeighting.h"

// How far saved history has come before the report opens. Functions of values; `now` is passed in.

namespace tidewell {

/// The initial collection, and the time over which its coverage is judged whatever period a report has.
inline constexpr Seconds initialCollection{std::chrono::hours{3 * 24}};

struct InsightsCollectionProgress {
    Seconds collected{};  ///< Since saving began, at most the initial collection.
    double coverage = 0;  ///< Observed share of the latest three days, 0 to 1.
    /// Three days are collected and at least 70 % of the latest three days are covered: the report opens, and
    /// stays open from then on.
    [[nodiscard]] bool isComplete() const;
};
/// `readings` in any order; earlier ones than the latest three days do not matter.
[[nodiscard]] InsightsCollectionProgress insightsCollectionProgress(
    std::vector<InsightsReading> readings, const std::optional<Date>& collectionStartedAt, Date now);

/// What the collecting screen is about.
enum class InsightsCollectionStatus {
    checking,            ///< Saved history has not been read yet.
    getStarted,          ///< Nothing was ever saved.
    paused,              ///< Saving is off before the report opened.
    waiting,             ///< Saving is on, and there are no readings yet.
    building,            ///< Not three days yet.
    moreReadingsNeeded,  ///< Three days, with too many gaps.
    preparing,           ///< All is there; that the report is open is not stored yet.
    ready                ///< The report is open.
};
/// "checking" and so on.
[[nodiscard]] std::string_view rawValue(InsightsCollectionStatus status);

/// What is known of a scope's saved history.
struct InsightsCollectionFacts {
    bool isSaving = false;
    bool hasSavedBefore = false;  ///< Saving was on at least once.
    bool hasSavedReadings = false;
    bool hasUnlockedInsights = false;
};

struct InsightsCollectionStatusState {
    InsightsCollectionStatus collectionStatus{};
    std::optional<InsightsCollectionProgress> progress{};  ///< While it is worth showing.
    bool isSaving = false;
    bool hasSavedReadings = false;
};
/// `progress` is empty until saved history has been read.
[[nodiscard]] InsightsCollectionStatusState insightsCollectionStatus(
    const InsightsCollectionFacts& facts, const std::optional<InsightsCollectionProgress>& progress);

/// The state in words.
struct InsightsReadinessPresentation {
    InsightsCollectionStatus kind{};
    std::string title{};
    std::string text{};
    std::string progress{};  ///< "1.5 of 3 days ..."; empty where there is none to show.
};
[[nodiscard]] InsightsReadinessPresentation insightsReadiness(const InsightsCollectionStatusState& state);

inline constexpr std::string_view insightsProgressTitle = "History collection progress";
/// Where saving is off and the report has not opened: how to begin.
inline constexpr std::string_view insightsSavingAdvice =
    "To save readings on this computer: tidewell history enable";
/// Under a report whose history no longer grows.
inline constexpr std::string_view insightsSavingOffText =
    "Saving is off, so new readings aren’t being added.";

/// Whether the progress is shown, then that it is complete, then nothing any more.
enum class InsightsProgressPhase { collecting, complete, hidden };
[[nodiscard]] InsightsProgressPhase insightsProgressPhase(bool hasUnlockedInsights,
                                                          bool hasAcknowledgedUnlock);

}  // namespace tidewell
