#pragma once

#include <QAbstractTableModel>
#include <memory>

#include "ui/InsightsReportPage.h"

namespace tidewell {

/// The episodes of a report as a table, the newest first. Main thread.
class InsightsEpisodesModel final : public QAbstractTableModel {
    Q_OBJECT
public:
    using QAbstractTableModel::QAbstractTableModel;

    void setReport(std::shared_ptr<const InsightsReportContent> report);
    /// Of a row.
    [[nodiscard]] const InsightsEpisode& episode(int row) const;

    [[nodiscard]] int rowCount(const QModelIndex& parent = {}) const override;
    [[nodiscard]] int columnCount(const QModelIndex& parent = {}) const override;
    [[nodiscard]] QVariant data(const QModelIndex& index, int role = Qt::DisplayRole) const override;
    [[nodiscard]] QVariant headerData(int section, Qt::Orientation orientation,
                                      int role = Qt::DisplayRole) const override;

private:
    std::shared_ptr<const InsightsReportContent> report_{};
};

/// "Below 70 mg/dL" and so on.
[[nodiscard]] QString insightsEpisodeTitle(InsightsEpisodeKind kind, GlucoseUnits unit);

}  // namespace tidewell
