#include "ui/SignInDialog.h"

#include <QApplication>
#include <QComboBox>
#include <QKeyEvent>
#include <QLabel>
#include <QLineEdit>
#include <QProgressBar>
#include <QPushButton>
#include <set>

namespace tidewell {
namespace {

class SignInDialogTest : public testing::Test {
protected:
    SignInDialogTest()
    {
        dialog.onSubmit(
            [this](GlucoseAccountConfiguration account) { submitted.push_back(std::move(account)); });
        dialog.onCancel([this] { ++cancelled; });
        dialog.present();
    }

    void press(int key, const QString& text = {})
    {
        QWidget* target = dialog.focusWidget() != nullptr ? dialog.focusWidget() : &dialog;
        QKeyEvent down{QEvent::KeyPress, key, Qt::NoModifier, text};
        QKeyEvent up{QEvent::KeyRelease, key, Qt::NoModifier, text};
        QApplication::sendEvent(target, &down);
        QApplication::sendEvent(target, &up);
    }

    void type(const QString& text)
    {
        for (const QChar c : text)
            press(0, QString{c});
    }

    QLineEdit* edit(const QString& name)
    {
        for (QLineEdit* one : dialog.findChildren<QLineEdit*>()) {
            if (one->accessibleName() == name)
                return one;
        }
        throw std::logic_error{"no such field"};
    }
    QLineEdit* username() { return edit(QStringLiteral("User name")); }
    QLineEdit* password() { return edit(QStringLiteral("Password")); }
    void fillIn(const QString& name, const QString& secret)
    {
        username()->setText(name);
        password()->setText(secret);
    }
    QPushButton* button(const QString& text)
    {
        for (QPushButton* one : dialog.findChildren<QPushButton*>()) {
            if (one->text().remove(u'&') == text)
                return one;
        }
        throw std::logic_error{"no such button"};
    }
    bool shows(const QString& text)
    {
        return std::ranges::any_of(dialog.findChildren<QLabel*>(), [&](const QLabel* one) {
            return one->isVisible() && one->text() == text;
        });
    }
    void nothingSecretIsLeft()
    {
        for (const QLineEdit* one : dialog.findChildren<QLineEdit*>()) {
            EXPECT_TRUE(one->text().isEmpty());
            EXPECT_FALSE(one->isUndoAvailable());
        }
    }

