#include "ui/SettingsAlertsPage.h"

#include <QCheckBox>
#include <QLabel>
#include <QPushButton>
#include <QVBoxLayout>
#include <algorithm>

#include "config/AppSettingsKeys.h"
#include "ui/DisplayText.h"
#include "ui/WindowText.h"

namespace tidewell {
namespace {

constexpr std::int64_t minutesPerDay = 1440;
constexpr int millisecondsPerMinute = 60'000;

QString minutesText(std::int64_t minutes)
{
    if (minutes <= 0)
        return SettingsAlertsPage::tr("Never");
    return minutes == 1 ? SettingsAlertsPage::tr("After 1 minute")
                        : SettingsAlertsPage::tr("After %1 minutes").arg(minutes);
}

QTime timeOf(std::int64_t minutes)
{
    const auto shown = static_cast<int>(std::clamp<std::int64_t>(minutes, 0, minutesPerDay - 1));
    return QTime::fromMSecsSinceStartOfDay(shown * millisecondsPerMinute);
}

}  // namespace

SettingsAlertsPage::SettingsAlertsPage(SettingsPageContext& context) : SettingsPage{context}
{
    makeDesktop();
    makeCategories();
    makeQuietHours();
    makeSnooze();
    column().addStretch();
}

void SettingsAlertsPage::makeDesktop()
{
    denied_ = new SettingsNotice{this};
    denied_->setObjectName(QStringLiteral("notificationsDenied"));
    column().addWidget(denied_);
    deniedAdvice_ = copyableLabel(
        tr("Enable notifications in System Settings > Notifications to receive glucose alerts."), this);
    denied_->addBelow(deniedAdvice_);
    auto* row = new QHBoxLayout;
    openSettings_ = addButton(*row, "openNotificationSettings", tr("&Open notification settings"),
                              my().handlers.openNotificationSettings);
    denied_->addBelow(openSettings_);
    delete row;
}

void SettingsAlertsPage::makeCategories()
{
    QVBoxLayout* group = addGroup(tr("Alerts"));
    all_ = addSwitch(*group, "alertsEnabled", tr("Show &alerts"), &AppSettings::alertsEnabled);
    auto* inner = new QVBoxLayout;
    inner->setContentsMargins(fontMetrics().height(), 0, 0, 0);
    group->addLayout(inner);
    categories_ = {
        addSwitch(*inner, "alertOnLowThreshold", tr("&Low glucose"), &AppSettings::alertOnLowThreshold),
        addSwitch(*inner, "alertOnHighThreshold", tr("&High glucose"), &AppSettings::alertOnHighThreshold),
        addSwitch(*inner, "alertOnRapidFall", tr("Rapid &fall"), &AppSettings::alertOnRapidFall),
        addSwitch(*inner, "alertOnRapidRise", tr("Rapid &rise"), &AppSettings::alertOnRapidRise),
        addSwitch(*inner, "alertOnMissingData", tr("&No data for 15 minutes"),
                  &AppSettings::alertOnMissingData),
    };
    repeat_ = addPicker("lowAlertRepeatMinutes", tr("Repeat a low alert while the low lasts"));
    repeat_->onPicked([this](const QVariant& minutes) {
        my().change([&minutes](AppSettings& s) { s.lowAlertRepeatMinutes = minutes.toLongLong(); });
        present();
    });
    repeatLabel_ = addField(*inner, tr("R&epeat while a low lasts:"), *repeat_);
    repeatStored_ = copyableLabel({}, this);
    repeatStored_->setObjectName(QStringLiteral("lowAlertRepeatMinutesStored"));
    inner->addWidget(repeatStored_);

    auto* row = new QHBoxLayout;
    test_ = addButton(*row, "sendTestAlert", tr("Send &test alert"), [this] {
        if (my().handlers.sendTestAlert && !state().isSendingTestAlert)
            my().handlers.sendTestAlert();
    });
    row->addStretch();
    group->addLayout(row);
    testResult_ = new SettingsNotice{this};
    testResult_->setObjectName(QStringLiteral("testAlertMessage"));
    group->addWidget(testResult_);
}

void SettingsAlertsPage::makeQuietHours()
{
    QVBoxLayout* group = addGroup(tr("Quiet hours"));
    quietHours_ = addSwitch(*group, "quietHoursEnabled", tr("&Quiet hours: no alerts at these times"),
                            &AppSettings::quietHoursEnabled);
    auto* inner = new QVBoxLayout;
    inner->setContentsMargins(fontMetrics().height(), 0, 0, 0);
    group->addLayout(inner);
    from_ = addTime(*inner, "quietHoursStartMinutes", tr("Fro&m:"), tr("Quiet hours begin"),
                    &AppSettings::quietHoursStartMinutes);
    to_ = addTime(*inner, "quietHoursEndMinutes", tr("Unt&il:"), tr("Quiet hours end"),
                  &AppSettings::quietHoursEndMinutes);
    quietNote_ = wrappedLabel({}, this);
    quietNote_->setObjectName(QStringLiteral("quietHoursNote"));
    inner->addWidget(quietNote_);
    quietLows_ = addSwitch(*inner, "allowLowAlertsDuringQuietHours", tr("Let lo&w alerts through"),
                           &AppSettings::allowLowAlertsDuringQuietHours);
}

SettingsTimeEdit* SettingsAlertsPage::addTime(QBoxLayout& layout, const char* name, const QString& title,
                                              const QString& spoken, std::int64_t AppSettings::* field)
{
    auto* edit = new SettingsTimeEdit{this};
    edit->setObjectName(QString::fromLatin1(name));
    edit->setAccessibleName(spoken);
    edit->onPicked([this, field](QTime time) {
        const std::int64_t minutes = time.msecsSinceStartOfDay() / millisecondsPerMinute;
        my().change([field, minutes](AppSettings& settings) { settings.*field = minutes; });
        present();
    });
    addField(layout, title, *edit);
    return edit;
}

void SettingsAlertsPage::makeSnooze()
{
    QVBoxLayout* group = addGroup(tr("What a snooze from the menu silences"));
    snoozes_ = {
        addSwitch(*group, "snoozeLowAlerts", tr("&Snooze low alerts"), &AppSettings::snoozeLowAlerts),
        addSwitch(*group, "snoozeHighAlerts", tr("Snoo&ze high alerts"), &AppSettings::snoozeHighAlerts),
        addSwitch(*group, "snoozeRapidChangeAlerts", tr("Snooze rapi&d-change alerts"),
                  &AppSettings::snoozeRapidChangeAlerts),
    };
    const QString explanation =
        tr("Status bar snooze actions only silence the alert categories selected above.");
    for (QCheckBox* box : snoozes_)
        box->setAccessibleDescription(explanation);
    group->addWidget(wrappedLabel(explanation, this));
}

void SettingsAlertsPage::presentQuietHours()
{
    const AppSettings& settings = state().settings;
    const bool alerts = settings.alertsEnabled;
    const bool quiet = alerts && settings.quietHoursEnabled;
    setUsable(*quietHours_, alerts);
    for (QWidget* widget : std::initializer_list<QWidget*>{from_, to_, quietLows_})
        setUsable(*widget, quiet);
    from_->present(timeOf(settings.quietHoursStartMinutes));
    to_->present(timeOf(settings.quietHoursEndMinutes));
    QString note;
    if (settings.quietHoursStartMinutes == settings.quietHoursEndMinutes)
        note = tr("Both times are the same: quiet hours last all day.");
    else if (settings.quietHoursStartMinutes > settings.quietHoursEndMinutes)
        note = tr("They last past midnight.");
    quietNote_->setText(note);
    quietNote_->setVisible(settings.quietHoursEnabled && !note.isEmpty());
}

void SettingsAlertsPage::present()
{
    const AppSettings& settings = state().settings;
    const bool denied = state().authorization == NotificationAuthorizationState::denied;
    denied_->present(SettingsNotice::Weight::problem,
                     denied ? tr("Notifications are disabled for Tidewell.") : QString{});
    openSettings_->setVisible(my().facts.canOpenNotificationSettings);

    presentSwitches();
    for (QCheckBox* box : categories_)
        setUsable(*box, settings.alertsEnabled);
    std::vector<SettingsComboBox::Entry> entries;
    for (const std::int64_t minutes : lowAlertRepeatMinuteOptions)
        entries.push_back({minutesText(minutes), QVariant::fromValue<qlonglong>(minutes)});
    // 0 and less are the same.
    const std::int64_t repeat = std::max<std::int64_t>(settings.lowAlertRepeatMinutes, 0);
    const bool offered =
        std::ranges::find(lowAlertRepeatMinuteOptions, repeat) != lowAlertRepeatMinuteOptions.end();
    const std::int64_t shown =
        offered ? repeat : std::ranges::min(lowAlertRepeatMinuteOptions, {}, [repeat](std::int64_t one) {
            return one == 0 ? minutesPerDay * minutesPerDay : std::abs(one - repeat);
        });
    repeat_->present(entries, QVariant::fromValue<qlonglong>(shown));
    setUsable(*repeat_, settings.alertsEnabled && settings.alertOnLowThreshold);
    setUsable(*repeatLabel_, repeat_->isEnabled());
    if (!offered)
        repeatStored_->setText(
            tr("“%1” is stored and in force. The list shows the nearest value; picking one "
               "replaces it.")
                .arg(minutesText(repeat)));
    repeatStored_->setVisible(!offered);
    presentQuietHours();
    for (QCheckBox* box : snoozes_)
        setUsable(*box, settings.alertsEnabled);

    setUsable(*test_, !state().isSendingTestAlert);
    test_->setText(state().isSendingTestAlert ? tr("Sending test alert") : tr("Send &test alert"));
    const std::string& message = state().testAlertMessage;
    const bool sent = message == "Test alert sent.";
    testResult_->present(sent ? SettingsNotice::Weight::good : SettingsNotice::Weight::problem,
                         state().isSendingTestAlert ? QString{} : displayText(message));
}

}  // namespace tidewell
