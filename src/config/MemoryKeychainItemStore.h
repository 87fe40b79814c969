#pragma once

#include <map>
#include <mutex>
#include <string>
#include <utility>

#include "config/KeychainItemStoring.h"

namespace tidewell {

/// Secrets that go with the process: for demonstrations and tests. Never fails.
class MemoryKeychainItemStore final : public KeychainItemStoring {
public:
    [[nodiscard]] KeychainLookup read(std::string_view service, std::string_view account) override;
    [[nodiscard]] std::int32_t write(std::string_view service, std::string_view account,
                                     const SecretText& data) override;
    [[nodiscard]] std::int32_t remove(std::string_view service, std::string_view account) override;

private:
    std::mutex mutex_;
    std::map<std::pair<std::string, std::string>, SecretText> items_;  ///< By service and account.
};

}  // namespace tidewell
