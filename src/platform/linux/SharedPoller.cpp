#include "platform/linux/SharedPoller.h"

#include <algorithm>
#include <boost/asio/experimental/channel.hpp>
#include <utility>

#include "platform/linux/BusCaller.h"
#include "platform/linux/BusConnection.h"
#include "platform/linux/SharedPollerObject.h"
#include "platform/linux/SharedPollerSignals.h"
#include "polling/ReadingMerge.h"
#include "support/Log.h"
#include "support/OnExecutor.h"

namespace tidewell {
namespace {

const Log log{"SharedPoller"};

/// From start() until it is decided at the latest who polls. Readings are minutes apart.
constexpr std::chrono::milliseconds decisionLimit = 2s;
/// Who does not answer in this time hangs.
constexpr std::chrono::milliseconds answerLimit = 5s;
/// The bus library's own limit; ours comes first.
constexpr std::chrono::milliseconds callLimit = 6s;
/// How long an owner may be late with what it has announced, before it is asked. A poll takes seconds.
constexpr Seconds owedPatience{15};
/// An owner that has announced nothing is asked this often.
constexpr Seconds longestSilence{900};
/// Spreads the questions, so that one of many followers finds out first.
constexpr Seconds questionSpread{2};
/// Between two looks at an owner that hangs.
constexpr Seconds silentRetry{60};
/// Both read a changed configuration within a second; who has not by then is not going to.
constexpr std::chrono::milliseconds disputeLimit = 10s;
/// Between two tries to reach the bus; doubled each time up to the last.
constexpr std::chrono::milliseconds firstReconnect = 10s;
constexpr std::chrono::milliseconds lastReconnect = 5min;
/// Whoever calls the method Refresh in a loop does not make us ask the service as often.
constexpr Seconds refreshSpacing{5};

// Of the bus's method RequestName.
constexpr uint allowReplacement = 1;
constexpr uint replaceExisting = 2;
constexpr uint doNotQueue = 4;

bool isReply(const std::optional<QDBusMessage>& answer, const char* signature)
{
    return answer && answer->type() == QDBusMessage::ReplyMessage &&
           answer->signature() == QLatin1String(signature);
}

}  // namespace

struct SharedPoller::Impl : std::enable_shared_from_this<Impl> {
    using Self = std::shared_ptr<Impl>;
    using Wake = asio::experimental::channel<void(boost::system::error_code)>;

    Impl(asio::any_io_executor executor, Clock& time, RandomSource& chance, SharedPollerOptions given,
         Handlers called)
        : main{std::move(executor)},
          clock{time},
          random{chance},
          options{std::move(given)},
          profile{QString::fromStdString(options.profile)},
          handlers{std::move(called)},
          decision{std::make_shared<Wake>(main, 1)}
    {
    }

    const asio::any_io_executor main;
    Clock& clock;
    RandomSource& random;
    const SharedPollerOptions options;
    const QString profile;
    const Handlers handlers;
    const std::shared_ptr<Wake> decision;  ///< Of one use.
    bool closed = false;

    // This process.
    QString account{};
    bool canPoll = false;
    std::optional<PollingRole> role{};
    bool alone = false;
    StatusBarState shown{};
    PollingProgress progress{};
    bool publishing = false;
    std::optional<Date> refreshedAt{};  ///< At the wish of others.

    // The bus.
    std::unique_ptr<BusCaller> bus{};
    std::unique_ptr<SharedPollerObject> object{};  ///< Like the next one, goes before the bus.
    std::unique_ptr<SharedPollerSignals> busSignals{};
    bool ownerKnown = false;
    QString owner{};                     ///< Of the name; empty while nobody owns it.
    std::optional<Date> pollingSince{};  ///< As the owner.
    unsigned generation = 0;             ///< Counts owners.
    bool wantsName = false;              ///< Has it, waits for it, or has asked for it.

    // The owner, when it is another process.
    QVariantMap properties{};
    std::vector<GlucoseReading> history{};
    bool synced = false;   ///< Properties and history are what the owner last told.
    bool silent = false;   ///< It did not answer.
    bool refused = false;  ///< It answered with an error.
    bool allWanted = false;
    bool asking = false;  ///< What is wanted will be seen to.
    std::optional<Date> wantedSince{};

    Task<void> deciding{};
    Task<void> connecting{};
    Task<void> syncing{};
    Task<void> watching{};   ///< Waits until the owner should have said something.
    Task<void> disputing{};  ///< Waits for the owner to follow the same account.

