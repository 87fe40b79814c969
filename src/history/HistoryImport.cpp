#include "history/HistoryImport.h"

#include <fmt/format.h>

#include <algorithm>
#include <charconv>
#include <cmath>
#include <expected>
#include <functional>
#include <limits>
#include <map>
#include <tuple>
#include <utility>

#include "history/CsvReader.h"
#include "history/HistoryExport.h"
#include "history/ImportColumns.h"
#include "history/ImportStamp.h"
#include "history/JsonEntries.h"
#include "sources/ReadingLimits.h"
#include "support/Json.h"

namespace tidewell {

namespace {

constexpr std::size_t mostReadings = 2'000'000;
/// Services use a dozen; a file with more different ones has something else in that column.
constexpr std::size_t mostTrends = 256;
constexpr std::size_t longestTrend = 64;
/// Lines above the header of a LibreView report.
constexpr std::size_t mostPreambleRecords = 10;

constexpr double usualDuration = 300;    ///< s
constexpr double longestDuration = 900;  ///< s
/// Of LibreView's automatic readings, which are 5 or 15 minutes apart; until it is known which.
constexpr double unknownDuration = 0;
constexpr double sparseGap = 600;  ///< s
/// A scan is a single value beside the ones of every quarter of an hour.
constexpr double scanDuration = 60;  ///< s

/// What sensors say beyond the range in which they measure, mg/dL.
constexpr double lowValue = 40;
constexpr double highValue = 400;
/// By how much the same value may differ in both units: they are rounded, and some convert by 18.016.
constexpr double unitTolerance = 2;  ///< mg/dL

constexpr double secondsOfDay = 86400;

constexpr std::string_view formatsText =
    "Known are the exports of Tidewell, CSV files with the columns time or epoch_s and glucose_mgdl or "
    "glucose_mmoll, and the CSV reports of Dexcom Clarity (in English) and LibreView (in English or German).";

/// Whether `value` is one of a small list.
template <class... T>
bool isOneOf(std::string_view value, T... wanted)
{
    return ((value == wanted) || ...);
}

/// Begins a line of Tidewell's own CSV that is none of readings.
constexpr char remarkMark = '#';

/// A field as a number, with a decimal comma where it cannot be anything else.
std::optional<double> numberIn(const CsvField& field, char separator)
{
    std::string text = field.text;
    if (const auto comma = text.find(','); comma != std::string::npos) {
        const bool oneField = separator != ',' || field.quoted;
        const std::size_t decimals = text.size() - comma - 1;
        // "1,234" is a thousand in one country and a little more than one in another.
        if (!oneField || decimals == 0 || decimals == 3 ||
            text.find_first_of(".,", comma + 1) < text.size() || text.find('.') < comma)
            return {};
        text[comma] = '.';
    }
    double value = 0;
    const char* const end = text.data() + text.size();
    const auto [stop, error] = std::from_chars(text.data(), end, value);
    if (error != std::errc{} || stop != end || !std::isfinite(value))
        return {};
    return value;
}

bool isPlainText(std::string_view text)
{
    return std::ranges::all_of(text, [](char c) { return c >= ' ' && c <= '~'; });
}

/// The date to the millisecond, as saved history keeps it.
Date toMilliseconds(double seconds) { return dateFromUnix(std::round(seconds * 1000) / 1000); }

}  // namespace

std::string_view description(HistoryFileFormat format)
{
    switch (format) {
    case HistoryFileFormat::tidewellCsv: return "Tidewell's export (CSV)";
    case HistoryFileFormat::tidewellJson: return "Tidewell's export (JSON)";
    case HistoryFileFormat::genericCsv: return "CSV with named columns";
    case HistoryFileFormat::clarityCsv: return "Dexcom Clarity's export (CSV)";
    case HistoryFileFormat::libreViewCsv: return "LibreView's export (CSV)";
    }
    std::unreachable();
}

std::vector<GlucoseReading> HistoryImportFile::readings(std::size_t from, std::size_t most) const
{
    std::vector<GlucoseReading> part;
    const std::size_t begin = std::min(from, kept_.size());
    const std::size_t end = begin + std::min(most, kept_.size() - begin);
    part.reserve(end - begin);
    for (std::size_t at = begin; at < end; ++at) {
        const Kept& kept = kept_[at];
        part.push_back(
            makeReading(kept.mgdL, trends_[kept.trend], kept.date, Seconds{kept.duration}, kept.source));
    }
    return part;
}

std::optional<Date> HistoryImportFile::first() const
{
    return kept_.empty() ? std::nullopt : std::optional{kept_.front().date};
}

std::optional<Date> HistoryImportFile::last() const
{
    return kept_.empty() ? std::nullopt : std::optional{kept_.back().date};
}

struct HistoryImportReader::Impl {
    using Kept = HistoryImportFile::Kept;

