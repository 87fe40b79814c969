#include "program/SignInController.h"

#include <QCoreApplication>

#include "program/AccountCheck.h"
#include "support/Log.h"

namespace tidewell {

namespace {

const Log signInLog{"SignInController"};

QString text(const std::string& value) { return QString::fromStdString(value); }

QString tr(const char* source) { return QCoreApplication::translate("SignInController", source); }

}  // namespace

SignInController::SignInController(Core& core) : core_{core} {}

SignInController::~SignInController()
{
    if (check_.running())
        check_.cancel();
}

void SignInController::show()
{
    if (!dialog_) {
        dialog_ = std::make_unique<SignInDialog>();
        dialog_->onSubmit([this](GlucoseAccountConfiguration account) { submit(std::move(account)); });
        dialog_->onCancel([this] { check_.cancel(); });
    }
    if (check_.running()) {
        dialog_->raise();
        dialog_->activateWindow();
        return;
    }
    dialog_->present(core_.configuration().account().value_or(GlucoseAccountConfiguration{}));
}

void SignInController::submit(GlucoseAccountConfiguration account)
{
    if (check_.running())
        return;
    dialog_->showProgress();
    check_ = startTask(core_.main(), check(std::move(account)));
}

asio::awaitable<void> SignInController::check(GlucoseAccountConfiguration account)
{
    const auto client = core_.makeAPIClient(account);
    if (!client) {
        dialog_->showError(tr("Sign in required"),
                           tr("This version of Tidewell reads Dexcom Share accounts only."), {});
        co_return;
    }
    const auto cancellation = co_await asio::this_coro::cancellation_state;
    // A step that had just ended well does not notice that the person gave up; the window may be gone then.
    const auto gaveUp = [&] { return cancellation.cancelled() != asio::cancellation_type::none; };
    const auto check = co_await checkAccount(core_.engine(), client);
    if (gaveUp())
        co_return;
    if (check.result != AccountCheck::Result::good) {
        const bool refused = check.result == AccountCheck::Result::refused;
        dialog_->showError(
            refused ? tr("Authentication failed") : tr("Could not check the account"),
            text(check.error->text),
            refused ? tr("Check the user name, the password and the region. Use the account of the person "
                         "who wears the sensor, not a follower's, and make sure that sharing is switched on.")
                    : tr("Check your internet connection and try again."));
        co_return;
    }
    const auto saved = co_await core_.configuration().saveAccount(std::move(account));
    if (gaveUp())
        co_return;
    if (!saved) {
        signInLog.error("The account was not stored: " + saved.error().message);
        dialog_->showError(tr("Could not save the account"), text(saved.error().message),
                           tr("Nothing was changed. Try again."));
        co_return;
    }
    // The first-run steps are over, and an account that was refused before is tried again.
    core_.defaults().set(onboardingCompletedKey, true);
    core_.defaults().set(accountConfirmedAtKey, core_.clock().now());
    core_.delegate().storedStateDidReload();
    dialog_->finish();
    // Who has just signed in waits for the value, not for the schedule.
    asio::co_spawn(core_.main(), core_.coordinator().refreshNow(), asio::detached);
}

}  // namespace tidewell
