#include "history/HistoryRetention.h"

#include <algorithm>

namespace tidewell {

namespace {

constexpr Seconds oneDay{86400};

}  // namespace

Date oldestKeptReading(std::int64_t retentionDays, Date now, std::optional<std::int64_t> newestDay)
{
    const Date newest = newestDay ? dateFromUnix(static_cast<double>(*newestDay + 1) * 86400) : now;
    return std::min(now, newest) - oneDay * static_cast<double>(retentionDays);
}

}  // namespace tidewell
