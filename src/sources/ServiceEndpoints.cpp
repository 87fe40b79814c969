#include "sources/ServiceEndpoints.h"

#include <fmt/format.h>

#include <boost/asio/ip/address_v4.hpp>
#include <boost/asio/ip/address_v6.hpp>

#include <algorithm>
#include <array>
#include <charconv>
#include <cstdint>
#include <utility>

#include "sources/GlucoseReading.h"
#include "sources/HeaderText.h"
#include "sources/UuidText.h"
#include "support/Asio.h"
#include "support/AtomicFile.h"
#include "support/Json.h"

namespace tidewell {

namespace {

constexpr std::string_view firstApplicationId = "3c0f9a7e-52b1-4d8e-a6f3-1e9b7c24d05a";
constexpr std::string_view secondApplicationId = "9e6b2d14-7a3c-4f05-b81e-5c2a0d93f6e7";

/// What people call a region beside its own code.
constexpr std::array<std::pair<std::string_view, std::string_view>, 2> regionAliases{
    {{"eu", "ous"}, {"apac", "jp"}}};

constexpr std::size_t longestRegionCode = 16;
constexpr std::size_t longestBase = 1024;
constexpr std::size_t longestVersion = 32;
constexpr std::size_t longestProduct = 64;
constexpr std::size_t longestUserAgent = 512;
/// An endpoints document holds a few lines.
constexpr std::size_t documentLimit = 256 * 1024;

bool isRegionCode(std::string_view code)
{
    return !code.empty() && code.size() <= longestRegionCode &&
           code.find_first_not_of("abcdefghijklmnopqrstuvwxyz0123456789-") == std::string_view::npos;
}

/// "4.16.0": numbers with single dots between them.
bool isVersion(std::string_view text)
{
    return !text.empty() && text.size() <= longestVersion && !text.starts_with('.') && !text.ends_with('.') &&
           !text.contains("..") && text.find_first_not_of("0123456789.") == std::string_view::npos;
}

bool isLoopback(std::string_view host)
{
    if (host == "localhost")
        return true;
    boost::system::error_code error;
    if (host.starts_with('[') && host.ends_with(']')) {
        const std::string literal{host.substr(1, host.size() - 2)};
        const auto address = asio::ip::make_address_v6(literal, error);
        return !error && address.is_loopback();
    }
    const auto address = asio::ip::make_address_v4(std::string{host}, error);
    return !error && address.is_loopback();
}

bool isPort(std::string_view text)
{
    std::uint16_t port = 0;
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), port);
    return error == std::errc{} && end == text.data() + text.size() && port > 0;
}

/// What is wrong with a service's address, as the end of a sentence that begins with its name; empty when it
/// can be used. Only what is printable ASCII passes, and no user name, query or fragment.
std::string_view fault(std::string_view address)
{
    constexpr std::string_view malformed = "is not a complete https address";
    if (address.size() > longestBase || std::ranges::any_of(address, [](char c) {
            return c <= ' ' || c > '~' || std::string_view{"\"'<>\\^`{|}@?#"}.contains(c);
        }))
        return malformed;
    const std::size_t colon = address.find("://");
    if (colon == std::string_view::npos)
        return malformed;
    const std::string scheme = lowerCased(address.substr(0, colon));
    const std::string_view rest = address.substr(colon + 3);
    const std::string_view authority = rest.substr(0, rest.find('/'));
    const std::size_t portAt = authority.find(':', authority.starts_with('[') ? authority.find(']') : 0);
    const std::string host = lowerCased(authority.substr(0, portAt));
    // A percent sign in a host is an escape or an IPv6 zone; neither has a use here.
    if (host.empty() || host.contains('%') ||
        (portAt != std::string_view::npos && !isPort(authority.substr(portAt + 1))))
        return malformed;
    if (scheme == "https")
        return {};
    if (scheme != "http")
        return malformed;
    return isLoopback(host) ? std::string_view{}
                            : "uses plain http, which only this machine's own addresses may";
}

using Merged = std::expected<void, std::string>;

