#include "ui/InsightsEpisodesModel.h"

#include <QStringList>
#include <array>
#include <utility>

#include "insights/InsightsTexts.h"
#include "ui/DisplayText.h"
#include "ui/InsightsCharts.h"

namespace tidewell {
namespace {

enum Column { began, lasted, kind, extreme, remarks, columnCountOfTable };

QString text(std::string_view words) { return displayText(words); }

/// "Mon, 2 Mar 08:15".
QString momentText(Date date, TimeZone zone)
{
    const auto shown = LocalClock{zone}.at(date);
    return insightsDateText(shown.date) + u' ' + text(localTimeOfDay(date, zone));
}

}  // namespace

QString insightsEpisodeTitle(InsightsEpisodeKind which, GlucoseUnits unit)
{
    constexpr std::array thresholds{lowBelow, veryLowBelow, highAbove, veryHighAbove};
    const bool isLow = which == InsightsEpisodeKind::low || which == InsightsEpisodeKind::veryLow;
    const double threshold = thresholds.at(static_cast<std::size_t>(which));
    return (isLow ? InsightsEpisodesModel::tr("Below %1 %2") : InsightsEpisodesModel::tr("Above %1 %2"))
        .arg(text(formatGlucose(threshold, unit)), text(rawValue(unit)));
}

void InsightsEpisodesModel::setReport(std::shared_ptr<const InsightsReportContent> report)
{
    beginResetModel();
    report_ = std::move(report);
    endResetModel();
}

const InsightsEpisode& InsightsEpisodesModel::episode(int row) const
{
    const auto& episodes = report_->result.episodes;
    return episodes.at(episodes.size() - 1 - static_cast<std::size_t>(row));
}

int InsightsEpisodesModel::rowCount(const QModelIndex& parent) const
{
    return parent.isValid() || !report_ ? 0 : static_cast<int>(report_->result.episodes.size());
}

int InsightsEpisodesModel::columnCount(const QModelIndex& parent) const
{
    return parent.isValid() ? 0 : columnCountOfTable;
}

QVariant InsightsEpisodesModel::data(const QModelIndex& index, int role) const
{
    if (!index.isValid() || role != Qt::DisplayRole)
        return {};
    const InsightsEpisode& one = episode(index.row());
    switch (index.column()) {
    case began: return momentText(one.interval.start, report_->zone);
    case lasted: return text(insightsDurationText(one.interval.duration()));
    case kind: return insightsEpisodeTitle(one.kind, report_->unit);
    case extreme: return text(formatGlucose(one.extremeMgdl, report_->unit));
    case remarks: {
        QStringList parts;
        if (one.isExtended)
            parts << tr("over 2 hours");
        if (one.startsAtGap)
            parts << tr("begins after a gap");
        if (one.endsAtGap)
            parts << tr("ends in a gap");
        return parts.join(QStringLiteral(", "));
    }
    default: return {};
    }
}

QVariant InsightsEpisodesModel::headerData(int section, Qt::Orientation orientation, int role) const
{
    if (orientation != Qt::Horizontal || role != Qt::DisplayRole)
        return {};
    switch (section) {
    case began: return tr("Began");
    case lasted: return tr("Lasted");
    case kind: return tr("Kind");
    case extreme: return tr("Lowest or highest");
    case remarks: return tr("Remarks");
    default: return {};
    }
}

}  // namespace tidewell
