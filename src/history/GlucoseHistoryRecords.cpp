#include "history/GlucoseHistoryRecords.h"

#include <fmt/format.h>
#include <simdjson.h>
#include <boost/json/array.hpp>
#include <boost/json/serialize.hpp>

#include <algorithm>
#include <array>
#include <charconv>
#include <cmath>
#include <iterator>
#include <span>
#include <tuple>
#include <utility>

#include "support/Json.h"
#include "support/Sha256.h"
#include "support/TimeText.h"

namespace tidewell {

namespace {

constexpr std::string_view dayFileExtension = ".history";
constexpr std::int64_t millisecondsOfDay = 86'400'000;
constexpr std::size_t scopeDigits = 64;

constexpr std::array<std::string_view, 3> manifestKeys{"scopes", "attachedScopeID", "legacyMigrationScope"};
constexpr std::array<std::string_view, 9> configurationKeys{
    "isEnabled",           "retentionDays",        "consentVersion",
    "collectionStartedAt", "insightsUnlockedAt",   "collectionCutoff",
    "pendingDeletion",     "hasPreviouslyEnabled", "collectionIntervalStart"};

std::string_view trimmed(std::string_view text)
{
    constexpr std::string_view blanks = " \t\r\n\v\f";
    const auto first = text.find_first_not_of(blanks);
    return first == std::string_view::npos ? ""
                                           : text.substr(first, text.find_last_not_of(blanks) - first + 1);
}

// Manifest and configuration: small, and read by Boost.JSON.

json::object unknownMembers(const json::object& object, std::span<const std::string_view> known)
{
    json::object unknown;
    for (const auto& member : object)
        if (std::ranges::find(known, std::string_view{member.key().data(), member.key().size()}) ==
            known.end())
            unknown.insert(member);
    return unknown;
}

void append(json::object& object, const json::object& unknown)
{
    for (const auto& member : unknown)
        object.insert(member);  // A key that is there already stays.
}

void putDate(json::object& object, std::string_view key, const std::optional<Date>& date)
{
    if (!date)
        return;
    std::string text;
    appendStoredDate(text, *date);
    object[key] = text;
}

/// Reads members one after the other; once one is wrong, `good` stays false.
struct MemberReader {
    const json::object& object;
    bool good = true;

    template <class Value>
    std::optional<Value> optional(std::expected<std::optional<Value>, JsonError> read)
    {
        good = good && read.has_value();
        return read ? std::move(*read) : std::nullopt;
    }
    template <class Value>
    Value required(std::expected<std::optional<Value>, JsonError> read)
    {
        auto value = optional(std::move(read));
        good = good && value.has_value();
        return std::move(value).value_or(Value{});
    }
    bool flag(std::string_view key) { return required(optionalBoolean(object, key)); }
    std::int64_t number(std::string_view key) { return required(optionalInteger(object, key)); }
    std::optional<Date> date(std::string_view key)
    {
        const auto text = optional(optionalText(object, key));
        if (!text)
            return {};
        const auto read = dateFromStored(*text);
        good = good && read.has_value();
        return read;
    }
    std::optional<HistoryScopeID> scope(std::string_view key)
    {
        const auto text = optional(optionalText(object, key));
        if (!text)
            return {};
        auto read = HistoryScopeID::parse(*text);
        good = good && read.has_value();
        return read;
    }
};

// Days: large, written by hand and read by simdjson.

void appendNumber(std::string& text, double number)
{
    fmt::format_to(std::back_inserter(text), "{}", number);
}

/// A text in quotes. What is no UTF-8 loses the bytes that are not ASCII: a file with them could not be read.
void appendText(std::string& json, std::string_view text)
{
    const auto plain = [](char c) { return c >= ' ' && c <= '~' && c != '"' && c != '\\'; };
    if (std::ranges::all_of(text, plain)) {
        json += '"';
        json += text;
        json += '"';
        return;
    }
    std::string ascii;
    if (!simdjson::validate_utf8(text)) {
        ascii = text;
        std::ranges::replace_if(
            ascii, [](char c) { return (static_cast<unsigned char>(c) & 0x80) != 0; }, '?');
        text = ascii;
    }
    json += json::serialize(json::string_view{text.data(), text.size()});
}

void appendDate(std::string& json, Date date)
{
    json += '"';
    appendStoredDate(json, date);
    json += '"';
}

bool hasStoredForm(const StoredReading& stored)
{
    return std::isfinite(stored.reading.mgdL) && std::isfinite(unixSeconds(stored.reading.date)) &&
           std::isfinite(unixSeconds(stored.fetchedAt));
}

void append(std::string& json, const StoredReading& stored)
{
    const GlucoseReading& reading = stored.reading;
    json += R"({"reading":{"mgdL":)";
    appendNumber(json, reading.mgdL);
    json += R"(,"trendString":)";
    appendText(json, reading.trendString);
    json += R"(,"date":)";
    appendDate(json, reading.date);
    json += R"(,"sampleDuration":)";
    // What is no number is written as one that reads the same: it cannot be true.
    appendNumber(json, std::isfinite(reading.sampleDuration.count()) ? reading.sampleDuration.count() : 0);
    json += R"(,"source":")";
    json += rawValue(reading.source);
    json += R"("},"fetchedAt":)";
    appendDate(json, stored.fetchedAt);
    json += '}';
}

