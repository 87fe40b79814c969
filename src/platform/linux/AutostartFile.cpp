#include "platform/linux/AutostartFile.h"

#include <QStandardPaths>
#include <QString>

#include <fmt/format.h>

#include <algorithm>
#include <array>
#include <cctype>
#include <optional>
#include <ranges>
#include <span>

#include "platform/linux/DesktopEntry.h"
#include "platform/linux/Folders.h"
#include "support/AtomicFile.h"
#include "support/FileSystem.h"

namespace tidewell {

namespace {

namespace fs = std::filesystem;
using Failure = std::unexpected<std::string>;

constexpr std::string_view fileName = "org.tidewell.Tidewell.desktop";
/// A desktop entry with every translation that there may be is a tenth of that.
constexpr std::size_t longestEntry = 256 * 1024;

constexpr std::string_view iconName = "org.tidewell.Tidewell";
constexpr std::string_view enabledByGnome = "X-GNOME-Autostart-enabled";

/// These start nothing at login but what their own configuration says.
constexpr auto desktopsWithoutAutostart =
    std::to_array<std::string_view>({"sway", "i3", "hyprland", "river", "labwc", "wayfire", "dwl", "awesome",
                                     "bspwm", "dwm", "herbstluftwm", "xmonad", "qtile"});

/// Programs that start the one that is named to them.
constexpr auto starters = std::to_array<std::string_view>(
    {"sh",          "bash",    "dash",     "zsh",      "ksh",       "fish",        "env",
     "nice",        "ionice",  "chrt",     "taskset",  "nohup",     "setsid",      "timeout",
     "stdbuf",      "flatpak", "snap",     "firejail", "prime-run", "gamemoderun", "systemd-run",
     "systemd-cat", "uwsm",    "uwsm-app", "app2unit", "dex",       "gtk-launch",  "dbus-run-session"});

/// Of a name in a message.
constexpr qsizetype longestName = 120;

bool has(const auto& range, const auto& value) { return std::ranges::find(range, value) != range.end(); }

std::string smallLetters(std::string_view text)
{
    std::string small{text};
    std::ranges::transform(small, small.begin(),
                           [](unsigned char c) { return static_cast<char>(std::tolower(c)); });
    return small;
}

std::vector<std::string> desktopNames(std::string_view desktop)
{
    std::vector<std::string> names;
    for (const auto range : std::views::split(desktop, ':'))
        if (const std::string_view name{range}; !name.empty())
            names.emplace_back(name);
    return names;
}

/// The file of a program that is named by a path or is looked for; empty when it cannot be run.
fs::path runnable(const std::string& program)
{
    return QStandardPaths::findExecutable(QString::fromStdString(program)).toStdString();
}

bool isSameFile(const fs::path& one, const fs::path& other)
{
    std::error_code error;
    return one == other || fs::equivalent(one, other, error);
}

/// What a file names, as it may stand in a message: what is in the file may be anything.
std::string shownName(const std::string& name)
{
    // A letter has four bytes at most, and a value may have many thousands.
    constexpr std::size_t enough = 8 * longestName;
    QString shown = QString::fromStdString(name.substr(0, enough));
    for (QChar& character : shown)
        if (const auto category = character.category();
            category == QChar::Other_Control || category == QChar::Other_Format ||
            category == QChar::Separator_Line || category == QChar::Separator_Paragraph)
            character = QChar::ReplacementCharacter;
    if (shown.size() > longestName) {
        const bool splitsPair = shown.at(longestName - 2).isHighSurrogate();
        shown.truncate(longestName - (splitsPair ? 2 : 1));
        shown += u'…';
    }
    return shown.toStdString();
}

/// A path of ours in a message: whole, so that it can be found.
std::string shownPath(const fs::path& path)
{
    std::string shown = path.string();
    std::ranges::replace_if(shown, [](unsigned char c) { return std::iscntrl(c) != 0; }, '?');
    return shown;
}

/// The words of a command, also of one in a shell's argument; what ends a command there is a word "".
std::vector<std::string> wordsOf(std::span<const std::string> arguments)
{
    std::vector<std::string> words;
    for (const std::string& argument : arguments) {
        bool isOpen = false;
        for (const char c : argument) {
            const bool ends = std::string_view{";&|()\n"}.contains(c);
            if (ends)
                words.emplace_back();
            isOpen = isOpen && !ends && !std::string_view{" \t\"'"}.contains(c);
            if (isOpen)
                words.back() += c;
            else if (!ends && !std::string_view{" \t\"'"}.contains(c))
                isOpen = (words.emplace_back(1, c), true);
        }
    }
    return words;
}

/// What the desktop makes of an entry.
struct Verdict {
    bool isOff = false;  ///< Switched off, whatever else it says.
    bool starts = false;
    bool startsUs = false;  ///< ... and this program at that.
    std::string problem{};
};

class Judge {
public:
    Judge(const fs::path& program, std::string_view desktop)
        : program_{program}, desktops_{desktopNames(desktop)}
    {
    }

