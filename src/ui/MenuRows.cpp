#include "ui/MenuRows.h"

#include <QFontMetrics>
#include <QHBoxLayout>
#include <QKeyEvent>
#include <QLabel>
#include <QPainter>
#include <QPainterPath>
#include <QStringList>
#include <QStyle>
#include <QStyleOptionMenuItem>
#include <QVBoxLayout>
#include <algorithm>
#include <utility>

#include "ui/DisplayText.h"

namespace tidewell {
namespace {

/// Space around what a row shows, in pixels of the screen's own scale.
constexpr int rowMargin = 8;
constexpr int rowGap = 3;

/// For a style: its "&" are text, not marks of a mnemonic.
QString withoutMnemonic(QString text) { return text.replace(u'&', QStringLiteral("&&")); }

QString spokenText(const MenuItem& item)
{
    if (!item.accessibleText.empty())
        return displayText(item.accessibleText);
    QString spoken = displayText(item.title);
    for (const std::string& line : item.details)
        spoken += (spoken.endsWith(u'.') ? QStringLiteral(" ") : QStringLiteral(". ")) + displayText(line);
    return spoken;
}

QColor mixed(const QColor& front, const QColor& back, double share)
{
    const auto mix = [share](int a, int b) { return qRound(share * a + (1 - share) * b); };
    return {mix(front.red(), back.red()), mix(front.green(), back.green()), mix(front.blue(), back.blue())};
}

/// Of what cannot be chosen but must be read: styles grey it out too far. The contrast stays above 4.5 to 1.
QColor quietText(const QPalette& colors)
{
    return mixed(colors.color(QPalette::Active, QPalette::WindowText),
                 colors.color(QPalette::Active, QPalette::Window), 0.72);
}

bool showsFocus(const QWidget& widget)
{
    return widget.hasFocus() && widget.window()->testAttribute(Qt::WA_KeyboardFocusChange);
}

void paintFocusFrame(QPainter& painter, const QWidget& widget, QPalette::ColorRole role = QPalette::Highlight)
{
    painter.setRenderHint(QPainter::Antialiasing);
    painter.setPen(QPen{widget.palette().color(QPalette::Active, role), 2});
    painter.setBrush(Qt::NoBrush);
    painter.drawRoundedRect(QRectF{widget.rect()}.adjusted(1, 1, -1, -1), 3, 3);
}

/// A line that does something. Drawn by the style as a line of any menu; the one in focus is the selected
/// one, and moving the pointer over it focuses it.
class ActionButton final : public MenuButton {
public:
    explicit ActionButton(std::function<void()> chosen) : MenuButton{QAccessible::MenuItem, std::move(chosen)}
    {
        setMouseTracking(true);
        setSizePolicy(QSizePolicy::Preferred, QSizePolicy::Fixed);
    }

    [[nodiscard]] QSize sizeHint() const override
    {
        const QStyleOptionMenuItem option = styleOption();
        const QFontMetrics metrics{font()};
        const QSize letters{metrics.horizontalAdvance(text()), metrics.height()};
        return style()->sizeFromContents(QStyle::CT_MenuItem, &option, letters, this);
    }

protected:
    void paintEvent(QPaintEvent*) override
    {
        QPainter painter{this};
        const QStyleOptionMenuItem option = styleOption();
        style()->drawControl(QStyle::CE_MenuItem, &option, &painter, this);
        if (!isAvailable() && hasFocus())
            paintFocusFrame(painter, *this);
    }

    void mouseMoveEvent(QMouseEvent* event) override
    {
        if (!hasFocus())
            setFocus(Qt::MouseFocusReason);
        MenuButton::mouseMoveEvent(event);
    }

private:
    [[nodiscard]] QStyleOptionMenuItem styleOption() const
    {
        QStyleOptionMenuItem option;
        option.initFrom(this);
        option.text = withoutMnemonic(text());
        option.font = font();
        option.menuRect = rect();
        option.menuItemType = QStyleOptionMenuItem::Normal;
        option.checkType = QStyleOptionMenuItem::NotCheckable;
        option.menuHasCheckableItems = false;
        option.state = QStyle::State_None;
        for (const auto role : {QPalette::Text, QPalette::WindowText, QPalette::ButtonText})
            option.palette.setColor(QPalette::Disabled, role, quietText(palette()));
        option.palette.setCurrentColorGroup(isAvailable() ? QPalette::Active : QPalette::Disabled);
        if (isAvailable())
            option.state |= QStyle::State_Enabled | QStyle::State_Active;
        if (isAvailable() && hasFocus())
            option.state |= QStyle::State_Selected;
        if (isDown())
            option.state |= QStyle::State_Sunken;
        return option;
    }
};

class ActionRow final : public MenuRow {
public:
    explicit ActionRow(ChosenHandler chosen)
        : chosen_{std::move(chosen)}, button_{new ActionButton{[this] { chosen_(command_); }}}
    {
        setLayout(new QVBoxLayout);
        layout()->setContentsMargins({});
        layout()->addWidget(button_);
    }

