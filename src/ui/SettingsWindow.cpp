#include "ui/SettingsWindow.h"

#include <QAbstractButton>
#include <QCloseEvent>
#include <QDialog>
#include <QKeyEvent>
#include <QLabel>
#include <QScreen>
#include <QScrollArea>
#include <QShortcut>
#include <QTabBar>
#include <QTabWidget>
#include <QVBoxLayout>
#include <algorithm>
#include <utility>
#include <vector>

#include "ui/Announcer.h"
#include "ui/DisplayText.h"
#include "ui/SettingsAboutPage.h"
#include "ui/SettingsAccountPage.h"
#include "ui/SettingsAlertsPage.h"
#include "ui/SettingsGeneralPage.h"
#include "ui/SettingsGlucosePage.h"
#include "ui/SettingsInsightsPage.h"
#include "ui/WindowText.h"

namespace tidewell {
namespace {

/// What is silent, and what keeps alerts from being noticed; each on its line.
QString warningText(const SettingsState& state)
{
    QStringList lines;
    for (const SilentLowWarning& warning : state.silentLows)
        lines.append(displayText(warning.text));
    if (state.alertProblem)
        for (const QString& line :
             QString::fromStdString(*state.alertProblem).split(u'\n', Qt::SkipEmptyParts))
            lines.append(displayText(line.toStdString()));
    return lines.join(u'\n');
}

bool isUrgent(const SettingsState& state)
{
    return state.alertProblem || std::ranges::any_of(state.silentLows, &SilentLowWarning::isInForce);
}

/// Never lets its page be lower than its lines need in the width that there is: the toolkit's own answer lags
/// behind when lines change while the bar comes or goes.
class PageArea final : public QScrollArea {
public:
    using QScrollArea::QScrollArea;

protected:
    bool eventFilter(QObject* object, QEvent* event) override
    {
        const bool taken = QScrollArea::eventFilter(object, event);
        if (object == widget() && event->type() == QEvent::LayoutRequest)
            fit();
        return taken;
    }
    void resizeEvent(QResizeEvent* event) override
    {
        QScrollArea::resizeEvent(event);
        fit();
    }

    void showEvent(QShowEvent* event) override
    {
        // Styles have their say when things are shown first; what was measured before counts no more.
        for (QWidget* one : widget()->findChildren<QWidget*>()) {
            one->ensurePolished();
            one->updateGeometry();
        }
        QScrollArea::showEvent(event);
        fit();
    }

private:
    void fit()
    {
        if (!widget() || !widget()->layout())
            return;
        const int width = std::max(widget()->minimumSizeHint().width(), viewport()->width());
        const QLayout& lines = *widget()->layout();
        widget()->setMinimumHeight(
            std::max(lines.totalHeightForWidth(width), lines.minimumHeightForWidth(width)));
    }
};

}  // namespace

struct SettingsWindow::Impl {
    SettingsPageContext context;
    SettingsNotice* warning = nullptr;
    SettingsNotice* saveProblem = nullptr;
    QTabWidget* tabs = nullptr;
    std::vector<SettingsPage*> pages{};
    Announcer* announcer = nullptr;
    bool leftForDialog = false;  ///< The window lost the front to a question of its own.

    void addPage(SettingsWindow* window, SettingsPage* page, const char* name, const QString& title)
    {
        pages.push_back(page);
        auto* scroll = new PageArea{tabs};
        scroll->setObjectName(QString::fromLatin1(name));
        scroll->setAccessibleName(title);
        scroll->setFrameShape(QFrame::NoFrame);
        scroll->setWidgetResizable(true);
        scroll->setFocusPolicy(Qt::NoFocus);
        scroll->setWidget(page);
        keepFocusInView(*scroll);
        scroll->viewport()->setAutoFillBackground(false);
        page->setAutoFillBackground(false);
        const int index = tabs->addTab(scroll, title);
        const QKeySequence keys{Qt::ALT | static_cast<Qt::Key>(Qt::Key_1 + index)};
        tabs->setTabToolTip(index, keys.toString(QKeySequence::NativeText));
        connect(new QShortcut{keys, window}, &QShortcut::activated, window,
                [this, index] { tabs->setCurrentIndex(index); });
    }

    /// Tells a screen reader what has become of what the person did.
    void announce(const SettingsState& before)
    {
        const SettingsState& now = context.state;
        QStringList lines;
        const auto say = [&lines](const std::string& was, const std::string& is) {
            if (was != is && !is.empty())
                lines.append(displayText(is));
        };
        say(before.testAlertMessage, now.testAlertMessage);
        say(before.historyMessage, now.historyMessage);
        say(before.accountMessage, now.accountMessage);
        if (now.isReconnecting && !before.isReconnecting)
            lines.append(SettingsAccountPage::reconnectingText());
        say(before.loginItemProblem, now.loginItemProblem);
        if (now.saveProblem && before.saveProblem != now.saveProblem)
            lines.append(saveProblemText(*now.saveProblem));
        if (!before.silentLows.empty() && now.silentLows.empty())
            lines.append(tr("Nothing that you set keeps lows silent any more."));
        if (const QString warnings = warningText(now); warnings != warningText(before) && !warnings.isEmpty())
            lines.append(warnings);
        announcer->say(lines.join(u'\n'));
    }

