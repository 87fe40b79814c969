#include "ui/GlucoseGraphView.h"

#include <gtest/gtest.h>
#include <QApplication>
#include <QImage>
#include <QKeyEvent>
#include <QMouseEvent>

namespace tidewell {
namespace {

constexpr Date now = dateFromUnix(1'772'460'000);

GlucoseReading reading(double minutesAgo, double value)
{
    return makeReading(value, "Flat", now - Seconds{60 * minutesAgo}, Seconds{300}, GlucoseProvider::dexcom);
}

class GlucoseGraphViewTest : public testing::Test {
protected:
    GlucoseGraphViewTest()
    {
        view.resize(360, 240);
        view.setContent(content());
        view.show();
    }

    static GlucoseGraphContent content()
    {
        return {.glucoseHistory = {reading(300, 110), reading(180, 250), reading(60, 60), reading(2, 120)},
                .now = now};
    }

    void key(int code)
    {
        QKeyEvent event{QEvent::KeyPress, code, Qt::NoModifier};
        QApplication::sendEvent(&view, &event);
    }

    void moveTo(double x)
    {
        QMouseEvent event{QEvent::MouseMove, QPointF{x, 5}, QPointF{x, 5},
                          Qt::NoButton,      Qt::NoButton,  Qt::NoModifier};
        QApplication::sendEvent(&view, &event);
    }

    [[nodiscard]] double marked() const { return view.markedReading() ? view.markedReading()->mgdL : -1; }

    GlucoseGraphView view{};
};

TEST_F(GlucoseGraphViewTest, marksTheReadingNearestToThePointer)
{
    const auto layout = glucoseGraphLayout(content(), {360, 240}, graphTextMeasure());
    const QImage plain = view.grab().toImage();
    for (const GraphPoint& point : layout.points) {
        moveTo(point.at.x + 3);
        EXPECT_EQ(marked(), content().glucoseHistory[point.reading].mgdL);
        EXPECT_NE(view.grab().toImage(), plain);
    }
    moveTo((layout.points[0].at.x + layout.points[1].at.x) / 2);
    EXPECT_EQ(marked(), -1) << "far from both";
    moveTo(layout.points[1].at.x);
    view.setContent({.now = now});
    EXPECT_EQ(marked(), -1);
    view.setContent(content());
    EXPECT_EQ(marked(), 250) << "the pointer is still there";
    QEvent leave{QEvent::Leave};
    QApplication::sendEvent(&view, &leave);
    EXPECT_EQ(view.grab().toImage(), plain);
}

TEST_F(GlucoseGraphViewTest, walkStaysAtItsReadingWhileOthersComeAndGo)
{
    key(Qt::Key_Home);
    key(Qt::Key_Right);
    EXPECT_EQ(marked(), 250);
    auto changed = content();
    changed.glucoseHistory.insert(changed.glucoseHistory.begin(), reading(330, 140));
    changed.glucoseHistory.push_back(reading(0, 130));
    view.setContent(changed);
    EXPECT_EQ(marked(), 250);
    EXPECT_EQ(view.accessibleName().toStdString(),
              spokenGraphReading(reading(180, 250), changed.settings, changed.zone));
    changed.timeWindow = GraphTimeWindow::hours1;
    view.setContent(changed);
    EXPECT_EQ(marked(), 60) << "the oldest that is still shown";
    view.setContent({.now = now});
    EXPECT_EQ(view.accessibleName().toStdString(), graphAccessibilityLabel({.now = now}));
    for (const int code : {Qt::Key_Left, Qt::Key_Right, Qt::Key_Home, Qt::Key_End, Qt::Key_PageUp})
        key(code);
    EXPECT_EQ(marked(), -1);
}

TEST_F(GlucoseGraphViewTest, followsPaletteAndFont)
{
    const auto corner = [this] { return view.grab().toImage().pixelColor(180, 3); };
    EXPECT_EQ(corner(), graphBackground(GraphTheme::light));
    QPalette dark;
    dark.setColor(QPalette::Window, Qt::black);
    dark.setColor(QPalette::WindowText, Qt::white);
    view.setPalette(dark);
    EXPECT_EQ(corner(), graphBackground(GraphTheme::dark));
    const QSize before = view.sizeHint();
    QFont larger = view.font();
    larger.setPixelSize(24);
    view.setFont(larger);
    EXPECT_EQ(view.sizeHint(), 2 * QSize(360, 240));
    EXPECT_LE(before.width(), view.sizeHint().width());
}

}  // namespace
}  // namespace tidewell
