#pragma once

#include <QDialog>
#include <memory>

#include "ui/InsightsReportPage.h"

namespace tidewell {

/// One day of a report by itself: its curve, walked by keyboard, its figures, and the way to the days beside
/// it. Not modal; Escape closes. Main thread.
class InsightsDayDialog final : public QDialog {
    Q_OBJECT
public:
    explicit InsightsDayDialog(QWidget* parent = nullptr);
    ~InsightsDayDialog() override;

    /// Shows and raises it with one of the report's days.
    void present(std::shared_ptr<const InsightsReportContent> report, std::size_t day);

private:
    void showDay(std::size_t day);
    struct Impl;
    std::unique_ptr<Impl> impl_;
};

}  // namespace tidewell
