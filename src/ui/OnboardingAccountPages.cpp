#include <QCoreApplication>
#include <QHBoxLayout>
#include <QPushButton>
#include <QVBoxLayout>
#include <algorithm>
#include <optional>
#include <utility>

#include "ui/AccountForm.h"
#include "ui/DisplayText.h"
#include "ui/OnboardingPage.h"
#include "ui/PeopleForm.h"
#include "ui/PersonName.h"
#include "ui/WindowText.h"

namespace tidewell {
namespace {

bool isSameAccount(const GlucoseAccountConfiguration& a, const GlucoseAccountConfiguration& b)
{
    return a.provider == b.provider && a.username == b.username && a.region == b.region;
}

class AccountPage final : public OnboardingPage {
    Q_DECLARE_TR_FUNCTIONS(AccountPage)
public:
    AccountPage(const Handlers& handlers, QWidget* parent) : OnboardingPage{handlers, parent}
    {
        form_ = new AccountForm{this};
        auto* const layout = new QVBoxLayout{this};
        layout->setContentsMargins({});
        layout->addWidget(form_);
        layout->addStretch(1);
        form_->onEdited([this] {
            GlucoseAccountConfiguration account = form_->account();
            told_ = account;
            told_->password = {};
            call(this->handlers().accountEntered, std::move(account));
        });
    }
    QString heading(const OnboardingState&) const override { return tr("Sign in"); }
    void present(const OnboardingState& state, bool entered) override
    {
        if (entered || !told_ || !isSameAccount(*told_, state.account))
            fill(state);
        form_->setLocked(state.isBusy);
        form_->setIntroduced(!state.problem);
    }
    bool focusFirst() override
    {
        form_->focusMissing();
        return true;
    }
    bool focusProblem() override
    {
        form_->focusPassword();
        return true;
    }
    void leave(const OnboardingState& state) override { fill(state); }
    void clear() override
    {
        told_.reset();
        form_->clear();
    }

private:
    void fill(const OnboardingState& state)
    {
        told_ = state.account;
        form_->fill(state.account, state.hasPassword);
    }

    AccountForm* form_ = nullptr;
    /// What the fields were filled with, or what was last said of them; without its password.
    std::optional<GlucoseAccountConfiguration> told_{};
};

class PersonPage final : public OnboardingPage {
    Q_DECLARE_TR_FUNCTIONS(PersonPage)
public:
    PersonPage(const Handlers& handlers, QWidget* parent) : OnboardingPage{handlers, parent}
    {
        form_ = new PeopleForm{this};
        again_ = new QPushButton{tr("Check &again"), this};
        auto* const layout = new QVBoxLayout{this};
        layout->setContentsMargins({});
        layout->addWidget(form_);
        layout->addWidget(again_, 0, Qt::AlignLeft);
        layout->addStretch(1);
        connect(again_, &QPushButton::clicked, this, [this] { call(this->handlers().tryAgain); });
        form_->onChosen([this] {
            if (const LibreConnection* const person = form_->chosen())
                call(this->handlers().personChosen, std::string{person->patientId});
        });
    }
    QString heading(const OnboardingState&) const override { return tr("Who is it about?"); }
    void present(const OnboardingState& state, bool) override
    {
        form_->setPeople(state.people, state.patientID, QString::fromStdString(state.account.username));
        form_->setLocked(state.isBusy);
        again_->setVisible(state.people.empty() && !state.isBusy);
    }
    bool focusFirst() override
    {
        if (again_->isHidden())
            form_->focusList();
        else
            again_->setFocus();
        return true;
    }
    bool focusProblem() override { return focusFirst(); }
    void clear() override { form_->clear(); }

private:
    PeopleForm* form_ = nullptr;
    QPushButton* again_ = nullptr;
};

class FirstReadingPage final : public OnboardingPage {
    Q_DECLARE_TR_FUNCTIONS(FirstReadingPage)
public:
    FirstReadingPage(const Handlers& handlers, QWidget* parent) : OnboardingPage{handlers, parent}
    {
        who_ = wrappedLabel({}, this);
        scaleLetters(*who_, 1.15, false);
        plate_ = new ReadingPlate{this};
        scaleLetters(*plate_, 3.6, true);
        unit_ = new QLabel{this};
        scaleLetters(*unit_, 1.3, false);
        makeQuiet(*unit_);
        age_ = wrappedLabel({}, this);
        scaleLetters(*age_, 1.15, false);
        advice_ = wrappedLabel({}, this);
        again_ = new QPushButton{this};
        auto* const layout = new QVBoxLayout{this};
        layout->setContentsMargins({});
        const int gap = fontMetrics().height() / 2;
        layout->addWidget(who_);
        layout->addSpacing(gap);
        auto* const value = new QHBoxLayout;
        value->setSpacing(gap);
        value->addWidget(plate_);
        value->addWidget(unit_);
        value->addStretch(1);
        layout->addLayout(value);
        layout->addSpacing(gap);
        layout->addWidget(age_);
        layout->addWidget(advice_);
        layout->addSpacing(gap);
        layout->addWidget(again_, 0, Qt::AlignLeft);
        layout->addStretch(1);
        connect(again_, &QPushButton::clicked, this, [this] { call(this->handlers().tryAgain); });
    }
    QString heading(const OnboardingState&) const override { return tr("The first value"); }
    void present(const OnboardingState& state, bool entered) override
    {
        fill(state);
        tell(state, entered);
    }
    std::vector<OnboardingNews> news(const OnboardingState&) const override
    {
        return told_.text.isEmpty() ? std::vector<OnboardingNews>{} : std::vector{told_};
    }
    QString workText(const OnboardingState& state) const override
    {
        return state.isBusy && !state.firstReading ? advice_->text() : QString{};
    }
    bool focusProblem() override
    {
        if (!again_->isHidden())
            again_->setFocus();
        return !again_->isHidden();
    }

private:
    void fill(const OnboardingState& state)
    {
        const auto& reading = state.firstReading;
        who_->setText(whose(state));
        for (QWidget* widget : std::initializer_list<QWidget*>{plate_, unit_, age_})
            widget->setVisible(reading.has_value());
        again_->setVisible(!state.isBusy && (reading || state.problem));
        again_->setText(state.problem && !state.isProblemOfStoring ? tr("&Try again") : tr("&Ask again"));
        if (!reading) {
            advice_->setText(state.isBusy ? tr("Asking for the newest value…") : QString{});
            advice_->setVisible(state.isBusy);
            return;
        }
        const ReadingFreshness freshness = readingFreshness(reading->date, state.now);
        const bool current = freshness == ReadingFreshness::current;
        plate_->present(displayText(statusTitle(*reading, freshness, state.settings)),
                        current ? titleColor(*reading, state.settings) : TitleColor::primary,
                        displayText(spokenGlucose(reading, state.now, state.settings)));
        unit_->setText(QString::fromStdString(state.settings.measurementUnit));
        unit_->setVisible(freshness != ReadingFreshness::expired);
        const Seconds age = std::max(state.now - reading->date, Seconds{0});
        age_->setText(age < Seconds{60} ? tr("Measured just now.")
                                        : tr("Measured %1 ago.").arg(displayText(elapsedPhrase(age))));
        switch (freshness) {
        case ReadingFreshness::current:
            advice_->setText(tr("Compare it with the phone or the receiver: it should be the same."));
            break;
        case ReadingFreshness::stale:
            advice_->setText(
                tr("This value is old: the present one may be quite different. Look whether the "
                   "phone has a connection and is near the sensor."));
            break;
        case ReadingFreshness::expired:
            advice_->setText(
                tr("Nothing newer has come, so there is no value to show. Look whether the "
                   "phone has a connection and is near the sensor. You can go on; new values "
                   "appear by themselves."));
            break;
        }
        advice_->show();
    }

