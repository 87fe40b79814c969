#include "sources/GlucoseUnits.h"

#include <clocale>
#include <locale>

namespace tidewell {
namespace {

using enum GlucoseUnits;

TEST(GlucoseUnits, formatsWithHalvesAwayFromZeroAndWithoutNegativeZero)
{
    const std::tuple<double, const char*, const char*> cases[]{
        {99, "99", "5.5"},      {100, "100", "5.6"},     {39, "39", "2.2"},    {401, "401", "22.3"},
        {0, "0", "0.0"},        {0.4, "0", "0.0"},       {-0.4, "0", "0.0"},   {99.5, "100", "5.5"},
        {100.5, "101", "5.6"},  {0.9, "1", "0.1"},       {18, "18", "1.0"},    {179.99, "180", "10.0"},
        {1000, "1000", "55.6"}, {-99.5, "-100", "-5.5"}, {99.9, "100", "5.6"},
    };
    for (const auto& [value, whole, tenths] : cases) {
        EXPECT_EQ(formatGlucose(value, mgdL), whole) << value;
        EXPECT_EQ(formatGlucose(value, mmolL), tenths) << value;
    }
}

struct CommaPoint : std::numpunct<char> {
    char do_decimal_point() const override { return ','; }
    char do_thousands_sep() const override { return '.'; }
    std::string do_grouping() const override { return "\3"; }
};

TEST(GlucoseUnits, writesAPointInACountryThatWritesACommaToo)
{
    const std::string before = std::setlocale(LC_ALL, nullptr);
    const std::locale global = std::locale::global(std::locale{std::locale::classic(), new CommaPoint});
    for (const char* name : {"de_DE.UTF-8", "de_DE.utf8", "fr_FR.UTF-8"}) {
        if (std::setlocale(LC_ALL, name))
            break;  // Where the system has none of them, the C++ locale above stands alone.
    }
    EXPECT_EQ(formatGlucose(100, mmolL), "5.6");
    EXPECT_EQ(formatGlucose(123456, mgdL), "123456");
    std::locale::global(global);
    std::setlocale(LC_ALL, before.c_str());
}

TEST(GlucoseUnits, everyThresholdInMmolComesBackFromStorageAsItself)
{
    EXPECT_EQ(mgdLFromMmolL(4.0), 72);
    EXPECT_EQ(mgdLFromMmolL(15.0), 270);
    EXPECT_EQ(mgdLFromMmolL(3.25), 59);  // 58.5 is rounded up.
    for (int tenths = 0; tenths <= 400; ++tenths) {
        const double chosen = tenths / 10.0;
        EXPECT_EQ(displayValue(mgdLFromMmolL(chosen), mmolL), chosen);
    }
}

TEST(GlucoseUnits, regionsSelectTheirUsualUnit)
{
    for (const char* region : {"US", "us", "Us", "AE", "YE", "JP", "IT", "ES", "AT"})
        EXPECT_EQ(defaultGlucoseUnits(region), mgdL) << region;
    for (const char* region : {"DE", "de", "GB", "CA", "AU", "", "U", "USA", "ÜS", "419"})
        EXPECT_EQ(defaultGlucoseUnits(region), mmolL) << region;
    int count = 0;
    for (char first = 'A'; first <= 'Z'; ++first) {
        for (char second = 'A'; second <= 'Z'; ++second)
            count += defaultGlucoseUnits(std::string{first, second}) == mgdL ? 1 : 0;
    }
    EXPECT_EQ(count, 39);
}

TEST(GlucoseUnits, rawValuesAreExact)
{
    EXPECT_EQ(glucoseUnits("mg/dL"), mgdL);
    EXPECT_EQ(glucoseUnits("mmol/L"), mmolL);
    EXPECT_EQ(glucoseUnits("mg/dl"), std::nullopt);
    EXPECT_EQ(glucoseUnits(""), std::nullopt);
}

}  // namespace
}  // namespace tidewell
