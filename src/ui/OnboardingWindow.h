#pragma once

#include <QWidget>
#include <functional>
#include <memory>

#include "app/OnboardingFlow.h"

namespace tidewell {

/// The first-run steps. Shows a state and tells what the person wants; decides and stores nothing. Fields
/// with a password are emptied whenever it closes. Escape closes; closing never ends the program. Main
/// thread.
class OnboardingWindow final : public QWidget {
    Q_OBJECT
public:
    struct Handlers {
        std::function<void()> back;
        std::function<void()> forward;
        std::function<void(bool)> termsAccepted;
        std::function<void(GlucoseAccountConfiguration)> accountEntered;  ///< With each change of a field.
        std::function<void(std::string)> personChosen;
        std::function<void()> tryAgain;
        std::function<void(AppSettings)> settingsChanged;
        std::function<void()> sendTestAlert;
        std::function<void(bool)> testAlertAnswered;     ///< Whether it was seen.
        std::function<void()> openNotificationSettings;  ///< Empty: there is no such button.
        std::function<void(bool)> savesHistoryChanged;
        std::function<void(bool)> startsAtLoginChanged;
        std::function<void()> activated;  ///< It came to the front.
        std::function<void()> closed;
    };
    explicit OnboardingWindow(Handlers handlers);
    ~OnboardingWindow() override;

    void present(const OnboardingState& state);
    /// Shows it, and brings it to the front.
    void open();

protected:
    void closeEvent(QCloseEvent* event) override;
    void keyPressEvent(QKeyEvent* event) override;
    void changeEvent(QEvent* event) override;

private:
    struct Impl;
    std::unique_ptr<Impl> impl_;
};

}  // namespace tidewell
