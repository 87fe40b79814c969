#include "ui/SettingsGlucosePage.h"

#include <fmt/format.h>

#include <QLabel>
#include <QVBoxLayout>
#include <algorithm>

#include "sources/GlucoseUnits.h"
#include "ui/DisplayText.h"
#include "ui/WindowText.h"

namespace tidewell {

SettingsGlucosePage::SettingsGlucosePage(SettingsPageContext& context) : SettingsPage{context}
{
    QVBoxLayout* display = addGroup(tr("Display"));
    unit_ = addPicker("measurementUnit", tr("Unit"));
    unit_->onPicked([this](const QVariant& unit) {
        my().change([&unit](AppSettings& s) { s.measurementUnit = unit.toString().toStdString(); });
        present();
    });
    addField(*display, tr("&Unit:"), *unit_);

    QVBoxLayout* limits = addGroup(tr("Low and high"));
    makeThreshold(*limits, low_, "lowGlucoseThreshold", tr("&Low at or below:"), tr("Low threshold"));
    makeThreshold(*limits, high_, "highGlucoseThreshold", tr("&High at or above:"), tr("High threshold"));
    limits->addWidget(wrappedLabel(tr("The reading and the graph change colour at these values, and low and "
                                      "high alerts are due at them. "
                                      "Both are stored in mg/dL, whichever unit is shown."),
                                   this));
    limits->addWidget(wrappedLabel(
        tr("Insights does not use them: its ranges are fixed, so that reports can be compared."), this));
    column().addStretch();
}

void SettingsGlucosePage::makeThreshold(QBoxLayout& layout, Threshold& threshold, const char* name,
                                        const QString& title, const QString& spoken)
{
    threshold.picker = addPicker(name, spoken);
    threshold.picker->setMaxVisibleItems(14);
    threshold.picker->onPicked([this, field = threshold.field](const QVariant& mgdL) {
        my().change([field, &mgdL](AppSettings& settings) { settings.*field = mgdL.toDouble(); });
        present();
    });
    addField(layout, title, *threshold.picker);
    threshold.stored = copyableLabel({}, this);
    threshold.stored->setObjectName(QString::fromLatin1(name) + QStringLiteral("Stored"));
    layout.addWidget(threshold.stored);
}

void SettingsGlucosePage::presentThreshold(const Threshold& threshold, bool mmolL)
{
    const auto options = thresholdOptions(threshold.kind, mmolL);
    std::vector<SettingsComboBox::Entry> entries;
    for (const auto& [mgdL, label] : options)
        entries.push_back({displayText(label), mgdL});
    const double stored = state().settings.*threshold.field;
    const double shown = ThresholdValidator::snap(options, stored);
    threshold.picker->present(entries, shown);
    const bool differs = shown != stored;
    if (differs) {
        const auto option = std::ranges::find(options, shown, &ThresholdOption::mgdL);
        threshold.stored->setText(
            tr("%1 mg/dL is stored and in force. The list shows the nearest value, %2; picking one replaces "
               "it.")
                .arg(QString::fromStdString(fmt::format("{}", stored)), displayText(option->label)));
    }
    threshold.stored->setVisible(differs);
}

void SettingsGlucosePage::present()
{
    const GlucoseUnits unit = glucoseUnits(state().settings.measurementUnit).value_or(GlucoseUnits::mgdL);
    std::vector<SettingsComboBox::Entry> units;
    for (const GlucoseUnits one : allGlucoseUnits)
        units.push_back({displayText(rawValue(one)), displayText(rawValue(one))});
    unit_->present(units, displayText(rawValue(unit)));
    for (const Threshold& threshold : {low_, high_})
        presentThreshold(threshold, unit == GlucoseUnits::mmolL);
}

}  // namespace tidewell
