#include "ui/OnboardingWindow.h"

#include <QAbstractButton>
#include <QCloseEvent>
#include <QHBoxLayout>
#include <QKeyEvent>
#include <QPointer>
#include <QProgressBar>
#include <QPushButton>
#include <QScreen>
#include <QScrollArea>
#include <QScrollBar>
#include <QShortcut>
#include <QTimer>
#include <QVBoxLayout>
#include <algorithm>
#include <array>
#include <chrono>
#include <utility>

#include "ui/Announcer.h"
#include "ui/OnboardingPage.h"
#include "ui/ProblemPanel.h"
#include "ui/SpokenWidget.h"
#include "ui/WindowText.h"

namespace tidewell {
namespace {

using MakePage = OnboardingPage* (*)(const OnboardingPage::Handlers&, QWidget*);

/// In the order of the steps.
constexpr std::array<MakePage, 10> makePages{
    makeWelcomePage, makeTermsPage,  makeAccountPage, makePersonPage, makeFirstReadingPage,
    makeGlucosePage, makeAlertsPage, makeHistoryPage, makeLoginPage,  makeDonePage};
static_assert(makePages.size() == static_cast<std::size_t>(OnboardingStep::done) + 1);

/// What comes within this time is announced in one: readers ask late for the words, and would say the last
/// twice.
constexpr auto together = std::chrono::milliseconds{200};

/// A page with its problem. It has a name while the focus waits on it.
class StepContent final : public QWidget, public SpokenWidget {
public:
    using QWidget::QWidget;
    [[nodiscard]] QAccessible::Role spokenRole() const override { return QAccessible::Grouping; }
};

/// Where the focus goes as soon as that is not locked.
enum class DueFocus {
    none,
    start,   ///< Where the step begins.
    onward,  ///< To the button forward, else where the step begins.
    back     ///< To what had it.
};

}  // namespace

struct OnboardingWindow::Impl {
    Handlers handlers;

    QLabel* count = nullptr;
    QLabel* heading = nullptr;
    QScrollArea* scroll = nullptr;
    StepContent* content = nullptr;
    ProblemPanel* problem = nullptr;
    std::array<OnboardingPage*, makePages.size()> pages{};
    QProgressBar* busy = nullptr;
    QPushButton* close = nullptr;
    QPushButton* back = nullptr;
    QPushButton* forward = nullptr;
    Announcer* announcer = nullptr;
    QTimer* telling = nullptr;

    std::optional<OnboardingStep> shown{};
    std::optional<SignInProblem> shownProblem{};
    /// While it is due, the focus waits on `content`, where no key does anything.
    DueFocus due = DueFocus::none;
    QPointer<QWidget> locked{};    ///< What had the focus before it was locked.
    QPointer<QWidget> revealed{};  ///< What the focus was put on: stays in sight while it has it.
    QString stepText{};
    bool tellsStep = false;
    QString work{};                      ///< What is being waited for.
    std::vector<OnboardingNews> news{};  ///< Of what is shown.
    std::vector<OnboardingNews> told{};  ///< Those of them that need not be said any more.

    [[nodiscard]] OnboardingPage& page() const
    {
        return *pages.at(static_cast<std::size_t>(shown.value_or(OnboardingStep::welcome)));
    }

    void presentHeader(const OnboardingState& state)
    {
        const auto at = std::ranges::find(state.path, state.step);
        const QString place =
            at == state.path.end()
                ? QString{}
                : tr("Step %1 of %2").arg(at - state.path.begin() + 1).arg(state.path.size());
        count->setText(place);
        heading->setText(page().heading(state));
        const QString step = place.isEmpty() ? heading->text() : tr("%1: %2").arg(place, heading->text());
        setSpokenName(*content->window(), tr("Set up Tidewell. %1").arg(step));
        stepText = step;
    }

    void gatherNews(const OnboardingState& state)
    {
        work = page().workText(state);
        if (work.isEmpty() && page().waits(state))
            work = tr("Working");
        news = page().news(state);
        if (!work.isEmpty())
            news.insert(news.begin(), {.text = work});
    }

    /// Tells screen readers soon what is new, and the step when it was just reached. `waits`: the focus has
    /// begun to, and says itself for what. A window that is not seen yet tells it as it appears.
    void announce(bool entered, bool waits)
    {
        std::erase_if(
            told, [this](const OnboardingNews& one) { return std::ranges::find(news, one) == news.end(); });
        if (!content->window()->isVisible())
            return;
        tellsStep = tellsStep || entered;
        if (waits && !work.isEmpty())
            told.push_back({.text = work});
        if (!telling->isActive())
            telling->start();
    }

    void tell()
    {
        QStringList lines;
        if (std::exchange(tellsStep, false))
            lines << stepText;
        for (const OnboardingNews& one : news)
            if (std::ranges::find(told, one) == told.end())
                lines << one.text;
        told = news;
        announcer->say(lines.join(u'\n'));
    }