    static QString saveProblemText(const std::string& problem)
    {
        return tr("Could not save the change. %1 The settings are shown as they are stored.")
            .arg(displayText(problem));
    }
};

SettingsWindow::SettingsWindow(SettingsFacts facts, Handlers handlers) : impl_{std::make_unique<Impl>()}
{
    Impl& my = *impl_;
    my.context.facts = std::move(facts);
    my.context.handlers = std::move(handlers);
    setObjectName(QStringLiteral("settingsWindow"));
    setWindowTitle(tr("Settings"));
    my.warning = new SettingsNotice{this};
    my.warning->setObjectName(QStringLiteral("settingsWarning"));
    my.saveProblem = new SettingsNotice{this};
    my.saveProblem->setObjectName(QStringLiteral("settingsSaveProblem"));
    my.tabs = new QTabWidget{this};
    my.tabs->setObjectName(QStringLiteral("settingsTabs"));
    my.tabs->tabBar()->setAccessibleName(tr("Settings"));
    my.tabs->setUsesScrollButtons(true);
    SettingsPageContext& context = my.context;
    my.addPage(this, new SettingsGeneralPage{context}, "general", tr("General"));
    my.addPage(this, new SettingsGlucosePage{context}, "glucose", tr("Glucose"));
    my.addPage(this, new SettingsInsightsPage{context}, "insights", tr("Insights"));
    my.addPage(this, new SettingsAlertsPage{context}, "alerts", tr("Alerts"));
    my.addPage(this, new SettingsAccountPage{context}, "account", tr("Account"));
    my.addPage(this, new SettingsAboutPage{context}, "about", tr("About"));
    connect(my.tabs, &QTabWidget::currentChanged, this, [this](int index) {
        // A window that opens looks anyway.
        if (isVisible() && index == static_cast<int>(SettingsTab::about) && impl_->context.handlers.lookAgain)
            impl_->context.handlers.lookAgain();
    });
    my.announcer = new Announcer{this};
    auto* layout = new QVBoxLayout{this};
    layout->addWidget(my.warning);
    layout->addWidget(my.saveProblem);
    layout->addWidget(my.tabs, 1);
    connect(new QShortcut{QKeySequence::Close, this}, &QShortcut::activated, this, &QWidget::close);
    const QSize wanted = QSize{43, 45} * fontMetrics().height();
    const QSize room = screen() ? screen()->availableSize() * 9 / 10 : wanted;
    resize(wanted.boundedTo(room));
    present({});
}

SettingsWindow::~SettingsWindow() = default;

void SettingsWindow::present(const SettingsState& state)
{
    Impl& my = *impl_;
    const SettingsState before = std::exchange(my.context.state, state);
    my.warning->present(
        isUrgent(state) ? SettingsNotice::Weight::caution : SettingsNotice::Weight::information,
        warningText(state));
    my.saveProblem->present(SettingsNotice::Weight::problem,
                            state.saveProblem ? Impl::saveProblemText(*state.saveProblem) : QString{});
    for (SettingsPage* page : my.pages)
        page->present();
    my.announce(before);
}

void SettingsWindow::open(SettingsTab tab)
{
    const int index = static_cast<int>(tab);
    if (!isVisible() || impl_->tabs->currentIndex() != index) {
        impl_->tabs->setCurrentIndex(index);
        impl_->tabs->tabBar()->setFocus();
    }
    bringToFront();
}

void SettingsWindow::bringToFront()
{
    show();
    setWindowState(windowState() & ~Qt::WindowMinimized);
    raise();
    activateWindow();
}

void SettingsWindow::closeEvent(QCloseEvent* event)
{
    for (auto* dialog : findChildren<QDialog*>())
        dialog->close();
    QWidget::closeEvent(event);
    if (event->isAccepted() && impl_->context.handlers.closed)
        impl_->context.handlers.closed();
}

void SettingsWindow::keyPressEvent(QKeyEvent* event)
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

void SettingsWindow::activationChanged()
{
    if (!isActiveWindow()) {
        const auto dialogs = findChildren<QDialog*>();
        impl_->leftForDialog = std::ranges::any_of(dialogs, [](QDialog* one) { return one->isVisible(); });
    } else if (!std::exchange(impl_->leftForDialog, false) && impl_->context.handlers.lookAgain) {
        impl_->context.handlers.lookAgain();
    }
}

void SettingsWindow::changeEvent(QEvent* event)
{
    if (event->type() == QEvent::FontChange && impl_ && impl_->tabs)
        rescaleLetters(*this);
    if (event->type() == QEvent::ActivationChange && impl_ && impl_->tabs)
        activationChanged();
    QWidget::changeEvent(event);
}

}  // namespace tidewell
