#include "config/AppSettingsKeys.h"

#include <fmt/format.h>
#include <fmt/ranges.h>

#include <algorithm>
#include <charconv>
#include <cmath>
#include <vector>

#include "config/AppSettingsFields.h"
#include "config/ThresholdOptions.h"

namespace tidewell {

namespace {

constexpr std::int64_t minutesPerDay = 1440;

/// Why a value is refused; empty when it was taken over.
using Refusal = std::optional<std::string>;

char lowerLetter(char letter)
{
    return letter >= 'A' && letter <= 'Z' ? static_cast<char>(letter - 'A' + 'a') : letter;
}

bool sameWord(std::string_view left, std::string_view right)
{
    return std::ranges::equal(left, right, {}, lowerLetter, lowerLetter);
}

std::string_view trimmed(std::string_view text)
{
    const auto first = text.find_first_not_of(" \t");
    if (first == std::string_view::npos)
        return {};
    return text.substr(first, text.find_last_not_of(" \t") - first + 1);
}

/// The whole text as a number: digits only, so no sign, exponent, "inf" or hexadecimal.
template <class Number>
std::optional<Number> numberIn(std::string_view text)
{
    if (text.empty() || text.find_first_not_of("0123456789.") != std::string_view::npos)
        return std::nullopt;
    Number number{};
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), number);
    if (error != std::errc{} || end != text.data() + text.size())
        return std::nullopt;
    return number;
}

bool isOneOf(std::span<const std::int64_t> options, std::int64_t number)
{
    return std::ranges::find(options, number) != options.end();
}

struct Amount {
    double number = 0;
    bool mmolL = false;
};

/// "72", "72 mg/dL", "4.0 mmol/L".
std::optional<Amount> amountIn(std::string_view text)
{
    const auto unitStart = std::min(text.find_first_not_of("0123456789."), text.size());
    const auto number = numberIn<double>(text.substr(0, unitStart));
    const auto unit = trimmed(text.substr(unitStart));
    const bool mmolL = sameWord(unit, "mmol/L");
    if (!number || (!mmolL && !unit.empty() && !sameWord(unit, "mg/dL")))
        return std::nullopt;
    return Amount{.number = *number, .mmolL = mmolL};
}

/// The option of that value in the unit that the person named.
const ThresholdOption* optionFor(ThresholdKind kind, const Amount& amount)
{
    const auto label = amount.mmolL ? fmt::format("{:.1f} mmol/L", amount.number) : std::string{};
    for (const ThresholdOption& option : thresholdOptions(kind, amount.mmolL)) {
        if (!amount.mmolL && option.mgdL == amount.number)
            return &option;
        // The label has one decimal; a value with more of them is none that is offered.
        if (amount.mmolL && option.label == label &&
            std::abs(std::round(amount.number * 10) - amount.number * 10) < 1e-9)
            return &option;
    }
    return nullptr;
}

Refusal setThreshold(AppSettings& settings, std::string_view key, std::string_view value)
{
    const bool low = key == "lowGlucoseThreshold";
    const auto kind = low ? ThresholdKind::low : ThresholdKind::high;
    const auto amount = amountIn(value);
    const ThresholdOption* option = amount ? optionFor(kind, *amount) : nullptr;
    if (!option) {
        const auto whole = thresholdOptions(kind, false);
        const auto tenths = thresholdOptions(kind, true);
        return fmt::format("{} takes {} to {}, or {} to {} in steps of 0.1", key, whole.front().label,
                           whole.back().label, tenths.front().label, tenths.back().label);
    }
    (low ? settings.lowGlucoseThreshold : settings.highGlucoseThreshold) = option->mgdL;
    if (settings.lowGlucoseThreshold >= settings.highGlucoseThreshold) {
        return fmt::format("lowGlucoseThreshold must stay below highGlucoseThreshold; {} is {} mg/dL",
                           low ? "highGlucoseThreshold" : "lowGlucoseThreshold",
                           low ? settings.highGlucoseThreshold : settings.lowGlucoseThreshold);
    }
    return std::nullopt;
}

Refusal setUnit(AppSettings& settings, std::string_view key, std::string_view value)
{
    for (const std::string_view unit : {"mg/dL", "mmol/L"}) {
        if (sameWord(value, unit)) {
            settings.measurementUnit = unit;
            return std::nullopt;
        }
    }
    return fmt::format("{} takes mg/dL or mmol/L", key);
}

Refusal setGraphHours(AppSettings& settings, std::string_view key, std::string_view value)
{
    if (sameWord(value, "default")) {
        settings.graphTimeWindowHours.reset();
        return std::nullopt;
    }
    const auto hours = numberIn<std::int64_t>(value);
    if (!hours || !isOneOf(graphTimeWindowHourOptions, *hours))
        return fmt::format("{} takes {} or default", key, fmt::join(graphTimeWindowHourOptions, ", "));
    settings.graphTimeWindowHours = hours;
    return std::nullopt;
}

