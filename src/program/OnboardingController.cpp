#include "program/OnboardingController.h"

#include <QLocale>

#include "app/AccountCheck.h"
#include "platform/linux/NotificationSettings.h"

namespace tidewell {

std::string systemCountry() { return QLocale::territoryToCode(QLocale::system().territory()).toStdString(); }

OnboardingController::OnboardingController(Core& core) : core_{core} {}

OnboardingController::~OnboardingController()
{
    observer_.reset();
    delete window_;
}

void OnboardingController::showOnboarding()
{
    if (!flow_)
        makeFlow();
    if (!window_) {
        makeWindow();
        flow_->begin();
        window_->present(flow_->state());
    }
    window_->open();
}

void OnboardingController::makeFlow()
{
    flow_ = std::make_unique<OnboardingFlow>(OnboardingFlow::Services{
        .main = core_.main(),
        .engine = core_.engine(),
        .workers = core_.workers(),
        .clock = core_.clock(),
        .configuration = core_.configuration(),
        .defaults = core_.defaults(),
        .makeAPIClient =
            [this](const GlucoseAccountConfiguration& account) {
                return makeServiceClient(core_.clientParts(), account);
            },
        .askConnections =
            [this](const GlucoseAccountConfiguration& account) {
                return askConnections(core_.engine(), makeLibreLinkUpClient(core_.clientParts(), account));
            },
        .alertDelivery = core_.alertDelivery(),
        .lookAtAlertPath = [this] { return core_.lookAtAlertPath(); },
        .history = core_.history(),
        .loginItem = core_.loginItem(),
        .country = systemCountry(),
        .secretsFile = core_.environment().keychainFile.string(),
        .finished = [this] { finished(); },
    });
    observer_ = flow_->observe([this] {
        if (window_)
            window_->present(flow_->state());
    });
}

void OnboardingController::makeWindow()
{
    OnboardingWindow::Handlers handlers{
        .back = [this] { flow_->goBack(); },
        .forward = [this] { flow_->goForward(); },
        .termsAccepted = [this](bool accepted) { flow_->setTermsAccepted(accepted); },
        .accountEntered =
            [this](GlucoseAccountConfiguration account) { flow_->setAccount(std::move(account)); },
        .personChosen = [this](std::string patientID) { flow_->choosePerson(std::move(patientID)); },
        .tryAgain = [this] { flow_->tryAgain(); },
        .settingsChanged = [this](AppSettings settings) { flow_->setSettings(std::move(settings)); },
        .sendTestAlert = [this] { flow_->sendTestAlert(); },
        .testAlertAnswered = [this](bool seen) { flow_->answerTestAlert(seen); },
        .savesHistoryChanged = [this](bool saves) { flow_->setSavesHistory(saves); },
        .startsAtLoginChanged = [this](bool starts) { flow_->setStartsAtLogin(starts); },
        .activated =
            [this] {
                if (window_)
                    flow_->begin();
            },
        .closed =
            [this] {
                flow_->close();
                if (window_)
                    std::exchange(window_, nullptr)->deleteLater();
            },
    };
    if (canOpenNotificationSettings())
        handlers.openNotificationSettings = [] { openNotificationSettings(); };
    window_ = new OnboardingWindow{std::move(handlers)};
}

void OnboardingController::finished()
{
    if (window_)
        window_->close();
    core_.storedStateDidChange();
    // Who has just finished waits for the value, not for the schedule.
    asio::co_spawn(core_.main(), core_.coordinator().refreshNow(), asio::detached);
}

}  // namespace tidewell