    [[nodiscard]] bool ownsName() const
    {
        return bus && !owner.isEmpty() && owner == bus->connection().baseService();
    }

    void close()
    {
        closed = true;
        deciding.cancel();
        connecting.cancel();
        leaveBus();
    }

    void leaveBus()
    {
        forgetOwner();
        busSignals.reset();
        object.reset();
        bus.reset();
        ownerKnown = false;
        owner.clear();
        wantsName = false;
    }

    void forgetOwner()
    {
        ++generation;
        for (Task<void>* task : {&syncing, &watching, &disputing}) {
            task->cancel();
            *task = {};
        }
        properties.clear();
        history.clear();
        synced = silent = refused = allWanted = asking = false;
        wantedSince.reset();
    }

    void setRole(PollingRole next, bool isAlone = false)
    {
        if (closed || (role == next && alone == isAlone))
            return;
        role = next;
        alone = isAlone;
        decision->try_send(boost::system::error_code{});
        log.info(next == PollingRole::follows ? "Another process asks the service; following it"
                                              : "This process asks the service");
        handlers.roleDidChange(next, isAlone);
    }

    static asio::awaitable<void> decide(Self self)
    {
        co_await runUntilDeadline(self->clock, decisionLimit,
                                  self->decision->async_receive(asio::use_awaitable));
        if (!self->role)
            self->setRole(PollingRole::polls);
    }

    // --- The bus ---

    static asio::awaitable<void> connect(Self self)
    {
        for (auto delay = firstReconnect;; delay = std::min(delay * 2, lastReconnect)) {
            const auto wake = std::make_shared<Wake>(self->main, 1);
            const QString address =
                self->options.busAddress.isEmpty() ? sessionBusAddress() : self->options.busAddress;
            const auto token = connectToBus(address, [self, wake](std::optional<QDBusConnection> connection) {
                if (connection && !self->closed)
                    self->useBus(*connection);
                wake->try_send(boost::system::error_code{});
            });
            co_await wake->async_receive(asio::use_awaitable);
            if (self->bus)
                co_return;
            if (!self->role)
                self->setRole(PollingRole::polls);
            if (self->options.kind == SharingKind::asker)
                co_return;
            co_await self->clock.sleepFor(delay);
        }
    }

    void useBus(const QDBusConnection& connection)
    {
        bus = std::make_unique<BusCaller>(connection);
        if (options.kind != SharingKind::asker) {
            object = std::make_unique<SharedPollerObject>(SharedPollerObject::Handlers{
                .refresh = [this] { refresh(); },
                .snooze = [this](std::chrono::minutes length) { handlers.snooze(length); },
                .resume = [this] { handlers.resume(); }});
            if (!bus->connection().registerVirtualObject(sharedPollerPath, object.get()))
                log.error("The state cannot be told on the session bus");
            flush();
        }
        busSignals = std::make_unique<SharedPollerSignals>(
            bus->connection(),
            SharedPollerSignals::Handlers{
                .ownerChanged = [this](const QString& now) { setOwner(now); },
                .propertiesChanged = [this](const QString& sender,
                                            const QVariantMap& changed) { heardChange(sender, changed); },
                .disconnected =
                    [this] {
                        asio::post(main, [weak = weak_from_this()] {
                            if (const auto self = weak.lock(); self && !self->closed)
                                self->busLost();
                        });
                    }});
        asio::co_spawn(main, findOwner(shared_from_this(), generation), asio::detached);
    }

    void busLost()
    {
        leaveBus();
        setRole(PollingRole::polls);
        if (options.kind != SharingKind::asker && !connecting.running())
            connecting = startTask(main, connect(shared_from_this()));
    }

    /// Whether what was begun under that owner, and the bus, still counts.
    [[nodiscard]] bool goesOn(unsigned asked) const { return !closed && bus && generation == asked; }

    static asio::awaitable<void> findOwner(Self self, unsigned asked)
    {
        if (!self->goesOn(asked))
            co_return;
        const QDBusMessage answer = co_await self->bus->call(
            busDaemonCall(QStringLiteral("GetNameOwner"), {sharedPollerName}), callLimit);
        if (!self->goesOn(asked) || self->ownerKnown)
            co_return;
        self->setOwner(isReply(answer, "s") ? answer.arguments().at(0).toString() : QString{});
    }

