#include "program/DemoHistory.h"

#include <vector>

#include "simulator/TraceReplay.h"

namespace tidewell {

namespace {

/// A little more than a report of 14 days needs.
constexpr Seconds length{15 * 86'400};
constexpr std::int64_t retentionDays = 30;

std::vector<GlucoseReading> replayed(const GlucoseTrace& trace, std::int64_t newest, Seconds sampleDuration,
                                     GlucoseProvider source, Date now)
{
    const TraceReplay replay{trace};
    std::vector<GlucoseReading> readings;
    Date date = now;
    for (std::int64_t position = newest; date > now - length; --position) {
        readings.push_back(makeReading(replay.mgdL(position), std::string{trendWord(replay.trend(position))},
                                       date, sampleDuration, source));
        date -= Seconds{replay.spacing(position)};
    }
    return readings;
}

}  // namespace

std::expected<void, GlucoseHistoryError> saveDemoHistory(GlucoseHistoryStore& store,
                                                         const GlucoseAccountConfiguration& account, Date now)
{
    if (const auto attached = store.attach(HistoryScopeID::of(account)); !attached)
        return std::unexpected(attached.error());
    if (const auto enabled = store.enable(retentionDays, currentConsentVersion, now); !enabled)
        return std::unexpected(enabled.error());
    const auto readings = account.provider == GlucoseProvider::dexcom
                              ? replayed(GlucoseTrace::builtIn(), GlucoseTrace::builtInStart, Seconds{300},
                                         account.provider, now)
                              : replayed(GlucoseTrace::libre(), 0, Seconds{900}, account.provider, now);
    if (const auto imported = store.import(readings, now, false); !imported)
        return std::unexpected(imported.error());
    return {};
}

}  // namespace tidewell
