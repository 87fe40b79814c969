#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <string_view>

#include "support/Time.h"

namespace tidewell {

/// A time zone by value; cheap to copy. Rules come from the system's zone database.
class TimeZone {
public:
    /// The zone in force: what TZ names, else the system's, else UTC. Reads both anew on each call.
    [[nodiscard]] static TimeZone current();
    /// The zone of that name ("Europe/London"); empty when the database does not know it.
    [[nodiscard]] static std::optional<TimeZone> named(std::string_view name);
    [[nodiscard]] static TimeZone utc();

    [[nodiscard]] std::string name() const;
    /// What to add to UTC to get the local time at that moment.
    [[nodiscard]] std::chrono::seconds offset(Date at) const;

    /// A time during which the offset stays the same; infinite where it never changes.
    struct OffsetSpan {
        Date begin;
        Date end;  ///< Not part of it.
        std::chrono::seconds offset;
    };
    /// The one that `at` lies in, for the years 1 to 9999.
    [[nodiscard]] OffsetSpan offsetSpan(Date at) const;

private:
    explicit TimeZone(const void* zone) : zone_{zone} {}
    const void* zone_;  ///< Of the database, which lives as long as the program.
};

/// "2026-03-02T08:15:42Z": ISO 8601 in UTC, whole seconds, truncated.
[[nodiscard]] std::string isoText(Date date);

/// Reads ISO 8601 with 'Z' or an offset, fractions of a second allowed; empty for anything else.
[[nodiscard]] std::optional<Date> dateFromIso(std::string_view text);

/// Stored moments: whole milliseconds since 1970 of the years 1 to 9999, which are those that ISO 8601 writes
/// with four digits. The nearest one; beyond them, and for what is no number, the edge.
[[nodiscard]] std::int64_t storedMilliseconds(Date date);
/// Milliseconds are what services and stored forms know. Going through them gives a moment the same double
/// whichever way it came.
[[nodiscard]] Date dateFromMilliseconds(std::int64_t milliseconds);
/// "2026-03-02T08:15:42.123Z", of storedMilliseconds(); appended.
void appendStoredDate(std::string& text, Date date);
/// Reads what appendStoredDate() writes and all other ISO 8601 that dateFromIso() reads, to the millisecond.
/// Empty outside the years 1 to 9999.
[[nodiscard]] std::optional<Date> dateFromStored(std::string_view text);

/// "Mar 2, 2026 at 08:15:42": medium date and time, for log lines.
[[nodiscard]] std::string localMediumText(Date date, TimeZone zone);

/// "08:15": the time of day, 24 hours, for texts on screen.
[[nodiscard]] std::string localTimeOfDay(Date date, TimeZone zone);

}  // namespace tidewell