    [[nodiscard]] Verdict verdict(const DesktopEntry& entry) const
    {
        if (entry.flag("Hidden", false) || !entry.flag(enabledByGnome, true))
            return {.isOff = true};
        if (!isForThisDesktop(entry))
            return {.problem = "The autostart entry is meant for other desktops."};
        const std::vector<std::string> command = execArguments(entry.value("Exec").value_or(""));
        if (entry.value("Type") != "Application" || command.empty() || command.front().empty())
            return {.problem = "The autostart entry names no program."};
        if (const auto condition = entry.value("TryExec");
            condition && !condition->empty() && runnable(*condition).empty())
            return {.problem = missing(*condition)};
        const fs::path found = runnable(command.front());
        if (found.empty())
            return {.problem = missing(command.front())};
        const Call call = callOfUs(command, found);
        if (!call.isMade)
            return {.starts = true,
                    .problem = fmt::format("The autostart entry starts {}, which is not this program.",
                                           shownName(found.string()))};
        if (!call.subcommand.empty())
            return {.starts = true,
                    .problem = fmt::format("The autostart entry runs the command {} of this program, which "
                                           "shows nothing in the panel.",
                                           shownName(call.subcommand))};
        return {.starts = true, .startsUs = true, .problem = desktopProblem()};
    }

    /// Takes back whatever keeps an entry from starting, and nothing else.
    void mend(DesktopEntry& entry) const
    {
        entry.remove("Hidden");
        entry.remove(enabledByGnome);
        if (!isForThisDesktop(entry)) {
            auto shown = entry.list("OnlyShowIn");
            if (!shown.empty() && !desktops_.empty() && !namesThisDesktop(shown))
                shown.push_back(desktops_.front());
            entry.set("OnlyShowIn", desktops_.empty() ? std::vector<std::string>{} : shown);
            auto hidden = entry.list("NotShowIn");
            std::erase_if(hidden, [this](const auto& name) { return has(desktops_, name); });
            entry.set("NotShowIn", hidden);
        }
        if (const auto condition = entry.value("TryExec"); condition && runnable(*condition).empty())
            entry.set("TryExec", program_.string());
        const auto command = execArguments(entry.value("Exec").value_or(""));
        if (command.empty() || runnable(command.front()).empty())
            entry.set("Exec", execValue(std::array{program_.string()}));
        entry.set("Type", "Application");
    }

private:
    /// How a command starts this program.
    struct Call {
        bool isMade = false;
        std::string subcommand{};  ///< One that ends by itself or prints; empty for the item in the panel.
    };

    /// Directly, or by a person's own command: a shell that waits first, for instance.
    [[nodiscard]] Call callOfUs(const std::vector<std::string>& command, const fs::path& found) const
    {
        const std::vector<std::string> words = wordsOf(std::span{command}.subspan(1));
        const auto isSubcommand = [](const std::string& word) {
            return !word.empty() && std::islower(static_cast<unsigned char>(word.front())) != 0;
        };
        if (isSameFile(found, program_))
            return {true, !words.empty() && isSubcommand(words.front()) ? words.front() : ""};
        const std::string us = program_.filename().string();
        const bool startsOthers = has(starters, found.filename().string());
        for (auto word = words.begin(); word != words.end(); ++word) {
            if (fs::path{*word}.filename() != us || (*word == us && !startsOthers))
                continue;
            const auto next = std::next(word);
            return {true, next != words.end() && isSubcommand(*next) ? *next : ""};
        }
        return {};
    }

