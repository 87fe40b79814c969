#include "ui/SignInDialog.h"

#include <QApplication>
#include <QComboBox>
#include <QKeyEvent>
#include <QLabel>
#include <QLineEdit>
#include <QListWidget>
#include <QProgressBar>
#include <QPushButton>
#include <set>

#include "ui/WindowWalk.h"

namespace tidewell {
namespace {

const SignInProblem refusal{.title = "Sign in failed",
                            .message = "<b>Wrong</b> & refused",
                            .causes = {"The password was mistyped.", "The region is another one."},
                            .remedy = "Check the region."};

class SignInDialogTest : public testing::Test {
protected:
    SignInDialogTest()
    {
        dialog.onSubmit(
            [this](GlucoseAccountConfiguration account) { submitted.push_back(std::move(account)); });
        dialog.onChoose([this](LibreConnection person) { chosen.push_back(std::move(person)); });
        dialog.onBack([this] { ++wentBack; });
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
    QComboBox* combo(const QString& name)
    {
        for (QComboBox* one : dialog.findChildren<QComboBox*>()) {
            if (one->accessibleName() == name)
                return one;
        }
        throw std::logic_error{"no such choice"};
    }
    QListWidget* list() { return dialog.findChild<QListWidget*>(); }
    /// The choice of a person, as it is shown after a good sign-in.
    void choose(const std::vector<LibreConnection>& people, const std::optional<std::string>& before = {})
    {
        dialog.close();
        dialog.present({.provider = GlucoseProvider::libreLinkUp,
                        .username = "ada@example.org",
                        .password = SecretText{"x"},
                        .region = "de",
                        .patientID = before});
        dialog.showProgress();
        dialog.showPeople(people);
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
    std::vector<LibreConnection> chosen{};
    int wentBack = 0;
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

TEST_F(SignInDialogTest, everyServiceHasItsRegionsAndTexts)
{
    struct Case {
        GlucoseProvider provider;
        QString username;
        std::set<std::string> codes;
    };
    for (const Case& each :
         {Case{GlucoseProvider::dexcom, "User name", {"us", "ous", "jp"}},
          Case{GlucoseProvider::libreLinkUp,
               "E-mail",
               {"ae", "ap", "au", "ca", "cn", "de", "eu", "eu2", "fr", "jp", "la", "ru", "us"}}}) {
        combo("Glucose service")->setCurrentIndex(each.provider == GlucoseProvider::dexcom ? 0 : 1);
        edit(each.username)->setText("a");
        password()->setText("b");
        QComboBox* region = combo("Region of the account");
        EXPECT_GE(region->currentIndex(), 0);
        std::set<std::string> codes;
        std::set<QString> titles;
        for (int i = 0; i < region->count(); ++i) {
            region->setCurrentIndex(i);
            titles.insert(region->currentText());
            button("Sign in")->click();
            EXPECT_EQ(submitted.back().provider, each.provider);
            codes.insert(submitted.back().region);
        }
        EXPECT_EQ(codes, each.codes);
        EXPECT_EQ(titles.size(), codes.size());
    }
}

const std::vector<LibreConnection> three{
    {"id-ada", "Ada", "Muster"}, {"id-ben-1", "Ben"}, {"id-ben-2", "Ben"}};

TEST_F(SignInDialogTest, aPersonIsChosenByKeyboardAlone)
{
    choose(three);
    EXPECT_EQ(dialog.focusWidget(), list());
    EXPECT_FALSE(button("Follow")->isEnabled());
    press(Qt::Key_Return);
    EXPECT_TRUE(chosen.empty()) << "nobody is followed before the person wants it";
    EXPECT_EQ(list()->currentRow(), 0);
    EXPECT_TRUE(button("Follow")->isEnabled());
    press(Qt::Key_Down);
    press(Qt::Key_Return);
    ASSERT_EQ(chosen.size(), 1U);
    EXPECT_EQ(chosen[0], three[1]);

    dialog.showProgress();
    button("Follow")->click();
    EXPECT_EQ(chosen.size(), 1U);
    dialog.showProblem({.title = "Could not save the account", .message = "The disk is full."});
    EXPECT_TRUE(button("Follow")->isEnabled());

    button("Back")->click();
    EXPECT_EQ(wentBack, 1);
    EXPECT_FALSE(shows("The disk is full."));
    EXPECT_EQ(edit("E-mail")->text(), "ada@example.org");
    EXPECT_TRUE(button("Sign in")->isVisible());
}

TEST_F(SignInDialogTest, onlyWhoWasFollowedBeforeOrIsAloneIsMarked)
{
    const auto marked = [this] { return list()->selectedItems().isEmpty() ? -1 : list()->currentRow(); };
    choose(three, "id-ben-2");
    EXPECT_EQ(marked(), 2);
    choose(three, "id-of-somebody-else");
    EXPECT_EQ(marked(), -1);
    choose({three[0]});
    EXPECT_EQ(marked(), 0);
    EXPECT_TRUE(chosen.empty());
    choose({});
    EXPECT_FALSE(list()->isVisible());
    EXPECT_FALSE(button("Follow")->isVisible());
    dialog.showProblem({.title = "Nobody", .message = "No connections.", .remedy = "Be invited."});
    EXPECT_TRUE(shows("No connections."));
    EXPECT_EQ(dialog.focusWidget(), button("Back"));
    press(Qt::Key_Return);
    EXPECT_EQ(wentBack, 1);
}

TEST_F(SignInDialogTest, namesAreShownAsPlainTextOfOneLine)
{
    choose({{"id-ben-1", "Ben"},
            {"id-ben-2", "Ben"},
            {"8333-4444", ""},
            {"a", "<b>Eve</b>\n&amp;"},
            {"b", "\u202Eeve\u2069\x1B[31m"},
            {"c", std::string(10'000, 'w')}});
    std::vector<std::string> titles;
    for (int i = 0; i < list()->count(); ++i)
        titles.push_back(list()->item(i)->text().toStdString());
    EXPECT_EQ(titles, (std::vector<std::string>{"Ben (…en-1)", "Ben (…en-2)", "No name (…4444)",
                                                "<b>Eve</b> &amp;", "eve [31m", std::string(80, 'w') + "…"}));
    EXPECT_LT(dialog.width(), 700);
}

TEST_F(SignInDialogTest, theStoredPasswordServesItsOwnAccountOnly)
{
    dialog.close();
    dialog.present({.username = "ada", .password = SecretText{"never shown"}, .region = "us"});
    press(Qt::Key_Return);
    ASSERT_EQ(submitted.size(), 1U);
    EXPECT_TRUE(submitted[0].password.empty());
    username()->setText("ben");
    EXPECT_FALSE(button("Sign in")->isEnabled());
    username()->setText("ada");
    combo("Glucose service")->setCurrentIndex(1);
    EXPECT_FALSE(button("Sign in")->isEnabled());
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
    dialog.showProblem(refusal);
    EXPECT_TRUE(shows("Sign in failed"));
    EXPECT_TRUE(shows("<b>Wrong</b> & refused"));
    EXPECT_TRUE(shows("The region is another one."));
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

TEST_F(SignInDialogTest, canBeUsedInEveryStateSizeAndLanguage)
{
    for (const WindowLook& look : windowLooks()) {
        const WindowLookScope scope{look};
        const bool pseudo = look.language == WindowLook::Language::pseudo;
        SignInDialog shown;
        if (look.language == WindowLook::Language::english)
            EXPECT_EQ(shown.windowTitle(), u"Sign in to your glucose service");
        const auto walk = [&](const char* state, bool isOurs = true) {
            const QString name = QString{"sign-in-%1-%2"}.arg(state, QString::fromStdString(look.name()));
            const testing::ScopedTrace trace{__FILE__, __LINE__, name.toStdString()};
            QApplication::processEvents();
            saveScreenshot(shown, name);
            EXPECT_LE(shown.width(), 1024);
            expectEveryControlNamed(shown);
            expectUniqueMnemonics(shown);
            expectNothingCut(shown);
            expectKeyboardReachesAll(shown);
            if (pseudo && isOurs)
                expectAllTranslated(shown, {"ada@example.org", "Ada Muster", "Ben", "(…en-1)", "(…en-2)",
                                            "Dexcom Share", "LibreLinkUp"});
        };
        for (const GlucoseProvider provider : allGlucoseProviders) {
            shown.present({.provider = provider,
                           .username = "ada@example.org",
                           .password = SecretText{"x"},
                           .region = "us"});
            walk(provider == GlucoseProvider::dexcom ? "dexcom" : "libre");
            shown.showProgress();
            walk("busy");
            shown.showProblem(refusal);
            walk(provider == GlucoseProvider::dexcom ? "dexcom-problem" : "libre-problem", false);
            shown.showPeople(three);
            walk("people");
            shown.showPeople({});
            shown.showProblem(refusal);
            walk("nobody", false);
            shown.finish();
        }
    }
}

}  // namespace
}  // namespace tidewell
