// How long the item's own menu takes to open, on whatever display the toolkit finds.
//
//   bench_popup     prints one JSON object

#include <QApplication>
#include <QElapsedTimer>
#include <QEventLoop>
#include <QPaintEvent>
#include <QWidget>
#include <algorithm>
#include <cmath>
#include <cstdio>

#include "ui/SpokenWidget.h"
#include "ui/StatusMenu.h"

namespace tidewell {
namespace {

constexpr Date now = dateFromUnix(1'772'460'000);

StatusBarState dayOfMinutes()
{
    StatusBarState state{.lastUpdateAt = now};
    for (int minute = 1439; minute >= 0; --minute)
        state.glucoseHistory.push_back(makeReading(std::round(150 + 110 * std::sin(minute / 70.0)), "Flat",
                                                   now - std::chrono::minutes{minute}, Seconds{60},
                                                   GlucoseProvider::libreLinkUp));
    state.presentedReading = state.glucoseHistory.back();
    return state;
}

/// Sees the graph's first painting.
class PaintWatch final : public QObject {
public:
    bool painted = false;

protected:
    bool eventFilter(QObject* watched, QEvent* event) override
    {
        if (event->type() == QEvent::Paint && watched->objectName() == QStringLiteral("glucoseGraphView"))
            painted = true;
        return false;
    }
};

/// The milliseconds from the click to the window's first picture, which is on its way to the display then.
double open(StatusMenu& menu, PaintWatch& watch)
{
    watch.painted = false;
    QElapsedTimer timer;
    timer.start();
    menu.popUp({600, 30});
    while (!watch.painted && !timer.hasExpired(10'000))
        QCoreApplication::processEvents(QEventLoop::WaitForMoreEvents, 10);
    const double milliseconds = static_cast<double>(timer.nsecsElapsed()) / 1e6;
    menu.close();
    QCoreApplication::processEvents();
    QCoreApplication::sendPostedEvents(nullptr, QEvent::DeferredDelete);
    return watch.painted ? milliseconds : -1;
}

void run(int rounds)
{
    const StatusBarState state = dayOfMinutes();
    const AppSettings settings{};
    PaintWatch watch;
    qApp->installEventFilter(&watch);
    StatusMenu menu{{.command = [](MenuCommand) {},
                     .graph = [&]() -> GlucoseGraphContent {
                         return {.glucoseHistory = state.glucoseHistory,
                                 .settings = settings,
                                 .timeWindow = GraphTimeWindow::hours24,
                                 .now = now};
                     }}};
    menu.setItems(statusBarMenu(state, settings, {}, now, TimeZone::utc()));
    const double first = open(menu, watch);
    std::vector<double> later;
    for (int round = 0; round < rounds; ++round)
        later.push_back(open(menu, watch));
    std::ranges::sort(later);
    std::printf("{\"popup_first_open_ms\":%.3f,\"popup_open_ms\":%.3f}\n", first, later[later.size() / 2]);
}

}  // namespace
}  // namespace tidewell

int main(int count, char** values)
{
    const QApplication application{count, values};
    tidewell::installSpokenWidgets();
    tidewell::run(21);
}
