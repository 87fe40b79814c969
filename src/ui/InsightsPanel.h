#pragma once

#include <QWidget>
#include <functional>
#include <memory>

#include "ui/InsightsViewState.h"

namespace tidewell {

/// A report as a column of widgets, for a scroll area: notices, cards with the figures, bands, profile, days,
/// coverage and episodes. Main thread.
class InsightsPanel final : public QWidget {
    Q_OBJECT
public:
    struct Handlers {
        std::function<void(std::size_t)> openDay;          ///< A day of the report's days.
        std::function<void()> completionSeen;              ///< The person has seen that the report opened.
        std::function<void(QWidget&, QRect)> walkReached;  ///< A walk went there, in a widget of the panel.
        std::function<void()> openSettings{};              ///< Empty: there is no button for it.
    };
    explicit InsightsPanel(Handlers handlers, QWidget* parent = nullptr);
    ~InsightsPanel() override;

    /// A state with a report in it.
    void present(const InsightsViewState& state);
    /// The report in a few words: its period, what comes first, and what is to be doubted.
    [[nodiscard]] QString spokenReport() const;

protected:
    void resizeEvent(QResizeEvent* event) override;
    void changeEvent(QEvent* event) override;

private:
    struct Impl;
    std::unique_ptr<Impl> impl_;
};

/// What a screen reader says of one local date: date, mean, time in range, readings.
[[nodiscard]] QString spokenInsightsDay(const InsightsDay& day, GlucoseUnits unit);

}  // namespace tidewell
