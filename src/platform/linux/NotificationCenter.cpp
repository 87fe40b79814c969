#include "platform/linux/NotificationCenter.h"

#include <QDBusPendingCall>
#include <algorithm>
#include <boost/asio/experimental/channel.hpp>
#include <boost/system/system_error.hpp>
#include <deque>
#include <utility>

#include "platform/linux/BusCaller.h"
#include "platform/linux/BusConnection.h"
#include "platform/linux/NotificationSignals.h"
#include "support/Log.h"
#include "support/OnExecutor.h"
#include "ui/DisplayText.h"

namespace tidewell {
namespace {

using namespace std::chrono_literals;

const Log log{"NotificationCenter"};

/// Nobody waits longer for the desktop. On the program's own clock, whatever the bus library does.
constexpr std::chrono::milliseconds deadline = 5s;
/// For questions whose answer nobody wants later.
constexpr std::chrono::milliseconds questionLimit = 6s;
/// A posted notification that the server only confirms when it works again is taken back until then.
constexpr std::chrono::milliseconds confirmationLimit = 10min;
/// Between two looks at a server that hangs, or for a bus that is not there; doubled each time up to the
/// last.
constexpr std::chrono::milliseconds firstRetry = 10s;
constexpr std::chrono::milliseconds lastRetry = 5min;
/// So many changes of the state are told at once, then one in each such time: a server that crashes in a
/// loop changes it several times a second, and each change is a line in the log and a look at the desktop.
constexpr int announcementsAtOnce = 5;
constexpr std::chrono::milliseconds announcementInterval = 1min;
/// Of so many notifications the person's choice is still known.
constexpr std::size_t rememberedNotifications = 32;

const QString openAction = QStringLiteral("default");
const QString snoozeAction = QStringLiteral("snooze");

/// What a server announced.
struct Capabilities {
    QString owner{};
    bool body = false;
    bool markup = false;
    bool actions = false;
    bool sound = false;
};

std::optional<Capabilities> capabilitiesOf(const QDBusMessage& answer)
{
    if (answer.type() != QDBusMessage::ReplyMessage || answer.signature() != QLatin1String("as"))
        return std::nullopt;
    const QStringList words = answer.arguments()[0].toStringList();
    const auto announced = [&](const char* word) { return words.contains(QLatin1String(word)); };
    return Capabilities{.owner = answer.service(),
                        .body = announced("body"),
                        .markup = announced("body-markup"),
                        .actions = announced("actions"),
                        .sound = announced("sound")};
}

/// Text as it is shown and may stand in a message: a bus closes the connection of who sends it control
/// characters.
QString cleanText(const std::string& text)
{
    QString clean = displayText(text);
    for (QChar& character : clean)
        if (character < u' ' && character != u'\n')
            character = u' ';
    return clean;
}

QDBusMessage serverCall(const QString& server, const QString& method)
{
    return QDBusMessage::createMethodCall(server, notificationPath, notificationService, method);
}

QDBusMessage notifyCall(const UserNotification& notification, const Capabilities& server)
{
    const bool urgent = notification.tone == NotificationTone::urgent;
    QString summary = cleanText(notification.title);
    QString body = cleanText(notification.body);
    if (!server.body && !body.isEmpty())
        summary += QLatin1String(": ") + std::exchange(body, {});
    if (server.markup)
        body = body.toHtmlEscaped();

    QStringList actions;
    if (server.actions) {
        actions << openAction << displayText("Show");
        if (notification.offersSnooze)
            actions << snoozeAction << displayText("Snooze 30 min");
    }
    QVariantMap hints{{QStringLiteral("urgency"), QVariant::fromValue<uchar>(urgent ? 2 : 1)},
                      {QStringLiteral("category"), QStringLiteral("device")},
                      {QStringLiteral("desktop-entry"), QStringLiteral("org.tidewell.Tidewell")}};
    if (server.sound) {
        const std::string_view name = alertSoundName(notification.tone);
        hints.insert(QStringLiteral("sound-name"),
                     QString::fromLatin1(name.data(), static_cast<qsizetype>(name.size())));
    } else {
        hints.insert(QStringLiteral("suppress-sound"), true);
    }
    // To this very server, whose abilities are known.
    QDBusMessage call = serverCall(server.owner, QStringLiteral("Notify"));
    call.setAutoStartService(false);
    call.setArguments({QStringLiteral("Tidewell"), 0U,
                       urgent ? QStringLiteral("dialog-warning") : QStringLiteral("dialog-information"),
                       summary, body, actions, hints, urgent ? 0 : -1});
    return call;
}

/// The number that the server gave to a notification; 0 when the answer holds none.
unsigned numberIn(const QDBusMessage& answer)
{
    if (answer.type() != QDBusMessage::ReplyMessage || answer.signature() != QLatin1String("u"))
        return 0;
    return answer.arguments()[0].toUInt();
}

/// The server had gone before the call reached it, so it cannot have shown anything.
bool reachedNobody(const QDBusMessage& answer)
{
    return answer.type() == QDBusMessage::ErrorMessage &&
           (answer.errorName() == QLatin1String("org.freedesktop.DBus.Error.ServiceUnknown") ||
            answer.errorName() == QLatin1String("org.freedesktop.DBus.Error.NameHasNoOwner"));
}

using PostResult = std::expected<void, NotificationError>;

}  // namespace

struct NotificationCenter::Impl : std::enable_shared_from_this<Impl> {
    Impl(asio::any_io_executor executor, Clock& time, AlertSoundPlaying& player, QString address)
        : main{std::move(executor)}, clock{time}, sound{player}, busAddress{std::move(address)}
    {
    }

