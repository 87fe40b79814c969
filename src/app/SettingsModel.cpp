#include "app/SettingsModel.h"

#include <boost/asio/strand.hpp>

#include <algorithm>
#include <list>
#include <utility>

#include "config/AppSettingsKeys.h"
#include "polling/Calls.h"
#include "support/Workers.h"

namespace tidewell {

namespace {

using HistoryChanged = HistoryCoordinator::Changed;

/// Changes come in groups: so long one waits for the others before a look.
constexpr auto lookDelay = 1s;
/// Between the beginnings of two looks that nobody asked for.
constexpr auto lookPause = 5s;

/// Until the next full minute, when quiet hours may begin or end: offsets of time zones are whole minutes.
std::chrono::milliseconds untilNextMinute(Date now)
{
    const Seconds minute{60};
    const Seconds sinceEpoch = now.time_since_epoch();
    const auto begun = std::chrono::floor<std::chrono::minutes>(sinceEpoch);
    return std::chrono::ceil<std::chrono::milliseconds>(begun + minute - sinceEpoch);
}

/// Whether both are one account to a person, whatever password and region.
bool sameAccount(const std::optional<GlucoseAccountConfiguration>& left,
                 const std::optional<GlucoseAccountConfiguration>& right)
{
    return left.has_value() == right.has_value() &&
           (!left || (left->provider == right->provider && left->username == right->username &&
                      left->patientID == right->patientID));
}

/// The settings that a person is shown, with what they may take of `wanted`.
struct CheckedSettings {
    AppSettings settings{};
    std::string refusal{};  ///< Of a value that was not taken.
};

CheckedSettings checked(const AppSettings& shown, const AppSettings& wanted)
{
    CheckedSettings result{.settings = shown};
    for (const std::string_view key : appSettingKeys()) {
        const auto value = settingText(wanted, key);
        if (key == "startAtLogin" || value == settingText(shown, key))
            continue;
        if (auto taken = withSetting(result.settings, key, *value))
            result.settings = *std::move(taken);
        else if (wanted.lowGlucoseThreshold >= wanted.highGlucoseThreshold)
            result.refusal = "The low threshold must stay below the high one. Change the other one first.";
        else
            result.refusal = "The settings do not offer this value.";
    }
    return result;
}

/// What the findings depend on, as far as it changes here.
struct LookedAtFacts {
    AppSettings settings{};
    std::optional<Date> snoozedUntil{};
    std::vector<SilentLowWarning> silentLows{};
    std::optional<std::string> alertProblem{};
    std::optional<GlucoseAccountConfiguration> account{};
    bool hasPassword = false;
    std::optional<ErrorInfo> accountProblem{};
    GlucoseHistoryStatus history{};
    std::optional<Date> newestReading{};
    bool operator==(const LookedAtFacts&) const = default;
};

/// Whether there is an account that is polled, or that waits for the person after it was.
bool canReconnect(const SettingsState& state)
{
    const auto& problem = state.accountProblem;
    return state.hasPassword && !(problem && (problem->needsTerms || problem->needsSetup));
}

/// Where a call that broke off must look like one that failed.
ConfigurationProblem brokenSave()
{
    return {.error = {.kind = ConfigurationError::Kind::invalidConfiguration},
            .message = "The change could not be stored."};
}

std::string brokenLoginItem() { return "The list of programs that start at login gives no answer."; }

}  // namespace

struct SettingsModel::Impl : std::enable_shared_from_this<Impl> {
    using Self = std::shared_ptr<Impl>;
    using Observer = std::function<void()>;

    explicit Impl(Services given)
        : services{std::move(given)}, loginStrand{asio::make_strand(services.workers)}
    {
    }

    const Services services;
    const asio::any_io_executor loginStrand;  ///< One call of the login item at a time.
    SettingsState state{};
    bool ended = false;
    std::vector<std::weak_ptr<Observer>> observers{};
    std::vector<std::shared_ptr<void>> observing{};

    struct Edit {
        AppSettings from;
        AppSettings to;
    };
    std::list<Edit> edits{};                  ///< Being stored, in the order of the changes.
    std::optional<bool> wantsStartAtLogin{};  ///< What the login item is to be changed to next.
    bool lookRuns = false;
    bool looksAgain = false;
    std::optional<Date> lookBegan{};
    LookedAtFacts lookedAt{};    ///< As they were then.
    Task<void> lookDelayTask{};  ///< While a look is due.
    Task<void> minuteTask{};

