#include "ui/WindowWalk.h"

#include <gtest/gtest.h>
#include <QAbstractButton>
#include <QAbstractScrollArea>
#include <QAbstractSlider>
#include <QAbstractSpinBox>
#include <QAccessible>
#include <QApplication>
#include <QCheckBox>
#include <QComboBox>
#include <QDateTimeEdit>
#include <QDialogButtonBox>
#include <QDir>
#include <QGroupBox>
#include <QHeaderView>
#include <QKeyEvent>
#include <QLabel>
#include <QLineEdit>
#include <QListView>
#include <QLocale>
#include <QPushButton>
#include <QRadioButton>
#include <QRegularExpression>
#include <QScrollArea>
#include <QScrollBar>
#include <QStyle>
#include <QStyleOptionButton>
#include <QStyleOptionComboBox>
#include <QStyleOptionSpinBox>
#include <QTabBar>
#include <QTableView>
#include <QTextDocumentFragment>
#include <QToolButton>
#include <algorithm>
#include <map>
#include <set>

#include "ui/Translations.h"

namespace tidewell {
namespace {

/// Styles round sizes of text.
constexpr int roundingRoom = 1;
/// More entries than this are one kind, and no longer looked at one by one.
constexpr int entriesLookedAt = 100;
/// Of a date and a time.
constexpr int mostParts = 8;

/// The widgets below a window that can be seen, or be scrolled to; the window first.
std::vector<QWidget*> visibleWidgets(QWidget& window)
{
    std::vector<QWidget*> all{&window};
    for (QWidget* one : window.findChildren<QWidget*>())
        if (one->window() == window.window() && one->isVisibleTo(&window))
            all.push_back(one);
    return all;
}

QString textOf(const QWidget& widget)
{
    if (const auto* const button = qobject_cast<const QAbstractButton*>(&widget))
        return button->text();
    if (const auto* const label = qobject_cast<const QLabel*>(&widget))
        return label->text();
    if (const auto* const box = qobject_cast<const QGroupBox*>(&widget))
        return box->title();
    return {};
}

/// For messages: what a person who looks for the widget needs.
std::string described(const QWidget& widget)
{
    QString words = QString::fromLatin1(widget.metaObject()->className());
    for (const QString& more : {widget.objectName(), widget.accessibleName(), textOf(widget)})
        if (!more.isEmpty())
            words += QStringLiteral(" '%1'").arg(more.left(80));
    return words.toStdString();
}

/// Belongs to a control of the toolkit, which speaks and takes the keyboard for it.
bool isPartOfAnother(const QWidget& widget)
{
    const QWidget* const parent = widget.parentWidget();
    return qobject_cast<const QScrollBar*>(&widget) || qobject_cast<const QHeaderView*>(&widget) ||
           qobject_cast<const QTabBar*>(parent) || qobject_cast<const QLineEdit*>(parent) ||
           qobject_cast<const QAbstractSpinBox*>(parent) || qobject_cast<const QComboBox*>(parent) ||
           (qobject_cast<const QTableView*>(parent) && qobject_cast<const QAbstractButton*>(&widget)) ||
           widget.objectName() == QLatin1String("qt_msgboxex_icon_label");  // The box's role says the same.
}

QAccessible::Role roleOf(QWidget* widget)
{
    const QAccessibleInterface* const spoken = QAccessible::queryAccessibleInterface(widget);
    return spoken ? spoken->role() : QAccessible::NoRole;
}

bool needsName(QAccessible::Role role)
{
    using enum QAccessible::Role;
    static const std::set<QAccessible::Role> named{
        PushButton, CheckBox, RadioButton,    ComboBox, EditableText, SpinBox, Slider,  Dial,     List,
        Table,      Tree,     ListItem,       PageTab,  MenuItem,     Link,    Graphic, Chart,    ProgressBar,
        ButtonMenu, Window,   ButtonDropDown, Dialog,   PopupMenu,    Button,  ToolTip, Indicator};
    return named.contains(role);
}

void expectNamed(QAccessibleInterface& spoken, const QWidget* around)
{
    auto* const widget = qobject_cast<QWidget*>(spoken.object());
    if (widget && isPartOfAnother(*widget))
        return;
    const std::string place = widget ? described(*widget) : "an entry of " + described(*around);
    QString name = spoken.text(QAccessible::Name).trimmed();
    const bool isWindow = widget && widget->isWindow();
    if (isWindow)  // Where there is none, the toolkit says the program's.
        name = widget->windowTitle() + widget->accessibleName();
    const QAccessible::Role role = spoken.role();
    const bool takesFocus = widget && widget->focusPolicy() != Qt::NoFocus && !widget->focusProxy();
    const bool isArea = qobject_cast<QAbstractScrollArea*>(widget) && role == QAccessible::Client;
    if (role == QAccessible::NoRole || (takesFocus && !isArea && role == QAccessible::Client))
        ADD_FAILURE() << place << " has no role";
    if ((isWindow || needsName(role) || (takesFocus && role != QAccessible::StaticText)) && name.isEmpty())
        ADD_FAILURE() << place << " has no name";
    const int count = role == QAccessible::ComboBox ? 0 : std::min(spoken.childCount(), entriesLookedAt);
    for (int i = 0; i < count; ++i) {
        QAccessibleInterface* const child = spoken.child(i);
        if (!child || !child->isValid() || child->role() == QAccessible::Cell)
            continue;
        const auto* const below = qobject_cast<QWidget*>(child->object());
        if (below ? !below->isHidden() && !below->isWindow() : !child->state().invisible)
            expectNamed(*child, widget ? widget : around);
    }
}

/// What Alt and a letter lead to: the visible texts that can hold a mnemonic.
std::vector<std::pair<QString, const QWidget*>> textsWithMnemonics(QWidget& window)
{
    std::vector<std::pair<QString, const QWidget*>> texts;
    for (QWidget* const one : visibleWidgets(window)) {
        const auto* const label = qobject_cast<QLabel*>(one);
        if (qobject_cast<QPushButton*>(one) || qobject_cast<QCheckBox*>(one) ||
            qobject_cast<QRadioButton*>(one) || qobject_cast<QToolButton*>(one) ||
            qobject_cast<QGroupBox*>(one) || (label && label->buddy()))
            texts.emplace_back(textOf(*one), one);
        if (const auto* const tabs = qobject_cast<QTabBar*>(one))
            for (int i = 0; i < tabs->count(); ++i)
                texts.emplace_back(tabs->tabText(i), one);
    }
    return texts;
}

/// Whether a button answers to Enter, Escape or a key of its own, or to nothing for now.
bool hasOtherKey(const QAbstractButton& button)
{
    if (!button.isEnabled())
        return true;
    if (const auto* const push = qobject_cast<const QPushButton*>(&button); push && push->isDefault())
        return true;
    for (const QWidget* up = button.parentWidget(); up; up = up->parentWidget())
        if (const auto* const box = qobject_cast<const QDialogButtonBox*>(up))
            return box->buttonRole(const_cast<QAbstractButton*>(&button)) == QDialogButtonBox::RejectRole;
    return !button.shortcut().isEmpty();
}

QSize sizeOfText(const QWidget& widget, const QString& text)
{
    return widget.fontMetrics().size(Qt::TextShowMnemonic, text);
}

void expectRoom(const QWidget& widget, QSize needed, QSize room, const QString& text)
{
    if (needed.width() > room.width() + roundingRoom || needed.height() > room.height() + roundingRoom)
        ADD_FAILURE() << described(widget) << " is cut: '" << text.left(80).toStdString() << "' needs "
                      << needed.width() << "x" << needed.height() << " of " << room.width() << "x"
                      << room.height();
}

void expectRoom(const QWidget& widget, int needed, int room, const QString& text)
{
    expectRoom(widget, QSize{needed, 0}, QSize{room, 0}, text);
}

void expectLabelWhole(const QLabel& label)
{
    if (label.text().isEmpty() && label.pixmap().isNull())
        return;
    const QSize needed = label.wordWrap()
                             ? QSize{label.minimumSizeHint().width(), label.heightForWidth(label.width())}
                             : label.sizeHint();
    expectRoom(label, needed, label.size(), label.text());
}

void expectButtonWhole(const QAbstractButton& button)
{
    if (button.text().isEmpty())
        return;
    QStyleOptionButton option;
    option.initFrom(&button);
    option.text = button.text();
    const bool isBox = qobject_cast<const QCheckBox*>(&button) != nullptr;
    if (isBox || qobject_cast<const QRadioButton*>(&button)) {
        const auto part = isBox ? QStyle::SE_CheckBoxContents : QStyle::SE_RadioButtonContents;
        expectRoom(button, sizeOfText(button, button.text()),
                   button.style()->subElementRect(part, &option, &button).size(), button.text());
    } else if (qobject_cast<const QPushButton*>(&button)) {
        const QSize room =
            button.style()->subElementRect(QStyle::SE_PushButtonContents, &option, &button).size();
        expectRoom(button, sizeOfText(button, button.text()).width(), room.width(), button.text());
    } else {
        expectRoom(button, button.sizeHint().width(), button.width(), button.text());
    }
}

void expectComboWhole(const QComboBox& box)
{
    QStyleOptionComboBox option;
    option.initFrom(&box);
    option.editable = box.isEditable();
    option.subControls = QStyle::SC_All;
    const int room =
        box.style()->subControlRect(QStyle::CC_ComboBox, &option, QStyle::SC_ComboBoxEditField, &box).width();
    for (int i = 0; i < std::min(box.count(), entriesLookedAt); ++i)
        expectRoom(box, box.fontMetrics().horizontalAdvance(box.itemText(i)), room, box.itemText(i));
}

void expectSpinBoxWhole(const QAbstractSpinBox& box)
{
    QStyleOptionSpinBox option;
    option.initFrom(&box);
    option.subControls = QStyle::SC_All;
    option.buttonSymbols = box.buttonSymbols();
    option.frame = box.hasFrame();
    const QRect field =
        box.style()->subControlRect(QStyle::CC_SpinBox, &option, QStyle::SC_SpinBoxEditField, &box);
    expectRoom(box, box.fontMetrics().horizontalAdvance(box.text()), field.width(), box.text());
}

void expectTabsWhole(const QTabBar& tabs)
{
    for (int i = 0; i < tabs.count(); ++i)
        expectRoom(tabs, sizeOfText(tabs, tabs.tabText(i)).width(), tabs.tabRect(i).width(), tabs.tabText(i));
    if (tabs.count() > 0 && !tabs.usesScrollButtons())
        expectRoom(tabs, tabs.tabRect(tabs.count() - 1).right(), tabs.width(),
                   tabs.tabText(tabs.count() - 1));
}

void expectListWhole(const QListView& list)
{
    if (!list.model() || list.wordWrap() || list.horizontalScrollBarPolicy() != Qt::ScrollBarAlwaysOff)
        return;
    for (int i = 0; i < std::min(list.model()->rowCount(), entriesLookedAt); ++i) {
        const QModelIndex index = list.model()->index(i, 0);
        expectRoom(list, list.sizeHintForIndex(index).width(), list.viewport()->width(),
                   index.data().toString());
    }
}

/// Gives access to how wide a column has to be.
class TableLook final : public QTableView {
public:
    static int widthNeeded(const QTableView& table, int column)
    {
        return (table.*&TableLook::sizeHintForColumn)(column);
    }
};

void expectTableWhole(const QTableView& table)
{
    if (!table.model())
        return;
    for (int i = 0; i < table.model()->columnCount(); ++i) {
        const QString title = table.model()->headerData(i, Qt::Horizontal).toString();
        if (table.isColumnHidden(i))
            continue;
        if (table.horizontalHeader()->isVisible())
            expectRoom(table, table.horizontalHeader()->sectionSizeHint(i), table.columnWidth(i), title);
        if (!table.wordWrap())
            expectRoom(table, TableLook::widthNeeded(table, i), table.columnWidth(i), "column " + title);
    }
}

/// No ancestor cuts it off, but for one that scrolls that way.
void expectInsideAncestors(const QWidget& widget, const QWidget& window)
{
    QRect place = widget.rect();
    const QWidget* from = &widget;
    for (const QWidget* up = widget.parentWidget(); up && from != &window;
         from = up, up = up->parentWidget()) {
        place.translate(from->pos());
        const auto* const area = qobject_cast<const QAbstractScrollArea*>(up->parentWidget());
        if (area && area->viewport() == up) {
            if (area->horizontalScrollBarPolicy() != Qt::ScrollBarAlwaysOff)
                place.setLeft(0), place.setRight(0);
            if (area->verticalScrollBarPolicy() != Qt::ScrollBarAlwaysOff)
                place.setTop(0), place.setBottom(0);
        }
        const QRect room = up->rect();
        const QRect allowed = room.adjusted(-roundingRoom, -roundingRoom, roundingRoom, roundingRoom);
        if (!allowed.contains(place)) {
            ADD_FAILURE() << described(widget) << " sticks out of " << described(*up) << ": " << place.left()
                          << "," << place.top() << " to " << place.right() << "," << place.bottom() << " in "
                          << room.width() << "x" << room.height();
            return;
        }
    }
}

void pressTab(QWidget& window)
{
    QWidget* const target = window.focusWidget() ? window.focusWidget() : &window;
    QKeyEvent down{QEvent::KeyPress, Qt::Key_Tab, Qt::NoModifier, QStringLiteral("\t")};
    QKeyEvent up{QEvent::KeyRelease, Qt::Key_Tab, Qt::NoModifier, QStringLiteral("\t")};
    QApplication::sendEvent(target, &down);
    QApplication::sendEvent(target, &up);
}

bool isControl(const QWidget& widget)
{
    return qobject_cast<const QAbstractButton*>(&widget) || qobject_cast<const QComboBox*>(&widget) ||
           qobject_cast<const QLineEdit*>(&widget) || qobject_cast<const QAbstractSpinBox*>(&widget) ||
           qobject_cast<const QAbstractSlider*>(&widget) || qobject_cast<const QAbstractItemView*>(&widget) ||
           qobject_cast<const QTabBar*>(&widget) || (widget.focusPolicy() & Qt::TabFocus) != 0;
}

/// Of a choice between radio buttons, the keyboard stops at one; the arrows lead to the others.
bool isReachedThroughSibling(QWidget* widget, const std::set<const QWidget*>& reached)
{
    return roleOf(widget) == QAccessible::RadioButton && widget->parentWidget() &&
           std::ranges::any_of(widget->parentWidget()->findChildren<QWidget*>(), [&](QWidget* other) {
               return reached.contains(other) && roleOf(other) == QAccessible::RadioButton;
           });
}

/// Every text that a person sees in a widget, or that a screen reader says of it.
QStringList textsOf(QWidget& widget)
{
    QStringList texts{textOf(widget), widget.accessibleName(), widget.accessibleDescription(),
                      widget.toolTip(), widget.isWindow() ? widget.windowTitle() : QString{}};
    if (const auto* const edit = qobject_cast<QLineEdit*>(&widget))
        texts << edit->placeholderText();
    if (const auto* const combo = qobject_cast<QComboBox*>(&widget))
        for (int i = 0; i < combo->count(); ++i)
            texts << combo->itemText(i);
    if (const auto* const tabs = qobject_cast<QTabBar*>(&widget))
        for (int i = 0; i < tabs->count(); ++i)
            texts << tabs->tabText(i) << tabs->tabToolTip(i);
    const auto* const view = qobject_cast<QAbstractItemView*>(&widget);
    if (view && !qobject_cast<const QHeaderView*>(view) && view->model()) {
        const QAbstractItemModel& model = *view->model();
        for (int column = 0; column < model.columnCount(); ++column) {
            if (qobject_cast<const QTableView*>(view))
                texts << model.headerData(column, Qt::Horizontal).toString();
            for (int row = 0; row < std::min(model.rowCount(), entriesLookedAt); ++row)
                texts << model.index(row, column).data().toString();
        }
    }
    return texts;
}

/// What is left of a text when all that need not be translated is taken out of it.
QString untranslated(QString text, const QStringList& allowed)
{
    if (Qt::mightBeRichText(text))
        text = QTextDocumentFragment::fromHtml(text).toPlainText();
    QString rest;
    int depth = 0;
    for (const QChar c : std::as_const(text)) {
        depth += c == u'[' ? 1 : 0;
        if (depth == 0)
            rest += c;
        depth -= c == u']' && depth > 0 ? 1 : 0;
    }
    QStringList known = allowed;
    known << QStringLiteral("Tidewell") << QStringLiteral("mg/dL") << QStringLiteral("mmol/L");
    for (int day = 1; day <= 7; ++day)
        known << QLocale{}.dayName(day) << QLocale{}.dayName(day, QLocale::ShortFormat);
    for (int month = 1; month <= 12; ++month)
        known << QLocale{}.monthName(month) << QLocale{}.monthName(month, QLocale::ShortFormat);
    std::ranges::sort(known, std::greater{}, &QString::size);
    for (const QString& one : std::as_const(known))
        if (!one.isEmpty())
            rest.remove(one);
    static const QRegularExpression word{QStringLiteral("\\p{L}{2,}")};
    return word.match(rest).hasMatch() ? rest.trimmed() : QString{};
}

/// Another letter for each letter of the alphabet.
QChar accented(QChar letter)
{
    static const QString plain = QStringLiteral("ABCDEGHIJKLNOPRSTUWYZabcdeghijklnoprstuwyz");
    static const QString other = QStringLiteral("ÅßÇÐËĜĤĨĴĶĻÑÖÞŔŠŢÛŴÝŽåƀçðëĝĥĩĵķļñöþŕšţûŵýž");
    const auto at = plain.indexOf(letter);
    return at < 0 ? letter : other[at];
}

}  // namespace

void expectEveryControlNamed(QWidget& window)
{
    QAccessibleInterface* const tree = QAccessible::queryAccessibleInterface(&window);
    ASSERT_NE(tree, nullptr) << described(window);
    using enum QAccessible::Role;
    static const std::set<QAccessible::Role> windows{Window, Dialog, AlertMessage, PopupMenu};
    if (!windows.contains(tree->role()))
        ADD_FAILURE() << described(window) << " is no window to a screen reader";
    expectNamed(*tree, &window);
}

void expectUniqueMnemonics(QWidget& window)
{
    std::map<QString, const QWidget*> taken;
    for (const auto& [text, widget] : textsWithMnemonics(window)) {
        const QString key = QKeySequence::mnemonic(text).toString();
        if (!key.isEmpty()) {
            const auto [at, isFirst] = taken.emplace(key, widget);
            if (!isFirst)
                ADD_FAILURE() << described(*widget) << " and " << described(*at->second) << " share "
                              << key.toStdString();
            continue;
        }
        const auto* const button = qobject_cast<const QAbstractButton*>(widget);
        if (button ? !text.isEmpty() && !hasOtherKey(*button)
                   : qobject_cast<const QLabel*>(widget) != nullptr)
            ADD_FAILURE() << described(*widget) << " has no mnemonic";
    }
}

void expectNothingCut(QWidget& window)
{
    for (QWidget* const one : visibleWidgets(window)) {
        if (isPartOfAnother(*one))
            continue;
        if (const auto* const label = qobject_cast<QLabel*>(one))
            expectLabelWhole(*label);
        else if (const auto* const button = qobject_cast<QAbstractButton*>(one))
            expectButtonWhole(*button);
        else if (const auto* const combo = qobject_cast<QComboBox*>(one))
            expectComboWhole(*combo);
        else if (const auto* const spin = qobject_cast<QAbstractSpinBox*>(one))
            expectSpinBoxWhole(*spin);
        else if (const auto* const tabs = qobject_cast<QTabBar*>(one))
            expectTabsWhole(*tabs);
        else if (const auto* const list = qobject_cast<QListView*>(one))
            expectListWhole(*list);
        else if (const auto* const table = qobject_cast<QTableView*>(one))
            expectTableWhole(*table);
        else if (const auto* const box = qobject_cast<QGroupBox*>(one))
            expectRoom(*box, sizeOfText(*box, box->title()).width(), box->width(), box->title());
        else if (const auto* const edit = qobject_cast<QLineEdit*>(one); edit && edit->text().isEmpty())
            expectRoom(*edit, sizeOfText(*edit, edit->placeholderText()).width(), edit->width(),
                       edit->placeholderText());
        if (isControl(*one) || !textOf(*one).isEmpty())
            expectInsideAncestors(*one, window);
    }
}

namespace {

/// Of what has no room in the area, some is enough.
void expectScrolledIntoView(const QWidget& widget)
{
    for (const QWidget* above = widget.parentWidget(); above; above = above->parentWidget()) {
        const auto* const area = qobject_cast<const QScrollArea*>(above);
        if (!area || !area->widget() || !area->widget()->isAncestorOf(&widget))
            continue;
        const QRect shown = area->viewport()->rect();
        const QRect now{widget.mapTo(area->viewport(), QPoint{}), widget.size()};
        const bool fits = now.height() <= shown.height();
        if (!shown.intersects(now) || (fits && (now.top() < shown.top() || now.bottom() > shown.bottom())))
            ADD_FAILURE() << described(widget) << " has the focus and is scrolled out of sight";
    }
}

}  // namespace

void expectKeyboardReachesAll(QWidget& window)
{
    std::set<const QWidget*> reached;
    pressTab(window);
    const QWidget* const first = window.focusWidget();
    const QWidget* last = nullptr;
    for (const QWidget* now = first; now && reached.insert(now).second; now = window.focusWidget()) {
        last = now;
        expectScrolledIntoView(*now);
        // Fields for dates and times have parts, which come one after the other.
        const int presses = qobject_cast<const QDateTimeEdit*>(now) ? mostParts : 1;
        for (int i = 0; i < presses && window.focusWidget() == now; ++i)
            pressTab(window);
    }
    if (last && last != first && window.focusWidget() == last)
        ADD_FAILURE() << described(*last) << " keeps the focus";
    else if (first && window.focusWidget() != first)
        ADD_FAILURE() << "Tab comes back to " << described(*window.focusWidget()) << " and not to "
                      << described(*first);
    for (QWidget* const one : visibleWidgets(window)) {
        const QWidget* const target = one->focusProxy() ? one->focusProxy() : one;
        if (one->isEnabled() && isControl(*one) && !isPartOfAnother(*one) && !reached.contains(target) &&
            !isReachedThroughSibling(one, reached))
            ADD_FAILURE() << described(*one) << " cannot be reached by Tab";
    }
}

QString PseudoTranslator::translate(const char* context, const char* sourceText, const char*, int) const
{
    const QString source = QString::fromUtf8(sourceText);
    if (source.isEmpty() || std::string_view{context} == "QShortcut")
        return {};
    // What has to stay as it is: arguments, markup, entities of markup, and mnemonics.
    static const QRegularExpression rich{QStringLiteral("%L?\\d{1,2}|%n|<[^<>]*>|&\\w+;|&.")};
    static const QRegularExpression plain{QStringLiteral("%L?\\d{1,2}|%n|&.")};
    auto kept = (Qt::mightBeRichText(source) ? rich : plain).globalMatch(source);
    QString answer;
    qsizetype letters = 0;
    qsizetype at = 0;
    const auto change = [&](qsizetype end) {
        for (; at < end; ++at) {
            answer += accented(source[at]);
            letters += source[at].isLetter() ? 1 : 0;
        }
    };
    while (kept.hasNext()) {
        const auto one = kept.next();
        change(one.capturedStart());
        answer += one.captured();
        letters += one.captured().startsWith(u'&') ? 1 : 0;
        at = one.capturedEnd();
    }
    change(source.size());
    // Longer by 60 %, in words that can be wrapped.
    QString longer;
    for (qsizetype i = 0; i < letters * 6 / 10; ++i)
        longer += i % 7 == 0 ? QStringLiteral(" ~") : QStringLiteral("~");
    return u'[' + answer + longer + u']';
}

PseudoLanguage::PseudoLanguage() { QCoreApplication::installTranslator(&translator_); }
PseudoLanguage::~PseudoLanguage() { QCoreApplication::removeTranslator(&translator_); }

SpokenLanguage::SpokenLanguage(const QString& language) : translator_{programTranslator(language)}
{
    EXPECT_TRUE(translator_) << language.toStdString();
    QCoreApplication::installTranslator(this);
}

SpokenLanguage::~SpokenLanguage()
{
    QCoreApplication::removeTranslator(this);
    for (const std::string& text : missing_)
        ADD_FAILURE() << "no translation of " << text;
}

QString SpokenLanguage::translate(const char* context, const char* sourceText, const char* disambiguation,
                                  int n) const
{
    const QString answer =
        translator_ ? translator_->translate(context, sourceText, disambiguation, n) : QString{};
    // The toolkit's own texts have their own catalogue; but a class that lacks its macro asks as its base.
    const std::string_view asked{context};
    if (answer.isNull() && (!asked.starts_with('Q') || asked == "QWidget" || asked == "QObject"))
        missing_.insert(std::string{context} + ": " + sourceText);
    return answer;
}

std::string WindowLook::name() const
{
    const std::string spoken = language == Language::english  ? "english"
                               : language == Language::pseudo ? "pseudo"
                                                              : "german";
    return spoken + std::to_string(static_cast<int>(letters * 100)) + (isDark ? "dark" : "");
}

std::vector<WindowLook> windowLooks()
{
    using enum WindowLook::Language;
    std::vector<WindowLook> looks;
    for (const auto language : {english, pseudo, german})
        for (const double letters : {1.0, 2.0})
            looks.push_back({language, letters});
    looks.push_back({.isDark = true});
    return looks;
}

WindowLookScope::WindowLookScope(const WindowLook& look)
    : font_{QApplication::font()}, palette_{QApplication::palette()}
{
    if (look.language == WindowLook::Language::pseudo)
        pseudo_ = std::make_unique<PseudoLanguage>();
    else if (look.language == WindowLook::Language::german)
        spoken_ = std::make_unique<SpokenLanguage>(QStringLiteral("de"));
    QFont font = font_;
    font.setPointSizeF(font.pointSizeF() * look.letters);
    QApplication::setFont(font);
    if (look.isDark) {
        QPalette dark{QColor{49, 54, 59}};
        dark.setColor(QPalette::Base, QColor{35, 38, 41});
        QApplication::setPalette(dark);
    }
}

WindowLookScope::~WindowLookScope()
{
    QApplication::setFont(font_);
    QApplication::setPalette(palette_);
}

void expectAllTranslated(QWidget& window, const QStringList& allowed)
{
    for (QWidget* const one : visibleWidgets(window)) {
        if (isPartOfAnother(*one))
            continue;
        QStringList texts = textsOf(*one);
        texts.removeDuplicates();
        for (const QString& text : std::as_const(texts))
            if (const QString rest = untranslated(text, allowed); !rest.isEmpty())
                ADD_FAILURE() << described(*one) << " is not translated: '" << rest.toStdString() << "'";
    }
}

void saveScreenshot(QWidget& window, const QString& name)
{
    const QString folder = qEnvironmentVariable("TIDEWELL_SCREENSHOTS");
    if (folder.isEmpty())
        return;
    QDir{}.mkpath(folder);
    EXPECT_TRUE(window.grab().save(folder + u'/' + name + QStringLiteral(".png"))) << name.toStdString();
}

}  // namespace tidewell
