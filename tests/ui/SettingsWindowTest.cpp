#include "ui/SettingsWindow.h"

#include <gtest/gtest.h>
#include <QAbstractItemView>
#include <QApplication>
#include <QCheckBox>
#include <QClipboard>
#include <QComboBox>
#include <QDialog>
#include <QKeyEvent>
#include <QLabel>
#include <QLineEdit>
#include <QListWidget>
#include <QMessageBox>
#include <QPushButton>
#include <QScrollArea>
#include <QScrollBar>
#include <QTabBar>
#include <QTabWidget>
#include <QTimeEdit>
#include <QTimer>
#include <QWheelEvent>

#include "config/AppSettingsFields.h"
#include "config/AppSettingsKeys.h"
#include "config/ThresholdOptions.h"
#include "polling/PollFailure.h"
#include "ui/Announcer.h"
#include "ui/DisplayText.h"
#include "ui/WindowWalk.h"

namespace tidewell {
namespace {

const QStringList tabNames{QStringLiteral("general"), QStringLiteral("glucose"), QStringLiteral("insights"),
                           QStringLiteral("alerts"),  QStringLiteral("account"), QStringLiteral("about")};

GlucoseAccountConfiguration parent()
{
    return {.provider = GlucoseProvider::libreLinkUp,
            .username = "parent@example.com",
            .region = "de",
            .patientID = "c0ffee-1",
            .patientName = "Mia"};
}

/// Everything is well.
SettingsState wellState()
{
    SettingsState state;
    state.authorization = NotificationAuthorizationState::authorized;
    state.loginItem = LoginItemStatus{.isEnabled = true};
    state.account = parent();
    state.hasPassword = true;
    state.history.scope = HistoryScopeID::of(parent());
    state.history.configuration = {.isEnabled = true,
                                   .consentVersion = currentConsentVersion,
                                   .collectionStartedAt = dateFromIso("2026-03-02T08:00:00Z"),
                                   .hasPreviouslyEnabled = true};
    state.lookedAt =
        dateFromUnix(static_cast<double>(QDateTime{QDate::currentDate(), QTime{15, 30}}.toSecsSinceEpoch()));
    state.findings = {
        {.severity = AlertFinding::Severity::good, .subject = "alerts", .text = "Alerts are switched on."}};
    return state;
}

/// A state of the window that has to fit and to be reachable.
struct Scene {
    const char* name;
    SettingsState state;
};

std::vector<Scene> scenes()
{
    SettingsState busy = wellState();
    busy.settings.quietHoursEnabled = true;
    busy.isSendingTestAlert = busy.isChangingLoginItem = busy.isChangingHistory = busy.isChangingAccount =
        busy.isLooking = true;

    SettingsState trouble = wellState();
    trouble.settings.lowGlucoseThreshold = 77.5;
    trouble.settings.lowAlertRepeatMinutes = 7;
    trouble.settings.graphTimeWindowHours = 5;
    trouble.settings.quietHoursEnabled = true;
    trouble.settings.quietHoursEndMinutes = trouble.settings.quietHoursStartMinutes;
    trouble.saveProblem = "The disk is full.";
    trouble.silentLows = {{SilentLowCause::snooze, "Low alerts are snoozed until 15:30.", true}};
    trouble.alertProblem = "Alerts are not shown\nThere is no notification server.";
    trouble.authorization = NotificationAuthorizationState::denied;
    trouble.testAlertMessage = "Test alert could not be sent.";
    trouble.loginItemProblem = "The folder of the entry cannot be written.";
    trouble.history.problem = GlucoseHistoryError::keychainFailure;
    trouble.historyMessage = "History saving is off, but deletion is incomplete.";
    trouble.historyFailed = true;
    trouble.hasPassword = false;
    trouble.accountProblem = ErrorInfo{.title = "Authentication failed",
                                       .message = "The service refuses the password.",
                                       .remediation = "Sign in again.",
                                       .needsSignIn = true};
    trouble.accountMessage = "The keyring did not answer.";
    for (const auto severity : {AlertFinding::Severity::problem, AlertFinding::Severity::caution,
                                AlertFinding::Severity::note, AlertFinding::Severity::good})
        trouble.findings.push_back({.severity = severity,
                                    .subject = "volume",
                                    .text = "The sound is muted: alerts are silent.",
                                    .remedy = "Switch the sound of the computer on."});
    std::ranges::sort(trouble.findings, {}, &AlertFinding::severity);
    return {{"well", wellState()}, {"busy", busy}, {"trouble", trouble}, {"empty", {}}};
}

class SettingsWindowTest : public testing::Test {
protected:
    SettingsWindowTest() { makeWindow(); }

    void makeWindow()
    {
        SettingsFacts facts{.version = QStringLiteral("0.1.0"),
                            .configurationFile = QStringLiteral("/home/1/.2/3/4.5"),
                            .historyFolder = QStringLiteral("/home/1/.6/7/8/9"),
                            .stateFile = QStringLiteral("/home/1/.6/7/0"),
                            .secretsFile = secretsFile,
                            .isDemonstration = isDemonstration,
                            .canOpenNotificationSettings = true};
        const auto note = [this](const char* call) {
            return [this, call] { calls << QString::fromLatin1(call); };
        };
        window = std::make_unique<SettingsWindow>(
            facts,
            SettingsWindow::Handlers{
                .changed = [this](AppSettings settings) { told.push_back(std::move(settings)); },
                .startAtLoginChanged =
                    [this](bool on) { calls << (on ? QStringLiteral("start") : QStringLiteral("noStart")); },
                .sendTestAlert = note("test"),
                .openNotificationSettings = note("openSettings"),
                .enableHistory =
                    [this](std::int64_t days) { calls << QStringLiteral("enable %1").arg(days); },
                .pauseHistory = note("pause"),
                .historyRetentionChanged =
                    [this](std::int64_t days) { calls << QStringLiteral("keep %1").arg(days); },
                .deleteHistory =
                    [this](bool all) {
                        calls << (all ? QStringLiteral("deleteAll") : QStringLiteral("delete"));
                    },
                .signIn = note("signIn"),
                .reconnect = note("reconnect"),
                .signOut =
                    [this](bool history) {
                        calls << (history ? QStringLiteral("signOut+") : QStringLiteral("signOut"));
                    },
                .showTerms = note("terms"),
                .showInsights = note("insights"),
                .lookAgain = note("look"),
                .closed = note("closed")});
    }

