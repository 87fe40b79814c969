#pragma once

#include <memory>

#include "app/AppDelegate.h"
#include "program/Core.h"
#include "ui/SignInDialog.h"

namespace tidewell {

/// The sign-in window and what it does: checks the account with its service, asks whom to follow where the
/// service leaves that open, stores it, and lets polling begin. Main thread.
class SignInController final {
public:
    explicit SignInController(Core& core);
    ~SignInController();
    SignInController(const SignInController&) = delete;
    SignInController& operator=(const SignInController&) = delete;

    /// Shows the window, or brings it to the front.
    void show();

private:
    void submit(GlucoseAccountConfiguration account);
    void follow(const LibreConnection& person);
    asio::awaitable<void> check(GlucoseAccountConfiguration account);
    asio::awaitable<void> checkDexcom(GlucoseAccountConfiguration account);
    asio::awaitable<void> checkLibreLinkUp(GlucoseAccountConfiguration account);
    asio::awaitable<void> store(GlucoseAccountConfiguration account);

    Core& core_;
    std::unique_ptr<SignInDialog> dialog_;                ///< Made when it is first shown.
    std::optional<GlucoseAccountConfiguration> pending_;  ///< Checked; the person to follow is not chosen.
    Task<void> check_;
};

}  // namespace tidewell
