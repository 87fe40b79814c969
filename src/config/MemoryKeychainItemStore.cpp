#include "config/MemoryKeychainItemStore.h"

namespace tidewell {

KeychainLookup MemoryKeychainItemStore::read(std::string_view service, std::string_view account)
{
    const std::scoped_lock lock{mutex_};
    const auto item = items_.find({std::string{service}, std::string{account}});
    if (item == items_.end())
        return KeychainItemNotFound{};
    return item->second;
}

std::int32_t MemoryKeychainItemStore::write(std::string_view service, std::string_view account,
                                            const SecretText& data)
{
    const std::scoped_lock lock{mutex_};
    items_.insert_or_assign({std::string{service}, std::string{account}}, data);
    return keychainStatus::success;
}

std::int32_t MemoryKeychainItemStore::remove(std::string_view service, std::string_view account)
{
    const std::scoped_lock lock{mutex_};
    const bool removed = items_.erase({std::string{service}, std::string{account}}) > 0;
    return removed ? keychainStatus::success : keychainStatus::itemNotFound;
}

}  // namespace tidewell