    /// A row whose time may yet have to be understood.
    struct Row {
        double mgdL;
        double duration;
        ImportStamp stamp;
        std::uint32_t line;
        std::uint16_t trend;
        GlucoseProvider source;
    };

    explicit Impl(const Options& given) : options{given} {}

    bool feed(std::string_view bytes)
    {
        while (!bytes.empty() && !file.problem) {
            if (begun && !isJson) {
                csv.feed(bytes);
                checkCsv();
                break;
            }
            const char c = bytes.front();
            bytes.remove_prefix(1);
            if (begun) {
                if (!entries.take(c))
                    fail(0, "The file is no export of Tidewell.");
            } else if (start.size() < 3 && (c == ' ' || c == '\n' || c == '\r' || c == '\t' || c < 0)) {
                start += c;  // Blank, or a byte order mark.
            } else {
                begin(c);
            }
        }
        return !file.problem;
    }

    void begin(char c)
    {
        begun = true;
        isJson = c == '{';
        if (isJson) {
            (void)entries.take(c);
            return;
        }
        csv.feed(start);
        csv.feed({&c, 1});
        checkCsv();
    }

    HistoryImportFile finish()
    {
        if (!begun && !file.problem)
            csv.feed(start);
        if (isJson) {
            finishJson();
        } else if (!file.problem) {
            csv.finish();
            checkCsv();
            if (!file.problem && !columns)
                fail(0, sawRecord ? "The file names no columns that are known. " + std::string{formatsText}
                                  : "The file is empty.");
        }
        if (!file.problem)
            resolveTimes();
        if (file.problem)
            dropReadings();
        std::ranges::sort(file.refusals, {}, &HistoryImportRefusal::line);
        return std::move(file);
    }

    void dropReadings()
    {
        file.kept_.clear();
        rows.clear();
    }

    void fail(std::size_t line, std::string why)
    {
        if (!file.problem)
            file.problem = HistoryImportRefusal{line, std::move(why)};
    }

    void refuse(std::size_t line, std::string_view why)
    {
        ++file.refused;
        if (file.refusals.size() < HistoryImportFile::mostListedRefusals)
            file.refusals.push_back({line, std::string{why}});
    }

    void checkCsv()
    {
        switch (csv.problem()) {
        case CsvReader::Problem::none: break;
        case CsvReader::Problem::tooLong:
            fail(csv.problemLine(), "The row is too long. Perhaps a quotation mark is not closed.");
            break;
        case CsvReader::Problem::unclosedQuote:
            fail(csv.problemLine(), "A quotation mark that opens in this row is not closed.");
            break;
        case CsvReader::Problem::notText:
            fail(csv.problemLine(), "The file is no text in UTF-8. Save it as CSV in UTF-8.");
            break;
        }
    }

    bool onRecord(std::size_t line, std::string_view record)
    {
        if (record.find_first_not_of(" \t,;") == std::string_view::npos)
            return true;
        sawRecord = true;
        if (!columns)
            return onHeader(line, record);
        if (record.front() == remarkMark && !columns->kind)
            return true;
        ++file.rows;
        onRow(line, record);
        return !file.problem;
    }

