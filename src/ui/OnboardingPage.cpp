#include "ui/OnboardingPage.h"

#include <QEvent>
#include <QPainter>

#include "ui/WindowText.h"

namespace tidewell {
namespace {

/// Those of the status item.
constexpr QRgb redFill = 0xffff3b30;
constexpr QRgb redLetters = 0xffffffff;
constexpr QRgb orangeFill = 0xffffe64d;
constexpr QRgb orangeLetters = 0xff996600;

}  // namespace

OnboardingPage::OnboardingPage(const Handlers& handlers, QWidget* parent)
    : QWidget{parent}, handlers_{handlers}
{
}

ReadingPlate::ReadingPlate(QWidget* parent) : QLabel{parent}
{
    setTextFormat(Qt::PlainText);
    setAlignment(Qt::AlignCenter);
    setSizePolicy(QSizePolicy::Maximum, QSizePolicy::Maximum);
}

void ReadingPlate::present(const QString& title, TitleColor color, const QString& spoken)
{
    color_ = color;
    setText(title);
    setAccessibleName(spoken);
    const int space = fontMetrics().height() / 4;
    setContentsMargins(2 * space, space / 2, 2 * space, space / 2);
    colorLetters();
    update();
}

void ReadingPlate::colorLetters()
{
    coloring_ = true;
    QPalette own = palette();
    switch (color_) {
    case TitleColor::primary:
        own.setColor(QPalette::WindowText, window()->palette().color(QPalette::Active, QPalette::Text));
        break;
    case TitleColor::orange: own.setColor(QPalette::WindowText, QColor::fromRgba(orangeLetters)); break;
    case TitleColor::red: own.setColor(QPalette::WindowText, QColor::fromRgba(redLetters)); break;
    }
    setPalette(own);
    coloring_ = false;
}

void ReadingPlate::paintEvent(QPaintEvent* event)
{
    {
        QPainter painter{this};
        painter.setRenderHint(QPainter::Antialiasing);
        const QPalette colors = window()->palette();
        const QColor fill = color_ == TitleColor::red      ? QColor::fromRgba(redFill)
                            : color_ == TitleColor::orange ? QColor::fromRgba(orangeFill)
                                                           : colors.color(QPalette::Active, QPalette::Base);
        painter.setPen(color_ == TitleColor::primary ? QPen{colors.color(QPalette::Mid)} : QPen{Qt::NoPen});
        painter.setBrush(fill);
        const double radius = height() / 6.0;
        painter.drawRoundedRect(QRectF{rect()}.adjusted(0.5, 0.5, -0.5, -0.5), radius, radius);
    }
    QLabel::paintEvent(event);
}

void ReadingPlate::changeEvent(QEvent* event)
{
    QLabel::changeEvent(event);
    if (event->type() == QEvent::PaletteChange && !coloring_)
        colorLetters();
}

}  // namespace tidewell
