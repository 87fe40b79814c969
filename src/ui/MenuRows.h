#pragma once

#include <QAbstractButton>
#include <QWidget>
#include <functional>
#include <vector>

#include "statusbar/StatusBarMenu.h"
#include "ui/GlucoseGraphView.h"
#include "ui/SpokenWidget.h"

class QLabel;

namespace tidewell {

/// What a row calls when its command is chosen.
using ChosenHandler = std::function<void(MenuCommand)>;

/// One item of the menu as a widget. Keys that a row does not use go on to its parent.
class MenuRow : public QWidget {
public:
    /// Shows this item from now on; it is of the kind that the row was made for.
    virtual void setItem(const MenuItem& item) = 0;
    /// The widgets in it that take the keyboard's focus one after the other.
    [[nodiscard]] virtual std::vector<QWidget*> stops() = 0;
    /// Where typing the first letter leads to; empty for a row that is not found that way.
    [[nodiscard]] virtual QString searchText() const { return {}; }
};

/// A row for an item of this kind.
[[nodiscard]] MenuRow* makeMenuRow(const MenuItem& item, const ChosenHandler& chosen);

/// A button of the menu. One that is not available keeps its focus and its place among the stops, so that
/// what changes under a person's hands does not move them elsewhere, and so that it can be read.
class MenuButton : public QAbstractButton, public SpokenWidget {
public:
    MenuButton(QAccessible::Role role, std::function<void()> chosen);
    void setAvailable(bool available);
    [[nodiscard]] bool isAvailable() const { return available_; }

    [[nodiscard]] QAccessible::Role spokenRole() const override { return role_; }
    void refineState(QAccessible::State& state) const override;
    [[nodiscard]] bool canBePressed() const override { return available_; }
    void press() override { click(); }

protected:
    void keyPressEvent(QKeyEvent* event) override;
    void keyReleaseEvent(QKeyEvent* event) override { event->ignore(); }
    void nextCheckState() override {}  // What is checked comes from the menu's data.

private:
    QAccessible::Role role_;
    bool available_ = true;
};

/// A small button with a text, flat until the pointer or the focus is on it, or it is checked.
class FlatButton final : public MenuButton {
public:
    using MenuButton::MenuButton;
    [[nodiscard]] QSize sizeHint() const override;

protected:
    void paintEvent(QPaintEvent* event) override;
};

/// The windows of the graph as toggle buttons, one of which is on. Left, Right, Home and End pick at once.
class TimeWindowPicker final : public QWidget, public SpokenWidget {
    Q_DECLARE_TR_FUNCTIONS(TimeWindowPicker)
public:
    explicit TimeWindowPicker(ChosenHandler chosen);
    void setItems(const std::vector<MenuItem>& choices);
    void setTimeWindow(GraphTimeWindow window);
    /// The button that is on.
    [[nodiscard]] QWidget* stop();
    [[nodiscard]] QAccessible::Role spokenRole() const override { return QAccessible::Grouping; }

protected:
    void keyPressEvent(QKeyEvent* event) override;

private:
    struct Choice {
        MenuCommand command;
        FlatButton* button;
    };
    ChosenHandler chosen_;
    std::vector<Choice> choices_{};
};

/// The graph, and below it the choice of its window.
class GraphRow final : public MenuRow {
public:
    explicit GraphRow(ChosenHandler chosen);
    void setItem(const MenuItem& item) override;
    void setContent(GlucoseGraphContent content);
    [[nodiscard]] std::vector<QWidget*> stops() override { return {view_, picker_->stop()}; }
    [[nodiscard]] GlucoseGraphView& view() { return *view_; }

private:
    GlucoseGraphView* view_;
    TimeWindowPicker* picker_;
};

}  // namespace tidewell
