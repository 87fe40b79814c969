#include <fmt/format.h>
#include <QButtonGroup>
#include <QCheckBox>
#include <QCoreApplication>
#include <QFormLayout>
#include <QFrame>
#include <QHBoxLayout>
#include <QPushButton>
#include <QRadioButton>
#include <QVBoxLayout>
#include <algorithm>
#include <array>
#include <string_view>

#include "config/ThresholdOptions.h"
#include "sources/GlucoseReading.h"
#include "sources/GlucoseUnits.h"
#include "statusbar/SilentLows.h"
#include "ui/DisplayText.h"
#include "ui/OnboardingPage.h"
#include "ui/SettingsControls.h"
#include "ui/SpokenWidget.h"
#include "ui/WindowText.h"

namespace tidewell {
namespace {

/// Of the preview: a value that nobody worries about.
constexpr double usualMgdL = 118;

QVBoxLayout* pageLayout(QWidget* page)
{
    auto* const layout = new QVBoxLayout{page};
    layout->setContentsMargins({});
    return layout;
}

GlucoseUnits unitOf(const AppSettings& settings)
{
    return glucoseUnits(settings.measurementUnit).value_or(GlucoseUnits::mgdL);
}

/// Fields that belong together: screen readers say its name when the focus comes into it.
class FieldGroup final : public QWidget, public SpokenWidget {
public:
    using QWidget::QWidget;
    [[nodiscard]] QAccessible::Role spokenRole() const override { return QAccessible::Grouping; }
};

class GlucosePage final : public OnboardingPage {
    Q_DECLARE_TR_FUNCTIONS(GlucosePage)
public:
    GlucosePage(const Handlers& handlers, QWidget* parent) : OnboardingPage{handlers, parent}
    {
        auto* const unit = new QLabel{tr("Unit:"), this};
        auto* const units = new FieldGroup{this};
        units->setAccessibleName(tr("Unit"));
        auto* const choice = new QHBoxLayout{units};
        choice->setContentsMargins({});
        auto* const group = new QButtonGroup{this};
        for (std::size_t i = 0; i < units_.size(); ++i) {
            units_.at(i) = new QRadioButton{i == 0 ? tr("&mg/dL") : tr("mmo&l/L"), units};
            group->addButton(units_.at(i));
            connect(units_.at(i), &QRadioButton::clicked, this, [this, i] {
                settings_.measurementUnit = rawValue(allGlucoseUnits.at(i));
                showSettings();
                tell();
            });
        }
        low_ = makeThresholds(tr("Low threshold"));
        high_ = makeThresholds(tr("High threshold"));

        auto* const layout = pageLayout(this);
        layout->addWidget(wrappedLabel(
            tr("At these limits and beyond, the value gets a colour and an alert comes. Ask your care team "
               "when you are not sure; everything can be changed later."),
            this));
        layout->addSpacing(fontMetrics().height() / 2);
        auto* const form = new QFormLayout;
        form->setRowWrapPolicy(QFormLayout::WrapLongRows);
        form->setFieldGrowthPolicy(QFormLayout::ExpandingFieldsGrow);
        form->setLabelAlignment(Qt::AlignLeft);
        for (QRadioButton* button : units_)
            choice->addWidget(button);
        choice->addStretch(1);
        form->addRow(unit, units);
        form->addRow(tr("Lo&w threshold:"), low_);
        form->addRow(tr("&High threshold:"), high_);
        layout->addLayout(form);
        layout->addSpacing(fontMetrics().height());
        auto* const preview = new QGridLayout;
        preview->setColumnStretch(1, 1);
        preview->setHorizontalSpacing(fontMetrics().height());
        preview->setVerticalSpacing(fontMetrics().height() / 2);
        for (std::size_t i = 0; i < plates_.size(); ++i) {
            plates_.at(i) = new ReadingPlate{this};
            scaleLetters(*plates_.at(i), 1.3, true);
            meanings_.at(i) = wrappedLabel({}, this);
            preview->addWidget(plates_.at(i), static_cast<int>(i), 0);
            preview->addWidget(meanings_.at(i), static_cast<int>(i), 1);
        }
        layout->addLayout(preview);
        layout->addStretch(1);
    }
    QString heading(const OnboardingState&) const override { return tr("Unit and limits"); }
    void present(const OnboardingState& state, bool) override
    {
        settings_ = state.settings;
        showSettings();
        for (QWidget* field : std::initializer_list<QWidget*>{units_[0], units_[1], low_, high_})
            field->setEnabled(!state.isBusy);
    }
    bool focusFirst() override
    {
        units_.at(isMmolL() ? 1 : 0)->setFocus();
        return true;
    }

private:
    [[nodiscard]] bool isMmolL() const { return unitOf(settings_) == GlucoseUnits::mmolL; }