    void show(SettingsTab tab, const SettingsState& state)
    {
        window->present(state);
        window->open(tab);
        QApplication::setActiveWindow(window.get());
        calls.clear();
        told.clear();
    }
    template <class Widget>
    Widget& widget(const char* name)
    {
        auto* const found = window->findChild<Widget*>(QString::fromLatin1(name));
        if (!found)
            throw std::logic_error{name};
        return *found;
    }
    QPushButton& button(const char* name) { return widget<QPushButton>(name); }
    QString words(const char* name)
    {
        QStringList all;
        auto& from = widget<QWidget>(name);
        if (const auto* label = qobject_cast<QLabel*>(&from))
            all << label->text();
        for (const auto* label : from.findChildren<QLabel*>())
            all << label->text();
        return from.isVisible() ? all.join(u'\n').trimmed() : QString{};
    }
    static void key(QWidget& receiver, int code, Qt::KeyboardModifiers modifiers = {},
                    const QString& text = {})
    {
        QKeyEvent down{QEvent::KeyPress, code, modifiers, text};
        QApplication::sendEvent(&receiver, &down);
        QKeyEvent up{QEvent::KeyRelease, code, modifiers, text};
        QApplication::sendEvent(&receiver, &up);
    }
    /// Picks an entry as a person does who walks there with the arrow keys.
    static void pick(QComboBox& box, int index)
    {
        box.setFocus();
        key(box, Qt::Key_Home);
        for (int i = 0; i < index; ++i)
            key(box, Qt::Key_Down);
    }
    QDialog* question() { return window->findChild<QDialog*>(); }
    void closeQuestion()
    {
        if (question())
            question()->close();
        QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
    }

    /// What a screen reader was told last.
    QString spoken() { return widget<QWidget>("announcer").accessibleName(); }