    /// Finds the separator by which a record names columns that are known.
    bool onHeader(std::size_t line, std::string_view record)
    {
        ++preamble;
        for (const char separator : {',', ';', '\t'}) {
            if (!splitCsvRecord(record, separator, fields))
                continue;
            const auto names = columnNames(fields);
            auto found = libreViewColumns(names);
            if (!found && preamble == 1)
                found = clarityColumns(names);
            if (!found && preamble == 1)
                found = genericColumns(names);
            if (!found)
                continue;
            if (auto why = ambiguity(*found, names)) {
                fail(line, *std::move(why));
                return false;
            }
            columns = found;
            file.format = found->format;
            file.separator = separator;
            return true;
        }
        if (preamble < mostPreambleRecords)
            return true;
        fail(0, "The file names no columns that are known. " + std::string{formatsText});
        return false;
    }

    [[nodiscard]] const CsvField* field(std::optional<std::size_t> column) const
    {
        if (!column || *column >= fields.size() || fields[*column].text.empty())
            return nullptr;
        return &fields[*column];
    }

    void onRow(std::size_t line, std::string_view record)
    {
        if (!splitCsvRecord(record, file.separator, fields))
            return refuse(line, "A quotation mark stands in the wrong place.");
        while (fields.size() > columns->count && fields.back().text.empty())
            fields.pop_back();
        if (fields.size() > columns->count)
            return refuse(line, file.separator == ','
                                    ? "The row has more fields than the header. Numbers with a decimal comma "
                                      "need quotation marks, or another separator."
                                    : "The row has more fields than the header.");
        const bool isScan = columns->scan && field(columns->kind) && field(columns->kind)->text == "1";
        if (columns->kind && !isScan) {
            const CsvField* const kind = field(columns->kind);
            const bool clarity = columns->format == HistoryFileFormat::clarityCsv;
            if (!kind || lowerCased(kind->text) != (clarity ? "egv" : "0")) {
                ++file.otherRows;
                return;
            }
        }
        const auto stamp = stampOf();
        if (!stamp)
            return refuse(line, columns->epoch ? "The column epoch_s holds no number of seconds."
                                               : "The time is missing or has a form that is not known.");
        const auto value = valueOf(isScan);
        if (!value)
            return refuse(line, value.error());
        const bool isHistoric = columns->scan && !isScan;
        double duration = isScan ? scanDuration : isHistoric ? unknownDuration : usualDuration;
        if (const CsvField* const given = field(columns->duration)) {
            const auto seconds = numberIn(*given, file.separator);
            if (!seconds || *seconds <= 0)
                return refuse(line, "The sample duration is no number above zero.");
            duration = *seconds;
        }
        GlucoseProvider source = options.source;
        if (columns->format == HistoryFileFormat::clarityCsv)
            source = GlucoseProvider::dexcom;
        else if (columns->format == HistoryFileFormat::libreViewCsv)
            source = GlucoseProvider::libreLinkUp;
        else if (const CsvField* const given = field(columns->source)) {
            const auto provider = glucoseProvider(given->text);
            if (!provider)
                return refuse(line, "The source is neither \"dexcom\" nor \"libreLinkUp\".");
            source = *provider;
        }
        const CsvField* const trend = field(columns->trend);
        std::string word = trend ? trend->text : "";
        if (columns->format == HistoryFileFormat::tidewellCsv && word.starts_with(historyTrendMark))
            word.erase(0, 1);
        add(line, *stamp, *value, word, duration, source);
    }

    [[nodiscard]] std::optional<ImportStamp> stampOf() const
    {
        const CsvField* const given = field(columns->epoch ? columns->epoch : columns->time);
        if (!given)
            return {};
        if (columns->epoch) {
            const auto seconds = numberIn(*given, file.separator);
            return seconds ? std::optional{ImportStamp{.seconds = *seconds}} : std::nullopt;
        }
        return columns->kind ? reportStamp(given->text) : isoStamp(given->text);
    }

