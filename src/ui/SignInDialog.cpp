#include "ui/SignInDialog.h"

#include <QLabel>
#include <QProgressBar>
#include <QPushButton>
#include <QScreen>
#include <QScrollBar>
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
    QWidget* content = nullptr;
    QScrollArea* scroll = nullptr;
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
        refit();
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

    /// Gives the window the size of what it shows now, from its top.
    void refit() const
    {
        content->layout()->activate();
        scroll->updateGeometry();
        scroll->window()->layout()->activate();
        scroll->verticalScrollBar()->setValue(0);
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
    setWindowTitle(tr("Sign in to your glucose service"));
    setModal(false);
    auto* const content = my.content = new QWidget{this};
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
    auto* const scroll = my.scroll = new GrowingScrollArea{this};
    scroll->setWidget(content);
    my.progress = new QProgressBar{this};
    my.progress->setRange(0, 0);
    my.progress->setTextVisible(false);
    my.progress->setAccessibleName(tr("Checking the account"));
    my.progressText = wrappedLabel({}, this);

    // A button box would cut the Tab key's way from the fields to its buttons while the account is hidden.
    auto* const buttons = new QHBoxLayout;
    buttons->addStretch(1);
    const auto addButton = [this, buttons](const QString& title) {
        auto* const button = new QPushButton{title, this};
        buttons->addWidget(button);
        return button;
    };
    my.signIn = addButton(tr("&Sign in"));
    my.follow = addButton(tr("&Follow"));
    my.goBack = addButton(tr("&Back"));
    QPushButton* const cancel = addButton(tr("&Cancel"));
    cancel->setAutoDefault(false);

    auto* layout = new QVBoxLayout{this};
    layout->setSizeConstraint(QLayout::SetFixedSize);  // Grows and shrinks with what is shown.
    layout->addWidget(scroll);
    layout->addWidget(my.progressText);
    layout->addWidget(my.progress);
    layout->addLayout(buttons);

    my.account->onEdited([this] { impl_->updateButtons(); });
    my.people->onChosen([this] { impl_->updateButtons(); });
    connect(my.goBack, &QPushButton::clicked, this, [this] {
        impl_->showPage(false);
        impl_->account->focusMissing();
        if (impl_->back)
            impl_->back();
    });
    connect(cancel, &QPushButton::clicked, this, &QDialog::reject);
    for (QPushButton* button : {my.signIn, my.follow})
        connect(button, &QPushButton::clicked, this, [this] { impl_->accepted(); });
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
    impl_->refit();
}

void SignInDialog::showProblem(const SignInProblem& problem)
{
    impl_->setChecking(false);
    impl_->problem->present(problem);
    impl_->refit();
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