    SignInDialog dialog{};
    std::vector<GlucoseAccountConfiguration> submitted{};
    int cancelled = 0;
};

TEST_F(SignInDialogTest, isFilledInAndSubmittedByKeyboardAlone)
{
    EXPECT_FALSE(button("Sign in")->isEnabled());
    press(Qt::Key_Return);
    EXPECT_TRUE(submitted.empty());
    type("anna");
    press(Qt::Key_Tab);
    type(" pass word ");
    press(Qt::Key_Return);
    ASSERT_EQ(submitted.size(), 1U);
    EXPECT_EQ(submitted[0].username, "anna");
    EXPECT_EQ(submitted[0].password.reveal(), " pass word ");
    EXPECT_EQ(submitted[0].region, "us");
    EXPECT_EQ(submitted[0].provider, GlucoseProvider::dexcom);
}

TEST_F(SignInDialogTest, pastedBreaksAreDroppedButOuterSpacesBelongToThePassword)
{
    fillIn("\n  anna@example.org \r\n", "  s pä ce \n");
    press(Qt::Key_Return);
    ASSERT_EQ(submitted.size(), 1U);
    EXPECT_EQ(submitted[0].username, "anna@example.org");
    EXPECT_EQ(submitted[0].password.reveal(), "  s pä ce ");
    username()->setText(" \n ");
    EXPECT_FALSE(button("Sign in")->isEnabled());
}

TEST_F(SignInDialogTest, everyRegionHasItsCode)
{
    const auto combos = dialog.findChildren<QComboBox*>();
    const auto region = std::ranges::find_if(combos, [](const QComboBox* one) { return one->count() == 3; });
    ASSERT_NE(region, combos.end());
    std::vector<std::string> codes;
    for (int i = 0; i < 3; ++i) {
        (*region)->setCurrentIndex(i);
        fillIn("a", "b");
        button("Sign in")->click();
        codes.push_back(submitted.back().region);
    }
    EXPECT_EQ(codes, (std::vector<std::string>{"us", "ous", "jp"}));
}

TEST_F(SignInDialogTest, whileCheckingNothingCanBeSubmittedAndEscapeStillCancels)
{
    fillIn("anna", "secret");
    dialog.showProgress();
    press(Qt::Key_Return);
    button("Sign in")->click();
    EXPECT_TRUE(submitted.empty());
    EXPECT_FALSE(password()->isEnabled());
    EXPECT_TRUE(dialog.findChild<QProgressBar*>()->isVisible());
    press(Qt::Key_Escape);
    EXPECT_EQ(cancelled, 1);
    EXPECT_FALSE(dialog.isVisible());
    nothingSecretIsLeft();
}

TEST_F(SignInDialogTest, anErrorIsShownAsPlainTextAndTheNextAttemptTakesItAway)
{
    fillIn("anna", "secret");
    dialog.showProgress();
    dialog.showError("Sign in failed", "<b>Wrong</b> & refused", "Check the region.");
    EXPECT_TRUE(shows("Sign in failed"));
    EXPECT_TRUE(shows("<b>Wrong</b> & refused"));
    EXPECT_TRUE(shows("Check the region."));
    for (const QLabel* label : dialog.findChildren<QLabel*>())
        EXPECT_NE(label->textFormat(), Qt::RichText);
    EXPECT_EQ(username()->text(), "anna");
    EXPECT_EQ(dialog.focusWidget(), password());
    type("other");
    press(Qt::Key_Return);
    ASSERT_EQ(submitted.size(), 1U);
    EXPECT_EQ(submitted[0].password.reveal(), "other");
    EXPECT_FALSE(shows("Sign in failed"));
}

TEST_F(SignInDialogTest, closingLeavesNoSecretAndFinishingIsNoCancelling)
{
    fillIn("anna", "secret");
    dialog.finish();
    EXPECT_FALSE(dialog.isVisible());
    EXPECT_EQ(cancelled, 0);
    nothingSecretIsLeft();

    GlucoseAccountConfiguration account;
    account.username = "bert";
    account.password = SecretText{"never shown"};
    account.region = "jp";
    dialog.present(account);
    EXPECT_EQ(username()->text(), "bert");
    EXPECT_TRUE(password()->text().isEmpty());
    EXPECT_EQ(dialog.focusWidget(), password());
    dialog.close();
    EXPECT_EQ(cancelled, 1);
    nothingSecretIsLeft();
}

TEST_F(SignInDialogTest, everyControlHasANameAndAMnemonicOfItsOwn)
{
    std::set<QChar> mnemonics;
    const auto take = [&](const QString& text) {
        const auto mark = text.indexOf(u'&');
        if (mark >= 0)
            EXPECT_TRUE(mnemonics.insert(text[mark + 1].toLower()).second) << text.toStdString();
        return mark >= 0;
    };
    std::set<const QWidget*> buddies;
    for (const QLabel* label : dialog.findChildren<QLabel*>()) {
        if (label->buddy() != nullptr && take(label->text()))
            buddies.insert(label->buddy());
    }
    for (const QAbstractButton* one : dialog.findChildren<QAbstractButton*>())
        EXPECT_TRUE(take(one->text()));
    for (const QWidget* field : dialog.findChildren<QWidget*>()) {
        if (qobject_cast<const QComboBox*>(field) == nullptr &&
            (qobject_cast<const QLineEdit*>(field) == nullptr ||
             qobject_cast<const QComboBox*>(field->parent()) != nullptr))
            continue;
        EXPECT_TRUE(buddies.contains(field));
        EXPECT_FALSE(field->accessibleName().isEmpty());
    }
}

}  // namespace
}  // namespace tidewell
