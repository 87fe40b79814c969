#include "ui/SignInDialog.h"

#include <QDialogButtonBox>
#include <QLabel>
#include <QProgressBar>
#include <QPushButton>
#include <QScreen>
#include <QVBoxLayout>
#include <algorithm>
#include <utility>

#include "ui/AccountForm.h"
#include "ui/PeopleForm.h"
#include "ui/ProblemPanel.h"
#include "ui/WindowText.h"

namespace tidewell {
namespace {

constexpr int lineLetters = 60;

}  // namespace

struct SignInDialog::Impl {
    Submit submit{};
    Choose choose{};
    std::function<void()> back{};
    std::function<void()> cancel{};

    AccountForm* account = nullptr;
    PeopleForm* people = nullptr;
    ProblemPanel* problem = nullptr;
    QProgressBar* progress = nullptr;
    QLabel* progressText = nullptr;
    QPushButton* signIn = nullptr;
    QPushButton* follow = nullptr;
    QPushButton* goBack = nullptr;

    std::optional<std::string> followed{};  ///< The person of the account that was presented.
    bool nobody = false;                    ///< The choice is between no people at all.
    bool checking = false;
    bool finished = false;

    [[nodiscard]] bool choosing() const { return !people->isHidden(); }

    /// The page with the account, or the one with the people.
    void showPage(bool withPeople)
    {
        account->setVisible(!withPeople);
        people->setVisible(withPeople);
        signIn->setVisible(!withPeople);
        follow->setVisible(withPeople && !nobody);
        goBack->setVisible(withPeople);
        // The one that the Enter key presses from anywhere.
        (withPeople ? nobody ? goBack : follow : signIn)->setDefault(true);
        progressText->setText(withPeople ? tr("Saving the choice…") : tr("Checking the account…"));
        problem->present({});
        setChecking(false);
    }

    void setChecking(bool on)
    {
        checking = on;
        account->setLocked(on);
        people->setLocked(on);
        goBack->setEnabled(!on);
        progress->setVisible(on);
        progressText->setVisible(on);
        updateButtons();
    }

    void updateButtons() const
    {
        signIn->setEnabled(!checking && account->isComplete());
        follow->setEnabled(!checking && people->chosen());
    }

    void clearFields()
    {
        account->clear();
        people->clear();
        followed.reset();
    }

    void accepted()
    {
        if (checking)
            return;
        if (choosing()) {
            if (!people->chosen())
                return;
            const LibreConnection person = *people->chosen();
            problem->present({});
            if (choose)
                choose(person);
            return;
        }
        problem->present({});
        if (submit)
            submit(account->account());
    }
};

SignInDialog::SignInDialog(QWidget* parent) : QDialog{parent}, impl_{std::make_unique<Impl>()}
{
    Impl& my = *impl_;
    setWindowTitle(tr("Sign in to Tidewell"));
    setModal(false);
    auto* const content = new QWidget{this};
    const int line = lineLetters * fontMetrics().averageCharWidth();
    content->setMinimumWidth(screen() ? std::min(line, screen()->availableSize().width() * 3 / 4) : line);
    my.problem = new ProblemPanel{content};
    my.account = new AccountForm{content};
    my.people = new PeopleForm{content};
    auto* const column = new QVBoxLayout{content};
    column->setContentsMargins({});
    column->addWidget(my.problem);
    column->addWidget(my.account);
    column->addWidget(my.people);
    column->addStretch();
    auto* const scroll = new GrowingScrollArea{this};
    scroll->setWidget(content);
    my.progress = new QProgressBar{this};
    my.progress->setRange(0, 0);
    my.progress->setTextVisible(false);
    my.progress->setAccessibleName(tr("Checking the account"));
    my.progressText = wrappedLabel({}, this);

    auto* buttons = new QDialogButtonBox{this};
    my.signIn = buttons->addButton(tr("&Sign in"), QDialogButtonBox::AcceptRole);
    my.follow = buttons->addButton(tr("&Follow"), QDialogButtonBox::AcceptRole);
    my.goBack = buttons->addButton(tr("&Back"), QDialogButtonBox::ActionRole);
    QPushButton* cancel = buttons->addButton(tr("&Cancel"), QDialogButtonBox::RejectRole);
    cancel->setAutoDefault(false);

    auto* layout = new QVBoxLayout{this};
    layout->setSizeConstraint(QLayout::SetFixedSize);  // Grows and shrinks with what is shown.
    layout->addWidget(scroll);
    layout->addWidget(my.progressText);
    layout->addWidget(my.progress);
    layout->addWidget(buttons);

    my.account->onEdited([this] { impl_->updateButtons(); });
    my.people->onChosen([this] { impl_->updateButtons(); });
    connect(my.goBack, &QPushButton::clicked, this, [this] {
        impl_->showPage(false);
        impl_->account->focusMissing();
        if (impl_->back)
            impl_->back();
    });
    connect(buttons, &QDialogButtonBox::rejected, this, &QDialog::reject);
    connect(buttons, &QDialogButtonBox::accepted, this, [this] { impl_->accepted(); });
    my.showPage(false);
}

SignInDialog::~SignInDialog() = default;

void SignInDialog::onSubmit(Submit handler) { impl_->submit = std::move(handler); }

void SignInDialog::onChoose(Choose handler) { impl_->choose = std::move(handler); }

void SignInDialog::onBack(std::function<void()> handler) { impl_->back = std::move(handler); }

void SignInDialog::onCancel(std::function<void()> handler) { impl_->cancel = std::move(handler); }

void SignInDialog::present(const GlucoseAccountConfiguration& account)
{
    if (!isVisible()) {
        impl_->finished = false;
        impl_->followed = account.patientID;
        impl_->account->fill(account, !account.password.empty());
        impl_->showPage(false);
        impl_->account->focusMissing();
    }
    show();
    raise();
    activateWindow();
}

void SignInDialog::showProgress()
{
    impl_->problem->present({});
    impl_->setChecking(true);
}

void SignInDialog::showProblem(const SignInProblem& problem)
{
    impl_->setChecking(false);
    impl_->problem->present(problem);
    if (!impl_->choosing())
        impl_->account->focusPassword();
    else if (impl_->nobody)
        impl_->goBack->setFocus();
    else
        impl_->people->focusList();
}

void SignInDialog::showPeople(const std::vector<LibreConnection>& people)
{
    impl_->nobody = people.empty();
    impl_->people->setPeople(people, people.size() == 1 ? people.front().patientId : impl_->followed,
                             QString::fromStdString(impl_->account->account().username));
    impl_->showPage(true);
    if (people.empty())
        impl_->goBack->setFocus();
    else
        impl_->people->focusList();
}

void SignInDialog::finish()
{
    impl_->finished = true;
    accept();
}

void SignInDialog::done(int result)
{
    impl_->clearFields();
    impl_->showPage(false);
    QDialog::done(result);
    if (!std::exchange(impl_->finished, false) && impl_->cancel)
        impl_->cancel();
}

}  // namespace tidewell
