#pragma once

#include <QLabel>
#include <utility>
#include <vector>

#include "statusbar/ReadingPresentation.h"
#include "ui/OnboardingWindow.h"

namespace tidewell {

/// Something on a step that a person has to hear of who does not see it.
struct OnboardingNews {
    QString text{};
    int round = 0;  ///< Another one: it is said again, also in the same words.
    bool operator==(const OnboardingNews&) const = default;
};

/// What one of the first-run steps shows. A page calls the handlers of its window, which outlive it.
class OnboardingPage : public QWidget {
public:
    using Handlers = OnboardingWindow::Handlers;
    OnboardingPage(const Handlers& handlers, QWidget* parent);

    /// What the step is about, in a few words.
    [[nodiscard]] virtual QString heading(const OnboardingState& state) const = 0;
    /// `entered`: the step was just reached; otherwise what a person is typing stays.
    virtual void present(const OnboardingState& state, bool entered) = 0;
    /// What it shows of that state beside its controls. Screen readers are told of each once, as it comes.
    [[nodiscard]] virtual std::vector<OnboardingNews> news(const OnboardingState& /*state*/) const
    {
        return {};
    }
    /// Whether a person has to wait for what is under way.
    [[nodiscard]] virtual bool waits(const OnboardingState& state) const { return state.isBusy; }
    /// What is being waited for, where the page has words of its own for it.
    [[nodiscard]] virtual QString workText(const OnboardingState& /*state*/) const { return {}; }
    /// Puts the cursor where the step begins; false when the button forward is that place.
    virtual bool focusFirst() { return false; }
    /// Puts the cursor where a problem is to be mended; false when nothing on the page is that place.
    virtual bool focusProblem() { return false; }
    /// Another step is shown from now on: what is secret need not lie in a field.
    virtual void leave(const OnboardingState& /*state*/) {}
    /// The window closes: empties what is secret.
    virtual void clear() {}

protected:
    template <class Handler, class... Arguments>
    static void call(const Handler& handler, Arguments&&... arguments)
    {
        if (handler)
            handler(std::forward<Arguments>(arguments)...);
    }
    [[nodiscard]] const Handlers& handlers() const { return handlers_; }

private:
    const Handlers& handlers_;
};

/// A value as the panel shows it: on a plate where the panel has one.
class ReadingPlate final : public QLabel {
public:
    explicit ReadingPlate(QWidget* parent);
    /// `spoken` says for ears what it shows.
    void present(const QString& title, TitleColor color, const QString& spoken);

protected:
    void paintEvent(QPaintEvent* event) override;
    void changeEvent(QEvent* event) override;

private:
    void colorLetters();

    TitleColor color_ = TitleColor::primary;
    bool coloring_ = false;
};

[[nodiscard]] OnboardingPage* makeWelcomePage(const OnboardingPage::Handlers& handlers, QWidget* parent);
[[nodiscard]] OnboardingPage* makeTermsPage(const OnboardingPage::Handlers& handlers, QWidget* parent);
[[nodiscard]] OnboardingPage* makeAccountPage(const OnboardingPage::Handlers& handlers, QWidget* parent);
[[nodiscard]] OnboardingPage* makePersonPage(const OnboardingPage::Handlers& handlers, QWidget* parent);
[[nodiscard]] OnboardingPage* makeFirstReadingPage(const OnboardingPage::Handlers& handlers, QWidget* parent);
[[nodiscard]] OnboardingPage* makeGlucosePage(const OnboardingPage::Handlers& handlers, QWidget* parent);
[[nodiscard]] OnboardingPage* makeAlertsPage(const OnboardingPage::Handlers& handlers, QWidget* parent);
[[nodiscard]] OnboardingPage* makeHistoryPage(const OnboardingPage::Handlers& handlers, QWidget* parent);
[[nodiscard]] OnboardingPage* makeLoginPage(const OnboardingPage::Handlers& handlers, QWidget* parent);
[[nodiscard]] OnboardingPage* makeDonePage(const OnboardingPage::Handlers& handlers, QWidget* parent);

}  // namespace tidewell