    void begin()
    {
        const auto mirrors = [this] { update([](SettingsState&) {}); };
        observing.push_back(services.configuration.observe([this, mirrors](ConfigurationChange change) {
            mirrors();
            if (change == ConfigurationChange::appSettings)
                readLoginItem();  // Somebody else may have changed it, with its preference.
        }));
        observing.push_back(
            services.statusBarViewModel.observe([mirrors](const StatusBarState&) { mirrors(); }));
        observing.push_back(services.history.observe([mirrors](const GlucoseHistoryStatus&) { mirrors(); }));
        mirrors();
    }

    void end()
    {
        ended = true;
        observing.clear();
        observers.clear();
        minuteTask.cancel();
        lookDelayTask.cancel();
    }

    [[nodiscard]] const AppSettings& stored() const { return services.configuration.settings(); }

    /// Runs work on the state, takes over what the services have to say, and tells who looks at it.
    template <class Work>
    void update(Work work)
    {
        if (ended)
            return;
        const Self kept = shared_from_this();  // An observer may let the model go.
        const SettingsState before = state;
        work(state);
        mirror();
        keepTime();
        keepLooking();
        if (state == before)
            return;
        std::erase_if(observers, [](const auto& observer) { return observer.expired(); });
        const auto present = observers;
        for (const auto& entry : present) {
            if (const auto observer = entry.lock())
                (*observer)();
        }
    }

    void mirror()
    {
        const StatusBarState& shown = services.statusBarViewModel.state();
        state.settings = stored();
        for (const Edit& edit : edits)
            state.settings = withChanges(state.settings, edit.from, edit.to);
        if (state.loginItem)
            state.settings.startAtLogin = state.loginItem->isEnabled;
        state.silentLows = silentLowWarnings(state.settings, shown.alertsSnoozedUntil, services.clock.now(),
                                             TimeZone::current());
        state.alertProblem = shown.alertProblem;
        state.history = services.history.status();
        auto account = services.configuration.account();
        state.hasPassword = account && !account->password.empty();
        if (account)
            account->password = SecretText{};
        if (!sameAccount(account, state.account)) {
            state.accountMessage.clear();
            state.accountFailed = false;
        }
        state.account = std::move(account);
        state.accountProblem = shown.currentError;
    }

    /// Quiet hours begin and end while nothing else happens; of a snooze's end the view model tells.
    void keepTime()
    {
        const bool needed = std::ranges::any_of(state.silentLows, [](const SilentLowWarning& warning) {
            return warning.cause == SilentLowCause::quietHours;
        });
        if (needed && !minuteTask)
            minuteTask = startTask(services.main, lookEachMinute(shared_from_this()));
        else if (!needed)
            std::exchange(minuteTask, {}).cancel();
    }

    static asio::awaitable<void> lookEachMinute(Self self)
    {
        for (;;) {
            co_await self->services.clock.sleepFor(untilNextMinute(self->services.clock.now()));
            self->update([](SettingsState&) {});
        }
    }

    void start(asio::awaitable<void> work) { std::ignore = startTask(services.main, std::move(work)); }

    // --- What there is to see

    static asio::awaitable<void> readAuthorization(Self self)
    {
        const auto authorization = co_await self->services.alertDelivery.authorizationStatus();
        self->update([&](SettingsState& state) { state.authorization = authorization; });
    }

    void readLoginItem()
    {
        if (services.loginItem)
            start(readLoginItem(shared_from_this()));
    }

    static asio::awaitable<void> readLoginItem(Self self)
    {
        auto read = [item = self->services.loginItem] { return item->status(); };
        const LoginItemStatus status = co_await guarded(runOnWorker(self->loginStrand, std::move(read)),
                                                        LoginItemStatus{.problem = brokenLoginItem()});
        self->update([&](SettingsState& state) { state.loginItem = status; });
    }

