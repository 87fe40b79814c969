#include "config/GlucoseProvider.h"

#include <algorithm>
#include <utility>

namespace tidewell {

std::string_view rawValue(GlucoseProvider provider)
{
    switch (provider) {
    case GlucoseProvider::dexcom: return "dexcom";
    case GlucoseProvider::libreLinkUp: return "libreLinkUp";
    }
    std::unreachable();
}

std::optional<GlucoseProvider> glucoseProvider(std::string_view text)
{
    const auto found = std::ranges::find(allGlucoseProviders, text,
                                         [](GlucoseProvider provider) { return rawValue(provider); });
    if (found == allGlucoseProviders.end())
        return std::nullopt;
    return *found;
}

}  // namespace tidewell
