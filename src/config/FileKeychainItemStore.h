#pragma once

#include <chrono>
#include <expected>
#include <filesystem>
#include <string>
#include <vector>

#include "config/KeychainItemStoring.h"
#include "support/Log.h"

namespace tidewell {

/// Secrets in a file that only its owner may read: for
/// machines without a secret store, and only when asked for.
///
/// Whoever can read the user's files can read the secrets; the file is encoded, not encrypted. Refuses a file
/// that belongs to somebody else, that others may read or write, or that is no regular file (invalidStore). A
/// file that does not decode is left as it is (decode). Each refusal also writes a line to the log.
///
/// Each write replaces the whole file, is on the disk when it returns, and holds the lock `<file>.lock`
/// meanwhile, so that several threads and processes may write.
class FileKeychainItemStore final : public KeychainItemStoring {
public:
    /// Makes nothing yet; the first write makes the file and its folder. `patience`: how long a write or a
    /// removal waits for another process before it gives up with notAvailable.
    explicit FileKeychainItemStore(std::filesystem::path file,
                                   std::chrono::milliseconds patience = std::chrono::seconds{10});

    [[nodiscard]] KeychainLookup read(std::string_view service, std::string_view account) override;
    [[nodiscard]] std::int32_t write(std::string_view service, std::string_view account,
                                     const SecretText& data) override;
    [[nodiscard]] std::int32_t remove(std::string_view service, std::string_view account) override;

private:
    struct Item {
        std::string service;
        std::string account;
        SecretText data;
    };
    using Items = std::vector<Item>;
    class Lock;

    [[nodiscard]] std::expected<Items, std::int32_t> load() const;
    [[nodiscard]] static std::expected<Items, std::string> decode(std::string_view text);
    [[nodiscard]] std::int32_t store(const Items& items) const;
    [[nodiscard]] static Items::iterator find(Items& items, std::string_view service,
                                              std::string_view account);

    std::filesystem::path file_;
    std::chrono::milliseconds patience_;
    Log log_{"FileKeychainItemStore"};
};

}  // namespace tidewell
