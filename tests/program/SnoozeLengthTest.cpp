#include "program/SnoozeLength.h"

#include <gtest/gtest.h>

namespace tidewell {

namespace {

TEST(SnoozeLength, takesWhatPeopleTypeFromOneMinuteToADay)
{
    struct Row {
        std::string_view text;
        std::optional<double> minutes;
    };
    const std::vector<Row> rows{
        {"30m", 30},
        {"2h", 120},
        {"1h30m", 90},
        {"90", 90},
        {"1h30", 90},
        {"1 H 5 Min", 65},
        {" 45 min ", 45},
        {"0h1m", 1},
        {"24h", 1440},
        {"1440", 1440},
        {"23h60m", 1440},
        {"1", 1},
        {"0", {}},
        {"0h", {}},
        {"24h1m", {}},
        {"1441", {}},
        {"25h", {}},
        {"", {}},
        {" ", {}},
        {"h", {}},
        {"m", {}},
        {"2hm", {}},
        {"30m2h", {}},
        {"1.5h", {}},
        {"-5", {}},
        {"+5", {}},
        {"2 hours", {}},
        {"30s", {}},
        {"30mm", {}},
        {"1h2h", {}},
        {"99999999999999999999", {}},
        {"999999h", {}},
        {"1e3", {}},
        {"０", {}},
    };
    for (const auto& [text, minutes] : rows) {
        SCOPED_TRACE(text);
        const auto length = snoozeLength(text);
        EXPECT_EQ(length.has_value(), minutes.has_value());
        if (length && minutes)
            EXPECT_EQ(length->count(), *minutes * 60);
    }
    EXPECT_FALSE(snoozeLength(std::string_view{"30\0m", 4}));
}

}  // namespace

}  // namespace tidewell