    /// mg/dL, or why there is none.
    std::expected<double, std::string_view> valueOf(bool isScan)
    {
        const CsvField* const mgdL = field(isScan && columns->mgdL ? columns->scan : columns->mgdL);
        const CsvField* const mmolL = field(isScan && columns->mmolL ? columns->scan : columns->mmolL);
        if (!mgdL && !mmolL)
            return std::unexpected("The glucose value is missing.");
        if (columns->kind) {
            const std::string word = lowerCased((mgdL ? mgdL : mmolL)->text);
            const bool low = isOneOf(word, "low", "lo");
            if (low || isOneOf(word, "high", "hi")) {
                ++file.lowOrHigh;
                (mgdL ? file.hasMgdL : file.hasMmolL) = true;
                return low ? lowValue : highValue;
            }
        }
        std::optional<double> value;
        if (mmolL) {
            value = numberIn(*mmolL, file.separator);
            if (!value)
                return std::unexpected("The glucose value is no number.");
            *value *= mgdLPerMmolL;
        }
        if (mgdL) {
            const auto given = numberIn(*mgdL, file.separator);
            if (!given)
                return std::unexpected("The glucose value is no number.");
            if (value && std::abs(*value - *given) > unitTolerance)
                return std::unexpected("The glucose values in the two units differ.");
            value = given;
        }
        if (!isPossibleValue(*value))
            return std::unexpected(mgdL ? "The glucose value cannot be one in mg/dL."
                                        : "The glucose value cannot be one in mmol/L.");
        (mgdL ? file.hasMgdL : file.hasMmolL) = true;
        return *value;
    }

    /// Its number, or nothing for a text that is no trend.
    std::optional<std::uint16_t> trendNumber(const std::string& trend)
    {
        const auto known = trendNumbers.find(trend);
        if (known != trendNumbers.end())
            return known->second;
        if (trend.size() > longestTrend || !isPlainText(trend) || trendNumbers.size() == mostTrends)
            return {};
        const auto number = static_cast<std::uint16_t>(trendNumbers.size());
        trendNumbers.emplace(trend, number);
        file.trends_.push_back(trend);
        return number;
    }

    void add(std::size_t line, const ImportStamp& stamp, double mgdL, const std::string& trend,
             double duration, GlucoseProvider source)
    {
        const auto number = trendNumber(trend);
        if (!number)
            return refuse(line, "The trend is no word of a service.");
        if (rows.size() == mostReadings || line > std::numeric_limits<std::uint32_t>::max())
            return fail(line, "The file holds more than two million readings. Split it.");
        if (duration > longestDuration) {
            duration = longestDuration;
            ++file.shortened;
        }
        if (stamp.form == ImportStamp::Form::unknownOrder) {
            sawDayFirst = sawDayFirst || stamp.first > 12;
            sawMonthFirst = sawMonthFirst || stamp.second > 12;
            orderMatters = orderMatters || stamp.first != stamp.second;
        }
        rows.push_back({.mgdL = mgdL,
                        .duration = duration,
                        .stamp = stamp,
                        .line = static_cast<std::uint32_t>(line),
                        .trend = *number,
                        .source = source});
    }

    bool onJsonEntry(std::size_t line, std::string_view text)
    {
        ++file.rows;
        const auto entry = parseJson(text, {.bytes = longestJsonEntry, .depth = 8});
        if (!entry) {
            fail(line, "The file is no valid JSON.");
            return false;
        }
        const json::object* const object = entry->if_object();
        const json::value* const stored = object ? object->if_contains("reading") : nullptr;
        const auto reading =
            stored ? decodeReading(*stored) : std::unexpected{GlucoseReadingError::invalidFormat};
        if (!reading)
            refuse(line, description(reading.error()) + ".");
        else if (!isPossibleValue(reading->mgdL))
            refuse(line, "The glucose value cannot be one in mg/dL.");
        else
            add(line, {.seconds = unixSeconds(reading->date)}, reading->mgdL, reading->trendString,
                reading->sampleDuration.count(), reading->source);
        return !file.problem;
    }

