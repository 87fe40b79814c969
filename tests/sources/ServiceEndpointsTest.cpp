#include "sources/ServiceEndpoints.h"

#include "testing/TemporaryFolder.h"
#include "testing/Texts.h"

#include <fstream>

namespace tidewell {
namespace {

constexpr std::string_view firstId = "3c0f9a7e-52b1-4d8e-a6f3-1e9b7c24d05a";
constexpr std::string_view secondId = "9e6b2d14-7a3c-4f05-b81e-5c2a0d93f6e7";
constexpr std::string_view otherId = "0D2F77C8-9f61-4a5e-8f43-2b9d1c6e7a10";

TEST(ServiceEndpoints, theBuiltInTableHasThreeRegionsAndTheirOtherNames)
{
    const ServiceEndpoints endpoints = ServiceEndpoints::builtIn();
    ASSERT_TRUE(endpoints.dexcomRegion("us"));
    EXPECT_EQ(endpoints.dexcomRegion("us")->applicationId, firstId);
    EXPECT_EQ(endpoints.dexcomRegion("ous")->applicationId, firstId);
    EXPECT_EQ(endpoints.dexcomRegion("jp")->applicationId, secondId);
    EXPECT_EQ(endpoints.dexcomRegion("eu"), endpoints.dexcomRegion("ous"));
    EXPECT_EQ(endpoints.dexcomRegion("apac"), endpoints.dexcomRegion("jp"));
    for (const char* unknown : {"", "US", "uk", "us "})
        EXPECT_EQ(endpoints.dexcomRegion(unknown), nullptr) << unknown;
}

TEST(ServiceEndpoints, aDocumentReplacesWhatItNamesAndKeepsTheRest)
{
    const auto good = ServiceEndpoints::parse(
        R"({"dexcom":{"us":{"base":"http://127.0.0.1:8080/x"},
                      "jp":{"applicationId":"0D2F77C8-9f61-4a5e-8f43-2b9d1c6e7a10","comment":1},
                      "apac":{"base":"https://apac.example.org"},
                      "lab-2":{"base":"http://[::1]:9"}},
            "libreLinkUp":{"eu":7},"appServer":[]})");
    ASSERT_TRUE(good) << good.error();
    const ServiceEndpoints builtIn = ServiceEndpoints::builtIn();
    EXPECT_EQ(*good->dexcomRegion("us"), (DexcomEndpoint{"http://127.0.0.1:8080/x", std::string{firstId}}));
    EXPECT_EQ(*good->dexcomRegion("jp"),
              (DexcomEndpoint{builtIn.dexcomRegion("jp")->base, std::string{otherId}}));
    EXPECT_EQ(*good->dexcomRegion("apac"),
              (DexcomEndpoint{"https://apac.example.org", std::string{otherId}}));
    EXPECT_EQ(*good->dexcomRegion("lab-2"), (DexcomEndpoint{"http://[::1]:9", std::string{firstId}}));
    EXPECT_EQ(*good->dexcomRegion("ous"), *builtIn.dexcomRegion("ous"));
    for (const char* nothing : {"{}", R"({"dexcom":null})", R"({"dexcom":{}})", R"({"dexcom":{"us":{}}})"})
        EXPECT_EQ(ServiceEndpoints::parse(nothing)->dexcom, builtIn.dexcom) << nothing;
}

TEST(ServiceEndpoints, addressesMustBeHttpsOrThisMachine)
{
    const auto accepted = [](std::string_view base) {
        return ServiceEndpoints::parse(R"({"dexcom":{"us":{"base":")" + std::string{base} + R"("}}})")
            .has_value();
    };
    for (const char* good :
         {"https://a", "https://share.example.org/x/", "HTTPS://a:8443/x", "https://[2001:db8::1]/x",
          "http://127.0.0.1", "http://127.255.0.3:1/x", "http://[::1]", "http://[::1]:65535/",
          "http://localhost:80", "http://LOCALHOST/x"})
        EXPECT_TRUE(accepted(good)) << good;
    for (const std::string& bad : parts(
             "|a|https://|https:///x|ftp://a|file:///etc/passwd|//a|https:a|http://example.org|"
             "http://127.0.0.1.example.org|http://127.evil|http://10.0.0.1|http://0.0.0.0|http://[::2]|"
             "http://localhost.example.org|http://localhost@example.org|https://user:secret@a|https://a:0|"
             "https://a:65536|https://a:|https://a:8x|https://a?b|https://a#b|https://a b|https://a\\u0000b|"
             "https://a\\nb|https://a\\\\b|https://ä|http://[::1|http://[::1%]:9|https://a%20b"))
        EXPECT_FALSE(accepted(bad)) << bad;
    EXPECT_FALSE(accepted("https://a/" + std::string(2000, 'x')));
}

