#pragma once

#include <expected>
#include <filesystem>
#include <map>
#include <optional>
#include <string>
#include <string_view>

namespace tidewell {

/// Where a Dexcom Share region lives.
struct DexcomEndpoint {
    std::string base;           ///< ".../ShareWebServices/Services", with or without a slash at its end.
    std::string applicationId;  ///< UUID that the region's service expects.
    bool operator==(const DexcomEndpoint&) const = default;
};

/// As what we present ourselves to LibreLinkUp. Its service answers known clients only, and no old ones: what
/// it accepts changes, so all of it can be replaced without a new build.
struct LibreLinkUpIdentity {
    std::string version = "4.16.0";
    std::string product = "llu.ios";
    std::string userAgent =
        "Mozilla/5.0 (iPhone; CPU OS 17_4.1 like Mac OS X) AppleWebKit/536.26 (KHTML, like Gecko) "
        "Version/17.4.1 Mobile/10A5355d Safari/8536.25";
    bool operator==(const LibreLinkUpIdentity&) const = default;
};

/// Every address that the program talks to, in one table that a file can override.
struct ServiceEndpoints {
    std::map<std::string, DexcomEndpoint, std::less<>> dexcom{};  ///< By region code.
    /// Base address by region code, with or without a slash at its end.
    std::map<std::string, std::string, std::less<>> libreLinkUp{};
    LibreLinkUpIdentity libreLinkUpIdentity{};

    /// The row of a region code or of its other name ("eu" for "ous", "apac" for "jp"); null for an unknown
    /// one.
    [[nodiscard]] const DexcomEndpoint* dexcomRegion(std::string_view code) const;

    [[nodiscard]] static ServiceEndpoints builtIn();
    /// The built-in table with the entries of an endpoints document laid over it:
    ///     {"dexcom": {"us": {"base": "https://…", "applicationId": "UUID"}},
    ///      "libreLinkUp": {"eu": "https://…"},
    ///      "libreLinkUpClient": {"version": "4.16.0", "product": "llu.ios", "userAgent": "…"}}
    /// Every entry may be absent; new region codes may come. https, and http to loopback addresses only. An
    /// error is one sentence that names the entry; keys that we do not know are ignored.
    [[nodiscard]] static std::expected<ServiceEndpoints, std::string> parse(std::string_view document);
    /// The table in force: the file named by TIDEWELL_ENDPOINTS (which must exist), else "endpoints.json" in
    /// `configurationFolder` when it exists, else the built-in one.
    [[nodiscard]] static std::expected<ServiceEndpoints, std::string> load(
        const std::optional<std::filesystem::path>& named, const std::filesystem::path& configurationFolder);
};

}  // namespace tidewell
