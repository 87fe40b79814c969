#pragma once

#include <cstdint>
#include <string>
#include <string_view>
#include <variant>

#include "support/SecretText.h"

namespace tidewell {

/// Status codes of the secret store. They are those of the Apple Security framework (SecBase.h), so that a
/// number in a report means the same on every platform.
namespace keychainStatus {
inline constexpr std::int32_t success = 0;
inline constexpr std::int32_t itemNotFound = -25300;  ///< No such item; a lookup answers it as notFound.
inline constexpr std::int32_t decode = -26275;        ///< The stored content is not one of ours.
inline constexpr std::int32_t invalidStore = -25295;  ///< Its file is not ours, or open to other users.
inline constexpr std::int32_t notAvailable = -25291;  ///< No secret store, or it does not answer.
inline constexpr std::int32_t interactionNotAllowed = -25308;  ///< Locked, and nobody can unlock it now.
inline constexpr std::int32_t userCanceled =
    -128;                                ///< The person closed the unlock dialog; reads no longer open one.
inline constexpr std::int32_t io = -36;  ///< A file could not be read or written.
}  // namespace keychainStatus

/// What a status other than success means, as the rest of a sentence: "the secret store is locked".
[[nodiscard]] std::string keychainStatusText(std::int32_t status);

struct KeychainItemNotFound {
    bool operator==(const KeychainItemNotFound&) const = default;
};
struct KeychainFailure {
    std::int32_t status = 0;
    bool operator==(const KeychainFailure&) const = default;
};
/// Found bytes, notFound, or failure.
using KeychainLookup = std::variant<SecretText, KeychainItemNotFound, KeychainFailure>;

/// One blob of bytes per service and account in the user's secret store.
///
/// Calls block, each with a deadline of its own (60 s where a person may have
/// to unlock the store, 10 s otherwise), so they belong on a worker thread;
/// several threads may call. A write that reported success has been read back.
class KeychainItemStoring {
public:
    virtual ~KeychainItemStoring() = default;
    [[nodiscard]] virtual KeychainLookup read(std::string_view service, std::string_view account) = 0;
    /// Replaces the item or adds it. keychainStatus::success or the failure.
    [[nodiscard]] virtual std::int32_t write(std::string_view service, std::string_view account,
                                             const SecretText& data) = 0;
    /// keychainStatus::itemNotFound when there was none.
    [[nodiscard]] virtual std::int32_t remove(std::string_view service, std::string_view account) = 0;
};

/// Reads an item back and compares: success when the store holds `data`,
/// else the failure of reading, or keychainStatus::decode when it holds
/// something else or nothing. What a store calls at the end of its write.
[[nodiscard]] std::int32_t verifyWritten(KeychainItemStoring& store, std::string_view service,
                                         std::string_view account, const SecretText& data);

}  // namespace tidewell
