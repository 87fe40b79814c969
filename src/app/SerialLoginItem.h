#pragma once

#include <memory>
#include <mutex>
#include <utility>

#include "app/LoginItem.h"

namespace tidewell {

/// A login item that several threads may use: their calls wait for each other.
class SerialLoginItem final : public LoginItemControlling {
public:
    explicit SerialLoginItem(std::unique_ptr<LoginItemControlling> item) : item_{std::move(item)} {}

    [[nodiscard]] LoginItemStatus status() override
    {
        const std::lock_guard lock{mutex_};
        return item_->status();
    }
    [[nodiscard]] std::expected<void, std::string> setEnabled(bool enabled) override
    {
        const std::lock_guard lock{mutex_};
        return item_->setEnabled(enabled);
    }

private:
    std::mutex mutex_;
    const std::unique_ptr<LoginItemControlling> item_;
};

}  // namespace tidewell
