#pragma once

#include <QDBusArgument>
#include <QDBusMessage>
#include <QList>
#include <QVariantMap>
#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "polling/PollingProgress.h"
#include "statusbar/StatusBarViewModel.h"

namespace tidewell {

// What travels between the process that polls and those that follow it, by the interface that
// docs/status-bars.md describes. Moments are milliseconds since 1970, and 0 where there is none.

inline const QString sharedPollerName = QStringLiteral("org.tidewell.Tidewell");
inline const QString sharedPollerPath = QStringLiteral("/org/tidewell/Tidewell");
inline const QString sharedPollerInterface = QStringLiteral("org.tidewell.Tidewell");

/// More readings than a day holds at one a minute; neither sent nor taken beyond that.
inline constexpr std::size_t mostSharedReadings = 2000;

/// One reading: (xdsus), its moment, mg/dL, the trend's word, seconds that it stands for, and whose it is.
struct SharedReading {
    qlonglong time = 0;
    double mgdL = 0;
    QString trend{};
    uint sampleDuration = 0;
    QString source{};
    bool operator==(const SharedReading&) const = default;
};
QDBusArgument& operator<<(QDBusArgument& argument, const SharedReading& value);
const QDBusArgument& operator>>(const QDBusArgument& argument, SharedReading& value);

/// A moment as it travels.
[[nodiscard]] qlonglong sharedMoment(const std::optional<Date>& date);

/// The properties that tell of a state, apart from those about the telling itself: Profile, Account,
/// PollingSince, Revision and ReadingsRevision.
[[nodiscard]] QVariantMap sharedProperties(const StatusBarState& state, const PollingProgress& progress);

/// From when on the second history differs from the first, apart from what it has forgotten at its
/// beginning. Empty when it does not.
[[nodiscard]] std::optional<Date> firstDifference(const std::vector<GlucoseReading>& before,
                                                  const std::vector<GlucoseReading>& now);

/// The newest of the readings from `since` (milliseconds) on, oldest first.
[[nodiscard]] QList<tidewell::SharedReading> sharedReadings(const std::vector<GlucoseReading>& history,
                                                            qlonglong since);

/// What a follower takes of the state of another process. The rest is worked out anew, by its own clock.
struct FollowedState {
    std::vector<GlucoseReading> glucoseHistory{};  ///< Oldest first.
    std::optional<StatusBarActivity> activity{};
    std::optional<ErrorInfo> currentError{};
    std::optional<Date> nextRetryAt{};
    std::optional<Date> lastUpdateAt{};
    PollingProgress progress{};
};

/// The properties of another process, as far as they have the types that we expect; nothing else is kept.
[[nodiscard]] QVariantMap knownProperties(const QVariantMap& properties);

/// Reads checked properties; what cannot be true is left out. The readings come separately.
[[nodiscard]] FollowedState followedState(const QVariantMap& properties, Date now);

/// The readings of an answer to the method Readings; those that cannot be true are left out. Empty for any
/// other message.
[[nodiscard]] std::optional<std::vector<GlucoseReading>> readingsIn(const QDBusMessage& answer, Date now);

}  // namespace tidewell

Q_DECLARE_METATYPE(tidewell::SharedReading)
