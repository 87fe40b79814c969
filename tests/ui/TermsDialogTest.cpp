#include "ui/TermsDialog.h"

#include <gtest/gtest.h>
#include <QApplication>
#include <QKeyEvent>
#include <QLabel>
#include <QPushButton>
#include <QTextEdit>

#include "app/TermsAgreement.h"
#include "ui/WindowWalk.h"

namespace tidewell {
namespace {

using Purpose = TermsDialog::Purpose;

class TermsDialogTest : public testing::Test {
protected:
    TermsDialog& open(Purpose purpose)
    {
        dialog = std::make_unique<TermsDialog>(
            purpose,
            TermsDialog::Handlers{.accepted = [this] { ++accepted; }, .closed = [this] { ++closed; }});
        dialog->open();
        return *dialog;
    }
    void press(int key) const
    {
        QKeyEvent down{QEvent::KeyPress, key, Qt::NoModifier};
        QApplication::sendEvent(dialog->focusWidget() ? dialog->focusWidget() : dialog.get(), &down);
    }
    [[nodiscard]] QStringList buttons() const
    {
        QStringList texts;
        for (const QPushButton* one : dialog->findChildren<QPushButton*>())
            texts << one->text().remove(u'&');
        texts.sort();
        return texts;
    }

    std::unique_ptr<TermsDialog> dialog{};
    int accepted = 0;
    int closed = 0;
};

TEST_F(TermsDialogTest, isAnsweredByKeyboardAndEscapeIsNoAnswer)
{
    for (const Purpose purpose : {Purpose::accept, Purpose::acceptAgain, Purpose::acceptAnew}) {
        accepted = closed = 0;
        open(purpose);
        EXPECT_FALSE(dialog->isModal());
        press(Qt::Key_Escape);
        EXPECT_FALSE(dialog->isVisible());
        EXPECT_EQ(std::pair(accepted, closed), std::pair(0, 1));
        dialog->open();
        press(Qt::Key_Return);
        EXPECT_FALSE(dialog->isVisible());
        EXPECT_EQ(std::pair(accepted, closed), std::pair(1, 1));
    }
    open(Purpose::read);
    EXPECT_EQ(buttons(), QStringList{"Close"});
    press(Qt::Key_Return);
    EXPECT_EQ(std::pair(accepted, closed), std::pair(1, 2));
}

TEST_F(TermsDialogTest, holdsEverySectionAndItsVersion)
{
    open(Purpose::accept);
    const QString text = dialog->findChild<QTextEdit*>()->toPlainText();
    qsizetype at = 0;
    for (const auto& [title, paragraphs] : termsOfUse()) {
        for (const QString& part :
             QString::fromUtf8(paragraphs.data(), qsizetype(paragraphs.size()))
                 .prepend(QString::fromUtf8(title.data(), qsizetype(title.size())) + "\n\n")
                 .split("\n\n")) {
            at = text.indexOf(part, at);
            ASSERT_GE(at, 0) << part.toStdString();
        }
    }
    const auto labels = dialog->findChildren<QLabel*>();
    EXPECT_TRUE(std::ranges::any_of(labels, [](const QLabel* one) {
        return one->text() == "Version " + QString::fromUtf8(currentTermsVersion.data());
    }));
}

TEST_F(TermsDialogTest, canBeUsedInEveryPurposeAndLanguage)
{
    for (const Purpose purpose :
         {Purpose::accept, Purpose::acceptAgain, Purpose::acceptAnew, Purpose::read}) {
        const testing::ScopedTrace trace{__FILE__, __LINE__, std::to_string(int(purpose))};
        for (const WindowLook& look : windowLooks()) {
            const testing::ScopedTrace in{__FILE__, __LINE__, look.name()};
            const WindowLookScope scope{look};
            open(purpose);
            expectEveryControlNamed(*dialog);
            expectUniqueMnemonics(*dialog);
            expectNothingCut(*dialog);
            expectKeyboardReachesAll(*dialog);
            if (look.language == WindowLook::Language::pseudo)
                expectAllTranslated(*dialog);
            saveScreenshot(*dialog, QString{"terms-%1-%2"}.arg(int(purpose)).arg(look.name().c_str()));
            dialog.reset();
        }
    }
}

}  // namespace
}  // namespace tidewell
