#include "support/Json.h"

#include <cmath>

#include "support/Random.h"

namespace tidewell {
namespace {

json::object objectOf(std::string_view text)
{
    const auto parsed = parseJson(text);
    EXPECT_TRUE(parsed) << text;
    return parsed ? parsed->as_object() : json::object{};
}

TEST(ParseJson, refusesWhatIsNotStrictJson)
{
    const std::pair<std::string, std::string_view> cases[]{
        {"", "Ends before the document is complete"},
        {"{\"a\": 1", "Ends before the document is complete"},
        {"{\"a\": 1,}", "Not valid JSON at byte 8"},
        {"// no\n1", "Not valid JSON at byte 0"},
        {"{} {}", "More text after the document at byte 3"},
        {"1 x", "More text after the document at byte 2"},
        {"{\"a\":1,\"a\":1}", "A key stands twice"},
        {"[{\"b\":{\"a\":1,\"\\u0061\":2}}]", "A key stands twice"},
        {"\"\xff\"", "Not valid JSON at byte 1"},
        {"\"\xc0\xaf\"", "Not valid JSON at byte 1"},
        {"\"\xed\xa0\x80\"", "Not valid JSON at byte"},
        {R"("\ud800")", "Not valid JSON at byte"},
        {"\xef\xbb\xbf{}", "Not valid JSON at byte 0"},
        {"'a'", "Not valid JSON at byte 0"},
        {"NaN", "Not valid JSON at byte 0"},
        {"01", "More text after the document at byte 1"},
        {"1.", "Not valid JSON at byte 2"},
        {"+1", "Not valid JSON at byte 0"},
        {"\"a\nb\"", "Not valid JSON at byte 2"},
        {"1e400", "A number is too large at byte"},
        {"-1e99999999999999999999", "A number is too large at byte"},
        {std::string(33, '[') + std::string(33, ']'), "Nested more than 32 deep"},
        {std::string(100'000, '['), "Nested more than 32 deep"},
        {std::string("{\0}", 3), "Not valid JSON at byte 1"}};
    for (const auto& [text, message] : cases) {
        const auto parsed = parseJson(text);
        ASSERT_FALSE(parsed) << text;
        EXPECT_TRUE(parsed.error().message.starts_with(message)) << text << ": " << parsed.error().message;
    }
    EXPECT_TRUE(parseJson(std::string(32, '[') + std::string(32, ']')));
    EXPECT_TRUE(parseJson(" [1]\n", {.bytes = 5}));
    EXPECT_EQ(parseJson("[10000]", {.bytes = 6}).error().message, "Longer than 6 bytes");
    EXPECT_TRUE(parseJson(R"([{"a":1},{"a":1}])"));
}

TEST(ParseJson, keepsTheOrderOfKeysAndEveryBitOfNumbers)
{
    std::string order;
    for (const auto& member : objectOf(R"({"z":1,"a":2,"m":3})"))
        order += member.key();
    EXPECT_EQ(order, "zam");

    SeededRandom random{5};
    for (int i = 0; i < 20'000; ++i) {
        const double number = std::ldexp(random.unit(), static_cast<int>(random.unit() * 900));
        const auto parsed = parseJson(fmt::format("{}", number));
        ASSERT_TRUE(parsed);
        ASSERT_EQ(numberOf(*parsed), number) << fmt::format("{}", number);
    }
    EXPECT_EQ(numberOf(parseJson("1e-400").value()), 0.0);
    EXPECT_EQ(numberOf(parseJson("-0").value()), 0.0);
}

TEST(JsonMembers, integersMustBeWholeAndFit)
{
    const std::pair<std::string_view, std::optional<std::int64_t>> cases[]{
        {"3", 3},
        {"3.0", 3},
        {"3e2", 300},
        {"-0", 0},
        {"-0.0", 0},
        {"9223372036854775807", INT64_MAX},
        {"-9223372036854775808", INT64_MIN},
        {"9223372036854775808", {}},
        {"18446744073709551615", {}},
        {"9223372036854775808.0", {}},
        {"-9.223372036854775808e18", INT64_MIN},
        {"1e300", {}},
        {"3.5", {}},
        {"\"3\"", {}},
        {"true", {}},
        {"[3]", {}}};
    for (const auto& [text, expected] : cases) {
        const auto read = optionalInteger(objectOf(fmt::format("{{\"n\":{}}}", text)), "n");
        ASSERT_EQ(read.has_value(), expected.has_value()) << text;
        if (expected)
            EXPECT_EQ(*read, expected) << text;
    }
}

TEST(JsonMembers, absentAndNullAreAbsentAndAnotherTypeIsAnError)
{
    const json::object object = objectOf(R"({"text":"ä","number":1,"flag":false,"null":null,"list":[]})");
    for (const std::string_view key : {"null", "nothing"}) {
        EXPECT_EQ(optionalText(object, key).value(), std::nullopt);
        EXPECT_EQ(optionalNumber(object, key).value(), std::nullopt);
        EXPECT_EQ(optionalInteger(object, key).value(), std::nullopt);
        EXPECT_EQ(optionalBoolean(object, key).value(), std::nullopt);
        EXPECT_EQ(requiredText(object, key).error().message, fmt::format("\"{}\" is missing", key));
        EXPECT_FALSE(requiredNumber(object, key));
    }
    EXPECT_EQ(requiredText(object, "text").value(), "ä");
    EXPECT_EQ(requiredNumber(object, "number").value(), 1.0);
    EXPECT_EQ(optionalBoolean(object, "flag").value(), false);
    EXPECT_EQ(optionalText(object, "list").error().message, "\"list\" is not a text");
    EXPECT_EQ(optionalNumber(object, "text").error().message, "\"text\" is not a number");
    EXPECT_EQ(optionalBoolean(object, "number").error().message, "\"number\" is not true or false");
    EXPECT_EQ(requiredNumber(object, "flag").error().message, "\"flag\" is not a number");
}

TEST(PrettyJson, isReadableAndReadsBackTheSame)
{
    const json::value value =
        json::object{{"name", "Ma\"x\n"},      {"low", 3.9},
                     {"big", 1e300},           {"list", json::array{1, true, nullptr}},
                     {"empty", json::array{}}, {"inner", json::object{{"none", json::object{}}}}};
    const std::string text = prettyJson(value);
    EXPECT_EQ(text,
              "{\n  \"name\": \"Ma\\\"x\\n\",\n  \"low\": 3.9,\n  \"big\": 1e+300,\n  \"list\": [\n    1,\n"
              "    true,\n    null\n  ],\n  \"empty\": [],\n  \"inner\": {\n    \"none\": {}\n  }\n}\n");
    EXPECT_EQ(parseJson(text).value(), value);
    EXPECT_EQ(prettyJson(std::nan("")), "null\n");
}

}  // namespace
}  // namespace tidewell
