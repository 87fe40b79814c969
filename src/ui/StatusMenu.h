#pragma once

#include <QPoint>
#include <functional>
#include <memory>
#include <vector>

#include "statusbar/StatusBarMenu.h"

namespace tidewell {

/// The status item's menu where the program shows it itself, with the graph as its first item: a popup on
/// X11; on Wayland, which has no place for a popup without a parent window, a small window. Both hold the
/// same MenuPanel and go when the person clicks or turns elsewhere, chooses, or presses Escape; one that
/// never got the focus goes after 10 s without the pointer in it. Closed, it holds nothing but its items.
/// Main thread; needs a QApplication.
class StatusMenu final {
public:
    struct Handlers {
        /// Called from the event loop, after the menu has gone. A choice of the graph's window, and Refresh,
        /// leave it open.
        std::function<void(MenuCommand)> command;
        /// What the graph shows. Asked when the menu opens, and while it is open whenever something changed
        /// and every 30 s. Empty: a graph without readings.
        std::function<GlucoseGraphContent()> graph{};
    };

    explicit StatusMenu(Handlers handlers);
    ~StatusMenu();
    StatusMenu(const StatusMenu&) = delete;
    StatusMenu& operator=(const StatusMenu&) = delete;

    /// Shows these items, as statusBarMenu() makes them, from now on, also while open.
    void setItems(const std::vector<MenuItem>& items);
    /// What the graph shows has changed.
    void refreshGraph();
    /// Opens at a position in global pixels, moved onto the screen; Wayland places it itself. What is open
    /// already stays, and comes to the front; where it never got the focus, a new one opens. Does nothing
    /// without a screen.
    void popUp(QPoint position);
    void close();
    [[nodiscard]] bool isOpen() const;

private:
    struct Impl;
    std::unique_ptr<Impl> impl_;
};

}  // namespace tidewell
