#include "program/SignInController.h"

#include <QCoreApplication>

#include "app/AccountCheck.h"
#include "support/Log.h"

namespace tidewell {

namespace {

const Log signInLog{"SignInController"};

QString text(const std::string& value) { return QString::fromStdString(value); }

QString tr(const char* source) { return QCoreApplication::translate("SignInController", source); }

QString checkHint(GlucoseProvider provider)
{
    switch (provider) {
    case GlucoseProvider::dexcom:
        return tr(
            "Check the user name, the password and the region. Use the account of the person who wears "
            "the sensor, not a follower's, and make sure that sharing is switched on.");
    case GlucoseProvider::libreLinkUp:
        return tr(
            "Use the follower's e-mail address and password, exactly as in the LibreLinkUp app. After "
            "several wrong ones the service locks the account for a while.");
    }
    std::unreachable();
}

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
        dialog_->onChoose([this](const LibreConnection& person) { follow(person); });
        dialog_->onBack([this] { pending_.reset(); });
        dialog_->onCancel([this] {
            check_.cancel();
            pending_.reset();
        });
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
    if (account.password.empty()) {
        const auto& stored = core_.configuration().account();
        if (stored && stored->provider == account.provider && stored->username == account.username)
            account.password = stored->password;
        if (account.password.empty()) {
            dialog_->showError(tr("The password is needed"),
                               tr("The account's password is no longer stored."), tr("Enter it."));
            return;
        }
    }
    dialog_->showProgress();
    check_ = startTask(core_.main(), check(std::move(account)));
}

void SignInController::follow(const LibreConnection& person)
{
    if (check_.running() || !pending_)
        return;
    GlucoseAccountConfiguration account = *pending_;
    account.patientID = person.patientId;
    if (std::string name = person.displayName(); !name.empty())
        account.patientName = std::move(name);
    dialog_->showProgress();
    check_ = startTask(core_.main(), store(std::move(account)));
}

asio::awaitable<void> SignInController::check(GlucoseAccountConfiguration account)
{
    switch (account.provider) {
    case GlucoseProvider::dexcom: co_return co_await checkDexcom(std::move(account));
    case GlucoseProvider::libreLinkUp: co_return co_await checkLibreLinkUp(std::move(account));
    }
}

asio::awaitable<void> SignInController::checkDexcom(GlucoseAccountConfiguration account)
{
    const auto cancellation = co_await asio::this_coro::cancellation_state;
    const auto client = makeServiceClient(core_.clientParts(), account);
    const auto check = co_await checkAccount(core_.engine(), client);
    // A step that had just ended well does not notice that the person gave up; the window may be gone then.
    if (cancellation.cancelled() != asio::cancellation_type::none)
        co_return;
    if (check.result == AccountCheck::Result::good)
        co_await store(std::move(account));
    else
        showFailure(account.provider, *check.error);
}

asio::awaitable<void> SignInController::checkLibreLinkUp(GlucoseAccountConfiguration account)
{
    const auto cancellation = co_await asio::this_coro::cancellation_state;
    const auto client = makeLibreLinkUpClient(core_.clientParts(), account);
    const auto connections = co_await askConnections(core_.engine(), client);
    if (cancellation.cancelled() != asio::cancellation_type::none)
        co_return;
    if (!connections) {
        showFailure(account.provider, connections.error());
        co_return;
    }
    dialog_->showPeople(connections->people);
    if (connections->people.empty()) {
        dialog_->showError(
            tr("Nobody shares with this account"), text(noConnectionsText()),
            tr("Ask the person who wears the sensor to invite this e-mail address in the Libre "
               "app. When the invitation is accepted, go back and sign in again."));
        co_return;
    }
    account.region = connections->region;
    pending_ = std::move(account);
}

void SignInController::showFailure(GlucoseProvider provider, const GlucoseAPIError& error)
{
    using enum AccountCheck::Result;
    QString title = tr("Could not check the account");
    QString hint;
    switch (accountCheckResult(error)) {
    case refused:
        title = tr("Authentication failed");
        hint = checkHint(provider);
        break;
    case actionRequired:
        title = provider == GlucoseProvider::libreLinkUp ? tr("LibreLinkUp needs attention")
                                                         : tr("Authentication failed");
        hint = tr("When that is done, choose Sign in again.");
        break;
    case good:
    case unreachable:
        if (error.kind == GlucoseAPIError::Kind::transport)
            hint = tr("Check your internet connection and try again.");
        else if (error.kind == GlucoseAPIError::Kind::rateLimited)
            hint =
                tr("Wait for %1, then sign in again. The service may have locked the account after several "
                   "wrong passwords.")
                    .arg(text(elapsedPhrase(std::max(error.retryAfter.value_or(Seconds{0}), Seconds{60}))));
        else
            hint = tr("Wait a few minutes and try again.");
        break;
    }
    dialog_->showError(title, text(error.text), hint);
}

asio::awaitable<void> SignInController::store(GlucoseAccountConfiguration account)
{
    const auto cancellation = co_await asio::this_coro::cancellation_state;
    const auto saved = co_await core_.configuration().saveAccount(std::move(account));
    if (cancellation.cancelled() != asio::cancellation_type::none)
        co_return;
    if (!saved) {
        signInLog.error("The account was not stored: " + saved.error().message);
        dialog_->showError(tr("Could not save the account"), text(saved.error().message),
                           tr("Nothing was changed. Try again."));
        co_return;
    }
    pending_.reset();
    // The first-run steps are over, and an account that was refused before is tried again.
    core_.defaults().set(onboardingCompletedKey, true);
    core_.defaults().set(accountConfirmedAtKey, core_.clock().now());
    core_.delegate().storedStateDidReload();
    dialog_->finish();
    // Who has just signed in waits for the value, not for the schedule.
    asio::co_spawn(core_.main(), core_.coordinator().refreshNow(), asio::detached);
}

}  // namespace tidewell
