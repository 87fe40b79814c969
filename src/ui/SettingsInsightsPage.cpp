#include "ui/SettingsInsightsPage.h"

#include <QDateTime>
#include <QLabel>
#include <QPushButton>
#include <QVBoxLayout>

#include "insights/InsightsCollection.h"
#include "ui/DisplayText.h"
#include "ui/SettingsHistoryDialog.h"
#include "ui/WindowText.h"

namespace tidewell {
namespace {

QString dayText(Date date)
{
    const auto seconds = static_cast<qint64>(unixSeconds(date));
    return displayDate(QDateTime::fromSecsSinceEpoch(seconds).date(), QStringLiteral("d MMMM yyyy"));
}

QString daysText(std::int64_t days) { return SettingsInsightsPage::tr("%1 days").arg(days); }

}  // namespace

SettingsInsightsPage::SettingsInsightsPage(SettingsPageContext& context) : SettingsPage{context}
{
    makeState();
    makeReport();
    makeDeletion();
    column().addStretch();
}

void SettingsInsightsPage::makeState()
{
    QVBoxLayout* group = addGroup(tr("Saved readings"));
    group->addWidget(
        wrappedLabel(tr("Insights reports on readings that are saved on this computer, encrypted. Nothing is "
                        "saved unless you ask for it."),
                     this));
    title_ = copyableLabel({}, this);
    title_->setObjectName(QStringLiteral("historyState"));
    scaleLetters(*title_, 1, true);
    group->addWidget(title_);
    since_ = wrappedLabel({}, this);
    since_->setObjectName(QStringLiteral("historySince"));
    group->addWidget(since_);
    problem_ = new SettingsNotice{this};
    problem_->setObjectName(QStringLiteral("historyProblem"));
    group->addWidget(problem_);
    auto* row = new QHBoxLayout;
    enable_ = addButton(*row, "enableHistory", {}, [this] { askToEnable(); });
    pause_ = addButton(*row, "pauseHistory", tr("&Pause saving"), my().handlers.pauseHistory);
    row->addStretch();
    group->addLayout(row);
    makeRetention(*group);
    message_ = new SettingsNotice{this};
    message_->setObjectName(QStringLiteral("historyMessage"));
    group->addWidget(message_);
}

void SettingsInsightsPage::makeRetention(QVBoxLayout& group)
{
    retention_ = addPicker("historyRetention", tr("How long readings are kept"));
    retention_->onPicked([this](const QVariant& days) {
        const std::int64_t picked = days.toLongLong();
        const std::int64_t kept = state().history.configuration.retentionDays;
        // It shows what is so, and that follows.
        present();
        if (picked < kept)
            askForRetention(picked);
        else if (picked != kept && my().handlers.historyRetentionChanged)
            my().handlers.historyRetentionChanged(picked);
    });
    retentionLabel_ = addField(group, tr("&Keep readings for:"), *retention_);
}

void SettingsInsightsPage::makeReport()
{
    QVBoxLayout* group = addGroup(tr("Insights"));
    collection_ = wrappedLabel({}, this);
    collection_->setObjectName(QStringLiteral("historyCollection"));
    group->addWidget(collection_);
    auto* row = new QHBoxLayout;
    addButton(*row, "showInsights", tr("Show &Insights"), my().handlers.showInsights);
    row->addStretch();
    group->addLayout(row);
}

void SettingsInsightsPage::makeDeletion()
{
    QVBoxLayout* group = addGroup(tr("Delete"));
    group->addWidget(wrappedLabel(
        tr("Deleting removes the readings and then their key; nobody can bring them back. Saving is off "
           "afterwards."),
        this));
    delete_ =
        addButton(*group, "deleteHistory", tr("&Delete saved readings…"), [this] { askToDelete(false); });
    deleteAll_ = addButton(*group, "deleteEveryHistory", tr("Delete the readings of &every account…"),
                           [this] { askToDelete(true); });
}

void SettingsInsightsPage::askToEnable()
{
    if (question_)
        return;
    askedAbout_ = state().history.scope;
    auto* dialog = new SettingsHistoryDialog{state().history.configuration, my().facts,
                                             [this](std::int64_t days) {
                                                 if (my().handlers.enableHistory)
                                                     my().handlers.enableHistory(days);
                                             },
                                             window()};
    question_ = dialog;
    dialog->open();
}

void SettingsInsightsPage::askForRetention(std::int64_t days)
{
    if (question_)
        return;
    askedAbout_ = state().history.scope;
    question_ = ask({.title = tr("Keep readings for %1?").arg(daysText(days)),
                     .question = tr("Delete all saved readings that are older than %1?").arg(daysText(days)),
                     .consequences = tr("They go at once, for this account and person, and cannot be brought "
                                        "back. Reports can then cover no more than %1.")
                                         .arg(daysText(days)),
                     .action = tr("&Delete older readings"),
                     .about = window()},
                    [this, days](bool) {
                        if (my().handlers.historyRetentionChanged)
                            my().handlers.historyRetentionChanged(days);
                    });
}

void SettingsInsightsPage::askToDelete(bool everyAccount)
{
    if (question_)
        return;
    askedAbout_ = state().history.scope;
    question_ =
        ask({.title = tr("Delete saved readings"),
             .question = everyAccount
                             ? tr("Delete the saved readings of every account and person, with their keys?")
                             : tr("Delete all saved readings of this account and person, with their key?"),
             .consequences =
                 tr("They cannot be brought back. Saving is off afterwards, and Insights begins anew. The "
                    "readings on screen and at the glucose service stay."),
             .action = everyAccount ? tr("&Delete everything saved") : tr("&Delete saved readings"),
             .about = window()},
            [this, everyAccount](bool) {
                if (my().handlers.deleteHistory)
                    my().handlers.deleteHistory(everyAccount);
            });
}

QString SettingsInsightsPage::stateText() const
{
    const GlucoseHistoryStatus& history = state().history;
    if (!history.scope)
        return displayText(description(GlucoseHistoryError::accountRequired));
    if (history.configuration.isEnabled)
        return tr("Saving is on.");
    if (history.configuration.pendingDeletion)
        return tr("Saving is off, and what was saved is being deleted.");
    return history.configuration.hasPreviouslyEnabled ? displayText(insightsSavingOffText)
                                                      : tr("Saving is off. Nothing is saved.");
}

QString SettingsInsightsPage::sinceText() const
{
    const GlucoseHistoryConfiguration& history = state().history.configuration;
    const QString switchedOn = history.isEnabled && history.collectionIntervalStart
                                   ? dayText(*history.collectionIntervalStart)
                                   : QString{};
    if (!history.collectionStartedAt) {
        if (!switchedOn.isEmpty())
            return tr("No reading has been saved yet. Saving was switched on on %1.").arg(switchedOn);
        return history.hasPreviouslyEnabled && !history.pendingDeletion ? tr("No readings are saved.")
                                                                        : QString{};
    }
    const QString first = dayText(*history.collectionStartedAt);
    return switchedOn.isEmpty() || switchedOn == first
               ? tr("The first readings were saved on %1.").arg(first)
               : tr("The first readings were saved on %1; saving was last switched on on %2.")
                     .arg(first, switchedOn);
}

QString SettingsInsightsPage::collectionText() const
{
    const GlucoseHistoryConfiguration& history = state().history.configuration;
    if (state().history.scope && history.insightsUnlockedAt)
        return tr("The report has been available since %1.").arg(dayText(*history.insightsUnlockedAt));
    return displayText(
        "Readings are saved after a successful glucose refresh. Insights needs 3 days of "
        "collection and at least 70% coverage over the latest 3 days.");
}

void SettingsInsightsPage::present()
{
    const GlucoseHistoryStatus& history = state().history;
    const GlucoseHistoryConfiguration& configuration = history.configuration;
    if (question_ && askedAbout_ != history.scope)
        question_->close();  // It was about somebody else.
    const bool busy = state().isChangingHistory;
    const bool hasScope = history.scope.has_value();
    const bool agreed = configuration.consentVersion >= currentConsentVersion;

    title_->setText(stateText());
    const QString since = hasScope ? sinceText() : QString{};
    since_->setText(since);
    since_->setVisible(!since.isEmpty());
    // Without an account the title says so already.
    const bool hasProblem = history.problem && history.problem != GlucoseHistoryError::accountRequired;
    problem_->present(SettingsNotice::Weight::problem,
                      hasProblem ? displayText(description(*history.problem)) : QString{});

    const bool renews = configuration.isEnabled && !agreed;
    enable_->setText(renews                               ? tr("&Read what saving means…")
                     : configuration.hasPreviouslyEnabled ? tr("&Resume saving…")
                                                          : tr("&Save readings…"));
    enable_->setVisible(!configuration.isEnabled || renews);
    pause_->setVisible(configuration.isEnabled);
    setUsable(*enable_, hasScope && !busy);
    setUsable(*pause_, hasScope && !busy);

    std::vector<SettingsComboBox::Entry> entries;
    for (const std::int64_t days : {30, 90})
        entries.push_back({daysText(days), QVariant::fromValue<qlonglong>(days)});
    retention_->present(entries, QVariant::fromValue<qlonglong>(configuration.retentionDays));
    // Before the first time, the days are asked for with everything else.
    const bool keeps = hasScope && configuration.hasPreviouslyEnabled && !busy;
    setUsable(*retention_, keeps);
    setUsable(*retentionLabel_, keeps);
    collection_->setText(collectionText());
    setUsable(*delete_, !busy && mayHaveSavedReadings());
    setUsable(*deleteAll_, !busy);

    const QString message =
        busy ? tr("Please wait: saved readings are being changed.") : displayText(state().historyMessage);
    message_->present(busy                    ? SettingsNotice::Weight::information
                      : state().historyFailed ? SettingsNotice::Weight::problem
                                              : SettingsNotice::Weight::good,
                      message);
}

}  // namespace tidewell