    void finishJson()
    {
        if (file.problem)
            return;
        const auto document = parseJson(entries.skeleton(), {.bytes = longestJsonSkeleton, .depth = 8});
        const json::object* const root = document ? document->if_object() : nullptr;
        const auto format = root ? optionalText(*root, "format") : std::nullopt;
        if (!root || !format || !*format || **format != historyJsonFormat)
            return fail(0, root ? "The file is no export of Tidewell." : "The file is no valid JSON.");
        const auto version = optionalInteger(*root, "version");
        if (!version || *version != historyJsonVersion)
            return fail(0,
                        "The file was written by another version of Tidewell, in a form that this one "
                        "does not know.");
        const json::value* const readings = root->if_contains("readings");
        // What was taken for an entry may stand in another array, or be none.
        if (!readings || !readings->is_array() || readings->get_array().size() != entries.entries())
            return fail(0, "The file is no export of Tidewell.");
        file.format = HistoryFileFormat::tidewellJson;
        file.hasMgdL = !rows.empty();
    }

    /// Whether dates that can be read two ways are read one way.
    bool resolveOrder()
    {
        const bool unclear = !sawDayFirst && !sawMonthFirst && orderMatters;
        if (!options.dateOrder && (unclear || (sawDayFirst && sawMonthFirst))) {
            file.needsDateOrder = true;
            fail(0, unclear ? "The dates can be read as day and month or as month and day."
                            : "Some dates have the day first, others the month.");
            return false;
        }
        if (options.dateOrder)
            order = *options.dateOrder;
        else
            order = sawMonthFirst ? DateOrder::monthFirst : DateOrder::dayFirst;
        if (orderMatters)
            file.dateOrder = order;
        return true;
    }

    /// Local seconds since 1970; empty for a day that is none.
    [[nodiscard]] std::optional<double> localSeconds(const ImportStamp& stamp) const
    {
        const bool monthFirst =
            stamp.form == ImportStamp::Form::yearFirst ||
            (stamp.form == ImportStamp::Form::unknownOrder && order == DateOrder::monthFirst);
        const unsigned month = monthFirst ? stamp.first : stamp.second;
        const unsigned day = monthFirst ? stamp.second : stamp.first;
        const std::chrono::year_month_day date{std::chrono::year{stamp.year}, std::chrono::month{month},
                                               std::chrono::day{day}};
        if (!date.ok())
            return {};
        const auto days = std::chrono::sys_days{date}.time_since_epoch().count();
        return static_cast<double>(days) * secondsOfDay + stamp.seconds;
    }

    void resolveTimes()
    {
        const bool local = std::ranges::any_of(
            rows, [](const Row& row) { return row.stamp.form != ImportStamp::Form::absolute; });
        if (!resolveOrder())
            return;
        if (local && !options.zone) {
            file.needsTimeZone = true;
            return fail(0, "The times in the file are those of a clock, without a time zone.");
        }
        std::optional<double> previous;
        bool ascending = true;
        file.kept_.reserve(rows.size());
        for (const Row& row : rows) {
            double moment = row.stamp.seconds;
            if (row.stamp.form != ImportStamp::Form::absolute) {
                const auto found = momentOf(row, previous, ascending);
                if (!found)
                    continue;
                moment = *found;
                if (previous && moment != *previous)
                    ascending = moment > *previous;
                previous = moment;
            }
            const Date date = toMilliseconds(moment);
            if (date > options.now && !isPossibleTime(date, options.now)) {
                refuse(row.line, "The time lies in the future.");
                continue;
            }
            if (!isPossibleTime(date, options.now)) {
                refuse(row.line, "The time lies before 1970.");
                continue;
            }
            file.kept_.push_back({.mgdL = row.mgdL,
                                  .duration = row.duration,
                                  .date = date,
                                  .order = row.line,
                                  .trend = row.trend,
                                  .source = row.source});
        }
        rows = {};
        keepLaterRows();
        settleHistoricDuration();
    }

