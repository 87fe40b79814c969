#include "program/SnoozeLength.h"

#include <algorithm>
#include <charconv>
#include <cstdint>
#include <optional>

#include "polling/StatusBarPollingCoordinator.h"

namespace tidewell {

namespace {

/// More digits than any number that is taken has, and few enough to multiply.
constexpr std::size_t mostDigits = 6;

constexpr const char* accepted =
    "A snooze lasts from 1 minute to 24 hours. Write 30m, 2h, 1h30m, or 90 for minutes.";

void skipBlanks(std::string_view& text)
{
    text.remove_prefix(std::min(text.find_first_not_of(' '), text.size()));
}

/// Takes a number from the front, and the blanks around it.
std::optional<std::int64_t> takeNumber(std::string_view& text)
{
    skipBlanks(text);
    const auto digits = std::min(text.find_first_not_of("0123456789"), text.size());
    std::int64_t number = 0;
    if (digits == 0 || digits > mostDigits)
        return std::nullopt;
    std::from_chars(text.data(), text.data() + digits, number);
    text.remove_prefix(digits);
    skipBlanks(text);
    return number;
}

bool takeUnit(std::string_view& text, std::string_view unit)
{
    if (!text.starts_with(unit))
        return false;
    text.remove_prefix(unit.size());
    skipBlanks(text);
    return true;
}

}  // namespace

std::expected<Seconds, std::string> snoozeLength(std::string_view text)
{
    std::string lower{text};
    std::ranges::transform(lower, lower.begin(), [](char c) {
        return c >= 'A' && c <= 'Z' ? static_cast<char>(c - 'A' + 'a') : c;
    });
    std::string_view rest = lower;
    std::int64_t minutes = 0;
    auto number = takeNumber(rest);
    if (number && takeUnit(rest, "h")) {
        minutes = *number * 60;
        number = rest.empty() ? std::optional<std::int64_t>{0} : takeNumber(rest);
    }
    if (!number)
        return std::unexpected(accepted);
    minutes += *number;
    if (!takeUnit(rest, "min"))
        (void)takeUnit(rest, "m");
    const Seconds length{static_cast<double>(minutes * 60)};
    if (!rest.empty() || length < shortestSnooze || length > longestSnooze)
        return std::unexpected(accepted);
    return length;
}

}  // namespace tidewell
