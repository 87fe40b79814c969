#include <fmt/format.h>

#include <QApplication>
#include <QCursor>
#include <QLocale>
#include <csignal>

#include "platform/linux/BusConnection.h"
#include "platform/linux/DesktopHelper.h"
#include "platform/linux/SingleInstance.h"
#include "platform/linux/StatusAreaAdvice.h"
#include "platform/linux/StatusItem.h"
#include "platform/linux/UnixSignals.h"
#include "program/Commands.h"
#include "program/Core.h"
#include "program/InsightsController.h"
#include "program/InsightsReportController.h"
#include "program/OnboardingController.h"
#include "program/Process.h"
#include "program/SettingsController.h"
#include "program/SignInController.h"
#include "program/TermsController.h"
#include "support/Log.h"
#include "ui/SpokenStatusItem.h"
#include "ui/SpokenWidget.h"
#include "ui/Translations.h"

namespace tidewell {

namespace {

const Log applicationLog{"Application"};

/// A bus that lives greets within a millisecond; at the start of a session, machines are busy.
constexpr std::chrono::milliseconds busGreetingWait{1000};

/// A helper that asks for one setting ends sooner.
constexpr std::chrono::milliseconds settingDeadline{2000};

asio::awaitable<void> askReducedMotion(std::function<void(bool)> answer)
{
    const auto animations = co_await settingFromHelper(desktopHelperProgram, "org.gnome.desktop.interface",
                                                       "enable-animations", settingDeadline);
    answer(animations == "false");
}

StatusItemOptions itemOptions(Core& core, const ApplicationOptions& options)
{
    StatusItemOptions made;
    made.shape = options.icon;
    made.scheme = options.panel.value_or(PanelScheme::unknown);
    made.iconFolder = core.folders().runtime / "icons";
    made.askReducedMotion = [&core](std::function<void(bool)> answer) {
        asio::co_spawn(core.main(), askReducedMotion(std::move(answer)), asio::detached);
    };
    return made;
}

/// Where nothing shows the item, the person must not believe that nothing works.
UserNotification statusAreaHint()
{
    const std::string desktop = qEnvironmentVariable("XDG_CURRENT_DESKTOP").toStdString();
    return {.identifier = "tidewell-status-area-hint",
            .title = "No panel shows Tidewell",
            .body = fmt::format("{} Alerts come all the same. To see the graph, start Tidewell again.",
                                statusAreaAdvice(desktop))};
}

constexpr MenuPlaces menuPlaces{.insights = true, .settings = true};

/// The status item and the windows, over the core. Main thread.
class Face {
public:
    Face(Core& core, const ApplicationOptions& options)
        : core_{core},
          onboarding_{core},
          terms_{core},
          signIn_{core},
          insights_{core},
          report_{core},
          settingsWindow_{core,
                          {.signIn = [this] { signIn(); },
                           .terms = [this] { terms_.show(); },
                           .insights = [this] { insights_.show(); }}},
          item_{itemOptions(core, options)}
    {
        if (!options.demo)
            item_.onAbsent([this] { core_.notifyOnce(statusAreaHintShownKey, statusAreaHint()); });
        item_.onCommand([this](MenuCommand command) { carryOut(command); });
        insights_.onSaveReport([this](const InsightsShown& shown) { report_.show(shown); });
        insights_.onReportGone([this] { report_.withdraw(); });
        insights_.onOpenSettings([this] { settingsWindow_.show(SettingsTab::insights); });
        item_.setGraphSource([this] { return graph(); });
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
        core_.launch(
            {.ensureStatusItem = [this] { present(); }, .onboarding = &onboarding_, .terms = &terms_});
    }

    /// The person started the program a second time: the way to the graph by keyboard, and the only one where
    /// nothing shows the item.
    void reopen()
    {
        if (!core_.delegate().applicationShouldHandleReopen())
            return;
        if (core_.configuration().account())
            item_.showMenu(QCursor::pos());
        else
            signIn();
    }

private:
    /// Who has not been through the first-run steps goes on with these.
    void signIn()
    {
        if (core_.defaults().boolean(onboardingCompletedKey))
            signIn_.show();
        else
            onboarding_.showOnboarding();
    }

    void present()
    {
        const StatusItemContent content = statusItemContent(
            core_.viewModel().state(), settings(), core_.clock().now(), TimeZone::current(), menuPlaces);
        item_.present(content);
        item_.graphDidChange();
        spokenItem_.present(content);
    }