    [[nodiscard]] LookedAtFacts facts() const
    {
        const StatusBarState& shown = services.statusBarViewModel.state();
        LookedAtFacts facts{.settings = stored(),
                            .snoozedUntil = shown.alertsSnoozedUntil,
                            .silentLows = state.silentLows,
                            .alertProblem = state.alertProblem,
                            .account = state.account,
                            .hasPassword = state.hasPassword,
                            .accountProblem = state.accountProblem,
                            .history = state.history};
        if (!shown.glucoseHistory.empty())
            facts.newestReading = shown.glucoseHistory.back().date;
        return facts;
    }

    /// Sees to it that findings do not grow old once somebody has asked for them.
    void keepLooking()
    {
        if (lookBegan && !looksAgain && !lookDelayTask && facts() != lookedAt)
            lookDelayTask = startTask(services.main, lookWhenDue(shared_from_this()));
        state.isLooking = lookRuns || lookDelayTask;
    }

    static asio::awaitable<void> lookWhenDue(Self self)
    {
        const Seconds sinceLast = self->services.clock.now() - *self->lookBegan;
        const auto left = std::chrono::ceil<std::chrono::milliseconds>(lookPause - sinceLast);
        co_await self->services.clock.sleepFor(
            std::clamp<std::chrono::milliseconds>(left, lookDelay, lookPause));
        self->lookDelayTask = {};
        self->look();
    }

    /// Now, or as soon as the one that is under way has ended.
    void look()
    {
        std::exchange(lookDelayTask, {}).cancel();
        if (!services.look || ended)
            return;
        looksAgain = true;
        if (!std::exchange(lookRuns, true))
            start(look(shared_from_this()));
        update([](SettingsState&) {});
    }

    static asio::awaitable<void> look(Self self)
    {
        while (!self->ended && std::exchange(self->looksAgain, false)) {
            self->lookBegan = self->services.clock.now();
            self->lookedAt = self->facts();
            using Findings = std::optional<std::vector<AlertFinding>>;
            const Findings found = co_await guarded(find(self), Findings{});
            self->update([&](SettingsState& state) {
                if (!found)
                    return;
                state.findings = *found;
                state.lookedAt = self->services.clock.now();
            });
        }
        self->lookRuns = false;
        self->update([](SettingsState&) {});
    }

    static asio::awaitable<std::optional<std::vector<AlertFinding>>> find(Self self)
    {
        co_return co_await self->services.look();
    }

    // --- Preferences

    void change(const AppSettings& wanted)
    {
        const AppSettings from = state.settings;
        CheckedSettings to = checked(from, wanted);
        if (to.refusal.empty() && to.settings == from)
            return;
        if (to.settings != from)
            start(store(shared_from_this(), from, to.settings));
        update([&](SettingsState& shown) {
            shown.saveProblem = to.refusal.empty() ? std::nullopt : std::optional{std::move(to.refusal)};
        });
    }

    using Saved = std::expected<void, ConfigurationProblem>;

    /// Begins at once.
    static asio::awaitable<void> store(const Self& self, const AppSettings& from, const AppSettings& to)
    {
        self->edits.push_back({.from = from, .to = to});
        return finishStoring(self, std::prev(self->edits.end()),
                             self->services.configuration.changeSettings(from, to));
    }

    static asio::awaitable<void> finishStoring(Self self, std::list<Edit>::iterator edit,
                                               asio::awaitable<Saved> saving)
    {
        const Saved saved = co_await guarded(std::move(saving), Saved{std::unexpected{brokenSave()}});
        self->edits.erase(edit);
        self->update([&](SettingsState& state) {
            if (!saved)
                state.saveProblem = saved.error().message;
        });
    }

    void setStartAtLogin(bool starts)
    {
        if (!services.loginItem)
            return;
        wantsStartAtLogin = starts;
        if (state.isChangingLoginItem)
            return;
        update([](SettingsState& shown) {
            shown.isChangingLoginItem = true;
            shown.loginItemProblem.clear();
            shown.saveProblem.reset();
        });
        start(changeLoginItem(shared_from_this()));
    }

    struct LoginItemChange {
        std::expected<void, std::string> result;
        LoginItemStatus status;
    };