Refusal setSwitch(bool& field, std::string_view key, std::string_view value)
{
    const auto says = [value](std::initializer_list<std::string_view> words) {
        return std::ranges::any_of(words, [value](std::string_view word) { return sameWord(value, word); });
    };
    const bool on = says({"true", "on", "yes"});
    if (!on && !says({"false", "off", "no"}))
        return fmt::format("{} takes true or false", key);
    field = on;
    return std::nullopt;
}

/// "22:00" or "7:05" as minutes after midnight.
std::optional<std::int64_t> timeOfDayIn(std::string_view text)
{
    const auto colon = text.find(':');
    if (colon == std::string_view::npos)
        return numberIn<std::int64_t>(text);
    const auto hours = numberIn<std::int64_t>(text.substr(0, colon));
    const auto minutes = numberIn<std::int64_t>(text.substr(colon + 1));
    if (!hours || !minutes || colon > 2 || text.size() - colon != 3 || *hours > 23 || *minutes > 59)
        return std::nullopt;
    return *hours * 60 + *minutes;
}

Refusal setMinutes(std::int64_t& field, std::string_view key, std::string_view value)
{
    if (key == "lowAlertRepeatMinutes") {
        const auto minutes = numberIn<std::int64_t>(value);
        if (!minutes || !isOneOf(lowAlertRepeatMinuteOptions, *minutes))
            return fmt::format("{} takes {} (0: no repeat)", key,
                               fmt::join(lowAlertRepeatMinuteOptions, ", "));
        field = *minutes;
        return std::nullopt;
    }
    const auto minutes = timeOfDayIn(value);
    if (!minutes || *minutes >= minutesPerDay)
        return fmt::format("{} takes a time of day from 00:00 to 23:59, or minutes from 0 to 1439", key);
    field = *minutes;
    return std::nullopt;
}

std::string minutesText(std::string_view key, std::int64_t minutes)
{
    if (key == "lowAlertRepeatMinutes" || minutes < 0 || minutes >= minutesPerDay)
        return fmt::format("{}", minutes);
    return fmt::format("{:02}:{:02}", minutes / 60, minutes % 60);
}

}  // namespace

std::span<const std::string_view> appSettingKeys()
{
    static const auto keys = [] {
        std::vector<std::string_view> list;
        forEachAppSetting([&list](std::string_view key, auto) { list.push_back(key); });
        return list;
    }();
    return keys;
}

std::optional<std::string> settingText(const AppSettings& settings, std::string_view wanted)
{
    std::optional<std::string> text;
    forEachAppSetting([&](std::string_view key, auto member) {
        if (key != wanted)
            return;
        const auto& field = settings.*member;
        using Field = std::remove_cvref_t<decltype(field)>;
        if constexpr (std::is_same_v<Field, std::string>)
            text = field;
        else if constexpr (std::is_same_v<Field, double>)
            text = fmt::format("{} mg/dL", field);
        else if constexpr (std::is_same_v<Field, bool>)
            text = field ? "true" : "false";
        else if constexpr (std::is_same_v<Field, std::int64_t>)
            text = minutesText(key, field);
        else
            text = field ? fmt::format("{}", *field) : "default";
    });
    return text;
}

std::expected<AppSettings, std::string> withSetting(AppSettings settings, std::string_view wanted,
                                                    std::string_view value)
{
    value = trimmed(value);
    Refusal refusal = "There is no such setting";
    forEachAppSetting([&](std::string_view key, auto member) {
        if (key != wanted)
            return;
        auto& field = settings.*member;
        using Field = std::remove_cvref_t<decltype(field)>;
        if constexpr (std::is_same_v<Field, std::string>)
            refusal = setUnit(settings, key, value);
        else if constexpr (std::is_same_v<Field, double>)
            refusal = setThreshold(settings, key, value);
        else if constexpr (std::is_same_v<Field, bool>)
            refusal = setSwitch(field, key, value);
        else if constexpr (std::is_same_v<Field, std::int64_t>)
            refusal = setMinutes(field, key, value);
        else
            refusal = setGraphHours(settings, key, value);
    });
    if (refusal)
        return std::unexpected{std::move(*refusal)};
    return settings;
}

AppSettings withChanges(AppSettings settings, const AppSettings& from, const AppSettings& to)
{
    forEachAppSetting([&](std::string_view, auto member) {
        if (from.*member != to.*member)
            settings.*member = to.*member;
    });
    return settings;
}

}  // namespace tidewell
