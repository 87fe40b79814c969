#pragma once

#include <QWidget>
#include <functional>
#include <memory>

#include "ui/InsightsViewState.h"

namespace tidewell {

/// The Insights window: a period to pick, and what a state says: the report, how far its collection has come,
/// or what is wrong. Decides and calculates nothing. Escape closes; closing never ends the program. What is
/// new is told to screen readers, renewed figures are not. Main thread.
class InsightsWindow final : public QWidget {
    Q_OBJECT
public:
    struct Handlers {
        std::function<void(InsightsPeriod)> periodPicked;
        std::function<void()> refresh;  ///< Of "Try again" and F5.
        std::function<void()> completionSeen;
        std::function<void()> saveReport;    ///< Empty: there is no button for it.
        std::function<void()> openSettings;  ///< Of "Insights settings"; empty: the window names a command.
        std::function<void()> closed;
    };
    explicit InsightsWindow(Handlers handlers);
    ~InsightsWindow() override;

    void present(const InsightsViewState& state);
    /// The local date up to which a period can be picked.
    void setToday(std::chrono::sys_days today);
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
