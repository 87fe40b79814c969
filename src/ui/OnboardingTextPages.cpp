#include <QCheckBox>
#include <QCoreApplication>
#include <QFrame>
#include <QGridLayout>
#include <QVBoxLayout>
#include <array>
#include <utility>
#include <vector>

#include "statusbar/SilentLows.h"
#include "ui/DisplayText.h"
#include "ui/OnboardingPage.h"
#include "ui/TermsView.h"
#include "ui/WindowText.h"

namespace tidewell {
namespace {

QVBoxLayout* pageLayout(QWidget* page)
{
    auto* const layout = new QVBoxLayout{page};
    layout->setContentsMargins({});
    return layout;
}

QLabel* boldLabel(const QString& text, QWidget* parent)
{
    QLabel* const label = wrappedLabel(text, parent);
    QFont font = label->font();
    font.setBold(true);
    label->setFont(font);
    return label;
}

/// A text that has to be noticed.
QFrame* framed(QWidget* parent, std::initializer_list<QLabel*> labels)
{
    auto* const frame = new QFrame{parent};
    frame->setFrameShape(QFrame::StyledPanel);
    auto* const layout = new QVBoxLayout{frame};
    for (QLabel* label : labels)
        layout->addWidget(label);
    return frame;
}

class WelcomePage final : public OnboardingPage {
    Q_DECLARE_TR_FUNCTIONS(WelcomePage)
public:
    WelcomePage(const Handlers& handlers, QWidget* parent) : OnboardingPage{handlers, parent}
    {
        auto* const layout = pageLayout(this);
        const int gap = fontMetrics().height();
        const std::array<std::pair<QString, QString>, 3> points{
            {{tr("The value, always in sight"),
              tr("Your panel shows the current glucose value and its trend, and says when it gets old.")},
             {tr("Alerts on this computer"),
              tr("A notification with a sound when it is low or high, changes rapidly, or stops coming.")},
             {tr("Private"),
              tr("Tidewell asks your sharing service directly. Readings stay on this computer.")}}};
        for (const auto& [title, text] : points) {
            QLabel* const label = wrappedLabel(title, this);
            scaleLetters(*label, 1.15, true);
            layout->addWidget(label);
            layout->addWidget(wrappedLabel(text, this));
            layout->addSpacing(gap);
        }
        layout->addWidget(framed(
            this,
            {boldLabel(tr("Tidewell is not a medical device"), this),
             bulletLabel(tr("Do not make treatment decisions by what it shows."), this),
             bulletLabel(tr("Keep the alarms of the phone or receiver switched on. A computer may be asleep, "
                            "muted or offline when it matters."),
                         this)}));
        layout->addSpacing(gap);
        layout->addWidget(wrappedLabel(
            tr("Setting up takes about two minutes. You need the account of Dexcom Share or LibreLinkUp."),
            this));
        layout->addStretch(1);
    }
    QString heading(const OnboardingState&) const override { return tr("Welcome to Tidewell"); }
    void present(const OnboardingState&, bool) override {}
};

class TermsPage final : public OnboardingPage {
    Q_DECLARE_TR_FUNCTIONS(TermsPage)
public:
    TermsPage(const Handlers& handlers, QWidget* parent) : OnboardingPage{handlers, parent}
    {
        terms_ = new TermsView{this};
        accept_ = new QCheckBox{tr("I &accept the terms of use"), this};
        auto* const version = wrappedLabel(termsVersionText(), this);
        makeQuiet(*version);
        auto* const layout = pageLayout(this);
        layout->addWidget(terms_, 1);
        layout->addWidget(version);
        layout->addWidget(accept_);
        connect(accept_, &QCheckBox::clicked, this,
                [this](bool on) { call(this->handlers().termsAccepted, on); });
    }
    QString heading(const OnboardingState&) const override { return tr("Terms of use"); }
    void present(const OnboardingState& state, bool) override
    {
        accept_->setChecked(state.termsAccepted);
        accept_->setEnabled(!state.isBusy);
    }
    bool focusFirst() override
    {
        terms_->setFocus();
        return true;
    }

private:
    TermsView* terms_ = nullptr;
    QCheckBox* accept_ = nullptr;
};

class HistoryPage final : public OnboardingPage {
    Q_DECLARE_TR_FUNCTIONS(HistoryPage)
public:
    HistoryPage(const Handlers& handlers, QWidget* parent) : OnboardingPage{handlers, parent}
    {
        auto* const layout = pageLayout(this);
        intro_ = wrappedLabel(
            tr("Saved readings give you Insights: time in range, averages and a daily profile, to understand "
               "them better or to take them to the doctor. It is up to you; Tidewell works without."),
            this);
        layout->addWidget(intro_);
        layout->addSpacing(fontMetrics().height() / 2);
        auto* const facts = new QGridLayout;
        facts->setColumnStretch(1, 1);
        facts->setHorizontalSpacing(fontMetrics().height());
        const auto add = [&](const QString& what, QLabel* text) {
            auto* const label = new QLabel{what, this};
            QFont bold = label->font();
            bold.setBold(true);
            label->setFont(bold);
            const int row = facts->rowCount();
            facts->addWidget(label, row, 0, Qt::AlignTop);
            facts->addWidget(text, row, 1, Qt::AlignTop);
            facts_.emplace_back(label, text);
        };
        add(tr("What"),
            wrappedLabel(tr("Each reading from now on, for this account and person: value, trend and time. "
                            "Nothing from before."),
                         this));
        add(tr("Where"),
            wrappedLabel(tr("On this computer only, encrypted. Nothing is ever uploaded."), this));
        key_ = wrappedLabel({}, this);
        add(tr("Key"), key_);
        howLong_ = wrappedLabel({}, this);
        add(tr("How long"), howLong_);
        add(tr("To stop"), wrappedLabel(tr("In the settings, at any time. What is saved stays."), this));
        add(tr("To delete"),
            wrappedLabel(tr("In the settings as well. It removes the readings, and their key last."), this));
        layout->addLayout(facts);
        layout->addSpacing(fontMetrics().height() / 2);
        saves_ = new QCheckBox{tr("&Save readings on this computer"), this};
        layout->addWidget(saves_);
        layout->addStretch(1);
        connect(saves_, &QCheckBox::clicked, this,
                [this](bool on) { call(this->handlers().savesHistoryChanged, on); });
    }
    QString heading(const OnboardingState&) const override { return tr("Save readings?"); }
    void present(const OnboardingState& state, bool) override
    {
        key_->setText(state.secretsFile.empty()
                          ? tr("It is kept where Tidewell keeps your password: in your keyring.")
                          : tr("It is kept where Tidewell keeps your password: in the file %1. Whoever can "
                               "read your files can read it too.")
                                .arg(QString::fromStdString(state.secretsFile)));
        howLong_->setText(tr("%1 days; older readings are removed. The settings offer 30 and 90 days.")
                              .arg(state.retentionDays));
        QStringList disclosure{intro_->text()};
        for (const auto& [what, text] : facts_)
            disclosure << tr("%1: %2").arg(what->text(), text->text());
        saves_->setAccessibleDescription(disclosure.join(u'\n'));
        saves_->setChecked(state.savesHistory);
        saves_->setEnabled(!state.isBusy);
    }
    bool focusFirst() override
    {
        saves_->setFocus();
        return true;
    }

private:
    QLabel* intro_ = nullptr;
    std::vector<std::pair<const QLabel*, const QLabel*>> facts_{};  ///< What it is about, and how it is.
    QLabel* howLong_ = nullptr;
    QCheckBox* saves_ = nullptr;
    QLabel* key_ = nullptr;
};

class LoginPage final : public OnboardingPage {
    Q_DECLARE_TR_FUNCTIONS(LoginPage)
public:
    LoginPage(const Handlers& handlers, QWidget* parent) : OnboardingPage{handlers, parent}
    {
        auto* const layout = pageLayout(this);
        layout->addWidget(wrappedLabel(
            tr("Tidewell can only show values and alert you while it runs. When it starts together with the "
               "desktop, nobody has to remember it."),
            this));
        layout->addSpacing(fontMetrics().height() / 2);
        starts_ = new QCheckBox{tr("&Start Tidewell when I log in"), this};
        layout->addWidget(starts_);
        current_ = wrappedLabel({}, this);
        makeQuiet(*current_);
        layout->addWidget(current_);
        problem_ = copyableLabel({}, this);
        problemFrame_ = framed(this, {problem_});
        layout->addWidget(problemFrame_);
        layout->addStretch(1);
        connect(starts_, &QCheckBox::clicked, this,
                [this](bool on) { call(this->handlers().startsAtLoginChanged, on); });
    }
    QString heading(const OnboardingState&) const override { return tr("Start at login"); }
    void present(const OnboardingState& state, bool entered) override
    {
        if (!state.isBusy || entered)
            starts_->setChecked(state.startsAtLogin);
        current_->setText(state.startsAtLogin ? tr("Now: your desktop starts Tidewell when you log in.")
                                              : tr("Now: your desktop does not start Tidewell by itself."));
        problem_->setText(displayText(state.loginItemProblem));
        problemFrame_->setVisible(!state.loginItemProblem.empty());
        if (entered)
            told_.clear();
        busy_ = state.isBusy;
        if (!busy_)  // Before that it may be what was so.
            told_ = current_->text();
    }
    std::vector<OnboardingNews> news(const OnboardingState&) const override
    {
        std::vector<OnboardingNews> lines;
        if (!told_.isEmpty())
            lines.push_back({.text = told_});
        if (!busy_ && !problemFrame_->isHidden())
            lines.push_back({.text = problem_->text()});
        return lines;
    }
    bool waits(const OnboardingState&) const override { return false; }
    bool focusFirst() override
    {
        starts_->setFocus();
        return true;
    }

private:
    QCheckBox* starts_ = nullptr;
    QLabel* current_ = nullptr;
    QFrame* problemFrame_ = nullptr;
    QLabel* problem_ = nullptr;
    QString told_{};  ///< What was so when that was known last.
    bool busy_ = false;
};

class DonePage final : public OnboardingPage {
    Q_DECLARE_TR_FUNCTIONS(DonePage)
public:
    DonePage(const Handlers& handlers, QWidget* parent) : OnboardingPage{handlers, parent}
    {
        auto* const layout = pageLayout(this);
        const int gap = fontMetrics().height() / 2;
        layout->addWidget(wrappedLabel(tr("Look for the value in your panel. It looks like this:"), this));
        layout->addSpacing(gap);
        plate_ = new ReadingPlate{this};
        scaleLetters(*plate_, 1.5, true);
        layout->addWidget(plate_);
        layout->addSpacing(gap);
        for (const QString& text :
             {tr("A click on it opens the menu, with the graph of the last hours."),
              tr("The menu also leads to Insights and to the settings, where you can change all of this."),
              tr("A question mark behind the value means that it is old: look at the phone.")})
            layout->addWidget(bulletLabel(text, this));
        layout->addSpacing(gap);
        silentLows_ = wrappedLabel({}, this);
        silentTitle_ = boldLabel(tr("Some lows will be silent"), this);
        silentFrame_ = framed(this, {silentTitle_, silentLows_});
        layout->addWidget(silentFrame_);
        layout->addWidget(
            wrappedLabel(tr("When you choose Finish, Tidewell begins to fetch readings."), this));
        layout->addStretch(1);
    }
    QString heading(const OnboardingState&) const override { return tr("Tidewell is ready"); }
    void present(const OnboardingState& state, bool) override
    {
        const GlucoseReading example =
            makeReading(118, "Flat", state.now, Seconds{300}, state.account.provider);
        const GlucoseReading& shown = state.firstReading ? *state.firstReading : example;
        const ReadingFreshness freshness = readingFreshness(shown.date, state.now);
        const QString title = displayText(statusTitle(shown, freshness, state.settings));
        plate_->present(
            title,
            freshness == ReadingFreshness::current ? titleColor(shown, state.settings) : TitleColor::primary,
            tr("In the panel: %1").arg(title));
        QStringList lines;
        for (const SilentLowWarning& warning :
             silentLowWarnings(state.settings, {}, state.now, TimeZone::current()))
            lines << displayText(warning.text);
        silentLows_->setText(lines.join(u'\n'));
        silentFrame_->setVisible(!lines.isEmpty());
    }
    std::vector<OnboardingNews> news(const OnboardingState&) const override
    {
        if (silentFrame_->isHidden())
            return {};
        return {{.text = silentTitle_->text()}, {.text = silentLows_->text()}};
    }

private:
    ReadingPlate* plate_ = nullptr;
    QFrame* silentFrame_ = nullptr;
    QLabel* silentTitle_ = nullptr;
    QLabel* silentLows_ = nullptr;
};

}  // namespace

OnboardingPage* makeWelcomePage(const OnboardingPage::Handlers& handlers, QWidget* parent)
{
    return new WelcomePage{handlers, parent};
}

OnboardingPage* makeTermsPage(const OnboardingPage::Handlers& handlers, QWidget* parent)
{
    return new TermsPage{handlers, parent};
}

OnboardingPage* makeHistoryPage(const OnboardingPage::Handlers& handlers, QWidget* parent)
{
    return new HistoryPage{handlers, parent};
}

OnboardingPage* makeLoginPage(const OnboardingPage::Handlers& handlers, QWidget* parent)
{
    return new LoginPage{handlers, parent};
}

OnboardingPage* makeDonePage(const OnboardingPage::Handlers& handlers, QWidget* parent)
{
    return new DonePage{handlers, parent};
}

}  // namespace tidewell
