#include "ui/InsightsReportDialog.h"

#include <gtest/gtest.h>

#include <QCheckBox>
#include <QComboBox>
#include <QFileDialog>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <optional>

namespace tidewell {
namespace {

class InsightsReportDialogTest : public testing::Test {
protected:
    InsightsReportDialogTest()
    {
        dialog.onSave([this](InsightsReportRequest wanted) { request = std::move(wanted); });
        dialog.present(InsightsReportPaper::letter, QStringLiteral("report"));
    }
    [[nodiscard]] QPushButton* saveButton() const
    {
        for (auto* button : dialog.findChildren<QPushButton*>())
            if (button->isDefault())
                return button;
        return nullptr;
    }
    /// Presses the button and picks that file.
    void pick(const QString& file)
    {
        saveButton()->click();
        auto* const chooser = dialog.findChild<QFileDialog*>();
        ASSERT_NE(chooser, nullptr);
        EXPECT_EQ(chooser->acceptMode(), QFileDialog::AcceptSave);
        Q_EMIT chooser->fileSelected(file);
        delete chooser;
    }
    [[nodiscard]] bool says(const QString& words) const
    {
        const auto labels = dialog.findChildren<QLabel*>();
        return std::ranges::any_of(
            labels, [&](const QLabel* label) { return label->isVisible() && label->text().contains(words); });
    }

    InsightsReportDialog dialog;
    std::optional<InsightsReportRequest> request{};
};

TEST_F(InsightsReportDialogTest, asksForNothingThatIdentifiesByDefault)
{
    EXPECT_TRUE(says(QStringLiteral("not encrypted")));
    pick(QStringLiteral("/somewhere/a.pdf"));
    ASSERT_TRUE(request);
    EXPECT_EQ(request->file, "/somewhere/a.pdf");
    EXPECT_EQ(request->format, InsightsReportFormat::pdf);
    EXPECT_EQ(request->paper, InsightsReportPaper::letter);
    EXPECT_EQ(request->name, "");
    EXPECT_FALSE(request->withReadings);
    EXPECT_TRUE(request->replace);  // The chooser has asked.
}

TEST_F(InsightsReportDialogTest, handsOnWhatWasChosen)
{
    const auto boxes = dialog.findChildren<QComboBox*>();
    boxes.at(0)->setCurrentIndex(1);
    boxes.at(1)->setCurrentIndex(0);
    dialog.findChild<QLineEdit*>()->setText(QStringLiteral(" Ada "));
    dialog.findChild<QCheckBox*>()->setChecked(true);
    pick(QStringLiteral("/somewhere/a.pdf"));
    ASSERT_TRUE(request);
    // Nobody agreed to replace the file that is meant now.
    EXPECT_EQ(request->file, "/somewhere/a.pdf.png");
    EXPECT_FALSE(request->replace);
    EXPECT_EQ(request->format, InsightsReportFormat::png);
    EXPECT_EQ(request->paper, InsightsReportPaper::a4);
    EXPECT_EQ(request->name, "Ada");
    EXPECT_TRUE(request->withReadings);
}

TEST_F(InsightsReportDialogTest, waitsForTheAnswerAndCanTryAgain)
{
    auto* const save = saveButton();
    pick(QStringLiteral("/somewhere/a.pdf"));
    EXPECT_FALSE(save->isEnabled());
    dialog.showError(QStringLiteral("<b>The disk is full.</b>"));
    EXPECT_TRUE(says(QStringLiteral("<b>The disk is full.</b>")));
    EXPECT_TRUE(save->isEnabled());
    pick(QStringLiteral("/somewhere/b.pdf"));
    EXPECT_FALSE(says(QStringLiteral("The disk is full.")));
    dialog.finish({"2026-03-04", "2026-03-06"});
    EXPECT_TRUE(dialog.isVisible()) << "until that was read";
    EXPECT_TRUE(says(QStringLiteral("missing in the attached file: 2026-03-04, 2026-03-06.")));
    pick(QStringLiteral("/somewhere/c.pdf"));
    EXPECT_FALSE(says(QStringLiteral("2026-03-04")));
    dialog.finish();
    EXPECT_FALSE(dialog.isVisible());
}

}  // namespace
}  // namespace tidewell
