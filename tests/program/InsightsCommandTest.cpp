#include <fmt/format.h>
#include <gtest/gtest.h>
#include <stdlib.h>
#include <sys/wait.h>

#include <algorithm>
#include <boost/json/array.hpp>
#include <cstdio>
#include <fstream>
#include <iterator>

#include "program/ExitCode.h"
#include "program/InsightsReport.h"
#include "support/Json.h"

namespace tidewell {
namespace {

/// Runs the program over a file of readings; it needs nothing else of the machine.
class InsightsCommandTest : public testing::Test {
protected:
    /// Three days of 100 mg/dL by the clocks of New York, with an hour of 60 at noon of the second.
    InsightsCommandTest()
    {
        std::ofstream stream{file};
        stream << "time,glucose_mgdl\n";
        const Date start = dateFromIso("2024-03-09T05:00:00Z").value();  // Clocks go on the day after.
        for (int i = 0; i < 3 * 288 - 12; ++i) {
            const bool low = i >= 276 + 144 && i < 276 + 156;
            stream << isoText(start + Seconds{i * 300.0}) << (low ? ",60\n" : ",100\n");
        }
    }
    ~InsightsCommandTest() override { std::filesystem::remove_all(folder); }

    struct Ended {
        int code = -1;
        std::string output{};  ///< Errors as well.
    };
    [[nodiscard]] Ended run(const std::string& options, const std::filesystem::path& csv) const
    {
        const std::string line =
            "\"" TIDEWELL_PROGRAM "\" insights " + options + " --csv \"" + csv.string() + "\" 2>&1";
        std::FILE* const program = ::popen(line.c_str(), "r");
        Ended ended;
        std::array<char, 4096> piece{};
        while (const auto count = std::fread(piece.data(), 1, piece.size(), program))
            ended.output.append(piece.data(), count);
        ended.code = WEXITSTATUS(::pclose(program));
        return ended;
    }
    [[nodiscard]] json::object documentOf(const std::string& options) const
    {
        const auto ended = run("--json --time-zone America/New_York " + options, file);
        EXPECT_EQ(ended.code, 0) << ended.output;
        return parseJson(ended.output).value_or(json::object{}).as_object();
    }