    // --- The name ---

    void setOwner(const QString& now)
    {
        if (closed || (ownerKnown && owner == now))
            return;
        const bool owned = ownsName();
        forgetOwner();
        ownerKnown = true;
        owner = now;
        pollingSince = ownsName() ? std::optional{clock.now()} : std::nullopt;
        if (ownsName()) {
            setRole(PollingRole::polls);
            flush();  // Also to those who asked before we knew.
        } else if (owner.isEmpty()) {
            wantsName = false;
            if (options.kind == SharingKind::asker || !canPoll)
                setRole(PollingRole::polls);
            else
                requestName(false);
        } else {
            // It was given the name because it polls, or is going to.
            if (owned && options.kind == SharingKind::watcher)
                setRole(PollingRole::follows);
            wantAll();
        }
    }

    void requestName(bool replace)
    {
        if (!bus || !canPoll || options.kind == SharingKind::asker)
            return;
        wantsName = true;
        asio::co_spawn(main, takeName(shared_from_this(), generation, replace), asio::detached);
    }

    /// Whether it was given is told by a signal.
    static asio::awaitable<void> takeName(Self self, unsigned asked, bool replace)
    {
        if (!self->goesOn(asked))
            co_return;
        const uint flags = self->options.kind == SharingKind::application
                               ? replaceExisting | doNotQueue
                               : allowReplacement | (replace ? replaceExisting : 0);
        const auto answer = co_await within(
            self->clock, answerLimit,
            self->bus->call(busDaemonCall(QStringLiteral("RequestName"), {sharedPollerName, flags}),
                            callLimit));
        if (!self->goesOn(asked) || self->ownsName())
            co_return;
        if (!isReply(answer, "u"))
            self->wantsName = false;
        if (isReply(answer, "u") && self->owner.isEmpty()) {
            // Somebody owns it now, and nobody has told us.
            self->ownerKnown = false;
            asio::co_spawn(self->main, findOwner(self, asked), asio::detached);
        }
        if (self->options.kind == SharingKind::application)
            self->setRole(PollingRole::polls);
        else if (replace || (self->owner.isEmpty() && !isReply(answer, "u")))
            // Its owner does not answer and does not give it away, or the bus does not answer.
            self->setRole(PollingRole::polls, true);
    }

    void releaseName()
    {
        if (!std::exchange(wantsName, false) || !bus)
            return;
        bus->connection().send(busDaemonCall(QStringLiteral("ReleaseName"), {sharedPollerName}));
    }

    // --- Following ---

    void wantAll()
    {
        allWanted = true;
        sync();
    }

    void sync()
    {
        if (!std::exchange(asking, true))
            syncing = startTask(main, sync(shared_from_this(), generation));
    }

    [[nodiscard]] QDBusMessage ownerCall(const QString& interface, const QString& method,
                                         const QVariantList& arguments) const
    {
        QDBusMessage call = QDBusMessage::createMethodCall(owner, sharedPollerPath, interface, method);
        call.setAutoStartService(false);
        call.setArguments(arguments);
        return call;
    }

    /// Asks the owner for what is wanted, until nothing is.
    static asio::awaitable<void> sync(Self self, unsigned asked)
    {
        while (self->allWanted || self->wantedSince) {
            if (std::exchange(self->allWanted, false)) {
                const QDBusMessage question =
                    self->ownerCall(QStringLiteral("org.freedesktop.DBus.Properties"),
                                    QStringLiteral("GetAll"), {sharedPollerInterface});
                const auto answer =
                    co_await within(self->clock, answerLimit, self->bus->call(question, callLimit));
                if (self->generation != asked)
                    co_return;
                if (!isReply(answer, "a{sv}")) {
                    self->hadNoAnswer(answer);
                    continue;  // It may have spoken meanwhile.
                }
                QVariantMap told = knownProperties(qdbus_cast<QVariantMap>(answer->arguments().at(0)));
                const bool nothingNew = self->synced && self->revision() == revisionIn(told);
                self->properties = std::move(told);
                if (!self->isOurs())
                    continue;
                if (nothingNew) {
                    self->tell();
                    continue;
                }
                self->synced = false;
                self->wantedSince = Date{};
            }
            const Date since = *std::exchange(self->wantedSince, std::nullopt);
            const QDBusMessage question =
                self->ownerCall(sharedPollerInterface, QStringLiteral("Readings"),
                                {static_cast<qlonglong>(unixSeconds(since) * 1000)});
            const auto answer =
                co_await within(self->clock, answerLimit, self->bus->call(question, callLimit));
            if (self->generation != asked)
                co_return;
            auto readings = answer ? readingsIn(*answer, self->clock.now()) : std::nullopt;
            if (!readings) {
                self->hadNoAnswer(answer);
                continue;
            }
            self->takeReadings(since, std::move(*readings));
            self->synced = true;
            if (self->allWanted || self->wantedSince)
                continue;
            if (since > Date{} && self->history.size() != self->count())
                self->wantedSince = Date{};
            else
                self->tell();
        }
        self->asking = false;
    }

