#include "sources/DexcomAnswers.h"

#include "support/Random.h"

namespace tidewell {
namespace {

const Date now = dateFromUnix(1'772'438'400);

std::string element(double secondsAgo, std::string_view value = "118", std::string_view trend = "Flat")
{
    const auto milliseconds = static_cast<std::int64_t>(std::llround((unixSeconds(now) - secondsAgo) * 1000));
    return fmt::format(
        R"json({{"WT":"Date({0})","ST":"Date({0})","DT":"Date({0}+0100)","Value":{1},"Trend":"{2}"}})json",
        milliseconds, value, trend);
}

struct Expected {
    std::size_t readings = 0;
    std::size_t unreadable = 0;
    std::size_t duplicates = 0;
};

void expectRead(const std::string& body, Expected expected,
                std::source_location at = std::source_location::current())
{
    const testing::ScopedTrace trace{at.file_name(), static_cast<int>(at.line()), body.substr(0, 300)};
    const auto answer = dexcomReadings(body, now);
    ASSERT_TRUE(answer) << description(answer.error());
    EXPECT_EQ(answer->readings.size(), expected.readings);
    EXPECT_EQ(answer->unreadable, expected.unreadable);
    EXPECT_EQ(answer->duplicates, expected.duplicates);
}

void expectFault(const std::string& body, std::string_view text,
                 std::source_location at = std::source_location::current())
{
    const testing::ScopedTrace trace{at.file_name(), static_cast<int>(at.line()), body.substr(0, 300)};
    const auto answer = dexcomReadings(body, now);
    ASSERT_FALSE(answer);
    EXPECT_EQ(description(answer.error()), text);
}

TEST(DexcomAnswers, closeDuplicatesAreComparedWithTheLastKeptReading)
{
    const auto list = [](std::initializer_list<std::string> elements) {
        return fmt::format("[{}]", fmt::join(elements, ","));
    };
    expectRead(list({element(0), element(20)}), {.readings = 1, .duplicates = 1});
    expectRead(list({element(0.123), element(30.123)}), {.readings = 1, .duplicates = 1});
    expectRead(list({element(0), element(30.001)}), {.readings = 2});
    expectRead(list({element(0), element(31)}), {.readings = 2});
    expectRead(list({element(0), element(0)}), {.readings = 1, .duplicates = 1});
    expectRead(list({element(0), element(20, "118", "FortyFiveUp")}), {.readings = 2});
    expectRead(list({element(0), element(20, "119")}), {.readings = 2});
    expectRead(list({element(20), element(0)}), {.readings = 2});  // In the other order both stay.
    expectRead(list({element(0), element(20), element(40)}), {.readings = 2, .duplicates = 1});
    expectRead(list({element(0), element(9), element(300), element(309), element(600)}),
               {.readings = 3, .duplicates = 2});
}

TEST(DexcomAnswers, oneBadElementDoesNotHideTheOthers)
{
    const std::string good = element(0);
    const std::string bad[]{
        "null",
        "[]",
        "7",
        R"({"Value":118,"Trend":"Flat"})",
        R"json({"Value":"118","Trend":"Flat","ST":"Date(1772438113000)"})json",
        R"json({"Value":118,"Trend":4,"ST":"Date(1772438113000)"})json",
        element(300, "0"),
        element(300, "-40"),
        element(300, "12"),
        element(300, "1000.5"),
        element(300, "1e308"),
        element(300, "118", std::string(65, 'x')),
        element(-5401),
        element(-1e10),
    };
    for (const std::string& one : bad) {
        expectRead("[" + one + "," + good + "]", {.readings = 1, .unreadable = 1});
        expectRead("[" + good + "," + one + "]", {.readings = 1, .unreadable = 1});
    }
    expectFault("[null," + element(300, "0") + "]",
                "Unable to process server response: Invalid glucose reading format");
    expectFault("[" + element(300, "0") + "]", "Unable to process server response: Missing glucose value");
    expectFault("[" + element(-1e10) + "]",
                "Unable to process server response: Missing or invalid glucose reading timestamp");
}

TEST(DexcomAnswers, valuesAndTimesAtTheEdgeOfWhatCanBeAreKept)
{
    for (const char* value : {"13", "39", "401", "1000", "118.5", "1.18e2"})
        expectRead("[" + element(0, value) + "]", {.readings = 1});
    expectRead("[" + element(-5400) + "]", {.readings = 1});  // A receiver whose clock runs ahead.
    expectRead("[" + element(unixSeconds(now)) + "]", {.readings = 1});
    expectRead(" \r\n[" + element(0, "118", "") + "]\n", {.readings = 1});
}

TEST(DexcomAnswers, whatIsNoArrayIsRefusedInOneSentence)
{
    for (const std::string& body : std::vector<std::string>{
             "", "{}", "null", "\"[]\"", "[", "[{\"Value\":11", "<html><body>Error</body></html>", "[]x",
             std::string(100'000, '['), "[\"" + std::string(2'000'000, 'x') + "\"]", "\xff\xfe[]",
             "[\"\xc3\x28\"]"})
        expectFault(body, "Unable to process server response: Expected an array of glucose readings");
    expectFault("[]", "No glucose readings available");
}

TEST(DexcomAnswers, theIdIsTheTextBetweenTheQuotes)
{
    EXPECT_EQ(dexcomId("\"3b0c1f6e-6a0d-4f7b-8f43-9d5e2a71c0aa\""), "3b0c1f6e-6a0d-4f7b-8f43-9d5e2a71c0aa");
    EXPECT_EQ(dexcomId("3b0c1f6e-6a0d-4f7b-8f43-9d5e2a71c0aa\r\n"), "3b0c1f6e-6a0d-4f7b-8f43-9d5e2a71c0aa");
    for (const char* empty : {"", "\"\"", "\"", " \n"})
        EXPECT_EQ(dexcomId(empty), "") << empty;
}

TEST(DexcomAnswers, onlyCodesThatDecideSomethingAreTaken)
{
    const auto body = [](std::string_view code, std::string_view message) {
        return fmt::format(R"({{"Code":"{}","Message":"{}","SubCode":"<x/>","TypeName":"FaultException"}})",
                           code, message);
    };
    for (const char* code :
         {"AccountPasswordInvalid", "SSO_AuthenticateMaxAttemptsExceeed", "SessionNotValid"})
        EXPECT_EQ(dexcomErrorCode(body(code, "any")), code);
    EXPECT_EQ(dexcomErrorCode(body("SSO_InternalError", "Cannot Authenticate by AccountName='a'")),
              "SSO_InternalError");
    EXPECT_EQ(dexcomErrorCode(body("SSO_InternalError", "... 401 UNAUTHORIZED ...")), "SSO_InternalError");
    EXPECT_EQ(dexcomErrorCode(body("SSO_InternalError", "The database is away")), "");
    for (const std::string& nothing :
         {body("ada@example.org", "x"), body("accountpasswordinvalid", "x"), std::string{R"({"Code":7})"},
          std::string{R"({"Message":"AccountPasswordInvalid"})"}, std::string{"[]"}, std::string{"\"x\""},
          std::string{"<html>AccountPasswordInvalid</html>"}, std::string{}})
        EXPECT_EQ(dexcomErrorCode(nothing), "") << nothing;
}

}  // namespace
}  // namespace tidewell
