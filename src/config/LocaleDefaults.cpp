#include "config/LocaleDefaults.h"

#include <algorithm>
#include <array>
#include <utility>

namespace tidewell {

namespace {

// Country codes in capitals, sorted.

/// The United States and their territories.
constexpr std::array<std::string_view, 7> unitedStates{"AS", "GU", "MP", "PR", "UM", "US", "VI"};
/// France and the parts of it that have a code of their own.
constexpr std::array<std::string_view, 13> france{"BL", "FR", "GF", "GP", "MF", "MQ", "NC",
                                                  "PF", "PM", "RE", "TF", "WF", "YT"};
constexpr std::array<std::string_view, 6> australasia{"AU", "CC", "CX", "HM", "NF", "NZ"};
constexpr std::array<std::string_view, 10> middleEast{"AE", "BH", "EG", "IQ", "JO",
                                                      "KW", "LB", "OM", "QA", "SA"};
constexpr std::array<std::string_view, 44> latinAmerica{
    "AG", "AI", "AR", "AW", "BB", "BO", "BQ", "BR", "BS", "BZ", "CL", "CO", "CR", "CU", "CW",
    "DM", "DO", "EC", "FK", "GD", "GS", "GT", "GY", "HN", "HT", "JM", "KN", "KY", "LC", "MS",
    "MX", "NI", "PA", "PE", "PY", "SR", "SV", "SX", "TC", "TT", "UY", "VC", "VE", "VG"};
constexpr std::array<std::string_view, 41> asiaPacific{
    "BD", "BN", "BT", "CK", "FJ", "FM", "HK", "ID", "IN", "IO", "KH", "KI", "KP", "KR",
    "LA", "LK", "MH", "MM", "MN", "MO", "MV", "MY", "NP", "NR", "NU", "PG", "PH", "PK",
    "PN", "PW", "SB", "SG", "TH", "TK", "TL", "TO", "TV", "TW", "VN", "VU", "WS"};

/// Empty for what is no code of two letters.
std::string capitals(std::string_view country)
{
    std::string code{country};
    for (char& letter : code)
        if (letter >= 'a' && letter <= 'z')
            letter = static_cast<char>(letter - 'a' + 'A');
    const bool letters = std::ranges::all_of(code, [](char c) { return c >= 'A' && c <= 'Z'; });
    return code.size() == 2 && letters ? code : std::string{};
}

/// Japan has a service of its own; everybody else outside the United States shares one.
std::string_view dexcomRegion(std::string_view country)
{
    // Nothing is known of most machines without a country; most accounts are in the United States.
    if (country.empty() || std::ranges::binary_search(unitedStates, country))
        return "us";
    return country == "JP" ? "jp" : "ous";
}

/// The country's own host where there is one, else the nearest. Which countries share a host is published
/// nowhere: the regions here are a guess by continent, which the service corrects.
std::string_view libreLinkUpRegion(std::string_view country)
{
    constexpr std::array<std::pair<std::string_view, std::string_view>, 5> own{
        {{"CA", "ca"}, {"CN", "cn"}, {"DE", "de"}, {"JP", "jp"}, {"RU", "ru"}}};
    if (const auto found =
            std::ranges::find(own, country, &std::pair<std::string_view, std::string_view>::first);
        found != own.end())
        return found->second;
    const auto isOf = [country](const auto& countries) {
        return std::ranges::binary_search(countries, country);
    };
    if (country.empty() || isOf(unitedStates))
        return "us";
    if (isOf(france))
        return "fr";
    if (isOf(australasia))
        return "au";
    if (isOf(middleEast))
        return "ae";
    if (isOf(latinAmerica))
        return "la";
    return isOf(asiaPacific) ? "ap" : "eu";
}

}  // namespace

std::string usualRegion(GlucoseProvider provider, std::string_view country)
{
    const std::string code = capitals(country);
    switch (provider) {
    case GlucoseProvider::dexcom: return std::string{dexcomRegion(code)};
    case GlucoseProvider::libreLinkUp: return std::string{libreLinkUpRegion(code)};
    }
    std::unreachable();
}

}  // namespace tidewell
