#include "history/GlucoseHistoryAccount.h"

#include <algorithm>
#include <array>
#include <utility>
#include <variant>

#include "support/AesGcm.h"

namespace tidewell {

namespace {

constexpr std::string_view keyAccountPrefix = "encryption-key-v2-";
constexpr std::string_view associatedDataPrefix = "glucose-history-v1/";
constexpr std::string_view configurationName = "configuration.json";

std::string associatedData(std::string_view fileName)
{
    std::string text{associatedDataPrefix};
    text += fileName;
    return text;
}

/// Whether an error of reading says that the thing in a file's place is not a day file at all, and would say
/// so again.
bool isOfTheFile(std::error_code error)
{
    return error == std::errc::file_too_large || error == std::errc::is_a_directory ||
           error == std::errc::invalid_argument || error == std::errc::too_many_symbolic_link_levels;
}

}  // namespace

std::string historyKeyAccount(const HistoryScopeID& scope)
{
    std::string account{keyAccountPrefix};
    account += scope.text();
    return account;
}

std::expected<std::string, GlucoseHistoryError> sealHistoryFile(const SecretText& key,
                                                                std::string_view fileName,
                                                                std::string_view json, RandomSource& random)
{
    std::array<std::byte, aesNonceSize> nonce{};
    if (!random.tryFill(nonce))
        return std::unexpected{GlucoseHistoryError::storageFailure};
    auto sealed = aesGcmSeal(key, nonce, associatedData(fileName), json);
    if (!sealed)
        return std::unexpected{GlucoseHistoryError::storageFailure};
    return std::move(*sealed);
}

std::expected<std::string, GlucoseHistoryError> openHistoryFile(const SecretText& key,
                                                                std::string_view fileName,
                                                                std::string_view bytes)
{
    auto json = aesGcmOpen(key, associatedData(fileName), bytes);
    if (!json)
        return std::unexpected{GlucoseHistoryError::unreadableHistory};
    return std::move(*json);
}

GlucoseHistoryAccount::GlucoseHistoryAccount(Parts parts) : parts_{std::move(parts)} {}

std::expected<std::optional<GlucoseHistoryConfiguration>, GlucoseHistoryError>
GlucoseHistoryAccount::readConfiguration()
{
    const auto bytes = parts_.access.read(parts_.folder / configurationName);
    if (!bytes)
        return std::unexpected{GlucoseHistoryError::storageFailure};
    if (!*bytes)
        return std::nullopt;
    auto configuration = decodeHistoryConfiguration(**bytes);
    if (!configuration)
        return std::unexpected{configuration.error()};
    return std::move(*configuration);
}

std::expected<void, GlucoseHistoryError> GlucoseHistoryAccount::writeConfiguration(
    const GlucoseHistoryConfiguration& configuration)
{
    const std::string json = encode(configuration);
    needsConfigurationWrite_ = true;
    if (parts_.access.writeAtomically(parts_.folder / configurationName, json))
        return std::unexpected{GlucoseHistoryError::storageFailure};
    needsConfigurationWrite_ = false;
    return {};
}

std::expected<SecretText, GlucoseHistoryError> GlucoseHistoryAccount::loadKey(bool mayCreate)
{
    const std::unexpected unavailable{GlucoseHistoryError::unavailableKey};
    const std::string account = historyKeyAccount(parts_.scope);
    KeychainLookup lookup = parts_.keychain.read(historyKeychainService, account);
    if (SecretText* const found = std::get_if<SecretText>(&lookup)) {
        if (found->reveal().size() != aesKeySize)
            return unavailable;
        return std::move(*found);
    }
    if (std::holds_alternative<KeychainFailure>(lookup))
        return std::unexpected{GlucoseHistoryError::keychainFailure};
    if (!mayCreate)
        return unavailable;

    const auto configuration = readConfiguration();
    if (!configuration)
        return std::unexpected{configuration.error()};
    if (*configuration && (*configuration)->collectionStartedAt)
        return unavailable;
    // A new key would orphan what an older one has sealed.
    const auto sealedFiles = parts_.access.hasHistoryFiles(parts_.folder);
    if (!sealedFiles)
        return std::unexpected{GlucoseHistoryError::storageFailure};
    if (*sealedFiles)
        return unavailable;

    std::string bytes(aesKeySize, '\0');
    if (!parts_.random.tryFill(std::as_writable_bytes(std::span{bytes})))
        return std::unexpected{GlucoseHistoryError::storageFailure};
    SecretText key{std::move(bytes)};
    if (parts_.keychain.write(historyKeychainService, account, key) != keychainStatus::success)
        return std::unexpected{GlucoseHistoryError::keychainFailure};
    return key;
}

std::expected<void, GlucoseHistoryError> GlucoseHistoryAccount::removeKey()
{
    const std::int32_t status =
        parts_.keychain.remove(historyKeychainService, historyKeyAccount(parts_.scope));
    if (status != keychainStatus::success && status != keychainStatus::itemNotFound)
        return std::unexpected{GlucoseHistoryError::keychainFailure};
    return {};
}

std::expected<std::vector<std::int64_t>, GlucoseHistoryError> GlucoseHistoryAccount::days()
{
    auto days = parts_.access.days(parts_.folder);
    if (!days)
        return std::unexpected{GlucoseHistoryError::storageFailure};
    return std::move(*days);
}

std::expected<std::optional<HistoryDay>, GlucoseHistoryError> GlucoseHistoryAccount::readDay(
    const SecretText& key, std::int64_t day)
{
    const std::string name = historyDayFileName(day);
    const auto bytes = parts_.access.read(parts_.folder / name);
    if (!bytes)
        return std::unexpected{isOfTheFile(bytes.error()) ? GlucoseHistoryError::unreadableHistory
                                                          : GlucoseHistoryError::storageFailure};
    if (!*bytes)
        return std::nullopt;
    const auto json = openHistoryFile(key, name, **bytes);
    if (!json)
        return std::unexpected{json.error()};
    auto decoded = decodeHistoryDay(*json, parts_.scope, day);
    if (!decoded)
        return std::unexpected{decoded.error()};
    return std::move(*decoded);
}

std::expected<void, GlucoseHistoryError> GlucoseHistoryAccount::writeDay(const SecretText& key,
                                                                         std::int64_t index,
                                                                         const HistoryDay& day)
{
    const bool readable = day.schemaVersion == historySchemaVersion && day.accountScope == parts_.scope &&
                          std::ranges::all_of(day.readings, [index](const StoredReading& stored) {
                              return historyDayIndex(stored.reading.date) == index;
                          });
    if (!readable)
        return std::unexpected{GlucoseHistoryError::storageFailure};
    const std::string name = historyDayFileName(index);
    const auto sealed = sealHistoryFile(key, name, encode(day), parts_.random);
    if (!sealed)
        return std::unexpected{sealed.error()};
    if (parts_.access.writeAtomically(parts_.folder / name, *sealed))
        return std::unexpected{GlucoseHistoryError::storageFailure};
    return {};
}

std::expected<void, GlucoseHistoryError> GlucoseHistoryAccount::removeDay(std::int64_t day)
{
    if (parts_.access.remove(parts_.folder / historyDayFileName(day)))
        return std::unexpected{GlucoseHistoryError::storageFailure};
    return {};
}

}  // namespace tidewell