    /// The stored ones, with the graph's window as it was picked last.
    [[nodiscard]] AppSettings settings() const
    {
        AppSettings settings = core_.configuration().settings();
        if (*pickedHours_)
            settings.graphTimeWindowHours = *pickedHours_;
        return settings;
    }

    [[nodiscard]] GlucoseGraphContent graph() const
    {
        AppSettings chosen = settings();
        const GraphTimeWindow window = graphTimeWindow(chosen.graphTimeWindowHours);
        return {.glucoseHistory = core_.viewModel().state().glucoseHistory,
                .settings = std::move(chosen),
                .timeWindow = window,
                .now = core_.clock().now(),
                .zone = TimeZone::current()};
    }

    /// Shown at once. Where it cannot be stored, it holds until the end of this run.
    void pickGraphWindow(GraphTimeWindow window)
    {
        const auto hours = static_cast<std::int64_t>(window);
        *pickedHours_ = hours;
        present();
        asio::co_spawn(core_.main(), storeGraphWindow(core_.configuration(), pickedHours_, hours),
                       asio::detached);
    }

    using PickedHours = std::shared_ptr<std::optional<std::int64_t>>;

    /// Never touches the face, which may be gone by then.
    static asio::awaitable<void> storeGraphWindow(ConfigurationManager& configuration, PickedHours picked,
                                                  std::int64_t hours)
    {
        AppSettings settings = configuration.settings();
        settings.graphTimeWindowHours = hours;
        const auto saved =
            co_await configuration.changeSettings(configuration.settings(), std::move(settings));
        if (!saved)
            applicationLog.warning("The graph's time window could not be stored: " + saved.error().message);
        else if (*picked == hours)
            picked->reset();
    }

    void carryOut(MenuCommand command)
    {
        switch (command) {
        case MenuCommand::graphWindow1:
        case MenuCommand::graphWindow3:
        case MenuCommand::graphWindow6:
        case MenuCommand::graphWindow12:
        case MenuCommand::graphWindow24:
            if (const auto window = graphTimeWindow(command))
                pickGraphWindow(*window);
            break;
        case MenuCommand::none:
        case MenuCommand::installUpdate: break;
        case MenuCommand::showTerms: terms_.show(); break;
        case MenuCommand::finishSetup: onboarding_.showOnboarding(); break;
        case MenuCommand::showSettings: settingsWindow_.show(); break;
        case MenuCommand::showInsights: insights_.show(); break;
        case MenuCommand::showGraph: item_.showMenu(QCursor::pos()); break;
        case MenuCommand::refresh:
            asio::co_spawn(core_.main(), core_.coordinator().refreshNow(), asio::detached);
            break;
        case MenuCommand::reconnect: core_.coordinator().reconnect(); break;
        case MenuCommand::signIn: signIn(); break;
        case MenuCommand::snooze30Minutes: core_.coordinator().snoozeAlerts(30min); break;
        case MenuCommand::snooze2Hours: core_.coordinator().snoozeAlerts(2h); break;
        case MenuCommand::resumeAlerts: core_.coordinator().resumeAlerts(); break;
        case MenuCommand::quit: QCoreApplication::quit(); break;
        }
    }

    Core& core_;
    OnboardingController onboarding_;
    TermsController terms_;
    SignInController signIn_;
    InsightsController insights_;
    InsightsReportController report_;
    SettingsController settingsWindow_;
    StatusItem item_;
    SpokenStatusItem spokenItem_{[this] { item_.showMenu(QCursor::pos()); }};
    /// Of the graph's window, until the settings have them.
    PickedHours pickedHours_ = std::make_shared<std::optional<std::int64_t>>();
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
    installTranslations(QLocale::system());
    installSpokenWidgets();

    // They wait for the event loop from here on, so that what was made goes again.
    const UnixSignals signals{endingSignals, [](int) { QCoreApplication::quit(); }};
    auto core = Core::make({.demo = options.demo,
                            .demoScenario = options.demoScenario,
                            .postsAlerts = true,
                            .sharing = SharingKind::application});
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
        if (options.icon || options.panel)
            fmt::print(stderr,
                       "Tidewell runs already; --icon and --panel take effect when it has "
                       "ended and is started again.\n");
        return ExitCode::good;
    }
    {
        Face face{**core, options};
        if (instance)
            (*instance)->onWord([&face, &core](InstanceWord word) {
                switch (word) {
                case InstanceWord::activate: face.reopen(); break;
                case InstanceWord::configurationChanged: (*core)->reloadConfiguration(); break;
                case InstanceWord::snoozeChanged: (*core)->reloadDefaults(); break;
                case InstanceWord::historyChanged: (*core)->reloadHistory(); break;
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
