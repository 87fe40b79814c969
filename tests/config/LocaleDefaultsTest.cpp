#include "config/LocaleDefaults.h"

#include <gtest/gtest.h>

#include <map>

namespace tidewell {
namespace {

struct Expected {
    std::string_view country;
    std::string_view dexcom;
    std::string_view libreLinkUp;
};

TEST(LocaleDefaults, aCountryHasItsOwnRegionOrTheNearest)
{
    for (const auto& [country, dexcom, libreLinkUp] :
         {Expected{"US", "us", "us"}, {"us", "us", "us"},  {"PR", "us", "us"},  {"GU", "us", "us"},
          {"VI", "us", "us"},         {"AS", "us", "us"},  {"MP", "us", "us"},  {"JP", "jp", "jp"},
          {"jp", "jp", "jp"},         {"DE", "ous", "de"}, {"FR", "ous", "fr"}, {"RE", "ous", "fr"},
          {"GB", "ous", "eu"},        {"CA", "ous", "ca"}, {"RU", "ous", "ru"}, {"CN", "ous", "cn"},
          {"HK", "ous", "ap"},        {"IN", "ous", "ap"}, {"AU", "ous", "au"}, {"NZ", "ous", "au"},
          {"AE", "ous", "ae"},        {"SA", "ous", "ae"}, {"MX", "ous", "la"}, {"BR", "ous", "la"},
          {"ZA", "ous", "eu"},        {"PL", "ous", "eu"}, {"ZZ", "ous", "eu"}, {"", "us", "us"},
          {"C", "us", "us"},          {"001", "us", "us"}, {"USA", "us", "us"}, {"u\xC3", "us", "us"}}) {
        EXPECT_EQ(usualRegion(GlucoseProvider::dexcom, country), dexcom) << country;
        EXPECT_EQ(usualRegion(GlucoseProvider::libreLinkUp, country), libreLinkUp) << country;
    }
}

TEST(LocaleDefaults, eachListIsOneThatASearchFindsEverythingIn)
{
    // The codes of a list that is out of order would fall to the rest of the world.
    std::map<std::string, int> counts;
    for (char first = 'A'; first <= 'Z'; ++first)
        for (char second = 'A'; second <= 'Z'; ++second)
            ++counts[usualRegion(GlucoseProvider::libreLinkUp, std::string{first, second})];
    EXPECT_EQ(counts, (std::map<std::string, int>{{"ae", 10},
                                                  {"ap", 41},
                                                  {"au", 6},
                                                  {"ca", 1},
                                                  {"cn", 1},
                                                  {"de", 1},
                                                  {"eu", 550},
                                                  {"fr", 13},
                                                  {"jp", 1},
                                                  {"la", 44},
                                                  {"ru", 1},
                                                  {"us", 7}}));
}

}  // namespace
}  // namespace tidewell
