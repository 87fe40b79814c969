#include "platform/linux/AlertSound.h"

#include <cstdlib>
#include <fstream>
#include <iterator>
#include <set>

#include "TestBus.h"
#include "platform/linux/QtMainLoop.h"
#include "platform/linux/SoundOutput.h"
#include "testing/LogCatcher.h"
#include "testing/Running.h"

namespace tidewell {
namespace {

using namespace std::chrono_literals;
using enum NotificationTone;

TEST(AlertSound, eachToneHasItsOwnSoundAndAnotherOneWhereTheThemeLacksIt)
{
    const TemporaryFolder own;
    const TemporaryFolder system;
    const std::vector<std::filesystem::path> folders{own / "nowhere", own.path(), system.path()};
    const auto add = [](const TemporaryFolder& folder, const std::string& name) {
        const auto place = folder / "sounds/freedesktop/stereo";
        std::filesystem::create_directories(place);
        std::ofstream{place / name} << "sound";
        return place / name;
    };
    struct Step {
        std::filesystem::path added, urgentSound, standardSound;
    };
    EXPECT_EQ(alertSoundFile(urgent, folders), "");
    const auto bell = add(system, "bell.wav");
    EXPECT_EQ(alertSoundFile(urgent, folders), bell);
    EXPECT_EQ(alertSoundFile(standard, folders), bell);
    const auto alarm = add(system, "alarm-clock-elapsed.oga");
    EXPECT_EQ(alertSoundFile(urgent, folders), alarm);
    EXPECT_EQ(alertSoundFile(standard, folders), bell);
    const auto message = add(system, "message-new-instant.ogg");
    std::filesystem::create_directories(own / "sounds/freedesktop/stereo/message-new-instant.oga");
    EXPECT_EQ(alertSoundFile(standard, folders), message) << "a folder is no sound";
    const auto chosen = add(own, "alarm-clock-elapsed.wav");
    EXPECT_EQ(alertSoundFile(urgent, folders), chosen) << "the person's own comes first";
}

/// With variables that the test sets for the process.
class SoundEnvironmentTest : public testing::Test {
protected:
    ~SoundEnvironmentTest() override
    {
        for (const auto& [name, value] : before_)
            value ? ::setenv(name.c_str(), value->c_str(), 1) : ::unsetenv(name.c_str());
    }
    void set(const char* name, const std::string& value)
    {
        const char* const old = std::getenv(name);
        before_.try_emplace(name, old ? std::optional<std::string>{old} : std::nullopt);
        ::setenv(name, value.c_str(), 1);
    }

private:
    std::map<std::string, std::optional<std::string>> before_{};
};

TEST_F(SoundEnvironmentTest, dataFoldersFollowTheirSpecification)
{
    using Paths = std::vector<std::filesystem::path>;
    set("HOME", "/home/somebody");
    set("XDG_DATA_HOME", "");
    set("XDG_DATA_DIRS", "");
    EXPECT_EQ(xdgDataFolders(), (Paths{"/home/somebody/.local/share", "/usr/local/share", "/usr/share"}));
    set("XDG_DATA_HOME", "relative");
    set("XDG_DATA_DIRS", ":/one::two:/three");
    EXPECT_EQ(xdgDataFolders(), (Paths{"/one", "/three"}));
}

TEST_F(SoundEnvironmentTest, aSoundThatCannotBePlayedSaysWhyAndHoldsNobodyUp)
{
    const TemporaryFolder empty;
    QtMainLoop main;
    AlertSound sound{main.executor(), TIDEWELL_PROGRAM};
    int changes = 0;
    sound.onProblemChange([&] { ++changes; });
    const auto play = [&] {
        sound.play(urgent);
        const auto wait = [&]() -> asio::awaitable<bool> {
            co_await sound.finished();
            co_return true;
        };
        const Running<bool> waiting{main.executor(), wait()};
        EXPECT_TRUE(runUntil([&] { return waiting.ended(); }));
        return sound.problem();
    };
    set("XDG_DATA_HOME", empty.path());
    set("XDG_DATA_DIRS", empty.path());
    set("PULSE_SERVER", "unix:" + (empty / "none").string());
    EXPECT_EQ(play(), "No sound theme with a sound for alerts is installed.");
    std::filesystem::create_directories(empty / "sounds/freedesktop/stereo");
    std::ofstream{empty / "sounds/freedesktop/stereo/bell.wav"} << "not a sound";
    EXPECT_EQ(play(), "The sound of an alert could not be played.");
    EXPECT_EQ(play(), "The sound of an alert could not be played.");
    EXPECT_EQ(changes, 2);
    AlertSound unheard{main.executor(), "/nonexistent/helper"};
    unheard.play(standard);
    EXPECT_TRUE(runUntil([&] { return !unheard.problem().empty(); }));
}

TEST(AlertSound, whileThreeSoundsLastOnlyUrgentOnesBeginAndTheOthersAreLoggedOnce)
{
    const TemporaryFolder folder;
    const auto helper = folder / "helper";
    std::ofstream{helper} << "#!/bin/sh\necho \"$3\" >> '" << (folder / "begun").string()
                          << "'\nexec sleep 60\n";
    std::filesystem::permissions(helper, std::filesystem::perms::owner_all);
    LogCatcher logs{"AlertSound"};
    QtMainLoop main;
    AlertSound sound{main.executor(), QString::fromStdString(helper.string())};
    for (const NotificationTone tone : {standard, standard, standard, standard, standard, urgent})
        sound.play(tone);
    std::multiset<std::string> begun;
    EXPECT_TRUE(runUntil([&] {
        std::ifstream file{folder / "begun"};
        begun = {std::istream_iterator<std::string>{file}, {}};
        return begun.size() >= 4;
    }));
    EXPECT_EQ(begun, (std::multiset<std::string>{"standard", "standard", "standard", "urgent"}));
    EXPECT_EQ(logs.lines().size(), 1U) << logs.text();
}

TEST(DesktopHelper, itsReportIsReadAsItWasWrittenAndNothingElseIs)
{
    for (const auto& present : {std::optional<bool>{}, std::optional{true}, std::optional{false}}) {
        for (const auto& volume : {std::optional<double>{}, std::optional{0.0}, std::optional{0.3}}) {
            const SoundReport report{{.present = present, .muted = present, .volume = volume}, volume == 0.3};
            EXPECT_EQ(soundReport(soundReportLine(report)), report) << soundReportLine(report);
        }
    }
    for (const char* line : {"", "yes", "yes no 1", "yes no 1 -", "maybe no 1 yes", "yes no nan yes",
                             "yes no -1 yes", "yes no 1x yes", "yes no 1 yes yes", "yes  1 yes", " "})
        EXPECT_FALSE(soundReport(line)) << line;
}

TEST_F(SoundEnvironmentTest, withoutASoundServerThereIsNoOutputUnlessADevicePlaysByItself)
{
    const TemporaryFolder empty;
    const SoundOutputState state = askSoundOutput("unix:" + (empty / "none").string(), 1s);
    EXPECT_EQ(state.present, soundDeviceExists() ? std::nullopt : std::optional{false});
    EXPECT_FALSE(state.muted || state.volume);
}

}  // namespace
}  // namespace tidewell
