// Measures the running program as a desktop sees it: start to registered item, memory, wake-ups, one poll.
//
//   bench_desktop [--starts N] [--idle SECONDS]     prints one JSON object

#include <sys/prctl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <QCoreApplication>
#include <QDBusConnection>
#include <QDBusMessage>
#include <QDBusPendingCall>
#include <QDir>
#include <QElapsedTimer>
#include <QEventLoop>
#include <QFile>
#include <QJsonDocument>
#include <QJsonObject>
#include <QMap>
#include <QProcess>
#include <QTemporaryDir>
#include <QThread>
#include <QTimer>
#include <algorithm>
#include <csignal>
#include <cstdio>

#include "simulator/DemoService.h"
#include "support/SystemClock.h"

namespace tidewell {

/// What a panel does with an item: accepts it, says that it shows items, reads all of it, and again whenever
/// it says that something is new.
class Watcher : public QObject {
    Q_OBJECT
    Q_CLASSINFO("D-Bus Interface", "org.kde.StatusNotifierWatcher")
    Q_PROPERTY(bool IsStatusNotifierHostRegistered READ isHostRegistered)
    Q_PROPERTY(int ProtocolVersion READ protocolVersion)
    Q_PROPERTY(QStringList RegisteredStatusNotifierItems READ items)
public:
    [[nodiscard]] bool isHostRegistered() const { return true; }
    [[nodiscard]] int protocolVersion() const { return 0; }
    [[nodiscard]] QStringList items() const { return {}; }
    std::function<void()> registered;
    int news = 0;  ///< How often the item has said that something is new.

    /// Clicks the item; the answer comes before its menu has opened or closed.
    void click()
    {
        QDBusMessage call = QDBusMessage::createMethodCall(item_, "/StatusNotifierItem",
                                                           "org.kde.StatusNotifierItem", "Activate");
        call << 600 << 30;
        bus_.asyncCall(call);
    }

    void useBus(const QDBusConnection& bus)
    {
        bus_ = bus;
        for (const char* name : {"NewIcon", "NewToolTip", "NewTitle", "NewStatus", "XAyatanaNewLabel"})
            bus_.connect({}, "/StatusNotifierItem", "org.kde.StatusNotifierItem", name, this,
                         SLOT(itemChanged()));
    }

public Q_SLOTS:
    Q_SCRIPTABLE void RegisterStatusNotifierItem(const QString& item)
    {
        item_ = item;
        read();
        if (registered)
            registered();
    }
    Q_SCRIPTABLE void RegisterStatusNotifierHost(const QString&) {}
    void itemChanged()
    {
        ++news;
        read();
    }

private:
    void read()
    {
        QDBusMessage call = QDBusMessage::createMethodCall(item_, "/StatusNotifierItem",
                                                           "org.freedesktop.DBus.Properties", "GetAll");
        call << QStringLiteral("org.kde.StatusNotifierItem");
        bus_.asyncCall(call);
    }