    void setItem(const MenuItem& item) override
    {
        command_ = item.command;
        button_->setText(displayText(item.title));
        button_->setAvailable(item.enabled);
        setSpokenName(*button_, spokenText(item));
        button_->updateGeometry();
    }

    [[nodiscard]] std::vector<QWidget*> stops() override { return {button_}; }
    [[nodiscard]] QString searchText() const override { return button_->text(); }

private:
    ChosenHandler chosen_;
    MenuCommand command_ = MenuCommand::none;
    ActionButton* button_;
};

/// Says something: one line, or an alert with a triangle and all of its lines. The keyboard stops here, so
/// that a screen reader can read it.
class NoteRow final : public MenuRow, public SpokenWidget {
    Q_DECLARE_TR_FUNCTIONS(NoteRow)
public:
    NoteRow()
    {
        setFocusPolicy(Qt::StrongFocus);
        QSizePolicy policy{QSizePolicy::Preferred, QSizePolicy::Minimum};
        policy.setHeightForWidth(true);
        setSizePolicy(policy);
    }

    void setItem(const MenuItem& item) override
    {
        alert_ = item.kind == MenuItem::Kind::alert;
        title_ = displayText(item.title);
        QStringList lines;
        for (const std::string& line : item.details)
            lines.append(displayText(line));
        details_ = lines.join(u'\n');
        setSpokenName(*this, alert_ ? tr("Warning: %1").arg(spokenText(item)) : spokenText(item));
        setObjectName(alert_ ? QStringLiteral("alert") : QString{});
        updateGeometry();
        update();
    }

    [[nodiscard]] std::vector<QWidget*> stops() override { return {this}; }
    /// Never asks for more width than the menu has anyway.
    [[nodiscard]] QSize sizeHint() const override { return {0, heightForWidth(naturalWidth)}; }
    [[nodiscard]] int heightForWidth(int width) const override
    {
        const int details = details_.isEmpty() ? 0 : textRect(font(), details_, width).height() + rowGap;
        return textRect(titleFont(), title_, width).height() + details +
               2 * (alert_ ? rowMargin : rowGap + 1);
    }

    [[nodiscard]] QAccessible::Role spokenRole() const override { return QAccessible::MenuItem; }
    void refineState(QAccessible::State& state) const override { state.disabled = true; }

protected:
    void paintEvent(QPaintEvent*) override
    {
        QPainter painter{this};
        const int top = alert_ ? rowMargin : rowGap + 1;
        const QColor text = palette().color(QPalette::Active, QPalette::WindowText);
        QRect title = textRect(titleFont(), title_, width());
        title.moveTopLeft({textLeft(), top});
        painter.setPen(alert_ ? text : quietText(palette()));
        painter.setFont(titleFont());
        painter.drawText(title, Qt::TextWordWrap, title_);
        QRect details = textRect(font(), details_, width());
        details.moveTopLeft({textLeft(), title.bottom() + 1 + rowGap});
        painter.setPen(text);
        painter.setFont(font());
        painter.drawText(details, Qt::TextWordWrap, details_);
        if (alert_)
            paintTriangle(painter, QRectF{rowMargin, double{1} * top, signSize(), signSize()});
        if (showsFocus(*this))
            paintFocusFrame(painter, *this);
    }

private:
    static constexpr int naturalWidth = 360;

