#include "ui/SettingsControls.h"

#include <QAbstractItemView>
#include <QCheckBox>
#include <QCoreApplication>
#include <QKeyEvent>
#include <QLabel>
#include <QLineEdit>
#include <QMessageBox>
#include <QPushButton>
#include <QSignalBlocker>
#include <QStyle>
#include <QVBoxLayout>
#include <utility>

#include "ui/WindowText.h"

namespace tidewell {
namespace {

struct SettingsTexts {
    Q_DECLARE_TR_FUNCTIONS(SettingsTexts)
};

bool isTyping(const QKeyEvent& event)
{
    const auto other = Qt::ControlModifier | Qt::AltModifier | Qt::MetaModifier;
    return !event.text().isEmpty() && event.text().front().isPrint() && event.key() != Qt::Key_Space &&
           !(event.modifiers() & other);
}

}  // namespace

SettingsComboBox::SettingsComboBox(QWidget* parent) : QComboBox{parent}
{
    setFocusPolicy(Qt::StrongFocus);
    setSizeAdjustPolicy(AdjustToContents);
}

bool SettingsComboBox::isOpen() const { return wasOpened_ && view()->isVisible(); }

void SettingsComboBox::present(const std::vector<Entry>& entries, const QVariant& value)
{
    if (isOpen()) {
        isStale_ = true;
        return;
    }
    const QSignalBlocker quiet{this};
    if (entries != entries_) {
        entries_ = entries;
        clear();
        for (const Entry& entry : entries_)
            addItem(entry.label, entry.value);
    }
    setCurrentIndex(findData(value));
}

void SettingsComboBox::onPicked(std::function<void(const QVariant&)> handler)
{
    connect(this, &QComboBox::activated, this,
            [this, handler = std::move(handler)](int index) { handler(itemData(index)); });
}

void SettingsComboBox::onStale(std::function<void()> handler) { stale_ = std::move(handler); }

void SettingsComboBox::showPopup()
{
    if (!std::exchange(wasOpened_, true))
        view()->installEventFilter(this);
    QComboBox::showPopup();
}

void SettingsComboBox::keyPressEvent(QKeyEvent* event)
{
    if (!isTyping(*event)) {
        QComboBox::keyPressEvent(event);
        return;
    }
    showPopup();
    view()->keyboardSearch(event->text());
    event->accept();
}

void SettingsComboBox::wheelEvent(QWheelEvent* event) { event->ignore(); }

bool SettingsComboBox::eventFilter(QObject* watched, QEvent* event)
{
    // What is picked is told after the list has closed, so this waits for it.
    if (wasOpened_ && event->type() == QEvent::Hide && watched == view())
        QMetaObject::invokeMethod(
            this,
            [this] {
                if (!isOpen() && std::exchange(isStale_, false) && stale_)
                    stale_();
            },
            Qt::QueuedConnection);
    return QComboBox::eventFilter(watched, event);
}

SettingsTimeEdit::SettingsTimeEdit(QWidget* parent) : QTimeEdit{parent}
{
    setFocusPolicy(Qt::StrongFocus);
    setKeyboardTracking(false);
    // Some locales have seconds even in the short form.
    setDisplayFormat(locale().timeFormat(QLocale::ShortFormat).remove(QStringLiteral(":ss")));
}

QString SettingsTimeEdit::textOf(QTime time) const { return locale().toString(time, displayFormat()); }

void SettingsTimeEdit::present(QTime shown)
{
    if (shown == time() || (hasFocus() && text() != textOf(time())))
        return;
    const QSignalBlocker quiet{this};
    setTime(shown);
}

void SettingsTimeEdit::onPicked(std::function<void(QTime)> handler)
{
    connect(this, &QTimeEdit::timeChanged, this, std::move(handler));
}

void SettingsTimeEdit::keyPressEvent(QKeyEvent* event)
{
    if (event->key() == Qt::Key_Escape && text() != textOf(time())) {
        lineEdit()->setText(textOf(time()));
        selectAll();
        event->accept();
        return;
    }
    QTimeEdit::keyPressEvent(event);
}

void SettingsTimeEdit::wheelEvent(QWheelEvent* event) { event->ignore(); }

SettingsNotice::SettingsNotice(QWidget* parent) : QFrame{parent}
{
    setFrameShape(StyledPanel);
    sign_ = new QLabel{this};
    words_ = copyableLabel({}, this);
    auto* row = new QHBoxLayout{this};
    row->addWidget(sign_, 0, Qt::AlignTop);
    auto* column = new QVBoxLayout;
    column->addWidget(words_);
    column_ = column;
    row->addLayout(column, 1);
    hide();
}

void SettingsNotice::present(Weight weight, const QString& words)
{
    weight_ = weight;
    showSign();
    if (words_->text() != words)
        words_->setText(words);
    setSpokenName(*this, words.isEmpty()
                             ? QString{}
                             : SettingsTexts::tr("%1: %2").arg(settingsWeightText(weight), words));
    setVisible(!words.isEmpty());
}

void SettingsNotice::addBelow(QWidget* widget)
{
    // Labels wrap in the whole width; buttons are as wide as they need.
    column_->addWidget(widget, 0, qobject_cast<QLabel*>(widget) ? Qt::Alignment{} : Qt::AlignLeft);
}

void SettingsNotice::changeEvent(QEvent* event)
{
    if (sign_ && (event->type() == QEvent::StyleChange || event->type() == QEvent::FontChange))
        showSign();
    QFrame::changeEvent(event);
}

void SettingsNotice::showSign()
{
    const int side = fontMetrics().height() * 5 / 4;
    sign_->setPixmap(settingsWeightIcon(weight_, *this).pixmap(side, side));
    sign_->setAccessibleName(settingsWeightText(weight_));
}

QString settingsWeightText(SettingsNotice::Weight weight)
{
    using enum SettingsNotice::Weight;
    switch (weight) {
    case information: return SettingsTexts::tr("Note");
    case good: return SettingsTexts::tr("Good");
    case caution: return SettingsTexts::tr("Caution");
    case problem: return SettingsTexts::tr("Problem");
    }
    std::unreachable();
}

QIcon settingsWeightIcon(SettingsNotice::Weight weight, const QWidget& widget)
{
    using enum SettingsNotice::Weight;
    const auto standard = [&](QStyle::StandardPixmap one) {
        return widget.style()->standardIcon(one, nullptr, &widget);
    };
    switch (weight) {
    case information: return standard(QStyle::SP_MessageBoxInformation);
    case good: return standard(QStyle::SP_DialogApplyButton);
    case caution: return standard(QStyle::SP_MessageBoxWarning);
    case problem: return standard(QStyle::SP_MessageBoxCritical);
    }
    std::unreachable();
}

QLabel* addField(QBoxLayout& layout, const QString& title, QWidget& field)
{
    auto* label = new QLabel{title, field.parentWidget()};
    label->setBuddy(&field);
    layout.addWidget(label);
    layout.addWidget(&field, 0, Qt::AlignLeft);
    return label;
}

QPointer<QDialog> ask(const SettingsQuestion& question, std::function<void(bool)> confirmed)
{
    auto* box = new QMessageBox{QMessageBox::Warning, question.title, question.question,
                                QMessageBox::NoButton, question.about};
    box->setObjectName(QStringLiteral("settingsQuestion"));
    box->setAttribute(Qt::WA_DeleteOnClose);
    box->setTextFormat(Qt::PlainText);
    box->setInformativeText(question.consequences);
    box->setTextInteractionFlags(Qt::TextSelectableByMouse);
    if (auto* const sign = box->findChild<QLabel*>(QStringLiteral("qt_msgboxex_icon_label")))
        sign->setAccessibleName(settingsWeightText(SettingsNotice::Weight::caution));
    QPushButton* yes = box->addButton(question.action, QMessageBox::AcceptRole);
    yes->setObjectName(QStringLiteral("settingsConfirm"));
    QPushButton* cancel = box->addButton(SettingsTexts::tr("Cancel"), QMessageBox::RejectRole);
    box->setDefaultButton(cancel);
    box->setEscapeButton(cancel);
    if (!question.choice.isEmpty())
        box->setCheckBox(new QCheckBox{question.choice, box});
    QObject::connect(yes, &QPushButton::clicked, box, [box, confirmed = std::move(confirmed)] {
        confirmed(box->checkBox() && box->checkBox()->isChecked());
    });
    box->open();
    cancel->setFocus();
    return box;
}

}  // namespace tidewell
