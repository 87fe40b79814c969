#include "program/InsightsReportController.h"

#include <gtest/gtest.h>
#include <stdlib.h>

#include <QApplication>
#include <QCheckBox>
#include <QFileDialog>
#include <QLabel>
#include <QLineEdit>
#include <QPushButton>
#include <filesystem>
#include <fstream>
#include <iterator>

namespace tidewell {
namespace {

/// Turns the event loop until it is so; ends after ten seconds.
bool comes(const std::function<bool()>& condition)
{
    const auto deadline = std::chrono::steady_clock::now() + std::chrono::seconds{10};
    while (!condition() && std::chrono::steady_clock::now() < deadline)
        QCoreApplication::processEvents(QEventLoop::AllEvents | QEventLoop::WaitForMoreEvents, 20);
    return condition();
}

/// The program's own parts over its demonstration, which has saved nothing.
class InsightsReportControllerTest : public testing::Test {
protected:
    InsightsReportControllerTest()
    {
        qputenv("QT_QPA_PLATFORM", "offscreen");
        application = std::make_unique<QApplication>(count, arguments);
        core = std::move(Core::make({.demo = true}).value());
        controller = std::make_unique<InsightsReportController>(*core);
        window = std::make_unique<QWidget>();
        const Date start = dateFromIso("2026-03-01T00:00:00Z").value();
        auto report = std::make_shared<InsightsReportContent>();
        InsightsCalculationInput input{.interval = {start, start + Seconds{3600}}};
        for (int i = 0; i < 12; ++i)
            input.readings.push_back(
                {.mgdL = 120, .date = start + Seconds{300.0 * i}, .sampleDuration = Seconds{300}});
        report->result = calculateInsights(std::move(input));
        controller->show({.report = std::move(report), .window = window.get()});
        dialog = window->findChild<InsightsReportDialog*>();
    }
    ~InsightsReportControllerTest() override
    {
        controller.reset();
        window.reset();
        EXPECT_TRUE(core->shutDown());
        core.reset();
        application.reset();
        qunsetenv("QT_QPA_PLATFORM");
        std::filesystem::remove_all(folder);
    }

    void save(const std::filesystem::path& file, bool withReadings = false) const
    {
        dialog->findChild<QCheckBox*>()->setChecked(withReadings);
        for (auto* button : dialog->findChildren<QPushButton*>())
            if (button->isDefault())
                button->click();
        auto* const chooser = dialog->findChild<QFileDialog*>();
        Q_EMIT chooser->fileSelected(QString::fromStdString(file.string()));
        delete chooser;
    }
    [[nodiscard]] bool says(const QString& words) const
    {
        for (const auto* label : dialog->findChildren<QLabel*>())
            if (label->isVisible() && label->text().contains(words))
                return true;
        return false;
    }

    int count = 1;
    char name[5] = "test";
    char* arguments[2] = {name, nullptr};
    std::unique_ptr<QApplication> application{};
    std::unique_ptr<Core> core{};
    std::unique_ptr<InsightsReportController> controller{};
    std::unique_ptr<QWidget> window{};
    QPointer<InsightsReportDialog> dialog{};
    std::filesystem::path folder = [] {
        std::string made = testing::TempDir() + "tidewell-report-XXXXXX";
        return std::filesystem::path{::mkdtemp(made.data())};
    }();
};

TEST_F(InsightsReportControllerTest, savesWhatIsShownAndSaysWhyItCannot)
{
    ASSERT_TRUE(dialog && dialog->isVisible());
    save(folder / "none" / "report.pdf");
    EXPECT_TRUE(comes([&] { return says(QStringLiteral("cannot be written")); }));
    save(folder / "report.pdf", true);
    EXPECT_TRUE(comes([&] { return says(QStringLiteral("Sign in")); }));
    EXPECT_TRUE(std::filesystem::is_empty(folder));

    save(folder / "report.pdf");
    EXPECT_TRUE(comes([&] { return !dialog->isVisible(); }));
    std::ifstream stream{folder / "report.pdf"};
    EXPECT_TRUE((std::string{std::istreambuf_iterator<char>{stream}, {}}.starts_with("%PDF-")));
}

TEST_F(InsightsReportControllerTest, withdrawsWhatIsSomebodyElsesByNow)
{
    auto& name = *dialog->findChild<QLineEdit*>();
    name.setText(QStringLiteral("Ada"));
    save(folder / "report.pdf", true);  // Asks for the readings first.
    controller->withdraw();
    EXPECT_FALSE(dialog->isVisible());
    EXPECT_EQ(name.text(), QString{}) << "of the person before";
    for (int turn = 0; turn < 20; ++turn)
        QCoreApplication::processEvents();
    EXPECT_FALSE(dialog->isVisible());
    EXPECT_TRUE(std::filesystem::is_empty(folder));
}

TEST_F(InsightsReportControllerTest, letsTheWindowGoMeanwhile)
{
    save(folder / "report.pdf");
    window.reset();
    EXPECT_FALSE(dialog);
    EXPECT_TRUE(comes([&] { return std::filesystem::exists(folder / "report.pdf"); }));
}

}  // namespace
}  // namespace tidewell