    [[nodiscard]] QFont titleFont() const
    {
        QFont title = font();
        title.setBold(alert_);
        return title;
    }
    [[nodiscard]] double signSize() const { return QFontMetrics{font()}.height(); }
    [[nodiscard]] int textLeft() const
    {
        return alert_ ? 2 * rowMargin + static_cast<int>(signSize()) : rowMargin;
    }
    [[nodiscard]] QRect textRect(const QFont& font, const QString& text, int width) const
    {
        const QRect room{0, 0, std::max(width - textLeft() - rowMargin, 1), 100'000};
        QRect needed = QFontMetrics{font}.boundingRect(room, Qt::TextWordWrap, text);
        needed.setWidth(room.width());
        return needed;
    }

    /// Amber with a dark edge, which stands out from any background; the mark in it tells it from a play
    /// sign.
    static void paintTriangle(QPainter& painter, const QRectF& box)
    {
        painter.save();
        painter.setRenderHint(QPainter::Antialiasing);
        painter.translate(box.topLeft());
        painter.scale(box.width() / 16, box.height() / 16);
        QPainterPath triangle;
        triangle.addPolygon(QPolygonF{{{8, 1.8}, {15, 14.2}, {1, 14.2}, {8, 1.8}}});
        QPen edge{QColor{122, 70, 0}, 1.2};
        edge.setJoinStyle(Qt::RoundJoin);
        painter.setPen(edge);
        painter.setBrush(QColor{255, 196, 64});
        painter.drawPath(triangle);
        painter.setPen(QPen{QColor{60, 34, 0}, 1.6, Qt::SolidLine, Qt::RoundCap});
        painter.drawLine(QPointF{8, 6.2}, QPointF{8, 9.8});
        painter.drawPoint(QPointF{8, 12.2});
        painter.restore();
    }

    bool alert_ = false;
    QString title_{};
    QString details_{};
};

class SeparatorRow final : public MenuRow, public SpokenWidget {
public:
    SeparatorRow() { setFixedHeight(2 * rowGap + 1); }
    void setItem(const MenuItem&) override {}
    [[nodiscard]] std::vector<QWidget*> stops() override { return {}; }
    [[nodiscard]] QAccessible::Role spokenRole() const override { return QAccessible::Separator; }

protected:
    void paintEvent(QPaintEvent*) override
    {
        QPainter painter{this};
        painter.fillRect(
            QRect{rowMargin, rowGap, width() - 2 * rowMargin, 1},
            mixed(palette().color(QPalette::WindowText), palette().color(QPalette::Window), 0.2));
    }
};

class LastUpdateRow final : public MenuRow {
public:
    explicit LastUpdateRow(ChosenHandler chosen)
        : chosen_{std::move(chosen)},
          words_{new QLabel},
          refresh_{new FlatButton{QAccessible::PushButton, [this] { chosen_(command_); }}}
    {
        words_->setTextFormat(Qt::PlainText);
        refresh_->setText(displayText(refreshTitle));
        setSpokenName(*refresh_, refresh_->text());
        auto* const layout = new QHBoxLayout{this};
        layout->setContentsMargins(rowMargin, 0, 0, 0);
        layout->addWidget(words_, 1);
        layout->addWidget(refresh_);
    }

    void setItem(const MenuItem& item) override
    {
        command_ = item.command;
        words_->setText(displayText(item.title));
        refresh_->setAvailable(item.enabled);
        refresh_->setAccessibleDescription(displayText(item.title));
    }

