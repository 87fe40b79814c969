#include "program/InsightsReportFiles.h"

#include <gtest/gtest.h>

#include <fstream>

#include "history/HistoryImport.h"
#include "testing/TemporaryFolder.h"

namespace tidewell {
namespace {

TEST(InsightsReportFiles, whatFailedAndWhatIsThereAreBothNamed)
{
    const TemporaryFolder folder;
    const auto page = folder / "report.pdf";
    const auto readings = readingsBeside(page);
    EXPECT_EQ(readings, folder / "report.csv");
    std::filesystem::create_directory(readings);
    EXPECT_EQ(writeReportFiles({{page, "page", false}, {readings, "readings", false}}),
              "\"" + readings.string() + "\" exists. Nothing was written.");
    EXPECT_FALSE(std::filesystem::exists(page));
    const auto problem = writeReportFiles({{page, "page", false}, {readings, "readings", true}});
    ASSERT_TRUE(problem);
    EXPECT_TRUE(problem->starts_with("\"" + readings.string() + "\" cannot be written: ")) << *problem;
    EXPECT_TRUE(problem->ends_with(" \"" + page.string() + "\" was written.")) << *problem;
    EXPECT_EQ(std::filesystem::file_size(page), 4U);
}

TEST(InsightsReportFiles, attachedReadingsNameTheDaysThatAreMissingAndComeBack)
{
    const Date now = dateFromIso("2026-03-08T12:00:00Z").value();
    std::vector<StoredReading> readings;
    for (const double minutes : {0.0, 5.0, 10.0})
        readings.push_back({makeReading(100 + minutes, "Flat", now - Seconds{3600 - 60 * minutes},
                                        Seconds{300}, GlucoseProvider::dexcom),
                            now});
    const std::string whole = attachedReadings(readings, {});
    const std::string partial = attachedReadings(readings, {"2026-03-04", "2026-03-06"});
    EXPECT_TRUE(partial.starts_with(whole));
    EXPECT_TRUE(partial.ends_with(": 2026-03-04 2026-03-06\n")) << partial;
    HistoryImportReader reader{{.now = now}};
    EXPECT_TRUE(reader.feed(partial));
    const auto file = reader.finish();
    EXPECT_FALSE(file.problem);
    EXPECT_EQ(file.refused, 0U) << "the remark is no reading";
    EXPECT_EQ(file.count(), readings.size());
}

}  // namespace
}  // namespace tidewell
