// Hostile configuration documents and defaults files: reading them never crashes, and a document that is
// accepted says the same after it was written and read again.

#include <cstddef>
#include <cstdint>
#include <cstdlib>
#include <string_view>

#include "config/AppConfiguration.h"
#include "config/AppSettingsKeys.h"
#include "config/UserDefaults.h"

namespace {

void require(bool condition)
{
    if (!condition)
        std::abort();
}

}  // namespace

// The fuzzer's own declaration is not in any header.
extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size);  // NOLINT

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    using namespace tidewell;
    const std::string_view text{reinterpret_cast<const char*>(data), size};

    if (const auto document = parseJson(text)) {
        const auto configuration = decodeAppConfiguration(*document);
        require(configuration.has_value() == readAppConfiguration(*document).has_value());
        if (configuration) {
            const auto again = parseJson(prettyJson(encode(*configuration)));
            require(again.has_value() && decodeAppConfiguration(*again) == *configuration);
            for (const std::string_view key : appSettingKeys())
                require(settingText(configuration->app, key).has_value());
        }
    }
    if (const auto values = parseUserDefaults(text)) {
        // The first writing may change a number's form (3.0, -0.0), the second one nothing any more.
        const auto again = parseUserDefaults(prettyJson(*values));
        require(again.has_value() && again->size() == values->size());
        require(parseUserDefaults(prettyJson(*again)) == again);
    }
    for (const std::string_view key : appSettingKeys()) {
        const auto settings = withSetting({}, key, text);
        require(!settings || withSetting(*settings, key, *settingText(*settings, key)) == *settings);
    }
    return 0;
}
