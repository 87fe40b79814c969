#include "platform/linux/AutostartFile.h"

#include <gtest/gtest.h>
#include <sys/stat.h>
#include <unistd.h>

#include <QString>

#include <fmt/format.h>

#include <chrono>
#include <fstream>
#include <functional>
#include <iterator>
#include <map>

#include "platform/linux/DesktopEntry.h"
#include "support/Random.h"
#include "testing/TemporaryFolder.h"

namespace tidewell {
namespace {

namespace fs = std::filesystem;
using Words = std::vector<std::string>;

constexpr std::string_view head = "[Desktop Entry]\nType=Application\nName=Tidewell\n";

class AutostartFileTest : public testing::Test {
protected:
    AutostartFileTest() { makeProgram(places.program); }

    static void put(const fs::path& file, std::string_view text)
    {
        fs::create_directories(file.parent_path());
        std::ofstream{file, std::ios::binary} << text;
    }
    static void makeProgram(const fs::path& file)
    {
        put(file, "#!/bin/sh\n");
        fs::permissions(file, fs::perms::owner_all);
    }
    static std::string content(const fs::path& file)
    {
        std::ifstream stream{file, std::ios::binary};
        return {std::istreambuf_iterator<char>{stream}, {}};
    }

    [[nodiscard]] LoginItemStatus status() const { return AutostartFile{places}.status(); }
    [[nodiscard]] std::string setEnabled(bool enabled) const
    {
        const auto done = AutostartFile{places}.setEnabled(enabled);
        return done ? "" : done.error();
    }
    /// An entry that starts this program, with more lines.
    [[nodiscard]] std::string starting(std::string_view lines = "") const
    {
        return std::string{head} + "Exec=" + places.program.string() + "\n" + std::string{lines};
    }