    const asio::any_io_executor main;
    Clock& clock;
    AlertSoundPlaying& sound;
    const QString busAddress;

    // The rest on the main thread only.
    bool closed = false;
    std::function<void(NotificationAction)> actionHandler{};
    std::function<void(NotificationAuthorizationState)> authorizationHandler{};
    std::function<void()> lastAlertHandler{};
    std::optional<NotificationAuthorizationState> authorization{};
    std::optional<NotificationAuthorizationState> announced{};  ///< What was told of it last.
    Date announcementsPaid{};  ///< Each announcement moves this on by an interval, up to so many ahead.
    bool lastAlertNotShown = false;

    std::unique_ptr<BusCaller> bus{};
    std::unique_ptr<NotificationSignals> busSignals{};  ///< Goes before the bus.
    bool ownerKnown = false;
    QString owner{};                             ///< Of the server's name; empty while there is none.
    unsigned generation = 0;                     ///< Counts owners.
    std::optional<Capabilities> capabilities{};  ///< Of the owner, when it answers.
    std::deque<unsigned> posted{};               ///< Notifications of the owner's whose action may come.

    Task<void> connecting{};
    Task<void> asking{};
    Task<void> recovering{};
    Task<void> announcing{};  ///< Waits until the next one may be told.

    void close()
    {
        closed = true;
        connecting.cancel();
        asking.cancel();
        recovering.cancel();
        announcing.cancel();
        leaveBus();
    }

    void leaveBus()
    {
        busSignals.reset();
        bus.reset();
        ownerKnown = false;
        owner.clear();
        forgetServer();
    }

    void forgetServer()
    {
        ++generation;
        capabilities.reset();
        posted.clear();
    }

    // --- The bus ---

    static asio::awaitable<void> connect(std::shared_ptr<Impl> self)
    {
        using Wake = asio::experimental::channel<void(boost::system::error_code)>;
        const auto wake = std::make_shared<Wake>(self->main, 1);
        const QString address = self->busAddress.isEmpty() ? sessionBusAddress() : self->busAddress;
        const auto token = connectToBus(address, [self, wake](std::optional<QDBusConnection> connection) {
            if (connection && !self->closed)
                self->useBus(*connection);
            wake->try_send(boost::system::error_code{});
        });
        co_await wake->async_receive(asio::use_awaitable);
        if (!self->bus)
            self->setAuthorization(NotificationAuthorizationState::denied);
    }