    QString secretsFile;  ///< Of the next window.
    bool isDemonstration = false;
    std::vector<AppSettings> told;
    QStringList calls;
    std::unique_ptr<SettingsWindow> window;
};

/// The names of the fields in which two settings differ.
QStringList differences(const AppSettings& a, const AppSettings& b)
{
    QStringList names;
    forEachAppSetting([&](const char* name, auto field) {
        if (a.*field != b.*field)
            names << QString::fromLatin1(name);
    });
    return names;
}

TEST_F(SettingsWindowTest, eachControlChangesItsFieldAlone)
{
    SettingsState state = wellState();
    state.settings.quietHoursEnabled = true;
    // What each control is set to, one after the other: from the state to something else.
    const auto tabOf = [](const QString& field) {
        if (field == u"graphTimeWindowHours")
            return SettingsTab::general;
        return field == u"measurementUnit" || field.endsWith(u"GlucoseThreshold") ? SettingsTab::glucose
                                                                                  : SettingsTab::alerts;
    };
    forEachAppSetting([&](const char* name, auto) {
        const QString field = QString::fromLatin1(name);
        if (field == u"startAtLogin")
            return;  // Told apart, since the desktop decides it.
        SCOPED_TRACE(name);
        show(tabOf(field), state);
        auto& control = widget<QWidget>(name);
        ASSERT_TRUE(control.isVisible() && control.isEnabled());
        if (qobject_cast<QCheckBox*>(&control)) {
            control.setFocus();
            key(control, Qt::Key_Space, {}, QStringLiteral(" "));
        } else if (auto* combo = qobject_cast<QComboBox*>(&control)) {
            combo->setFocus();
            key(control, combo->currentIndex() == 0 ? Qt::Key_Down : Qt::Key_Up);
        } else {
            control.setFocus();
            key(control, Qt::Key_Up);
        }
        ASSERT_EQ(told.size(), 1U);
        EXPECT_EQ(differences(told.front(), state.settings), QStringList{field});
        EXPECT_TRUE(calls.isEmpty()) << calls.join(u' ').toStdString();
        // And it shows what is stored when that is presented: the old value after a failure.
        window->present(state);
        EXPECT_EQ(told.size(), 1U);
    });
    show(SettingsTab::general, state);
    widget<QCheckBox>("startAtLogin").click();
    EXPECT_EQ(calls, QStringList{QStringLiteral("noStart")});
    EXPECT_TRUE(widget<QCheckBox>("startAtLogin").isChecked()) << "It shows what is so.";
    EXPECT_TRUE(told.empty());
}

TEST_F(SettingsWindowTest, showsEachStoredValue)
{
    SettingsState state = wellState();
    AppSettings& settings = state.settings;
    settings.graphTimeWindowHours = 12;
    settings.measurementUnit = "mmol/L";
    settings.lowGlucoseThreshold = 81;
    settings.highGlucoseThreshold = 180;
    settings.lowAlertRepeatMinutes = 20;
    settings.quietHoursStartMinutes = 61;
    settings.quietHoursEndMinutes = 1439;
    bool on = false;
    forEachAppSetting([&](const char*, auto field) {
        if constexpr (std::is_same_v<decltype(field), bool AppSettings::*>)
            settings.*field = on = !on;
    });
    show(SettingsTab::alerts, state);
    forEachAppSetting([&](const char* name, auto field) {
        if constexpr (std::is_same_v<decltype(field), bool AppSettings::*>) {
            if (std::string_view{name} != "startAtLogin")
                EXPECT_EQ(widget<QCheckBox>(name).isChecked(), settings.*field) << name;
        }
    });
    const auto shown = [this](const char* name) { return widget<QComboBox>(name).currentText(); };
    EXPECT_EQ(shown("graphTimeWindowHours"), u"12 hours");
    EXPECT_EQ(shown("measurementUnit"), u"mmol/L");
    EXPECT_EQ(shown("lowGlucoseThreshold"), u"4.5 mmol/L");
    EXPECT_EQ(shown("highGlucoseThreshold"), u"10.0 mmol/L");
    EXPECT_EQ(shown("lowAlertRepeatMinutes"), u"After 20 minutes");
    EXPECT_EQ(widget<QTimeEdit>("quietHoursStartMinutes").time(), QTime(1, 1));
    EXPECT_EQ(widget<QTimeEdit>("quietHoursEndMinutes").time(), QTime(23, 59));
    EXPECT_TRUE(told.empty() && calls.isEmpty());
}

TEST_F(SettingsWindowTest, offersTheOptionsAndNoOthers)
{
    SettingsState state = wellState();
    for (const bool mmolL : {false, true}) {
        state.settings.measurementUnit = mmolL ? "mmol/L" : "mg/dL";
        show(SettingsTab::glucose, state);
        for (const auto& [kind, name, count] :
             {std::tuple{ThresholdKind::low, "lowGlucoseThreshold", mmolL ? 15 : 26},
              std::tuple{ThresholdKind::high, "highGlucoseThreshold", mmolL ? 141 : 253}}) {
            SCOPED_TRACE(name);
            auto& box = widget<QComboBox>(name);
            const auto options = thresholdOptions(kind, mmolL);
            ASSERT_EQ(box.count(), count);
            ASSERT_EQ(options.size(), static_cast<std::size_t>(count));
            EXPECT_FALSE(box.isEditable());
            told.clear();
            for (int i = 0; i < count; ++i) {
                EXPECT_EQ(box.itemText(i).toStdString(), options[static_cast<std::size_t>(i)].label);
                EXPECT_EQ(box.itemData(i).toDouble(), options[static_cast<std::size_t>(i)].mgdL);
            }
            pick(box, 3);
            ASSERT_FALSE(told.empty());
            EXPECT_EQ(kind == ThresholdKind::low ? told.back().lowGlucoseThreshold
                                                 : told.back().highGlucoseThreshold,
                      options[3].mgdL);
        }
    }
    EXPECT_EQ(widget<QComboBox>("graphTimeWindowHours").count(), 6);
    EXPECT_EQ(widget<QComboBox>("lowAlertRepeatMinutes").count(), int{lowAlertRepeatMinuteOptions.size()});
}

TEST_F(SettingsWindowTest, saysWhatIsStoredWhenTheListCannotShowIt)
{
    SettingsState state = wellState();
    state.settings.lowGlucoseThreshold = 77.5;
    state.settings.highGlucoseThreshold = 400;
    show(SettingsTab::glucose, state);
    auto& low = widget<QComboBox>("lowGlucoseThreshold");
    EXPECT_EQ(low.currentText(), u"77 mg/dL");
    EXPECT_TRUE(words("lowGlucoseThresholdStored").startsWith(u"77.5 mg/dL is stored and in force."));
    EXPECT_EQ(widget<QComboBox>("highGlucoseThreshold").currentText(), u"360 mg/dL");
    EXPECT_TRUE(words("highGlucoseThresholdStored").contains(u"400 mg/dL"));
    // Another preference leaves it as it is, and picking the value that is shown replaces it.
    key(widget<QComboBox>("measurementUnit"), Qt::Key_Down);
    ASSERT_EQ(told.size(), 1U);
    EXPECT_EQ(told.back().lowGlucoseThreshold, 77.5);
    EXPECT_EQ(low.currentText(), u"4.3 mmol/L");
    window->present(state);
    low.setFocus();
    key(low, Qt::Key_Space, {}, QStringLiteral(" "));
    key(*low.view(), Qt::Key_Return);
    ASSERT_EQ(told.size(), 2U);
    EXPECT_EQ(told.back().lowGlucoseThreshold, 77);

    state.settings.lowAlertRepeatMinutes = 7;
    state.settings.graphTimeWindowHours = 5;
    show(SettingsTab::alerts, state);
    EXPECT_EQ(widget<QComboBox>("lowAlertRepeatMinutes").currentText(), u"After 5 minutes");
    EXPECT_TRUE(words("lowAlertRepeatMinutesStored").contains(u"After 7 minutes"));
    show(SettingsTab::general, state);
    EXPECT_EQ(widget<QComboBox>("graphTimeWindowHours").currentIndex(), 0);
    EXPECT_TRUE(words("graphStored").startsWith(u"5 hours is stored"));
}

TEST_F(SettingsWindowTest, leavesAloneWhatIsBeingEdited)
{
    SettingsState state = wellState();
    state.settings.quietHoursEnabled = true;
    show(SettingsTab::alerts, state);
    auto& from = widget<QTimeEdit>("quietHoursStartMinutes");
    auto* const line = from.findChild<QLineEdit*>();
    from.setFocus();
    line->setSelection(0, 2);
    key(from, Qt::Key_0, {}, QStringLiteral("0"));
    key(from, Qt::Key_5, {}, QStringLiteral("5"));
    const QString typed = line->text();
    ASSERT_NE(typed, QLocale{}.toString(QTime(22, 0), from.displayFormat()));
    EXPECT_TRUE(told.empty()) << "Nothing is told before the edit has ended.";
    SettingsState other = state;
    other.settings.quietHoursStartMinutes = 600;
    other.settings.alertOnHighThreshold = false;
    window->present(other);
    EXPECT_EQ(line->text(), typed);
    EXPECT_TRUE(from.hasFocus());
    key(from, Qt::Key_Escape);
    EXPECT_TRUE(window->isVisible()) << "Escape takes back what was typed first.";
    EXPECT_TRUE(told.empty());
    window->present(other);
    EXPECT_EQ(from.time(), QTime(10, 0));
    line->setSelection(0, 2);
    key(from, Qt::Key_0, {}, QStringLiteral("0"));
    key(from, Qt::Key_5, {}, QStringLiteral("5"));
    key(from, Qt::Key_Return);
    ASSERT_EQ(told.size(), 1U);
    EXPECT_EQ(told.back().quietHoursStartMinutes, 5 * 60);
    EXPECT_FALSE(told.back().alertOnHighThreshold);

    // A list that is open stays, and shows what is so when it closes.
    auto& repeat = widget<QComboBox>("lowAlertRepeatMinutes");
    repeat.showPopup();
    ASSERT_TRUE(repeat.view()->isVisible());
    other.settings.lowAlertRepeatMinutes = 30;
    window->present(other);
    EXPECT_TRUE(repeat.view()->isVisible());
    EXPECT_EQ(repeat.currentText(), u"Never");
    repeat.hidePopup();
    QCoreApplication::processEvents();
    EXPECT_EQ(repeat.currentText(), u"After 30 minutes");
    EXPECT_EQ(told.size(), 1U);
}

TEST_F(SettingsWindowTest, theWheelPicksNothingAndTypingWaitsForEnter)
{
    SettingsState state = wellState();
    state.settings.quietHoursEnabled = true;
    show(SettingsTab::glucose, state);
    auto& high = widget<QComboBox>("highGlucoseThreshold");
    for (QWidget* one : {static_cast<QWidget*>(&high), &widget<QWidget>("quietHoursEndMinutes")}) {
        one->setFocus();
        QWheelEvent wheel{{5, 5}, {5, 5}, {}, {0, -120}, {}, {}, Qt::NoScrollPhase, false};
        QApplication::sendEvent(one, &wheel);
        EXPECT_FALSE(wheel.isAccepted());
    }
    high.setFocus();
    key(high, Qt::Key_1, {}, QStringLiteral("1"));
    for (const auto& [code, text] : {std::pair{Qt::Key_8, "8"}, std::pair{Qt::Key_0, "0"}})
        key(*high.view(), code, {}, QString::fromLatin1(text));
    EXPECT_TRUE(told.empty());
    key(*high.view(), Qt::Key_Return);
    ASSERT_EQ(told.size(), 1U);
    EXPECT_EQ(told.front().highGlucoseThreshold, 180);
}

TEST_F(SettingsWindowTest, whatDependsOnASwitchThatIsOffKeepsItsValue)
{
    SettingsState state = wellState();
    state.settings.quietHoursEnabled = true;
    state.settings.lowAlertRepeatMinutes = 15;
    show(SettingsTab::alerts, state);
    const std::array dependent{"alertOnLowThreshold",    "alertOnHighThreshold",
                               "alertOnRapidFall",       "alertOnRapidRise",
                               "alertOnMissingData",     "lowAlertRepeatMinutes",
                               "quietHoursEnabled",      "quietHoursStartMinutes",
                               "quietHoursEndMinutes",   "allowLowAlertsDuringQuietHours",
                               "snoozeLowAlerts",        "snoozeHighAlerts",
                               "snoozeRapidChangeAlerts"};
    widget<QCheckBox>("alertsEnabled").click();
    for (const char* name : dependent)
        EXPECT_FALSE(widget<QWidget>(name).isEnabled()) << name;
    EXPECT_TRUE(button("sendTestAlert").isEnabled());
    ASSERT_EQ(told.size(), 1U);
    EXPECT_EQ(differences(told.front(), state.settings), QStringList{QStringLiteral("alertsEnabled")});
    EXPECT_EQ(widget<QComboBox>("lowAlertRepeatMinutes").currentText(), u"After 15 minutes");
    widget<QCheckBox>("alertsEnabled").click();
    for (const char* name : dependent)
        EXPECT_TRUE(widget<QWidget>(name).isEnabled()) << name;
    EXPECT_EQ(told.back(), state.settings);
    widget<QCheckBox>("quietHoursEnabled").click();
    EXPECT_FALSE(widget<QWidget>("quietHoursStartMinutes").isEnabled());
    widget<QCheckBox>("alertOnLowThreshold").click();
    EXPECT_FALSE(widget<QWidget>("lowAlertRepeatMinutes").isEnabled());
}

TEST_F(SettingsWindowTest, saysWhatIsWrongOnEveryTab)
{
    SettingsState state = scenes()[2].state;
    for (const auto tab : {SettingsTab::general, SettingsTab::account, SettingsTab::about}) {
        show(tab, state);
        EXPECT_EQ(words("settingsWarning"),
                  QStringLiteral("Low alerts are snoozed until 15:30.\nAlerts are not "
                                 "shown\nThere is no notification server."));
        EXPECT_EQ(words("settingsSaveProblem"),
                  u"Could not save the change. The disk is full. The settings are shown as they are stored.");
    }
    show(SettingsTab::alerts, state);
    EXPECT_TRUE(words("notificationsDenied").startsWith(u"Notifications are disabled for Tidewell.\n"));
    EXPECT_TRUE(
        words("notificationsDenied")
            .endsWith(u"Enable notifications in System Settings > Notifications to receive glucose alerts."));
    button("openNotificationSettings").click();
    button("sendTestAlert").click();
    EXPECT_EQ(calls, (QStringList{QStringLiteral("openSettings"), QStringLiteral("test")}));
    EXPECT_EQ(words("testAlertMessage"), u"Test alert could not be sent.");
    EXPECT_EQ(words("quietHoursNote"), u"Both times are the same: quiet hours last all day.");
    button("sendTestAlert").setFocus();
    state.isSendingTestAlert = true;
    window->present(state);
    EXPECT_EQ(button("sendTestAlert").text(), u"Sending test alert");
    EXPECT_FALSE(button("sendTestAlert").isEnabled());
    window->present(wellState());
    EXPECT_TRUE(button("sendTestAlert").hasFocus()) << "The focus comes back.";
    EXPECT_EQ(words("settingsWarning") + words("settingsSaveProblem") + words("notificationsDenied"),
              QString{});
    show(SettingsTab::insights, state);
    EXPECT_TRUE(words("historyProblem").contains(u"macOS Keychain"));
    show(SettingsTab::account, state);
    EXPECT_EQ(words("accountProblem"),
              u"Authentication failed\nThe service refuses the password.\nSign in again.");
    // "Open Settings" is no advice in the settings.
    const ErrorInfo nobody = signInRequiredStatus();
    state.accountProblem = nobody;
    state.findings.front().remedy = nobody.remediation;
    for (const bool hasAccount : {true, false}) {
        if (!hasAccount)
            state.account.reset();
        show(SettingsTab::account, state);
        const QString advice = words("accountProblem").section(u'\n', -1);
        EXPECT_EQ(advice, QStringLiteral("Choose “%1” below.").arg(button("signIn").text().remove(u'&')));
    }
    show(SettingsTab::about, state);
    EXPECT_TRUE(widget<QListWidget>("findings").item(0)->text().endsWith(u"\nSign in on the tab “Account”."));
}

TEST_F(SettingsWindowTest, tellsWhatHasChangedAndForgetsIt)
{
    SettingsState state = wellState();
    show(SettingsTab::alerts, state);
    state.silentLows = {{SilentLowCause::snooze, "Low alerts are snoozed until 15:30.", true}};
    window->present(state);
    EXPECT_EQ(spoken(), u"Low alerts are snoozed until 15:30.");
    state.silentLows.clear();
    state.testAlertMessage = "Test alert sent.";
    window->present(state);
    EXPECT_EQ(spoken(), u"Test alert sent.\nNothing that you set keeps lows silent any more.");
    auto& timer = widget<QTimer>("announcerTimer");
    ASSERT_TRUE(timer.isActive());
    QTimerEvent over{timer.timerId()};
    QApplication::sendEvent(&timer, &over);
    EXPECT_EQ(spoken(), QString{}) << "nobody meets it on other tabs";
    state.testAlertMessage.clear();
    window->present(state);
    EXPECT_EQ(spoken(), QString{});
}

TEST_F(SettingsWindowTest, tellsAScreenReaderWhatCouldNotBeSaved)
{
    show(SettingsTab::glucose, wellState());
    const auto& announcer = widget<Announcer>("announcer");
    EXPECT_FALSE(announcer.accessibleName().contains(u"Could not save"));
    SettingsState state = wellState();
    state.saveProblem = "The disk is full.";
    window->present(state);
    EXPECT_EQ(announcer.accessibleName(), words("settingsSaveProblem"));
    EXPECT_TRUE(announcer.accessibleName().contains(u"The disk is full."));
}

TEST_F(SettingsWindowTest, asksBeforeSomethingGoes)
{
    const SettingsState state = wellState();
    const auto asks = [&](SettingsTab tab, const char* control, const QString& confirmed, auto press) {
        SCOPED_TRACE(control);
        for (const int answer : {Qt::Key_Escape, Qt::Key_Return}) {  // Cancel is what Enter means at first.
            show(tab, state);
            press();
            ASSERT_NE(question(), nullptr);
            QWidget* const target = question()->focusWidget() ? question()->focusWidget() : question();
            key(*target, answer);
            EXPECT_TRUE(!question() || !question()->isVisible());
            EXPECT_TRUE(calls.isEmpty()) << calls.join(u' ').toStdString();
            closeQuestion();
        }
        show(tab, state);
        press();
        ASSERT_NE(question(), nullptr);
        saveScreenshot(*question(), QStringLiteral("settings-ask-") + QString::fromLatin1(control));
        button("settingsConfirm").click();
        EXPECT_EQ(calls, QStringList{confirmed});
        closeQuestion();
    };
    asks(SettingsTab::insights, "deleteHistory", QStringLiteral("delete"),
         [this] { button("deleteHistory").click(); });
    asks(SettingsTab::insights, "deleteEveryHistory", QStringLiteral("deleteAll"),
         [this] { button("deleteEveryHistory").click(); });
    asks(SettingsTab::insights, "historyRetention", QStringLiteral("keep 30"),
         [this] { pick(widget<QComboBox>("historyRetention"), 0); });
    asks(SettingsTab::account, "signOut", QStringLiteral("signOut"), [this] { button("signOut").click(); });
    EXPECT_EQ(widget<QComboBox>("historyRetention").currentText(), u"90 days") << "It shows what is so.";

    show(SettingsTab::account, state);
    button("signOut").click();
    question()->findChild<QCheckBox*>()->click();
    button("settingsConfirm").click();
    EXPECT_EQ(calls, QStringList{QStringLiteral("signOut+")});
    closeQuestion();
    button("signOut").click();
    EXPECT_TRUE(
        qobject_cast<QMessageBox*>(question())->informativeText().endsWith(u"unless you delete them here:"))
        << "The box is below.";
    closeQuestion();
    SettingsState never = state;
    never.history.configuration = {};
    show(SettingsTab::account, never);
    button("signOut").click();
    EXPECT_EQ(question()->findChild<QCheckBox*>(), nullptr) << "Nothing is saved that could be deleted.";
    // Another account came meanwhile: the question was about somebody else.
    never.account->username = "other@example.com";
    window->present(never);
    EXPECT_TRUE(!question() || !question()->isVisible());
    EXPECT_TRUE(calls.isEmpty());
    closeQuestion();
    SettingsState shorter = state;
    shorter.history.configuration.retentionDays = 30;
    show(SettingsTab::insights, shorter);
    pick(widget<QComboBox>("historyRetention"), 1);
    EXPECT_EQ(calls, QStringList{QStringLiteral("keep 90")}) << "Longer deletes nothing.";
    EXPECT_EQ(question(), nullptr);
}

TEST_F(SettingsWindowTest, savesReadingsOnlyAfterTheDisclosure)
{
    SettingsState state = wellState();
    state.history.configuration = {};
    show(SettingsTab::insights, state);
    EXPECT_EQ(words("historyState"), u"Saving is off. Nothing is saved.");
    EXPECT_FALSE(widget<QComboBox>("historyRetention").isEnabled());
    EXPECT_FALSE(button("deleteHistory").isEnabled());
    button("enableHistory").click();
    ASSERT_NE(question(), nullptr);
    key(*question()->focusWidget(), Qt::Key_Return);
    EXPECT_TRUE(calls.isEmpty());
    closeQuestion();
    button("enableHistory").click();
    pick(*question()->findChild<QComboBox*>(), 0);
    EXPECT_FALSE(widget<QLabel>("historyDisclosureShorter").isVisible());
    button("settingsConfirm").click();
    EXPECT_EQ(calls, QStringList{QStringLiteral("enable 30")});
    closeQuestion();
    // Once it was on, fewer days take readings away, and that is said there.
    state.history.configuration = {.hasPreviouslyEnabled = true};
    show(SettingsTab::insights, state);
    EXPECT_EQ(words("historyState"), u"Saving is off, so new readings aren’t being added.");
    button("enableHistory").click();
    pick(*question()->findChild<QComboBox*>(), 0);
    EXPECT_TRUE(widget<QLabel>("historyDisclosureShorter").isVisible());
    closeQuestion();
    show(SettingsTab::insights, wellState());
    EXPECT_EQ(words("historyState"), u"Saving is on.");
    EXPECT_FALSE(button("enableHistory").isVisible());
    button("pauseHistory").click();
    button("showInsights").click();
    EXPECT_EQ(calls, (QStringList{QStringLiteral("pause"), QStringLiteral("insights")}));
    show(SettingsTab::insights, {});
    EXPECT_EQ(words("historyState"), u"Sign in to enable saved history.");
    EXPECT_FALSE(button("enableHistory").isEnabled());
    EXPECT_TRUE(button("deleteEveryHistory").isEnabled()) << "This needs no account.";
}

TEST_F(SettingsWindowTest, saysSinceWhenReadingsAreSaved)
{
    const auto march = [](int dayOfMonth, int hour) {
        const QDateTime at{QDate{2026, 3, dayOfMonth}, QTime{hour, 0}};
        return dateFromUnix(static_cast<double>(at.toSecsSinceEpoch()));
    };
    const auto since = [&](bool isEnabled, std::optional<Date> first, std::optional<Date> switchedOn) {
        SettingsState state = wellState();
        state.history.configuration.isEnabled = isEnabled;
        state.history.configuration.collectionStartedAt = first;
        state.history.configuration.collectionIntervalStart = switchedOn;
        show(SettingsTab::insights, state);
        return words("historySince");
    };
    const QString second = displayDate(QDate{2026, 3, 2}, QStringLiteral("d MMMM yyyy"));
    const QString fifth = displayDate(QDate{2026, 3, 5}, QStringLiteral("d MMMM yyyy"));
    EXPECT_EQ(since(true, {}, march(2, 9)),
              QStringLiteral("No reading has been saved yet. Saving was switched on on %1.").arg(second));
    EXPECT_EQ(since(false, {}, {}), u"No readings are saved.");
    const QString once = QStringLiteral("The first readings were saved on %1.").arg(second);
    EXPECT_EQ(since(true, march(2, 10), march(2, 9)), once) << "one day is told once";
    EXPECT_EQ(since(false, march(2, 10), {}), once);
    EXPECT_EQ(since(true, march(2, 10), march(5, 9)),
              QStringLiteral("The first readings were saved on %1; saving was last switched on on %2.")
                  .arg(second, fifth));
    show(SettingsTab::insights, {});
    EXPECT_EQ(words("historySince"), QString{});
}

TEST_F(SettingsWindowTest, saysWhereThePasswordLies)
{
    const QString file = QStringLiteral("/home/1/secrets.json");
    for (const bool isFile : {false, true}) {
        secretsFile = isFile ? file : QString{};
        makeWindow();
        SettingsState state = wellState();
        state.history.configuration = {};
        show(SettingsTab::account, state);
        EXPECT_EQ(words("accountPassword"),
                  isFile
                      ? QStringLiteral("stored in the file %1. Whoever can read your files can read it too.")
                            .arg(file)
                      : QStringLiteral("stored in your keyring"));
        show(SettingsTab::general, state);
        EXPECT_EQ(words("secretsPlace").contains(file), isFile);
        show(SettingsTab::insights, state);
        button("enableHistory").click();
        QStringList said;
        for (const auto* label : question()->findChildren<QLabel*>())
            said << label->text();
        EXPECT_EQ(said.join(u'\n').contains(file), isFile);
        EXPECT_EQ(said.join(u'\n').contains(u"your keyring"), !isFile);
        closeQuestion();
    }
}

TEST_F(SettingsWindowTest, namesTheAccountAndNeverItsCodes)
{
    show(SettingsTab::account, wellState());
    EXPECT_EQ(words("accountService"), u"LibreLinkUp");
    EXPECT_EQ(words("accountUsername"), u"parent@example.com");
    EXPECT_EQ(words("accountRegion"), u"Germany");
    EXPECT_EQ(words("accountPerson"), u"Mia");
    EXPECT_EQ(button("signIn").text(), u"&Switch account…");
    button("signIn").click();
    button("reconnect").click();
    EXPECT_EQ(calls, (QStringList{QStringLiteral("signIn"), QStringLiteral("reconnect")}));
    SettingsState dexcom = wellState();
    dexcom.account = {.username = "<b>x</b>", .region = "ous"};
    dexcom.hasPassword = false;
    show(SettingsTab::account, dexcom);
    EXPECT_EQ(words("accountRegion"), u"Outside the United States");
    EXPECT_EQ(words("accountPerson"), QString{});
    EXPECT_EQ(widget<QLabel>("accountUsername").textFormat(), Qt::PlainText);
    EXPECT_EQ(button("signIn").text(), u"&Sign in again…");
    EXPECT_FALSE(button("reconnect").isEnabled());
    show(SettingsTab::account, {});
    EXPECT_EQ(button("signIn").text(), u"&Sign in…");
    EXPECT_FALSE(button("signOut").isVisible());
    EXPECT_FALSE(words("accountNone").isEmpty());
}

TEST_F(SettingsWindowTest, offersForTheAccountWhatHelpsAndNothingElse)
{
    const auto offers = [this](const SettingsState& state) {
        show(SettingsTab::account, state);
        QStringList offered;
        for (const char* name : {"signIn", "reconnect", "accountTerms", "signOut"})
            if (button(name).isVisible())
                offered << (button(name).isEnabled() ? button(name).text() : QStringLiteral("(off)"));
        return offered.join(u' ').remove(u'&').toStdString();
    };
    SettingsState state = wellState();
    EXPECT_EQ(offers(state), "Switch account… Reconnect Sign out…");
    state.accountProblem = ErrorInfo{.title = "LibreLinkUp needs attention", .canReconnect = true};
    EXPECT_EQ(offers(state), "Switch account… Reconnect Sign out…");
    button("reconnect").setFocus();
    state.isReconnecting = true;
    window->present(state);
    EXPECT_EQ(words("accountMessage"), u"Trying again…");
    EXPECT_FALSE(button("reconnect").isEnabled());
    state.isReconnecting = false;
    window->present(state);
    EXPECT_TRUE(button("reconnect").hasFocus());
    state.accountProblem = ErrorInfo{.title = "Terms of use", .needsTerms = true};
    window->present(state);
    EXPECT_TRUE(button("accountTerms").hasFocus());
    EXPECT_EQ(offers(state), "Switch account… Show terms… Sign out…");
    button("accountTerms").click();
    EXPECT_EQ(calls, QStringList{QStringLiteral("terms")});
    state.accountProblem = ErrorInfo{.title = "Setting up is not finished", .needsSetup = true};
    EXPECT_EQ(offers(state), "Finish setting up… Sign out…");
    button("signIn").click();
    EXPECT_EQ(calls, QStringList{QStringLiteral("signIn")});
    state.accountProblem = ErrorInfo{.title = "Password not available", .needsSignIn = true};
    state.hasPassword = false;
    EXPECT_EQ(offers(state), "Sign in again… Sign out…") << "Nothing can be asked without it.";

    state.accountMessage = "You are still signed in.";
    const auto weight = [this] { return widget<QWidget>("accountMessage").accessibleName(); };
    show(SettingsTab::account, state);
    EXPECT_TRUE(weight().startsWith(u"Note: ")) << weight().toStdString();
    state.accountFailed = true;
    window->present(state);
    EXPECT_TRUE(weight().startsWith(u"Problem: ")) << weight().toStdString();
}

TEST_F(SettingsWindowTest, signingOutLeavesTheFocusWhereSomebodySignsIn)
{
    for (const bool movedOn : {false, true}) {
        SettingsState state = wellState();
        state.silentLows = {{SilentLowCause::snooze, "Low alerts are snoozed until 15:30.", true}};
        show(SettingsTab::account, state);
        button("signOut").setFocus();
        state.isChangingAccount = true;
        window->present(state);
        if (movedOn)
            widget<QTabWidget>("settingsTabs").tabBar()->setFocus();
        state.account.reset();
        state.hasPassword = false;
        window->present(state);
        state.isChangingAccount = false;
        window->present(state);
        EXPECT_EQ(button("signIn").hasFocus(), !movedOn);
    }
    // Somebody else may have done it.
    show(SettingsTab::account, wellState());
    button("signOut").setFocus();
    window->present({});
    EXPECT_TRUE(button("signIn").hasFocus());
}

TEST_F(SettingsWindowTest, offersToDeleteOnlyWhatMayBeThere)
{
    SettingsState state = wellState();
    const auto asksForReadings = [&] {
        show(SettingsTab::insights, state);
        const bool deletes = button("deleteHistory").isEnabled();
        show(SettingsTab::account, state);
        button("signOut").click();
        EXPECT_EQ(question()->findChild<QCheckBox*>() != nullptr, deletes);
        closeQuestion();
        return deletes;
    };
    auto& history = state.history;
    history.configuration = {.hasPreviouslyEnabled = true};
    EXPECT_FALSE(asksForReadings()) << "They were deleted.";
    history.configuration.collectionStartedAt = dateFromIso("2026-03-02T08:00:00Z");
    EXPECT_TRUE(asksForReadings());
    history.configuration = {.pendingDeletion = true, .hasPreviouslyEnabled = true};
    EXPECT_TRUE(asksForReadings());
    history.configuration = {.isEnabled = true, .hasPreviouslyEnabled = true};
    EXPECT_TRUE(asksForReadings());
    history.configuration = {};
    history.problem = GlucoseHistoryError::keychainFailure;
    EXPECT_TRUE(asksForReadings()) << "Nobody knows.";
}

TEST_F(SettingsWindowTest, theDemonstrationCannotBeStartedAtLogin)
{
    isDemonstration = true;
    makeWindow();
    SettingsState state = wellState();
    state.loginItem = LoginItemStatus{};
    show(SettingsTab::general, state);
    EXPECT_FALSE(widget<QCheckBox>("startAtLogin").isEnabled());
    EXPECT_EQ(words("loginProblem"), u"Not in the demonstration.");
}

TEST_F(SettingsWindowTest, reportsFindingsWithoutAccountAndReadings)
{
    SettingsState state = scenes()[2].state;
    state.findings.front().text = "One line\nand another";
    show(SettingsTab::about, state);
    auto& list = widget<QListWidget>("findings");
    ASSERT_EQ(list.count(), static_cast<int>(state.findings.size()));
    EXPECT_TRUE(list.item(0)->text().startsWith(u"Problem: One line and another\n"));
    EXPECT_FALSE(list.item(0)->icon().isNull());
    button("copyReport").click();
    const QString report = QApplication::clipboard()->text();
    EXPECT_EQ(report.count(u'\n'), list.count() + 2);
    EXPECT_TRUE(report.contains(u"Caution: The sound is muted: alerts are silent. — Switch the sound"));
    for (const QString& secret : {QStringLiteral("parent@example.com"), QStringLiteral("Mia"),
                                  QStringLiteral("c0ffee"), QStringLiteral("/home")})
        EXPECT_FALSE(report.contains(secret));
    EXPECT_TRUE(report.contains(u"Looked at "));
    EXPECT_EQ(words("looking"), u"Looked at 15:30. What was found, the worst first:");
    button("lookAgain").click();
    button("showTerms").click();
    EXPECT_EQ(calls, (QStringList{QStringLiteral("look"), QStringLiteral("terms")}));
    show(SettingsTab::general, state);
    button("historyFolderCopy").click();
    EXPECT_EQ(QApplication::clipboard()->text(), u"/home/1/.6/7/8/9");
}

TEST_F(SettingsWindowTest, saysWhenFindingsAreOldAndLooksWhenTheirTabComesToTheFront)
{
    SettingsState state = wellState();
    show(SettingsTab::about, state);
    EXPECT_EQ(words("looking"), u"Looked at 15:30: nothing stands in the way of an alert.");
    auto& list = widget<QListWidget>("findings");
    const QBrush fresh = list.item(0)->foreground();
    state.isLooking = true;
    window->present(state);
    EXPECT_EQ(words("looking"),
              u"Looking… this takes a few seconds. What was found at 15:30 may no longer be so:");
    EXPECT_NE(list.item(0)->foreground(), fresh);
    EXPECT_FALSE(button("copyReport").isEnabled() || button("lookAgain").isEnabled());
    state.isLooking = false;
    state.lookedAt = *state.lookedAt - Seconds{86400.0};
    window->present(state);
    EXPECT_EQ(list.item(0)->foreground(), fresh);
    EXPECT_FALSE(words("looking").startsWith(u"Looked at 15:30")) << "That was yesterday.";
    EXPECT_TRUE(button("copyReport").isEnabled());
    calls.clear();
    window->open(SettingsTab::general);
    EXPECT_TRUE(calls.isEmpty());
    window->open(SettingsTab::about);
    EXPECT_EQ(calls, QStringList{QStringLiteral("look")});
    show(SettingsTab::about, {});
    EXPECT_EQ(words("looking"), u"Nobody has looked yet.");

    // The page scrolls, not the list in it.
    state.findings.assign(16, {.text = "Alerts are switched on. " + std::string(300, 'x') + " y",
                               .remedy = "Nothing is to be done."});
    for (const int width : {400, 900}) {
        window->resize(width, 500);
        show(SettingsTab::about, state);
        for (int round = 0; round < 3; ++round)  // The page, the list in it, and its entries.
            QCoreApplication::processEvents();
        EXPECT_EQ(list.verticalScrollBar()->maximum(), 0);
        EXPECT_GE(list.height(), list.visualItemRect(list.item(15)).bottom());
        EXPECT_LE(list.height() - list.visualItemRect(list.item(15)).bottom(), 20);
        list.setFocus();
        list.setCurrentRow(0);
        for (int row = 0; row < 15; ++row)
            key(list, Qt::Key_Down);
        const auto& page = widget<QScrollArea>("about");
        const QPoint top =
            list.viewport()->mapTo(page.viewport(), list.visualItemRect(list.item(15)).topLeft());
        EXPECT_TRUE(page.viewport()->rect().contains(QPoint{page.viewport()->width() / 2, top.y()}))
            << "The page follows the keyboard.";
    }
}

TEST_F(SettingsWindowTest, opensOnATabAndClosesByEscape)
{
    show(SettingsTab::insights, wellState());
    auto& tabs = widget<QTabWidget>("settingsTabs");
    ASSERT_EQ(tabs.count(), tabNames.size());
    for (int i = 0; i < tabs.count(); ++i) {
        window->open(static_cast<SettingsTab>(i));
        EXPECT_EQ(tabs.currentWidget()->objectName(), tabNames[i]);
    }
    button("lookAgain").setFocus();
    window->open(SettingsTab::about);
    EXPECT_TRUE(button("lookAgain").hasFocus()) << "Nothing moves when it is open there already.";
    key(button("lookAgain"), Qt::Key_Tab, Qt::ControlModifier);
    EXPECT_EQ(tabs.currentIndex(), 0);
    window->open(SettingsTab::about);
    button("lookAgain").setFocus();
    window->bringToFront();
    EXPECT_TRUE(button("lookAgain").hasFocus()) << "Whoever is in the middle of a page stays there.";
    window->open(SettingsTab::general);
    calls.clear();
    key(widget<QCheckBox>("startAtLogin"), Qt::Key_Escape);
    EXPECT_FALSE(window->isVisible());
    EXPECT_EQ(calls.count(QStringLiteral("closed")), 1);
}

/// What is shown as it stands: names, paths, keys, and texts that only these states have.
QStringList othersWords(const SettingsState& state)
{
    QStringList words{QStringLiteral("LibreLinkUp"), QStringLiteral("parent@example.com"),
                      QStringLiteral("Mia"),         QStringLiteral("home"),
                      QStringLiteral("Alt"),         QStringLiteral("zlib")};
    for (const char* name : {"libcurl",
                             "curl",
                             "OpenSSL",
                             "fmt",
                             "spdlog",
                             "simdjson",
                             "date",
                             "libsecret",
                             "GLib",
                             "libcanberra",
                             "PulseAudio (libpulse)",
                             "CLI11",
                             "Boost (Asio, JSON)",
                             "Qt",
                             "Zlib",
                             "LGPL-3.0-only",
                             "LGPL-2.1-or-later",
                             "BSL-1.0",
                             "BSD-3-Clause",
                             "Apache-2.0",
                             "MIT"})
        words << QString::fromLatin1(name);
    // The window still says these to a screen reader when they are over.
    QStringList texts{QStringLiteral("Alerts are not shown"),
                      QStringLiteral("There is no notification server."),
                      QString::fromStdString(state.saveProblem.value_or("")),
                      QString::fromStdString(state.loginItemProblem),
                      QString::fromStdString(state.historyMessage),
                      QString::fromStdString(state.accountMessage)};
    if (state.accountProblem)
        texts << QString::fromStdString(state.accountProblem->message)
              << QString::fromStdString(state.accountProblem->remediation);
    return words + texts;
}

/// Each tab in each state, in a language, a size of letters and a theme.
class SettingsWindowWalk : public SettingsWindowTest, public testing::WithParamInterface<WindowLook> {
protected:
    SettingsWindowWalk() { makeWindow(); }
    ~SettingsWindowWalk() override { window.reset(); }
    [[nodiscard]] static bool isPseudo() { return GetParam().language == WindowLook::Language::pseudo; }

