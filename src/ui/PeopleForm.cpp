#include "ui/PeopleForm.h"

#include <QKeyEvent>
#include <QListWidget>
#include <QPainter>
#include <QStyledItemDelegate>
#include <QVBoxLayout>
#include <algorithm>
#include <array>
#include <utility>

#include "ui/PersonName.h"
#include "ui/WindowText.h"

namespace tidewell {
namespace {

/// It looks like a list even with one, and scrolls beyond a handful.
constexpr int fewestRows = 2;
constexpr int mostRows = 6;

/// Paints nobody as chosen who is not: the row that the keyboard is on looks like it.
class PersonDelegate final : public QStyledItemDelegate {
public:
    using QStyledItemDelegate::QStyledItemDelegate;
    void paint(QPainter* painter, const QStyleOptionViewItem& option, const QModelIndex& index) const override
    {
        QStyleOptionViewItem row = option;
        if (!row.state.testFlag(QStyle::State_Selected))
            row.state &= ~QStyle::State_HasFocus;
        QStyledItemDelegate::paint(painter, row, index);
    }
};

/// A list in which the first arrow key, Space or Enter takes the person who has the focus, not the one after:
/// nobody is selected before that, and the frame of the list shows the focus.
class PeopleList final : public QListWidget {
public:
    using QListWidget::QListWidget;

protected:
    void keyPressEvent(QKeyEvent* event) override
    {
        constexpr std::array choosing{Qt::Key_Down,  Qt::Key_Up,     Qt::Key_Space,
                                      Qt::Key_Enter, Qt::Key_Return, Qt::Key_Select};
        const bool chooses = std::ranges::find(choosing, event->key()) != choosing.end();
        if (chooses && count() > 0 && selectedItems().isEmpty())
            setCurrentRow(std::max(currentRow(), 0));
        else
            QListWidget::keyPressEvent(event);
    }

    void paintEvent(QPaintEvent* event) override
    {
        QListWidget::paintEvent(event);
        if (!hasFocus() || !selectedItems().isEmpty())
            return;
        QPainter painter{viewport()};
        constexpr int width = 2;
        painter.setPen(QPen{palette().color(QPalette::Highlight), width});
        painter.drawRect(viewport()->rect().adjusted(width / 2, width / 2, -width / 2, -width / 2));
    }
};

}  // namespace

PeopleForm::PeopleForm(QWidget* parent) : QWidget{parent}
{
    question_ = wrappedLabel(tr("&Whose readings do you want to see?"), this);
    QFont strong = question_->font();
    strong.setBold(true);
    question_->setFont(strong);
    sharedWith_ = wrappedLabel({}, this);
    list_ = new PeopleList{this};
    list_->setAccessibleName(tr("People who share their readings with you"));
    list_->setSelectionMode(QAbstractItemView::SingleSelection);
    list_->setEditTriggers(QAbstractItemView::NoEditTriggers);
    list_->setTextElideMode(Qt::ElideRight);
    list_->setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
    list_->setUniformItemSizes(true);
    list_->setTabKeyNavigation(false);
    list_->setItemDelegate(new PersonDelegate{list_});
    hint_ = wrappedLabel(tr("Choose a person to go on."), this);
    makeQuiet(*hint_);
    question_->setBuddy(list_);
    auto* const layout = new QVBoxLayout{this};
    layout->setContentsMargins({});
    layout->addWidget(question_);
    layout->addWidget(sharedWith_);
    layout->addWidget(list_);
    layout->addWidget(hint_);
    connect(list_, &QListWidget::itemSelectionChanged, this, [this] {
        hint();
        if (!filling_ && chosenHandler_)
            chosenHandler_();
    });
}

void PeopleForm::onChosen(std::function<void()> handler) { chosenHandler_ = std::move(handler); }

void PeopleForm::setPeople(const std::vector<LibreConnection>& people,
                           const std::optional<std::string>& patientID, const QString& account)
{
    filling_ = true;
    sharedWith_->setText(tr("Shared with %1:").arg(account));
    if (people != people_ || list_->count() == 0) {
        people_ = people;
        list_->clear();
        for (const LibreConnection& person : people_) {
            const QString name = personName(person.displayName(), person.patientId);
            const bool alone = std::ranges::count(people_, name, [](const LibreConnection& one) {
                                   return personName(one.displayName(), one.patientId);
                               }) == 1;
            list_->addItem(alone ? name : personNameWithID(person.displayName(), person.patientId));
        }
        const int rowHeight = list_->fontMetrics().height() * 8 / 5;  // Room for a finger or a careless hand.
        for (int row = 0; row < list_->count(); ++row)
            list_->item(row)->setSizeHint({0, rowHeight});
        list_->setFixedHeight(std::clamp(list_->count(), fewestRows, mostRows) * rowHeight +
                              2 * list_->frameWidth());
    }
    mark(patientID);
    for (QWidget* widget : std::initializer_list<QWidget*>{question_, sharedWith_, list_})
        widget->setVisible(!people_.empty());
    hint();
    filling_ = false;
}

void PeopleForm::hint()
{
    const bool needed = !people_.empty() && !chosen();
    hint_->setVisible(needed);
    list_->setAccessibleDescription(needed ? hint_->text() : QString{});
    list_->viewport()->update();
}

void PeopleForm::mark(const std::optional<std::string>& patientID)
{
    const auto known = std::ranges::find(people_, patientID, &LibreConnection::patientId);
    if (known != people_.end())
        list_->setCurrentRow(static_cast<int>(known - people_.begin()));
    else
        list_->clearSelection();
}

const LibreConnection* PeopleForm::chosen() const
{
    const int row = list_->currentRow();
    return list_->selectedItems().isEmpty() || row < 0 ? nullptr : &people_.at(static_cast<std::size_t>(row));
}

void PeopleForm::setLocked(bool locked) { list_->setEnabled(!locked); }

void PeopleForm::focusList() { list_->setFocus(); }

void PeopleForm::clear()
{
    filling_ = true;
    people_.clear();
    list_->clear();
    sharedWith_->clear();
    filling_ = false;
}

}  // namespace tidewell