    [[nodiscard]] static uint revisionIn(const QVariantMap& map)
    {
        return map.value(QStringLiteral("Revision")).toUInt();
    }
    [[nodiscard]] uint revision() const { return revisionIn(properties); }
    [[nodiscard]] std::size_t count() const
    {
        return properties.value(QStringLiteral("ReadingCount")).toUInt();
    }

    void takeReadings(Date since, std::vector<GlucoseReading> readings)
    {
        std::erase_if(history, [since](const GlucoseReading& held) { return held.date >= since; });
        history = mergedReadings(std::move(history), std::move(readings));
    }

    /// Whether what the owner tells is about the same account, found in the same place.
    bool isOurs()
    {
        const bool foreign = properties.value(QStringLiteral("Profile")).toString() != profile;
        if (!foreign && !account.isEmpty() &&
            properties.value(QStringLiteral("Account")).toString() == account) {
            disputing.cancel();
            return true;
        }
        synced = silent = false;
        wantedSince.reset();
        if (options.kind == SharingKind::application) {
            requestName(true);
        } else if (options.kind == SharingKind::asker) {
            setRole(PollingRole::polls);
        } else if (foreign) {
            releaseName();
            setRole(PollingRole::polls);
        } else {
            if (!wantsName)
                requestName(false);
            if (role != PollingRole::polls && !disputing.running())
                disputing = startTask(main, dispute(shared_from_this(), generation));
        }
        return false;
    }

    static asio::awaitable<void> dispute(Self self, unsigned asked)
    {
        co_await self->clock.sleepFor(disputeLimit);
        if (self->generation == asked)
            self->setRole(PollingRole::polls);
    }

    /// Everything that the owner has told is known here.
    void tell()
    {
        expectWord();
        if (options.kind == SharingKind::application) {
            if (!role)
                pass(followedState(properties, clock.now()));
            requestName(true);
            return;
        }
        if (options.kind == SharingKind::asker && role == PollingRole::polls)
            return;
        if (!wantsName)
            requestName(false);
        setRole(PollingRole::follows);
        pass(followedState(properties, clock.now()));
    }

    /// In a later turn: what the end of our own polling does to the screen comes first.
    void pass(FollowedState state)
    {
        state.glucoseHistory = history;
        asio::post(main,
                   [weak = weak_from_this(), asked = generation, whose = account, state = std::move(state)] {
                       const auto self = weak.lock();
                       if (self && !self->closed && self->generation == asked && self->account == whose)
                           self->handlers.heard(state);
                   });
    }

    void heardChange(const QString& sender, const QVariantMap& told)
    {
        if (closed || sender != owner || ownsName())
            return;
        const QVariantMap changed = knownProperties(told);
        if (!synced || changed.contains(QStringLiteral("Account")) ||
            changed.contains(QStringLiteral("Profile"))) {
            wantAll();
            return;
        }
        const uint ahead = revisionIn(changed) - revision();
        if (ahead != 1) {
            // Told before the answer that we know it from; or we have missed something.
            if (ahead != 0 && ahead < (1U << 31U))
                wantAll();
            return;
        }
        properties.insert(changed);
        if (changed.contains(QStringLiteral("ReadingsRevision"))) {
            const qlonglong moment = properties.value(QStringLiteral("ReadingsChangedSince")).toLongLong();
            const Date since =
                std::clamp(dateFromUnix(static_cast<double>(moment) / 1000), Date{}, clock.now());
            wantedSince = std::min(since, wantedSince.value_or(since));
            sync();
        } else if (!asking) {
            tell();
        }
    }