    QDBusConnection bus_{"none"};
    QString item_;
};

namespace {

[[noreturn]] void fail(const QString& why)
{
    std::fprintf(stderr, "bench_desktop: %s\n", qPrintable(why));
    std::exit(1);
}

/// Runs the event loop until `done` or the deadline; false at the deadline.
bool waitFor(const std::function<bool()>& done, int milliseconds)
{
    QElapsedTimer timer;
    timer.start();
    while (!done()) {
        if (timer.hasExpired(milliseconds))
            return false;
        QCoreApplication::processEvents(QEventLoop::WaitForMoreEvents | QEventLoop::AllEvents, 20);
    }
    return true;
}

void pass(int milliseconds)
{
    (void)waitFor([] { return false; }, milliseconds);
}

/// The value of a line "Name:   123 kB" in one of the kernel's files; -1 when it cannot be read.
double kilobytes(const QString& file, const QByteArray& name)
{
    QFile stream{file};
    if (!stream.open(QIODevice::ReadOnly))
        return -1;
    for (const auto& line : stream.readAll().split('\n'))
        if (line.startsWith(name + ":"))
            return line.mid(name.size() + 1).trimmed().split(' ').first().toDouble();
    return -1;
}

double mebibytes(qint64 process, const QByteArray& name)
{
    const auto value = kilobytes(QString{"/proc/%1/smaps_rollup"}.arg(process), name);
    return value < 0 ? value : value / 1024;
}

/// How often each thread of the process has slept and been woken, by thread.
QMap<QString, double> switches(qint64 process)
{
    QMap<QString, double> counts;
    const QString tasks = QStringLiteral("/proc/%1/task").arg(process);
    for (const QString& task : QDir{tasks}.entryList(QDir::Dirs | QDir::NoDotAndDotDot))
        counts[task] = std::max(0.0, kilobytes(tasks + "/" + task + "/status", "voluntary_ctxt_switches"));
    return counts;
}

/// The sum since then; a thread that has ended meanwhile took its count along.
double switchesSince(const QMap<QString, double>& before, qint64 process)
{
    double sum = 0;
    const QMap<QString, double> now = switches(process);
    for (auto one = now.begin(); one != now.end(); ++one)
        sum += one.value() - before.value(one.key());
    return sum;
}

/// Processor time of all threads, in milliseconds.
double processorTime(qint64 process)
{
    double sum = 0;
    const auto tasks = QString{"/proc/%1/task"}.arg(process);
    for (const auto& task : QDir{tasks}.entryList(QDir::Dirs | QDir::NoDotAndDotDot)) {
        QFile file{tasks + "/" + task + "/schedstat"};
        if (file.open(QIODevice::ReadOnly))
            sum += file.readAll().split(' ').first().toDouble() / 1e6;
    }
    return sum;
}

double median(std::vector<double> values)
{
    std::ranges::sort(values);
    return values.empty() ? -1 : values[values.size() / 2];
}

/// A private display and bus with the watcher on it, and a home with an account at the simulator.
class Stage {
public:
    Stage()
    {
        ::chmod(qPrintable(folder_.path()), 0700);
        auto started = DemoService::start(clock_);
        if (!started)
            fail(QString::fromStdString(started.error()));
        service_ = std::move(*started);
        write("endpoints.json", QByteArray::fromStdString(service_->endpointsDocument()));
        QDir{folder_.path()}.mkdir("run");
        ::chmod(qPrintable(folder_.filePath("run")), 0700);

        write("bus.conf",
              "<busconfig><type>session</type><listen>unix:path=" + folder_.filePath("bus").toUtf8() +
                  "</listen><auth>EXTERNAL</auth><policy context=\"default\"><allow send_destination=\"*\"/>"
                  "<allow eavesdrop=\"true\"/><allow own=\"*\"/></policy></busconfig>");
        for (auto* process : {&display_, &bus_})  // They end with us, however we end.
            process->setChildProcessModifier([] { ::prctl(PR_SET_PDEATHSIG, SIGTERM); });
        bus_.start("dbus-daemon", {"--nofork", "--config-file=" + folder_.filePath("bus.conf")});
        display_.setReadChannel(QProcess::StandardOutput);
        display_.start("Xvfb", {"-displayfd", "1", "-screen", "0", "1280x800x24", "-nolisten", "tcp"});
        if (!waitFor([this] { return QFile::exists(folder_.filePath("bus")); }, 10'000))
            fail("dbus-daemon did not start");
        if (!waitFor([this] { return display_.canReadLine(); }, 10'000))
            fail("Xvfb did not start");
        const auto number = QString::fromUtf8(display_.readLine()).trimmed();

        environment_.insert("PATH", qEnvironmentVariable("PATH"));
        environment_.insert("HOME", folder_.path());
        environment_.insert("XDG_RUNTIME_DIR", folder_.filePath("run"));
        environment_.insert("TIDEWELL_ENDPOINTS", folder_.filePath("endpoints.json"));
        environment_.insert("TIDEWELL_KEYCHAIN", "file");
        environment_.insert("DISPLAY", ":" + number);
        environment_.insert("DBUS_SESSION_BUS_ADDRESS", "unix:path=" + folder_.filePath("bus"));
        environment_.insert("DBUS_SYSTEM_BUS_ADDRESS", "unix:path=" + folder_.filePath("none"));

        auto connection = QDBusConnection::connectToBus("unix:path=" + folder_.filePath("bus"), "bench");
        if (!connection.registerObject(
                "/StatusNotifierWatcher", &watcher_,
                QDBusConnection::ExportAllProperties | QDBusConnection::ExportScriptableSlots) ||
            !connection.registerService("org.kde.StatusNotifierWatcher"))
            fail("cannot stand in for a panel");
        watcher_.useBus(connection);
        signIn();
    }

    ~Stage()
    {
        QDBusConnection::disconnectFromBus("bench");
        for (auto* process : {&display_, &bus_}) {
            process->terminate();
            process->waitForFinished(3000);
        }
    }

    /// Starts the program and returns the milliseconds until its item was registered.
    double start(QProcess& program)
    {
        bool registered = false;
        watcher_.registered = [&registered] { registered = true; };
        program.setProcessEnvironment(environment_);
        program.setStandardErrorFile(folder_.filePath("errors"));
        QElapsedTimer timer;
        timer.start();
        program.start(TIDEWELL_PROGRAM, {"--verbose"});
        if (!waitFor([&registered] { return registered; }, 10'000))
            fail("the item was not registered within 10 s: " + errors());
        return static_cast<double>(timer.nsecsElapsed()) / 1e6;
    }

    static double stop(QProcess& program)
    {
        QElapsedTimer timer;
        timer.start();
        program.terminate();
        if (!waitFor([&program] { return program.state() == QProcess::NotRunning; }, 10'000))
            fail("the program did not end");
        return static_cast<double>(timer.nsecsElapsed()) / 1e6;
    }

    /// The milliseconds that `watch --once` takes: start, sign-in, one poll, end.
    double watchOnce()
    {
        QProcess program;
        program.setProcessEnvironment(environment_);
        QElapsedTimer timer;
        timer.start();
        program.start(TIDEWELL_PROGRAM, {"watch", "--once"});
        if (!program.waitForFinished(20'000) || program.exitCode() != 0)
            fail("watch --once failed: " + QString::fromUtf8(program.readAllStandardError()));
        return static_cast<double>(timer.nsecsElapsed()) / 1e6;
    }

    /// Lets the item's own menu open and close so many times.
    void openAndCloseMenu(int times)
    {
        for (int click = 0; click < 2 * times; ++click) {
            watcher_.click();
            pass(25);
        }
    }

    /// What bench_popup says of this display.
    [[nodiscard]] QJsonObject popup() const
    {
        QProcess program;
        program.setProcessEnvironment(environment_);
        program.start(TIDEWELL_BENCH_POPUP, QStringList{});
        if (!program.waitForFinished(30'000) || program.exitCode() != 0)
            fail("bench_popup failed: " + QString::fromUtf8(program.readAllStandardError()));
        return QJsonDocument::fromJson(program.readAllStandardOutput()).object();
    }

    /// How often the item has told the panel that something is new.
    [[nodiscard]] int news() const { return watcher_.news; }

private:
    /// What the program wrote to standard error.
    [[nodiscard]] QString errors() const
    {
        QFile file{folder_.filePath("errors")};
        return file.open(QIODevice::ReadOnly) ? QString::fromUtf8(file.readAll()) : QString{};
    }

    void write(const QString& name, const QByteArray& content)
    {
        QFile file{folder_.filePath(name)};
        if (!file.open(QIODevice::WriteOnly) || file.write(content) != content.size())
            fail("cannot write " + name);
    }

    void signIn()
    {
        QProcess program;
        program.setProcessEnvironment(environment_);
        const auto account = service_->account();
        program.start(TIDEWELL_PROGRAM, {"account", "set", "--provider", "dexcom", "--username",
                                         QString::fromStdString(account.username), "--region",
                                         QString::fromStdString(account.region), "--password-stdin"});
        program.write(QByteArray::fromStdString(account.password) + "\n");
        program.closeWriteChannel();
        if (!program.waitForFinished(20'000) || program.exitCode() != 0)
            fail("cannot sign in: " + QString::fromUtf8(program.readAllStandardError()));
    }

    asio::io_context context_{1};
    SystemClock clock_{context_};
    QTemporaryDir folder_;
    std::unique_ptr<DemoService> service_;
    QProcess bus_;
    QProcess display_;
    QProcessEnvironment environment_;
    Watcher watcher_;
};

/// Adds what the item's own menu costs. Last of all, since it leaves the program larger than one that idles.
void measureMenu(Stage& stage, qint64 process, QJsonObject& figures)
{
    const QJsonObject popup = stage.popup();
    for (const auto* name : {"popup_first_open_ms", "popup_open_ms"})
        figures.insert(name, popup[name]);
    stage.openAndCloseMenu(50);  // What is made once and kept, such as letters, is not growth.
    pass(1000);
    const double before = mebibytes(process, "Private_Dirty");
    stage.openAndCloseMenu(200);
    pass(1000);
    figures.insert("popup_used_private_dirty_mib", before);
    figures.insert("popup_growth_kib", (mebibytes(process, "Private_Dirty") - before) * 1024);
}

int run(int starts, int idleSeconds)
{
    Stage stage;
    std::vector<double> registered;
    std::vector<double> ended;
    for (int round = 0; round < starts; ++round) {
        QProcess program;
        registered.push_back(stage.start(program));
        pass(300);
        ended.push_back(stage.stop(program));
    }
    std::vector<double> once;
    for (int round = 0; round < starts; ++round)
        once.push_back(stage.watchOnce());

    QProcess program;
    (void)stage.start(program);
    const auto process = program.processId();
    pass(3000);
    const double before = processorTime(process);
    pass(9000);  // The first poll, five seconds after the start, lies in here.
    const double pollTime = processorTime(process) - before;
    const auto switchesBefore = switches(process);
    const int newsBefore = stage.news();
    const double idleBefore = processorTime(process);
    pass(idleSeconds * 1000);
    const double perMinute = 60.0 / idleSeconds;

    struct stat file{};
    ::stat(TIDEWELL_PROGRAM, &file);
    QJsonObject figures{
        {"start_to_registered_ms", median(registered)},
        {"quit_ms", median(ended)},
        {"watch_once_ms", median(once)},
        {"rss_mib", mebibytes(process, "Rss")},
        {"pss_mib", mebibytes(process, "Pss")},
        {"private_dirty_mib", mebibytes(process, "Private_Dirty")},
        {"first_poll_cpu_ms", pollTime},
        {"idle_wakeups_per_min", switchesSince(switchesBefore, process) * perMinute},
        {"idle_item_updates_per_min", (stage.news() - newsBefore) * perMinute},
        {"idle_cpu_ms_per_min", (processorTime(process) - idleBefore) * perMinute},
        {"program_size_kib", static_cast<double>(file.st_size) / 1024},
    };
    measureMenu(stage, process, figures);
    (void)Stage::stop(program);
    std::printf("%s\n", QJsonDocument{figures}.toJson(QJsonDocument::Compact).constData());
    return 0;
}

}  // namespace

}  // namespace tidewell

int main(int count, char** values)
{
    QCoreApplication application{count, values};
    const auto arguments = QCoreApplication::arguments();
    const auto number = [&arguments](const QString& name, int fallback) {
        const auto at = arguments.indexOf(name);
        return at >= 0 && at + 1 < arguments.size() ? arguments[at + 1].toInt() : fallback;
    };
    return tidewell::run(number("--starts", 7), number("--idle", 60));
}

#include "DesktopBenchmark.moc"