namespace dom = simdjson::dom;

/// Hands each member of `element` to `take(key, value)`, in order, nulls left out. False when it is no
/// object, a key of `keys` stands twice, or `take` says so.
template <std::size_t count, class Take>
bool forEachMember(dom::element element, const std::array<std::string_view, count>& keys, Take take)
{
    dom::object object;
    if (element.get(object) != simdjson::SUCCESS)
        return false;
    std::array<bool, count> seen{};
    for (const dom::key_value_pair member : object) {
        const auto key = std::ranges::find(keys, member.key);
        if (key == keys.end())
            continue;
        const auto index = static_cast<std::size_t>(key - keys.begin());
        if (std::exchange(seen[index], true))
            return false;
        if (!member.value.is_null() && !take(index, member.value))
            return false;
    }
    return true;
}

template <class Value>
bool read(dom::element element, std::optional<Value>& value)
{
    Value found{};
    if (element.get(found) != simdjson::SUCCESS)
        return false;
    value = found;
    return true;
}

std::optional<GlucoseReading> readingOfElement(dom::element element)
{
    constexpr std::array<std::string_view, 5> keys{"mgdL", "trendString", "date", "sampleDuration", "source"};
    StoredReadingMembers members;
    const bool good = forEachMember(element, keys, [&members](std::size_t key, dom::element value) {
        switch (key) {
        case 0: return read(value, members.mgdL);
        case 1: return read(value, members.trendString);
        case 2: return read(value, members.date);
        case 3: return read(value, members.sampleDuration);
        default: return read(value, members.source);
        }
    });
    if (!good)
        return {};
    auto reading = readingOf(members);
    return reading ? std::optional{std::move(*reading)} : std::nullopt;
}

std::optional<StoredReading> storedReadingOf(dom::element element)
{
    constexpr std::array<std::string_view, 2> keys{"reading", "fetchedAt"};
    std::optional<GlucoseReading> reading;
    std::optional<Date> fetchedAt;
    const bool good = forEachMember(element, keys, [&](std::size_t key, dom::element value) {
        if (key == 0) {
            reading = readingOfElement(value);
            return reading.has_value();
        }
        std::optional<std::string_view> text;
        if (read(value, text))
            fetchedAt = dateFromStored(*text);
        return fetchedAt.has_value();
    });
    if (!good || !reading || !fetchedAt)
        return {};
    return StoredReading{std::move(*reading), *fetchedAt};
}

std::optional<std::vector<StoredReading>> readingsOf(dom::element element, std::int64_t day)
{
    dom::array array;
    if (element.get(array) != simdjson::SUCCESS)
        return {};
    std::vector<StoredReading> readings;
    readings.reserve(array.size());
    for (const dom::element stored : array) {
        auto reading = storedReadingOf(stored);
        if (!reading || historyDayIndex(reading->reading.date) != day)
            return {};
        readings.push_back(std::move(*reading));
    }
    const auto order = [](const StoredReading& stored) {
        return std::tuple{stored.reading.date, stored.fetchedAt};
    };
    if (!std::ranges::is_sorted(readings, {}, order))
        std::ranges::sort(readings, {}, order);
    return readings;
}

