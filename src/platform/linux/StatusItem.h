#pragma once

#include <QObject>
#include <QPoint>
#include <QString>
#include <chrono>
#include <filesystem>
#include <functional>
#include <memory>
#include <optional>

#include "statusbar/StatusItemContent.h"
#include "ui/StatusIconPainter.h"

namespace tidewell {

/// Where a status item gets its time. Both are called on the main thread.
struct StatusItemTime {
    std::function<std::chrono::milliseconds()> now;  ///< Of any clock that never goes back.
    /// Runs `work` once, on the main thread, after `delay`.
    std::function<void(std::chrono::milliseconds delay, std::function<void()> work)> after;
};

/// The event loop's own time.
[[nodiscard]] StatusItemTime eventLoopTime();

struct StatusItemOptions {
    std::optional<StatusIconShape> shape{};     ///< Empty: what suits the panel that shows the item.
    PanelScheme scheme = PanelScheme::unknown;  ///< The panel's background, where the user has said.
    /// Where the icon files of panels that write the label themselves go; made when needed, mode 0700.
    /// Empty: such panels get pixels instead.
    std::filesystem::path iconFolder{};
    std::chrono::milliseconds updateInterval{1000};  ///< At most one change of the item in this time.
    std::chrono::milliseconds legacyTrayDelay{
        5000};             ///< Without a panel for so long: the old X11 tray is tried.
    QString busAddress{};  ///< Empty: the session bus.
    /// Without a panel or tray that shows the item for so long after the start, onAbsent() is told.
    std::chrono::milliseconds absenceDelay{30'000};
    /// Asks the desktop whether the person wants less motion, where its portal does not tell: once, when
    /// there is first something to move. Empty: then there is motion.
    std::function<void(std::function<void(bool reduced)> answer)> askReducedMotion{};
    StatusItemTime time = eventLoopTime();
};

/// The item in the desktop's status area, with tooltip and menu.
///
/// Speaks StatusNotifierItem and dbusmenu on the session bus; appears when a panel comes late and again when
/// the panel restarts, or the bus. Where no such panel runs, it falls back to the older X11 tray. Without a
/// bus or panel it does nothing but keep the content and look for them. Main thread; nothing here waits for
/// the bus.
class StatusItem final : public QObject {
    Q_OBJECT
public:
    explicit StatusItem(StatusItemOptions options = {}, QObject* parent = nullptr);
    ~StatusItem() override;

    /// A menu line was chosen. Called from the event loop, never from within a member function.
    void onCommand(std::function<void(MenuCommand)> handler);
    /// Where our own menu gets its graph; asked only while the menu is open.
    void setGraphSource(std::function<GlucoseGraphContent()> source);
    /// Takes over the left click, with a position in global pixels; without it, the click opens our own menu.
    void onActivate(std::function<void(QPoint)> handler);
    /// Nothing shows the item, `absenceDelay` after the start. Told once at most; set before the start.
    void onAbsent(std::function<void()> handler);
    /// A panel has accepted the item; at every panel start.
    void onRegistered(std::function<void()> handler);

    /// Begins to look for a bus and a panel. Once.
    void start();

    /// Shows this from now on. What did not change causes no traffic; changes that come faster than
    /// `updateInterval` are left out, the last one is not. An activity is shown when it has lasted for a
    /// second, by a sign that then turns once a second; still where less motion is wanted.
    void present(const StatusItemContent& content);
    /// The graph's source would now give something else.
    void graphDidChange();
    /// Opens our own menu there, in global pixels, as a left click on the item does; an open one stays.
    void showMenu(QPoint position);

private:
    struct Impl;
    std::shared_ptr<Impl> impl_;
};

}  // namespace tidewell
