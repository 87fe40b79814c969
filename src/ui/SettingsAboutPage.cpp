#include "ui/SettingsAboutPage.h"

#include <QClipboard>
#include <QDateTime>
#include <QGuiApplication>
#include <QHeaderView>
#include <QLabel>
#include <QListWidget>
#include <QPushButton>
#include <QScrollArea>
#include <QStyledItemDelegate>
#include <QTableWidget>
#include <QVBoxLayout>
#include <algorithm>
#include <array>

#include "polling/PollFailure.h"
#include "ui/DisplayText.h"
#include "ui/WindowText.h"

namespace tidewell {
namespace {

constexpr int componentRows = 8;

struct Component {
    const char* name;
    const char* use;
    const char* licence;
};

/// Licences by their SPDX names, which are the same in every language.
constexpr std::array components{
    Component{"Qt 6", QT_TRANSLATE_NOOP("SettingsAboutPage", "windows, desktop bus, pictures"),
              "LGPL-3.0-only"},
    Component{"Boost (Asio, JSON)", QT_TRANSLATE_NOOP("SettingsAboutPage", "tasks, JSON documents"),
              "BSL-1.0"},
    Component{"libcurl", QT_TRANSLATE_NOOP("SettingsAboutPage", "connections to the glucose services"),
              "curl"},
    Component{"OpenSSL 3", QT_TRANSLATE_NOOP("SettingsAboutPage", "encryption"), "Apache-2.0"},
    Component{"fmt", QT_TRANSLATE_NOOP("SettingsAboutPage", "text"), "MIT"},
    Component{"spdlog", QT_TRANSLATE_NOOP("SettingsAboutPage", "log"), "MIT"},
    Component{"CLI11", QT_TRANSLATE_NOOP("SettingsAboutPage", "command line"), "BSD-3-Clause"},
    Component{"simdjson", QT_TRANSLATE_NOOP("SettingsAboutPage", "saved readings"), "Apache-2.0"},
    Component{"date", QT_TRANSLATE_NOOP("SettingsAboutPage", "time zones"), "MIT"},
    Component{"libsecret", QT_TRANSLATE_NOOP("SettingsAboutPage", "keyring"), "LGPL-2.1-or-later"},
    Component{"GLib", QT_TRANSLATE_NOOP("SettingsAboutPage", "network state"), "LGPL-2.1-or-later"},
    Component{"libcanberra", QT_TRANSLATE_NOOP("SettingsAboutPage", "alert sounds"), "LGPL-2.1-or-later"},
    Component{"PulseAudio (libpulse)", QT_TRANSLATE_NOOP("SettingsAboutPage", "state of the sound output"),
              "LGPL-2.1-or-later"},
    Component{"zlib", QT_TRANSLATE_NOOP("SettingsAboutPage", "the demonstration's answers"), "Zlib"},
};

/// Whose readings the demonstration replays, under which licence, and what was done to them.
constexpr std::array traces{
    QT_TRANSLATE_NOOP("SettingsAboutPage",
                      "The demonstration replays real readings that were published for research; nobody may "
                      "try to identify "
                      "a participant. Both were taken from the harmonised files of the Glucose-ML collection "
                      "(Prioleau, Lu, "
                      "Cui, 2025, arXiv:2507.14077)."),
    QT_TRANSLATE_NOOP("SettingsAboutPage",
                      "Dexcom: seven days of subject c2s04 of PhysioCGM (Quamer et al., 2025, figshare, "
                      "https://doi.org/10.6084/m9.figshare.28136294.v1), CC0 1.0. Changes: seven days cut "
                      "out, times rounded "
                      "to seconds, rows without a value dropped, “Low” written as 39."),
    QT_TRANSLATE_NOOP(
        "SettingsAboutPage",
        "LibreLinkUp: seven days of participant P13 of the BrisT1D-Open Dataset (James, Armstrong, O'Kane, "
        "Emerson, Abdallah, 2025, University of Bristol, "
        "https://doi.org/10.5523/bris.33z5jc8fa6tob21ptrugzqog08), "
        "licensed under CC BY 4.0 (https://creativecommons.org/licenses/by/4.0/), without any warranty. "
        "Changes: time zones corrected where possible, duplicates removed, mmol/L multiplied by 18 and "
        "rounded, "
        "seven days cut out, values between the readings computed."),
};

SettingsNotice::Weight weightOf(AlertFinding::Severity severity)
{
    switch (severity) {
    case AlertFinding::Severity::problem: return SettingsNotice::Weight::problem;
    case AlertFinding::Severity::caution: return SettingsNotice::Weight::caution;
    case AlertFinding::Severity::note: return SettingsNotice::Weight::information;
    case AlertFinding::Severity::good: return SettingsNotice::Weight::good;
    }
    std::unreachable();
}

/// Texts of desktops and services are others' words; each finding keeps to its line.
QString oneLine(const std::string& text)
{
    QString line = displayText(text);
    for (QChar& c : line)
        if (c.category() == QChar::Other_Control || c == QChar::LineSeparator ||
            c == QChar::ParagraphSeparator)
            c = u' ';
    return line;
}

QString remedyText(const AlertFinding& finding)
{
    return finding.remedy == signInRequiredStatus().remediation
               ? SettingsAboutPage::tr("Sign in on the tab “Account”.")
               : oneLine(finding.remedy);
}

QDateTime momentOf(Date date)
{
    return QDateTime::fromSecsSinceEpoch(static_cast<qint64>(unixSeconds(date)));
}

/// Of a time of today, the time is enough.
QString timeText(Date date)
{
    const QDateTime at = momentOf(date);
    const QLocale locale;
    return at.date() == QDate::currentDate()
               ? locale.toString(at.time(),
                                 locale.timeFormat(QLocale::ShortFormat).remove(QStringLiteral(":ss")))
               : locale.toString(at, QLocale::ShortFormat);
}

QString findingText(const AlertFinding& finding)
{
    return SettingsAboutPage::tr("%1: %2").arg(settingsWeightText(weightOf(finding.severity)),
                                               oneLine(finding.text));
}

/// Gives each entry the height that its words need in the list's width.
class WrappingDelegate final : public QStyledItemDelegate {
public:
    explicit WrappingDelegate(QListView* list) : QStyledItemDelegate{list}, list_{list} {}
    [[nodiscard]] QSize sizeHint(const QStyleOptionViewItem& option, const QModelIndex& index) const override
    {
        QStyleOptionViewItem wrapped = option;
        wrapped.rect.setWidth(list_->viewport()->width());
        const QSize size = QStyledItemDelegate::sizeHint(wrapped, index);
        return {list_->viewport()->width(), size.height() + list_->fontMetrics().height() / 2};
    }

private:
    QListView* list_;
};

/// As high as its entries; the page scrolls, not the list.
class FindingsList final : public QListWidget {
public:
    explicit FindingsList(QWidget* parent) : QListWidget{parent}
    {
        setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
        setVerticalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
        setVerticalScrollMode(ScrollPerPixel);
        setItemDelegate(new WrappingDelegate{this});
    }
    void fit()
    {
        doItemsLayout();
        const QRect last = count() > 0 ? visualItemRect(item(count() - 1)) : QRect{};
        setFixedHeight(last.bottom() + 1 + verticalOffset() + 2 * frameWidth());
    }

protected:
    void resizeEvent(QResizeEvent* event) override
    {
        QListWidget::resizeEvent(event);
        if (event->size().width() != event->oldSize().width())
            fit();
        updateGeometries();
    }
    void changeEvent(QEvent* event) override
    {
        QListWidget::changeEvent(event);
        if (event->type() == QEvent::FontChange || event->type() == QEvent::StyleChange)
            fit();
    }
    void wheelEvent(QWheelEvent* event) override { event->ignore(); }
    void currentChanged(const QModelIndex& current, const QModelIndex& previous) override
    {
        QListWidget::currentChanged(current, previous);
        QWidget* up = parentWidget();
        while (up && !qobject_cast<QScrollArea*>(up))
            up = up->parentWidget();
        if (auto* const area = qobject_cast<QScrollArea*>(up); area && hasFocus()) {
            const QRect row = visualRect(current).translated(viewport()->mapTo(area->widget(), QPoint{}));
            area->ensureVisible(row.left(), row.bottom(), 0, 0);
            area->ensureVisible(row.left(), row.top(), 0, 0);
        }
    }
};

}  // namespace

SettingsAboutPage::SettingsAboutPage(SettingsPageContext& context) : SettingsPage{context}
{
    makeIdentity();
    makeFindings();
    makeComponents();
    column().addStretch();
}

void SettingsAboutPage::makeIdentity()
{
    QLabel* title = copyableLabel(tr("Tidewell %1").arg(my().facts.version), this);
    title->setObjectName(QStringLiteral("version"));
    scaleLetters(*title, 1.4, true);
    column().addWidget(title);
    column().addWidget(wrappedLabel(
        tr("Shows the current reading of a continuous glucose monitor in the status area."), this));
    auto* caution = new SettingsNotice{this};
    caution->setObjectName(QStringLiteral("notMedical"));
    caution->present(
        SettingsNotice::Weight::caution,
        tr("Tidewell is not a medical device. Readings can be late, missing or wrong, and alerts "
           "can fail. Do not decide about treatment by it, and keep the alarms of your sensor's "
           "own app or receiver on."));
    column().addWidget(caution);
    auto* row = new QHBoxLayout;
    addButton(*row, "showTerms", tr("Show &terms of use…"), my().handlers.showTerms);
    row->addStretch();
    column().addLayout(row);
}

void SettingsAboutPage::makeFindings()
{
    QVBoxLayout* group = addGroup(tr("Would an alert be seen and heard now?"));
    looking_ = wrappedLabel({}, this);
    looking_->setObjectName(QStringLiteral("looking"));
    group->addWidget(looking_);
    auto* const list = new FindingsList{this};
    findings_ = list;
    fit_ = [list] { list->fit(); };
    findings_->setObjectName(QStringLiteral("findings"));
    findings_->setAccessibleName(tr("What was found"));
    findings_->setWordWrap(true);
    findings_->setTabKeyNavigation(false);
    findings_->setResizeMode(QListView::Adjust);
    findings_->setTextElideMode(Qt::ElideNone);
    group->addWidget(findings_);
    auto* row = new QHBoxLayout;
    lookAgain_ = addButton(*row, "lookAgain", tr("&Look again"), [this] {
        if (my().handlers.lookAgain && !state().isLooking)
            my().handlers.lookAgain();
    });
    copy_ = addButton(*row, "copyReport", tr("&Copy report"),
                      [this] { QGuiApplication::clipboard()->setText(report()); });
    copy_->setToolTip(tr("Copies what was found: no account and no readings"));
    row->addStretch();
    group->addLayout(row);
}

void SettingsAboutPage::makeComponents()
{
    QVBoxLayout* group = addGroup(tr("Licences"));
    group->addWidget(wrappedLabel(tr("Tidewell is free software under the Apache License, version 2.0, "
                                     "without warranty of any kind. It "
                                     "is built with the work of others:"),
                                  this));
    auto* table = new QTableWidget{int{components.size()}, 3, this};
    table->setObjectName(QStringLiteral("components"));
    table->setAccessibleName(tr("Components and their licences"));
    table->setHorizontalHeaderLabels({tr("Component"), tr("Used for"), tr("Licence")});
    table->verticalHeader()->hide();
    table->setEditTriggers(QAbstractItemView::NoEditTriggers);
    table->setSelectionBehavior(QAbstractItemView::SelectRows);
    table->setTabKeyNavigation(false);
    table->setShowGrid(false);
    table->horizontalHeader()->setSectionResizeMode(QHeaderView::ResizeToContents);
    int row = 0;
    for (const auto& [name, use, licence] : components) {
        table->setItem(row, 0, new QTableWidgetItem{QString::fromLatin1(name)});
        table->setItem(row, 1, new QTableWidgetItem{tr(use)});
        table->setItem(row++, 2, new QTableWidgetItem{QString::fromLatin1(licence)});
    }
    table->setMinimumHeight(fontMetrics().height() * componentRows * 3 / 2);
    group->addWidget(table);

    QVBoxLayout* data = addGroup(tr("Readings of the demonstration"));
    for (const char* paragraph : traces)
        data->addWidget(copyableLabel(tr(paragraph), this));
}

QString SettingsAboutPage::report() const
{
    QString lines = tr("Tidewell %1").arg(context().facts.version) + u'\n';
    if (state().lookedAt)
        lines +=
            tr("Looked at %1").arg(QLocale{}.toString(momentOf(*state().lookedAt), QLocale::ShortFormat)) +
            u'\n';
    for (const AlertFinding& finding : state().findings) {
        lines += findingText(finding);
        if (!finding.remedy.empty())
            lines += QStringLiteral(" — ") + remedyText(finding);
        lines += u'\n';
    }
    return lines;
}

QString SettingsAboutPage::lookText() const
{
    const auto& found = state().findings;
    const bool hasFound = !found.empty() && state().lookedAt;
    if (state().isLooking)
        return hasFound ? tr("Looking… this takes a few seconds. What was found at %1 may no longer be so:")
                              .arg(timeText(*state().lookedAt))
                        : tr("Looking… this takes a few seconds.");
    if (!hasFound)
        return tr("Nobody has looked yet.");
    const auto first = std::ranges::min_element(found, {}, &AlertFinding::severity);
    return (first->severity > AlertFinding::Severity::caution
                ? tr("Looked at %1: nothing stands in the way of an alert.")
                : tr("Looked at %1. What was found, the worst first:"))
        .arg(timeText(*state().lookedAt));
}

void SettingsAboutPage::present()
{
    const auto& found = state().findings;
    if (shown_ != found) {
        shown_ = found;
        const int row = findings_->currentRow();
        findings_->clear();
        for (const AlertFinding& finding : found) {
            QString words = findingText(finding);
            if (!finding.remedy.empty())
                words += u'\n' + remedyText(finding);
            findings_->addItem(
                new QListWidgetItem{settingsWeightIcon(weightOf(finding.severity), *this), words});
        }
        if (row >= 0)
            findings_->setCurrentRow(std::min(row, findings_->count() - 1));
        fit_();
    }
    // Old ones can still be read and walked through, but look so.
    const bool isLooking = state().isLooking;
    for (int row = 0; row < findings_->count(); ++row) {
        QListWidgetItem& item = *findings_->item(row);
        item.setForeground(isLooking ? palette().brush(QPalette::Disabled, QPalette::WindowText) : QBrush{});
    }
    setUsable(*lookAgain_, !state().isLooking);
    setUsable(*copy_, !found.empty() && !isLooking);
    findings_->setVisible(!found.empty());
    looking_->setText(lookText());
}

}  // namespace tidewell