/// The rest of the sentence that begins with the entry's name.
template <class... Name>
std::unexpected<std::string> badEntry(std::string_view what, fmt::format_string<Name...> form, Name&&... name)
{
    return std::unexpected{
        fmt::format("The entry \"{}\" {}.", fmt::format(form, std::forward<Name>(name)...), what)};
}

/// One Dexcom region's entry laid over what is there already.
Merged merge(DexcomEndpoint& row, std::string_view code, const json::value& value)
{
    const json::object* entry = value.if_object();
    if (!entry)
        return badEntry("is not an object", "dexcom.{}", code);
    auto base = optionalText(*entry, "base");
    if (!base)
        return badEntry("is not a text", "dexcom.{}.base", code);
    auto applicationId = optionalText(*entry, "applicationId");
    if (!applicationId)
        return badEntry("is not a text", "dexcom.{}.applicationId", code);

    if (*base) {
        if (const std::string_view wrong = fault(**base); !wrong.empty())
            return badEntry(wrong, "dexcom.{}.base", code);
        row.base = **std::move(base);
    }
    if (*applicationId) {
        if (!isUuidText(**applicationId))
            return badEntry("is not a UUID", "dexcom.{}.applicationId", code);
        row.applicationId = **std::move(applicationId);
    }
    if (row.base.empty())
        return badEntry("needs a \"base\"", "dexcom.{}", code);
    return {};
}

/// One LibreLinkUp region's address.
Merged merge(std::string& base, std::string_view code, const json::value& value)
{
    const json::string* text = value.if_string();
    if (!text)
        return badEntry("is not a text", "libreLinkUp.{}", code);
    if (const std::string_view wrong = fault({text->data(), text->size()}); !wrong.empty())
        return badEntry(wrong, "libreLinkUp.{}", code);
    base.assign(text->data(), text->size());
    return {};
}

/// Every region of a section. `begin` gives what a region's entry is laid over.
template <class Row, class Begin>
Merged mergeRegions(std::map<std::string, Row, std::less<>>& rows, std::string_view name,
                    const json::object& regions, Begin begin)
{
    for (const auto& [key, entry] : regions) {
        const std::string code{key};
        if (!isRegionCode(code)) {
            return std::unexpected{
                fmt::format("A region code under \"{}\" is not made of up to {} lower-case letters, digits "
                            "and hyphens.",
                            name, longestRegionCode)};
        }
        Row row = begin(code);
        if (auto merged = merge(row, code, entry); !merged)
            return merged;
        rows.insert_or_assign(code, std::move(row));
    }
    return {};
}

Merged mergeDexcom(ServiceEndpoints& endpoints, const json::object& regions)
{
    // A new row begins as a copy of the one that its code is another name of.
    return mergeRegions(endpoints.dexcom, "dexcom", regions, [&](std::string_view code) {
        const DexcomEndpoint* known = endpoints.dexcomRegion(code);
        return known ? *known : DexcomEndpoint{{}, std::string{firstApplicationId}};
    });
}

Merged mergeLibreLinkUp(ServiceEndpoints& endpoints, const json::object& regions)
{
    return mergeRegions(endpoints.libreLinkUp, "libreLinkUp", regions,
                        [](std::string_view) { return std::string{}; });
}

Merged mergeIdentity(ServiceEndpoints& endpoints, const json::object& entry)
{
    LibreLinkUpIdentity& identity = endpoints.libreLinkUpIdentity;
    struct Member {
        std::string_view key;
        std::string& text;
        std::size_t longest;
    };
    for (const Member& member : {Member{"version", identity.version, longestVersion},
                                 {"product", identity.product, longestProduct},
                                 {"userAgent", identity.userAgent, longestUserAgent}}) {
        auto text = optionalText(entry, member.key);
        if (!text)
            return badEntry("is not a text", "libreLinkUpClient.{}", member.key);
        if (!*text)
            continue;
        if (!isHeaderText(**text, member.longest)) {
            return badEntry(fmt::format("is not made of up to {} printable ASCII characters", member.longest),
                            "libreLinkUpClient.{}", member.key);
        }
        member.text = **std::move(text);
    }
    if (!isVersion(identity.version))
        return badEntry("is not made of numbers and dots", "libreLinkUpClient.version");
    return {};
}