    SettingsComboBox* makeThresholds(const QString& name)
    {
        auto* const box = new SettingsComboBox{this};
        box->setAccessibleName(name);
        box->onPicked([this](const QVariant&) { tell(); });
        box->onStale([this] { showSettings(); });
        return box;
    }

    /// The options of the unit, with those chosen that are nearest to what is stored.
    void showSettings()
    {
        for (std::size_t i = 0; i < units_.size(); ++i)
            units_.at(i)->setChecked(unitOf(settings_) == allGlucoseUnits.at(i));
        const auto show = [this](SettingsComboBox& box, ThresholdKind kind, double mgdL) {
            const auto options = thresholdOptions(kind, isMmolL());
            std::vector<SettingsComboBox::Entry> entries;
            for (const ThresholdOption& option : options)
                entries.push_back({.label = QString::fromStdString(option.label), .value = option.mgdL});
            box.present(entries, ThresholdValidator::snap(options, mgdL));
        };
        show(*low_, ThresholdKind::low, settings_.lowGlucoseThreshold);
        show(*high_, ThresholdKind::high, settings_.highGlucoseThreshold);
        explain();
    }

    void explain()
    {
        const double low = low_->currentData().toDouble();
        const double high = high_->currentData().toDouble();
        const GlucoseUnits unit = unitOf(settings_);
        const auto plate = [&](std::size_t i, double mgdL, std::string_view trend, TitleColor color,
                               const QString& meaning) {
            const QString title =
                QString::fromStdString(fmt::format("{} {}", formatGlucose(mgdL, unit), trendArrow(trend)));
            meanings_.at(i)->setText(meaning);
            plates_.at(i)->present(title, color, title);
        };
        plate(0, low, "DoubleDown", TitleColor::red,
              tr("Red: %1 or below, or falling quickly").arg(low_->currentText()));
        plate(1, usualMgdL > low && usualMgdL < high ? usualMgdL : (low + high) / 2, "Flat",
              TitleColor::primary, tr("No colour: in between"));
        plate(2, high, "DoubleUp", TitleColor::orange,
              tr("Yellow: %1 or above, or rising quickly").arg(high_->currentText()));
    }

    void tell()
    {
        settings_.lowGlucoseThreshold = low_->currentData().toDouble();
        settings_.highGlucoseThreshold = high_->currentData().toDouble();
        explain();
        call(handlers().settingsChanged, AppSettings{settings_});
    }

