#include "sources/GlucoseUnits.h"

#include <fmt/format.h>

#include <algorithm>
#include <cmath>
#include <utility>

namespace tidewell {

namespace {

/// Where glucose is usually spoken of in mg/dL: ISO 3166-1 alpha-2, sorted.
constexpr std::array<std::string_view, 39> mgdLRegions{
    "AE", "AR", "AT", "BD", "BE", "BH", "BR", "CL", "CO", "DZ", "EC", "EG", "ES",
    "GE", "ID", "IL", "IN", "IT", "JO", "JP", "KR", "KW", "LB", "MX", "OM", "PE",
    "PH", "PL", "PT", "SA", "SY", "TH", "TN", "TR", "TW", "US", "UY", "VE", "YE"};
static_assert(std::ranges::is_sorted(mgdLRegions));

constexpr char upper(char letter)
{
    return letter >= 'a' && letter <= 'z' ? static_cast<char>(letter - 'a' + 'A') : letter;
}

}  // namespace

std::string_view rawValue(GlucoseUnits unit)
{
    switch (unit) {
    case GlucoseUnits::mgdL: return "mg/dL";
    case GlucoseUnits::mmolL: return "mmol/L";
    }
    std::unreachable();
}

std::optional<GlucoseUnits> glucoseUnits(std::string_view text)
{
    for (const GlucoseUnits unit : allGlucoseUnits) {
        if (rawValue(unit) == text)
            return unit;
    }
    return std::nullopt;
}

std::string_view spokenName(GlucoseUnits unit)
{
    switch (unit) {
    case GlucoseUnits::mgdL: return "milligrams per deciliter";
    case GlucoseUnits::mmolL: return "millimoles per liter";
    }
    std::unreachable();
}

double displayValue(double mgdL, GlucoseUnits unit)
{
    // Adding zero turns -0 into 0, which would otherwise be shown with its sign.
    switch (unit) {
    case GlucoseUnits::mgdL: return std::round(mgdL) + 0.0;
    case GlucoseUnits::mmolL: return std::round(mgdL / mgdLPerMmolL * 10) / 10 + 0.0;
    }
    std::unreachable();
}

std::string formatGlucose(double mgdL, GlucoseUnits unit)
{
    return fmt::format("{:.{}f}", displayValue(mgdL, unit), unit == GlucoseUnits::mgdL ? 0 : 1);
}

double mgdLFromMmolL(double mmolL) { return std::round(mmolL * mgdLPerMmolL) + 0.0; }

GlucoseUnits defaultGlucoseUnits(std::string_view regionCode)
{
    std::string code{regionCode};
    std::ranges::transform(code, code.begin(), upper);
    return std::ranges::binary_search(mgdLRegions, code) ? GlucoseUnits::mgdL : GlucoseUnits::mmolL;
}

}  // namespace tidewell
