#include "config/AppConfiguration.h"

#include <fmt/format.h>

#include <cmath>
#include <type_traits>
#include <utility>

#include "config/AppSettingsFields.h"

namespace tidewell {

namespace {

using Problem = std::optional<JsonError>;

// Reads one member into its field. Texts and numbers are required, and so is what has no default; the others
// keep the default that the field has when their key is missing.

Problem readMember(const json::object& object, std::string_view key, std::string& field)
{
    auto value = requiredText(object, key);
    if (!value)
        return std::move(value.error());
    field = std::move(*value);
    return std::nullopt;
}

Problem readMember(const json::object& object, std::string_view key, SecretText& field)
{
    auto value = requiredText(object, key);
    if (!value)
        return std::move(value.error());
    field = SecretText{std::move(*value)};
    return std::nullopt;
}

Problem readMember(const json::object& object, std::string_view key, double& field)
{
    auto value = requiredNumber(object, key);
    if (!value)
        return std::move(value.error());
    if (!std::isfinite(*value))
        return JsonError{fmt::format("\"{}\" is too large", key)};
    field = *value;
    return std::nullopt;
}

Problem readMember(const json::object& object, std::string_view key, bool& field)
{
    auto value = optionalBoolean(object, key);
    if (!value)
        return std::move(value.error());
    field = value->value_or(field);
    return std::nullopt;
}

Problem readMember(const json::object& object, std::string_view key, std::int64_t& field)
{
    auto value = optionalInteger(object, key);
    if (!value)
        return std::move(value.error());
    field = value->value_or(field);
    return std::nullopt;
}

Problem readMember(const json::object& object, std::string_view key, std::optional<std::int64_t>& field)
{
    auto value = optionalInteger(object, key);
    if (!value)
        return std::move(value.error());
    field = *value;
    return std::nullopt;
}

Problem readMember(const json::object& object, std::string_view key, std::optional<std::string>& field)
{
    auto value = optionalText(object, key);
    if (!value)
        return std::move(value.error());
    field = std::move(*value);
    return std::nullopt;
}

Problem readProvider(const json::object& object, GlucoseProvider& field)
{
    const auto text = requiredText(object, "provider");
    if (!text)
        return text.error();
    const auto provider = glucoseProvider(*text);
    if (!provider)
        return JsonError{"\"provider\" is not a known one"};
    field = *provider;
    return std::nullopt;
}

/// Absent and null alike give a null pointer.
const json::value* presentMember(const json::object& object, std::string_view key)
{
    const json::value* value = object.if_contains(key);
    return value && !value->is_null() ? value : nullptr;
}

std::expected<AppSettings, JsonError> readAppSettings(const json::value& document)
{
    const json::object* object = document.if_object();
    if (!object)
        return std::unexpected{JsonError{"The settings are not an object"}};
    AppSettings settings;
    Problem problem;
    forEachAppSetting([&](std::string_view key, auto member) {
        if (!problem)
            problem = readMember(*object, key, settings.*member);
    });
    if (problem)
        return std::unexpected{std::move(*problem)};
    return settings;
}

std::expected<GlucoseAccountConfiguration, JsonError> readAccount(const json::value& document, bool legacy)
{
    const json::object* object = document.if_object();
    if (!object)
        return std::unexpected{JsonError{"The account is not an object"}};
    GlucoseAccountConfiguration account;
    Problem problem;
    const auto read = [&](std::string_view key, auto& field) {
        if (!problem)
            problem = readMember(*object, key, field);
    };
    if (!legacy)
        problem = readProvider(*object, account.provider);
    read("username", account.username);
    read("password", account.password);
    read("region", account.region);
    if (!legacy) {
        read("patientID", account.patientID);
        read("patientName", account.patientName);
    }
    if (problem)
        return std::unexpected{std::move(*problem)};
    return account;
}

/// A whole number is written as one ("72", not "7.2E1").
json::value numberValue(double number)
{
    constexpr double exactlyWhole = 9007199254740992.0;  // 2^53
    if (std::trunc(number) == number && std::abs(number) <= exactlyWhole)
        return static_cast<std::int64_t>(number);
    return number;
}

}  // namespace

std::string description(const ConfigurationError& error)
{
    switch (error.kind) {
    case ConfigurationError::Kind::keychainError: return fmt::format("Keychain error: {}", error.status);
    case ConfigurationError::Kind::invalidConfiguration: return "Invalid configuration data";
    }
    std::unreachable();
}

json::object encode(const GlucoseAccountConfiguration& account)
{
    json::object object;
    object["provider"] = rawValue(account.provider);
    object["username"] = account.username;
    object["password"] = account.password.reveal();
    object["region"] = account.region;
    if (account.patientID)
        object["patientID"] = *account.patientID;
    if (account.patientName)
        object["patientName"] = *account.patientName;
    return object;
}

json::object encode(const AppSettings& settings)
{
    json::object object;
    forEachAppSetting([&](std::string_view key, auto member) {
        const auto& field = settings.*member;
        using Field = std::remove_cvref_t<decltype(field)>;
        if constexpr (std::is_same_v<Field, double>) {
            object[key] = numberValue(field);
        } else if constexpr (std::is_same_v<Field, std::optional<std::int64_t>>) {
            if (field)
                object[key] = *field;
        } else {
            object[key] = field;
        }
    });
    // Documents of earlier versions do not have it, and stay as they are while nobody switches it off.
    if (settings.alertOnMissingData)
        object.erase("alertOnMissingData");
    return object;
}

json::object encode(const AppConfiguration& configuration)
{
    json::object object;
    object["account"] = encode(configuration.account);
    object["app"] = encode(configuration.app);
    return object;
}

std::expected<AppConfiguration, JsonError> readAppConfiguration(const json::value& document)
{
    const json::object* object = document.if_object();
    if (!object)
        return std::unexpected{JsonError{"The document is not an object"}};

    const json::value* app = presentMember(*object, "app");
    if (!app)
        return std::unexpected{JsonError{"\"app\" is missing"}};
    auto settings = readAppSettings(*app);
    if (!settings)
        return std::unexpected{std::move(settings.error())};

    const json::value* accountMember = presentMember(*object, "account");
    const json::value* legacyMember = presentMember(*object, "dexcom");
    if (!accountMember && !legacyMember)
        return std::unexpected{JsonError{"\"account\" is missing"}};
    auto account = accountMember ? readAccount(*accountMember, false) : readAccount(*legacyMember, true);
    if (!account)
        return std::unexpected{std::move(account.error())};
    return AppConfiguration{.account = std::move(*account), .app = std::move(*settings)};
}

std::expected<AppConfiguration, ConfigurationError> decodeAppConfiguration(const json::value& document)
{
    auto configuration = readAppConfiguration(document);
    if (!configuration)
        return std::unexpected{ConfigurationError{.kind = ConfigurationError::Kind::invalidConfiguration}};
    return std::move(*configuration);
}

std::expected<AppSettings, ConfigurationError> decodeAppSettings(const json::value& document)
{
    auto settings = readAppSettings(document);
    if (!settings)
        return std::unexpected{ConfigurationError{.kind = ConfigurationError::Kind::invalidConfiguration}};
    return std::move(*settings);
}

}  // namespace tidewell
