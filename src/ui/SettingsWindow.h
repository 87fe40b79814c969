#pragma once

#include <QWidget>
#include <functional>
#include <memory>

#include "app/SettingsModel.h"

namespace tidewell {

/// The tabs, in their order.
enum class SettingsTab { general, glucose, insights, alerts, account, about };

/// Where things lie and what this is: what the settings show and that does not change while they are shown.
struct SettingsFacts {
    QString version{};
    QString configurationFile{};
    QString historyFolder{};
    QString stateFile{};
    QString secretsFile{};  ///< Where the password and keys lie, readable; empty: in the keyring.
    bool isDemonstration = false;
    bool canOpenNotificationSettings = false;
};

/// The settings. Shows a state and tells what the person wants; decides and stores nothing. Changes apply at
/// once; what destroys is confirmed first. Escape closes; closing never ends the program. Main thread.
class SettingsWindow final : public QWidget {
    Q_OBJECT
public:
    struct Handlers {
        std::function<void(AppSettings)> changed;  ///< The state's, with one value changed.
        std::function<void(bool)> startAtLoginChanged;
        std::function<void()> sendTestAlert;
        std::function<void()> openNotificationSettings;
        std::function<void(std::int64_t)> enableHistory;  ///< After the disclosure was accepted; days.
        std::function<void()> pauseHistory;
        std::function<void(std::int64_t)> historyRetentionChanged;  ///< After a confirmation when shorter.
        std::function<void(bool)> deleteHistory;                    ///< Confirmed; true: of every account.
        std::function<void()> signIn;                               ///< Also to switch the account.
        std::function<void()> reconnect;
        std::function<void(bool)> signOut;  ///< Confirmed; true: saved history goes too.
        std::function<void()> showTerms;
        std::function<void()> showInsights;
        std::function<void()> lookAgain;  ///< Of the findings, and when the window comes to the front.
        std::function<void()> closed;
    };
    SettingsWindow(SettingsFacts facts, Handlers handlers);
    ~SettingsWindow() override;

    void present(const SettingsState& state);
    /// Shows it on that tab, and brings it to the front.
    void open(SettingsTab tab);
    /// The same without another page: the person may be in the middle of one.
    void bringToFront();

protected:
    void closeEvent(QCloseEvent* event) override;
    void keyPressEvent(QKeyEvent* event) override;
    void changeEvent(QEvent* event) override;

private:
    void activationChanged();
    struct Impl;
    std::unique_ptr<Impl> impl_;
};

}  // namespace tidewell