    Task<void> connected()
    {
        if (!bus && !connecting.running())
            connecting = startTask(main, connect(shared_from_this()));
        return connecting;
    }

    void useBus(const QDBusConnection& connection)
    {
        bus = std::make_unique<BusCaller>(connection);
        busSignals = std::make_unique<NotificationSignals>(
            bus->connection(),
            NotificationSignals::Handlers{
                .ownerChanged = [this](const QString& now) { setOwner(now); },
                .actionInvoked = [this](const QString& sender, unsigned id,
                                        const QString& action) { chosen(sender, id, action); },
                .disconnected =
                    [this] {
                        asio::post(main, [weak = weak_from_this()] {
                            if (const auto self = weak.lock(); self && !self->closed)
                                self->busLost();
                        });
                    }});
        asio::co_spawn(main, findOwner(shared_from_this()), asio::detached);
    }

    void busLost()
    {
        leaveBus();
        setAuthorization(NotificationAuthorizationState::denied);
    }

    static asio::awaitable<void> findOwner(std::shared_ptr<Impl> self)
    {
        if (!self->bus)
            co_return;
        const QDBusMessage answer = co_await self->bus->call(
            busDaemonCall(QStringLiteral("GetNameOwner"), {notificationService}), questionLimit);
        if (self->bus && !self->ownerKnown)
            self->setOwner(answer.type() == QDBusMessage::ReplyMessage
                               ? answer.arguments().value(0).toString()
                               : QString{});
    }

    void setOwner(const QString& now)
    {
        if (ownerKnown && owner == now)
            return;
        ownerKnown = true;
        owner = now;
        forgetServer();
        if (owner.isEmpty())
            asio::co_spawn(main, presume(shared_from_this()), asio::detached);
        else
            (void)asked();
    }

    /// Nothing runs. What the bus can start when it is needed is not started for this: at the start of a
    /// session it would take the place of the desktop's own server.
    static asio::awaitable<void> presume(std::shared_ptr<Impl> self)
    {
        const unsigned before = self->generation;
        if (!self->bus)
            co_return;
        const QDBusMessage answer =
            co_await self->bus->call(busDaemonCall(QStringLiteral("ListActivatableNames")), questionLimit);
        if (self->generation != before || self->asking.running())
            co_return;
        const bool startable = answer.type() == QDBusMessage::ReplyMessage &&
                               answer.arguments().value(0).toStringList().contains(notificationService);
        self->setAuthorization(startable ? NotificationAuthorizationState::authorized
                                         : NotificationAuthorizationState::denied);
    }

    // --- The server ---

    void setAuthorization(NotificationAuthorizationState state)
    {
        if (closed)
            return;
        if (needsRecovery() && !recovering.running())
            recovering = startTask(main, recover(shared_from_this()));
        authorization = state;
        announce();
    }

    void announce()
    {
        if (announced == authorization || announcing.running())
            return;
        const Date now = clock.now();
        // Also after the wall clock has been set.
        announcementsPaid =
            std::clamp(announcementsPaid, now, now + announcementsAtOnce * Seconds{announcementInterval});
        const Seconds wait = announcementsPaid - now - (announcementsAtOnce - 1) * announcementInterval;
        if (wait > Seconds{0}) {
            announcing = startTask(
                main, announceLater(shared_from_this(), std::chrono::ceil<std::chrono::milliseconds>(wait)));
            return;
        }
        announcementsPaid += announcementInterval;
        announced = authorization;
        if (authorization == NotificationAuthorizationState::authorized)
            log.info("Notifications can be shown");
        else
            log.warning("No notification server answers, so alerts cannot be shown");
        asio::post(main, [weak = weak_from_this(), state = *authorization] {
            if (const auto self = weak.lock(); self && !self->closed && self->authorizationHandler)
                self->authorizationHandler(state);
        });
    }

