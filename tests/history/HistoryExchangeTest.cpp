#include <fmt/format.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <random>

#include "history/CsvReader.h"
#include "history/HistoryExport.h"
#include "history/HistoryImport.h"

namespace tidewell {

namespace {

const Date now = *dateFromIso("2026-03-02T12:00:00Z");

using Options = HistoryImportReader::Options;

HistoryImportFile read(std::string_view text, Options options = {}, std::size_t piece = 4096)
{
    options.now = now;
    HistoryImportReader reader{options};
    for (std::size_t at = 0; at < text.size() && reader.feed(text.substr(at, piece)); at += piece) {
    }
    return reader.finish();
}

std::string summary(const HistoryImportFile& file)
{
    if (file.problem)
        return fmt::format("{}: {}", file.problem->line, file.problem->why);
    std::string text;
    for (const auto& reading : file.readings(0, file.count()))
        text += fmt::format("{}={}/{}{} ", isoText(reading.date).substr(0, 16), reading.mgdL,
                            reading.sampleDuration.count(), reading.trendString.empty() ? "" : "t");
    for (const auto& refusal : file.refusals)
        text += fmt::format("!{} ", refusal.line);
    return text;
}

TimeZone zone(std::string_view name) { return TimeZone::named(name).value(); }

/// Readings as services may send them and worse: fractions, odd words, several in a second.
std::vector<StoredReading> anyReadings(unsigned seed)
{
    std::mt19937 random{seed};
    const auto upTo = [&random](unsigned most) { return static_cast<unsigned>(random() % (most + 1)); };
    const std::vector<std::string> words{"Flat", "FortyFiveDown", "", "Not, computable", "=1+1",
                                         "'@",   " \"odd\" "};
    std::vector<StoredReading> readings;
    double at = unixSeconds(now) - 90 * 86400.0;
    for (unsigned i = 0; i < 300; ++i) {
        at += 1 + upTo(600) + upTo(999) / 1000.0;
        at = std::round(at * 1000) / 1000;
        const double value = upTo(1) ? 40 + upTo(400) : 40 + upTo(1'000'000) / 3000.0;
        readings.push_back(
            {.reading = makeReading(value, words[upTo(6)], dateFromUnix(at),
                                    Seconds{upTo(1) ? 300.0 : 0.1 + upTo(8000) / 9.0},
                                    upTo(1) ? GlucoseProvider::dexcom : GlucoseProvider::libreLinkUp),
             .fetchedAt = dateFromUnix(at + upTo(100))});
    }
    return readings;
}

}  // namespace

TEST(HistoryExchange, whatIsExportedComesBackEqualHoweverItIsCut)
{
    for (unsigned seed = 0; seed < 20; ++seed) {
        const auto stored = anyReadings(seed);
        for (const auto format : {HistoryExportFormat::csv, HistoryExportFormat::json}) {
            const std::string text = exportHistory(stored, format);
            const auto file = read(text, {}, 1 + seed * 37);
            ASSERT_FALSE(file.problem) << file.problem->why;
            ASSERT_EQ(file.refused, 0u) << file.refusals.front().why;
            EXPECT_EQ(file.format, format == HistoryExportFormat::csv ? HistoryFileFormat::tidewellCsv
                                                                      : HistoryFileFormat::tidewellJson);
            const auto back = file.readings(0, 1000);
            ASSERT_EQ(back.size(), stored.size());
            for (std::size_t i = 0; i < back.size(); ++i)
                ASSERT_EQ(back[i], stored[i].reading) << "seed " << seed << ", " << i;
            // A spreadsheet saves with CR LF and a byte order mark.
            std::string saved = "\xEF\xBB\xBF";
            for (const char c : text)
                saved += c == '\n' ? "\r\n" : std::string(1, c);
            EXPECT_EQ(summary(read(saved)), summary(file));
        }
    }
}

TEST(HistoryExchange, exportWritesExactlyTheseForms)
{
    const auto reading = [](double value, double at) {
        return StoredReading{
            .reading = makeReading(value, "Flat", dateFromUnix(at), Seconds{300}, GlucoseProvider::dexcom),
            .fetchedAt = dateFromUnix(at + 60)};
    };
    for (const auto& [word, field] :
         {std::pair{"=1+1", "'=1+1"}, {"'", "''"}, {"Up, \"1\"", "\"'Up, \"\"1\"\"\""}, {"", ""}}) {
        auto odd = reading(120, 1'772'438'400);
        odd.reading.trendString = word;
        EXPECT_TRUE(
            exportHistory({odd}, HistoryExportFormat::csv).contains(fmt::format(",120,{},300,", field)))
            << word;
    }
    const std::vector<StoredReading> two{reading(120, 1'772'438'400), reading(100.8, 1'772'438'700.482)};
    EXPECT_EQ(exportHistory(two, HistoryExportFormat::csv),
              "time,glucose_mgdl,trend,sample_duration_s,source,fetched_at\n"
              "2026-03-02T08:00:00Z,120,Flat,300,dexcom,2026-03-02T08:01:00Z\n"
              "2026-03-02T08:05:00.482Z,100.8,Flat,300,dexcom,2026-03-02T08:06:00.482Z\n");
    EXPECT_EQ(exportHistory({two.front()}, HistoryExportFormat::json),
              "{\"format\": \"tidewell-history\", \"version\": 1, \"readings\": [\n"
              "{\"reading\":{\"mgdL\":120,\"trendString\":\"Flat\",\"date\":\"2026-03-02T08:00:00.000Z\","
              "\"sampleDuration\":300,\"source\":\"dexcom\"},\"fetchedAt\":\"2026-03-02T08:01:00Z\"}\n]}\n");
    EXPECT_TRUE(parseJson(exportHistory({}, HistoryExportFormat::json)));
    EXPECT_EQ(read(exportHistory({}, HistoryExportFormat::json)).count(), 0u);
    EXPECT_FALSE(read(exportHistory({}, HistoryExportFormat::csv)).problem);
}

TEST(HistoryExchange, csvOfOthersIsReadOrRefusedByTheLine)
{
    const struct {
        const char* text;
        const char* expected;
    } cases[]{
        {"time,glucose_mgdl\n2026-03-01T10:00:00Z,100\n2026-03-01T11:00+01:00,101\n",
         "2026-03-01T10:00=100/300 !3 "},
        {"epoch_s;glucose_mmoll;note\n1772359200;5,5;x\n1772359500;5.5;\n1772359800;1.234,5;\n",
         "2026-03-01T10:00=99/300 2026-03-01T10:05=99/300 !4 "},
        {"time\tglucose_mmoll\ttrend\n2026-03-01 10:00:00Z\t5,5\tFlat\n", "2026-03-01T10:00=99/300t "},
        {"time,glucose_mmoll\n2026-03-01T10:00:00Z,\"5,5\"\n2026-03-01T10:05:00Z,5,5\n2026-03-01T10:10:00Z,"
         "\"5,500\"\n",
         "2026-03-01T10:00=99/300 !3 !4 "},
        // Each row in its own unit; both only where they agree. A value in the wrong column cannot be.
        {"epoch_s,glucose_mgdl,glucose_mmoll\n1772359200,99,\n1772359500,,5.5\n1772359800,99,5.5\n"
         "1772360100,99,7\n1772360400,5.5,\n1772360700,,99\n1772361000,,\n",
         "2026-03-01T10:00=99/300 2026-03-01T10:05=99/300 2026-03-01T10:10=99/300 !5 !6 !7 !8 "},
        // Of rows of one second the later counts; order, case and other columns do not matter.
        {"Note,Glucose_mgdL,EPOCH_S,sample_duration_s\n\"a\nb\",120,1772359500,60\n,100,1772359200,\n,101,"
         "1772359200.4,1200\n",
         "2026-03-01T10:00=101/900 2026-03-01T10:05=120/60 "},
        {"epoch_s,glucose_mgdl,sample_duration_s,source\n1772359200,100,0,\n1772359201,100,x,\n1772359202,"
         "100,,medtronic\n"
         "9772359203,100,,\n-5,100,,\n1772359204,nan,,\n1772359205,0x64,,\n1772359206,100,,libreLinkUp,,\n\n,"
         ";"
         "\n1772359207,100,,,5\n",
         "2026-03-01T10:00=100/300 !2 !3 !4 !5 !6 !7 !8 !12 "},
        {"epoch_s,glucose_mgdl\n17\"72,100\n\"1772359200\"x,100\n1772359200,\"100\"\n",
         "2026-03-01T10:00=100/300 !2 !3 "},
        {"epoch_s,glucose_mgdl\r1772359200,100\r1772359500,101\r",
         "2026-03-01T10:00=100/300 2026-03-01T10:05=101/300 "},
        {"", "0: The file is empty."},
        {" \n\n", "0: The file is empty."},
        {"epoch_s,glucose_mgdl\n1,\"unclosed\n", "2: A quotation mark that opens in this row is not closed."},
        {"epoch_s,time,glucose_mgdl\n",
         "1: The header names both time and epoch_s. Remove one of the two columns."},
        {"epoch_s,glucose_mgdl,glucose_mgdl\n", "1: The header names the column \"glucose_mgdl\" twice."},
        {"time,glucose_mgdl\n2026-03-01T10:00:00,100\n",
         "0: The times in the file are those of a clock, without a time zone."},
        {"\xFF\xFEt\1i\1", "1: The file is no text in UTF-8. Save it as CSV in UTF-8."},
        {"{\"format\":\"tidewell-history\",\"version\":2,\"readings\":[]}",
         "0: The file was written by another version of Tidewell, in a form that this one does not know."},
        {"{\"format\":\"tidewell-history\",\"version\":1,\"readings\":[{}],\"more\":[{}]}",
         "0: The file is no export of Tidewell."},
        {"{\"format\":\"tidewell-history\",\"version\":1,\"readings\":[\n{},[]\n,{\"reading\":{\"mgdL\":5,"
         "\"trendString\":\"Flat\",\"date\":\"2026-03-01T10:00:00Z\"}}]}",
         "!2 !2 !3 "},
        {"{\"a\":1}", "0: The file is no export of Tidewell."},
        {"{\"format\":", "0: The file is no valid JSON."},
        {"{}}", "0: The file is no export of Tidewell."},
    };
    for (const auto& [text, expected] : cases) {
        EXPECT_EQ(summary(read(text)), expected) << text;
        EXPECT_EQ(summary(read(text, {}, 1)), expected) << text;
    }
    const auto headless = read("1772359200,100\n1772359500,101\n");
    ASSERT_TRUE(headless.problem);
    EXPECT_TRUE(headless.problem->why.starts_with("The file names no columns that are known. "))
        << headless.problem->why;
    EXPECT_EQ(headless.count(), 0u);
}

TEST(HistoryExchange, reportsOfTheMakersAreReadInTheirUnitAndClock)
{
    const std::string clarity =
        "Index,Timestamp (YYYY-MM-DDThh:mm:ss),Event Type,Event Subtype,Patient Info,Device Info,Source "
        "Device "
        "ID,Glucose Value (mg/dL),Insulin Value (u),Carb Value (grams),Duration (hh:mm:ss),Glucose Rate of "
        "Change (mg/dL/min),Transmitter Time (Long Integer)\n"
        "1,,FirstName,,A,,,,,,,,\n2,,Alert,Low,,,,70,,,00:30:00,,\n"
        "3,2026-01-10T00:04:31,EGV,,,,\"x, y\",104,,,,,100\n4,2026-01-10T00:09:31,EGV,,,,\"x, "
        "y\",Low,,,,,400\n"
        "5,2026-01-10T00:10:00,Insulin,Fast-Acting,,,x,,2.5,,,,\n6,2026-01-10T00:14:31,EGV,,,,x,,,,,,\n";
    const auto report = read(clarity, {.zone = zone("America/New_York")});
    EXPECT_EQ(summary(report), "2026-01-10T05:04=104/300 2026-01-10T05:09=40/300 !7 ");
    EXPECT_EQ(report.format, HistoryFileFormat::clarityCsv);
    EXPECT_EQ(report.rows, 6u);
    EXPECT_EQ(report.otherRows, 3u);
    EXPECT_EQ(report.lowOrHigh, 1u);
    EXPECT_TRUE(read(clarity).needsTimeZone);

    const auto libreView = [](std::string_view rows, std::optional<DateOrder> order = {}) {
        return read(
            fmt::format(
                "Glucose Data,Generated on,01-03-2026 10:11 UTC,Generated by,\"B, A\"\n"
                "Device,Serial Number,Device Timestamp,Record Type,Historic Glucose mmol/L,Scan Glucose "
                "mmol/L,Notes\n{}",
                rows),
            {.zone = zone("Europe/London"), .dateOrder = order});
    };
    EXPECT_EQ(summary(libreView("L,S,13-01-2026 14:05,0,5.5,,\nL,S,01-02-2026 14:06,1,,6,\n"
                                "L,S,01-02-2026 14:07,6,,,\"my\nnote\"\nL,S,01-02-2026 14:08,0,,6,\n")),
              "2026-01-13T14:05=99/300 2026-02-01T14:06=108/60 !7 ");
    EXPECT_EQ(summary(libreView("L,S,01-13-2026 2:05 PM,0,HI,,\nL,S,02-01-2026 12:05 am,0,5.5,,\n")),
              "2026-01-13T14:05=400/900 2026-02-01T00:05=99/900 ");
    EXPECT_TRUE(libreView("L,S,01-02-2026 14:05,0,5.5,,\n").needsDateOrder);
    EXPECT_TRUE(libreView("L,S,13-01-2026 14:05,0,5.5,,\nL,S,01-13-2026 14:05,0,5.5,,\n").needsDateOrder);
    EXPECT_EQ(summary(libreView("L,S,01-02-2026 14:05,0,5.5,,\n", DateOrder::monthFirst)),
              "2026-01-02T14:05=99/300 ");
    // Automatic readings stand for what lies between most of them.
    const auto sparse = libreView(
        "L,S,13-01-2026 14:05,0,5.5,,\nL,S,13-01-2026 14:20,0,5.5,,\nL,S,13-01-2026 14:22,1,,6,\n"
        "L,S,13-01-2026 14:35,0,5.5,,\nL,S,14-01-2026 14:35,0,5.5,,\n");
    EXPECT_EQ(sparse.historicDuration, Seconds{900});
    EXPECT_EQ(summary(sparse),
              "2026-01-13T14:05=99/900 2026-01-13T14:20=99/900 2026-01-13T14:22=108/60 "
              "2026-01-13T14:35=99/900 2026-01-14T14:35=99/900 ");
    EXPECT_EQ(libreView("L,S,13-01-2026 14:05,0,5.5,,\nL,S,13-01-2026 14:10,0,5.5,,\n").historicDuration,
              Seconds{300});
    const auto german = read(
        "Glukosedaten,Erstellt am,01.03.2026 10:11 UTC\n\n"
        "Gerät,Seriennummer,Gerätezeitstempel,Aufzeichnungstyp,Glukosewert-Verlauf mg/dL,Glukose-Scan mg/dL\n"
        "L,S,02-02-2026 14:05,0,100,\nL,S,02.01.2026 14:05,0,100,\n",
        {.zone = zone("Europe/Berlin")});
    EXPECT_EQ(summary(german), "2026-01-02T13:05=100/900 2026-02-02T13:05=100/900 ");
    EXPECT_EQ(german.format, HistoryFileFormat::libreViewCsv);
}

TEST(HistoryExchange, anHourThatTheClockRepeatsFollowsTheOrderOfTheRows)
{
    const auto local = [](const std::vector<std::string>& times) {
        std::string text = "time,glucose_mgdl\n";
        for (const auto& time : times)
            text += fmt::format("{},100\n", time);
        return read(text, {.zone = zone("Europe/Berlin")});
    };
    std::vector<std::string> night{"2025-10-26T01:30", "2025-10-26T02:00", "2025-10-26T02:30",
                                   "2025-10-26T02:00", "2025-10-26T02:30", "2025-10-26T03:00"};
    const std::string expected =
        "2025-10-25T23:30=100/300 2025-10-26T00:00=100/300 2025-10-26T00:30=100/300 "
        "2025-10-26T01:00=100/300 2025-10-26T01:30=100/300 2025-10-26T02:00=100/300 ";
    EXPECT_EQ(summary(local(night)), expected);
    EXPECT_EQ(local(night).repeatedHour, 4u);
    std::ranges::reverse(night);
    EXPECT_EQ(summary(local(night)), expected);
    EXPECT_EQ(
        summary(local({"2025-03-30T01:59", "2025-03-30T02:30", "2025-03-30T03:00", "2025-02-30T03:00"})),
        "2025-03-30T00:59=100/300 2025-03-30T01:00=100/300 !3 !5 ");
}

TEST(HistoryExchange, aLongFileIsBoundedInWhatIsKept)
{
    // Every refusal is counted, a few are listed.
    std::string bad = "epoch_s,glucose_mgdl\n";
    for (int i = 0; i < 5000; ++i)
        bad += "x,y\n";
    const auto file = read(bad);
    EXPECT_EQ(file.refused, 5000u);
    EXPECT_EQ(file.refusals.size(), HistoryImportFile::mostListedRefusals);
    // A quote that is never closed does not swallow the file.
    const auto open = read("epoch_s,glucose_mgdl\n\"" + std::string(1'000'000, 'x'));
    ASSERT_TRUE(open.problem);
    EXPECT_EQ(open.problem->line, 2u);
    EXPECT_TRUE(read("{\"format\":\"" + std::string(20'000'000, 'x')).problem);
    // Nor do other words fill the memory.
    std::string words = "epoch_s,glucose_mgdl,trend\n";
    for (int i = 0; i < 300; ++i)
        words += fmt::format("{},100,w{}\n", 1'772'359'200 + i, i);
    EXPECT_EQ(read(words).refused, 300u - 256u);
}

}  // namespace tidewell