    void presentButtons(const OnboardingState& state)
    {
        forward->setText(state.step == OnboardingStep::done ? tr("&Finish") : tr("&Continue"));
        forward->setEnabled(state.canGoForward && !state.isBusy);
        back->setEnabled(state.canGoBack);
        back->setVisible(state.canGoBack || state.step != OnboardingStep::welcome);
        busy->setVisible(state.isBusy);
    }

    void showStep(OnboardingStep step)
    {
        shown = step;
        for (OnboardingPage* each : pages)
            each->setVisible(each == &page());
        scroll->verticalScrollBar()->setValue(0);
    }

    /// A control that neither is locked nor takes the person away from the step.
    [[nodiscard]] bool isPlaceToWork(const QWidget* widget) const
    {
        return widget && widget->isEnabled() && widget->isVisibleTo(content->window()) &&
               (widget == forward || (widget != content && content->isAncestorOf(widget)));
    }

    [[nodiscard]] bool focusForward() const
    {
        forward->setFocus();
        return forward->isEnabled();
    }

    /// Puts the focus where it is due, or lets it wait.
    void settleFocus()
    {
        const QWidget* const window = content->window();
        switch (due) {
        case DueFocus::none: return;
        case DueFocus::start:
            if (!page().focusFirst() && !focusForward())
                page().focusProblem();
            break;
        case DueFocus::onward:
            if (!focusForward() && !page().focusFirst())
                page().focusProblem();
            break;
        case DueFocus::back:
            if (locked)
                locked->setFocus();
            break;
        }
        if (isPlaceToWork(window->focusWidget())) {
            arrive();
        } else if (window->focusWidget() != content) {
            setSpokenName(*content, work.isEmpty() ? heading->text() : work);
            content->setFocus();
        }
    }

    void arrive()
    {
        due = DueFocus::none;
        locked.clear();
        revealed = content->window()->focusWidget();
        reveal();
    }

    void focusStep()
    {
        due = DueFocus::start;
        settleFocus();
    }

    /// Lets the focus stay where it was, or finds it another place when that one is locked or gone.
    void keepFocus(QWidget* before)
    {
        const auto canStay = [this](const QWidget* widget) {
            return widget && widget->isEnabled() && widget->isVisibleTo(content->window());
        };
        if (due != DueFocus::none) {
            if (before != content)  // The person has gone elsewhere.
                due = DueFocus::none;
            else if (due == DueFocus::back && (!locked || !locked->isVisibleTo(content->window())))
                due = DueFocus::onward;
        }
        if (due == DueFocus::none && !canStay(before)) {
            locked = before;
            due = before && before->isVisibleTo(content->window()) ? DueFocus::back : DueFocus::onward;
        }
        settleFocus();
    }

    void focusProblem(const OnboardingState& state)
    {
        scroll->verticalScrollBar()->setValue(0);
        if (state.isProblemOfStoring || !page().focusProblem())
            forward->setFocus();
        if (isPlaceToWork(content->window()->focusWidget()))
            arrive();
    }

    void reveal() const
    {
        if (revealed && revealed == content->window()->focusWidget() && content->isAncestorOf(revealed))
            scroll->ensureWidgetVisible(revealed, 0, content->fontMetrics().height() / 2);
    }

    void makeHeader(QVBoxLayout& layout, QWidget* window)
    {
        count = new QLabel{window};
        count->setObjectName(QStringLiteral("onboardingStep"));
        makeQuiet(*count);
        heading = wrappedLabel({}, window);
        heading->setObjectName(QStringLiteral("onboardingHeading"));
        scaleLetters(*heading, 1.6, true);
        layout.addWidget(count);
        layout.addWidget(heading);
        layout.addSpacing(window->fontMetrics().height() / 2);
    }

    void makeContent(QVBoxLayout& layout, QWidget* window)
    {
        scroll = new QScrollArea{window};
        scroll->setFrameShape(QFrame::NoFrame);
        scroll->setWidgetResizable(true);
        scroll->setFocusPolicy(Qt::NoFocus);
        content = new StepContent;
        problem = new ProblemPanel{content};
        auto* const column = new QVBoxLayout{content};
        column->setContentsMargins({});
        column->setSpacing(window->fontMetrics().height());
        column->addWidget(problem);
        for (std::size_t i = 0; i < makePages.size(); ++i) {
            pages.at(i) = makePages.at(i)(handlers, content);
            pages.at(i)->hide();
            column->addWidget(pages.at(i), 1);
        }
        // Queued: whatever else the change of size moves has its place by then.
        connect(
            scroll->verticalScrollBar(), &QScrollBar::rangeChanged, content, [this] { reveal(); },
            Qt::QueuedConnection);
        scroll->setWidget(content);
        keepFocusInView(*scroll);
        layout.addWidget(scroll, 1);
    }

