#pragma once

#include <QPointer>
#include <memory>

#include "app/AppDelegate.h"
#include "app/OnboardingFlow.h"
#include "program/Core.h"
#include "ui/OnboardingWindow.h"

namespace tidewell {

/// The first-run steps with their window. Main thread.
class OnboardingController final : public OnboardingCoordinating {
public:
    explicit OnboardingController(Core& core);
    ~OnboardingController() override;

    /// Goes on where the steps were left, or brings their window to the front.
    void showOnboarding() override;

private:
    void makeFlow();
    void makeWindow();
    void finished();

    Core& core_;
    std::unique_ptr<OnboardingFlow> flow_;  ///< Made when it is first shown.
    std::shared_ptr<void> observer_;
    QPointer<OnboardingWindow> window_;  ///< Gone when it was closed.
};

/// The system's country, as two letters; empty when it has none.
[[nodiscard]] std::string systemCountry();

}  // namespace tidewell