    TemporaryFolder root;
    AutostartFile::Places places{.userFolder = root / "config/autostart",
                                 .systemFolders = {root / "first/autostart", root / "second/autostart"},
                                 .program = root / "bin/tidewell",
                                 .desktop = "ubuntu:GNOME"};
    fs::path file = places.userFolder / "org.tidewell.Tidewell.desktop";
    fs::path systemFile = places.systemFolders[1] / file.filename();
};

TEST_F(AutostartFileTest, tellsWhatTheDesktopMakesOfAnEntry)
{
    const fs::path other = root / "bin/other";
    makeProgram(other);
    const fs::path plain = root / "bin/plain";
    put(plain, "");
    const std::string missing = " names /gone, which is not there.";
    const std::string notUs = " starts " + other.string() + ", which is not this program.";
    const auto only = [](std::string_view command) {
        return fmt::format(" runs the command {} of this program, which shows nothing in the panel.",
                           command);
    };
    const std::string exec = "Exec=" + places.program.string() + "\n";
    struct Case {
        std::string text;
        bool isEnabled;
        std::string problem;  ///< What follows "The autostart entry".
    };
    const std::vector<Case> cases{
        {starting(), true, ""},
        {"# Mine\r\n\r\n[Desktop Entry]\r\nType = Application\r\nExec = " + places.program.string() +
             " %U\r\n",
         true, ""},
        {starting("Hidden=true\n"), false, ""},
        {starting("Hidden=false\nX-GNOME-Autostart-enabled=true\n"), true, ""},
        {starting("Hidden=true\nHidden=false\n"), true, ""},
        {starting("X-GNOME-Autostart-enabled=false\n"), false, ""},
        {starting("#Hidden=true\n[Other]\nHidden=true\n"), true, ""},
        {starting("OnlyShowIn=KDE;XFCE;\n"), false, " is meant for other desktops."},
        {starting("OnlyShowIn=KDE;GNOME\n"), true, ""},
        {starting("NotShowIn=ubuntu;\n"), false, " is meant for other desktops."},
        {starting("NotShowIn=KDE;\n"), true, ""},
        {starting("TryExec=/gone\n"), false, missing},
        {starting("TryExec=" + plain.string() + "\n"), false,
         " names " + plain.string() + ", which is not there."},
        {starting("TryExec=sh\n"), true, ""},
        {std::string{head}, false, " names no program."},
        {std::string{head} + "Exec=\"" + places.program.string() + "\n", false, " names no program."},
        {"[Desktop Entry]\nType=Link\n" + exec, false, " names no program."},
        {std::string{head} + "Exec=/gone --quiet\n", false, missing},
        {std::string{head} + "Exec=" + other.string() + "\n", true, notUs},
        {std::string{head} + "Exec=" + other.string() + " --delay 5 " + places.program.string() + "\n", true,
         ""},
        {std::string{head} + "Exec=sh -c 'sleep 5; tidewell'\n", true, ""},
        {std::string{head} + "Exec=sh -c 'sleep 5;(tidewell --verbose&)'\n", true, ""},
        {std::string{head} + "Exec=env LANG=C tidewell\n", true, ""},
        // It is spoken of, not started.
        {std::string{head} + "Exec=" + other.string() + " tidewell\n", true, notUs},
        {std::string{head} + "Exec=" + other.string() + " --name=tidewell /tmp/tidewell.log\n", true, notUs},
        {std::string{head} + "Exec=" + places.program.string() + " doctor\n", true, only("doctor")},
        {std::string{head} + "Exec=" + places.program.string() + " --icon wide\n", true, ""},
        {std::string{head} + "Exec=sh -c 'sleep 5; tidewell watch | cat'\n", true, only("watch")},
    };
    for (const Case& c : cases) {
        const std::string problem = c.problem.empty() ? "" : "The autostart entry" + c.problem;
        put(file, c.text);
        EXPECT_EQ(status(), (LoginItemStatus{c.isEnabled, problem})) << c.text;
        fs::remove(file);
        put(systemFile, c.text);
        EXPECT_EQ(status(), (LoginItemStatus{c.isEnabled, problem})) << "of the system: " << c.text;
        fs::remove(systemFile);
    }
    EXPECT_EQ(status(), LoginItemStatus{});
}

TEST_F(AutostartFileTest, thePersonsEntryComesBeforeTheSystemsAndTheFirstOfThoseBeforeTheSecond)
{
    put(systemFile, starting());
    EXPECT_TRUE(status().isEnabled);
    put(places.systemFolders[0] / file.filename(), starting("Hidden=true\n"));
    EXPECT_FALSE(status().isEnabled);
    put(file, starting());
    EXPECT_TRUE(status().isEnabled);
}

TEST_F(AutostartFileTest, whatAStrangeEntryNamesIsShortAndCleanInTheProblem)
{
    const std::string rest = "\xc3\xa4\xf0\x9f\x98\x80";
    std::string longName = "/";
    while (longName.size() < 200'000)
        longName += rest;
    for (const std::string& name :
         {longName, 'x' + longName, std::string{"/\x1b]0;title\a\xc2\x9b\xe2\x80\xae\x7f/gone"}})
        for (const std::string& line : {"TryExec=" + name + "\n", "Exec=" + name + "\n"}) {
            put(file, starting(line));
            const std::string problem = status().problem;
            const QString shown = QString::fromStdString(problem);
            EXPECT_TRUE(problem.starts_with("The autostart entry names ")) << problem;
            EXPECT_TRUE(problem.ends_with(name == longName || name[0] == 'x' ? "…, which is not there."
                                                                             : "/gone, which is not there."))
                << problem;
            EXPECT_LT(shown.size(), 200);
            EXPECT_EQ(shown.toStdString(), problem) << "cut within a letter";
            for (const QChar character : shown)
                EXPECT_TRUE(character.category() != QChar::Other_Control &&
                            character.category() != QChar::Other_Format)
                    << problem;
        }
}

TEST_F(AutostartFileTest, whatAnInterruptedWriteLeftIsRemovedByTheNextOne)
{
    const fs::path stray = places.userFolder / ".tidewell-0123456789abcdef.tmp";
    put(stray, "x");
    fs::last_write_time(stray, fs::file_time_type::clock::now() - std::chrono::hours{2});
    EXPECT_EQ(setEnabled(true), "");
    EXPECT_FALSE(fs::exists(stray));
}

TEST_F(AutostartFileTest, anOlderVersionsFileIsOursToo)
{
    const std::string us = places.program.string();
    const std::string older =
        "[Desktop Entry]\nName=Tidewell\nType=Application\nComment=Something else\nExec=" + us +
        "\nIcon=org.tidewell.Tidewell\nTerminal=false\nTryExec=" + us + "\n";
    put(file, older);
    EXPECT_EQ(setEnabled(false), "");
    EXPECT_FALSE(fs::exists(file));
    for (const std::string_view own :
         {"X-GNOME-Autostart-Delay=5\n", "# Mine\n", "Icon=mine\n", "Name[de]=Pegel\n"}) {
        put(file, older + std::string{own});
        EXPECT_EQ(setEnabled(false), "");
        EXPECT_TRUE(content(file).contains(own)) << "the person's";
    }
}

TEST_F(AutostartFileTest, theStandardPlacesFollowTheEnvironmentAndTheRunningProgram)
{
    std::map<std::string, std::string> variables{{"HOME", "/home/anna"}};
    FolderEnvironment environment = processEnvironment();
    environment.variable = [&variables](const char* name) -> std::optional<std::string> {
        const auto found = variables.find(name);
        return found == variables.end() ? std::nullopt : std::optional{found->second};
    };
    const fs::path link = root / "exe";
    const fs::path replaced = root / "bin/other (deleted)";
    fs::create_symlink(replaced, link);
    const auto now = [&] { return AutostartFile::standardPlaces(environment, link); };
    EXPECT_EQ(now().userFolder, "/home/anna/.config/autostart");
    EXPECT_EQ(now().systemFolders, (std::vector<fs::path>{"/etc/xdg/autostart"}));
    EXPECT_EQ(now().program, root / "bin/other") << "an update has put another one there";
    makeProgram(replaced);
    EXPECT_EQ(now().program, replaced) << "its real name";

    variables = {{"HOME", "/home/anna"},
                 {"XDG_CONFIG_HOME", "/c"},
                 {"XDG_CONFIG_DIRS", "/a:relative::/b"},
                 {"XDG_CURRENT_DESKTOP", "KDE"},
                 {"APPIMAGE", "/opt/Tidewell.AppImage"}};
    EXPECT_EQ(now().userFolder, "/c/autostart");
    EXPECT_EQ(now().systemFolders, (std::vector<fs::path>{"/a/autostart", "/b/autostart"}));
    EXPECT_EQ(now().program, "/opt/Tidewell.AppImage");
    EXPECT_EQ(now().desktop, "KDE");
    variables["APPIMAGE"] = "Tidewell.AppImage";
    EXPECT_EQ(now().program, replaced);
}

TEST_F(AutostartFileTest, aDesktopThatStartsNothingByItselfIsNamedAsTheProblem)
{
    places.desktop = "LXQt:labwc:wlroots";
    EXPECT_EQ(setEnabled(true), "");
    EXPECT_EQ(status(), LoginItemStatus{true}) << "the desktop does, whatever its compositor does not";
    EXPECT_EQ(setEnabled(false), "");
    places.desktop = "Hyprland";
    EXPECT_EQ(status(), LoginItemStatus{});
    EXPECT_EQ(setEnabled(true), "");
    EXPECT_EQ(status(), (LoginItemStatus{true,
                                         "This desktop starts nothing by itself: let its own "
                                         "configuration start " +
                                             places.program.string() + "."}));
}

TEST_F(AutostartFileTest, switchingOnAndOffLeavesNoTrace)
{
    EXPECT_EQ(setEnabled(false), "");
    EXPECT_FALSE(fs::exists(places.userFolder));
    for (int round = 0; round < 2; ++round) {
        EXPECT_EQ(setEnabled(true), "");
        EXPECT_EQ(status(), LoginItemStatus{true});
        const std::string written = content(file);
        EXPECT_EQ(setEnabled(true), "");
        EXPECT_EQ(content(file), written);
        EXPECT_EQ(setEnabled(false), "");
        EXPECT_EQ(status(), LoginItemStatus{});
        EXPECT_TRUE(fs::is_empty(places.userFolder));
    }

    // What tools of the session add to switch it off, in either way.
    EXPECT_EQ(setEnabled(true), "");
    const std::string written = content(file);
    for (const std::string& added : {"Hidden=true\n", "X-GNOME-Autostart-enabled=false\nHidden=false\n"}) {
        put(file, written + added);
        EXPECT_FALSE(status().isEnabled);
        EXPECT_EQ(setEnabled(true), "");
        EXPECT_EQ(content(file), written);
        put(file, written + added);
        EXPECT_EQ(setEnabled(false), "");
        EXPECT_FALSE(fs::exists(file));
    }
}

TEST_F(AutostartFileTest, whereTheSystemStartsItOnlyAMaskSwitchesItOff)
{
    put(systemFile, starting());
    EXPECT_EQ(setEnabled(false), "");
    EXPECT_EQ(status(), LoginItemStatus{});
    EXPECT_EQ(setEnabled(false), "");
    EXPECT_EQ(setEnabled(true), "");
    EXPECT_EQ(status(), LoginItemStatus{true});
    EXPECT_TRUE(fs::is_empty(places.userFolder));

    // One that does not start anything needs no mask, and an entry of one's own to be switched on.
    put(systemFile, starting("Hidden=true\n"));
    EXPECT_EQ(setEnabled(true), "");
    EXPECT_EQ(status(), LoginItemStatus{true});
    EXPECT_EQ(setEnabled(false), "");
    EXPECT_TRUE(fs::is_empty(places.userFolder));
    EXPECT_EQ(content(systemFile), starting("Hidden=true\n"));
}

TEST_F(AutostartFileTest, aMovedProgramIsFoundAgainBySwitchingItOn)
{
    const fs::path now = places.program;
    places.program = root / "old/tidewell";
    makeProgram(places.program);
    EXPECT_EQ(setEnabled(true), "");
    places.program = now;
    EXPECT_NE(status().problem, "") << "another copy";
    fs::remove_all(root / "old");
    EXPECT_FALSE(status().isEnabled);
    EXPECT_EQ(setEnabled(true), "");
    EXPECT_EQ(status(), LoginItemStatus{true});
    EXPECT_EQ(setEnabled(false), "");
    EXPECT_FALSE(fs::exists(file));
}

TEST_F(AutostartFileTest, whatAPersonWroteIsKept)
{
    const std::string delayed = "# Mine\n\n" + starting(
                                                   "X-GNOME-Autostart-Delay=10\nName[de]=Gezeiten\n\n"
                                                   "[Desktop Action Quiet]\nHidden=true\nExec=x\n");
    put(file, delayed);
    EXPECT_EQ(setEnabled(false), "");
    EXPECT_FALSE(status().isEnabled);
    EXPECT_NE(content(file), delayed);
    EXPECT_EQ(setEnabled(false), "");
    EXPECT_EQ(setEnabled(true), "");
    EXPECT_EQ(content(file), delayed);

    struct Case {
        std::string before, after;
    };
    const std::string us = places.program.string();
    const std::string own = std::string{head} + "Exec=sh -c \"exec tidewell\"\n";
    for (const auto& [before, after] : std::vector<Case>{
             {own + "Hidden=true\n", own},
             {own + "OnlyShowIn=KDE;\n", own + "OnlyShowIn=KDE;ubuntu;\n"},
             {own + "NotShowIn=KDE;GNOME;\n", own + "NotShowIn=KDE;\n"},
             {own + "NotShowIn=GNOME;\n", own},
             {own + "TryExec=/gone\n", own + "TryExec=" + us + "\n"},
             {std::string{head} + "Icon=mine\nExec=/gone/tidewell --quiet\n",
              std::string{head} + "Icon=mine\nExec=" + us + "\n"},
             {"[Desktop Entry]\nIcon=mine\n",
              "[Desktop Entry]\nIcon=mine\nExec=" + us + "\nType=Application\n"},
         }) {
        put(file, before);
        EXPECT_EQ(setEnabled(true), "") << before;
        EXPECT_EQ(content(file), after);
        EXPECT_EQ(status(), LoginItemStatus{true}) << after;
    }

    // Kept elsewhere, and linked to.
    const fs::path kept = root / "dotfiles/tidewell.desktop";
    put(kept, own);
    fs::remove(file);
    fs::create_symlink(kept, file);
    EXPECT_EQ(setEnabled(false), "");
    EXPECT_TRUE(fs::is_symlink(file));
    EXPECT_EQ(content(kept), own + "Hidden=true\n");
}

TEST_F(AutostartFileTest, whatIsNoEntryIsNamedAndLeftAlone)
{
    const fs::path secret = root / "diary";
    const std::vector<std::pair<std::string, std::function<void()>>> cases{
        {"a folder", [&] { fs::create_directories(file); }},
        {"a text", [&] { put(file, "Dear diary\n"); }},
        {"a link to a text", [&] { put(secret, "Dear diary\n"), fs::create_symlink(secret, file); }},
        {"another group", [&] { put(file, "[Other]\nExec=/x\n"); }},
        {"a byte zero", [&] { put(file, starting() + std::string(1, '\0')); }},
        {"enormous", [&] { put(file, starting("# ") + std::string(1 << 20, 'x')); }},
        {"a mask", [&] { fs::create_symlink("/dev/null", file); }},
        {"a link to itself", [&] { fs::create_symlink(file.filename(), file); }},
        {"a pipe", [&] { ASSERT_EQ(::mkfifo(file.c_str(), 0600), 0); }},
        {"unreadable", [&] { put(file, starting()), fs::permissions(file, fs::perms::none); }},
    };
    for (const auto& [name, make] : cases) {
        SCOPED_TRACE(name);
        fs::create_directories(places.userFolder);
        make();
        const auto type = fs::symlink_status(file).type();
        std::error_code notFound;
        const bool isFile = fs::is_regular_file(file, notFound);
        const std::string before = isFile ? content(file) : "";
        // Who may read everything reads this too, and finds a good entry.
        if (name == "unreadable" && ::access(file.c_str(), R_OK) == 0) {
            fs::remove(file);
            continue;
        }
        EXPECT_FALSE(status().isEnabled);
        EXPECT_FALSE(status().isChangeable);
        EXPECT_TRUE(status().problem.contains(file.string())) << status().problem;
        for (const bool enabled : {true, false})
            EXPECT_TRUE(setEnabled(enabled).contains(file.string()));
        EXPECT_EQ(fs::symlink_status(file).type(), type);
        if (isFile)
            EXPECT_EQ(content(file), before);
        fs::remove_all(file);
    }
    // A home that cannot be written to; some users may write everywhere.
    fs::permissions(places.userFolder, fs::perms::owner_read | fs::perms::owner_exec);
    if (::access(places.userFolder.c_str(), W_OK) != 0) {
        EXPECT_TRUE(setEnabled(true).contains("could not be written"));
        EXPECT_TRUE(fs::is_empty(places.userFolder));
    }
    fs::permissions(places.userFolder, fs::perms::owner_all);
    // A file where the folder should be, and no place at all.
    fs::remove_all(root / "config");
    put(root / "config", "x");
    EXPECT_NE(setEnabled(true), "");
    EXPECT_EQ(content(root / "config"), "x");
    places.userFolder.clear();
    EXPECT_NE(status().problem, "");
    EXPECT_NE(setEnabled(true), "");
}

TEST_F(AutostartFileTest, everyPathIsQuotedSoThatItIsReadBackAsItIs)
{
    struct Case {
        std::string name, exec, tryExec;
    };
    // As the Desktop Entry Specification has it: first quoted for the command, then escaped as a text.
    for (const auto& [name, exec, tryExec] : std::vector<Case>{
             {"tidewell", "@tidewell", "tidewell"},
             {"a b", "\"@a b\"", "a b"},
             {"a\"b", R"("@a\\"b")", "a\"b"},
             {"a$b", R"("@a\\$b")", "a$b"},
             {"a`b", R"("@a\\`b")", "a`b"},
             {R"(a\b)", R"("@a\\\\b")", R"(a\\b)"},
             {"100%", "@100%%", "100%"},
             {"%f", "@%%f", "%f"},
             {"it's;#&", "\"@it's;#&\"", "it's;#&"},
             {"glucose-ärmel", "@glucose-ärmel", "glucose-ärmel"},
             {"a\nb\tc", R"("@a\nb\tc")", R"(a\nb\tc)"},
         }) {
        SCOPED_TRACE(name);
        places.program = root / name;
        makeProgram(places.program);
        EXPECT_EQ(setEnabled(true), "");
        std::string line = "\nExec=" + exec + "\n";
        line.replace(line.find('@'), 1, root.path().string() + "/");
        EXPECT_TRUE(content(file).contains(line)) << content(file);
        EXPECT_TRUE(content(file).contains("\nTryExec=" + (root / tryExec).string() + "\n")) << content(file);
        EXPECT_EQ(status(), LoginItemStatus{true});
        EXPECT_EQ(setEnabled(false), "");
        EXPECT_FALSE(fs::exists(file));
    }
}

TEST(DesktopEntryTest, whateverIsWrittenIsReadBackAndNothingElseChanges)
{
    constexpr std::string_view bytes = "ab =;#[]%\"'\\`$\n\t\r~*fU\xC3\xA4";
    SeededRandom random{1};
    for (int round = 0; round < 2000; ++round) {
        const auto word = [&] {
            std::string made;
            for (auto length = random.next() % 8; length > 0; --length)
                made += bytes[random.next() % bytes.size()];
            return made;
        };
        std::string before = "# " + word() + "\n[Desktop Entry]\n";
        std::ranges::replace(before, '\r', ' ');
        auto entry = DesktopEntry::parse(before);
        if (!entry)
            continue;  // The comment opened another group.
        Words command{"tidewell"};
        for (auto count = random.next() % 4; count > 0; --count)
            command.push_back(word());
        const std::string name = word();
        const bool isTrimmed = name.empty() || name.find_last_of(" ") != name.size() - 1;
        entry->set("Exec", execValue(command));
        entry->set("Name", name);
        const auto read = DesktopEntry::parse(entry->text()).value();
        EXPECT_EQ(execArguments(read.value("Exec").value()), command);
        if (isTrimmed)
            EXPECT_EQ(read.value("Name"), name);
        entry->remove("Exec");
        entry->remove("Name");
        EXPECT_EQ(entry->text(), before);
    }
}

TEST(DesktopEntryTest, readsCommandsAsDesktopsDo)
{
    struct Case {
        std::string value;
        Words arguments;
    };
    for (const auto& [value, arguments] : std::vector<Case>{
             {"", {}},
             {"   ", {}},
             {"a  b\tc ", {"a", "b", "c"}},
             {"a %U --at=%f 50%% %%f", {"a", "--at=", "50%", "%f"}},
             {R"("a b" c"d e"f)", {"a b", "cd ef"}},
             {R"(a "" '')", {"a", "", ""}},
             {R"("\$\`\"\\" 'a\b"')", {R"($`"\)", R"(a\b")"}},
             {"a \"b", {}},
             {"a 'b", {}},
             {"a\\", {"a\\"}},
         })
        EXPECT_EQ(execArguments(value), arguments) << value;
}

}  // namespace
}  // namespace tidewell