    /// The owner has spoken; when is it going to again?
    void expectWord()
    {
        silent = refused = false;
        const Date now = clock.now();
        const auto next = followedState(properties, now).progress.nextPollDate;
        const Seconds owed = next ? *next - now + owedPatience : longestSilence;
        watch(std::clamp(owed, owedPatience, longestSilence));
    }

    void watch(Seconds wait)
    {
        watching.cancel();
        if (options.kind != SharingKind::watcher)
            return;
        const Seconds spread = questionSpread * (random.unit() + 1) / 2;
        watching = startTask(main, watch(shared_from_this(), generation,
                                         std::chrono::ceil<std::chrono::milliseconds>(wait + spread)));
    }

    static asio::awaitable<void> watch(Self self, unsigned asked, std::chrono::milliseconds wait)
    {
        co_await self->clock.sleepFor(wait);
        if (self->generation == asked)
            self->wantAll();
    }

    void hadNoAnswer(const std::optional<QDBusMessage>& answer)
    {
        synced = false;
        wantedSince.reset();
        // Who is about to leave answers with an error, and then a signal says who has the name.
        const bool leaving = answer && answer->type() == QDBusMessage::ErrorMessage && !refused;
        if (leaving && options.kind == SharingKind::watcher) {
            refused = true;
            watch(owedPatience);
        } else {
            watch(silentRetry);
            ownerIsSilent();
        }
    }

    void ownerIsSilent()
    {
        // Who cannot poll has a problem of its own to show.
        if (options.kind == SharingKind::asker || !canPoll) {
            setRole(PollingRole::polls);
            return;
        }
        if (!std::exchange(silent, true))
            log.warning("The process that asks the service does not answer");
        requestName(true);
    }

    // --- Owning ---

    void flushLater()
    {
        if (std::exchange(publishing, true))
            return;
        asio::post(main, [weak = weak_from_this()] {
            if (const auto self = weak.lock(); self && !self->closed) {
                self->publishing = false;
                self->flush();
            }
        });
    }

    void flush()
    {
        if (!object)
            return;
        const QVariantMap changed = object->update(profile, account, pollingSince, shown, progress);
        if (changed.isEmpty() || !ownsName())
            return;
        QDBusMessage signal =
            QDBusMessage::createSignal(sharedPollerPath, QStringLiteral("org.freedesktop.DBus.Properties"),
                                       QStringLiteral("PropertiesChanged"));
        signal.setArguments({sharedPollerInterface, changed, QStringList{}});
        bus->connection().send(signal);
    }

    void refresh()
    {
        const Date now = clock.now();
        if (role != PollingRole::polls ||
            (refreshedAt && now >= *refreshedAt && now - *refreshedAt < refreshSpacing))
            return;
        refreshedAt = now;
        handlers.refresh();
    }

    void setAccount(std::string next, bool able)
    {
        QString name = QString::fromStdString(next);
        if (name == account && able == canPoll)
            return;
        account = std::move(name);
        canPoll = able;
        flushLater();
        if (!bus || !ownerKnown)
            return;
        if (!canPoll)
            releaseName();
        if (owner.isEmpty())
            requestName(false);
        else if (!ownsName()) {
            synced = false;
            wantAll();
        }
    }
};

SharedPoller::SharedPoller(asio::any_io_executor main, Clock& clock, RandomSource& random,
                           SharedPollerOptions options, Handlers handlers)
    : impl_{std::make_shared<Impl>(std::move(main), clock, random, std::move(options), std::move(handlers))}
{
}

SharedPoller::~SharedPoller() { impl_->close(); }

void SharedPoller::start(std::string account, bool canPoll)
{
    impl_->account = QString::fromStdString(account);
    impl_->canPoll = canPoll;
    impl_->deciding = startTask(impl_->main, Impl::decide(impl_));
    impl_->connecting = startTask(impl_->main, Impl::connect(impl_));
}

void SharedPoller::setAccount(std::string account, bool canPoll)
{
    impl_->setAccount(std::move(account), canPoll);
}

void SharedPoller::publish(const StatusBarState& state, const PollingProgress& progress)
{
    impl_->shown = state;
    impl_->progress = progress;
    impl_->flushLater();
}

asio::awaitable<void> SharedPoller::decided() { return impl_->deciding.wait(); }

bool SharedPoller::follows() const { return impl_->role == PollingRole::follows; }

void SharedPoller::stopFollowing()
{
    impl_->forgetOwner();
    impl_->setRole(PollingRole::polls);
}

}  // namespace tidewell
