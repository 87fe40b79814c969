#include "ui/OnboardingWindow.h"

#include <gtest/gtest.h>
#include <QApplication>
#include <QCheckBox>
#include <QComboBox>
#include <QKeyEvent>
#include <QLabel>
#include <QLineEdit>
#include <QListWidget>
#include <QProgressBar>
#include <QPushButton>
#include <QRadioButton>
#include <QScrollArea>
#include <QScrollBar>
#include <QTimer>
#include <array>

#include "config/ThresholdOptions.h"
#include "statusbar/ReadingPresentation.h"
#include "ui/Announcer.h"
#include "ui/Translations.h"
#include "ui/WindowWalk.h"

namespace tidewell {
namespace {

using Step = OnboardingStep;
using Answer = OnboardingState::TestAlertAnswer;

constexpr Date now = dateFromUnix(1'780'000'000);
constexpr std::array allSteps{Step::welcome, Step::terms,  Step::account, Step::person, Step::firstReading,
                              Step::glucose, Step::alerts, Step::history, Step::login,  Step::done};
const std::vector<LibreConnection> people{{"id-ada", "Ada", "Muster"}, {"id-ben", "Ben"}};
const SignInProblem refusal{.title = "The sign-in was refused",
                            .message = "<b>Authentication failed</b>",
                            .causes = {"The password was mistyped.", "The region is another one."},
                            .remedy = "Correct what may be wrong and try again."};

OnboardingState stateOf(Step step, GlucoseProvider provider = GlucoseProvider::libreLinkUp)
{
    OnboardingState state{.step = step,
                          .path = {allSteps.begin(), allSteps.end()},
                          .canGoBack = step != Step::welcome,
                          .canGoForward = true,
                          .account = {.provider = provider, .username = "ada@example.org", .region = "us"},
                          .hasPassword = true,
                          .now = now};
    if (provider == GlucoseProvider::libreLinkUp) {
        state.people = people;
        state.patientID = "id-ada";
    } else {
        std::erase(state.path, Step::person);
    }
    if (step >= Step::firstReading)
        state.firstReading = makeReading(118, "FortyFiveUp", now - Seconds{120}, Seconds{300}, provider);
    return state;
}

class OnboardingWindowTest : public testing::Test {
protected:
    OnboardingWindowTest() { make(); }

    void make()
    {
        window = std::make_unique<OnboardingWindow>(OnboardingWindow::Handlers{
            .back = [this] { ++wentBack; },
            .forward = [this] { ++wentForward; },
            .termsAccepted = [this](bool on) { switched.push_back(on); },
            .accountEntered = [this](GlucoseAccountConfiguration one) { entered.push_back(std::move(one)); },
            .personChosen = [this](std::string id) { chosen.push_back(std::move(id)); },
            .tryAgain = [this] { ++triedAgain; },
            .settingsChanged = [this](AppSettings one) { settings.push_back(std::move(one)); },
            .sendTestAlert = [this] { ++testAlerts; },
            .testAlertAnswered = [this](bool seen) { switched.push_back(seen); },
            .openNotificationSettings = [this] { ++openedSettings; },
            .savesHistoryChanged = [this](bool on) { switched.push_back(on); },
            .startsAtLoginChanged = [this](bool on) { switched.push_back(on); },
            .activated = [this] { ++activated; },
            .closed = [this] { ++closed; }});
    }
    void show(const OnboardingState& state)
    {
        window->present(state);
        window->open();
    }
    void press(int key, const QString& text = {})
    {
        QWidget* const target = window->focusWidget() ? window->focusWidget() : window.get();
        QKeyEvent down{QEvent::KeyPress, key, Qt::NoModifier, text};
        QKeyEvent up{QEvent::KeyRelease, key, Qt::NoModifier, text};
        QApplication::sendEvent(target, &down);
        QApplication::sendEvent(target, &up);
    }
    void type(const QString& text)
    {
        for (const QChar c : text)
            press(0, QString{c});
    }
    template <class Widget>
    Widget* find(const QString& name)
    {
        for (Widget* one : window->findChildren<Widget*>()) {
            if (!one->isVisible())
                continue;
            if constexpr (std::is_base_of_v<QAbstractButton, Widget>) {
                if (one->text().remove(u'&') == name)
                    return one;
            } else if (one->accessibleName() == name) {
                return one;
            }
        }
        throw std::logic_error{"no such control: " + name.toStdString()};
    }
    bool has(const QString& button)
    {
        return std::ranges::any_of(window->findChildren<QPushButton*>(), [&](const QPushButton* one) {
            return one->isVisible() && one->text().remove(u'&') == button;
        });
    }
    bool shows(const QString& text)
    {
        return std::ranges::any_of(window->findChildren<QLabel*>(), [&](const QLabel* one) {
            return one->isVisible() && one->text().contains(text);
        });
    }

    std::unique_ptr<OnboardingWindow> window{};
    std::vector<GlucoseAccountConfiguration> entered{};
    std::vector<std::string> chosen{};
    std::vector<AppSettings> settings{};
    std::vector<bool> switched{};
    int wentBack = 0;
    int wentForward = 0;
    int triedAgain = 0;
    int testAlerts = 0;
    int openedSettings = 0;
    int activated = 0;
    int closed = 0;
};

TEST_F(OnboardingWindowTest, countsTheStepsOfItsPathAndGoesByEnterAndEscape)
{
    show(stateOf(Step::firstReading, GlucoseProvider::dexcom));
    EXPECT_TRUE(shows("Step 4 of 9"));
    show(stateOf(Step::firstReading));
    EXPECT_TRUE(shows("Step 5 of 10"));
    press(Qt::Key_Return);
    EXPECT_EQ(wentForward, 1);
    find<QPushButton>("Back")->click();
    EXPECT_EQ(wentBack, 1);

    OnboardingState stuck = stateOf(Step::terms);
    stuck.canGoForward = false;
    show(stuck);
    press(Qt::Key_Return);
    EXPECT_EQ(wentForward, 1) << "what is not allowed is not done by keyboard either";
    EXPECT_FALSE(find<QPushButton>("Continue")->isEnabled());
    show(stateOf(Step::done));
    find<QPushButton>("Finish")->click();
    EXPECT_EQ(wentForward, 2);
    press(Qt::Key_Escape);
    EXPECT_FALSE(window->isVisible());
    EXPECT_EQ(closed, 1);
    show(stateOf(Step::welcome));
    EXPECT_FALSE(has("Back"));
}

TEST_F(OnboardingWindowTest, anAccountIsTypedAndTheCursorStaysWhateverIsPresented)
{
    OnboardingState state = stateOf(Step::account, GlucoseProvider::dexcom);
    state.account = {.region = ""};
    state.hasPassword = false;
    state.canGoForward = false;
    show(state);
    type(" anna");
    ASSERT_EQ(entered.size(), 5U);
    EXPECT_EQ(entered.back().username, "anna");
    EXPECT_TRUE(entered.back().password.empty());
    const auto echo = [&] {
        state.account = entered.back();
        state.account.password = {};
        window->present(state);
    };
    echo();
    auto* const username = find<QLineEdit>("User name");
    username->setCursorPosition(2);
    window->present(state);
    EXPECT_EQ(username->text(), " anna") << "what is told back trimmed is not what is being typed";
    EXPECT_EQ(username->cursorPosition(), 2);
    press(Qt::Key_Tab);
    type(" pass ");
    EXPECT_EQ(entered.back().password.reveal(), " pass ");
    echo();
    EXPECT_EQ(find<QLineEdit>("Password")->text(), " pass ");
    state.canGoForward = true;
    window->present(state);
    press(Qt::Key_Return);
    EXPECT_EQ(wentForward, 1);

    entered.clear();
    find<QComboBox>("Glucose service")->setCurrentIndex(1);
    ASSERT_EQ(entered.size(), 1U) << "service and region change together";
    EXPECT_EQ(entered[0].provider, GlucoseProvider::libreLinkUp);
    EXPECT_FALSE(entered[0].region.empty());
    EXPECT_EQ(entered[0].username, "anna");

    entered.clear();
    state.account = {.provider = GlucoseProvider::dexcom, .username = "somebody.else", .region = "jp"};
    window->present(state);
    EXPECT_EQ(find<QLineEdit>("User name")->text(), "somebody.else");
    EXPECT_EQ(find<QComboBox>("Region of the account")->currentText(), "Japan");
    EXPECT_TRUE(find<QLineEdit>("Password")->text().isEmpty());
    EXPECT_TRUE(entered.empty()) << "what is shown is not entered";
}

TEST_F(OnboardingWindowTest, nothingSecretIsLeftBehind)
{
    const auto nothingIsLeft = [this](const char* after) {
        for (const QLineEdit* one : window->findChildren<QLineEdit*>()) {
            EXPECT_TRUE(one->text().isEmpty() || one->echoMode() == QLineEdit::Normal) << after;
            EXPECT_FALSE(one->text().contains("secret")) << after;
            EXPECT_FALSE(one->isUndoAvailable()) << after;
        }
    };
    show(stateOf(Step::account));
    find<QCheckBox>("Show password")->click();
    find<QLineEdit>("Password")->setText("secret");
    window->close();
    nothingIsLeft("closing");
    EXPECT_EQ(closed, 1);
    show(stateOf(Step::account));
    EXPECT_EQ(find<QLineEdit>("E-mail")->text(), "ada@example.org");
    EXPECT_EQ(find<QLineEdit>("Password")->echoMode(), QLineEdit::Password);
    find<QLineEdit>("Password")->setText("secret");
    show(stateOf(Step::person));
    nothingIsLeft("going on");
}

TEST_F(OnboardingWindowTest, whileBusyTheFieldsAreLockedAndTheFocusComesBack)
{
    OnboardingState state = stateOf(Step::account);
    show(state);
    auto* const password = find<QLineEdit>("Password");
    EXPECT_EQ(window->focusWidget(), password);
    type("x");
    state.isBusy = true;
    window->present(state);
    EXPECT_TRUE(window->findChild<QProgressBar*>()->isVisible());
    for (QWidget* field : std::initializer_list<QWidget*>{password, find<QComboBox>("Glucose service"),
                                                          find<QPushButton>("Continue")})
        EXPECT_FALSE(field->isEnabled());
    EXPECT_TRUE(find<QPushButton>("Back")->isEnabled());
    EXPECT_TRUE(find<QPushButton>("Close")->isEnabled());
    for (const int key : {Qt::Key_Return, Qt::Key_Space})
        press(key);
    EXPECT_EQ(wentForward + wentBack + closed, 0) << "no key does anything where the focus waits";
    state.isBusy = false;
    window->present(state);
    EXPECT_EQ(window->focusWidget(), password);

    state.isBusy = true;
    window->present(state);
    find<QPushButton>("Close")->setFocus();
    state.isBusy = false;
    window->present(state);
    EXPECT_EQ(window->focusWidget(), find<QPushButton>("Close")) << "the person has gone elsewhere";
}

TEST_F(OnboardingWindowTest, aProblemIsShownAsPlainTextOnceAndSpoken)
{
    OnboardingState state = stateOf(Step::account);
    show(state);
    state.problem = refusal;
    window->present(state);
    for (const QString& text : {"The sign-in was refused", "<b>Authentication failed</b>",
                                "The region is another one.", "Correct what may be wrong and try again."})
        EXPECT_TRUE(shows(text)) << text.toStdString();
    for (const QLabel* label : window->findChildren<QLabel*>())
        EXPECT_NE(label->textFormat(), Qt::RichText);
    EXPECT_EQ(window->focusWidget(), find<QLineEdit>("Password"));
    find<QPushButton>("Close")->setFocus();
    window->present(state);
    EXPECT_EQ(window->focusWidget(), find<QPushButton>("Close")) << "the same problem is no news";
    state.problem.reset();
    window->present(state);
    EXPECT_FALSE(shows("The sign-in was refused"));

    state = stateOf(Step::firstReading);
    state.firstReading.reset();
    state.problem = refusal;
    show(state);
    find<QPushButton>("Try again")->click();
    EXPECT_EQ(triedAgain, 1);
}

TEST_F(OnboardingWindowTest, enterAloneLeadsThroughAllStepsHoweverLongTheyTake)
{
    for (const GlucoseProvider provider : allGlucoseProviders) {
        wentForward = 0;
        int steps = 0;
        for (const Step step : allSteps) {
            OnboardingState state = stateOf(step, provider);
            if (std::ranges::count(state.path, step) == 0)
                continue;
            const testing::ScopedTrace trace{__FILE__, __LINE__, std::to_string(int(step))};
            state.termsAccepted = true;
            const auto work = [&] {
                state.isBusy = true;
                state.canGoForward = false;
                show(state);
                press(Qt::Key_Return);
                press(Qt::Key_Space);
                EXPECT_EQ(wentForward, steps) << "still at work";
                state.isBusy = false;
                state.canGoForward = true;
                window->present(state);
            };
            work();
            press(Qt::Key_Return);
            EXPECT_EQ(wentForward, ++steps);
            work();  // What the step is left with.
        }
        EXPECT_EQ(steps, provider == GlucoseProvider::dexcom ? 9 : 10);
        EXPECT_EQ(wentBack + closed, 0);
    }
}

TEST_F(OnboardingWindowTest, whatGoesFromUnderTheFocusLeadsOnAndNeverOut)
{
    OnboardingState state = stateOf(Step::alerts);
    show(state);
    find<QPushButton>("Send test alert")->setFocus();
    state.isSendingTestAlert = true;
    window->present(state);
    press(Qt::Key_Return);
    EXPECT_EQ(wentForward, 1) << "also while the test alert is under way";
    state.isSendingTestAlert = false;
    state.testAlertMessage = "Test alert sent.";
    state.testAlertAnswer = Answer::asked;
    window->present(state);
    EXPECT_EQ(window->focusWidget(), find<QPushButton>("Send test alert again"));
    for (const auto& [button, answer] : {std::pair{"Yes", Answer::seen}, std::pair{"No", Answer::notSeen}}) {
        state.testAlertAnswer = Answer::asked;
        window->present(state);
        find<QPushButton>(button)->setFocus();
        press(Qt::Key_Space);
        state.testAlertAnswer = answer;
        window->present(state);
        EXPECT_EQ(window->focusWidget(), find<QPushButton>("Continue")) << button;
    }

    state = stateOf(Step::firstReading);
    show(state);
    find<QPushButton>("Ask again")->setFocus();
    state.isBusy = true;
    state.canGoForward = false;
    window->present(state);
    state.isBusy = false;
    state.canGoForward = true;
    window->present(state);
    EXPECT_EQ(window->focusWidget(), find<QPushButton>("Continue"));

    // By Tab as well, Close comes last.
    for (const Step step : allSteps) {
        show(stateOf(step));
        find<QPushButton>(step == Step::done ? "Finish" : "Continue")->setFocus();
        press(Qt::Key_Tab);
        EXPECT_EQ(window->focusWidget(), find<QPushButton>("Close")) << int(step);
    }
}

TEST_F(OnboardingWindowTest, whereNobodySharesItIsCheckedAgain)
{
    OnboardingState state = stateOf(Step::person);
    state.people.clear();
    state.patientID.reset();
    state.isBusy = true;
    state.canGoForward = false;
    show(state);
    EXPECT_FALSE(has("Check again")) << "it is being asked";
    const auto answer = [&](std::vector<LibreConnection> found) {
        state.isBusy = false;
        state.people = std::move(found);
        state.problem.reset();
        if (state.people.empty())
            state.problem = nobodySharesProblem();
        window->present(state);
    };
    for (int checks = 1; checks <= 2; ++checks) {
        answer({});
        EXPECT_EQ(window->focusWidget(), find<QPushButton>("Check again"));
        press(Qt::Key_Return);
        EXPECT_EQ(triedAgain, checks);
        state.isBusy = true;
        state.problem.reset();
        window->present(state);
    }
    answer(people);
    EXPECT_FALSE(has("Check again"));
    EXPECT_EQ(window->focusWidget(), window->findChild<QListWidget*>());
    EXPECT_EQ(wentForward + wentBack, 0);
}

TEST_F(OnboardingWindowTest, whatCouldNotBeStoredIsTriedAgainByGoingOn)
{
    for (const Step step : {Step::firstReading, Step::glucose, Step::alerts, Step::history, Step::login}) {
        OnboardingState state = stateOf(step);
        show(state);
        state.problem = SignInProblem{.title = "It could not be saved", .remedy = "Make room and try again."};
        state.isProblemOfStoring = true;
        window->present(state);
        EXPECT_EQ(window->focusWidget(), find<QPushButton>("Continue")) << int(step);
        EXPECT_FALSE(has("Try again"));
        EXPECT_EQ(has("Ask again"), step == Step::firstReading);
    }
}

TEST_F(OnboardingWindowTest, allFieldsOfTheAccountAreInSightBesideEachProblem)
{
    using Kind = GlucoseAPIError::Kind;
    const auto inSight = [this](const QWidget* field) {
        const QWidget* const view = window->findChild<QScrollArea*>()->viewport();
        return view->rect().contains(
            QRect{field->mapTo(window.get(), QPoint{}) - view->mapTo(window.get(), QPoint{}), field->size()});
    };
    for (const GlucoseProvider provider : allGlucoseProviders) {
        const QString intro = provider == GlucoseProvider::dexcom ? "Use the account that publishes"
                                                                  : "Use a follower's account";
        for (const Kind kind :
             {Kind::transport, Kind::credentialsRefused, Kind::accountLocked, Kind::sessionExpired,
              Kind::rateLimited, Kind::accountActionRequired, Kind::serverTrouble, Kind::other}) {
            const testing::ScopedTrace trace{__FILE__, __LINE__, std::to_string(int(kind))};
            make();
            OnboardingState state = stateOf(Step::account, provider);
            show(state);
            QApplication::processEvents();
            EXPECT_TRUE(shows(intro));
            state.problem = signInProblem(provider, {.kind = kind, .text = "It did not work."}, "ada");
            window->present(state);
            QApplication::processEvents();
            saveScreenshot(*window, QString{"onboarding-problem-%1-%2"}.arg(int(provider)).arg(int(kind)));
            EXPECT_FALSE(shows(intro)) << "the causes say it";
            for (const QWidget* field : std::initializer_list<QWidget*>{find<QComboBox>("Glucose service"),
                                                                        find<QLineEdit>("Password"),
                                                                        find<QCheckBox>("Show password")})
                EXPECT_TRUE(inSight(field)) << field->metaObject()->className();
            EXPECT_EQ(window->focusWidget(), find<QLineEdit>("Password"));
            window->resize(window->width(), window->height() / 2);
            QApplication::processEvents();
            EXPECT_TRUE(inSight(find<QLineEdit>("Password"))) << "in a small window as well";
        }
    }
}

TEST_F(OnboardingWindowTest, aPersonIsChosenByKeyboard)
{
    OnboardingState state = stateOf(Step::person);
    state.patientID.reset();
    show(state);
    QApplication::processEvents();
    auto* const list = window->findChild<QListWidget*>();
    EXPECT_TRUE(list->selectedItems().isEmpty());
    const QString hint = "Choose a person to go on.";
    EXPECT_TRUE(shows(hint));
    EXPECT_EQ(list->accessibleDescription(), hint);
    const auto rows = [&] { return list->viewport()->grab().toImage(); };
    const QImage nobody = rows();
    list->clearFocus();
    const QSize row = list->visualItemRect(list->item(0)).adjusted(3, 3, -3, -3).size();
    EXPECT_EQ(rows().copy({{3, 3}, row}), nobody.copy({{3, 3}, row})) << "the first row looks chosen";
    EXPECT_NE(rows(), nobody) << "where is the focus?";
    list->setFocus();
    press(Qt::Key_Return);
    EXPECT_EQ(wentForward, 0) << "it chooses first";
    EXPECT_FALSE(shows(hint));
    EXPECT_EQ(list->accessibleDescription(), "");
    press(Qt::Key_Down);
    EXPECT_EQ(chosen, (std::vector<std::string>{"id-ada", "id-ben"}));
    press(Qt::Key_Return);
    EXPECT_EQ(wentForward, 1);
    state.patientID = "id-ben";
    window->present(state);
    EXPECT_EQ(list->currentRow(), 1);
    EXPECT_EQ(chosen.size(), 2U);
}

TEST_F(OnboardingWindowTest, theKeyIsWhereSecretsAreKept)
{
    OnboardingState state = stateOf(Step::history);
    show(state);
    EXPECT_TRUE(shows("in your keyring"));
    state.secretsFile = "/home/ada/keychain.json";
    window->present(state);
    EXPECT_FALSE(shows("keyring"));
    EXPECT_TRUE(shows("/home/ada/keychain.json"));
}

TEST_F(OnboardingWindowTest, tellsWhenItComesToTheFront)
{
    show(stateOf(Step::alerts));
    QApplication::processEvents();
    activated = 0;
    QWidget other;
    other.show();
    other.activateWindow();
    QApplication::processEvents();
    window->open();
    QApplication::processEvents();
    EXPECT_EQ(activated, 1);
}

TEST_F(OnboardingWindowTest, theFirstValueIsNeverShownAsNewerThanItIs)
{
    struct Case {
        double age;
        const char* unit;
        QString title;
        QString words;
        bool hasUnit;
    };
    for (const Case& each : {Case{30, "mg/dL", "118 ↗", "Measured just now.", true},
                             Case{899, "mmol/L", "6.6 ↗", "Measured 14 minutes ago.", true},
                             Case{900, "mg/dL", "118 ?", "This value is old", true},
                             Case{3599, "mmol/L", "6.6 ?", "Measured 59 minutes ago.", true},
                             Case{3600, "mg/dL", "-- ?", "Measured 1 hour ago.", false},
                             Case{-200, "mg/dL", "118 ↗", "Measured just now.", true}}) {
        OnboardingState state = stateOf(Step::firstReading);
        state.firstReading->date = now - Seconds{each.age};
        state.settings.measurementUnit = each.unit;
        show(state);
        EXPECT_TRUE(shows(each.title)) << each.age;
        EXPECT_TRUE(shows(each.words)) << each.age;
        EXPECT_EQ(shows(each.unit), each.hasUnit) << each.age;
        EXPECT_TRUE(shows("Ada Muster"));
    }
}

TEST_F(OnboardingWindowTest, offersExactlyTheThresholdsOfTheUnit)
{
    const auto codes = [this](const QString& name) {
        std::vector<double> values;
        const auto* const box = find<QComboBox>(name);
        for (int i = 0; i < box->count(); ++i)
            values.push_back(box->itemData(i).toDouble());
        return values;
    };
    OnboardingState state = stateOf(Step::glucose);
    state.settings.lowGlucoseThreshold = 77.5;
    show(state);
    EXPECT_EQ(codes("Low threshold").size(), 26U);
    EXPECT_EQ(codes("High threshold").size(), 253U);
    EXPECT_EQ(find<QComboBox>("Low threshold")->currentText(), "77 mg/dL");
    EXPECT_TRUE(settings.empty());

    find<QRadioButton>("mmol/L")->click();
    ASSERT_EQ(settings.size(), 1U);
    AppSettings expected = state.settings;
    expected.measurementUnit = "mmol/L";
    expected.lowGlucoseThreshold = 77;
    EXPECT_EQ(settings.back(), expected);
    EXPECT_EQ(codes("Low threshold").size(), 15U);
    EXPECT_EQ(codes("High threshold").size(), 141U);
    EXPECT_EQ(find<QComboBox>("Low threshold")->currentText(), "4.3 mmol/L");

    state.settings = settings.back();
    window->present(state);
    find<QComboBox>("High threshold")->setFocus();
    press(Qt::Key_Home);
    EXPECT_EQ(settings.back().highGlucoseThreshold, 108);
    for (const auto& [name, kind] :
         {std::pair{"Low threshold", ThresholdKind::low}, std::pair{"High threshold", ThresholdKind::high}}) {
        const auto offered = codes(name);
        const auto options = thresholdOptions(kind, true);
        EXPECT_TRUE(std::ranges::equal(offered, options, {}, {}, &ThresholdOption::mgdL)) << name;
    }
}

TEST_F(OnboardingWindowTest, eachAlertSwitchChangesItsOwnSetting)
{
    OnboardingState state = stateOf(Step::alerts);
    show(state);
    const std::array<std::pair<QString, bool AppSettings::*>, 5> rows{
        {{"Low glucose", &AppSettings::alertOnLowThreshold},
         {"High glucose", &AppSettings::alertOnHighThreshold},
         {"Rapid fall", &AppSettings::alertOnRapidFall},
         {"Rapid rise", &AppSettings::alertOnRapidRise},
         {"No data for 15 minutes", &AppSettings::alertOnMissingData}}};
    for (const auto& [title, field] : rows) {
        find<QCheckBox>(title)->click();
        AppSettings expected = state.settings;
        expected.*field = false;
        EXPECT_EQ(settings.back(), expected) << title.toStdString();
        window->present(state);
    }
    state.settings.alertOnLowThreshold = false;
    window->present(state);
    EXPECT_TRUE(shows("Low alerts are off: a low is not announced."));
    EXPECT_FALSE(shows("Alerts are switched off altogether."));

    state = stateOf(Step::alerts);
    state.settings.alertsEnabled = false;
    window->present(state);
    EXPECT_TRUE(shows("Alerts are off: a low is not announced."));
    EXPECT_TRUE(shows("Alerts are switched off altogether."));
    for (const auto& [title, field] : rows)
        EXPECT_FALSE(find<QCheckBox>(title)->isChecked());
    find<QCheckBox>("High glucose")->click();
    EXPECT_TRUE(settings.back().alertsEnabled && settings.back().alertOnHighThreshold);
    EXPECT_FALSE(settings.back().alertOnLowThreshold) << "what was shown as off stays off";
}

TEST_F(OnboardingWindowTest, aTestAlertAsksWhetherItWasSeenAndSaysWhatMayKeepItAway)
{
    OnboardingState state = stateOf(Step::alerts);
    show(state);
    EXPECT_FALSE(has("Yes"));
    find<QPushButton>("Send test alert")->click();
    EXPECT_EQ(testAlerts, 1);
    state.isSendingTestAlert = true;
    window->present(state);
    EXPECT_FALSE(find<QPushButton>("Sending test alert")->isEnabled());
    state.isSendingTestAlert = false;
    state.testAlertMessage = "Test alert sent.";
    state.testAlertAnswer = Answer::asked;
    state.alertFindings = {{.severity = AlertFinding::Severity::caution,
                            .subject = "doNotDisturb",
                            .text = "Do not disturb is on.",
                            .remedy = "Switch it off."}};
    window->present(state);
    EXPECT_TRUE(shows("Test alert sent."));
    EXPECT_FALSE(shows("Do not disturb is on."));
    find<QPushButton>("Yes")->click();
    find<QPushButton>("No")->click();
    EXPECT_EQ(switched, (std::vector<bool>{true, false}));

    state.testAlertAnswer = Answer::notSeen;
    window->present(state);
    EXPECT_FALSE(has("Yes"));
    EXPECT_TRUE(shows("Do not disturb is on.\nSwitch it off."));
    state.alertFindings.clear();
    window->present(state);
    EXPECT_TRUE(shows("Nothing was found"));
    state.testAlertAnswer = Answer::none;
    state.alertFindings = {{.severity = AlertFinding::Severity::problem,
                            .subject = "notifications",
                            .text = "No notification server answers.",
                            .remedy = "Start one."},
                           {.severity = AlertFinding::Severity::caution, .text = "Quiet."}};
    state.authorization = NotificationAuthorizationState::denied;
    window->present(state);
    EXPECT_TRUE(shows("No notification server answers.\nStart one."));
    EXPECT_FALSE(shows("Quiet."));
    EXPECT_TRUE(shows("Notifications are disabled for Tidewell."));
    find<QPushButton>("Open notification settings")->click();
    EXPECT_EQ(openedSettings, 1);
}

TEST_F(OnboardingWindowTest, theOtherSwitchesTellWhatIsWantedAndShowWhatIs)
{
    const std::array<std::pair<Step, QString>, 3> rows{{{Step::terms, "I accept the terms of use"},
                                                        {Step::history, "Save readings on this computer"},
                                                        {Step::login, "Start Tidewell when I log in"}}};
    for (const auto& [step, title] : rows) {
        switched.clear();
        OnboardingState state = stateOf(step);
        show(state);
        EXPECT_FALSE(find<QCheckBox>(title)->isChecked());
        find<QCheckBox>(title)->click();
        window->present(state);
        EXPECT_FALSE(find<QCheckBox>(title)->isChecked()) << "what is so, not what was wished for";
        state.termsAccepted = state.savesHistory = state.startsAtLogin = true;
        window->present(state);
        EXPECT_TRUE(find<QCheckBox>(title)->isChecked());
        find<QCheckBox>(title)->setFocus();
        press(Qt::Key_Space);
        EXPECT_EQ(switched, (std::vector<bool>{true, false})) << title.toStdString();
    }
    OnboardingState state = stateOf(Step::login);
    state.loginItemProblem = "The folder cannot be written.";
    window->present(state);
    EXPECT_TRUE(shows("The folder cannot be written."));
    // Whoever thinks again at once is heard, and sees the last wish until it is known what is so.
    auto* const starts = find<QCheckBox>("Start Tidewell when I log in");
    starts->setFocus();
    switched.clear();
    press(Qt::Key_Space);
    state.isBusy = true;
    state.canGoForward = false;
    window->present(state);
    press(Qt::Key_Space);
    window->present(state);
    EXPECT_EQ(switched, (std::vector<bool>{true, false}));
    EXPECT_FALSE(starts->isChecked());
    EXPECT_EQ(window->focusWidget(), starts);
    state = stateOf(Step::done);
    state.settings.alertOnLowThreshold = false;
    show(state);
    EXPECT_TRUE(shows("Low alerts are off"));
}

TEST_F(OnboardingWindowTest, tellsScreenReadersOfWhatIsNewOnce)
{
    OnboardingState state = stateOf(Step::account);
    // What is said since the last time, by a notification or by a focus that begins to wait.
    const auto told = [&] {
        window->present(state);
        QApplication::processEvents();
        // What comes soon after is told with it: the time for that is over now.
        auto* const pause = window->findChild<QTimer*>(QString{}, Qt::FindDirectChildrenOnly);
        QTimerEvent over{pause->timerId()};
        QApplication::sendEvent(pause, &over);
        auto* const announcer = window->findChild<Announcer*>();
        QString words = announcer->accessibleName();
        announcer->setAccessibleName({});
        return words.toStdString();
    };
    const auto waitsFor = [this] { return window->focusWidget()->accessibleName().toStdString(); };
    show(state);
    EXPECT_EQ(told(), "") << "a window that opens says its name";
    EXPECT_EQ(window->accessibleName(), "Set up Tidewell. Step 3 of 10: Sign in");

    state.isBusy = true;
    EXPECT_EQ(told(), "");
    EXPECT_EQ(waitsFor(), "Working");
    state.isBusy = false;
    EXPECT_EQ(told(), "");
    find<QPushButton>("Close")->setFocus();
    state.isBusy = true;
    EXPECT_EQ(told(), "Working") << "the focus is elsewhere";
    EXPECT_EQ(told(), "");

    const auto reading = stateOf(Step::firstReading).firstReading;
    state = stateOf(Step::firstReading);
    state.firstReading.reset();
    state.isBusy = true;
    EXPECT_EQ(told(), "Step 5 of 10: The first value");
    EXPECT_EQ(waitsFor(), "Asking for the newest value…");
    state.isBusy = false;
    state.firstReading = reading;
    const std::string value = told();
    for (const char* part : {"118 milligrams per deciliter", "2 minutes ago", "Compare it with the phone"})
        EXPECT_TRUE(value.find(part) != std::string::npos) << value;
    state.now = state.now + Seconds{60};
    EXPECT_EQ(told(), "") << "that it gets older is no news";
    state.now = reading->date + staleAge;
    EXPECT_TRUE(told().find("This value is old") != std::string::npos) << "that it is old is";
    state.isBusy = true;
    state.now = now;
    told();
    state.isBusy = false;
    EXPECT_EQ(told(), value) << "it was asked for";
    state.isBusy = true;
    told();
    state.isBusy = false;
    state.isProblemOfStoring = true;
    state.problem = SignInProblem{.title = "It could not be saved"};
    EXPECT_EQ(told(), "") << "the problem is spoken by itself";

    window->present(stateOf(Step::glucose));
    state = stateOf(Step::alerts);
    EXPECT_EQ(told(), "Step 7 of 10: Alerts") << "one that was left at once is not said";
    find<QPushButton>("Send test alert")->setFocus();
    for (int i = 0; i < 2; ++i) {
        state.testAlertAnswer = Answer::none;
        state.isSendingTestAlert = true;
        EXPECT_EQ(told(), "");
        EXPECT_EQ(waitsFor(), "Sending test alert");
        state.isSendingTestAlert = false;
        state.testAlertMessage = "Test alert sent.";
        state.testAlertAnswer = Answer::asked;
        EXPECT_EQ(told(), "Test alert sent.\nDid you see and hear it?");
        EXPECT_EQ(told(), "");
    }
    state.testAlertAnswer = Answer::seen;
    EXPECT_EQ(told(), "Good: that is how alerts reach you.");
    state.alertFindings = {
        {.severity = AlertFinding::Severity::problem, .text = "No server.", .remedy = "Start one."}};
    EXPECT_EQ(told(), "No server.\nStart one.");
    state.alertFindings.push_back({.severity = AlertFinding::Severity::problem, .text = "No sound."});
    EXPECT_EQ(told(), "No sound.");
    state.settings.alertOnLowThreshold = false;
    EXPECT_EQ(told(), "Low alerts are off: a low is not announced.");

    state = stateOf(Step::login);
    state.isBusy = true;
    EXPECT_EQ(told(), "Step 9 of 10: Start at login") << "what is so is not known yet";
    state.isBusy = false;
    state.startsAtLogin = true;
    EXPECT_EQ(told(), "Now: your desktop starts Tidewell when you log in.");
    for (int i = 0; i < 2; ++i) {
        state.isBusy = true;
        EXPECT_EQ(told(), "");
        state.isBusy = false;
        state.loginItemProblem = "The folder cannot be written.";
        EXPECT_EQ(told(), "The folder cannot be written.");
    }
    window->close();
    window->open();
    state = stateOf(Step::alerts);
    state.settings.alertsEnabled = false;
    EXPECT_TRUE(told().find("Alerts are off") != std::string::npos);
}

TEST_F(OnboardingWindowTest, theConsentIsReadOutWithItsSwitchAndTheUnitsWithTheirName)
{
    OnboardingState state = stateOf(Step::history);
    state.retentionDays = 30;
    show(state);
    const QString consent = find<QCheckBox>("Save readings on this computer")->accessibleDescription();
    for (const QString& part :
         {"It is up to you", "What: Each reading from now on", "Where: On this computer only",
          "How long: 30 days", "To stop: ", "To delete: "})
        EXPECT_TRUE(consent.contains(part)) << consent.toStdString();

    show(stateOf(Step::glucose));
    const auto* const radio = QAccessible::queryAccessibleInterface(find<QRadioButton>("mmol/L"));
    EXPECT_EQ(radio->parent()->role(), QAccessible::Grouping);
    EXPECT_EQ(radio->parent()->text(QAccessible::Name), "Unit");
    for (const QString& arrow : {"↓↓", "→", "↑↑"})
        EXPECT_TRUE(shows(arrow)) << arrow.toStdString();
}

/// Font and palette of the application, until the end of a test.
class Looks {
public:
    ~Looks()
    {
        QApplication::setFont(font_);
        QApplication::setPalette(palette_);
    }
    void setScale(double factor)
    {
        scale_ = factor;
        QFont font = font_;
        font.setPointSizeF(font.pointSizeF() * factor);
        QApplication::setFont(font);
    }
    [[nodiscard]] double scale() const { return scale_; }
    static void darken()
    {
        QPalette dark{QColor{49, 54, 59}};
        dark.setColor(QPalette::Base, QColor{35, 38, 41});
        QApplication::setPalette(dark);
    }

private:
    QFont font_ = QApplication::font();
    QPalette palette_ = QApplication::palette();
    double scale_ = 1;
};

OnboardingState worst(OnboardingState state)
{
    state.problem = refusal;
    state.settings.measurementUnit = "mmol/L";
    state.settings.alertOnLowThreshold = false;
    state.settings.alertsEnabled = state.isBusy;
    state.authorization = NotificationAuthorizationState::denied;
    state.testAlertMessage = "Test alert sent.";
    state.testAlertAnswer = state.isBusy ? Answer::asked : Answer::notSeen;
    state.alertFindings = {{.severity = AlertFinding::Severity::problem,
                            .subject = "notifications",
                            .text = "The desktop has no notification server that answers.",
                            .remedy = "Install one, such as dunst or mako, and start it."}};
    state.loginItemProblem = "The folder for programs that start at login cannot be written.";
    if (state.firstReading)
        state.firstReading->date = now - Seconds{4000};
    return state;
}

TEST_F(OnboardingWindowTest, everyPageCanBeUsedInEveryStateSizeAndLanguage)
{
    Looks looks;
    const auto walk = [this, &looks](const OnboardingState& state, const QString& name) {
        const testing::ScopedTrace trace{__FILE__, __LINE__, name.toStdString()};
        make();
        show(state);
        window->resize(looks.scale() > 1 ? QSize{1024, 700} : window->size());
        QApplication::processEvents();
        EXPECT_LE(window->width(), 1024);
        EXPECT_LE(window->height(), 700);
        saveScreenshot(*window, "onboarding-" + name);
        for (const auto* area : window->findChildren<QScrollArea*>())
            EXPECT_FALSE(area->horizontalScrollBar()->isVisible());
        expectEveryControlNamed(*window);
        expectUniqueMnemonics(*window);
        expectNothingCut(*window);
        expectKeyboardReachesAll(*window);
    };
    std::vector<QString> languages = translatedLanguages();
    languages.emplace_back("pseudo");
    for (const double scale : {1.0, 2.0}) {
        looks.setScale(scale);
        for (const QString& language : languages) {
            const bool pseudo = language == "pseudo";
            const auto longer = pseudo ? std::make_unique<PseudoLanguage>() : nullptr;
            const auto spoken =
                pseudo || language == "en" ? nullptr : std::make_unique<SpokenLanguage>(language);
            for (const Step step : allSteps) {
                for (const GlucoseProvider provider : allGlucoseProviders) {
                    if (provider == GlucoseProvider::dexcom && step == Step::person)
                        continue;
                    const QString name = QString{"%1-%2-%3%4"}
                                             .arg(int(step), 2, 10, QChar{u'0'})
                                             .arg(provider == GlucoseProvider::dexcom ? "dexcom" : "libre")
                                             .arg(int(scale * 100))
                                             .arg(language == "en" ? "" : "-" + language);
                    OnboardingState state = stateOf(step, provider);
                    walk(state, name);
                    if (pseudo)
                        expectAllTranslated(
                            *window, {"ada@example.org", "Ada Muster", "Ben", "Dexcom Share", "LibreLinkUp"});
                    if (scale > 1)
                        walk(worst(state), name + "-worst");
                    state.isBusy = true;
                    walk(pseudo ? worst(state) : state, name + "-busy");
                }
            }
        }
    }
    looks.setScale(1);
    Looks::darken();
    for (const Step step : allSteps)
        walk(worst(stateOf(step)), QString{"%1-dark"}.arg(int(step), 2, 10, QChar{u'0'}));
}

}  // namespace
}  // namespace tidewell