enum class Layout { current, singleKey };

std::expected<HistoryDay, GlucoseHistoryError> decodeDay(std::string_view json, const HistoryScopeID& scope,
                                                         std::int64_t day, Layout layout)
{
    constexpr std::array<std::string_view, 4> keys{"schemaVersion", "source", "accountScope", "readings"};
    const std::unexpected unreadable{GlucoseHistoryError::unreadableHistory};
    dom::parser parser;
    dom::element document;
    if (parser.parse(json.data(), json.size()).get(document) != simdjson::SUCCESS)
        return unreadable;

    std::optional<std::int64_t> schemaVersion;
    std::optional<std::string_view> source;
    std::optional<std::string_view> owner;
    std::optional<std::vector<StoredReading>> readings;
    const bool good = forEachMember(document, keys, [&](std::size_t key, dom::element value) {
        switch (key) {
        case 0: return read(value, schemaVersion);
        case 1: return read(value, source);
        case 2: return read(value, owner);
        default: readings = readingsOf(value, day); return readings.has_value();
        }
    });
    if (layout == Layout::singleKey && (!owner || owner->empty()))
        owner = scope.text();
    if (!good || schemaVersion != historySchemaVersion || !source || owner != scope.text() || !readings)
        return unreadable;
    return HistoryDay{
        .source = std::string{*source}, .accountScope = scope, .readings = std::move(*readings)};
}

}  // namespace

std::optional<HistoryScopeID> HistoryScopeID::of(const GlucoseAccountConfiguration& account)
{
    const std::string name = lowerCased(trimmed(account.username));
    // Dexcom Share follows the account's own person; a choice left over from the other service is nobody.
    const std::string person =
        account.provider == GlucoseProvider::libreLinkUp ? account.patientID.value_or("") : "";
    if (name.empty() || (account.provider == GlucoseProvider::libreLinkUp && person.empty()))
        return {};
    return HistoryScopeID{sha256Hex(
        fmt::format("tidewell-history-scope-v1\n{}\n{}\n{}", rawValue(account.provider), name, person))};
}

std::optional<HistoryScopeID> HistoryScopeID::parse(std::string_view text)
{
    if (text.size() != scopeDigits || text.find_first_not_of("0123456789abcdef") != std::string_view::npos)
        return {};
    return HistoryScopeID{std::string{text}};
}

std::int64_t historyDayIndex(Date date)
{
    const std::int64_t milliseconds = storedMilliseconds(date);
    const std::int64_t inDay = ((milliseconds % millisecondsOfDay) + millisecondsOfDay) % millisecondsOfDay;
    return (milliseconds - inDay) / millisecondsOfDay;
}

std::string historyDayFileName(std::int64_t day) { return fmt::format("{}{}", day, dayFileExtension); }

std::optional<std::int64_t> historyDayOfFileName(std::string_view name)
{
    std::int64_t day = 0;
    const auto [end, error] = std::from_chars(name.data(), name.data() + name.size(), day);
    if (error != std::errc{} || historyDayFileName(day) != name)
        return {};
    return day;
}

std::string encode(const GlucoseHistoryManifest& manifest)
{
    json::array scopes;
    for (const HistoryScopeID& scope : manifest.scopes)
        scopes.emplace_back(scope.text());
    json::object object{{"scopes", std::move(scopes)}};
    if (manifest.attachedScopeID)
        object["attachedScopeID"] = manifest.attachedScopeID->text();
    if (manifest.legacyMigrationScope)
        object["legacyMigrationScope"] = manifest.legacyMigrationScope->text();
    append(object, manifest.unknown);
    return prettyJson(object);
}

