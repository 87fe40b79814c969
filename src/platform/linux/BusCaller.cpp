#include "platform/linux/BusCaller.h"

#include <QDBusPendingCallWatcher>
#include <boost/asio/as_tuple.hpp>
#include <boost/asio/experimental/channel.hpp>
#include <boost/system/system_error.hpp>
#include <optional>
#include <utility>

namespace tidewell {

struct BusCaller::Waiting {
    using Wake = asio::experimental::channel<void(boost::system::error_code)>;

    explicit Waiting(const asio::any_io_executor& executor) { wake.emplace(executor, 1); }

    std::optional<Wake> wake{};  ///< While there is a caller: it must not outlive the event loop.
    std::optional<QDBusMessage> answer{};
    bool left = false;  ///< The caller no longer waits.

    void finish(const QDBusMessage& with)
    {
        answer = with;
        if (wake)
            wake->try_send(boost::system::error_code{});
    }

    /// Part of the caller.
    struct Presence {
        std::shared_ptr<Waiting> waiting;
        ~Presence() { waiting->wake.reset(); }
    };
};

BusCaller::BusCaller(QDBusConnection connection) : connection_{std::move(connection)} {}

BusCaller::~BusCaller()
{
    for (const auto& weak : std::exchange(waiting_, {}))
        if (const auto waiting = weak.lock())
            waiting->finish(
                QDBusMessage::createError(QDBusError::Disconnected, QStringLiteral("connection closed")));
    QDBusConnection::disconnectFromBus(connection_.name());
}

asio::awaitable<QDBusMessage> BusCaller::call(QDBusMessage message, std::chrono::milliseconds limit,
                                              std::function<void(const QDBusMessage&)> late)
{
    const auto waiting = std::make_shared<Waiting>(co_await asio::this_coro::executor);
    waiting_.remove_if([](const std::weak_ptr<Waiting>& other) { return other.expired(); });
    waiting_.push_back(waiting);
    auto* const watcher =
        new QDBusPendingCallWatcher{connection_.asyncCall(message, static_cast<int>(limit.count())), &calls_};
    QObject::connect(watcher, &QDBusPendingCallWatcher::finished, &calls_,
                     [watcher, waiting, late = std::move(late)] {
                         watcher->deleteLater();
                         if (!waiting->left)
                             waiting->finish(watcher->reply());
                         else if (late)
                             late(watcher->reply());
                     });
    const Waiting::Presence presence{waiting};
    // From here on this object may go while the caller waits.
    const auto [cancelled] = co_await waiting->wake->async_receive(asio::as_tuple(asio::use_awaitable));
    if (cancelled && !waiting->answer) {
        waiting->left = true;
        throw boost::system::system_error{asio::error::operation_aborted};
    }
    co_return *waiting->answer;
}

QDBusMessage busDaemonCall(const QString& method, const QVariantList& arguments)
{
    QDBusMessage call = QDBusMessage::createMethodCall(QStringLiteral("org.freedesktop.DBus"),
                                                       QStringLiteral("/org/freedesktop/DBus"),
                                                       QStringLiteral("org.freedesktop.DBus"), method);
    call.setArguments(arguments);
    return call;
}

std::optional<QString> newOwner(const QDBusMessage& nameOwnerChanged, const QString& name)
{
    const QVariantList arguments = nameOwnerChanged.arguments();
    if (nameOwnerChanged.service() != QLatin1String("org.freedesktop.DBus") ||
        nameOwnerChanged.signature() != QLatin1String("sss") || arguments[0].toString() != name)
        return std::nullopt;
    return arguments[2].toString();
}

QDBusMessage propertyCall(const QString& service, const QString& path, const QString& interface,
                          const QString& name)
{
    QDBusMessage call = QDBusMessage::createMethodCall(
        service, path, QStringLiteral("org.freedesktop.DBus.Properties"), QStringLiteral("Get"));
    call.setArguments({interface, name});
    call.setAutoStartService(false);
    return call;
}

}  // namespace tidewell
