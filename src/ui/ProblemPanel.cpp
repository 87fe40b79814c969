#include "ui/ProblemPanel.h"

#include <QPainter>
#include <QStringList>
#include <QVBoxLayout>

#include "ui/DisplayText.h"
#include "ui/InsightsCharts.h"
#include "ui/WindowText.h"

namespace tidewell {
namespace {

constexpr int stripWidth = 4;  // Pixels; says at a glance that something is wrong.

}  // namespace

ProblemPanel::ProblemPanel(QWidget* parent) : QFrame{parent}
{
    setFrameShape(QFrame::StyledPanel);
    title_ = wrappedLabel({}, this);
    title_->setTextInteractionFlags(Qt::TextSelectableByMouse);
    QFont strong = title_->font();
    strong.setBold(true);
    title_->setFont(strong);
    message_ = copyableLabel({}, this);
    remedy_ = wrappedLabel({}, this);
    remedy_->setTextInteractionFlags(Qt::TextSelectableByMouse);
    causes_ = new QVBoxLayout;
    auto* const layout = new QVBoxLayout{this};
    layout->setContentsMargins(layout->contentsMargins() + QMargins{stripWidth, 0, 0, 0});
    layout->addWidget(title_);
    layout->addWidget(message_);
    layout->addLayout(causes_);
    layout->addWidget(remedy_);
    hide();
}

void ProblemPanel::present(const SignInProblem& problem)
{
    if (problem == SignInProblem{}) {
        hide();
        shown_ = {};
        return;
    }
    if (problem == shown_ && !isHidden())
        return;
    shown_ = problem;
    QStringList spoken;
    const auto show = [&spoken](QLabel* label, const std::string& text) {
        label->setText(displayText(text));
        label->setVisible(!text.empty());
        if (!text.empty())
            spoken << label->text();
    };
    show(title_, problem.title);
    show(message_, problem.message);
    while (QLayoutItem* const item = causes_->takeAt(0)) {
        delete item->widget();
        delete item;
    }
    for (const std::string& cause : problem.causes) {
        QLabel* const label = bulletLabel({}, this);
        label->setTextInteractionFlags(Qt::TextSelectableByMouse);
        causes_->addWidget(label);
        show(label, cause);
    }
    show(remedy_, problem.remedy);
    setVisible(true);
    setSpokenName(*this, spoken.join(u'\n'));
}

void ProblemPanel::paintEvent(QPaintEvent* event)
{
    QFrame::paintEvent(event);
    QPainter painter{this};
    painter.fillRect(
        QRect{frameWidth(), frameWidth(), stripWidth, height() - 2 * frameWidth()},
        insightsBandColor(InsightsBand::high, isDark(*this) ? GraphTheme::dark : GraphTheme::light));
}

}  // namespace tidewell
