#include "platform/linux/AlertProbe.h"

#include <QDBusVariant>
#include <algorithm>
#include <boost/asio/experimental/channel.hpp>
#include <boost/system/system_error.hpp>
#include <utility>
#include <vector>

#include "platform/linux/BusCaller.h"
#include "platform/linux/BusConnection.h"
#include "platform/linux/DesktopHelper.h"
#include "platform/linux/NotificationSignals.h"
#include "support/OnExecutor.h"

namespace tidewell {
namespace {

using namespace std::chrono_literals;

/// The whole look; on the program's own clock.
constexpr std::chrono::milliseconds lookDeadline = 2s;
/// The helper's own deadlines end earlier by itself.
constexpr std::chrono::milliseconds helperDeadline = 1900ms;
/// For questions whose answer nobody wants later.
constexpr std::chrono::milliseconds questionLimit = 3s;

/// The values that xfce4-power-manager takes for "never" lie below this many minutes.
constexpr unsigned xfceShortestSuspend = 15;

const std::string gnomePower = "org.gnome.settings-daemon.plugins.power";

using Wake = asio::experimental::channel<void(boost::system::error_code)>;

bool good(const QDBusMessage& answer) { return answer.type() == QDBusMessage::ReplyMessage; }

/// The one value of an answer, out of its variants.
QVariant valueOf(const QDBusMessage& answer)
{
    if (!good(answer))
        return {};
    QVariant value = answer.arguments().value(0);
    while (value.userType() == qMetaTypeId<QDBusVariant>())
        value = qvariant_cast<QDBusVariant>(value).variant();
    return value;
}

std::optional<bool> truth(const QVariant& value)
{
    return value.userType() == QMetaType::Bool ? std::optional{value.toBool()} : std::nullopt;
}

QDBusMessage methodCall(const char* service, const char* path, const char* interface, const char* method,
                        const QVariantList& arguments = {})
{
    QDBusMessage call = QDBusMessage::createMethodCall(QLatin1String(service), QLatin1String(path),
                                                       QLatin1String(interface), QLatin1String(method));
    call.setArguments(arguments);
    call.setAutoStartService(false);
    return call;
}

QDBusMessage propertyOf(const char* service, const char* path, const char* interface, const char* name)
{
    return propertyCall(QLatin1String(service), QLatin1String(path), QLatin1String(interface),
                        QLatin1String(name));
}

QDBusMessage xfceSetting(const char* channel, const QString& name)
{
    return methodCall("org.xfce.Xfconf", "/org/xfce/Xfconf", "org.xfce.Xfconf", "GetProperty",
                      {QLatin1String(channel), name});
}

/// What is found out, filled in by several questions at once. Main thread.
struct Look {
    asio::any_io_executor main;
    AlertProbeOptions options;
    AlertPath path{};
    Task<void> openingSession{};
    std::unique_ptr<BusCaller> session{};  ///< Once that has ended; null when there is no such bus.

