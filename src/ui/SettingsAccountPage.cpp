#include "ui/SettingsAccountPage.h"

#include <QGridLayout>
#include <QLabel>
#include <QPushButton>
#include <QVBoxLayout>

#include "polling/PollFailure.h"
#include "ui/AccountForm.h"
#include "ui/DisplayText.h"
#include "ui/PersonName.h"
#include "ui/WindowText.h"

namespace tidewell {

SettingsAccountPage::SettingsAccountPage(SettingsPageContext& context) : SettingsPage{context}
{
    QVBoxLayout* group = addGroup(tr("Glucose service"));
    nobody_ =
        copyableLabel(tr("Nobody is signed in, so there are no readings. “Sign in…” asks for the account "
                         "of your glucose service."),
                      this);
    nobody_->setObjectName(QStringLiteral("accountNone"));
    group->addWidget(nobody_);
    details_ = new QWidget{this};
    auto* grid = new QGridLayout{details_};
    grid->setContentsMargins({});
    grid->setColumnStretch(1, 1);
    service_ = addRow(*grid, "accountService", tr("Service:"));
    username_ = addRow(*grid, "accountUsername", tr("User name:"));
    region_ = addRow(*grid, "accountRegion", tr("Region:"));
    person_ = addRow(*grid, "accountPerson", tr("Person:"));
    password_ = addRow(*grid, "accountPassword", tr("Password:"));
    group->addWidget(details_);
    problem_ = new SettingsNotice{this};
    problem_->setObjectName(QStringLiteral("accountProblem"));
    group->addWidget(problem_);

    auto* row = new QHBoxLayout;
    signIn_ = addButton(*row, "signIn", {}, my().handlers.signIn);
    reconnect_ = addButton(*row, "reconnect", tr("&Reconnect"), my().handlers.reconnect);
    terms_ = addButton(*row, "accountTerms", tr("Show &terms…"), my().handlers.showTerms);
    signOut_ = addButton(*row, "signOut", tr("Sign &out…"), [this] { askToSignOut(); });
    row->addStretch();
    group->addLayout(row);
    message_ = new SettingsNotice{this};
    message_->setObjectName(QStringLiteral("accountMessage"));
    group->addWidget(message_);
    column().addStretch();
}

SettingsAccountPage::Row SettingsAccountPage::addRow(QGridLayout& grid, const char* name,
                                                     const QString& title)
{
    const Row row{new QLabel{title, details_}, copyableLabel({}, details_)};
    row.label->setTextFormat(Qt::PlainText);
    row.value->setObjectName(QString::fromLatin1(name));
    const int at = grid.rowCount();
    grid.addWidget(row.label, at, 0, Qt::AlignTop);
    grid.addWidget(row.value, at, 1);
    return row;
}

void SettingsAccountPage::presentRow(const Row& row, const QString& title, const QString& value)
{
    row.label->setText(title);
    if (row.value->text() != value)
        row.value->setText(value);
    row.value->setAccessibleName(title + u' ' + value);
    row.label->setVisible(!value.isEmpty());
    row.value->setVisible(!value.isEmpty());
}

/// Its lines, those that there are.
QString SettingsAccountPage::problemText() const
{
    const auto& problem = state().accountProblem;
    if (!problem)
        return {};
    QStringList lines;
    for (const std::string* line : {&problem->title, &problem->message})
        if (!line->empty())
            lines.append(displayText(*line));
    // The way that the core names leads through the menu.
    if (problem->needsTerms && state().account)
        lines.append(tr("Choose “Show terms…” below."));
    else if (problem->needsSetup && state().account)
        lines.append(tr("Choose “Finish setting up…” below."));
    else if (problem->remediation == signInRequiredStatus().remediation)
        lines.append(state().account ? tr("Choose “Sign in again…” below.") : tr("Choose “Sign in…” below."));
    else if (!problem->remediation.empty())
        lines.append(displayText(problem->remediation));
    return lines.join(u'\n');
}

QString SettingsAccountPage::passwordPlaceText() const
{
    const SettingsFacts& facts = context().facts;
    if (facts.isDemonstration)
        return tr("stored nowhere: this is a demonstration");
    return facts.secretsFile.isEmpty()
               ? tr("stored in your keyring")
               : tr("stored in the file %1. Whoever can read your files can read it too.")
                     .arg(facts.secretsFile);
}

void SettingsAccountPage::askToSignOut()
{
    if (question_ || !state().account)
        return;
    askedAbout_ = state().account;
    const bool hasHistory = mayHaveSavedReadings();
    QString consequences =
        tr("The account and its password are removed from this computer. No readings and no "
           "alerts come until somebody signs in again.");
    if (hasHistory)
        consequences +=
            QStringLiteral("\n\n") +
            tr("Saved readings stay on this computer, encrypted, and are there again after signing in with "
               "this account, unless you delete them here:");
    question_ = ask({.title = tr("Sign out"),
                     .question = tr("Sign out of %1?").arg(serviceTitle(state().account->provider)),
                     .consequences = consequences,
                     .action = tr("Sign &out"),
                     .choice = hasHistory ? tr("&Delete saved readings too") : QString{},
                     .about = window()},
                    [this](bool deletesHistory) {
                        if (my().handlers.signOut)
                            my().handlers.signOut(deletesHistory);
                    });
}

void SettingsAccountPage::present()
{
    const auto& account = state().account;
    if (question_ && askedAbout_ != account)
        question_->close();  // It was about another one.
    nobody_->setVisible(!account);
    details_->setVisible(account.has_value());
    if (account) {
        const bool follows = account->provider == GlucoseProvider::libreLinkUp;
        presentRow(service_, tr("Service:"), serviceTitle(account->provider));
        presentRow(username_, follows ? tr("E-mail:") : tr("User name:"),
                   QString::fromStdString(account->username));
        presentRow(region_, tr("Region:"), regionTitle(account->provider, account->region));
        QString person;
        if (follows)
            person = account->patientID
                         ? personName(account->patientName.value_or(std::string{}), *account->patientID)
                         : tr("Nobody is chosen yet");
        presentRow(person_, tr("Person:"), person);
        presentRow(password_, tr("Password:"),
                   state().hasPassword ? passwordPlaceText() : tr("Not there, or it cannot be read"));
    }
    const auto& problem = state().accountProblem;
    problem_->present(SettingsNotice::Weight::problem, problemText());

    const bool busy = state().isChangingAccount;
    const bool needsTerms = account && problem && problem->needsTerms;
    const bool needsSetup = account && problem && problem->needsSetup;
    const bool isAsked = account && state().hasPassword && !needsTerms && !needsSetup;
    signIn_->setText(signInTitle());
    setShown(*terms_, needsTerms, *signIn_);
    setShown(*reconnect_, isAsked, needsTerms ? *terms_ : *signIn_);
    setShown(*signOut_, account.has_value(), *signIn_);
    setUsable(*signIn_, !busy);
    setUsable(*reconnect_, isAsked && !busy && !state().isReconnecting);
    setUsable(*signOut_, !busy);
    presentMessage();
}

QString SettingsAccountPage::signInTitle() const
{
    const auto& problem = state().accountProblem;
    if (!state().account)
        return tr("&Sign in…");
    if (problem && problem->needsSetup)
        return tr("&Finish setting up…");
    return !state().hasPassword || (problem && problem->needsSignIn) ? tr("&Sign in again…")
                                                                     : tr("&Switch account…");
}

QString SettingsAccountPage::reconnectingText() { return tr("Trying again…"); }

void SettingsAccountPage::presentMessage()
{
    using enum SettingsNotice::Weight;
    if (state().isChangingAccount)
        message_->present(information, tr("Please wait: the account is being changed."));
    else if (state().isReconnecting)
        message_->present(information, reconnectingText());
    else
        message_->present(state().accountFailed ? problem : information, displayText(state().accountMessage));
}

}  // namespace tidewell