    AppSettings settings_{};  ///< As presented, with what was chosen since.
    std::array<QRadioButton*, 2> units_{};
    SettingsComboBox* low_ = nullptr;
    SettingsComboBox* high_ = nullptr;
    std::array<ReadingPlate*, 3> plates_{};
    std::array<QLabel*, 3> meanings_{};
};

class AlertsPage final : public OnboardingPage {
    Q_DECLARE_TR_FUNCTIONS(AlertsPage)
public:
    AlertsPage(const Handlers& handlers, QWidget* parent) : OnboardingPage{handlers, parent}
    {
        struct Row {
            bool AppSettings::* field;
            QString title;
        };
        const std::array<Row, 5> rows{{{&AppSettings::alertOnLowThreshold, tr("&Low glucose")},
                                       {&AppSettings::alertOnHighThreshold, tr("&High glucose")},
                                       {&AppSettings::alertOnRapidFall, tr("Rapid &fall")},
                                       {&AppSettings::alertOnRapidRise, tr("Rapid &rise")},
                                       {&AppSettings::alertOnMissingData, tr("No &data for 15 minutes")}}};
        auto* const layout = pageLayout(this);
        const int gap = fontMetrics().height() / 2;
        allOff_ =
            wrappedLabel(tr("Alerts are switched off altogether. When you choose a kind here, alerts are "
                            "switched on for that kind only."),
                         this);
        layout->addWidget(allOff_);
        layout->addWidget(wrappedLabel(tr("Alert me with a notification and a sound:"), this));
        for (std::size_t i = 0; i < rows.size(); ++i) {
            fields_.at(i) = rows.at(i).field;
            switches_.at(i) = new QCheckBox{rows.at(i).title, this};
            layout->addWidget(switches_.at(i));
            connect(switches_.at(i), &QCheckBox::clicked, this, [this, i](bool on) { toggled(i, on); });
        }
        silentLows_ = wrappedLabel({}, this);
        QFont bold = silentLows_->font();
        bold.setBold(true);
        silentLows_->setFont(bold);
        layout->addWidget(silentLows_);
        layout->addSpacing(gap);
        layout->addWidget(
            wrappedLabel(tr("Try now whether you would notice an alert on this computer:"), this));

        denied_ = new QFrame{this};
        denied_->setFrameShape(QFrame::StyledPanel);
        auto* const deniedLayout = new QVBoxLayout{denied_};
        deniedLayout->addWidget(wrappedLabel(tr("Notifications are disabled for Tidewell."), denied_));
        deniedLayout->addWidget(wrappedLabel(
            tr("Enable notifications in System Settings > Notifications to receive glucose alerts."),
            denied_));
        layout->addWidget(denied_);

        send_ = new QPushButton{this};
        layout->addWidget(send_, 0, Qt::AlignLeft);
        message_ = wrappedLabel({}, this);
        layout->addWidget(message_);

        question_ = new QWidget{this};
        auto* const answers = new QHBoxLayout{question_};
        answers->setContentsMargins({});
        ask_ = new QLabel{tr("Did you see and hear it?"), question_};
        answers->addWidget(ask_);
        yes_ = new QPushButton{tr("&Yes"), question_};
        no_ = new QPushButton{tr("&No"), question_};
        answers->addWidget(yes_);
        answers->addWidget(no_);
        answers->addStretch(1);
        layout->addWidget(question_);

        findings_ = new QFrame{this};
        findings_->setFrameShape(QFrame::StyledPanel);
        findingLines_ = new QVBoxLayout{findings_};
        layout->addWidget(findings_);
        openSettings_ = new QPushButton{tr("Open notification &settings"), this};
        layout->addWidget(openSettings_, 0, Qt::AlignLeft);
        layout->addStretch(1);

        connect(send_, &QPushButton::clicked, this, [this] { call(this->handlers().sendTestAlert); });
        connect(openSettings_, &QPushButton::clicked, this,
                [this] { call(this->handlers().openNotificationSettings); });
        connect(yes_, &QPushButton::clicked, this,
                [this] { call(this->handlers().testAlertAnswered, true); });
        connect(no_, &QPushButton::clicked, this,
                [this] { call(this->handlers().testAlertAnswered, false); });
    }
    QString heading(const OnboardingState&) const override { return tr("Alerts"); }
    void present(const OnboardingState& state, bool) override
    {
        using Answer = OnboardingState::TestAlertAnswer;
        settings_ = state.settings;
        allOff_->setVisible(!settings_.alertsEnabled);
        for (std::size_t i = 0; i < switches_.size(); ++i) {
            switches_.at(i)->setChecked(settings_.alertsEnabled && settings_.*fields_.at(i));
            switches_.at(i)->setEnabled(!state.isBusy);
        }
        QStringList silent;
        for (const SilentLowWarning& warning :
             silentLowWarnings(settings_, {}, state.now, TimeZone::current()))
            silent << displayText(warning.text);
        silentLows_->setText(silent.join(u'\n'));
        silentLows_->setVisible(!silent.isEmpty());

        const bool isDenied = state.authorization == NotificationAuthorizationState::denied;
        denied_->setVisible(isDenied);
        openSettings_->setVisible(handlers().openNotificationSettings &&
                                  (isDenied || state.testAlertAnswer == Answer::notSeen));
        send_->setText(state.isSendingTestAlert         ? tr("Sending test alert")
                       : state.testAlertMessage.empty() ? tr("Send &test alert")
                                                        : tr("Send &test alert again"));
        send_->setEnabled(!state.isSendingTestAlert && !state.isBusy);
        const QString message = state.isSendingTestAlert ? QString{}
                                : state.testAlertAnswer == Answer::seen
                                    ? tr("Good: that is how alerts reach you.")
                                    : displayText(state.testAlertMessage);
        if (message_->text() != message)
            message_->setText(message);
        message_->setVisible(!message.isEmpty());
        question_->setVisible(state.testAlertAnswer == Answer::asked && !state.isSendingTestAlert);
        presentFindings(state);
    }
    std::vector<OnboardingNews> news(const OnboardingState&) const override
    {
        std::vector<OnboardingNews> lines;
        const auto add = [&lines](const QWidget* shown, const QLabel* label) {
            if (!shown->isHidden())
                lines.push_back({.text = label->text()});
        };
        add(allOff_, allOff_);
        add(silentLows_, silentLows_);
        add(message_, message_);
        for (const QFrame* frame : {denied_, findings_})
            for (const QLabel* label : frame->findChildren<QLabel*>())
                add(frame, label);
        add(question_, ask_);
        return lines;
    }
    QString workText(const OnboardingState& state) const override
    {
        return state.isSendingTestAlert ? send_->text() : QString{};
    }
    bool focusFirst() override
    {
        switches_.front()->setFocus();
        return true;
    }

private:
    void toggled(std::size_t changed, bool on)
    {
        // While alerts are off as a whole, none of the switches is on, whatever is stored of them.
        if (!settings_.alertsEnabled)
            for (bool AppSettings::* const field : fields_)
                settings_.*field = false;
        settings_.alertsEnabled = true;
        settings_.*fields_.at(changed) = on;
        call(handlers().settingsChanged, AppSettings{settings_});
    }

