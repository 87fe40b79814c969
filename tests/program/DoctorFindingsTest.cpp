#include "program/DoctorFindings.h"

#include <gtest/gtest.h>

namespace tidewell {
namespace {

using enum AlertFinding::Severity;

std::string subjects(const std::vector<AlertFinding>& findings)
{
    std::string all;
    for (const AlertFinding& one : findings)
        all += (all.empty() ? "" : " ") + one.subject;
    return all;
}

std::vector<AlertFinding> whereAllIsWell()
{
    const Date now = dateFromUnix(1'700'000'000);
    AppSettings settings;
    settings.alertOnHighThreshold = false;
    return alertFindings({.now = now,
                          .settings = settings,
                          .path = {.serverAnswers = true, .serverPlaysSound = true, .soundOutput = true},
                          .newestReading = now});
}

TEST(DoctorFindings, whereNothingIsFetchedNothingSaysThatReadingsOrAlertsCome)
{
    const auto well = whereAllIsWell();
    for (const auto add : {&addSetupFinding, &addTermsFinding}) {
        auto findings = well;
        add(findings);
        ASSERT_GT(findings.size(), 2U);
        EXPECT_EQ(findings.front().severity, problem);
        EXPECT_FALSE(findings.front().remedy.empty());
        for (const AlertFinding& one : findings) {
            EXPECT_NE(one.subject, "data");
            EXPECT_FALSE(one.severity == good && one.text.contains(" come ")) << one.text;
        }
        const std::string all = subjects(findings);
        EXPECT_TRUE(all.contains("high")) << "a category that is off stays off: " << all;
        EXPECT_TRUE(all.contains("account")) << all;
    }
}

TEST(DoctorFindings, noAutostartFileIsToBeSwitchedOffThatCannotBe)
{
    EXPECT_TRUE(loginItemFinding({.problem = "x"}).command.contains("startAtLogin off"));
    const AlertFinding finding = loginItemFinding({.problem = "x", .isChangeable = false});
    EXPECT_EQ(finding.command, "");
    EXPECT_EQ(finding.remedy, "Remove or mend the file.");
}

TEST(DoctorFindings, whatIsAddedStandsAmongItsEquals)
{
    auto findings = whereAllIsWell();
    const auto add = [&](AlertFinding::Severity severity) {
        addBeforeGood(findings, {.severity = severity, .subject = "added"});
        EXPECT_TRUE(std::ranges::is_sorted(findings, {}, &AlertFinding::severity)) << subjects(findings);
    };
    add(note);
    add(caution);
    add(problem);
    addBeforeGood(findings, {.subject = "better"});
    EXPECT_TRUE(subjects(findings).starts_with("added high added added better ")) << subjects(findings);
    addBeforeGood(findings, bookkeepingFinding("A could not be written: B.\nC."));
    EXPECT_TRUE(std::ranges::any_of(findings, [](const AlertFinding& one) {
        return one.severity == caution &&
               one.text == "Tidewell cannot remember what you choose: A could not be written: B.";
    }));
}

}  // namespace
}  // namespace tidewell
