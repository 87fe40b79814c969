#pragma once

#include <QWidget>
#include <vector>

#include "ui/MenuRows.h"

namespace tidewell {

/// The status item's menu as one column of widgets, whatever window holds it; its first item is the graph.
///
/// By keyboard: Up, Down, Tab and Backtab go from stop to stop and around, Home and End to the first and the
/// last, a letter to the next line that begins with it, Enter or Space chooses; the graph and its picker use
/// Left and Right. Lines that stay when the items change stay the same widgets and keep the focus; where the
/// focused line goes, the graph takes it: a key on its way must never choose what the person has not seen.
/// Main thread.
class MenuPanel final : public QWidget, public SpokenWidget {
public:
    explicit MenuPanel(ChosenHandler chosen);

    void setItems(const std::vector<MenuItem>& items);
    void setGraph(GlucoseGraphContent content);

    /// The size to take in so much room. The graph gives way first, down to its least height; what then still
    /// does not fit has to be scrolled.
    [[nodiscard]] QSize fitInto(QSize room);
    void focusFirst();

    [[nodiscard]] QAccessible::Role spokenRole() const override { return QAccessible::PopupMenu; }

protected:
    bool focusNextPrevChild(bool next) override;
    void keyPressEvent(QKeyEvent* event) override;

private:
    struct Row {
        MenuItem item;
        MenuRow* widget;
    };
    /// A widget that the keyboard stops at, and the row that it is in.
    struct Stop {
        QWidget* widget;
        MenuRow* row;
    };
    [[nodiscard]] std::vector<Stop> stops() const;
    [[nodiscard]] GraphRow* graph() const;
    void focusStop(std::ptrdiff_t index);
    void moveFocus(int step);
    void search(const QString& letter);

    ChosenHandler chosen_;
    std::vector<Row> rows_{};
};

}  // namespace tidewell
