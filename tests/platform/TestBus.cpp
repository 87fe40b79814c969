#include "TestBus.h"

#include <fcntl.h>
#include <sys/prctl.h>
#include <sys/wait.h>
#include <unistd.h>
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
    int in[2];
    int out[2];
    if (::pipe(in) != 0 || ::pipe(out) != 0)
        throw std::runtime_error{"no pipe"};
    std::vector<char*> arguments;
    for (const std::string& word : command)
        arguments.push_back(const_cast<char*>(word.c_str()));
    arguments.push_back(nullptr);
    pid_ = ::fork();
    if (pid_ == 0) {
        ::prctl(PR_SET_PDEATHSIG, SIGKILL);
        ::dup2(in[0], 0);
        ::dup2(out[1], 1);
        // Daemons complain about machines that are small or containers.
        ::dup2(::open("/dev/null", O_WRONLY), 2);
        for (const int fd : {in[0], in[1], out[0], out[1]})
            ::close(fd);
        ::execvp(arguments[0], arguments.data());
        ::_exit(127);
    }
    ::close(in[0]);
    ::close(out[1]);
    output_ = out[0];
    [[maybe_unused]] const ssize_t written = ::write(in[1], input.data(), input.size());
    ::close(in[1]);
}

ChildProcess::~ChildProcess()
{
    ::kill(pid_, SIGCONT);
    ::kill(pid_, SIGKILL);
    ::waitpid(pid_, nullptr, 0);
    ::close(output_);
}

std::string ChildProcess::readLine()
{
    std::string line;
    char c = 0;
    while (::read(output_, &c, 1) == 1 && c != '\n')
        line += c;
    return line;
}

void ChildProcess::signal(int number) const { ::kill(pid_, number); }

TestBus::TestBus()
{
    std::ofstream{folder_.path() / "bus.conf"}
        << "<busconfig><type>session</type><listen>unix:path=" << (folder_.path() / "bus").string()
        << "</listen><policy context='default'><allow send_destination='*' eavesdrop='true'/>"
           "<allow eavesdrop='true'/><allow own='*'/></policy></busconfig>";
    begin();
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

QDBusMessage callAndWait(QDBusConnection& bus, const QDBusMessage& message)
{
    const QDBusPendingCall call = bus.asyncCall(message);
    if (!runUntil([&] { return call.isFinished(); }))
        return QDBusMessage::createError(QDBusError::NoReply, QStringLiteral("the test waited too long"));
    return call.reply();
}

}  // namespace tidewell
