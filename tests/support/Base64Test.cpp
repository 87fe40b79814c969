#include "support/Base64.h"

namespace tidewell {
namespace {

TEST(Base64, isTheStandardAlphabetAndStrict)
{
    const std::pair<std::string_view, std::string_view> vectors[] = {
        // RFC 4648 section 10
        {"", ""},
        {"f", "Zg=="},
        {"fo", "Zm8="},
        {"foo", "Zm9v"},
        {"foob", "Zm9vYg=="},
        {"fooba", "Zm9vYmE="},
        {"foobar", "Zm9vYmFy"},
        {"\xfb\xff", "+/8="},
    };
    for (const auto& [bytes, text] : vectors) {
        EXPECT_EQ(base64(bytes), text);
        EXPECT_EQ(bytesFromBase64(text), std::string{bytes});
    }
    std::string allBytes;
    for (int byte = 0; byte < 256; ++byte)
        allBytes += static_cast<char>(byte);
    EXPECT_EQ(bytesFromBase64(base64(allBytes)), allBytes);
    for (const std::string_view bad :
         {"Zg", "Zg=", "Zg===", "====", "=", "Zm9v\n", " Zm9v", "Zh==", "Zm9=", "Zg==Zg==", "Z-_v", "Zm9vé"})
        EXPECT_EQ(bytesFromBase64(bad), std::nullopt) << bad;
}

}  // namespace
}  // namespace tidewell
