#include "ui/StatusMenu.h"

#include <QAction>
#include <QGuiApplication>
#include <QKeyEvent>
#include <QLabel>
#include <QMenu>
#include <QPushButton>
#include <QTimer>
#include <QVBoxLayout>
#include <QWindow>
#include <algorithm>
#include <utility>

namespace tidewell {
namespace {

/// A line as a menu shows it: its "&" are text, not marks of a mnemonic.
QString plainTitle(const MenuItem& item)
{
    return QString::fromStdString(item.title).replace(u'&', QStringLiteral("&&"));
}

bool sameLines(const std::vector<MenuItem>& left, const std::vector<MenuItem>& right)
{
    return std::ranges::equal(left, right, [](const MenuItem& a, const MenuItem& b) {
        return a.kind == b.kind && a.command == b.command;
    });
}

bool isWayland() { return QGuiApplication::platformName().startsWith(QLatin1String("wayland")); }

/// The lines that say what is wrong cannot be chosen, but must be read: styles grey them out too far.
void makeDisabledTextReadable(QMenu& menu)
{
    constexpr double share = 0.72;  // Of the text's colour; the contrast stays above 4.5 to 1.
    QPalette palette = menu.palette();
    const QColor text = palette.color(QPalette::Active, QPalette::WindowText);
    const QColor ground = palette.color(QPalette::Active, QPalette::Window);
    const auto mixed = [](int a, int b) { return qRound(share * a + (1 - share) * b); };
    const QColor readable{mixed(text.red(), ground.red()), mixed(text.green(), ground.green()),
                          mixed(text.blue(), ground.blue())};
    for (const auto role : {QPalette::Text, QPalette::WindowText, QPalette::ButtonText})
        palette.setColor(QPalette::Disabled, role, readable);
    menu.setPalette(palette);
}

/// The menu as a window, for Wayland. Its fixed size makes tiling compositors let it float.
class MenuWindow final : public QWidget {
public:
    explicit MenuWindow(std::function<void(MenuCommand)> command)
        : QWidget{nullptr, Qt::Tool | Qt::FramelessWindowHint}, command_{std::move(command)}
    {
        setWindowTitle(QStringLiteral("Tidewell"));
        layout_ = new QVBoxLayout{this};
        layout_->setContentsMargins(6, 6, 6, 6);
        layout_->setSpacing(2);
        QObject::connect(qGuiApp, &QGuiApplication::focusWindowChanged, this, [this](const QWindow* focus) {
            if (focus == nullptr && isVisible())
                hide();
        });
    }

    void rebuild(const std::vector<MenuItem>& items)
    {
        while (QLayoutItem* old = layout_->takeAt(0)) {
            delete old->widget();
            delete old;
        }
        lines_.clear();
        for (const MenuItem& item : items) {
            QWidget* line = makeLine(item);
            layout_->addWidget(line);
            lines_.push_back(line);
        }
        refresh(items);
    }

    void refresh(const std::vector<MenuItem>& items)
    {
        for (std::size_t i = 0; i < items.size(); ++i) {
            if (auto* button = qobject_cast<QPushButton*>(lines_[i])) {
                button->setText(plainTitle(items[i]));
                button->setEnabled(items[i].enabled);
            } else if (auto* label = qobject_cast<QLabel*>(lines_[i])) {
                label->setText(QString::fromStdString(items[i].title));
            }
        }
        setFixedSize(layout_->sizeHint());
    }

protected:
    void keyPressEvent(QKeyEvent* event) override
    {
        switch (event->key()) {
        case Qt::Key_Escape: hide(); return;
        case Qt::Key_Down: focusNextChild(); return;
        case Qt::Key_Up: focusPreviousChild(); return;
        default: QWidget::keyPressEvent(event);
        }
    }

private:
    QWidget* makeLine(const MenuItem& item)
    {
        if (item.kind == MenuItem::Kind::separator) {
            auto* rule = new QFrame;
            rule->setFrameShape(QFrame::HLine);
            rule->setFrameShadow(QFrame::Sunken);
            return rule;
        }
        if (item.kind == MenuItem::Kind::text) {
            auto* label = new QLabel;
            label->setTextFormat(Qt::PlainText);
            label->setContentsMargins(8, 3, 8, 3);
            return label;
        }
        auto* button = new QPushButton;
        button->setFlat(true);
        button->setAutoDefault(true);
        button->setStyleSheet(QStringLiteral("text-align: left; padding: 4px 8px"));
        QObject::connect(button, &QPushButton::clicked, this, [this, command = item.command] {
            hide();
            command_(command);
        });
        return button;
    }

