// The times of LibreLinkUp: "FactoryTimestamp", and the Retry-After header.

#include <fmt/format.h>
#include <time.h>

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <cstdint>
#include <cstring>
#include <string>
#include <string_view>

#include "Require.h"
#include "sources/LibreLinkUpAnswers.h"

using namespace tidewell;

namespace {

const Date now = dateFromUnix(1'772'438'400);

/// The calendar of the C library, so that the check shares no code with what it checks.
tm calendarOf(Date date)
{
    const auto seconds = static_cast<time_t>(std::llround(unixSeconds(date)));
    tm calendar{};
    gmtime_r(&seconds, &calendar);
    return calendar;
}

std::string timestamp(Date date, bool twelveHours)
{
    const tm c = calendarOf(date);
    const int hour = !twelveHours ? c.tm_hour : c.tm_hour % 12 == 0 ? 12 : c.tm_hour % 12;
    return fmt::format("{}/{}/{:04} {}:{:02}:{:02}{}", c.tm_mon + 1, c.tm_mday, c.tm_year + 1900, hour,
                       c.tm_min, c.tm_sec,
                       !twelveHours     ? ""
                       : c.tm_hour < 12 ? " AM"
                                        : " PM");
}

std::string httpDate(Date date)
{
    const tm c = calendarOf(date);
    char text[64];
    return {text, strftime(text, sizeof text, "%a, %d %b %Y %H:%M:%S GMT", &c)};
}

/// Without the zeros before month, day and hour; an hour of zeros keeps one.
std::string withoutLeadingZeros(std::string_view text)
{
    std::string plain;
    char before = '/';
    for (std::size_t i = 0; i < text.size(); ++i) {
        const bool leads = text[i] == '0' && (plain.empty() || before == '/' || before == ' ');
        const bool digitFollows = i + 1 < text.size() && text[i + 1] >= '0' && text[i + 1] <= '9';
        const bool isYear = std::ranges::count(plain, '/') == 2 && !plain.contains(' ');
        if (leads && digitFollows && !isYear)
            continue;
        before = text[i];
        plain += text[i];
    }
    return plain;
}

void checkTimestamp(std::string_view text)
{
    const auto date = libreFactoryTimestamp(text);
    if (!date)
        return;
    require(timestamp(*date, text.ends_with('M')) == withoutLeadingZeros(text),
            "an accepted time is the time that was written");
}

void checkRetryAfter(std::string_view text)
{
    const auto wait = retryAfterWait(text, now);
    if (!wait)
        return;
    require(*wait >= Seconds{0} && *wait <= Seconds{3600}, "a wait is at most an hour");
    if (!text.ends_with("GMT"))
        require(std::ranges::all_of(text, [](char c) { return c >= '0' && c <= '9'; }), "a wait is a number");
    else if (*wait > Seconds{0} && *wait < Seconds{3600})
        require(httpDate(now + *wait) == text, "a wait ends at the time that was written");
}

/// Any moment of the years 0 to 9999, written in every form, is read back.
void checkWriting(std::uint64_t random)
{
    constexpr double year0 = -62'167'219'200.0;
    constexpr std::uint64_t span = 315'569'520'000;
    const Date date = dateFromUnix(year0 + static_cast<double>(random % span));
    for (const bool twelveHours : {false, true})
        require(libreFactoryTimestamp(timestamp(date, twelveHours)) == date, "a written time is read");
    const Date soon = now + Seconds{static_cast<double>(random % 7200) - 1800};
    require(retryAfterWait(httpDate(soon), now) == std::clamp(soon - now, Seconds{0}, Seconds{3600}),
            "a written date is read");
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    const std::string_view text{reinterpret_cast<const char*>(data), size};
    checkTimestamp(text);
    checkRetryAfter(text);
    std::uint64_t random = 0;
    std::memcpy(&random, data, std::min(size, sizeof random));
    checkWriting(random);
    return 0;
}