    std::optional<double> momentOf(const Row& row, std::optional<double> previous, bool ascending)
    {
        const auto local = localSeconds(row.stamp);
        if (!local) {
            refuse(row.line, "There is no such day.");
            return {};
        }
        ++file.localTimes;
        const auto moments = momentsOf(*local, *options.zone);
        if (moments.empty()) {
            refuse(row.line, "There is no such time: the clock went forward past it.");
            return {};
        }
        if (moments.size() == 1)
            return moments.front();
        ++file.repeatedHour;
        if (ascending)
            return previous && moments.front() < *previous ? moments.back() : moments.front();
        return previous && moments.back() > *previous ? moments.front() : moments.back();
    }

    void settleHistoricDuration()
    {
        std::vector<double> gaps;
        std::optional<Date> previous;
        for (const Kept& kept : file.kept_) {
            if (kept.duration != unknownDuration)
                continue;
            if (previous)
                gaps.push_back((kept.date - *previous).count());
            previous = kept.date;
        }
        if (!previous)
            return;
        double duration = usualDuration;
        if (!gaps.empty()) {
            const auto middle = gaps.begin() + static_cast<std::ptrdiff_t>(gaps.size() / 2);
            std::ranges::nth_element(gaps, middle);
            if (*middle > sparseGap)
                duration = longestDuration;
        }
        file.historicDuration = Seconds{duration};
        for (Kept& kept : file.kept_)
            if (kept.duration == unknownDuration)
                kept.duration = duration;
    }

    /// Of the rows of one source and second, the later row counts.
    void keepLaterRows()
    {
        auto& kept = file.kept_;
        const auto second = [](const Kept& one) { return std::floor(unixSeconds(one.date)); };
        const auto isBefore = [&](const Kept& one, const Kept& other) {
            return std::tuple{second(one), one.source, one.order} <
                   std::tuple{second(other), other.source, other.order};
        };
        if (!std::ranges::is_sorted(kept, isBefore))  // Most files are.
            std::ranges::sort(kept, isBefore);
        std::size_t end = 0;
        for (std::size_t at = 0; at < kept.size(); ++at) {
            const bool isRepeated = end > 0 && second(kept[end - 1]) == second(kept[at]) &&
                                    kept[end - 1].source == kept[at].source;
            file.repeated += isRepeated ? 1 : 0;
            kept[isRepeated ? end - 1 : end++] = kept[at];
        }
        kept.resize(end);
    }

    Options options;
    HistoryImportFile file;
    std::vector<Row> rows;
    std::map<std::string, std::uint16_t, std::less<>> trendNumbers;
    std::string start;  ///< What comes before the first character that tells CSV and JSON apart.
    bool begun = false;
    bool isJson = false;
    bool sawRecord = false;
    std::size_t preamble = 0;
    std::optional<ImportColumns> columns;
    std::vector<CsvField> fields;
    bool sawDayFirst = false;
    bool sawMonthFirst = false;
    bool orderMatters = false;
    DateOrder order = DateOrder::dayFirst;
    CsvReader csv{[this](std::size_t line, std::string_view record) { return onRecord(line, record); }};
    JsonEntries entries{[this](std::size_t line, std::string_view text) { return onJsonEntry(line, text); }};
};

HistoryImportReader::HistoryImportReader(const Options& options) : impl_{std::make_unique<Impl>(options)} {}

HistoryImportReader::~HistoryImportReader() = default;

bool HistoryImportReader::feed(std::string_view bytes) { return impl_->feed(bytes); }

HistoryImportFile HistoryImportReader::finish() { return impl_->finish(); }

}  // namespace tidewell
