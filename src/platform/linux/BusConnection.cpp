#include "platform/linux/BusConnection.h"

#include <poll.h>
#include <sys/socket.h>
#include <sys/un.h>
#include <unistd.h>
#include <QByteArray>
#include <QFile>
#include <atomic>
#include <cerrno>
#include <cstddef>
#include <cstring>
#include <string>
#include <string_view>

#include "platform/linux/Background.h"

namespace tidewell {
namespace {

/// A bus that does not greet for so long counts as absent.
constexpr std::chrono::minutes greetingTimeout{1};

/// The socket that a D-Bus address names, in the kernel's form; empty for other transports.
std::optional<std::pair<sockaddr_un, socklen_t>> socketOf(const QString& address)
{
    const QString first = address.section(u';', 0, 0);
    if (!first.startsWith(QLatin1String("unix:")))
        return std::nullopt;
    for (const QString& pair : first.mid(5).split(u',')) {
        const QString key = pair.section(u'=', 0, 0);
        const bool abstract = key == QLatin1String("abstract");
        if (key != QLatin1String("path") && !abstract)
            continue;
        const QByteArray value = QByteArray::fromPercentEncoding(pair.section(u'=', 1).toUtf8());
        sockaddr_un name{};
        name.sun_family = AF_UNIX;
        const auto length = static_cast<std::size_t>(value.size());
        if (length == 0 || length + 1 >= sizeof name.sun_path)
            return std::nullopt;
        std::memcpy(name.sun_path + (abstract ? 1 : 0), value.constData(), length);
        // With the closing zero of a path, or the leading one of an abstract name.
        const std::size_t size = offsetof(sockaddr_un, sun_path) + length + 1;
        return std::pair{name, static_cast<socklen_t>(size)};
    }
    return std::nullopt;
}

}  // namespace

// The bus library would wait for the greeting on the one thread that all connections of the process share,
// and the end of the process would wait for that thread.
bool busGreets(const QString& address, std::chrono::milliseconds timeout)
{
    const auto name = socketOf(address);
    if (!name)
        return true;
    const int fd = ::socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC, 0);
    if (fd < 0)
        return false;
    bool greeted = false;
    const void* where = &name->first;
    if (::connect(fd, static_cast<const sockaddr*>(where), name->second) == 0) {
        std::string hello{"AUTH EXTERNAL "};
        for (const char digit : std::to_string(::getuid())) {
            constexpr std::string_view hex = "0123456789abcdef";
            hello += hex[static_cast<std::size_t>(digit) >> 4];
            hello += hex[static_cast<std::size_t>(digit) & 15];
        }
        hello.insert(hello.begin(), '\0');
        hello += "\r\n";
        pollfd wait{.fd = fd, .events = POLLIN, .revents = 0};
        greeted =
            ::send(fd, hello.data(), hello.size(), MSG_NOSIGNAL) == static_cast<ssize_t>(hello.size()) &&
            ::poll(&wait, 1, static_cast<int>(timeout.count())) == 1 && (wait.revents & POLLIN) != 0;
    }
    ::close(fd);
    return greeted;
}

bool busListens(const QString& address)
{
    const auto name = socketOf(address);
    if (!name)
        return !address.isEmpty();
    const int fd = ::socket(AF_UNIX, SOCK_STREAM | SOCK_CLOEXEC | SOCK_NONBLOCK, 0);
    if (fd < 0)
        return true;
    const void* where = &name->first;
    const bool taken =
        ::connect(fd, static_cast<const sockaddr*>(where), name->second) == 0 || errno == EAGAIN;
    ::close(fd);
    return taken;
}

QString sessionBusAddress()
{
    const QString named = qEnvironmentVariable("DBUS_SESSION_BUS_ADDRESS");
    if (!named.isEmpty())
        return named;
    const QString folder = qEnvironmentVariable("XDG_RUNTIME_DIR");
    if (folder.isEmpty() ||
        ::access(QFile::encodeName(folder + QLatin1String("/bus")).constData(), R_OK | W_OK) != 0)
        return {};
    return QLatin1String("unix:path=") +
           QString::fromLatin1((folder + QLatin1String("/bus")).toUtf8().toPercentEncoding("/"));
}

QString systemBusAddress()
{
    return qEnvironmentVariable("DBUS_SYSTEM_BUS_ADDRESS",
                                QStringLiteral("unix:path=/run/dbus/system_bus_socket"));
}

std::shared_ptr<void> connectToBus(const QString& address,
                                   std::function<void(std::optional<QDBusConnection>)> done)
{
    static std::atomic<int> count{0};
    /// A connection that nobody took, because the token had gone, is closed again.
    struct Made {
        QString name;
        bool connected = false;
        bool taken = false;
        ~Made()
        {
            if (connected && !taken)
                QDBusConnection::disconnectFromBus(name);
        }
    };
    const auto made = std::make_shared<Made>(QStringLiteral("tidewell-%1").arg(++count));
    return runInBackground(
        [address, made] {
            if (address.isEmpty() || !busGreets(address, greetingTimeout))
                return;
            made->connected = QDBusConnection::connectToBus(address, made->name).isConnected();
            if (!made->connected)
                QDBusConnection::disconnectFromBus(made->name);
        },
        [made, done = std::move(done)] {
            made->taken = true;
            done(made->connected ? std::optional{QDBusConnection{made->name}} : std::nullopt);
        });
}

}  // namespace tidewell
