#pragma once

#include <QPoint>
#include <functional>
#include <memory>
#include <vector>

#include "statusbar/StatusBarMenu.h"

class QMenu;

namespace tidewell {

/// The status item's menu where the program shows it itself: a QMenu on X11; on Wayland, which has no place
/// for a menu without a parent window, a small window with the same lines. Both can be used by keyboard
/// alone. Main thread; needs a QApplication.
class StatusMenu final {
public:
    explicit StatusMenu(std::function<void(MenuCommand)> command);
    ~StatusMenu();
    StatusMenu(const StatusMenu&) = delete;

    /// Shows these lines from now on, also while open; lines that stay keep their keyboard focus.
    void setItems(const std::vector<MenuItem>& items);
    /// Opens at a position in global pixels, moved onto the screen; Wayland places it itself. Open already:
    /// closes.
    void popUp(QPoint position);
    /// The menu itself, for a tray that opens it by its own means.
    [[nodiscard]] QMenu* menu() const;

private:
    struct Impl;
    std::unique_ptr<Impl> impl_;
};

}  // namespace tidewell