    static asio::awaitable<void> changeLoginItem(Self self)
    {
        while (const auto wanted = std::exchange(self->wantsStartAtLogin, std::nullopt)) {
            auto work = [item = self->services.loginItem, starts = *wanted] {
                auto result = item->setEnabled(starts);
                return LoginItemChange{.result = std::move(result), .status = item->status()};
            };
            const LoginItemStatus before = self->state.loginItem.value_or(LoginItemStatus{});
            const LoginItemChange broken{.result = std::unexpected{brokenLoginItem()}, .status = before};
            const LoginItemChange changed =
                co_await guarded(runOnWorker(self->loginStrand, std::move(work)), broken);
            self->update([&](SettingsState& state) {
                state.loginItem = changed.status;
                state.loginItemProblem = changed.result ? "" : changed.result.error();
            });
            AppSettings to = self->stored();
            to.startAtLogin = changed.status.isEnabled;
            if (to != self->stored())
                co_await store(self, self->stored(), to);
        }
        self->update([](SettingsState& state) { state.isChangingLoginItem = false; });
    }

    // --- Alerts

    void sendTestAlert()
    {
        if (state.isSendingTestAlert)
            return;
        update([](SettingsState& shown) {
            shown.isSendingTestAlert = true;
            shown.testAlertMessage.clear();
        });
        start(sendTestAlert(shared_from_this()));
    }

    static asio::awaitable<void> sendTestAlert(Self self)
    {
        using Result = UserNotificationGlucoseAlertDelivery::TestResult;
        const Result broken{.sent = false, .message = "Test alert could not be sent."};
        const Result result = co_await guarded(self->services.alertDelivery.sendTestAlert(), broken);
        self->update([&](SettingsState& state) {
            state.isSendingTestAlert = false;
            state.testAlertMessage = result.message;
        });
        if (self->ended)
            co_return;
        // The person may have been asked for permission; and the sound may have failed.
        self->start(readAuthorization(self));
        self->look();
    }

    // --- Saved history

    /// Begins a change unless another one is under way. `begin` makes it, `message` is for when it went well.
    template <class Begin>
    void changeHistory(const Begin& begin, std::string message)
    {
        if (state.isChangingHistory)
            return;
        update([](SettingsState& shown) {
            shown.isChangingHistory = true;
            shown.historyMessage.clear();
            shown.historyFailed = false;
        });
        start(changeHistory(shared_from_this(), begin(services.history), std::move(message)));
    }

    static asio::awaitable<HistoryChanged> whenChanged(asio::awaitable<HistoryChanged> change)
    {
        const HistoryChanged broken = std::unexpected{GlucoseHistoryError::storageFailure};
        co_return co_await guarded(std::move(change), broken);
    }

    static asio::awaitable<void> changeHistory(Self self, asio::awaitable<HistoryChanged> change,
                                               std::string message)
    {
        const HistoryChanged changed = co_await whenChanged(std::move(change));
        self->update([&](SettingsState& state) {
            state.isChangingHistory = false;
            state.historyFailed = !changed;
            state.historyMessage = changed ? message : std::string{description(changed.error())};
        });
    }

    // --- The account

    void signOut(bool deletesHistory)
    {
        const auto& account = services.configuration.account();
        if (state.isChangingAccount || !account)
            return;
        update([](SettingsState& shown) {
            shown.isChangingAccount = true;
            shown.accountMessage.clear();
            shown.accountFailed = false;
        });
        // Without a person that is followed there is no history either.
        std::optional<asio::awaitable<HistoryChanged>> deletion;
        if (deletesHistory && HistoryScopeID::of(*account))
            deletion = services.history.deleteHistory(false);
        start(signOut(shared_from_this(), *account, std::move(deletion)));
    }

    static asio::awaitable<void> signOut(Self self, GlucoseAccountConfiguration account,
                                         std::optional<asio::awaitable<HistoryChanged>> deletion)
    {
        const auto leave = [self](std::string message, bool failed = true) {
            self->update([&](SettingsState& state) {
                state.isChangingAccount = false;
                state.accountMessage = std::move(message);
                state.accountFailed = failed;
            });
        };
        const bool deletes = deletion.has_value();
        if (deletes) {
            const HistoryChanged deleted = co_await whenChanged(*std::move(deletion));
            if (!deleted) {
                self->update([&](SettingsState& state) {
                    state.historyFailed = true;
                    state.historyMessage = description(deleted.error());
                });
                leave("You are still signed in, since the saved history could not be deleted.");
                co_return;
            }
        }
        if (!sameAccount(self->services.configuration.account(), account)) {
            leave("Another account was signed in meanwhile. It stays.");
            co_return;
        }
        const Saved saved = co_await guarded(self->services.configuration.saveAccount(std::nullopt),
                                             Saved{std::unexpected{brokenSave()}});
        if (!saved)
            leave("You are still signed in. " + saved.error().message);
        else if (const auto& left = self->services.configuration.problem())
            leave("You are signed out. " + left->message);
        else
            leave(deletes ? "You are signed out. The saved readings are deleted." : "You are signed out.",
                  false);
    }

