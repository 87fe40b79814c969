#include "sources/ServiceRequest.h"

#include <fmt/format.h>

#include <boost/json/serializer.hpp>

#include <array>
#include <utility>

#include "support/Json.h"

namespace tidewell {

namespace {

void appendQuoted(std::string& out, std::string_view text)
{
    std::array<char, 256> chunk;
    json::serializer serializer;
    serializer.reset(json::string_view{text.data(), text.size()});
    while (!serializer.done())
        out += std::string_view{serializer.read(chunk.data(), chunk.size())};
    wipe(chunk.data(), chunk.size());
}

}  // namespace

std::string serviceUrl(std::string_view base, std::string_view path)
{
    if (base.ends_with('/'))
        base.remove_suffix(1);
    return fmt::format("{}/{}", base, path);
}

RequestBody::RequestBody(std::size_t secretBytes)
{
    constexpr std::size_t longestEscape = 6;  // "\u001f"
    constexpr std::size_t plainBytes = 512;
    sent_.reserve(secretBytes * longestEscape + plainBytes);
}

void RequestBody::addSecret(std::string_view key, std::string_view text)
{
    addKey(key);
    appendQuoted(sent_, text);
    appendQuoted(shown_, redacted);
}

void RequestBody::add(std::string_view key, std::string_view text)
{
    addKey(key);
    appendQuoted(sent_, text);
    appendQuoted(shown_, text);
}

void RequestBody::add(std::string_view key, int number)
{
    addKey(key);
    sent_ += fmt::to_string(number);
    shown_ += fmt::to_string(number);
}

SecretText RequestBody::sent()
{
    sent_ += '}';
    return SecretText{std::move(sent_)};
}

void RequestBody::addKey(std::string_view key)
{
    const std::string text = fmt::format("{}\"{}\":", sent_.empty() ? '{' : ',', key);
    sent_ += text;
    shown_ += text;
}

}  // namespace tidewell
