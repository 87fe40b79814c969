#include "TestBus.h"

#include <sys/prctl.h>
#include <QCoreApplication>
#include <QDBusPendingCallWatcher>
#include <QEventLoop>
#include <csignal>
#include <fstream>

namespace tidewell {
namespace {

constexpr std::chrono::seconds patience{20};

}  // namespace

ChildProcess::ChildProcess(const std::vector<std::string>& command, const std::string& input)
{
    QStringList words;
    for (const std::string& word : command)
        words.append(QString::fromStdString(word));
    const QString program = words.takeFirst();
    process_.setChildProcessModifier([] { ::prctl(PR_SET_PDEATHSIG, SIGKILL); });
    // Daemons complain about machines that are small or containers.
    process_.setStandardErrorFile(QProcess::nullDevice());
    process_.start(program, words);
    if (!process_.waitForStarted())
        throw std::runtime_error{"no " + program.toStdString()};
    process_.write(input.data(), static_cast<qint64>(input.size()));
    process_.closeWriteChannel();
    process_.waitForBytesWritten();
}

ChildProcess::~ChildProcess()
{
    process_.kill();
    process_.waitForFinished();
}

std::string ChildProcess::readLine()
{
    while (!process_.canReadLine() && process_.waitForReadyRead()) {
    }
    return process_.readLine().trimmed().toStdString();
}

void ChildProcess::signal(int number) const { ::kill(static_cast<pid_t>(process_.processId()), number); }

TestBus::TestBus()
{
    std::ofstream{folder_.path() / "bus.conf"}
        << "<busconfig><type>session</type><listen>unix:path=" << (folder_.path() / "bus").string()
        << "</listen><servicedir>" << (folder_.path() / "services").string()
        << "</servicedir><policy context='default'><allow send_destination='*' eavesdrop='true'/>"
           "<allow eavesdrop='true'/><allow own='*'/></policy></busconfig>";
    begin();
}

void TestBus::makeStartable(const std::string& name, const std::string& command)
{
    std::filesystem::create_directories(folder_.path() / "services");
    std::ofstream{folder_.path() / "services" / (name + ".service")} << "[D-BUS Service]\nName=" << name
                                                                     << "\nExec=" << command << "\n";
    QDBusConnection bus = connect();
    (void)callAndWait(bus, QDBusMessage::createMethodCall("org.freedesktop.DBus", "/org/freedesktop/DBus",
                                                          "org.freedesktop.DBus", "ReloadConfig"));
}

void TestBus::end()
{
    daemon_.reset();
    std::filesystem::remove(folder_.path() / "bus");
}

void TestBus::begin()
{
    daemon_ = std::make_unique<ChildProcess>(
        std::vector<std::string>{"dbus-daemon", "--nofork", "--nosyslog", "--print-address=1",
                                 "--config-file=" + (folder_.path() / "bus.conf").string()});
    // Without the identifier that follows, which is another at each start.
    address_ = QString::fromStdString(daemon_->readLine()).section(u',', 0, 0);
    if (address_.isEmpty())
        throw std::runtime_error{"dbus-daemon did not start"};
}

TestBus::~TestBus()
{
    for (const QString& name : connections_)
        QDBusConnection::disconnectFromBus(name);
}

QDBusConnection TestBus::connect()
{
    static int count = 0;
    connections_.push_back(QStringLiteral("test-%1").arg(++count));
    return QDBusConnection::connectToBus(address_, connections_.back());
}

bool runUntil(const std::function<bool()>& condition)
{
    const auto end = std::chrono::steady_clock::now() + patience;
    while (!condition()) {
        if (std::chrono::steady_clock::now() > end)
            return false;
        QCoreApplication::processEvents(QEventLoop::AllEvents, 20);
        QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
    }
    return true;
}

void forgeOwner(QDBusConnection& bus, const QString& name, const QString& owner)
{
    QDBusMessage signal =
        QDBusMessage::createSignal("/org/freedesktop/DBus", "org.freedesktop.DBus", "NameOwnerChanged");
    signal << name << QString{} << owner;
    EXPECT_TRUE(bus.send(signal));
}

QDBusMessage callAndWait(QDBusConnection& bus, const QDBusMessage& message)
{
    // The call itself is finished before the event loop has come to the signals that were sent ahead of it.
    const QDBusPendingCallWatcher call{bus.asyncCall(message)};
    bool told = false;
    QObject::connect(&call, &QDBusPendingCallWatcher::finished, [&told] { told = true; });
    if (!runUntil([&] { return told; }))
        return QDBusMessage::createError(QDBusError::NoReply, QStringLiteral("the test waited too long"));
    return call.reply();
}

}  // namespace tidewell
