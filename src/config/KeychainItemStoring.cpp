#include "config/KeychainItemStoring.h"

#include <fmt/format.h>

namespace tidewell {

std::string keychainStatusText(std::int32_t status)
{
    switch (status) {
    case keychainStatus::success: return "the secret store answered";
    case keychainStatus::itemNotFound: return "the secret store holds nothing for this account";
    case keychainStatus::decode: return "what the secret store holds is damaged";
    case keychainStatus::invalidStore: return "the file of the secret store is not ours alone";
    case keychainStatus::notAvailable: return "no secret store answers";
    case keychainStatus::interactionNotAllowed: return "the secret store is locked";
    case keychainStatus::userCanceled: return "unlocking the secret store was cancelled";
    case keychainStatus::io: return "the file of the secret store cannot be read or written";
    default: return fmt::format("the secret store failed with status {}", status);
    }
}

std::int32_t verifyWritten(KeychainItemStoring& store, std::string_view service, std::string_view account,
                           const SecretText& data)
{
    const KeychainLookup lookup = store.read(service, account);
    if (const auto* failure = std::get_if<KeychainFailure>(&lookup))
        return failure->status;
    const auto* found = std::get_if<SecretText>(&lookup);
    return found && *found == data ? keychainStatus::success : keychainStatus::decode;
}

}  // namespace tidewell
