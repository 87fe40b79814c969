// The published day files, made by another program: the good ones open, the others are left alone.

#include <cstdlib>

#include "history/HistoryFormatTesting.h"
#include "support/Json.h"
#include "support/TimeText.h"

namespace tidewell {
namespace {

namespace fs = std::filesystem;

std::string fromHex(std::string_view digits)
{
    std::string bytes;
    for (std::size_t i = 0; i + 1 < digits.size(); i += 2)
        bytes += static_cast<char>(std::stoi(std::string{digits.substr(i, 2)}, nullptr, 16));
    return bytes;
}

/// Gives the same bytes over and over.
class FixedRandom final : public RandomSource {
public:
    explicit FixedRandom(std::string bytes) : bytes_{std::move(bytes)} {}
    void fill(std::span<std::byte> bytes) override
    {
        for (std::size_t i = 0; i < bytes.size(); ++i)
            bytes[i] = static_cast<std::byte>(bytes_[i % bytes_.size()]);
    }

private:
    std::string bytes_;
};

std::string textOf(const json::value& value)
{
    return value.is_string() ? std::string{value.get_string()} : std::string{};
}

StoredReading storedReadingOf(const json::array& row)
{
    return {.reading = makeReading(
                numberOf(row.at(1)).value(), textOf(row.at(2)), dateFromStored(textOf(row.at(0))).value(),
                Seconds{numberOf(row.at(3)).value()}, glucoseProvider(textOf(row.at(4))).value()),
            .fetchedAt = dateFromStored(textOf(row.at(5))).value()};
}

TEST(DayFileVectors, openWhereTheyAreGoodAndStayWhereTheyAreNot)
{
    const std::string document = bytesOf(fs::path{TIDEWELL_HISTORY_TESTS} / "vectors" / "day-files.json");
    const auto vectors = parseJson(document).value().as_object();
    ScopesOnDisk disk;
    disk.mine = HistoryScopeID::parse(textOf(vectors.at("scope"))).value();
    const SecretText key{fromHex(textOf(vectors.at("key")))};
    FixedRandom nonce{fromHex(textOf(vectors.at("nonce")))};
    GlucoseHistoryAccount account = disk.account(disk.mine);
    fs::create_directories(disk.folderOfScope(disk.mine));

    std::size_t good = 0;
    std::size_t refused = 0;
    for (const json::value& value : vectors.at("files").as_array()) {
        const json::object& vector = value.as_object();
        const testing::ScopedTrace trace{__FILE__, __LINE__, textOf(vector.at("name"))};
        const std::int64_t day = vector.at("day").as_int64();
        const std::string name = historyDayFileName(day);
        const std::string bytes = fromHex(textOf(vector.at("file")));
        writeBytes(disk.file(day), bytes);

        std::expected<std::optional<HistoryDay>, GlucoseHistoryError> opened = account.readDay(key, day);
        if (vector.contains("singleKey")) {
            EXPECT_EQ(opened.error(), GlucoseHistoryError::unreadableHistory);  // In the present layout.
            opened = decodeLegacyHistoryDay(openHistoryFile(key, name, bytes).value(), disk.mine, day);
        }
        EXPECT_EQ(bytesOf(disk.file(day)), bytes);
        if (vector.at("readings").is_null()) {
            ++refused;
            ASSERT_FALSE(opened);
            EXPECT_EQ(opened.error(), GlucoseHistoryError::unreadableHistory);
            continue;
        }
        ++good;
        HistoryDay expected{.accountScope = disk.mine};
        for (const json::value& row : vector.at("readings").as_array())
            expected.readings.push_back(storedReadingOf(row.as_array()));
        ASSERT_TRUE(opened);
        EXPECT_EQ(*opened, expected);
        if (vector.contains("exact"))
            EXPECT_EQ(sealHistoryFile(key, name, encode(expected), nonce), bytes);
    }
    EXPECT_EQ(good, 15U);
    EXPECT_GT(refused, 50U);
}

TEST(DayFileVectors, areReadAndRefusedByTheReaderInAnotherLanguageTheSameWay)
{
    EXPECT_EQ(std::system("python3 -B " TIDEWELL_HISTORY_TESTS "/check_reader.py"), 0);
}

}  // namespace
}  // namespace tidewell