    void makeButtons(QVBoxLayout& layout, QWidget* window)
    {
        busy = new QProgressBar{window};
        busy->setRange(0, 0);
        busy->setTextVisible(false);
        busy->setAccessibleName(tr("Working"));
        busy->setMaximumHeight(window->fontMetrics().height() / 2);
        QSizePolicy policy = busy->sizePolicy();
        policy.setRetainSizeWhenHidden(true);
        busy->setSizePolicy(policy);
        layout.addWidget(busy);
        close = new QPushButton{tr("Cl&ose"), window};
        back = new QPushButton{tr("&Back"), window};
        forward = new QPushButton{tr("&Continue"), window};
        forward->setDefault(true);
        auto* const row = new QHBoxLayout;
        row->addWidget(close);
        row->addStretch(1);
        row->addWidget(back);
        row->addWidget(forward);
        layout.addLayout(row);
        QWidget::setTabOrder(forward, close);  // Nobody comes by it on the way forward.
    }
};

OnboardingWindow::OnboardingWindow(Handlers handlers)
    : impl_{std::make_unique<Impl>(Impl{.handlers = std::move(handlers)})}
{
    Impl& my = *impl_;
    setObjectName(QStringLiteral("onboardingWindow"));
    setWindowTitle(tr("Set up Tidewell"));
    auto* const layout = new QVBoxLayout{this};
    const int margin = fontMetrics().height();
    layout->setContentsMargins(margin * 3 / 2, margin, margin * 3 / 2, margin);
    my.makeHeader(*layout, this);
    my.makeContent(*layout, this);
    my.makeButtons(*layout, this);
    my.announcer = new Announcer{this};
    my.telling = new QTimer{this};
    my.telling->setSingleShot(true);
    my.telling->setInterval(together);
    connect(my.telling, &QTimer::timeout, this, [this] { impl_->tell(); });
    connect(my.close, &QPushButton::clicked, this, &QWidget::close);
    connect(my.back, &QPushButton::clicked, this, [this] {
        if (impl_->handlers.back)
            impl_->handlers.back();
    });
    connect(my.forward, &QPushButton::clicked, this, [this] {
        if (impl_->handlers.forward)
            impl_->handlers.forward();
    });
    connect(new QShortcut{QKeySequence::Close, this}, &QShortcut::activated, this, &QWidget::close);
    const QSize wanted = QSize{38, 40} * fontMetrics().height();
    resize(screen() ? wanted.boundedTo(screen()->availableSize() * 9 / 10) : wanted);
}

OnboardingWindow::~OnboardingWindow() = default;

void OnboardingWindow::present(const OnboardingState& state)
{
    Impl& my = *impl_;
    const bool entered = my.shown != state.step;
    const QPointer<QWidget> before = focusWidget();
    if (entered) {
        if (my.shown)
            my.page().leave(state);
        my.showStep(state.step);
    }
    my.presentHeader(state);
    my.page().present(state, entered);
    my.gatherNews(state);
    my.presentButtons(state);
    const bool isNew = state.problem && state.problem != my.shownProblem;
    my.shownProblem = state.problem;
    my.problem->present(state.problem.value_or(SignInProblem{}));
    if (entered)
        my.focusStep();
    else
        my.keepFocus(before);
    if (isNew)
        my.focusProblem(state);
    const bool waits = focusWidget() == my.content;
    if (!waits)
        setSpokenName(*my.content, {});
    my.announce(entered, waits && before != my.content);
}

void OnboardingWindow::open()
{
    if (!isVisible()) {
        show();
        impl_->focusStep();
    }
    setWindowState(windowState() & ~Qt::WindowMinimized);
    raise();
    activateWindow();
}

void OnboardingWindow::closeEvent(QCloseEvent* event)
{
    QWidget::closeEvent(event);
    if (!event->isAccepted())
        return;
    for (OnboardingPage* page : impl_->pages)
        page->clear();
    impl_->shown.reset();  // The next state fills its page anew.
    impl_->told.clear();
    impl_->tellsStep = false;
    impl_->telling->stop();
    // The handler may take this window down.
    if (const auto closed = impl_->handlers.closed)
        closed();
}

void OnboardingWindow::keyPressEvent(QKeyEvent* event)
{
    const bool enters = event->key() == Qt::Key_Return || event->key() == Qt::Key_Enter;
    // Buttons of a window that is no dialog know Space only.
    if (event->key() == Qt::Key_Escape)
        close();
    else if (auto* const button = qobject_cast<QPushButton*>(focusWidget()); enters && button)
        button->click();
    else if (enters)
        impl_->forward->click();
    else
        QWidget::keyPressEvent(event);
}

void OnboardingWindow::changeEvent(QEvent* event)
{
    if ((event->type() == QEvent::FontChange || event->type() == QEvent::PaletteChange) && impl_)
        rescaleLetters(*this);
    // A window that comes to the front says its name, and with it the step.
    if (event->type() == QEvent::ActivationChange && isActiveWindow() && impl_)
        impl_->announce(false, focusWidget() == impl_->content);
    QWidget::changeEvent(event);
    if (event->type() == QEvent::ActivationChange && isActiveWindow() && impl_ && impl_->handlers.activated)
        impl_->handlers.activated();
}

}  // namespace tidewell
