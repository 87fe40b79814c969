#include "program/SettingsController.h"

#include "platform/linux/DesktopHelper.h"
#include "platform/linux/NotificationSettings.h"
#include "program/DoctorFindings.h"
#include "program/HistoryStorage.h"

namespace tidewell {

namespace {

SettingsFacts factsOf(const Core& core)
{
    const Environment& environment = core.environment();
    const auto text = [](const std::filesystem::path& path) { return QString::fromStdString(path.string()); };
    return {.version = QStringLiteral(TIDEWELL_VERSION),
            .configurationFile = text(environment.document()),
            .historyFolder = text(historyRoot(environment.folders)),
            .stateFile = text(environment.defaults()),
            .secretsFile = text(environment.keychainFile),
            .isDemonstration = core.isDemonstration(),
            .canOpenNotificationSettings = canOpenNotificationSettings()};
}

}  // namespace

SettingsController::SettingsController(Core& core, Places places) : core_{core}, places_{std::move(places)} {}

SettingsController::~SettingsController()
{
    observer_.reset();
    delete window_;
}

void SettingsController::show(SettingsTab tab)
{
    if (!window_)
        make();
    window_->open(tab);
}

void SettingsController::show()
{
    if (window_)
        window_->bringToFront();
    else
        show(SettingsTab::general);
}

void SettingsController::make()
{
    model_ = std::make_unique<SettingsModel>(SettingsModel::Services{
        .main = core_.main(),
        .workers = core_.workers(),
        .clock = core_.clock(),
        .configuration = core_.configuration(),
        .statusBarViewModel = core_.viewModel(),
        .coordinator = core_.coordinator(),
        .history = core_.history(),
        .alertDelivery = core_.alertDelivery(),
        .loginItem = core_.loginItem(),
        .look = [this] { return look(); },
    });
    SettingsModel& model = *model_;
    window_ = new SettingsWindow{
        factsOf(core_),
        {.changed = [&model](AppSettings wanted) { model.change(std::move(wanted)); },
         .startAtLoginChanged = [&model](bool starts) { model.setStartAtLogin(starts); },
         .sendTestAlert = [&model] { model.sendTestAlert(); },
         .openNotificationSettings = [] { openNotificationSettings(); },
         .enableHistory = [&model](std::int64_t days) { model.enableHistory(days); },
         .pauseHistory = [&model] { model.pauseHistory(); },
         .historyRetentionChanged = [&model](std::int64_t days) { model.setHistoryRetention(days); },
         .deleteHistory = [&model](bool everyAccount) { model.deleteHistory(everyAccount); },
         .signIn = [this] { places_.signIn(); },
         .reconnect = [&model] { model.reconnect(); },
         .signOut = [&model](bool deletesHistory) { model.signOut(deletesHistory); },
         .showTerms = [this] { places_.terms(); },
         .showInsights = [this] { places_.insights(); },
         .lookAgain =
             [this] {
                 if (model_)  // A window that has just closed may still be told that it comes to the front.
                     model_->refresh();
             },
         .closed = [this] { closed(); }}};
    observer_ = model.observe([this] {
        if (window_)
            window_->present(model_->state());
    });
    model.refresh();
    window_->present(model.state());
}

void SettingsController::closed()
{
    observer_.reset();
    if (window_)
        std::exchange(window_, nullptr)->deleteLater();
    // Not under the feet of the call that closed the window.
    asio::post(core_.main(), [gone = std::shared_ptr<SettingsModel>{std::move(model_)}] {});
}

asio::awaitable<std::vector<AlertFinding>> SettingsController::look()
{
    const StatusBarState& shown = core_.viewModel().state();
    AlertHealthFacts facts{.zone = TimeZone::current(),
                           .settings = core_.configuration().settings(),
                           .snoozedUntil = shown.alertsSnoozedUntil,
                           .hasAccount = core_.configuration().account().has_value()};
    if (!shown.glucoseHistory.empty())
        facts.newestReading = shown.glucoseHistory.back().date;
    const std::optional<ErrorInfo> problem = shown.currentError;
    const std::optional<std::string> bookkeeping = shown.bookkeepingProblem;
    const GlucoseHistoryStatus history = core_.history().status();
    Core& core = core_;
    facts.path = co_await core.lookAtAlertPath();
    const auto statusArea = co_await statusAreaFromHelper(desktopHelperProgram, statusAreaDeadline);
    facts.now = core.clock().now();
    auto findings = alertFindings(facts);
    if (problem && problem->needsSetup)
        addSetupFinding(findings);
    else if (problem && problem->needsTerms)
        addTermsFinding(findings);
    else if (problem)
        replaceAccountFinding(findings, *problem);
    if (bookkeeping)
        addBeforeGood(findings, bookkeepingFinding(*bookkeeping));
    if (statusArea)
        addBeforeGood(findings, statusAreaFinding(*statusArea));
    if (facts.hasAccount)
        addBeforeGood(findings, savedHistoryFinding(history.configuration, history.problem));
    co_return findings;
}

}  // namespace tidewell