    static asio::awaitable<void> announceLater(std::shared_ptr<Impl> self, std::chrono::milliseconds wait)
    {
        co_await self->clock.sleepFor(wait);
        self->announcing = {};
        self->announce();
    }

    /// Nobody will tell when this ends.
    bool needsRecovery() const { return !bus || (!owner.isEmpty() && !capabilities); }

    static asio::awaitable<void> recover(std::shared_ptr<Impl> self)
    {
        for (auto delay = firstRetry; self->needsRecovery(); delay = std::min(delay * 2, lastRetry)) {
            co_await self->clock.sleepFor(delay);
            if (!self->bus)
                co_await self->connected().wait();
            else if (self->needsRecovery())
                co_await self->asked().wait();
        }
    }

    /// The question that is under way, or a new one.
    Task<void> asked()
    {
        if (!asking.running())
            asking = startTask(main, ask(shared_from_this()));
        return asking;
    }

    static asio::awaitable<void> ask(std::shared_ptr<Impl> self)
    {
        const auto answered = co_await within(self->clock, deadline, askServer(self));
        self->setAuthorization(answered.value_or(false) ? NotificationAuthorizationState::authorized
                                                        : NotificationAuthorizationState::denied);
    }

    /// Learns the capabilities; has the bus start a server when none runs.
    static asio::awaitable<bool> askServer(std::shared_ptr<Impl> self)
    {
        if (!self->bus)
            co_await self->connected().wait();
        while (self->bus) {
            const unsigned before = self->generation;
            const QDBusMessage answer = co_await self->bus->call(
                serverCall(notificationService, QStringLiteral("GetCapabilities")), questionLimit);
            const bool current = self->generation == before;
            if (auto announced = capabilitiesOf(answer); announced && self->bus) {
                if (current || announced->owner == self->owner) {
                    self->capabilities = std::move(announced);
                    co_return true;
                }
            } else if (current) {
                co_return false;
            }
        }
        co_return false;
    }

    static asio::awaitable<bool> reach(std::shared_ptr<Impl> self)
    {
        if (!self->capabilities && !self->closed)
            co_await self->asked().wait();
        co_return self->capabilities.has_value();
    }

    static asio::awaitable<NotificationAuthorizationState> status(std::shared_ptr<Impl> self)
    {
        const auto answers = co_await within(self->clock, deadline, reach(self));
        co_return answers.value_or(false) ? NotificationAuthorizationState::authorized
                                          : NotificationAuthorizationState::denied;
    }

    // --- Posting ---

    static asio::awaitable<PostResult> post(std::shared_ptr<Impl> self, UserNotification notification)
    {
        const auto result = co_await within(self->clock, deadline, tryPost(self, std::move(notification)));
        if (result && *result)
            co_return *result;
        if (!result) {
            if (self->capabilities)
                self->setLastAlertNotShown(true);
            // What it announced is no longer worth anything.
            self->capabilities.reset();
            self->setAuthorization(NotificationAuthorizationState::denied);
        }
        co_return result.value_or(
            std::unexpected(NotificationError{"The notification server did not confirm in time"}));
    }