    [[nodiscard]] bool namesThisDesktop(const std::vector<std::string>& names) const
    {
        return std::ranges::any_of(desktops_, [&names](const auto& name) { return has(names, name); });
    }

    [[nodiscard]] bool isForThisDesktop(const DesktopEntry& entry) const
    {
        const auto only = entry.list("OnlyShowIn");
        return (only.empty() || namesThisDesktop(only)) && !namesThisDesktop(entry.list("NotShowIn"));
    }

    [[nodiscard]] static std::string missing(const std::string& program)
    {
        return fmt::format("The autostart entry names {}, which is not there.", shownName(program));
    }

    [[nodiscard]] std::string desktopProblem() const
    {
        // The first is the desktop; a compositor that it uses may follow.
        if (desktops_.empty() || !has(desktopsWithoutAutostart, smallLetters(desktops_.front())))
            return {};
        return fmt::format("This desktop starts nothing by itself: let its own configuration start {}.",
                           shownName(program_.string()));
    }

    const fs::path& program_;
    std::vector<std::string> desktops_;
};

/// An entry, or that there is none, or why the file that is there is none.
std::expected<std::optional<DesktopEntry>, std::string> readEntry(const fs::path& file)
{
    const auto text = readFile(file, longestEntry);
    if (!text && (text.error() == std::errc::is_a_directory || text.error() == std::errc::invalid_argument ||
                  text.error() == std::errc::file_too_large))
        return Failure{fmt::format("{} is not a desktop entry.", shownPath(file))};
    if (!text)
        return Failure{fmt::format("{} could not be read: {}.", shownPath(file), text.error().message())};
    if (!*text)
        return std::nullopt;
    auto entry = DesktopEntry::parse(**text);
    // An empty file is what is left of a write that failed, and nobody misses what is in it.
    if (!entry && (*text)->find_first_not_of(" \t\r\n") != std::string::npos)
        return Failure{fmt::format("{} is not a desktop entry.", shownPath(file))};
    return entry;
}

std::string ownEntry(const fs::path& program)
{
    auto entry = DesktopEntry::parse("[Desktop Entry]\nType=Application\nName=Tidewell\n").value();
    entry.set("Comment", "Shows the latest glucose reading in the panel");
    entry.set("Exec", execValue(std::array{program.string()}));
    entry.set("TryExec", program.string());
    entry.set("Icon", iconName);
    entry.set("Terminal", "false");
    return entry.text();
}

constexpr std::string_view hidingEntry = "[Desktop Entry]\nType=Application\nName=Tidewell\nHidden=true\n";

/// Whether nobody has changed it but this program, also an older version, and the desktop's own tools, which
/// switch entries off and on: nothing is lost with it. It may be of another copy of the program.
bool isOurs(DesktopEntry entry)
{
    const auto tookOut = [&entry](std::string_view key, std::string_view value) {
        const bool isAsWritten = entry.value(key) == value;
        entry.remove(key);
        return isAsWritten;
    };
    const std::string exec = entry.value("Exec").value_or("");
    const auto command = execArguments(exec);
    const bool isHiding = exec.empty() && entry.flag("Hidden", false);
    const bool isStarting = command.size() == 1 && tookOut("TryExec", command.front()) &&
                            tookOut("Icon", iconName) && tookOut("Terminal", "false");
    for (const std::string_view key :
         {std::string_view{"Hidden"}, enabledByGnome, std::string_view{"Exec"}, std::string_view{"Comment"}})
        entry.remove(key);
    return (isHiding || isStarting) && tookOut("Type", "Application") && tookOut("Name", "Tidewell") &&
           entry.text() == "[Desktop Entry]\n";
}

/// The file by that name that the desktop takes: the person's, else the first of the system's.
struct Entries {
    fs::path file;                         ///< The person's.
    std::optional<DesktopEntry> own{};     ///< What it holds.
    std::optional<DesktopEntry> system{};  ///< The one that it hides.
};

std::expected<Entries, std::string> readEntries(const AutostartFile::Places& places)
{
    if (!places.userFolder.is_absolute())
        return Failure{"There is no folder for the programs that start at login."};
    Entries entries{.file = places.userFolder / fileName};
    auto own = readEntry(entries.file);
    if (!own)
        return Failure{own.error()};
    entries.own = std::move(*own);
    for (const fs::path& folder : places.systemFolders) {
        // One that cannot be read is none to the desktop either.
        if (auto system = readEntry(folder / fileName); system && *system) {
            entries.system = std::move(*system);
            break;
        }
    }
    return entries;
}

std::expected<void, std::string> written(const fs::path& file, std::string_view text)
{
    std::error_code error = makePrivateFolder(folderOf(file));
    removeStrayTemporaries(folderOf(file));
    if (!error)
        error = writeFileAtomically(file, text);
    if (error)
        return Failure{fmt::format("{} could not be written: {}.", shownPath(file), error.message())};
    return {};
}

/// Of a symbolic link, the link.
std::expected<void, std::string> removed(const fs::path& file)
{
    SystemFileSystem files;
    if (!files.exists(file).value_or(true))
        return {};
    std::error_code error = files.removeFile(file);
    if (!error)
        error = files.syncFolder(folderOf(file));
    if (error)
        return Failure{fmt::format("{} could not be removed: {}.", shownPath(file), error.message())};
    return {};
}

fs::path runningProgram(const FolderEnvironment& environment, const fs::path& running)
{
    // The program that a mounted image runs is gone with the mount.
    if (const auto image = environment.variable("APPIMAGE"); image && fs::path{*image}.is_absolute())
        return *image;
    std::error_code error;
    const fs::path program = fs::read_symlink(running, error);
    // How the kernel calls a file that was replaced meanwhile, by an update for instance.
    constexpr std::string_view replaced = " (deleted)";
    std::string name = program.string();
    if (name.ends_with(replaced) && !fs::exists(program, error))
        name.resize(name.size() - replaced.size());
    return name;
}

}  // namespace

AutostartFile::Places AutostartFile::standardPlaces(const FolderEnvironment& environment,
                                                    const fs::path& running)
{
    const auto& variable = environment.variable;
    Places places{.program = runningProgram(environment, running),
                  .desktop = variable("XDG_CURRENT_DESKTOP").value_or("")};
    if (const auto folders = standardFolders(environment))
        places.userFolder = folders->configuration.parent_path() / "autostart";
    std::string named = variable("XDG_CONFIG_DIRS").value_or("");
    if (named.empty())
        named = "/etc/xdg";
    for (const auto range : std::views::split(named, ':'))
        if (const fs::path folder{std::string_view{range}}; folder.is_absolute())
            places.systemFolders.push_back(folder / "autostart");
    return places;
}

AutostartFile::AutostartFile(Places places) : places_{std::move(places)} {}

LoginItemStatus AutostartFile::status()
{
    const auto entries = readEntries(places_);
    if (!entries)
        return {.problem = entries.error(), .isChangeable = false};
    const auto& entry = entries->own ? entries->own : entries->system;
    if (!entry)
        return {};
    Verdict verdict = Judge{places_.program, places_.desktop}.verdict(*entry);
    return {.isEnabled = verdict.starts, .problem = std::move(verdict.problem)};
}

std::expected<void, std::string> AutostartFile::setEnabled(bool enabled)
{
    const auto entries = readEntries(places_);
    if (!entries)
        return Failure{entries.error()};
    const Judge judge{places_.program, places_.desktop};
    const auto& [file, own, system] = *entries;
    const Verdict systems = system ? judge.verdict(*system) : Verdict{};
    const bool replaceable = !own || isOurs(*own);

    if (!enabled) {
        if (replaceable && systems.starts)
            return written(file, hidingEntry);
        if (replaceable)
            return removed(file);
        if (judge.verdict(*own).isOff)
            return {};
        DesktopEntry changed = *own;
        changed.set("Hidden", "true");
        return written(file, changed.text());
    }

    const Verdict now = own ? judge.verdict(*own) : systems;
    if (now.startsUs || (now.starts && !replaceable))
        return {};
    if (replaceable)
        return systems.startsUs ? removed(file) : written(file, ownEntry(places_.program));
    DesktopEntry changed = *own;
    judge.mend(changed);
    if (Verdict mended = judge.verdict(changed); !mended.starts)
        return Failure{std::move(mended.problem)};
    return written(file, changed.text());
}

}  // namespace tidewell
