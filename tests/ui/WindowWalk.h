#pragma once

#include <QFont>
#include <QPalette>
#include <QString>
#include <QTranslator>
#include <QWidget>
#include <memory>
#include <set>
#include <string>
#include <vector>

namespace tidewell {

// What every window has to keep, checked over its whole tree. Each failure names the widget.

/// Every control in the accessibility tree below `window` that can be seen has a role and a name, and every
/// picture a text. The window itself is a window, a dialog or a menu.
void expectEveryControlNamed(QWidget& window);
/// No two visible controls of a window, or of one page of it, share a mnemonic; every button and labelled
/// field of `window` has one unless its key is a standard one (Enter, Escape).
void expectUniqueMnemonics(QWidget& window);
/// With the layout as it stands, no visible text is cut: labels, buttons, check boxes, tabs, combo boxes, and
/// list entries have the room that their text needs, or scroll.
void expectNothingCut(QWidget& window);
/// Every visible control can be reached by Tab from the first one, and is then in sight; the order comes back
/// to the first one.
void expectKeyboardReachesAll(QWidget& window);

/// Answers every text with a longer one of accented letters in brackets: "[Šëţţĩñĝš ~~~~]". What shows up
/// without brackets was not translated. Keeps mnemonics, arguments (%1, %n), line breaks and markup.
class PseudoTranslator final : public QTranslator {
public:
    using QTranslator::QTranslator;
    [[nodiscard]] bool isEmpty() const override { return false; }
    [[nodiscard]] QString translate(const char* context, const char* sourceText, const char* disambiguation,
                                    int n) const override;
};

/// While it lives, every text that is made is pseudo-translated.
class PseudoLanguage {
public:
    PseudoLanguage();
    ~PseudoLanguage();
    PseudoLanguage(const PseudoLanguage&) = delete;
    PseudoLanguage& operator=(const PseudoLanguage&) = delete;

private:
    PseudoTranslator translator_;
};

/// While it lives, the program speaks one of its languages. Fails at the end for each text that was asked for
/// and that the language lacks, for instance because it is marked for another context.
class SpokenLanguage final : public QTranslator {
public:
    explicit SpokenLanguage(const QString& language);
    ~SpokenLanguage() override;
    SpokenLanguage(const SpokenLanguage&) = delete;
    SpokenLanguage& operator=(const SpokenLanguage&) = delete;
    [[nodiscard]] bool isEmpty() const override { return false; }
    [[nodiscard]] QString translate(const char* context, const char* sourceText, const char* disambiguation,
                                    int n) const override;

private:
    std::unique_ptr<QTranslator> translator_;
    mutable std::set<std::string> missing_;
};

/// How a window is made to look while it is walked.
struct WindowLook {
    enum class Language { english, pseudo, german };
    Language language = Language::english;
    double letters = 1;  ///< Times their usual size.
    bool isDark = false;
    [[nodiscard]] std::string name() const;
};

/// Every language with letters of the usual size and of twice that, and a dark theme once.
[[nodiscard]] std::vector<WindowLook> windowLooks();

/// While it lives, windows are made with that look.
class WindowLookScope {
public:
    explicit WindowLookScope(const WindowLook& look);
    ~WindowLookScope();
    WindowLookScope(const WindowLookScope&) = delete;
    WindowLookScope& operator=(const WindowLookScope&) = delete;

private:
    const QFont font_;
    const QPalette palette_;
    std::unique_ptr<PseudoLanguage> pseudo_;
    std::unique_ptr<SpokenLanguage> spoken_;
};

/// Names the visible texts below `window` that the pseudo-language did not reach, but for numbers, user data
/// and those in `allowed`.
void expectAllTranslated(QWidget& window, const QStringList& allowed = {});

/// Saves a picture of `window` as PNG in the folder that TIDEWELL_SCREENSHOTS names; nothing without it.
void saveScreenshot(QWidget& window, const QString& name);

}  // namespace tidewell