std::expected<GlucoseHistoryManifest, GlucoseHistoryError> decodeManifest(std::string_view text)
{
    const std::unexpected invalid{GlucoseHistoryError::invalidConfiguration};
    const auto document = parseJson(text);
    const json::object* const object = document ? document->if_object() : nullptr;
    const json::value* const scopes = object ? object->if_contains("scopes") : nullptr;
    if (!scopes || !scopes->is_array())
        return invalid;
    GlucoseHistoryManifest manifest;
    for (const json::value& element : scopes->get_array()) {
        auto scope = element.is_string() ? HistoryScopeID::parse(element.get_string()) : std::nullopt;
        if (!scope)
            return invalid;
        if (std::ranges::find(manifest.scopes, *scope) == manifest.scopes.end())
            manifest.scopes.push_back(std::move(*scope));
    }
    MemberReader reader{*object};
    manifest.attachedScopeID = reader.scope("attachedScopeID");
    manifest.legacyMigrationScope = reader.scope("legacyMigrationScope");
    if (!reader.good)
        return invalid;
    manifest.unknown = unknownMembers(*object, manifestKeys);
    return manifest;
}

std::string encode(const GlucoseHistoryConfiguration& configuration)
{
    json::object object{{"isEnabled", configuration.isEnabled},
                        {"retentionDays", configuration.retentionDays},
                        {"consentVersion", configuration.consentVersion}};
    putDate(object, "collectionStartedAt", configuration.collectionStartedAt);
    putDate(object, "insightsUnlockedAt", configuration.insightsUnlockedAt);
    putDate(object, "collectionCutoff", configuration.collectionCutoff);
    object["pendingDeletion"] = configuration.pendingDeletion;
    object["hasPreviouslyEnabled"] = configuration.hasPreviouslyEnabled;
    putDate(object, "collectionIntervalStart", configuration.collectionIntervalStart);
    append(object, configuration.unknown);
    return prettyJson(object);
}

std::expected<GlucoseHistoryConfiguration, GlucoseHistoryError> decodeHistoryConfiguration(
    std::string_view text)
{
    const std::unexpected invalid{GlucoseHistoryError::invalidConfiguration};
    const auto document = parseJson(text);
    const json::object* const object = document ? document->if_object() : nullptr;
    if (!object)
        return invalid;
    MemberReader reader{*object};
    GlucoseHistoryConfiguration configuration;
    configuration.isEnabled = reader.flag("isEnabled");
    configuration.retentionDays = reader.number("retentionDays");
    configuration.consentVersion = reader.number("consentVersion");
    configuration.collectionStartedAt = reader.date("collectionStartedAt");
    configuration.insightsUnlockedAt = reader.date("insightsUnlockedAt");
    configuration.collectionCutoff = reader.date("collectionCutoff");
    configuration.pendingDeletion = reader.flag("pendingDeletion");
    configuration.hasPreviouslyEnabled = reader.flag("hasPreviouslyEnabled");
    configuration.collectionIntervalStart = reader.date("collectionIntervalStart");
    const bool possible = (configuration.retentionDays == 30 || configuration.retentionDays == 90) &&
                          configuration.consentVersion >= 0;
    if (!reader.good || !possible)
        return invalid;
    configuration.unknown = unknownMembers(*object, configurationKeys);
    return configuration;
}

std::string encode(const HistoryDay& day)
{
    constexpr std::size_t usualSize = 200;  // Of one reading.
    std::string json;
    json.reserve((day.readings.size() + 1) * usualSize);
    fmt::format_to(std::back_inserter(json), R"({{"schemaVersion":{},"source":)", day.schemaVersion);
    appendText(json, day.source);
    json += R"(,"accountScope":")";
    json += day.accountScope.text();
    json += R"(","readings":[)";
    bool first = true;
    for (const StoredReading& stored : day.readings) {
        if (!hasStoredForm(stored))
            continue;
        if (!std::exchange(first, false))
            json += ',';
        append(json, stored);
    }
    json += "]}";
    return json;
}

std::expected<HistoryDay, GlucoseHistoryError> decodeHistoryDay(std::string_view json,
                                                                const HistoryScopeID& scope, std::int64_t day)
{
    return decodeDay(json, scope, day, Layout::current);
}

std::expected<HistoryDay, GlucoseHistoryError> decodeLegacyHistoryDay(std::string_view json,
                                                                      const HistoryScopeID& scope,
                                                                      std::int64_t day)
{
    return decodeDay(json, scope, day, Layout::singleKey);
}

}  // namespace tidewell