    [[nodiscard]] std::vector<QWidget*> stops() override { return {refresh_}; }
    [[nodiscard]] QString searchText() const override { return refresh_->text(); }

private:
    ChosenHandler chosen_;
    MenuCommand command_ = MenuCommand::none;
    QLabel* words_;
    FlatButton* refresh_;
};

}  // namespace

MenuButton::MenuButton(QAccessible::Role role, std::function<void()> chosen) : role_{role}
{
    setFocusPolicy(Qt::StrongFocus);
    setAttribute(Qt::WA_Hover);
    QObject::connect(this, &QAbstractButton::clicked, this, [this, chosen = std::move(chosen)] {
        if (available_)
            chosen();
    });
}

void MenuButton::setAvailable(bool available)
{
    if (std::exchange(available_, available) == available)
        return;
    QAccessible::State changed;
    changed.disabled = true;
    QAccessibleStateChangeEvent event{this, changed};
    QAccessible::updateAccessibility(&event);
    update();
}

void MenuButton::refineState(QAccessible::State& state) const
{
    state.disabled = !available_;
    state.checkable = isCheckable();
    state.checked = isChecked();
}

void MenuButton::keyPressEvent(QKeyEvent* event)
{
    switch (event->key()) {
    case Qt::Key_Return:
    case Qt::Key_Enter:
    case Qt::Key_Select:
    case Qt::Key_Space:
        if (!event->isAutoRepeat())
            click();
        return;
    default: event->ignore();  // The toolkit's button would move the focus, or click on Escape.
    }
}

QSize FlatButton::sizeHint() const
{
    const QFontMetrics metrics{font()};
    return {metrics.horizontalAdvance(text()) + 2 * rowMargin + 4, metrics.height() + 2 * rowGap + 4};
}

void FlatButton::paintEvent(QPaintEvent*)
{
    QPainter painter{this};
    painter.setRenderHint(QPainter::Antialiasing);
    const QPalette& colors = palette();
    const QRectF plate = QRectF{rect()}.adjusted(2, 2, -2, -2);
    painter.setPen(Qt::NoPen);
    QColor text = isAvailable() ? colors.color(QPalette::Active, QPalette::WindowText) : quietText(colors);
    if (isChecked()) {
        painter.setBrush(colors.color(QPalette::Active, QPalette::Highlight));
        painter.drawRoundedRect(plate, 3, 3);
        text = colors.color(QPalette::Active, QPalette::HighlightedText);
    } else if (isAvailable()) {
        const double rest = isCheckable() ? 0 : 0.06;  // One that stands alone must look like a button.
        painter.setBrush(mixed(colors.color(QPalette::WindowText), colors.color(QPalette::Window),
                               isDown()       ? 0.25
                               : underMouse() ? 0.12
                                              : rest));
        painter.drawRoundedRect(plate, 3, 3);
    }
    if (showsFocus(*this))  // Around a plate of the highlight's colour, a frame of that colour is not seen.
        paintFocusFrame(painter, *this, isChecked() ? QPalette::WindowText : QPalette::Highlight);
    painter.setPen(text);
    painter.drawText(rect(), Qt::AlignCenter, withoutMnemonic(QAbstractButton::text()));
}

TimeWindowPicker::TimeWindowPicker(ChosenHandler chosen) : chosen_{std::move(chosen)}
{
    setAccessibleName(tr("Time window of the graph"));
    auto* const layout = new QHBoxLayout{this};
    layout->setContentsMargins({});
    layout->setSpacing(2);
}

void TimeWindowPicker::setItems(const std::vector<MenuItem>& choices)
{
    if (std::ranges::equal(choices, choices_, {}, &MenuItem::command, &Choice::command))
        return;
    for (const Choice& old : std::exchange(choices_, {}))
        delete old.button;
    for (const MenuItem& item : choices) {
        const auto window = graphTimeWindow(item.command);
        if (!window)
            continue;
        auto* const button =
            new FlatButton{QAccessible::RadioButton, [this, command = item.command] { chosen_(command); }};
        button->setText(tr("%1 h").arg(static_cast<int>(*window)));
        button->setCheckable(true);
        setSpokenName(*button, displayText(item.title));
        layout()->addWidget(button);
        choices_.push_back({item.command, button});
    }
}

void TimeWindowPicker::setTimeWindow(GraphTimeWindow window)
{
    const bool focused =
        std::ranges::any_of(choices_, [](const Choice& one) { return one.button->hasFocus(); });
    for (const auto& [command, button] : choices_) {
        const bool on = graphTimeWindow(command) == window;
        if (button->isChecked() == on)
            continue;
        button->setChecked(on);
        if (on && focused)
            button->setFocus(Qt::OtherFocusReason);
    }
}

QWidget* TimeWindowPicker::stop()
{
    const auto on = std::ranges::find_if(choices_, [](const Choice& one) { return one.button->isChecked(); });
    if (on != choices_.end())
        return on->button;
    return choices_.empty() ? nullptr : choices_.front().button;
}

void TimeWindowPicker::keyPressEvent(QKeyEvent* event)
{
    const auto focused =
        std::ranges::find_if(choices_, [](const Choice& one) { return one.button->hasFocus(); });
    if (focused == choices_.end())
        return event->ignore();
    auto next = focused;
    switch (event->key()) {
    case Qt::Key_Left: next = focused == choices_.begin() ? focused : focused - 1; break;
    case Qt::Key_Right: next = focused + 1 == choices_.end() ? focused : focused + 1; break;
    case Qt::Key_Home: next = choices_.begin(); break;
    case Qt::Key_End: next = choices_.end() - 1; break;
    default: return event->ignore();
    }
    if (next == focused)
        return;
    next->button->setFocus(Qt::TabFocusReason);
    next->button->click();
}

GraphRow::GraphRow(ChosenHandler chosen)
    : view_{new GlucoseGraphView}, picker_{new TimeWindowPicker{std::move(chosen)}}
{
    auto* const layout = new QVBoxLayout{this};
    layout->setContentsMargins({});
    layout->setSpacing(rowGap);
    layout->addWidget(view_);
    layout->addWidget(picker_);
}

void GraphRow::setItem(const MenuItem& item)
{
    picker_->setItems(item.children);
    for (const MenuItem& choice : item.children)
        if (const auto window = graphTimeWindow(choice.command); window && choice.checked)
            picker_->setTimeWindow(*window);
}

void GraphRow::setContent(GlucoseGraphContent content)
{
    picker_->setTimeWindow(content.timeWindow);
    view_->setContent(std::move(content));
}

MenuRow* makeMenuRow(const MenuItem& item, const ChosenHandler& chosen)
{
    switch (item.kind) {
    case MenuItem::Kind::graph: return new GraphRow{chosen};
    case MenuItem::Kind::lastUpdate: return new LastUpdateRow{chosen};
    case MenuItem::Kind::alert:
    case MenuItem::Kind::text: return new NoteRow;
    case MenuItem::Kind::action:
    case MenuItem::Kind::choice: return new ActionRow{chosen};
    case MenuItem::Kind::separator: return new SeparatorRow;
    }
    std::unreachable();
}

}  // namespace tidewell
