#pragma once

#include <QPointer>
#include <QWidget>
#include <functional>
#include <vector>

#include "ui/SettingsControls.h"
#include "ui/SettingsWindow.h"

class QCheckBox;
class QPushButton;
class QVBoxLayout;

namespace tidewell {

/// What the pages of the settings share. Owned by the window, outlives its pages.
struct SettingsPageContext {
    SettingsFacts facts;
    SettingsWindow::Handlers handlers;
    SettingsState state{};  ///< As presented, with the changes that were told since.

    /// Tells the settings that are shown with `edit` made to them; nothing when that changes nothing.
    void change(const std::function<void(AppSettings&)>& edit);
};

/// One tab of the settings, as a column for a scroll area. Main thread.
class SettingsPage : public QWidget {
    Q_OBJECT
public:
    explicit SettingsPage(SettingsPageContext& context);

    /// Shows the context's state. Tells nobody, keeps the focus, and leaves alone what the person is editing.
    virtual void present() = 0;

protected:
    [[nodiscard]] SettingsPageContext& my() { return context_; }
    [[nodiscard]] const SettingsPageContext& context() const { return context_; }
    [[nodiscard]] const SettingsState& state() const { return context_.state; }
    [[nodiscard]] QVBoxLayout& column() const { return *column_; }

    /// A group of the column with that title.
    QVBoxLayout* addGroup(const QString& title);
    /// A check box for one preference, in that layout.
    QCheckBox* addSwitch(QBoxLayout& layout, const char* name, const QString& title,
                         bool AppSettings::* field);
    SettingsComboBox* addPicker(const char* name, const QString& spoken);
    QPushButton* addButton(QBoxLayout& layout, const char* name, const QString& title,
                           std::function<void()> pressed);
    /// Shows the switches that were added.
    void presentSwitches();
    /// Enables or disables a control. The focus that it loses comes back to it, unless the person has moved
    /// it.
    void setUsable(QWidget& widget, bool usable);
    /// Shows or hides a control. The focus that it has or waits for goes to `heir`.
    void setShown(QWidget& widget, bool shown, QWidget& heir);
    /// Whether something of the account is saved, or may be.
    [[nodiscard]] bool mayHaveSavedReadings() const;

private:
    struct Switch {
        QCheckBox* box;
        bool AppSettings::* field;
    };
    SettingsPageContext& context_;
    QVBoxLayout* column_ = nullptr;
    std::vector<Switch> switches_;
    QPointer<QWidget> disabledUnderFocus_;
    QPointer<QWidget> focusSince_;  ///< Where the focus went then.
};

}  // namespace tidewell
