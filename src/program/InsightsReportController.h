#pragma once

#include <QPointer>
#include <memory>

#include "program/Core.h"
#include "program/InsightsController.h"
#include "ui/InsightsReportDialog.h"

namespace tidewell {

/// What "Save report…" does: asks how and where, makes the page on a worker, and writes it there, with the
/// readings of its period where they are wanted. Main thread, which never waits.
class InsightsReportController {
public:
    explicit InsightsReportController(Core& core);
    ~InsightsReportController();
    InsightsReportController(const InsightsReportController&) = delete;
    InsightsReportController& operator=(const InsightsReportController&) = delete;

    /// The report as it is shown now; one that comes later is not the one that is saved.
    void show(const InsightsShown& shown);
    /// The report is of no use to who sits there now: asks no more, and begins no file.
    void withdraw();

private:
    asio::awaitable<void> save(std::shared_ptr<const InsightsReportContent> content,
                               std::optional<HistoryScopeID> scope, InsightsReportRequest request);

    Core& core_;
    QPointer<InsightsReportDialog> dialog_{};  ///< Goes with its window.
    std::shared_ptr<const InsightsReportContent> content_{};
    std::optional<HistoryScopeID> scope_{};  ///< Whose it is.
    Task<void> save_;
};

}  // namespace tidewell
