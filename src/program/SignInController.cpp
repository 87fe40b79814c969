#include "program/SignInController.h"

#include "app/AccountCheck.h"
#include "support/Log.h"

namespace tidewell {

namespace {

const Log signInLog{"SignInController"};

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
            dialog_->showProblem(passwordNeededProblem());
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
        dialog_->showProblem(signInProblem(account.provider, *check.error, account.username));
}

asio::awaitable<void> SignInController::checkLibreLinkUp(GlucoseAccountConfiguration account)
{
    const auto cancellation = co_await asio::this_coro::cancellation_state;
    const auto client = makeLibreLinkUpClient(core_.clientParts(), account);
    const auto connections = co_await askConnections(core_.engine(), client);
    if (cancellation.cancelled() != asio::cancellation_type::none)
        co_return;
    if (!connections) {
        dialog_->showProblem(signInProblem(account.provider, connections.error(), account.username));
        co_return;
    }
    dialog_->showPeople(connections->people);
    if (connections->people.empty()) {
        dialog_->showProblem(nobodySharesProblem());
        co_return;
    }
    account.region = connections->region;
    pending_ = std::move(account);
}

asio::awaitable<void> SignInController::store(GlucoseAccountConfiguration account)
{
    const auto cancellation = co_await asio::this_coro::cancellation_state;
    const auto saved = co_await core_.configuration().saveAccount(std::move(account));
    if (cancellation.cancelled() != asio::cancellation_type::none)
        co_return;
    if (!saved) {
        signInLog.error("The account was not stored: " + saved.error().message);
        dialog_->showProblem(accountNotSavedProblem(saved.error()));
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