    std::function<void(MenuCommand)> command_;
    QVBoxLayout* layout_;
    std::vector<QWidget*> lines_;
};

}  // namespace

struct StatusMenu::Impl {
    /// From the event loop, since the handler may end the program or rebuild the menu that is still closing.
    void choose(MenuCommand chosen)
    {
        QTimer::singleShot(0, &menu, [this, chosen] { command(chosen); });
    }

    /// The actions stay and change their meaning: a menu that is emptied while it is open closes.
    void rebuild(const std::vector<MenuItem>& before)
    {
        const auto active = std::ranges::find(actions, menu.activeAction());
        const MenuCommand focused = active == actions.end()
                                        ? MenuCommand::none
                                        : before[static_cast<std::size_t>(active - actions.begin())].command;
        for (; actions.size() > items.size(); actions.pop_back())
            delete actions.back();
        while (actions.size() < items.size()) {
            QAction* action = menu.addAction(QString{});
            QObject::connect(action, &QAction::triggered, &menu,
                             [this, line = actions.size()] { choose(items[line].command); });
            actions.push_back(action);
        }
        for (std::size_t i = 0; i < items.size(); ++i) {
            actions[i]->setSeparator(items[i].kind == MenuItem::Kind::separator);
            if (focused != MenuCommand::none && items[i].command == focused)
                menu.setActiveAction(actions[i]);
        }
        if (window)
            window->rebuild(items);
    }

    void refresh()
    {
        for (std::size_t i = 0; i < items.size(); ++i) {
            const bool separator = items[i].kind == MenuItem::Kind::separator;
            actions[i]->setText(separator ? QString{} : plainTitle(items[i]));
            actions[i]->setEnabled(separator ||
                                   (items[i].enabled && items[i].kind == MenuItem::Kind::action));
        }
        if (window)
            window->refresh(items);
    }

    std::function<void(MenuCommand)> command;
    std::vector<MenuItem> items{};
    QMenu menu{};
    std::vector<QAction*> actions{};
    std::unique_ptr<MenuWindow> window{};  ///< Made at its first use, on Wayland only.
};

StatusMenu::StatusMenu(std::function<void(MenuCommand)> command)
    : impl_{std::make_unique<Impl>(std::move(command))}
{
    makeDisabledTextReadable(impl_->menu);
    impl_->menu.setAccessibleName(QStringLiteral("Tidewell"));
}

StatusMenu::~StatusMenu() = default;

void StatusMenu::setItems(const std::vector<MenuItem>& menu)
{
    const std::vector<MenuItem> items = menuOfLines(menu);
    if (items == impl_->items)
        return;
    const std::vector<MenuItem> before = std::exchange(impl_->items, items);
    if (!sameLines(items, before))
        impl_->rebuild(before);
    impl_->refresh();
}

void StatusMenu::popUp(QPoint position)
{
    if (!isWayland()) {
        if (impl_->menu.isVisible())
            impl_->menu.close();
        else
            impl_->menu.popup(position);
        return;
    }
    if (!impl_->window) {
        impl_->window = std::make_unique<MenuWindow>([this](MenuCommand chosen) { impl_->choose(chosen); });
        impl_->window->rebuild(impl_->items);
    }
    impl_->window->setVisible(!impl_->window->isVisible());
    if (impl_->window->isVisible())
        impl_->window->activateWindow();
}

QMenu* StatusMenu::menu() const { return &impl_->menu; }

}  // namespace tidewell