    void suspends(double seconds)
    {
        path.suspendsAfter = std::min(path.suspendsAfter.value_or(Seconds{seconds}), Seconds{seconds});
    }
};

/// A connection of the question's own; null when there is no such bus.
asio::awaitable<std::unique_ptr<BusCaller>> openBus(asio::any_io_executor main, QString address)
{
    const auto wake = std::make_shared<Wake>(main, 1);
    std::unique_ptr<BusCaller> made;
    const auto token = connectToBus(address, [&made, wake](std::optional<QDBusConnection> connection) {
        if (connection)
            made = std::make_unique<BusCaller>(*connection);
        wake->try_send(boost::system::error_code{});
    });
    co_await wake->async_receive(asio::use_awaitable);
    co_return std::move(made);
}

asio::awaitable<std::optional<std::string>> setting(std::shared_ptr<Look> look, std::string schema,
                                                    std::string key)
{
    return settingFromHelper(look->options.helper, std::move(schema), std::move(key), helperDeadline);
}

/// Whether "do not disturb" is on, as the server `name` keeps it.
asio::awaitable<std::optional<bool>> askInhibited(std::shared_ptr<Look> look, BusCaller& bus,
                                                  std::string name)
{
    if (name == "gnome-shell") {
        const auto shown = co_await setting(look, "org.gnome.desktop.notifications", "show-banners");
        co_return shown ? std::optional{*shown == "false"} : std::nullopt;
    }
    QDBusMessage question =
        propertyCall(notificationService, notificationPath, notificationService, QStringLiteral("Inhibited"));
    if (name == "dunst")
        question = propertyCall(notificationService, notificationPath,
                                QStringLiteral("org.dunstproject.cmd0"), QStringLiteral("paused"));
    else if (name == "Xfce Notify Daemon")
        question = xfceSetting("xfce4-notifyd", QStringLiteral("/do-not-disturb"));
    const QDBusMessage answer = co_await bus.call(question, questionLimit);
    auto inhibited = truth(valueOf(answer));
    // That one keeps no value until the person first switches it.
    if (!inhibited && name == "Xfce Notify Daemon")
        inhibited = false;
    co_return inhibited;
}

asio::awaitable<void> openSession(std::shared_ptr<Look> look)
{
    const QString given = look->options.sessionBusAddress;
    look->session = co_await openBus(look->main, given.isEmpty() ? sessionBusAddress() : given);
}

asio::awaitable<void> askServer(std::shared_ptr<Look> look)
{
    co_await look->openingSession.wait();
    BusCaller* const bus = look->session.get();
    if (bus == nullptr)
        co_return;
    const QDBusMessage owner = co_await bus->call(
        busDaemonCall(QStringLiteral("GetNameOwner"), {notificationService}), questionLimit);
    if (!good(owner)) {
        const QDBusMessage names =
            co_await bus->call(busDaemonCall(QStringLiteral("ListActivatableNames")), questionLimit);
        if (!good(names) || !names.arguments().value(0).toStringList().contains(notificationService))
            co_return;
        if (!look->options.startsServer) {
            look->path.serverAnswers = true;
            co_return;
        }
    }
    // Until it is seen to answer.
    look->path.serverHangs = true;
    const auto ask = [&](const char* method) {
        return bus->call(QDBusMessage::createMethodCall(notificationService, notificationPath,
                                                        notificationService, QLatin1String(method)),
                         questionLimit);
    };
    const QDBusMessage capabilities = co_await ask("GetCapabilities");
    if (!good(capabilities) && !good(owner)) {
        look->path.serverHangs = false;  // It could not be started.
        co_return;
    }
    if (!good(capabilities) || capabilities.signature() != QLatin1String("as"))
        co_return;
    look->path.serverPlaysSound = capabilities.arguments()[0].toStringList().contains(QLatin1String("sound"));
    look->path.serverAnswers = true;
    look->path.serverHangs = false;
    const QDBusMessage information = co_await ask("GetServerInformation");
    if (!good(information))
        co_return;
    look->path.serverName = information.arguments().value(0).toString().toStdString();
    look->path.inhibited = co_await askInhibited(look, *bus, look->path.serverName);
}

asio::awaitable<void> askSound(std::shared_ptr<Look> look)
{
    const auto report =
        co_await lookInHelper(look->options.helper, look->options.soundServer, helperDeadline);
    if (!report)
        co_return;
    look->path.soundOutput = report->output.present;
    look->path.muted = report->output.muted;
    look->path.volume = report->output.volume;
    look->path.soundTheme = report->soundsInstalled;
}

/// logind's own rule, for machines without a desktop's power manager.
asio::awaitable<void> askLogind(std::shared_ptr<Look> look, BusCaller& bus)
{
    const auto property = [&](const char* name) {
        return bus.call(propertyOf("org.freedesktop.login1", "/org/freedesktop/login1",
                                   "org.freedesktop.login1.Manager", name),
                        questionLimit);
    };
    const QString action = valueOf(co_await property("IdleAction")).toString();
    if (action.isEmpty() || action == QLatin1String("ignore") || action == QLatin1String("lock"))
        co_return;
    const QStringList held = valueOf(co_await property("BlockInhibited")).toString().split(u':');
    if (held.contains(QLatin1String("idle")) || held.contains(QLatin1String("sleep")))
        co_return;
    const double microseconds = valueOf(co_await property("IdleActionUSec")).toDouble();
    if (microseconds > 0)
        look->suspends(microseconds / 1e6);
}

/// gsd-power's rule, unless an application holds it up.
asio::awaitable<void> askGnome(std::shared_ptr<Look> look, BusCaller& bus, bool onBattery)
{
    constexpr unsigned suspendOrIdle = 4 | 8;
    const QDBusMessage held =
        co_await bus.call(methodCall("org.gnome.SessionManager", "/org/gnome/SessionManager",
                                     "org.gnome.SessionManager", "IsInhibited", {suspendOrIdle}),
                          questionLimit);
    if (truth(valueOf(held)) == true)
        co_return;
    const std::string source = onBattery ? "battery" : "ac";
    const auto what = co_await setting(look, gnomePower, "sleep-inactive-" + source + "-type");
    if (!what || *what == "nothing" || *what == "blank" || *what == "logout")
        co_return;
    const auto after = co_await setting(look, gnomePower, "sleep-inactive-" + source + "-timeout");
    if (const int seconds = QString::fromStdString(after.value_or("")).toInt(); seconds > 0)
        look->suspends(seconds);
}

asio::awaitable<void> askXfce(std::shared_ptr<Look> look, BusCaller& bus, bool onBattery)
{
    const QDBusMessage answer =
        co_await bus.call(xfceSetting("xfce4-power-manager",
                                      onBattery ? QStringLiteral("/xfce4-power-manager/inactivity-on-battery")
                                                : QStringLiteral("/xfce4-power-manager/inactivity-on-ac")),
                          questionLimit);
    const unsigned minutes = valueOf(answer).toUInt();
    if (minutes >= xfceShortestSuspend)
        look->suspends(minutes * 60.0);
}

asio::awaitable<void> askSuspend(std::shared_ptr<Look> look)
{
    bool onBattery = false;
    const QString systemAddress = look->options.systemBusAddress;
    if (const auto system =
            co_await openBus(look->main, systemAddress.isEmpty() ? systemBusAddress() : systemAddress)) {
        const QDBusMessage battery =
            co_await system->call(propertyOf("org.freedesktop.UPower", "/org/freedesktop/UPower",
                                             "org.freedesktop.UPower", "OnBattery"),
                                  questionLimit);
        onBattery = truth(valueOf(battery)) == true;
        co_await askLogind(look, *system);
    }
    co_await look->openingSession.wait();
    BusCaller* const session = look->session.get();
    if (session == nullptr)
        co_return;
    const QDBusMessage answer =
        co_await session->call(busDaemonCall(QStringLiteral("ListNames")), questionLimit);
    const QStringList names = answer.arguments().value(0).toStringList();
    if (names.contains(QLatin1String("org.gnome.SettingsDaemon.Power")))
        co_await askGnome(look, *session, onBattery);
    if (names.contains(QLatin1String("org.xfce.PowerManager")))
        co_await askXfce(look, *session, onBattery);
}

/// Every question at once. Those that are not answered in time are dropped.
struct Questions {
    std::vector<Task<void>> tasks{};