TEST(ServiceEndpoints, aBadDocumentIsOneSentenceThatNamesTheEntry)
{
    const std::pair<const char*, const char*> cases[]{
        {R"([])", "The document is not an object."},
        {R"({"dexcom":[]})", "The entry \"dexcom\" is not an object."},
        {R"({"dexcom":{"us":"https://a"}})", "The entry \"dexcom.us\" is not an object."},
        {R"({"dexcom":{"ous":null}})", "The entry \"dexcom.ous\" is not an object."},
        {R"({"dexcom":{"us":{"base":1}}})", "The entry \"dexcom.us.base\" is not a text."},
        {R"({"dexcom":{"us":{"applicationId":[]}}})", "The entry \"dexcom.us.applicationId\" is not a text."},
        {R"({"dexcom":{"us":{"applicationId":"1"}}})",
         "The entry \"dexcom.us.applicationId\" is not a UUID."},
        {R"({"dexcom":{"us":{"base":"https://u:p@a"}}})",
         "The entry \"dexcom.us.base\" is not a complete https address."},
        {R"({"dexcom":{"us":{"base":"http://example.org"}}})",
         "The entry \"dexcom.us.base\" uses plain http, which only this machine's own addresses may."},
        {R"({"dexcom":{"lab":{}}})", "The entry \"dexcom.lab\" needs a \"base\"."},
        {R"({"dexcom":{"Us\n":{}}})",
         "A region code under \"dexcom\" is not made of up to 16 lower-case letters, digits and hyphens."},
    };
    for (const auto& [document, expected] : cases) {
        const auto result = ServiceEndpoints::parse(document);
        ASSERT_FALSE(result) << document;
        EXPECT_EQ(result.error(), expected);
    }
    for (const char* broken : {"", "{", "nonsense", R"({"dexcom":{},"dexcom":{}})"}) {
        const auto result = ServiceEndpoints::parse(broken);
        ASSERT_FALSE(result) << broken;
        EXPECT_TRUE(result.error().ends_with(".")) << result.error();
    }
}

TEST(ServiceEndpoints, aNamedFileMustExistAndTheFolderMayHoldOne)
{
    const TemporaryFolder temporary;
    const auto& folder = temporary.path();
    const auto write = [&](const char* name, std::string_view text) {
        std::ofstream{folder / name} << text;
        return folder / name;
    };
    EXPECT_EQ(ServiceEndpoints::load({}, folder)->dexcom, ServiceEndpoints::builtIn().dexcom);
    EXPECT_FALSE(ServiceEndpoints::load(folder / "missing.json", folder));

    write("endpoints.json", R"({"dexcom":{"us":{"base":"https://folder.example.org"}}})");
    EXPECT_EQ(ServiceEndpoints::load({}, folder)->dexcomRegion("us")->base, "https://folder.example.org");
    const auto named = write("named.json", R"({"dexcom":{"us":{"base":"https://named.example.org"}}})");
    EXPECT_EQ(ServiceEndpoints::load(named, folder)->dexcomRegion("us")->base, "https://named.example.org");
    EXPECT_FALSE(ServiceEndpoints::load(folder, folder)) << "a folder is no file";

    write("endpoints.json", "{");
    const auto broken = ServiceEndpoints::load({}, folder);
    ASSERT_FALSE(broken);
    EXPECT_NE(broken.error().find("endpoints.json"), std::string::npos) << broken.error();
}

}  // namespace
}  // namespace tidewell
