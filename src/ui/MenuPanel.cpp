#include "ui/MenuPanel.h"

#include <QKeyEvent>
#include <QVBoxLayout>
#include <algorithm>
#include <utility>

namespace tidewell {
namespace {

/// An item that is the same line, whatever it says now.
bool sameLine(const MenuItem& one, const MenuItem& other)
{
    return one.kind == other.kind && one.command == other.command;
}

}  // namespace

MenuPanel::MenuPanel(ChosenHandler chosen) : chosen_{std::move(chosen)}
{
    setAccessibleName(QStringLiteral("Tidewell"));
    auto* const layout = new QVBoxLayout{this};
    layout->setContentsMargins({});
    layout->setSpacing(1);
}

void MenuPanel::setItems(const std::vector<MenuItem>& items)
{
    const auto stopsBefore = stops();
    const auto focused =
        std::ranges::find_if(stopsBefore, [](const Stop& one) { return one.widget->hasFocus(); });

    std::vector<Row> before = std::exchange(rows_, {});
    for (const MenuItem& item : items) {
        const auto same = std::ranges::find_if(
            before, [&](const Row& row) { return row.widget != nullptr && sameLine(row.item, item); });
        const bool isNew = same == before.end();
        MenuRow* const row = isNew ? makeMenuRow(item, chosen_) : std::exchange(same->widget, nullptr);
        if (isNew || same->item != item)
            row->setItem(item);
        rows_.push_back({item, row});
    }
    while (QLayoutItem* old = layout()->takeAt(0))
        delete old;
    for (const Row& row : rows_) {
        layout()->addWidget(row.widget);
        row.widget->show();  // Now, since only what is shown takes the focus.
    }

    const bool gone =
        focused != stopsBefore.end() && std::ranges::find(before, focused->row, &Row::widget) != before.end();
    if (gone)
        focusFirst();
    for (const Row& row : before)
        delete row.widget;
}

void MenuPanel::setGraph(GlucoseGraphContent content)
{
    if (GraphRow* const row = graph())
        row->setContent(std::move(content));
}

QSize MenuPanel::fitInto(QSize room)
{
    for (const Row& row : rows_)
        if (QLayout* const inner = row.widget->layout())
            inner->activate();
    layout()->invalidate();
    const int width = std::min(layout()->sizeHint().width(), room.width());
    int height =
        layout()->hasHeightForWidth() ? layout()->heightForWidth(width) : layout()->sizeHint().height();
    if (GraphRow* const row = graph()) {
        // Changed only when it has to: each change calls for another look at all heights.
        GlucoseGraphView& view = row->view();
        const int natural = view.sizeHint().height();
        const int current = view.minimumHeight() > 0 ? view.minimumHeight() : natural;
        const int rest = height - current;
        const int wanted = std::clamp(room.height() - rest, view.minimumSizeHint().height(), natural);
        if (wanted != view.minimumHeight())
            view.setFixedHeight(wanted);
        height = rest + wanted;
    }
    return {width, std::min(height, room.height())};
}

void MenuPanel::focusFirst() { focusStop(0); }

std::vector<MenuPanel::Stop> MenuPanel::stops() const
{
    std::vector<Stop> all;
    for (const Row& row : rows_)
        for (QWidget* const widget : row.widget->stops())
            if (widget)
                all.push_back({widget, row.widget});
    return all;
}

GraphRow* MenuPanel::graph() const
{
    for (const Row& row : rows_)
        if (auto* const graph = dynamic_cast<GraphRow*>(row.widget))
            return graph;
    return nullptr;
}

void MenuPanel::focusStop(std::ptrdiff_t index)
{
    const auto all = stops();
    if (index >= 0 && index < std::ssize(all))
        all[static_cast<std::size_t>(index)].widget->setFocus(Qt::TabFocusReason);
}

void MenuPanel::moveFocus(int step)
{
    const auto all = stops();
    if (all.empty())
        return;
    const auto focused = std::ranges::find_if(all, [](const Stop& one) { return one.widget->hasFocus(); });
    const std::ptrdiff_t count = std::ssize(all);
    const std::ptrdiff_t from = focused == all.end() ? (step > 0 ? -1 : 0) : focused - all.begin();
    focusStop((from + step + count) % count);
}

/// From the focused line on, and around.
void MenuPanel::search(const QString& letter)
{
    const auto all = stops();
    const auto focused = std::ranges::find_if(all, [](const Stop& one) { return one.widget->hasFocus(); });
    const auto from = focused == all.end() ? std::ptrdiff_t{-1} : focused - all.begin();
    for (std::ptrdiff_t step = 1; step <= std::ssize(all); ++step) {
        const auto index = (from + step) % std::ssize(all);
        if (all[static_cast<std::size_t>(index)].row->searchText().startsWith(letter, Qt::CaseInsensitive))
            return focusStop(index);
    }
}

bool MenuPanel::focusNextPrevChild(bool next)
{
    moveFocus(next ? 1 : -1);
    return true;
}

void MenuPanel::keyPressEvent(QKeyEvent* event)
{
    switch (event->key()) {
    case Qt::Key_Down: return moveFocus(1);
    case Qt::Key_Up: return moveFocus(-1);
    case Qt::Key_Home: return focusStop(0);
    case Qt::Key_End: return focusStop(std::ssize(stops()) - 1);
    default: break;
    }
    const QString typed = event->text();
    const bool plainKey = !(event->modifiers() & (Qt::ControlModifier | Qt::AltModifier | Qt::MetaModifier));
    if (plainKey && typed.size() == 1 && typed[0].isPrint() && !typed[0].isSpace())
        return search(typed);
    event->ignore();
}

}  // namespace tidewell
