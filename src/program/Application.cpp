#include <QApplication>
#include <QCursor>
#include <csignal>

#include "platform/linux/BusConnection.h"
#include "platform/linux/SingleInstance.h"
#include "platform/linux/StatusItem.h"
#include "platform/linux/UnixSignals.h"
#include "program/Commands.h"
#include "program/Core.h"
#include "program/Process.h"
#include "program/SignInController.h"
#include "support/Log.h"

namespace tidewell {

namespace {

const Log applicationLog{"Application"};

/// A bus that lives greets within a millisecond; at the start of a session, machines are busy.
constexpr std::chrono::milliseconds busGreetingWait{1000};

/// The status item and the windows, over the core. Main thread.
class Face {
public:
    explicit Face(Core& core)
        : core_{core}, signIn_{core}, item_{{.iconFolder = core.folders().runtime / "icons"}}
    {
        item_.onCommand([this](MenuCommand command) { carryOut(command); });
        observer_ = core_.viewModel().observe([this](const StatusBarState&) { present(); });
        settings_ = core_.configuration().observe([this](ConfigurationChange) { present(); });
        // Where the person just clicked: what there is to do about an alert is in the menu.
        core_.onAlertOpened([this] { item_.showMenu(QCursor::pos()); });
    }
    ~Face() { core_.onAlertOpened({}); }
    Face(const Face&) = delete;
    Face& operator=(const Face&) = delete;

    /// The item is there at once: the configuration may wait for a keyring, and that for the person.
    void launch()
    {
        present();
        item_.start();
        core_.launch([this] { present(); }, &signIn_);
    }

    /// The person started the program a second time.
    void reopen()
    {
        if (core_.delegate().applicationShouldHandleReopen() && !core_.configuration().account())
            signIn_.show();
    }

private:
    void present()
    {
        item_.present(statusItemContent(core_.viewModel().state(), core_.configuration().settings(),
                                        core_.clock().now(), TimeZone::current()));
    }

    void carryOut(MenuCommand command)
    {
        switch (command) {
        case MenuCommand::none:
        case MenuCommand::graphWindow1:
        case MenuCommand::graphWindow3:
        case MenuCommand::graphWindow6:
        case MenuCommand::graphWindow12:
        case MenuCommand::graphWindow24:
        case MenuCommand::installUpdate:
        case MenuCommand::showInsights:
        case MenuCommand::showSettings: break;
        case MenuCommand::showGraph: item_.showMenu(QCursor::pos()); break;
        case MenuCommand::refresh:
            asio::co_spawn(core_.main(), core_.coordinator().refreshNow(), asio::detached);
            break;
        case MenuCommand::reconnect: core_.coordinator().reconnect(); break;
        case MenuCommand::signIn: signIn_.show(); break;
        case MenuCommand::snooze30Minutes: core_.coordinator().snoozeAlerts(30min); break;
        case MenuCommand::snooze2Hours: core_.coordinator().snoozeAlerts(2h); break;
        case MenuCommand::resumeAlerts: core_.coordinator().resumeAlerts(); break;
        case MenuCommand::quit: QCoreApplication::quit(); break;
        }
    }

    Core& core_;
    SignInController signIn_;
    StatusItem item_;
    std::shared_ptr<void> observer_;
    std::shared_ptr<void> settings_;
};

}  // namespace

ExitCode runApplication(const ApplicationOptions& options)
{
    endAtOnceOn(endingSignals);
    const DisplayProbe display;
    if (!display.answers())
        return report(
            {ExitCode::failure,
             "There is no display to show the status item on. Use \"tidewell watch\" in a terminal."});
    // The toolkit's accessibility asks the session bus as the event loop begins, and waits as long as it
    // takes. A bus that hangs must not hold up the value; this address makes the toolkit leave the bus alone.
    if (const auto bus = sessionBusAddress(); !bus.isEmpty() && !busGreets(bus, busGreetingWait)) {
        applicationLog.warning("The session bus does not answer; screen readers are not served in this run.");
        qputenv("AT_SPI_BUS_ADDRESS", "unix:path=/nonexistent");
    }
    // The end of the desktop session is announced by a signal; its manager must not wait for us either.
    QCoreApplication::setAttribute(Qt::AA_DisableSessionManager);
    QApplication application{processArguments().count, processArguments().values};
    QApplication::setApplicationName("tidewell");
    QApplication::setApplicationDisplayName("Tidewell");
    QApplication::setDesktopFileName("org.tidewell.Tidewell");
    QApplication::setQuitOnLastWindowClosed(false);

    // They wait for the event loop from here on, so that what was made goes again.
    const UnixSignals signals{endingSignals, [](int) { QCoreApplication::quit(); }};
    auto core = Core::make({.demo = options.demo, .demoScenario = options.demoScenario, .postsAlerts = true});
    if (!core)
        return report(core.error());
    const auto runtime = (*core)->folders().runtime;
    auto instance = SingleInstance::acquire(runtime);
    if (!instance) {
        applicationLog.warning("Cannot make sure that only one Tidewell runs: " + instance.error().message());
    } else if (!*instance) {
        // Another one runs: it comes to the front, and this one has nothing left to do.
        if (SingleInstance::send(runtime, InstanceWord::activate) == SingleInstance::SendResult::noAnswer)
            return report({ExitCode::failure, "Tidewell is running already, but does not answer."});
        return ExitCode::good;
    }
    {
        Face face{**core};
        if (instance)
            (*instance)->onWord([&face, &core](InstanceWord word) {
                switch (word) {
                case InstanceWord::activate: face.reopen(); break;
                case InstanceWord::configurationChanged: (*core)->reloadConfiguration(); break;
                case InstanceWord::snoozeChanged: (*core)->reloadDefaults(); break;
                case InstanceWord::areYouThere: break;
                }
            });
        face.launch();
        QApplication::exec();
        if (instance)
            (*instance)->onWord({});
    }
    endProcessUnless((*core)->shutDown(), ExitCode::good);
    return ExitCode::good;
}

}  // namespace tidewell
