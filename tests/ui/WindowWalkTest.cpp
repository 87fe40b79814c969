#include "ui/WindowWalk.h"

#include <gtest/gtest-spi.h>
#include <gtest/gtest.h>
#include <QCheckBox>
#include <QComboBox>
#include <QCoreApplication>
#include <QDialogButtonBox>
#include <QGroupBox>
#include <QLabel>
#include <QLineEdit>
#include <QListWidget>
#include <QPlainTextEdit>
#include <QPushButton>
#include <QRadioButton>
#include <QScrollArea>
#include <QSpinBox>
#include <QTabWidget>
#include <QTableWidget>
#include <QTimeEdit>
#include <QVBoxLayout>
#include <functional>
#include <source_location>

namespace tidewell {
namespace {

using Check = void (*)(QWidget&);

/// A window with a name, shown; what is added to it lies in one column.
struct Window {
    Window()
    {
        widget.setWindowTitle(QStringLiteral("A window"));
        widget.resize(400, 300);
    }
    template <class Added>
    Added& add(Added* added)
    {
        column.addWidget(added);
        return *added;
    }
    void shown() { widget.show(); }

    QWidget widget;
    QVBoxLayout& column = *new QVBoxLayout{&widget};
};

/// Only this check objects to the window, once, and says so with these words.
void expectObjection(Check check, const std::string& words, const std::function<void(Window&)>& fill,
                     std::source_location at = std::source_location::current())
{
    const testing::ScopedTrace trace{at.file_name(), static_cast<int>(at.line()), "called"};
    Window window;
    fill(window);
    window.shown();
    EXPECT_NONFATAL_FAILURE(check(window.widget), words);
}

/// A window of every usual control, as it has to be.
void fillWell(Window& window)
{
    auto& label = window.add(new QLabel{QStringLiteral("&Name:")});
    auto& edit = window.add(new QLineEdit);
    label.setBuddy(&edit);
    auto& choice = window.add(new QComboBox);
    choice.addItems({QStringLiteral("One"), QStringLiteral("Another")});
    choice.setAccessibleName(QStringLiteral("Choice"));
    window.add(new QSpinBox).setAccessibleName(QStringLiteral("Number"));
    window.add(new QTimeEdit).setAccessibleName(QStringLiteral("Time"));
    window.add(new QLabel{QStringLiteral("To be copied")})
        .setTextInteractionFlags(Qt::TextSelectableByMouse | Qt::TextSelectableByKeyboard);
    window.add(new QCheckBox{QStringLiteral("&Check")});
    window.add(new QRadioButton{QStringLiteral("&This")}).setChecked(true);
    window.add(new QRadioButton{QStringLiteral("T&hat")});
    auto& list = window.add(new QListWidget);
    list.addItem(QStringLiteral("Entry"));
    list.setAccessibleName(QStringLiteral("List"));
    auto& table = window.add(new QTableWidget{1, 1});
    table.setHorizontalHeaderLabels({QStringLiteral("Day")});
    table.setAccessibleName(QStringLiteral("Table"));
    table.setTabKeyNavigation(false);
    auto& area = window.add(new QScrollArea);
    area.setFocusPolicy(Qt::NoFocus);
    area.setWidget(new QLabel{QString(4000, u'x')});
    auto& tabs = window.add(new QTabWidget);
    tabs.setAccessibleName(QStringLiteral("Tabs"));
    tabs.addTab(new QLabel{QStringLiteral("Text")}, QStringLiteral("&First"));
    window.add(new QDialogButtonBox{QDialogButtonBox::Cancel});
    window.widget.resize(500, 900);
}

TEST(WindowWalk, hasNothingAgainstAGoodWindow)
{
    Window window;
    fillWell(window);
    window.shown();
    for (const Check check :
         {&expectEveryControlNamed, &expectUniqueMnemonics, &expectNothingCut, &expectKeyboardReachesAll})
        check(window.widget);
}

TEST(WindowWalk, findsWhatIsNoWindowToAScreenReader)
{
    QGroupBox box;
    box.setTitle(QStringLiteral("A window"));
    box.setWindowTitle(QStringLiteral("A window"));
    box.show();
    EXPECT_NONFATAL_FAILURE(expectEveryControlNamed(box), "is no window to a screen reader");
}

TEST(WindowWalk, findsWhatAScreenReaderCannotName)
{
    const auto expectNameless = [](const std::string& words, const std::function<void(Window&)>& fill) {
        expectObjection(&expectEveryControlNamed, words, fill);
    };
    expectNameless("QWidget has no name", [](Window& w) { w.widget.setWindowTitle({}); });
    expectNameless("QPushButton has no name", [](Window& w) { w.add(new QPushButton); });
    expectNameless("QLineEdit has no name", [](Window& w) { w.add(new QLineEdit); });
    expectNameless("QComboBox has no name", [](Window& w) { w.add(new QComboBox); });
    expectNameless("QListWidget has no name", [](Window& w) { w.add(new QListWidget); });
    expectNameless("QLabel has no name", [](Window& w) {
        QPixmap picture{4, 4};
        picture.fill(Qt::red);
        w.add(new QLabel).setPixmap(picture);
    });
    expectNameless("QWidget 'Drawn' has no role", [](Window& w) {
        auto& drawn = w.add(new QWidget);
        drawn.setAccessibleName(QStringLiteral("Drawn"));
        drawn.setFocusPolicy(Qt::StrongFocus);
    });
    expectNameless("QPushButton has no name", [](Window& w) {
        auto& area = w.add(new QScrollArea);
        area.setAccessibleName(QStringLiteral("Area"));
        area.setWidget(new QPushButton);
    });
}

TEST(WindowWalk, findsMnemonicsThatAreSharedOrMissing)
{
    expectObjection(&expectUniqueMnemonics, "share Alt+S", [](Window& w) {
        w.add(new QPushButton{QStringLiteral("&Save")});
        w.add(new QCheckBox{QStringLiteral("&Snooze")});
    });
    expectObjection(&expectUniqueMnemonics, "share Alt+N", [](Window& w) {
        auto& edit = w.add(new QLineEdit);
        w.add(new QLabel{QStringLiteral("&Name")}).setBuddy(&edit);
        w.add(new QTabWidget).addTab(new QWidget, QStringLiteral("&News"));
    });
    expectObjection(&expectUniqueMnemonics, "has no mnemonic",
                    [](Window& w) { w.add(new QPushButton{QStringLiteral("Save")}); });
    expectObjection(&expectUniqueMnemonics, "has no mnemonic", [](Window& w) {
        auto& edit = w.add(new QLineEdit);
        w.add(new QLabel{QStringLiteral("Name")}).setBuddy(&edit);
    });
}

TEST(WindowWalk, findsWhatIsCut)
{
    const auto expectCut = [](const std::function<void(Window&)>& fill) {
        expectObjection(&expectNothingCut, "is cut", fill);
    };
    const QString text = QStringLiteral("Much more than there is room for");
    expectCut([&](Window& w) { w.add(new QLabel{text}).setFixedWidth(40); });
    expectCut([&](Window& w) {
        auto& label = w.add(new QLabel{text});
        label.setWordWrap(true);
        label.setFixedSize(90, 16);
    });
    expectCut([&](Window& w) { w.add(new QPushButton{text}).setFixedWidth(60); });
    expectCut([&](Window& w) { w.add(new QCheckBox{text}).setFixedWidth(60); });
    expectCut([&](Window& w) {
        auto& box = w.add(new QComboBox);
        box.addItems({QStringLiteral("a"), text});
        box.setFixedWidth(60);
    });
    expectCut([&](Window& w) {
        auto& box = w.add(new QSpinBox);
        box.setSuffix(text);
        box.setFixedWidth(60);
    });
    expectCut([&](Window& w) {
        auto& list = w.add(new QListWidget);
        list.addItem(text);
        list.setHorizontalScrollBarPolicy(Qt::ScrollBarAlwaysOff);
        list.setFixedWidth(60);
    });
    expectCut([&](Window& w) {
        auto& table = w.add(new QTableWidget{1, 1});
        table.setHorizontalHeaderLabels({text});
        table.setColumnWidth(0, 40);
    });
    expectObjection(&expectNothingCut, "sticks out", [&](Window& w) {
        auto& box = w.add(new QWidget);
        box.setFixedSize(40, 40);
        (new QLabel{text, &box})->resize(400, 30);
    });
}

TEST(WindowWalk, findsWhatTheKeyboardCannotReach)
{
    expectObjection(&expectKeyboardReachesAll, "'Two' cannot be reached", [](Window& w) {
        w.add(new QPushButton{QStringLiteral("One")});
        w.add(new QPushButton{QStringLiteral("Two")}).setFocusPolicy(Qt::ClickFocus);
    });
    Window window;
    window.add(new QPlainTextEdit);
    window.add(new QPushButton{QStringLiteral("Never")});
    window.shown();
    testing::TestPartResultArray found;
    {
        const testing::ScopedFakeTestPartResultReporter reporter{
            testing::ScopedFakeTestPartResultReporter::INTERCEPT_ONLY_CURRENT_THREAD, &found};
        expectKeyboardReachesAll(window.widget);
    }
    EXPECT_GT(found.size(), 0) << "a field that swallows Tab";
}

TEST(WindowWalk, pseudoLanguageKeepsWhatAProgramFillsIn)
{
    const PseudoTranslator translator;
    const auto answer = [&](const char* source) {
        return translator.translate("Any", source, nullptr, -1).toStdString();
    };
    EXPECT_EQ(answer("Settings"), "[Šëţţĩñĝš ~~~~]");
    EXPECT_EQ(answer("&Save %1 of %L2…"), "[&Såvë %1 öf %L2… ~~~]");
    EXPECT_EQ(answer("<b>Low</b> &amp; high"), "[<b>Ļöŵ</b> &amp; ĥĩĝĥ ~~~~]");
    EXPECT_EQ(answer("A\nB"), "[Å\nß ~]");
    EXPECT_EQ(answer(""), "");
}

TEST(WindowWalk, findsWhatIsNotTranslated)
{
    const auto untranslated = [](QWidget& window) { expectAllTranslated(window, {QStringLiteral("Ada")}); };
    const auto fillTranslated = [](Window& w) {
        const PseudoLanguage language;
        w.widget.setWindowTitle(QCoreApplication::translate("Any", "A window"));
        for (const char* const text : {"120", "Ada", "7:30", "Tidewell"})
            w.add(new QLabel{QString::fromLatin1(text)});
        w.add(new QLabel{QCoreApplication::translate("Any", "Readings of %1").arg(QStringLiteral("Bob"))});
    };
    {
        Window window;
        fillTranslated(window);
        window.shown();
        untranslated(window.widget);
    }
    for (const auto& [words, fill] : std::vector<std::pair<std::string, std::function<void(Window&)>>>{
             {"'Save'", [](Window& w) { w.add(new QPushButton{QStringLiteral("Save")}); }},
             {"'and more'", [](Window& w) { w.add(new QLabel{QStringLiteral("[Ļöŵ ~] and more")}); }},
             {"'Type here'", [](Window& w) { w.add(new QLineEdit).setPlaceholderText("Type here"); }},
             {"'Second'", [](Window& w) { w.add(new QComboBox).addItem(QStringLiteral("Second")); }},
             {"'Tip'", [](Window& w) { w.add(new QLabel{QStringLiteral("7")}).setToolTip("Tip"); }}})
        expectObjection(untranslated, words, [&](Window& w) {
            fillTranslated(w);
            fill(w);
        });
}

}  // namespace
}  // namespace tidewell
