#include "ui/InsightsWindow.h"

#include <QAbstractButton>
#include <QCalendarWidget>
#include <QCloseEvent>
#include <QComboBox>
#include <QDateEdit>
#include <QGroupBox>
#include <QKeyEvent>
#include <QLabel>
#include <QPainter>
#include <QProgressBar>
#include <QPushButton>
#include <QScreen>
#include <QScrollArea>
#include <QShortcut>
#include <QStackedWidget>
#include <QTimer>
#include <QVBoxLayout>
#include <algorithm>
#include <array>
#include <cmath>
#include <utility>

#include "insights/InsightsTexts.h"
#include "ui/Announcer.h"
#include "ui/DisplayText.h"
#include "ui/InsightsDayDialog.h"
#include "ui/InsightsPanel.h"
#include "ui/WindowText.h"

namespace tidewell {
namespace {

constexpr std::array offeredDays{7, 14, 30, 90};
/// What a person picks from and to: more than is ever kept.
constexpr int mostDays = 366;
constexpr int messageWidth = 520;

QString text(std::string_view words) { return displayText(words); }

QDate dateOf(std::chrono::sys_days date)
{
    return QDate{1970, 1, 1}.addDays(date.time_since_epoch().count());
}

std::chrono::sys_days daysOf(QDate date)
{
    return std::chrono::sys_days{std::chrono::days{QDate{1970, 1, 1}.daysTo(date)}};
}

QLabel* wrappedLabel(QWidget* parent)
{
    auto* label = new QLabel{parent};
    label->setTextFormat(Qt::PlainText);
    label->setWordWrap(true);
    // Reached by Tab, so that a screen reader reads it and the keyboard can copy from it.
    label->setTextInteractionFlags(Qt::TextSelectableByMouse | Qt::TextSelectableByKeyboard);
    return label;
}

/// The local dates of a report without readings, and what helps.
QString emptyText(const InsightsViewState& state)
{
    const DateInterval& interval = state.report->result.summary.interval;
    LocalClock clock{state.report->zone};
    const auto date = [&](Date moment) {
        return dateOf(clock.at(moment).date).toString(QStringLiteral("yyyy-MM-dd"));
    };
    const QString first = date(interval.start);
    // The first moment after it is of the next day.
    const QString last = date(interval.end > interval.start ? interval.end - Seconds{0.001} : interval.end);
    const QString words = first == last ? InsightsWindow::tr("The period is %1.").arg(first)
                                        : InsightsWindow::tr("The period is %1 to %2.").arg(first, last);
    return words + u' ' +
           (state.isDemonstration
                ? InsightsWindow::tr("This is the demonstration, with somebody else's readings. ")
                : QString{}) +
           InsightsWindow::tr("Pick another period.");
}

QFont titleFont(const QFont& base)
{
    QFont font = base;
    font.setBold(true);
    if (font.pointSizeF() > 0)
        font.setPointSizeF(font.pointSizeF() * 1.4);
    else
        font.setPixelSize(font.pixelSize() * 7 / 5);
    return font;
}

/// Its days that cannot be picked look like it.
class PeriodCalendar final : public QCalendarWidget {
public:
    using QCalendarWidget::QCalendarWidget;

protected:
    void paintCell(QPainter* painter, const QRect& rect, QDate date) const override
    {
        if (date >= minimumDate() && date <= maximumDate())
            return QCalendarWidget::paintCell(painter, rect, date);
        QColor faint = palette().color(QPalette::Disabled, QPalette::Text);
        faint.setAlphaF(faint.alphaF() * 0.6F);
        painter->save();
        painter->setPen(faint);
        painter->drawText(rect, Qt::AlignCenter, QString::number(date.day()));
        painter->restore();
    }
};

/// What a state says to who cannot see it, and when it says something else: figures that grow by themselves
/// are no news.
struct News {
    InsightsViewState::Phase phase{};
    InsightsPeriod period{};
    InsightsCollectionStatus kind{};
    int collectedDays = 0;
    bool hasReadings = false;
    std::string advice{};
    bool operator==(const News&) const = default;
};

News newsOf(const InsightsViewState& state)
{
    News news{.phase = state.phase, .advice = state.advice};
    if (state.phase == InsightsViewState::Phase::collecting) {
        news.kind = state.readiness.kind;
        if (state.progress)
            news.collectedDays = static_cast<int>(state.progress->collected / Seconds{86'400});
    } else {
        news.period = state.period;
        news.hasReadings = state.report && state.report->result.summary.readingCount > 0;
    }
    return news;
}

/// Whole sentences one after the other.
QString sentences(const QStringList& parts)
{
    QString all;
    for (const QString& part : parts) {
        if (part.isEmpty())
            continue;
        if (!all.isEmpty())
            all += all.endsWith(u'.') ? QStringLiteral(" ") : QStringLiteral(". ");
        all += part;
    }
    return all;
}

}  // namespace

struct InsightsWindow::Impl {
    Handlers handlers;
    InsightsViewState state{};
    bool filling = false;  ///< The picker shows what a state says, nobody picks.

    QComboBox* period = nullptr;
    QDateEdit* from = nullptr;
    QDateEdit* to = nullptr;
    QLabel* dash = nullptr;
    QLabel* moved = nullptr;  ///< That the other end of the period gave way.
    QWidget* header = nullptr;
    QLabel* busy = nullptr;
    QPushButton* save = nullptr;

    QStackedWidget* pages = nullptr;
    QWidget* messagePage = nullptr;
    QLabel* title = nullptr;
    QLabel* message = nullptr;
    QGroupBox* progressBox = nullptr;
    QProgressBar* collected = nullptr;
    QProgressBar* coverage = nullptr;
    QLabel* progressText = nullptr;
    QLabel* advice = nullptr;
    QPushButton* retry = nullptr;
    QPushButton* settings = nullptr;
    Announcer* announcer = nullptr;
    std::optional<News> told{};  ///< What was announced last, and the person has asked for nothing since.
    QScrollArea* scroll = nullptr;
    InsightsPanel* panel = nullptr;
    InsightsDayDialog* day = nullptr;

    void makeHeader(InsightsWindow* window);
    void makeMessagePage(InsightsWindow* window);

    [[nodiscard]] bool picksDates() const { return period->currentIndex() == int{offeredDays.size()}; }

    void periodEdited()
    {
        const bool dates = picksDates();
        for (QWidget* widget : std::initializer_list<QWidget*>{from, dash, to})
            widget->setVisible(dates);
        if (!dates)
            sayMoved({});
        if (filling || !handlers.periodPicked)
            return;
        told.reset();
        InsightsPeriod picked{.days = {}};
        if (!dates) {
            picked.days = offeredDays.at(static_cast<std::size_t>(std::max(period->currentIndex(), 0)));
        } else {
            // The other end gives way, so that a period always has a length.
            const bool movedFrom = daysOf(from->date()) != state.period.from || state.period.days;
            const bool crossed = from->date() > to->date();
            if (crossed) {
                filling = true;
                movedFrom ? to->setDate(from->date()) : from->setDate(to->date());
                filling = false;
            }
            sayMoved(!crossed    ? QString{}
                     : movedFrom ? tr("The last day was moved too: a period cannot end before it begins.")
                                 : tr("The first day was moved too: a period cannot end before it begins."));
            picked.from = daysOf(from->date());
            picked.to = daysOf(to->date());
        }
        if (picked != state.period)
            handlers.periodPicked(picked);
    }

    void sayMoved(const QString& words) const
    {
        moved->setText(words);
        moved->setVisible(!words.isEmpty());
        announcer->say(words);
    }

    void showPeriod(const InsightsPeriod& shown)
    {
        filling = true;
        const auto* const offered = std::ranges::find(offeredDays, shown.days.value_or(0));
        period->setCurrentIndex(static_cast<int>(offered - offeredDays.begin()));
        if (!shown.days) {
            // What a person types there stays, whatever comes meanwhile.
            for (const auto& [edit, date] : {std::pair{from, shown.from}, std::pair{to, shown.to}})
                if (edit->date() != dateOf(date) && !edit->hasFocus())
                    edit->setDate(dateOf(date));
        }
        periodEdited();
        filling = false;
    }

    void showMessage(const QString& heading, const QString& words, const QString& hint)
    {
        title->setText(heading);
        title->setVisible(!heading.isEmpty());
        message->setText(words);
        message->setVisible(!words.isEmpty());
        advice->setText(hint);
        advice->setVisible(!hint.isEmpty());
        pages->setCurrentWidget(messagePage);
    }

    /// Of the message that is shown. Who has the focus is not hidden in between.
    void showControls(bool retries, bool offersSettings)
    {
        retry->setVisible(retries);
        settings->setVisible(offersSettings && handlers.openSettings);
        const bool hasProgress = state.phase == InsightsViewState::Phase::collecting && state.progress &&
                                 !state.readiness.progress.empty();
        progressBox->setVisible(hasProgress);
        if (hasProgress)
            showProgress();
    }

    /// To screen readers. What is only waited for and what is renewed are no news.
    void announce()
    {
        const bool waiting = state.phase == InsightsViewState::Phase::loading ||
                             state.phase == InsightsViewState::Phase::calculating;
        if (waiting || state.isBusy)
            return;
        const News news = newsOf(state);
        if (std::exchange(told, news) == news)
            return;
        if (pages->currentWidget() == scroll)
            return announcer->say(panel->spokenReport());
        const auto visible = [](const QLabel* label) {
            return label->isHidden() ? QString{} : label->text();
        };
        // The first lines say how far it is, the others are an explanation.
        QString progress = text(state.readiness.progress).section(QStringLiteral("\n\n"), 0, 0);
        progress.replace(u'\n', QStringLiteral(". "));
        announcer->say(sentences({visible(title), visible(message),
                                  progressBox->isHidden() ? QString{} : progress, visible(advice)}));
    }

    void showProgress()
    {
        const double days = state.progress->collected / initialCollection;
        collected->setValue(static_cast<int>(std::floor(days * 100)));
        coverage->setValue(static_cast<int>(std::floor(state.progress->coverage * 100)));
        progressText->setText(text(state.readiness.progress));
    }
};

void InsightsWindow::Impl::makeHeader(InsightsWindow* window)
{
    header = new QWidget{window};
    auto* label = new QLabel{tr("&Period:"), header};
    period = new QComboBox{header};
    period->setObjectName(QStringLiteral("insightsPeriod"));
    period->setAccessibleName(tr("Period"));
    for (const int days : offeredDays)
        period->addItem(tr("Last %1 days").arg(days));
    period->addItem(tr("From – to…"));
    label->setBuddy(period);
    const auto makeDate = [&](const char* name, const QString& spoken) {
        auto* edit = new QDateEdit{header};
        edit->setObjectName(QString::fromLatin1(name));
        edit->setAccessibleName(spoken);
        edit->setDisplayFormat(QStringLiteral("yyyy-MM-dd"));
        edit->setCalendarPopup(true);
        edit->setCalendarWidget(new PeriodCalendar{edit});
        edit->setKeyboardTracking(false);
        edit->hide();
        return edit;
    };
    from = makeDate("insightsFrom", tr("First day of the period"));
    to = makeDate("insightsTo", tr("Last day of the period"));
    dash = new QLabel{QStringLiteral("–"), header};
    dash->hide();
    busy = new QLabel{header};
    busy->setObjectName(QStringLiteral("insightsBusy"));
    save = new QPushButton{tr("&Save report…"), header};
    save->setObjectName(QStringLiteral("insightsSaveReport"));
    moved = wrappedLabel(header);
    moved->setObjectName(QStringLiteral("insightsMovedDate"));
    moved->hide();
    auto* row = new QHBoxLayout;
    for (QWidget* widget : std::initializer_list<QWidget*>{label, period, from, dash, to})
        row->addWidget(widget);
    row->addStretch();
    row->addWidget(busy);
    row->addWidget(save);
    auto* layout = new QVBoxLayout{header};
    layout->addLayout(row);
    layout->addWidget(moved);
}

void InsightsWindow::Impl::makeMessagePage(InsightsWindow* window)
{
    messagePage = new QWidget{window};
    auto* column = new QWidget{messagePage};
    column->setMaximumWidth(messageWidth * std::max(1, window->fontMetrics().height() / 16));
    title = wrappedLabel(column);
    title->setObjectName(QStringLiteral("insightsStatusTitle"));
    title->setFont(titleFont(window->font()));
    message = wrappedLabel(column);
    message->setObjectName(QStringLiteral("insightsStatusText"));
    progressBox = new QGroupBox{text(insightsProgressTitle), column};
    const auto makeBar = [&](const QString& spoken, const QString& format) {
        auto* bar = new QProgressBar{progressBox};
        bar->setRange(0, 100);
        bar->setAccessibleName(spoken);
        bar->setFormat(format);
        return bar;
    };
    collected = makeBar(tr("Initial 3-day collection"), tr("Collection: %p%"));
    coverage = makeBar(tr("Coverage of the latest 3 days"), tr("Coverage: %p%"));
    progressText = wrappedLabel(progressBox);
    auto* box = new QVBoxLayout{progressBox};
    for (QWidget* widget : std::initializer_list<QWidget*>{collected, coverage, progressText})
        box->addWidget(widget);
    advice = wrappedLabel(column);
    advice->setObjectName(QStringLiteral("insightsAdvice"));
    retry = new QPushButton{tr("&Try again"), column};
    retry->setObjectName(QStringLiteral("insightsRetry"));
    settings = new QPushButton{tr("&Insights settings"), column};
    settings->setObjectName(QStringLiteral("insightsSettings"));
    auto* layout = new QVBoxLayout{column};
    for (QWidget* widget : std::initializer_list<QWidget*>{title, message, progressBox, advice})
        layout->addWidget(widget);
    auto* buttons = new QHBoxLayout;
    buttons->addWidget(retry);
    buttons->addWidget(settings);
    buttons->addStretch();
    layout->addLayout(buttons);
    auto* across = new QHBoxLayout{messagePage};
    across->addStretch(1);
    across->addWidget(column, 8);
    across->addStretch(1);
    across->setAlignment(column, Qt::AlignVCenter);
}

InsightsWindow::InsightsWindow(Handlers handlers) : impl_{std::make_unique<Impl>()}
{
    Impl& my = *impl_;
    my.handlers = std::move(handlers);
    setObjectName(QStringLiteral("insightsWindow"));
    setWindowTitle(tr("Insights"));
    my.announcer = new Announcer{this};
    my.makeHeader(this);
    my.makeMessagePage(this);
    my.panel = new InsightsPanel{{.openDay =
                                      [this](std::size_t day) {
                                          if (!impl_->day)
                                              impl_->day = new InsightsDayDialog{this};
                                          impl_->day->present(impl_->state.report, day);
                                      },
                                  .completionSeen =
                                      [this] {
                                          if (impl_->handlers.completionSeen)
                                              impl_->handlers.completionSeen();
                                      },
                                  .walkReached =
                                      [this](QWidget& widget, QRect area) {
                                          const QPoint middle = widget.mapTo(impl_->panel, area.center());
                                          impl_->scroll->ensureVisible(middle.x(), middle.y(), area.width(),
                                                                       area.height());
                                      },
                                  .openSettings = my.handlers.openSettings}};
    my.scroll = new QScrollArea{this};
    my.scroll->setFrameShape(QFrame::NoFrame);
    my.scroll->setWidgetResizable(true);
    my.scroll->setWidget(my.panel);
    keepFocusInView(*my.scroll);
    my.scroll->setAccessibleName(tr("Report"));
    my.pages = new QStackedWidget{this};
    my.pages->addWidget(my.messagePage);
    my.pages->addWidget(my.scroll);
    auto* layout = new QVBoxLayout{this};
    layout->setContentsMargins(4, 0, 4, 4);
    layout->addWidget(my.header);
    layout->addWidget(my.pages, 1);

    my.save->setVisible(static_cast<bool>(my.handlers.saveReport));
    connect(my.save, &QPushButton::clicked, this, [this] { impl_->handlers.saveReport(); });
    connect(my.settings, &QPushButton::clicked, this, [this] { impl_->handlers.openSettings(); });
    const auto refresh = [this] {
        impl_->told.reset();
        if (impl_->handlers.refresh)
            impl_->handlers.refresh();
    };
    connect(my.retry, &QPushButton::clicked, this, refresh);
    connect(new QShortcut{QKeySequence{Qt::Key_F5}, this}, &QShortcut::activated, this, refresh);
    connect(new QShortcut{QKeySequence::Close, this}, &QShortcut::activated, this, &QWidget::close);
    connect(my.period, &QComboBox::activated, this, [this] { impl_->periodEdited(); });
    for (QDateEdit* edit : {my.from, my.to})
        connect(edit, &QDateEdit::dateChanged, this, [this] { impl_->periodEdited(); });
    const QSize wanted = QSize{70, 52} * fontMetrics().height();
    const QSize room = screen() ? screen()->availableSize() * 9 / 10 : wanted;
    resize(wanted.boundedTo(room));
    present({});
}

InsightsWindow::~InsightsWindow() = default;

void InsightsWindow::setToday(std::chrono::sys_days today)
{
    impl_->filling = true;
    for (QDateEdit* edit : {impl_->from, impl_->to}) {
        const bool unset = edit->maximumDate() > dateOf(today).addDays(mostDays);
        edit->setDateRange(dateOf(today).addDays(-mostDays), dateOf(today));
        if (unset)
            edit->setDate(edit == impl_->from ? dateOf(today).addDays(-offeredDays[1]) : dateOf(today));
    }
    impl_->filling = false;
}

void InsightsWindow::present(const InsightsViewState& state)
{
    Impl& my = *impl_;
    using Phase = InsightsViewState::Phase;
    my.state = state;
    if (my.day && state.phase != Phase::report) {
        my.day->close();
        std::exchange(my.day, nullptr)->deleteLater();
    }
    my.showPeriod(state.period);
    const bool waiting = state.phase == Phase::loading || state.phase == Phase::calculating;
    my.busy->setText(state.isBusy && !waiting ? text(insightsCalculatingText) : QString{});
    const bool hasReport = state.phase == Phase::report && state.report;
    const bool hasReadings = hasReport && state.report->result.summary.readingCount > 0;
    my.save->setEnabled(hasReadings);
    // Before the report opens there is nothing to pick a period for.
    const bool collecting = state.phase == Phase::collecting;
    const bool needsFocus = collecting && (!focusWidget() || my.header->isAncestorOf(focusWidget()));
    bool offersSettings = false;
    my.header->setVisible(!collecting);
    switch (state.phase) {
    case Phase::loading: my.showMessage(text(insightsLoadingText), {}, {}); break;
    case Phase::calculating: my.showMessage(text(insightsCalculatingText), {}, {}); break;
    case Phase::collecting:
        offersSettings = state.offersSaving;
        my.showMessage(
            text(state.readiness.title), text(state.readiness.text),
            text(state.offersSaving && !my.handlers.openSettings ? insightsSavingAdvice
                                                                 : std::string_view{state.advice}));
        break;
    case Phase::unavailable:
        my.showMessage(text(insightsUnavailableTitle), text(insightsUnavailableText), text(state.advice));
        offersSettings = true;
        break;
    case Phase::report:
        if (!hasReadings) {
            my.showMessage(text(insightsEmptyTitle), emptyText(state),
                           state.isSaving ? QString{} : text(insightsSavingOffText));
            offersSettings = !state.isSaving;
        } else {
            my.panel->present(state);
            my.pages->setCurrentWidget(my.scroll);
        }
        break;
    }
    my.showControls(state.phase == Phase::unavailable, offersSettings);
    if (needsFocus)
        my.settings->isHidden() ? my.title->setFocus() : my.settings->setFocus();
    my.announce();
}

void InsightsWindow::open()
{
    if (!isVisible()) {
        show();
        impl_->period->setFocus();
    }
    setWindowState(windowState() & ~Qt::WindowMinimized);
    raise();
    activateWindow();
}

void InsightsWindow::closeEvent(QCloseEvent* event)
{
    if (impl_->day)
        impl_->day->close();
    QWidget::closeEvent(event);
    if (event->isAccepted() && impl_->handlers.closed)
        impl_->handlers.closed();
}

void InsightsWindow::keyPressEvent(QKeyEvent* event)
{
    // Buttons of a window that is no dialog know Space only.
    auto* const button = qobject_cast<QAbstractButton*>(focusWidget());
    if (event->key() == Qt::Key_Escape)
        close();
    else if (button && (event->key() == Qt::Key_Return || event->key() == Qt::Key_Enter))
        button->click();
    else
        QWidget::keyPressEvent(event);
}

void InsightsWindow::changeEvent(QEvent* event)
{
    if (event->type() == QEvent::FontChange && impl_ && impl_->title)
        impl_->title->setFont(titleFont(font()));
    QWidget::changeEvent(event);
}

}  // namespace tidewell
