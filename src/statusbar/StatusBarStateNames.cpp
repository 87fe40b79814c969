#include "statusbar/StatusBarStateNames.h"

#include <utility>

namespace tidewell {

std::string_view rawValue(TitleColor color)
{
    switch (color) {
    case TitleColor::primary: return "primary";
    case TitleColor::orange: return "orange";
    case TitleColor::red: return "red";
    }
    std::unreachable();
}

std::string_view rawValue(StatusBarIconState state)
{
    switch (state) {
    case StatusBarIconState::waiting: return "waiting";
    case StatusBarIconState::value: return "value";
    case StatusBarIconState::attention: return "attention";
    }
    std::unreachable();
}

std::string_view rawValue(StatusBarActivity activity)
{
    switch (activity) {
    case StatusBarActivity::loading: return "loading";
    case StatusBarActivity::refreshing: return "refreshing";
    case StatusBarActivity::authenticating: return "authenticating";
    }
    std::unreachable();
}

std::optional<StatusBarActivity> statusBarActivity(std::string_view word)
{
    using enum StatusBarActivity;
    for (const StatusBarActivity activity : {loading, refreshing, authenticating})
        if (rawValue(activity) == word)
            return activity;
    return std::nullopt;
}

std::string_view rawValue(const std::optional<ReadingFreshness>& freshness)
{
    if (!freshness)
        return "none";
    switch (*freshness) {
    case ReadingFreshness::current: return "current";
    case ReadingFreshness::stale: return "stale";
    case ReadingFreshness::expired: return "expired";
    }
    std::unreachable();
}

}  // namespace tidewell
