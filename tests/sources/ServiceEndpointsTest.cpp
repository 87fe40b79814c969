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
            "appServer":[]})");
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

TEST(ServiceEndpoints, libreLinkUpHasThirteenRegionsAndAnIdentityThatCanBeReplaced)
{
    const ServiceEndpoints builtIn = ServiceEndpoints::builtIn();
    std::vector<std::string> hosts;
    for (const auto& [code, base] : builtIn.libreLinkUp)
        hosts.push_back(code + " " + base.substr(std::string_view{"https://"}.size()));
    EXPECT_EQ(hosts, parts("ae api-ae.libreview.io|ap api-ap.libreview.io|au api-au.libreview.io|"
                           "ca api-ca.libreview.io|cn api-cn.myfreestyle.cn|de api-de.libreview.io|"
                           "eu api-eu.libreview.io|eu2 api-eu2.libreview.io|fr api-fr.libreview.io|"
                           "jp api-jp.libreview.io|la api-la.libreview.io|ru api.libreview.ru|"
                           "us api-us.libreview.io"));

    const auto good = ServiceEndpoints::parse(
        R"({"libreLinkUp":{"eu":"http://127.0.0.1:8081/libre/eu","za":"https://za.example.org/"},
            "libreLinkUpClient":{"version":"4.17.0","product":null,"userAgent":"Some Browser/5 (~) x"}})");
    ASSERT_TRUE(good) << good.error();
    EXPECT_EQ(good->libreLinkUp.size(), 14U);
    EXPECT_EQ(good->libreLinkUp.at("eu"), "http://127.0.0.1:8081/libre/eu");
    EXPECT_EQ(good->libreLinkUp.at("za"), "https://za.example.org/");
    EXPECT_EQ(good->libreLinkUp.at("eu2"), builtIn.libreLinkUp.at("eu2"));
    EXPECT_EQ(good->libreLinkUpIdentity, (LibreLinkUpIdentity{"4.17.0", "llu.ios", "Some Browser/5 (~) x"}));
    EXPECT_EQ(good->dexcom, builtIn.dexcom);

    const auto accepted = [](std::string_view key, std::string_view text) {
        return ServiceEndpoints::parse(fmt::format(R"({{"libreLinkUpClient":{{"{}":"{}"}}}})", key, text))
            .has_value();
    };
    EXPECT_TRUE(accepted("version", "5"));
    EXPECT_TRUE(accepted("product", std::string(64, 'p')));
    for (const std::string& bad : parts("|.|4.|.4|4..1|4.16.0-beta|4,16|v4|4 1|" + std::string(33, '4')))
        EXPECT_FALSE(accepted("version", bad)) << bad;
    for (const std::string& bad :
         parts("| a|a |a\\r\\nX-Evil: 1|a\\u0000|a\\t|ü|\\u007f|" + std::string(513, 'a'))) {
        EXPECT_FALSE(accepted("product", bad)) << bad;
        EXPECT_FALSE(accepted("userAgent", bad)) << bad;
    }
}

TEST(ServiceEndpoints, addressesMustBeHttpsOrThisMachine)
{
    const auto accepted = [](std::string_view base) {
        const bool dexcom =
            ServiceEndpoints::parse(fmt::format(R"({{"dexcom":{{"us":{{"base":"{}"}}}}}})", base))
                .has_value();
        EXPECT_EQ(
            ServiceEndpoints::parse(fmt::format(R"({{"libreLinkUp":{{"eu":"{}"}}}})", base)).has_value(),
            dexcom)
            << base;
        return dexcom;
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
        {R"({"libreLinkUp":"https://a"})", "The entry \"libreLinkUp\" is not an object."},
        {R"({"libreLinkUp":{"eu":{"base":"https://a"}}})", "The entry \"libreLinkUp.eu\" is not a text."},
        {R"({"libreLinkUp":{"eu":null}})", "The entry \"libreLinkUp.eu\" is not a text."},
        {R"({"libreLinkUp":{"eu":""}})", "The entry \"libreLinkUp.eu\" is not a complete https address."},
        {R"({"libreLinkUp":{"EU":"https://a"}})",
         "A region code under \"libreLinkUp\" is not made of up to 16 lower-case letters, digits and "
         "hyphens."},
        {R"({"libreLinkUpClient":7})", "The entry \"libreLinkUpClient\" is not an object."},
        {R"({"libreLinkUpClient":{"version":4.16}})",
         "The entry \"libreLinkUpClient.version\" is not a text."},
        {R"({"libreLinkUpClient":{"version":"4.x"}})",
         "The entry \"libreLinkUpClient.version\" is not made of numbers and dots."},
        {R"({"libreLinkUpClient":{"userAgent":""}})",
         "The entry \"libreLinkUpClient.userAgent\" is not made of up to 512 printable ASCII characters."},
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
