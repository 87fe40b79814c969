#include "program/TerminalGraph.h"

#include <gtest/gtest.h>

#include <sstream>

namespace tidewell {
namespace {

/// Monday, 2 March 2026, 14:00 UTC.
constexpr Date now = dateFromUnix(1'772'460'000);

GlucoseGraphContent content(std::vector<std::pair<double, double>> minutesAgoAndValue,
                            AppSettings settings = {})
{
    GlucoseGraphContent made{
        .settings = std::move(settings), .timeWindow = GraphTimeWindow::hours3, .now = now};
    for (const auto& [ago, value] : minutesAgoAndValue)
        made.glucoseHistory.push_back(
            makeReading(value, "Flat", now - Seconds{60 * ago}, Seconds{300}, GlucoseProvider::dexcom));
    return made;
}

std::vector<std::u32string> linesOf(const std::string& text)
{
    std::vector<std::u32string> lines(1);
    for (std::size_t i = 0; i < text.size();) {
        const auto byte = static_cast<unsigned char>(text[i]);
        const int length = byte < 0x80 ? 1 : byte < 0xe0 ? 2 : byte < 0xf0 ? 3 : 4;
        char32_t code = length == 1 ? byte : byte & (0xffU >> (length + 1));
        for (int k = 1; k < length; ++k)
            code = (code << 6) | (static_cast<unsigned char>(text[i + static_cast<std::size_t>(k)]) & 0x3fU);
        i += static_cast<std::size_t>(length);
        if (code == U'\n')
            lines.emplace_back();
        else
            lines.back() += code;
    }
    lines.pop_back();
    return lines;
}

TEST(TerminalGraph, showsEachReadingWhereItsValueAndTimeAre)
{
    // 40 columns leave 34 beside " 270 ┤"; a reading each 90 minutes lies at the edges and in the middle.
    const std::string drawn =
        terminalGraph(content({{180, 270}, {90, 171}, {0, 72}}), {.columns = 40, .plotRows = 5});
    EXPECT_EQ(drawn,
              " 72 →  mg/dL         Last reading: 14:00\n"
              "\n"
              " 270 ┤⠁╌╌╌╌╌╌╌╌╌╌╌╌╌╌╌╌╌╌╌╌╌╌╌╌╌╌╌╌╌╌╌╌╌\n"
              "     │\n"
              "     │                 ⠄\n"
              "     │\n"
              "  72 ┤┄┄┄┄┄┄┄┄┄┄┄┄┄┄┄┄┄┄┄┄┄┄┄┄┄┄┄┄┄┄┄┄┄⢀\n"
              "     └┴────┴─────┴─────┴────┴─────┴────┴\n"
              "    11:00      12:00      13:00\n");
}

TEST(TerminalGraph, joinsReadingsButNotAcrossAGap)
{
    const auto dotsOf = [](const std::string& text) {
        std::ptrdiff_t count = 0;
        for (const auto& line : linesOf(text))
            count += std::ranges::count_if(line, [](char32_t c) { return c > 0x2800 && c < 0x2900; });
        return count;
    };
    EXPECT_EQ(dotsOf(terminalGraph(content({{60, 100}, {40, 200}}), {})), 2);
    EXPECT_GT(dotsOf(terminalGraph(content({{60, 100}, {50, 200}}), {})), 4);
}

TEST(TerminalGraph, fillsItsWidthAndNeverMore)
{
    for (const int columns : {-1, 40, 57, 80, 200, 1'000'000})
        for (const int rows : {-1, 5, 14, 1'000'000})
            for (const GlucoseGraphContent& one :
                 {content({}), content({{1, 0}}), content({{10, 2000}, {5, 39}, {1, 401}}),
                  content({{1, 150}}, {.lowGlucoseThreshold = 200, .highGlucoseThreshold = 100}),
                  content({{30, 120}}, {.measurementUnit = "mmol/L"})}) {
                const auto lines = linesOf(terminalGraph(one, {.columns = columns, .plotRows = rows}));
                const auto width = static_cast<std::size_t>(std::clamp(columns, 40, 400));
                for (const auto& line : lines)
                    EXPECT_LE(line.size(), width);
                EXPECT_EQ(lines.at(lines.size() - 2).size(), width);
                EXPECT_GE(lines.size(), 9U);
                EXPECT_LE(lines.size(), 66U);
            }
}

TEST(TerminalGraph, colorsOnlyWhenAskedAndEndsEachLineWithoutColor)
{
    const auto mixed = content({{60, 60}, {55, 120}, {50, 300}, {2, 300}});
    const std::string plain = terminalGraph(mixed, {});
    EXPECT_EQ(plain.find('\x1b'), std::string::npos);
    const std::string colored = terminalGraph(mixed, {.color = true});
    std::string stripped;
    for (std::size_t i = 0; i < colored.size(); ++i) {
        if (colored[i] == '\x1b')
            i = colored.find('m', i);
        else
            stripped += colored[i];
    }
    for (const char* sequence : {"\x1b[1;31m", "\x1b[36m", "\x1b[33m"})
        EXPECT_NE(colored.find(sequence), std::string::npos);
    std::istringstream lines{colored};
    for (std::string line; std::getline(lines, line);)
        if (const auto last = line.rfind('\x1b'); last != std::string::npos)
            EXPECT_EQ(line.substr(last, 4), "\x1b[0m") << line;
    EXPECT_EQ(linesOf(stripped).size(), linesOf(plain).size());
}

TEST(TerminalGraph, doesWithoutBrailleAndSaysThatThereIsNothing)
{
    const std::string stars = terminalGraph(content({{60, 60}, {55, 300}}), {.braille = false});
    EXPECT_NE(stars.find('*'), std::string::npos);
    const auto lines = linesOf(stars);
    for (const char32_t code : lines.at(6))
        EXPECT_FALSE(code >= 0x2800 && code < 0x2900);
    EXPECT_NE(terminalGraph(content({{190, 120}}), {}).find("No readings in the last 3 hours"),
              std::string::npos);
    EXPECT_NE(terminalGraph(content({{190, 120}}), {}).find(" -- ?  mg/dL  3 hours and 10 minutes ago"),
              std::string::npos);
}

}  // namespace
}  // namespace tidewell
