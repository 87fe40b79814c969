#include "ui/WindowText.h"

#include <QApplication>
#include <QEvent>
#include <QPainter>
#include <QScreen>
#include <QScrollBar>
#include <algorithm>
#include <cmath>

namespace tidewell {
namespace {

constexpr const char* letterScale = "tidewellLetterScale";
constexpr const char* quietLetters = "tidewellQuietLetters";
constexpr double quietShare = 0.72;  // The contrast stays above 4.5 to 1.

/// The bullet is painted, so that screen readers and copies get the sentence alone.
class BulletLabel final : public QLabel {
public:
    BulletLabel(const QString& text, QWidget* parent) : QLabel{text, parent}
    {
        setContentsMargins(fontMetrics().height(), 0, 0, 0);
    }

protected:
    void paintEvent(QPaintEvent* event) override
    {
        QLabel::paintEvent(event);
        QPainter painter{this};
        painter.setRenderHint(QPainter::Antialiasing);
        painter.setPen(Qt::NoPen);
        painter.setBrush(palette().color(QPalette::WindowText));
        const double line = fontMetrics().height();
        painter.drawEllipse(QPointF{line * 0.45, line * 0.55}, line * 0.12, line * 0.12);
    }
};

void applyScale(QLabel& label, const QFont& base)
{
    QFont font = base;
    const double factor = label.property(letterScale).toDouble();
    font.setBold(label.font().bold());
    if (font.pointSizeF() > 0)
        font.setPointSizeF(font.pointSizeF() * factor);
    else
        font.setPixelSize(static_cast<int>(std::lround(font.pixelSize() * factor)));
    label.setFont(font);
}

QLabel* prepared(QLabel* label)
{
    label->setTextFormat(Qt::PlainText);
    label->setWordWrap(true);
    return label;
}

}  // namespace

QLabel* wrappedLabel(const QString& text, QWidget* parent) { return prepared(new QLabel{text, parent}); }

QLabel* copyableLabel(const QString& text, QWidget* parent)
{
    QLabel* const label = wrappedLabel(text, parent);
    label->setTextInteractionFlags(Qt::TextSelectableByMouse | Qt::TextSelectableByKeyboard);
    label->setFocusPolicy(Qt::StrongFocus);
    return label;
}

QLabel* bulletLabel(const QString& text, QWidget* parent) { return prepared(new BulletLabel{text, parent}); }

void scaleLetters(QLabel& label, double factor, bool bold)
{
    QFont font = label.font();
    font.setBold(bold);
    label.setFont(font);
    label.setProperty(letterScale, factor);
    applyScale(label, label.window()->font());
}

void rescaleLetters(QWidget& window)
{
    for (QLabel* label : window.findChildren<QLabel*>()) {
        if (label->property(letterScale).isValid())
            applyScale(*label, window.font());
        if (label->property(quietLetters).isValid())
            makeQuiet(*label);
    }
}

void makeQuiet(QLabel& label)
{
    const QPalette colors = label.window()->palette();
    const QColor front = colors.color(QPalette::Active, QPalette::WindowText);
    const QColor back = colors.color(QPalette::Active, QPalette::Window);
    const auto mix = [](int a, int b) { return qRound(quietShare * a + (1 - quietShare) * b); };
    QPalette own = label.palette();
    own.setColor(QPalette::WindowText, {mix(front.red(), back.red()), mix(front.green(), back.green()),
                                        mix(front.blue(), back.blue())});
    label.setPalette(own);
    label.setProperty(quietLetters, true);
}

bool isDark(const QWidget& widget)
{
    return widget.palette().color(QPalette::Window).lightness() <
           widget.palette().color(QPalette::WindowText).lightness();
}

void keepFocusInView(QScrollArea& area)
{
    QObject::connect(qApp, &QApplication::focusChanged, &area, [&area](QWidget*, QWidget* now) {
        if (!now || !area.widget() || !area.widget()->isAncestorOf(now) ||
            QApplication::mouseButtons() != Qt::NoButton)
            return;
        const int margin = area.fontMetrics().height() / 2;
        const int room = area.viewport()->height() - now->height();
        if (room < 0) {
            area.ensureWidgetVisible(now, 0, margin);  // What is being worked on in it.
            return;
        }
        const QRect place{now->mapTo(area.widget(), QPoint{}), now->size()};
        for (const int y : {place.bottom(), place.top()})
            area.ensureVisible(place.left(), y, 0, std::min(margin, room / 2));
    });
}

GrowingScrollArea::GrowingScrollArea(QWidget* parent) : QScrollArea{parent}
{
    keepFocusInView(*this);
    setFrameShape(QFrame::NoFrame);
    setWidgetResizable(true);
    setFocusPolicy(Qt::NoFocus);
    setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
}

QSize GrowingScrollArea::sizeHint() const
{
    if (!widget())
        return QScrollArea::sizeHint();
    QSize size =
        widget()->sizeHint().expandedTo(widget()->minimumSizeHint()).expandedTo(widget()->minimumSize());
    if (widget()->hasHeightForWidth())
        size.setHeight(
            std::max(widget()->heightForWidth(size.width()), widget()->minimumSizeHint().height()));
    const int room = screen() ? screen()->availableSize().height() * 7 / 10 : size.height();
    // There is always room for the bar, so that nothing is cut when it is needed for a line or two.
    return {size.width() + verticalScrollBar()->sizeHint().width(), std::min(size.height(), room)};
}

QSize GrowingScrollArea::minimumSizeHint() const { return {sizeHint().width(), fontMetrics().height() * 6}; }

bool GrowingScrollArea::eventFilter(QObject* object, QEvent* event)
{
    if (object == widget() && event->type() == QEvent::LayoutRequest)
        updateGeometry();
    return QScrollArea::eventFilter(object, event);
}

}  // namespace tidewell