    ~Questions()
    {
        for (Task<void>& task : tasks)
            task.cancel();
    }
    asio::awaitable<bool> wait()
    {
        for (const Task<void>& task : tasks)
            co_await task.wait();
        co_return true;
    }
};

}  // namespace

struct AlertProbe::Impl {
    asio::any_io_executor main;
    Clock& clock;
    AlertProbeOptions options;

    static asio::awaitable<AlertPath> look(std::shared_ptr<Impl> self)
    {
        const auto look = std::make_shared<Look>(self->main, self->options);
        look->openingSession = startTask(self->main, openSession(look));
        Questions questions;
        questions.tasks.push_back(look->openingSession);
        for (const auto question : {askServer, askSound, askSuspend})
            questions.tasks.push_back(startTask(self->main, question(look)));
        (void)co_await within(self->clock, lookDeadline, questions.wait());
        // A bus that only takes its time is no sign that there is no server.
        if (look->openingSession.running())
            look->path.serverHangs = true;
        co_return look->path;
    }
};

AlertProbe::AlertProbe(asio::any_io_executor main, Clock& clock, AlertProbeOptions options)
    : impl_{std::make_shared<Impl>(std::move(main), clock, std::move(options))}
{
}

AlertProbe::~AlertProbe() = default;

asio::awaitable<AlertPath> AlertProbe::look() { return runOnExecutor(impl_->main, Impl::look(impl_)); }

}  // namespace tidewell
