#include "program/WatchBarLine.h"

#include <gtest/gtest.h>

#include "support/Json.h"

namespace tidewell {

namespace {

const Date now = dateFromUnix(1'700'000'000);  // 22:13:20

StatusBarState state(double mgdL, const char* trend, Seconds age)
{
    StatusBarState state;
    state.presentedReading = makeReading(mgdL, trend, now - age, Seconds{300}, GlucoseProvider::dexcom);
    state.freshness = ReadingFreshness::current;
    state.iconState = StatusBarIconState::value;
    return state;
}

StatusBarState withProblem(StatusBarState state)
{
    state.currentError = ErrorInfo{.title = "No <internet> & \"more\".", .message = "It's\x01 away."};
    state.nextRetryAt = now + Seconds{120};
    return state;
}

StatusBarState snoozed(StatusBarState state, Seconds left)
{
    state.alertsSnoozedUntil = now + left;
    return state;
}

StatusBarState hostile()
{
    auto hostile = state(120, "Flat", Seconds{0});
    hostile.presentedReading->trendArrow = "<b>#(ls)#[x]%{A:ls:}\n%%{";
    return hostile;
}

std::string line(WatchFormat format, const StatusBarState& state, const AppSettings& settings = {})
{
    const auto line = watchBarLine(format, state, settings, now, TimeZone::utc());
    EXPECT_EQ(line.text, line.content);
    EXPECT_FALSE(line.text.contains('\n'));
    return line.text;
}

TEST(WatchBarLine, eachBarGetsEachStateInItsOwnConventions)
{
    struct Row {
        const char* name;
        StatusBarState state;
        std::string waybar;  ///< Without the tooltip.
        std::string i3blocks;
        std::string polybar;
        std::string tmux;
        AppSettings settings{};
    };
    const std::vector<Row> rows{
        {"nothing yet", StatusBarState{}, R"({"text":"--","alt":"none","class":["none"]})",
         R"({"full_text":"--","short_text":"--","color":"#8A8A8E"})", "%{F#8A8A8E}--%{F-}",
         "#[dim]--#[default]"},
        {"problem without a reading", withProblem({}),
         R"({"text":"-- !","alt":"none","class":["none","problem"]})",
         R"({"full_text":"-- !","short_text":"-- !","color":"#8A8A8E"})", "%{F#8A8A8E}-- !%{F-}",
         "#[dim]-- !#[default]"},
        {"in range", state(120, "Flat", Seconds{899}),
         R"({"text":"120 →","alt":"in-range","class":["in-range","current"]})",
         R"({"full_text":"120 →","short_text":"120"})", "120 →", "120 →"},
        {"in range with a problem", withProblem(state(120, "Flat", Seconds{60})),
         R"({"text":"120 → !","alt":"in-range","class":["in-range","current","problem"]})",
         R"({"full_text":"120 → !","short_text":"120 !"})", "120 → !", "120 → !"},
        {"at the low threshold", state(72, "Flat", Seconds{60}),
         R"({"text":"72 →","alt":"low","class":["low","current","red"]})",
         R"({"full_text":"72 →","short_text":"72","color":"#FF3B30"})",
         "%{B#C62828}%{F#FFFFFF} 72 → %{F-}%{B-}", "#[fg=white,bg=red,bold] 72 → #[default]"},
        {"in range, falling quickly, in mmol/L",
         state(120, "DoubleDown", Seconds{60}),
         R"({"text":"6.7 ↓↓","alt":"in-range","class":["in-range","current","red"]})",
         R"({"full_text":"6.7 ↓↓","short_text":"6.7","color":"#FF3B30"})",
         "%{B#C62828}%{F#FFFFFF} 6.7 ↓↓ %{F-}%{B-}",
         "#[fg=white,bg=red,bold] 6.7 ↓↓ #[default]",
         {.measurementUnit = "mmol/L"}},
        {"at the high threshold", state(270, "FortyFiveUp", Seconds{60}),
         R"({"text":"270 ↗","alt":"high","class":["high","current","orange"]})",
         R"({"full_text":"270 ↗","short_text":"270","color":"#D97706"})",
         "%{B#FFE64D}%{F#5C3D00} 270 ↗ %{F-}%{B-}", "#[fg=black,bg=yellow] 270 ↗ #[default]"},
        {"a low that is stale, although the state does not know it yet",
         state(50, "DoubleDown", Seconds{900}), R"({"text":"50 ?","alt":"stale","class":["stale"]})",
         R"({"full_text":"50 ?","short_text":"50 ?","color":"#8A8A8E"})", "%{F#8A8A8E}50 ?%{F-}",
         "#[dim]50 ?#[default]"},
        {"expired with a problem", withProblem(state(50, "Flat", Seconds{3600})),
         R"({"text":"-- ? !","alt":"expired","class":["expired","problem"]})",
         R"({"full_text":"-- ? !","short_text":"-- ? !","color":"#8A8A8E"})", "%{F#8A8A8E}-- ? !%{F-}",
         "#[dim]-- ? !#[default]"},
        {"snoozed", snoozed(state(120, "Flat", Seconds{60}), Seconds{1}),
         R"({"text":"120 →","alt":"in-range","class":["in-range","current","snoozed"]})",
         R"({"full_text":"120 →","short_text":"120"})", "120 →", "120 →"},
        {"a snooze that is over", snoozed(state(120, "Flat", Seconds{60}), Seconds{0}),
         R"({"text":"120 →","alt":"in-range","class":["in-range","current"]})",
         R"({"full_text":"120 →","short_text":"120"})", "120 →", "120 →"},
        {"a text that would be tags", hostile(),
         R"({"text":"120 &lt;b&gt;#(ls)#[x]%{A:ls:}\n%%{","alt":"in-range","class":["in-range","current"]})",
         R"({"full_text":"120 <b>#(ls)#[x]%{A:ls:}\n%%{","short_text":"120"})",
         "120 <b>#(ls)#[x]% {A:ls:} % % {", "120 <b>##(ls)##[x]%{A:ls:} %%{"},
    };
    for (const auto& row : rows) {
        SCOPED_TRACE(row.name);
        const auto waybar = parseJson(line(WatchFormat::waybar, row.state, row.settings));
        ASSERT_TRUE(waybar);
        auto object = waybar->as_object();
        EXPECT_EQ(object.erase("tooltip"), 1);
        EXPECT_EQ(json::value(object), *parseJson(row.waybar));
        EXPECT_EQ(line(WatchFormat::i3blocks, row.state, row.settings), row.i3blocks);
        EXPECT_EQ(line(WatchFormat::polybar, row.state, row.settings), row.polybar);
        EXPECT_EQ(line(WatchFormat::tmux, row.state, row.settings), row.tmux);
    }
}

TEST(WatchBarLine, theTooltipSaysAllOfItInMarkupThatNothingCanLeave)
{
    EXPECT_EQ(line(WatchFormat::waybar, state(120, "Flat", Seconds{90})),
              R"({"text":"120 →","alt":"in-range","tooltip":"120 mg/dL →\n)"
              R"(Measured at 22:11, less than 5 minutes ago, steady","class":["in-range","current"]})");
    const auto object =
        parseJson(line(WatchFormat::waybar, snoozed(withProblem(state(120, "Flat", Seconds{1200})), 30min)));
    ASSERT_TRUE(object);
    EXPECT_EQ(object->at("tooltip"),
              "120 mg/dL ?\n"
              "Last glucose reading was 20 minutes ago.\n"
              "No &lt;internet&gt; &amp; &quot;more&quot;.\n"
              "It&#39;s  away.\n"
              "Next retry at 22:15\n"
              "Low, high and rapid-change alerts snoozed until 22:43");
}

TEST(WatchBarLine, theLastLineOfAWatcherHoldsNoValue)
{
    EXPECT_EQ(watchBarEndLine(WatchFormat::waybar).text,
              R"({"text":"-- !","alt":"none","tooltip":"Tidewell\nTidewell has ended.",)"
              R"("class":["none","problem"]})");
    EXPECT_EQ(watchBarEndLine(WatchFormat::tmux).text, "#[dim]-- !#[default]");
}

TEST(WatchBarLine, everyFormatHasItsNameAndIsOfABarOrNot)
{
    std::vector<std::string> bars;
    for (const auto& name : watchFormatNames()) {
        const auto format = watchFormat(name);
        ASSERT_TRUE(format) << name;
        if (isBarFormat(*format))
            bars.push_back(name);
    }
    EXPECT_EQ(bars, (std::vector<std::string>{"waybar", "i3blocks", "polybar", "tmux"}));
    EXPECT_EQ(watchFormat("Waybar"), std::nullopt);
}

}  // namespace

}  // namespace tidewell
