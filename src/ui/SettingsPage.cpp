#include "ui/SettingsPage.h"

#include <QCheckBox>
#include <QGroupBox>
#include <QPushButton>
#include <QVBoxLayout>
#include <utility>

namespace tidewell {

void SettingsPageContext::change(const std::function<void(AppSettings&)>& edit)
{
    AppSettings wanted = state.settings;
    edit(wanted);
    if (wanted == state.settings)
        return;
    state.settings = wanted;
    if (handlers.changed)
        handlers.changed(std::move(wanted));
}

SettingsPage::SettingsPage(SettingsPageContext& context) : context_{context}
{
    column_ = new QVBoxLayout{this};
}

QVBoxLayout* SettingsPage::addGroup(const QString& title)
{
    auto* group = new QGroupBox{title, this};
    column_->addWidget(group);
    return new QVBoxLayout{group};
}

QCheckBox* SettingsPage::addSwitch(QBoxLayout& layout, const char* name, const QString& title,
                                   bool AppSettings::* field)
{
    auto* box = new QCheckBox{title, this};
    box->setObjectName(QString::fromLatin1(name));
    layout.addWidget(box);
    connect(box, &QCheckBox::clicked, this, [this, field](bool on) {
        context_.change([field, on](AppSettings& settings) { settings.*field = on; });
        present();
    });
    switches_.push_back({box, field});
    return box;
}

SettingsComboBox* SettingsPage::addPicker(const char* name, const QString& spoken)
{
    auto* picker = new SettingsComboBox{this};
    picker->setObjectName(QString::fromLatin1(name));
    picker->setAccessibleName(spoken);
    picker->onStale([this] { present(); });
    return picker;
}

QPushButton* SettingsPage::addButton(QBoxLayout& layout, const char* name, const QString& title,
                                     std::function<void()> pressed)
{
    auto* button = new QPushButton{title, this};
    button->setObjectName(QString::fromLatin1(name));
    layout.addWidget(button, 0, Qt::AlignLeft);
    connect(button, &QPushButton::clicked, this, [pressed = std::move(pressed)] {
        if (pressed)
            pressed();
    });
    return button;
}

void SettingsPage::presentSwitches()
{
    for (const auto& [box, field] : switches_)
        if (box->isChecked() != state().settings.*field)
            box->setChecked(state().settings.*field);
}

void SettingsPage::setUsable(QWidget& widget, bool usable)
{
    if (widget.isEnabled() == usable)
        return;
    const bool hadFocus = window()->focusWidget() == &widget;
    widget.setEnabled(usable);
    if (hadFocus) {
        disabledUnderFocus_ = &widget;
        focusSince_ = window()->focusWidget();
    } else if (usable && disabledUnderFocus_ == &widget) {
        // Where it went may have gone by itself.
        if (!focusSince_ || !focusSince_->isVisible() || window()->focusWidget() == focusSince_)
            widget.setFocus();
        disabledUnderFocus_.clear();
    }
}

void SettingsPage::setShown(QWidget& widget, bool shown, QWidget& heir)
{
    const bool hadFocus = !shown && window()->focusWidget() == &widget;
    if (hadFocus && heir.isEnabled())
        heir.setFocus();
    else if (!shown && (hadFocus || disabledUnderFocus_ == &widget))
        disabledUnderFocus_ = &heir;
    widget.setVisible(shown);
    if (hadFocus)
        focusSince_ = window()->focusWidget();
}

bool SettingsPage::mayHaveSavedReadings() const
{
    const auto& [scope, history, problem] = state().history;
    return scope && (history.collectionStartedAt || history.isEnabled || history.pendingDeletion ||
                     (problem && problem != GlucoseHistoryError::accountRequired));
}

}  // namespace tidewell
