#pragma once

#include <chrono>
#include <memory>

#include "config/KeychainItemStoring.h"

namespace tidewell {

/// The user's secret store: the Secret Service of the desktop (gnome-keyring, KWallet, KeePassXC), by
/// libsecret.
///
/// Content is kept as base64 text, since some providers damage bytes over 0x7F. Calls go one after the other
/// to a thread of their own that holds the bus connection, so a deadline ends a call whatever the service
/// does. An unlock dialog that is open stays open: calls wait for its answer, or fail once it has stood for
/// `promptDeadline`; none is cancelled and asked again. Once the person has closed a dialog, reads look
/// without asking, and find what was unlocked meanwhile; a write, which the person wants, asks again. Needs
/// no event loop.
class KeychainItemStore final : public KeychainItemStoring {
public:
    struct Deadlines {
        std::chrono::milliseconds answer{10'000};  ///< Of a call that needs nobody.
        std::chrono::milliseconds prompt{60'000};  ///< Of an unlock dialog, from its opening on.
        /// A dialog that is closed sooner was shown to nobody: the store counts as locked, not as refused.
        std::chrono::milliseconds seen{400};
    };

    KeychainItemStore();
    explicit KeychainItemStore(Deadlines deadlines);
    ~KeychainItemStore() override;

    [[nodiscard]] KeychainLookup read(std::string_view service, std::string_view account) override;
    [[nodiscard]] std::int32_t write(std::string_view service, std::string_view account,
                                     const SecretText& data) override;
    [[nodiscard]] std::int32_t remove(std::string_view service, std::string_view account) override;

private:
    struct Worker;
    struct Operations;
    std::shared_ptr<Worker> worker_;
};

}  // namespace tidewell
