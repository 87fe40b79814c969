#include "ui/StatusMenu.h"

#include <QApplication>
#include <QKeyEvent>
#include <QLayout>
#include <QPainter>
#include <QScreen>
#include <QScrollArea>
#include <QStyle>
#include <QStyleOptionFrame>
#include <QStyleOptionMenuItem>
#include <QTimer>
#include <QVBoxLayout>
#include <QWindow>
#include <algorithm>
#include <chrono>
#include <utility>

#include "ui/MenuPanel.h"

namespace tidewell {
namespace {

using namespace std::chrono_literals;

/// While open, the graph's window moves on this often, and ages are told anew.
constexpr std::chrono::milliseconds graphInterval = 30s;
/// Another program may hold the keyboard or the pointer as the menu opens: a panel that closes its own menu,
/// or a window manager whose shortcut is still pressed. They are asked for this often, and this many times.
constexpr std::chrono::milliseconds grabInterval = 50ms;
constexpr int grabAttempts = 60;
/// A window that never got the keyboard's focus does not hear that the person turned elsewhere; it goes when
/// the pointer has not been in it for so long.
constexpr std::chrono::milliseconds unreachedDelay = 10s;
/// Between the window's edge and what is in it.
constexpr int frameMargin = 6;

bool isWayland() { return QGuiApplication::platformName().startsWith(QLatin1String("wayland")); }

bool keepsMenuOpen(MenuCommand command)
{
    return command == MenuCommand::refresh || graphTimeWindow(command).has_value();
}

/// Below the position, or above it where there is more room, and in any case in `screen`.
QRect placed(QSize size, QPoint position, const QRect& screen)
{
    QRect place{position, size};
    if (place.bottom() > screen.bottom() && position.y() > screen.center().y())
        place.moveBottom(position.y() - 1);
    place.moveRight(std::min(place.right(), screen.right()));
    place.moveBottom(std::min(place.bottom(), screen.bottom()));
    place.moveLeft(std::max(place.left(), screen.left()));
    place.moveTop(std::max(place.top(), screen.top()));
    return place;
}

/// The window around the panel.
class MenuWindow final : public QWidget, public SpokenWidget {
public:
    MenuWindow(ChosenHandler chosen, std::function<void()> hidden)
        : QWidget{nullptr,
                  isWayland() ? Qt::Tool | Qt::FramelessWindowHint : Qt::Popup | Qt::FramelessWindowHint},
          hidden_{std::move(hidden)},
          panel_{new MenuPanel{std::move(chosen)}},
          scroll_{new QScrollArea}
    {
        setObjectName(QStringLiteral("statusMenu"));
        setWindowTitle(QStringLiteral("Tidewell"));
        setAccessibleName(QStringLiteral("Tidewell"));
        setAttribute(Qt::WA_X11NetWmWindowTypePopupMenu, !isWayland());
        scroll_->setFrameShape(QFrame::NoFrame);
        scroll_->setFocusPolicy(Qt::NoFocus);
        scroll_->setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
        scroll_->setWidgetResizable(true);
        scroll_->setWidget(panel_);
        scroll_->viewport()->setAutoFillBackground(false);
        panel_->setAutoFillBackground(false);
        panel_->installEventFilter(this);
        auto* const layout = new QVBoxLayout{this};
        layout->setContentsMargins(frameMargin, frameMargin, frameMargin, frameMargin);
        layout->addWidget(scroll_);
        unreached_.setObjectName(QStringLiteral("unreached"));
        unreached_.setSingleShot(true);
        unreached_.setInterval(unreachedDelay);
        QObject::connect(&unreached_, &QTimer::timeout, this, &QWidget::hide);
        QObject::connect(qApp, &QApplication::focusChanged, this, [this](QWidget*, QWidget* now) {
            if (now && panel_->isAncestorOf(now))
                scroll_->ensureWidgetVisible(now, 0, 2 * frameMargin);
        });
        QObject::connect(qGuiApp, &QGuiApplication::focusWindowChanged, this,
                         [this](const QWindow* focus) { windowFocusChanged(focus); });
    }

    [[nodiscard]] MenuPanel& panel() { return *panel_; }

    void open(QPoint position)
    {
        position_ = position;
        fit();
        panel_->focusFirst();
        announcePopup(*this);
        unreached_.start();
        show();
        if (isWayland())
            activateWindow();
        else
            grabInput(grabAttempts);
        QAccessibleEvent event{panel_, QAccessible::PopupMenuStart};
        QAccessible::updateAccessibility(&event);
    }

    /// Whether it has, or had, the focus or the keyboard.
    [[nodiscard]] bool isReached() const { return reached_; }

    [[nodiscard]] QAccessible::Role spokenRole() const override { return QAccessible::Window; }

protected:
    void enterEvent(QEnterEvent* event) override
    {
        QWidget::enterEvent(event);
        unreached_.stop();
    }

    void leaveEvent(QEvent* event) override
    {
        QWidget::leaveEvent(event);
        if (!reached_)
            unreached_.start();
    }

    void paintEvent(QPaintEvent*) override
    {
        QPainter painter{this};
        QStyleOptionMenuItem ground;
        ground.initFrom(this);
        ground.state = QStyle::State_None;
        ground.menuItemType = QStyleOptionMenuItem::EmptyArea;
        painter.fillRect(rect(), palette().color(QPalette::Window));
        style()->drawPrimitive(QStyle::PE_PanelMenu, &ground, &painter, this);
        QStyleOptionFrame frame;
        frame.initFrom(this);
        frame.state = QStyle::State_None;
        frame.lineWidth = std::max(style()->pixelMetric(QStyle::PM_MenuPanelWidth, nullptr, this), 1);
        style()->drawPrimitive(QStyle::PE_FrameMenu, &frame, &painter, this);
    }