    /// Problems always, since no alert would be noticed; cautions when this one was not.
    void presentFindings(const OnboardingState& state)
    {
        const bool missed = state.testAlertAnswer == OnboardingState::TestAlertAnswer::notSeen;
        std::vector<AlertFinding> shown;
        for (const AlertFinding& finding : state.alertFindings) {
            if (finding.severity == AlertFinding::Severity::problem ||
                (missed && finding.severity == AlertFinding::Severity::caution))
                shown.push_back(finding);
        }
        findings_->setVisible(missed || !shown.empty());
        if (shown == shown_ && missed == missed_ && findingLines_->count() > 0)
            return;
        shown_ = shown;
        missed_ = missed;
        while (QLayoutItem* const item = findingLines_->takeAt(0)) {
            delete item->widget();
            delete item;
        }
        if (shown.empty()) {
            QLabel* const line = wrappedLabel(
                tr("Nothing was found that keeps alerts away. Look whether the desktop collects "
                   "notifications in a list without showing them, and whether the sound is turned up. Then "
                   "send the test alert again."),
                findings_);
            findingLines_->addWidget(line);
            line->show();
            return;
        }
        for (const AlertFinding& finding : shown) {
            QString text = displayText(finding.text);
            if (!finding.remedy.empty())
                text += u'\n' + displayText(finding.remedy);
            QLabel* const line = bulletLabel(text, findings_);
            line->setTextInteractionFlags(Qt::TextSelectableByMouse);
            findingLines_->addWidget(line);
            line->show();
        }
    }

    AppSettings settings_{};
    std::array<bool AppSettings::*, 5> fields_{};
    std::array<QCheckBox*, 5> switches_{};
    QLabel* allOff_ = nullptr;
    QLabel* silentLows_ = nullptr;
    QFrame* denied_ = nullptr;
    QPushButton* send_ = nullptr;
    QPushButton* openSettings_ = nullptr;
    QLabel* message_ = nullptr;
    QWidget* question_ = nullptr;
    QLabel* ask_ = nullptr;
    QPushButton* yes_ = nullptr;
    QPushButton* no_ = nullptr;
    QFrame* findings_ = nullptr;
    QVBoxLayout* findingLines_ = nullptr;
    std::vector<AlertFinding> shown_{};
    bool missed_ = false;
};

}  // namespace

OnboardingPage* makeGlucosePage(const OnboardingPage::Handlers& handlers, QWidget* parent)
{
    return new GlucosePage{handlers, parent};
}

OnboardingPage* makeAlertsPage(const OnboardingPage::Handlers& handlers, QWidget* parent)
{
    return new AlertsPage{handlers, parent};
}

}  // namespace tidewell