/// A member of the document, and who reads it.
struct Section {
    std::string_view name;
    Merged (*merge)(ServiceEndpoints&, const json::object&);
};
constexpr Section sections[]{
    {"dexcom", mergeDexcom}, {"libreLinkUp", mergeLibreLinkUp}, {"libreLinkUpClient", mergeIdentity}};

std::expected<std::optional<ServiceEndpoints>, std::string> readDocument(const std::filesystem::path& file)
{
    auto content = readFile(file, documentLimit);
    if (!content) {
        return std::unexpected{fmt::format("The endpoints file \"{}\" could not be read: {}.", file.string(),
                                           content.error().message())};
    }
    if (!*content)
        return std::nullopt;
    auto parsed = ServiceEndpoints::parse(**content);
    if (!parsed)
        return std::unexpected{
            fmt::format("In the endpoints file \"{}\": {}", file.string(), parsed.error())};
    return *std::move(parsed);
}

}  // namespace

const DexcomEndpoint* ServiceEndpoints::dexcomRegion(std::string_view code) const
{
    if (const auto row = dexcom.find(code); row != dexcom.end())
        return &row->second;
    for (const auto& [alias, region] : regionAliases) {
        if (alias != code)
            continue;
        const auto row = dexcom.find(region);
        return row != dexcom.end() ? &row->second : nullptr;
    }
    return nullptr;
}

ServiceEndpoints ServiceEndpoints::builtIn()
{
    const std::string first{firstApplicationId};
    const std::string second{secondApplicationId};
    return {
        .dexcom =
            {
                {"us", {"https://share2.dexcom.com/ShareWebServices/Services", first}},
                {"ous", {"https://shareous1.dexcom.com/ShareWebServices/Services", first}},
                {"jp", {"https://share.dexcom.jp/ShareWebServices/Services/", second}},
            },
        .libreLinkUp =
            {
                {"ae", "https://api-ae.libreview.io"},
                {"ap", "https://api-ap.libreview.io"},
                {"au", "https://api-au.libreview.io"},
                {"ca", "https://api-ca.libreview.io"},
                {"cn", "https://api-cn.myfreestyle.cn"},
                {"de", "https://api-de.libreview.io"},
                {"eu", "https://api-eu.libreview.io"},
                {"eu2", "https://api-eu2.libreview.io"},
                {"fr", "https://api-fr.libreview.io"},
                {"jp", "https://api-jp.libreview.io"},
                {"la", "https://api-la.libreview.io"},
                {"ru", "https://api.libreview.ru"},
                {"us", "https://api-us.libreview.io"},
            },
    };
}

std::expected<ServiceEndpoints, std::string> ServiceEndpoints::parse(std::string_view document)
{
    const auto value = parseJson(document, {.bytes = documentLimit, .depth = 16});
    if (!value)
        return std::unexpected{value.error().message + "."};
    const json::object* object = value->if_object();
    if (!object)
        return std::unexpected{std::string{"The document is not an object."}};

    ServiceEndpoints endpoints = builtIn();
    for (const Section& section : sections) {
        const json::value* content = object->if_contains({section.name.data(), section.name.size()});
        if (!content || content->is_null())
            continue;
        const json::object* entry = content->if_object();
        if (!entry)
            return badEntry("is not an object", "{}", section.name);
        if (auto merged = section.merge(endpoints, *entry); !merged)
            return std::unexpected{std::move(merged).error()};
    }
    return endpoints;
}

std::expected<ServiceEndpoints, std::string> ServiceEndpoints::load(
    const std::optional<std::filesystem::path>& named, const std::filesystem::path& configurationFolder)
{
    auto document = readDocument(named ? *named : configurationFolder / "endpoints.json");
    if (!document)
        return std::unexpected{std::move(document).error()};
    if (*document)
        return **std::move(document);
    if (named)
        return std::unexpected{fmt::format("The endpoints file \"{}\" does not exist.", named->string())};
    return builtIn();
}

}  // namespace tidewell