    bool eventFilter(QObject* watched, QEvent* event) override
    {
        if (watched == panel_ && event->type() == QEvent::LayoutRequest && isVisible())
            QTimer::singleShot(0, this, [this] { fit(); });
        return QWidget::eventFilter(watched, event);
    }

    void keyPressEvent(QKeyEvent* event) override
    {
        if (event->matches(QKeySequence::Cancel))
            hide();
        else
            QWidget::keyPressEvent(event);
    }

    /// Before any widget has it: from the first key on, the focus is drawn.
    bool event(QEvent* event) override
    {
        if (event->type() == QEvent::ShortcutOverride && !testAttribute(Qt::WA_KeyboardFocusChange)) {
            setAttribute(Qt::WA_KeyboardFocusChange);
            update();
        }
        return QWidget::event(event);
    }

    void hideEvent(QHideEvent* event) override
    {
        QWidget::hideEvent(event);
        if (event->spontaneous())
            return;
        QAccessibleEvent end{panel_, QAccessible::PopupMenuEnd};
        QAccessible::updateAccessibility(&end);
        hidden_();
    }

private:
    void fit()
    {
        const QScreen* screen = QGuiApplication::screenAt(position_);
        if (!screen || isWayland())
            screen = QGuiApplication::primaryScreen();
        if (!screen)
            return;  // All were taken away: there is nothing to fit into, nor to be seen on.
        const QRect room = screen->availableGeometry();
        const QSize margins{2 * frameMargin, 2 * frameMargin};
        const QSize size = panel_->fitInto(room.size() - margins) + margins;
        setFixedSize(size);  // Tiling compositors let a window of fixed size float.
        if (!isWayland())
            move(placed(size, position_, room).topLeft());
    }

    void windowFocusChanged(const QWindow* focus)
    {
        const bool focused = focus && focus == windowHandle();
        if (isWayland() && isVisible() && hadFocus_ && !focused)
            hide();
        hadFocus_ = focused;
        if (focused)
            reached();
    }

    void reached()
    {
        reached_ = true;
        unreached_.stop();
    }

    void grabInput(int attempts)
    {
        QWindow* const window = windowHandle();
        if (!isVisible() || !window || attempts == 0)
            return;
        if (window->setKeyboardGrabEnabled(true) && window->setMouseGrabEnabled(true))
            return reached();
        QTimer::singleShot(grabInterval, this, [this, attempts] { grabInput(attempts - 1); });
    }

    std::function<void()> hidden_;
    MenuPanel* panel_;
    QScrollArea* scroll_;
    QPoint position_{};
    bool hadFocus_ = false;
    bool reached_ = false;
    QTimer unreached_{this};
};

}  // namespace

struct StatusMenu::Impl {
    /// The command comes from the event loop, since it may end the program or rebuild what just called.
    void choose(MenuCommand chosen)
    {
        QTimer::singleShot(0, &loop, [this, chosen] {
            if (handlers.command)
                handlers.command(chosen);
        });
        if (!keepsMenuOpen(chosen) && window)
            window->hide();
    }

    void open(QPoint position)
    {
        window = new MenuWindow{[this](MenuCommand chosen) { choose(chosen); }, [this] { hidden(); }};
        window->panel().setItems(items);
        pullGraph();
        window->open(position);
        timer.start(graphInterval);
    }

    /// It may be in the middle of one of its own events.
    void hidden()
    {
        timer.stop();
        if (window)
            std::exchange(window, nullptr)->deleteLater();
    }

    void pullGraph()
    {
        if (window)
            window->panel().setGraph(handlers.graph ? handlers.graph() : GlucoseGraphContent{});
    }

    Handlers handlers;
    std::vector<MenuItem> items{};
    MenuWindow* window = nullptr;  ///< While open.
    QTimer timer{};
    QObject loop{};
};

StatusMenu::StatusMenu(Handlers handlers) : impl_{std::make_unique<Impl>(std::move(handlers))}
{
    QObject::connect(&impl_->timer, &QTimer::timeout, &impl_->loop, [this] { impl_->pullGraph(); });
}

StatusMenu::~StatusMenu() { delete std::exchange(impl_->window, nullptr); }

void StatusMenu::setItems(const std::vector<MenuItem>& items)
{
    if (items == impl_->items)
        return;
    impl_->items = items;
    if (!impl_->window)
        return;
    impl_->window->panel().setItems(items);
    impl_->pullGraph();
}

void StatusMenu::refreshGraph() { impl_->pullGraph(); }

void StatusMenu::popUp(QPoint position)
{
    if (!QGuiApplication::primaryScreen())
        return;
    if (impl_->window && !impl_->window->isReached())
        impl_->window->hide();  // A new one may get the focus.
    if (!impl_->window)
        return impl_->open(position);
    impl_->window->raise();
    impl_->window->activateWindow();
}

void StatusMenu::close()
{
    if (impl_->window)
        impl_->window->hide();
}

bool StatusMenu::isOpen() const { return impl_->window != nullptr; }

}  // namespace tidewell