    const WindowLookScope look{GetParam()};
};

TEST_P(SettingsWindowWalk, everyTabFitsAndIsReached)
{
    for (const auto& [name, state] : scenes()) {
        for (int tab = 0; tab < tabNames.size(); ++tab) {
            const QString title =
                QStringLiteral("settings-%1-%2-%3")
                    .arg(tabNames[tab], QString::fromLatin1(name), QString::fromStdString(GetParam().name()));
            SCOPED_TRACE(title.toStdString());
            show(static_cast<SettingsTab>(tab), state);
            window->resize(QSize{1024, 700}.boundedTo(window->size()));
            QCoreApplication::processEvents();
            saveScreenshot(*window, title);
            expectEveryControlNamed(*window);
            expectUniqueMnemonics(*window);
            expectNothingCut(*window);
            expectKeyboardReachesAll(*window);
            if (isPseudo())
                expectAllTranslated(*window, othersWords(state));
        }
    }
}

TEST_P(SettingsWindowWalk, everyQuestionFitsAndIsReached)
{
    const SettingsState well = wellState();
    SettingsState unsaved = well;
    unsaved.history.configuration = {};
    const SettingsState& never = unsaved;
    for (const auto& [control, tab, state] : {std::tuple{"enableHistory", SettingsTab::insights, &never},
                                              std::tuple{"deleteEveryHistory", SettingsTab::insights, &well},
                                              std::tuple{"signOut", SettingsTab::account, &well}}) {
        SCOPED_TRACE(control);
        show(tab, *state);
        button(control).click();
        ASSERT_NE(question(), nullptr);
        QCoreApplication::processEvents();
        saveScreenshot(*question(),
                       QStringLiteral("settings-ask-%1-%2")
                           .arg(QString::fromLatin1(control), QString::fromStdString(GetParam().name())));
        expectEveryControlNamed(*question());
        expectUniqueMnemonics(*question());
        expectNothingCut(*question());
        if (isPseudo())
            expectAllTranslated(*question(), othersWords(*state));
        closeQuestion();
    }
}

INSTANTIATE_TEST_SUITE_P(Looks, SettingsWindowWalk, testing::ValuesIn(windowLooks()),
                         [](const auto& look) { return look.param.name(); });

}  // namespace
}  // namespace tidewell