    std::filesystem::path folder = [] {
        std::string name = testing::TempDir() + "tidewell-insights-XXXXXX";
        return std::filesystem::path{::mkdtemp(name.data())};
    }();
    std::filesystem::path file = folder / "readings.csv";
};

TEST_F(InsightsCommandTest, takesWholeLocalDaysOfTheFileByDefault)
{
    const json::object document = documentOf("");
    EXPECT_EQ(document.at("interval"),
              (json::object{{"start", "2024-03-09T05:00:00.000Z"}, {"end", "2024-03-12T04:00:00.000Z"}}));
    EXPECT_EQ(document.at("availableInterval"), document.at("interval"));
    EXPECT_EQ(document.at("readingCount"), 852);
    EXPECT_EQ(document.at("bands").at(1),
              (json::object{{"band", "low"}, {"count", 12}, {"fraction", 12 / 852.0}}));
    EXPECT_EQ(document.at("coverage").at("days").at(1),
              (json::object{{"date", "2024-03-10"}, {"coveredDuration", 82'800}, {"totalDuration", 82'800}}));
    EXPECT_EQ(document.at("agp").at("bins").as_array().size(), 96U);
    EXPECT_EQ(document.at("agp").at("timeZoneIdentifier"), "America/New_York");
    EXPECT_EQ(document.at("gmi"), (json::object{{"unavailable", "collectingHistory"}}));
    EXPECT_EQ(document.at("episodes").as_array().size(), 1U);
    EXPECT_EQ(document.at("episodes").at(0).at("duration"), 3600);
    EXPECT_EQ(document.at("reportQuality").at("kind"), "early");
    for (const char* key : {"meanMgdl", "standardDeviationMgdl", "medianMgdl", "q1Mgdl", "q3Mgdl", "iqrMgdl",
                            "collectionCoverage", "coefficientOfVariationPercent", "timeActivePercent"})
        EXPECT_FALSE(document.at(key).is_null()) << key;
}

TEST_F(InsightsCommandTest, takesThePeriodAndTheStartOfCollectionThatItIsGiven)
{
    const std::vector<std::array<std::string, 3>> cases{
        {"--days 2", "2024-03-10T05:00:00.000Z", "2024-03-12T04:00:00.000Z"},
        {"--from 2024-03-10 --to 2024-03-10", "2024-03-10T05:00:00.000Z", "2024-03-11T04:00:00.000Z"},
        {"--to 2024-03-10T00:00:00Z", "2024-03-09T05:00:00.000Z", "2024-03-10T00:00:00.000Z"},
        {"--collection-start 2024-03-11", "2024-03-11T04:00:00.000Z", "2024-03-12T04:00:00.000Z"}};
    for (const auto& [options, start, end] : cases)
        EXPECT_EQ(documentOf(options)["availableInterval"], (json::object{{"start", start}, {"end", end}}))
            << options;
}

TEST_F(InsightsCommandTest, saysWhatIsWrongWithWhatItIsGiven)
{
    std::ofstream{folder / "empty.csv"} << "time,glucose_mgdl\n";
    struct Case {
        std::string options;
        std::string_view file;
        ExitCode code;
        std::string_view text;
    };
    const std::vector<Case> cases{
        {"--time-zone Nowhere/Atall", "readings.csv", ExitCode::usage, "There is no time zone"},
        {"--from 2024-03-11 --to 2024-03-10", "readings.csv", ExitCode::usage, "ends before it begins"},
        {"--from 2024-02-30", "readings.csv", ExitCode::usage, "neither a date like"},
        {"--from yesterday", "readings.csv", ExitCode::usage, "neither a date like"},
        {"--from 1800-01-01", "readings.csv", ExitCode::usage, "longer than a hundred years"},
        {"--days 3 --from 2024-03-10", "readings.csv", ExitCode::usage, "--days does not go with"},
        {"--days 0", "readings.csv", ExitCode::usage, "--days"},
        {"", "none.csv", ExitCode::failure, "cannot be read"},
        {"", ".", ExitCode::failure, "cannot be read"},
        {"", "empty.csv", ExitCode::failure, "reading"},
    };
    for (const auto& [options, name, code, text] : cases) {
        const auto ended = run(options, folder / name);
        EXPECT_EQ(ended.code, static_cast<int>(code)) << options << name;
        EXPECT_TRUE(ended.output.starts_with("tidewell: ")) << ended.output;
        EXPECT_NE(ended.output.find(text), std::string::npos) << ended.output;
    }
}

TEST_F(InsightsCommandTest, writesThePageAndTheReadingsForTheirOwnerAlone)
{
    const auto page = folder / "page.pdf";
    const std::string options = fmt::format("--pdf '{}' --png '{}' --with-csv --from 2024-03-11 --name Ada",
                                            page.string(), (folder / "page.png").string());
    const auto ended = run(options + " --time-zone America/New_York", file);
    EXPECT_EQ(ended.code, 0);
    EXPECT_NE(ended.output.find("not encrypted"), std::string::npos) << ended.output;
    const auto contents = [&](const char* name) {
        std::ifstream stream{folder / name};
        return std::string{std::istreambuf_iterator<char>{stream}, {}};
    };
    EXPECT_TRUE(contents("page.pdf").starts_with("%PDF-"));
    EXPECT_TRUE(contents("page.png").starts_with("\x89PNG"));
    // The last of the three days, without the 15 minutes of the night before.
    const std::string readings = contents("page.csv");
    EXPECT_EQ(std::ranges::count(readings, '\n'), 1 + 288);
    EXPECT_NE(readings.find("\n2024-03-11T04:00:00Z,100,"), std::string::npos);
    for (const char* name : {"page.pdf", "page.png", "page.csv"})
        EXPECT_EQ(std::filesystem::status(folder / name).permissions(),
                  std::filesystem::perms::owner_read | std::filesystem::perms::owner_write);

    // One file that exists keeps all from being written, unless --force says so.
    std::ofstream{folder / "page.csv"} << "mine";
    std::filesystem::remove(page);
    EXPECT_EQ(run(options, file).code, 1);
    EXPECT_FALSE(std::filesystem::exists(page));
    EXPECT_EQ(contents("page.csv"), "mine");
    const auto forced = run(options + " --json --force", file);
    EXPECT_EQ(forced.code, 0);
    EXPECT_TRUE(forced.output.starts_with("{\n")) << forced.output;
    EXPECT_TRUE(std::filesystem::exists(page));
    EXPECT_NE(contents("page.csv"), "mine");
}

TEST_F(InsightsCommandTest, refusesFilesThatItCannotOrMustNotWrite)
{
    struct Case {
        std::string options;
        ExitCode code;
        std::string_view text;
    };
    const std::vector<Case> cases{
        {"--pdf {}/readings.pdf --with-csv --force", ExitCode::usage, "two things at once"},
        {"--png {}/readings.csv --force", ExitCode::usage, "two things at once"},
        {"--pdf {}/a --png {}/a", ExitCode::usage, "two things at once"},
        {"--pdf {}/readings.csv/a.pdf", ExitCode::failure, "cannot be written"},
        {"--pdf {}/none/a.pdf", ExitCode::failure, "cannot be written"},
        {"--pdf {} --force", ExitCode::failure, "cannot be written"},
        {"--pdf {}/a.pdf --from 2030-01-01 --to 2030-01-02", ExitCode::failure, "Nothing was written"},
        {"--pdf {}/a.pdf --paper a3", ExitCode::usage, "--paper"},
        {"--force", ExitCode::usage, "go with --pdf or --png"},
    };
    for (auto [options, code, text] : cases) {
        for (std::size_t at = 0; (at = options.find("{}")) != std::string::npos;)
            options.replace(at, 2, folder.string());
        const auto ended = run(options, file);
        EXPECT_EQ(ended.code, static_cast<int>(code)) << options << ended.output;
        EXPECT_NE(ended.output.find(text), std::string::npos) << options << ended.output;
    }
    const auto only = std::filesystem::directory_iterator{folder};
    EXPECT_EQ(std::distance(begin(only), end(only)), 1);
}

TEST(InsightsReport, speaksToAPersonInTheirUnit)
{
    InsightsCalculationInput input{.interval = {dateFromUnix(1'700'000'000), dateFromUnix(1'700'086'400)},
                                   .collectionStartedAt = dateFromUnix(1'600'000'000)};
    InsightsReport report{.result = calculateInsights(input),
                          .collection = InsightsCollectionStatusState{.isSaving = false}};
    const auto none = insightsLines(report, GlucoseUnits::mmolL);
    EXPECT_NE(none.find("No readings in this period"), std::string::npos);
    EXPECT_NE(none.find("Saving is off"), std::string::npos);
    EXPECT_EQ(none.find("Mean"), std::string::npos);

    for (int i = 0; i < 12; ++i)
        input.readings.push_back({.mgdL = i < 9 ? 90.0 : 198.0,
                                  .date = dateFromUnix(1'700'000'000 + i * 300.0),
                                  .sampleDuration = Seconds{300}});
    input.readings.push_back({.mgdL = -1, .sampleDuration = Seconds{300}});
    report = {.result = calculateInsights(input)};
    report.quality = insightsReportQuality(report.result.summary, input.collectionStartedAt);
    const auto text = insightsLines(report, GlucoseUnits::mmolL);
    for (const std::string_view part :
         {"2023-11-14 22:13 to 2023-11-15 22:13, UTC\nLimited data.", "measured it: 1 reading.",
          "  High       above 10.0 to 13.9   25.0 %           6 h a day  █████\n",
          "  Very low   below 3.0             0.0 %         0 min a day\n",
          "Mean glucose            6.5 mmol/L\n",
          "GMI                     Needs a 14-day period\n  Choose a period of at least 14 days.",
          "Time active             4.2 %, 1 h of 1 day\n",
          "  Above 10.0                  1  longest 15 min\n",
          "The profile of a day needs readings of at least 3 different days.",
          "Days with less than 70% of readings: 2 of 2"})
        EXPECT_NE(text.find(part), std::string::npos) << part << "\nin\n" << text;

    const auto collecting = insightsCollectionLines(insightsCollectionStatus(
        {.isSaving = true, .hasSavedReadings = true}, InsightsCollectionProgress{Seconds{86'400}, 0.3}));
    EXPECT_TRUE(collecting.starts_with("Building your insights\n2 days left"));
    EXPECT_NE(collecting.find("History collection progress\n1 of 3 days\nLatest 3 days: 30% saved"),
              std::string::npos);
}

}  // namespace
}  // namespace tidewell