    static asio::awaitable<PostResult> tryPost(std::shared_ptr<Impl> self, UserNotification notification)
    {
        QDBusMessage answer;
        // A server that ends when it has nothing to show may do so right now.
        for (int attempt = 0; attempt < 2; ++attempt) {
            if (!co_await reach(self) || !self->bus)
                co_return std::unexpected(NotificationError{"No notification server answers"});
            const Capabilities server = *self->capabilities;
            answer = co_await self->bus->call(notifyCall(notification, server), confirmationLimit,
                                              // Its caller was told that it was not shown, and will post
                                              // anew, with newer values.
                                              [weak = self->weak_from_this(), server](const auto& late) {
                                                  if (const auto there = weak.lock())
                                                      there->closeNotification(server.owner, numberIn(late));
                                              });
            if (const unsigned number = numberIn(answer)) {
                if (self->owner == server.owner)
                    self->remember(number);
                self->setLastAlertNotShown(false);
                if (!server.sound)
                    self->sound.play(notification.tone);
                co_return PostResult{};
            }
            if (self->capabilities && self->capabilities->owner == server.owner)
                self->capabilities.reset();
            if (!reachedNobody(answer))
                break;
        }
        self->setLastAlertNotShown(true);
        co_return std::unexpected(
            NotificationError{answer.type() == QDBusMessage::ErrorMessage
                                  ? "The notification server refused: " + answer.errorName().toStdString()
                                  : "The notification server's answer could not be understood"});
    }

    void setLastAlertNotShown(bool notShown)
    {
        if (std::exchange(lastAlertNotShown, notShown) == notShown)
            return;
        asio::post(main, [weak = weak_from_this()] {
            if (const auto self = weak.lock(); self && !self->closed && self->lastAlertHandler)
                self->lastAlertHandler();
        });
    }

    /// One that is forgotten is closed as well: its button would do nothing any more.
    void remember(unsigned number)
    {
        posted.push_back(number);
        if (posted.size() <= rememberedNotifications)
            return;
        closeNotification(owner, posted.front());
        posted.pop_front();
    }

    void closeNotification(const QString& server, unsigned number)
    {
        if (number == 0 || !bus)
            return;
        QDBusMessage call = serverCall(server, QStringLiteral("CloseNotification"));
        call.setAutoStartService(false);
        call << number;
        (void)bus->connection().asyncCall(call, static_cast<int>(questionLimit.count()));
    }

    void chosen(const QString& sender, unsigned id, const QString& action)
    {
        // Any program on the bus can send such a signal.
        if (sender != owner)
            return;
        const auto known = std::ranges::find(posted, id);
        if (known == posted.end() || (action != openAction && action != snoozeAction))
            return;
        posted.erase(known);
        asio::post(main, [weak = weak_from_this(), action] {
            if (const auto self = weak.lock(); self && !self->closed && self->actionHandler)
                self->actionHandler(action == snoozeAction ? NotificationAction::snooze
                                                           : NotificationAction::open);
        });
    }
};

NotificationCenter::NotificationCenter(asio::any_io_executor main, Clock& clock, AlertSoundPlaying& sound,
                                       const QString& busAddress)
    : impl_{std::make_shared<Impl>(std::move(main), clock, sound, busAddress)}
{
    (void)impl_->connected();
}

NotificationCenter::~NotificationCenter() { impl_->close(); }

void NotificationCenter::onAction(std::function<void(NotificationAction)> handler)
{
    impl_->actionHandler = std::move(handler);
}

void NotificationCenter::onAuthorizationChange(std::function<void(NotificationAuthorizationState)> handler)
{
    impl_->authorizationHandler = std::move(handler);
}

void NotificationCenter::onLastAlertChange(std::function<void()> handler)
{
    impl_->lastAlertHandler = std::move(handler);
}

bool NotificationCenter::lastAlertNotShown() const { return impl_->lastAlertNotShown; }

asio::awaitable<NotificationAuthorizationState> NotificationCenter::authorizationStatus()
{
    return runOnExecutor(impl_->main, Impl::status(impl_));
}

asio::awaitable<std::expected<bool, NotificationError>> NotificationCenter::requestAuthorization()
{
    co_return co_await authorizationStatus() == NotificationAuthorizationState::authorized;
}

asio::awaitable<PostResult> NotificationCenter::add(UserNotification notification)
{
    return runOnExecutor(impl_->main, Impl::post(impl_, std::move(notification)));
}

}  // namespace tidewell
