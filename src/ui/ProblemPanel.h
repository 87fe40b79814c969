#pragma once

#include <QFrame>

#include "app/SignInAdvice.h"
#include "ui/SpokenWidget.h"

class QLabel;
class QVBoxLayout;

namespace tidewell {

/// Why a sign-in did not lead to a value: title, the system's own text, likely causes, and what to do next.
/// Hidden while there is no problem; a new one is told to screen readers. Main thread.
class ProblemPanel final : public QFrame, public SpokenWidget {
    Q_OBJECT
public:
    explicit ProblemPanel(QWidget* parent = nullptr);

    /// Shows it, or hides itself for one without any text. The same one once more is no news.
    void present(const SignInProblem& problem);
    [[nodiscard]] QAccessible::Role spokenRole() const override { return QAccessible::AlertMessage; }

protected:
    void paintEvent(QPaintEvent* event) override;

private:
    SignInProblem shown_{};
    QLabel* title_ = nullptr;
    QLabel* message_ = nullptr;
    QVBoxLayout* causes_ = nullptr;
    QLabel* remedy_ = nullptr;
};

}  // namespace tidewell
