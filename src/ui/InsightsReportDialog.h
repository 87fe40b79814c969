#pragma once

#include <QDialog>
#include <filesystem>
#include <functional>
#include <memory>
#include <string>
#include <vector>

#include "ui/InsightsReportPage.h"

namespace tidewell {

/// A report that a person wants saved.
struct InsightsReportRequest {
    std::filesystem::path file{};
    InsightsReportFormat format{};
    InsightsReportPaper paper{};
    std::string name{};         ///< On the page; empty by default.
    bool withReadings = false;  ///< As CSV beside it; a file that exists is not replaced for that.
    bool replace = false;       ///< The person agreed that the file is replaced, should it exist.
};

/// Asks how a report is to be saved ("Save report…"), and where; says that the file is not encrypted.
///
/// It only asks: who shows it saves, never on the main thread, and answers with finish() or showError(). Not
/// modal: show it with present(), never exec(). Main thread.
class InsightsReportDialog final : public QDialog {
    Q_OBJECT
public:
    explicit InsightsReportDialog(QWidget* parent = nullptr);
    ~InsightsReportDialog() override;

    void onSave(std::function<void(InsightsReportRequest)> handler);

    /// Shows and raises it. `usual` is the paper that is marked, `fileName` what is proposed, without an end.
    void present(InsightsReportPaper usual, const QString& fileName);

    /// It is saved: closes. Stays open to name the days (in UTC) that are missing in the attached readings,
    /// should there be any.
    void finish(const std::vector<std::string>& missingDays = {});
    /// There is nothing to save any more: closes with what it has opened, and forgets what was typed.
    void withdraw();
    /// It is not: says so, and lets the person try again. Plain text.
    void showError(const QString& text);

private:
    struct Impl;
    std::unique_ptr<Impl> impl_;
};

}  // namespace tidewell
