#include "program/InsightsReportController.h"

#include <fmt/format.h>

#include <utility>

#include "program/InsightsReportFiles.h"
#include "support/Workers.h"

namespace tidewell {

InsightsReportController::InsightsReportController(Core& core) : core_{core} {}

InsightsReportController::~InsightsReportController() { save_.cancel(); }

void InsightsReportController::show(const InsightsShown& shown)
{
    if (!shown.report || !shown.window)
        return;
    content_ = shown.report;
    scope_ = shown.scope;
    if (!dialog_) {
        dialog_ = new InsightsReportDialog{shown.window};
        dialog_->onSave([this](InsightsReportRequest request) {
            if (content_)
                save_ = startTask(core_.main(), save(content_, scope_, std::move(request)));
        });
    }
    LocalClock clock{content_->zone};
    const std::string date = isoText(Date{clock.at(content_->madeAt).date}).substr(0, 10);
    dialog_->present(usualPaper(), QString::fromStdString("glucose-report-" + date));
}

void InsightsReportController::withdraw()
{
    save_.cancel();
    content_.reset();
    if (dialog_)
        dialog_->withdraw();
}

asio::awaitable<void> InsightsReportController::save(std::shared_ptr<const InsightsReportContent> content,
                                                     std::optional<HistoryScopeID> scope,
                                                     InsightsReportRequest request)
{
    std::vector<StoredReading> readings;
    std::vector<std::string> missingDays;
    if (request.withReadings) {
        const auto& [start, end] = content->result.summary.interval;
        auto saved = co_await core_.history().snapshot(start, end);
        std::string problem;
        if (!saved)
            problem = description(saved.error());
        else if (saved->accountScope != scope ||
                 saved->configuration.collectionStartedAt != content->collectionStartedAt)
            problem = "Saved history is another one than that of this report. Open the report again.";
        if (!problem.empty()) {
            if (dialog_)
                dialog_->showError(QString::fromStdString(problem));
            co_return;
        }
        readings = std::move(saved->readings);
        for (const std::int64_t day : saved->unreadableDays)
            missingDays.push_back(isoText(dateFromUnix(static_cast<double>(day) * 86'400)).substr(0, 10));
    }
    auto write = [content = std::move(content), request = std::move(request), readings = std::move(readings),
                  missingDays, isDemonstration = core_.isDemonstration()] {
        InsightsReportContent page = *content;
        page.name = request.name;
        page.isDemonstration = isDemonstration;
        std::vector<InsightsReportFile> files{
            {request.file, insightsReport(page, request.paper, request.format).toStdString(),
             request.replace}};
        if (request.withReadings)
            files.push_back({readingsBeside(request.file), attachedReadings(readings, missingDays), false});
        return writeReportFiles(files);
    };
    const auto problem = co_await runOnWorker(core_.workers(), std::move(write));
    if (!dialog_)
        co_return;
    if (problem)
        dialog_->showError(QString::fromStdString(*problem));
    else
        dialog_->finish(missingDays);
}

}  // namespace tidewell
