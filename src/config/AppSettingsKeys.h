#pragma once

#include <array>
#include <cstdint>
#include <expected>
#include <optional>
#include <span>
#include <string>
#include <string_view>

#include "config/AppConfiguration.h"

namespace tidewell {

// The preferences by name, as the command line shows and changes them. Any thread.

/// Hours that the graph may show; without a choice it shows its own default.
inline constexpr std::array<std::int64_t, 5> graphTimeWindowHourOptions{1, 3, 6, 12, 24};
/// Minutes until a lasting low is announced again; 0 is never.
inline constexpr std::array<std::int64_t, 8> lowAlertRepeatMinuteOptions{0, 5, 10, 15, 20, 30, 45, 60};

/// Every key, in the order of the fields.
[[nodiscard]] std::span<const std::string_view> appSettingKeys();

/// The value as withSetting() takes it: "72 mg/dL", "22:00", "true", "default". Empty for an unknown key.
[[nodiscard]] std::optional<std::string> settingText(const AppSettings& settings, std::string_view key);

/// The settings with one value changed. Stricter than reading
/// a document: a value must be one that the settings offer.
///
/// Units are "mg/dL" and "mmol/L"; a threshold may name its unit and is mg/dL when it does not; times of day
/// are minutes after midnight or "22:00"; switches take true, on, yes and their opposites. Letter case does
/// not matter. Otherwise one line that says what the key takes; it does not repeat the value.
[[nodiscard]] std::expected<AppSettings, std::string> withSetting(AppSettings settings, std::string_view key,
                                                                  std::string_view value);

/// `settings`, but with the values of `to` where these differ from those of `from`.
[[nodiscard]] AppSettings withChanges(AppSettings settings, const AppSettings& from, const AppSettings& to);

}  // namespace tidewell
