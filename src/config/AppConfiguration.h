#pragma once

#include <boost/json/object.hpp>
#include <cstdint>
#include <expected>
#include <optional>
#include <string>

#include "config/GlucoseProvider.h"
#include "support/Json.h"
#include "support/SecretText.h"

namespace tidewell {

/// The account that is followed, with the choices that belong to it.
struct GlucoseAccountConfiguration {
    GlucoseProvider provider = GlucoseProvider::dexcom;
    std::string username{};  ///< Dexcom account name, or LibreLinkUp e-mail.
    SecretText password{};
    std::string region{};  ///< Lower-case code; the service client rejects one that it does not know.
    std::optional<std::string> patientID{};    ///< LibreLinkUp: the selected connection.
    std::optional<std::string> patientName{};  ///< LibreLinkUp: its display name.
    bool operator==(const GlucoseAccountConfiguration&) const = default;
};

/// The user's preferences. Thresholds are mg/dL whatever unit is shown. Nothing is clamped on decoding.
struct AppSettings {
    std::string measurementUnit = "mg/dL";  ///< Raw value of GlucoseUnits.
    double lowGlucoseThreshold = 72;        ///< mg/dL; at or below is low.
    double highGlucoseThreshold = 270;      ///< mg/dL; at or above is high.
    std::optional<std::int64_t> graphTimeWindowHours{};
    bool startAtLogin = false;
    bool alertsEnabled = true;
    bool alertOnLowThreshold = true;
    bool alertOnHighThreshold = true;
    bool alertOnRapidFall = true;
    bool alertOnRapidRise = true;
    bool quietHoursEnabled = false;
    std::int64_t quietHoursStartMinutes = 1320;  ///< After local midnight.
    std::int64_t quietHoursEndMinutes = 420;
    bool allowLowAlertsDuringQuietHours = false;
    std::int64_t lowAlertRepeatMinutes = 0;  ///< 0: no repeat.
    bool snoozeLowAlerts = true;
    bool snoozeHighAlerts = true;
    bool snoozeRapidChangeAlerts = true;
    bool alertOnMissingData = true;  ///< Written only when false.
    bool operator==(const AppSettings&) const = default;
};

/// One user's setup: the unit that is stored as one document.
struct AppConfiguration {
    GlucoseAccountConfiguration account{};
    AppSettings app{};
    bool operator==(const AppConfiguration&) const = default;
};

/// Why the configuration could not be read or stored. Returned, never thrown.
struct ConfigurationError {
    enum class Kind { keychainError, invalidConfiguration };
    Kind kind;
    std::int32_t status = 0;  ///< Of keychainError.
    bool operator==(const ConfigurationError&) const = default;
};

[[nodiscard]] std::string description(const ConfigurationError& error);

/// Writes exactly "account", then "app". The password is part of the
/// model's form; whoever stores it in clear text must empty it first.
[[nodiscard]] json::object encode(const AppConfiguration& configuration);
[[nodiscard]] json::object encode(const GlucoseAccountConfiguration& account);
[[nodiscard]] json::object encode(const AppSettings& settings);

/// Reads "app" and "account", or in its absence the older "dexcom" object. A wrong type, a missing required
/// key or an unknown provider fails the whole document; unknown keys are ignored, and null counts as absent.
[[nodiscard]] std::expected<AppConfiguration, ConfigurationError> decodeAppConfiguration(
    const json::value& document);
[[nodiscard]] std::expected<AppSettings, ConfigurationError> decodeAppSettings(const json::value& document);
/// The same as decodeAppConfiguration, but says what is wrong
/// and where, for people who edit the document by hand.
[[nodiscard]] std::expected<AppConfiguration, JsonError> readAppConfiguration(const json::value& document);

}  // namespace tidewell