    /// The value as it came. That it gets older is no news until it is old; that it was asked for again is.
    void tell(const OnboardingState& state, bool entered)
    {
        const bool hasAnswer = std::exchange(busy_, state.isBusy) && !state.isBusy;
        if (!state.firstReading) {
            told_.text.clear();
            return;
        }
        const ReadingFreshness freshness = readingFreshness(state.firstReading->date, state.now);
        const bool askedAgain = hasAnswer && !state.problem;
        if (!entered && !askedAgain && !told_.text.isEmpty() && toldFreshness_ == freshness)
            return;
        toldFreshness_ = freshness;
        QStringList lines{plate_->accessibleName()};
        if (freshness == ReadingFreshness::current)  // Else it is said with the value.
            lines << age_->text();
        lines << advice_->text();
        told_ = {.text = lines.join(u'\n'), .round = told_.round + 1};
    }

    static QString whose(const OnboardingState& state)
    {
        if (state.account.provider == GlucoseProvider::dexcom || !state.patientID)
            return tr("Account: %1").arg(personName(state.account.username, {}));
        const auto person = std::ranges::find(state.people, *state.patientID, &LibreConnection::patientId);
        return personName(person != state.people.end() ? person->displayName()
                                                       : state.account.patientName.value_or(std::string{}),
                          *state.patientID);
    }

    QLabel* who_ = nullptr;
    ReadingPlate* plate_ = nullptr;
    QLabel* unit_ = nullptr;
    QLabel* age_ = nullptr;
    QLabel* advice_ = nullptr;
    QPushButton* again_ = nullptr;
    OnboardingNews told_{};
    ReadingFreshness toldFreshness_{};  ///< Of the value in `told_`.
    bool busy_ = false;
};

}  // namespace

OnboardingPage* makeAccountPage(const OnboardingPage::Handlers& handlers, QWidget* parent)
{
    return new AccountPage{handlers, parent};
}

OnboardingPage* makePersonPage(const OnboardingPage::Handlers& handlers, QWidget* parent)
{
    return new PersonPage{handlers, parent};
}

OnboardingPage* makeFirstReadingPage(const OnboardingPage::Handlers& handlers, QWidget* parent)
{
    return new FirstReadingPage{handlers, parent};
}

}  // namespace tidewell