    void reconnect()
    {
        if (state.isReconnecting || state.isChangingAccount || !canReconnect(state))
            return;
        update([](SettingsState& shown) {
            shown.isReconnecting = true;
            shown.accountMessage.clear();
            shown.accountFailed = false;
        });
        services.coordinator.reconnect();
        start(awaitReconnected(shared_from_this(), services.configuration.account(),
                               services.statusBarViewModel.state().lastUpdateAt));
    }

    static asio::awaitable<void> awaitReconnected(Self self,
                                                  std::optional<GlucoseAccountConfiguration> account,
                                                  std::optional<Date> lastUpdateAt)
    {
        // Joins the refresh that was begun; the reason of a failure is the account's problem.
        co_await self->services.coordinator.refreshNow();
        co_await asio::post(self->services.main, asio::use_awaitable);
        const bool same = sameAccount(self->services.configuration.account(), account);
        self->update([&](SettingsState& state) {
            state.isReconnecting = false;
            if (!same || state.isChangingAccount || !state.accountMessage.empty())
                return;
            const StatusBarState& shown = self->services.statusBarViewModel.state();
            state.accountFailed = shown.lastUpdateAt == lastUpdateAt;
            if (!state.accountFailed)
                state.accountMessage = "The service has answered.";
            else if (shown.currentError)
                state.accountMessage = "It did not work. What is wrong stands above.";
            else
                state.accountMessage = "No answer has come.";
        });
    }
};

SettingsModel::SettingsModel(Services services) : impl_{std::make_shared<Impl>(std::move(services))}
{
    impl_->begin();
}

SettingsModel::~SettingsModel() { impl_->end(); }

const SettingsState& SettingsModel::state() const { return impl_->state; }

std::shared_ptr<void> SettingsModel::observe(std::function<void()> observer)
{
    const auto kept = std::make_shared<Impl::Observer>(std::move(observer));
    impl_->observers.push_back(kept);
    return kept;
}

void SettingsModel::refresh()
{
    impl_->start(Impl::readAuthorization(impl_));
    impl_->readLoginItem();
    impl_->services.history.historyDidChange();
    impl_->look();
}

void SettingsModel::change(AppSettings wanted) { impl_->change(wanted); }

void SettingsModel::setStartAtLogin(bool starts) { impl_->setStartAtLogin(starts); }

void SettingsModel::sendTestAlert() { impl_->sendTestAlert(); }

void SettingsModel::enableHistory(std::int64_t retentionDays)
{
    impl_->changeHistory(
        [=](HistoryCoordinator& history) { return history.enable(retentionDays, currentConsentVersion); },
        retentionDays == 30 ? "Saving is on. Readings are kept for 30 days."
                            : "Saving is on. Readings are kept for 90 days.");
}

void SettingsModel::pauseHistory()
{
    impl_->changeHistory([](HistoryCoordinator& history) { return history.pause(); },
                         "Saving is off. What is saved stays.");
}

void SettingsModel::setHistoryRetention(std::int64_t days)
{
    impl_->changeHistory([=](HistoryCoordinator& history) { return history.setRetention(days); },
                         days == 30 ? "Readings are kept for 30 days." : "Readings are kept for 90 days.");
}

void SettingsModel::deleteHistory(bool everyAccount)
{
    impl_->changeHistory([=](HistoryCoordinator& history) { return history.deleteHistory(everyAccount); },
                         everyAccount ? "All saved history was deleted. Saving is off."
                                      : "The saved history was deleted. Saving is off.");
}

void SettingsModel::reconnect() { impl_->reconnect(); }

void SettingsModel::signOut(bool deletesHistory) { impl_->signOut(deletesHistory); }

}  // namespace tidewell
