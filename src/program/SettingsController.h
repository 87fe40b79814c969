#pragma once

#include <QPointer>
#include <functional>
#include <memory>

#include "app/SettingsModel.h"
#include "program/Core.h"
#include "ui/SettingsWindow.h"

namespace tidewell {

/// The settings window over its model. Main thread.
class SettingsController {
public:
    /// Where the window leads to.
    struct Places {
        std::function<void()> signIn;
        std::function<void()> terms;
        std::function<void()> insights;
    };
    SettingsController(Core& core, Places places);
    ~SettingsController();
    SettingsController(const SettingsController&) = delete;
    SettingsController& operator=(const SettingsController&) = delete;

    /// Shows the window on that tab, or brings it to the front.
    void show(SettingsTab tab);
    /// Brings the window to the front as it is; without one, shows it on its first tab.
    void show();

private:
    void make();
    void closed();
    /// Everything that `doctor` looks at and this process knows or can ask.
    asio::awaitable<std::vector<AlertFinding>> look();

    Core& core_;
    Places places_;
    std::unique_ptr<SettingsModel> model_;  ///< While there is a window.
    std::shared_ptr<void> observer_;
    QPointer<SettingsWindow> window_;
};

}  // namespace tidewell
