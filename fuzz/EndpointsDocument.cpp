// The file that replaces service addresses.

#include <arpa/inet.h>

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <string>
#include <string_view>

#include "Require.h"
#include "sources/GlucoseReading.h"
#include "sources/ServiceEndpoints.h"

using namespace tidewell;

namespace {

/// Written apart from the parser: plain http only where the host is this machine.
bool isSafe(const std::string& base)
{
    const std::string lower = lowerCased(base);
    if (lower.contains('@') || std::ranges::any_of(lower, [](char c) { return c <= ' ' || c > '~'; }))
        return false;
    if (lower.starts_with("https://"))
        return true;
    constexpr std::string_view http = "http://";
    if (!lower.starts_with(http))
        return false;
    const std::string_view rest = std::string_view{lower}.substr(http.size());
    const std::string_view authority = rest.substr(0, rest.find('/'));
    if (authority.starts_with('[')) {
        in6_addr address{};
        const std::string literal{authority.substr(1, authority.find(']') - 1)};
        return inet_pton(AF_INET6, literal.c_str(), &address) == 1 && IN6_IS_ADDR_LOOPBACK(&address);
    }
    const std::string_view host = authority.substr(0, authority.find(':'));
    return host == "localhost" ||
           (host.starts_with("127.") && host.find_first_not_of("0123456789.") == std::string_view::npos);
}

}  // namespace

extern "C" int LLVMFuzzerTestOneInput(const std::uint8_t* data, std::size_t size)
{
    const auto endpoints = ServiceEndpoints::parse({reinterpret_cast<const char*>(data), size});
    if (!endpoints) {
        const std::string& error = endpoints.error();
        require(error.ends_with('.') && error.size() < 300, "an error is one sentence");
        require(std::ranges::none_of(error, [](char c) { return c < ' ' && c >= 0; }),
                "an error is one line");
        return 0;
    }
    for (const auto& [code, row] : endpoints->dexcom) {
        require(!code.empty() && code.size() <= 16, "a region code is short");
        require(isSafe(row.base), "an address is https or this machine");
        require(row.applicationId.size() == 36, "an application id is a UUID");
    }
    for (const char* region : {"us", "ous", "jp", "eu", "apac"})
        require(endpoints->dexcomRegion(region) != nullptr, "no document removes a region");
    for (const auto& [code, base] : endpoints->libreLinkUp) {
        require(!code.empty() && code.size() <= 16, "a region code is short");
        require(isSafe(base), "an address is https or this machine");
    }
    for (const auto& [code, base] : ServiceEndpoints::builtIn().libreLinkUp)
        require(endpoints->libreLinkUp.contains(code), "no document removes a region");
    const LibreLinkUpIdentity& identity = endpoints->libreLinkUpIdentity;
    for (const std::string& text : {identity.version, identity.product, identity.userAgent}) {
        require(!text.empty() && text.size() <= 512, "what we send is short");
        require(std::ranges::none_of(text, [](char c) { return c < ' ' || c > '~'; }),
                "what we send can stand in a header");
    }
    require(identity.version.find_first_not_of(".0123456789") == std::string::npos, "a version is numbers");
    return 0;
}
