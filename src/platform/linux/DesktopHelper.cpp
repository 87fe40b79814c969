#include "platform/linux/DesktopHelper.h"

#include <unistd.h>
#include <QApplication>
#include <QProcess>
#include <QSystemTrayIcon>
#include <QTimer>
#include <algorithm>
#include <array>
#include <boost/asio/as_tuple.hpp>
#include <boost/asio/experimental/channel.hpp>
#include <boost/system/system_error.hpp>
#include <charconv>
#include <cmath>
#include <utility>
#include <vector>

#include "platform/linux/AlertSound.h"
#include "platform/linux/DesktopSettings.h"
#include "platform/linux/SoundPlayer.h"

namespace tidewell {
namespace {

using namespace std::chrono_literals;

constexpr std::string_view helperWord = "--desktop-helper";
constexpr std::string_view playWord = "play";
constexpr std::string_view soundWord = "sound";
constexpr std::string_view settingWord = "setting";
constexpr std::string_view trayWord = "tray";
constexpr std::array helperWords{playWord, soundWord, settingWord, trayWord};
constexpr std::string_view urgentWord = "urgent";

/// Ends the helper by itself, also when nobody is left to end it.
constexpr unsigned helperSeconds = 20;
/// Of the question to the sound server.
constexpr std::chrono::milliseconds serverDeadline = 1500ms;

/// What the helper says of a sound.
constexpr std::array<std::pair<SoundOutcome, std::string_view>, 4> outcomeWords{
    {{SoundOutcome::played, "played"},
     {SoundOutcome::noTheme, "no-theme"},
     {SoundOutcome::noLibrary, "no-library"},
     {SoundOutcome::failed, "failed"}}};

std::string_view word(std::optional<bool> truth) { return !truth ? "-" : *truth ? "yes" : "no"; }

/// False when it is none of the words.
bool readWord(std::string_view text, std::optional<bool>& truth)
{
    truth = text == "-" ? std::nullopt : std::optional{text == "yes"};
    return text == word(truth);
}

QString text(std::string_view word)
{
    return QString::fromUtf8(word.data(), static_cast<qsizetype>(word.size()));
}

// --- In the helper ---

SoundOutcome play(NotificationTone tone)
{
    const auto file = alertSoundFile(tone, xdgDataFolders());
    if (file.empty())
        return SoundOutcome::noTheme;
    if (!canPlaySounds())
        return SoundOutcome::noLibrary;
    return playSoundFile(file) ? SoundOutcome::played : SoundOutcome::failed;
}

SoundReport look(const std::string& server)
{
    const auto folders = xdgDataFolders();
    return {.output = askSoundOutput(server, serverDeadline),
            .soundsInstalled = !alertSoundFile(NotificationTone::urgent, folders).empty() &&
                               !alertSoundFile(NotificationTone::standard, folders).empty() &&
                               canPlaySounds()};
}

/// The toolkit knows both kinds of status area. It ends the process where there is no display.
bool hasStatusArea()
{
    std::string name{"tidewell"};
    std::array<char*, 2> values{name.data(), nullptr};
    int count = 1;
    const QApplication application{count, values.data()};
    return QSystemTrayIcon::isSystemTrayAvailable();
}

std::string answer(std::string_view question, const std::string& argument)
{
    if (question == trayWord)
        return std::string{word(hasStatusArea())};
    if (question == soundWord)
        return soundReportLine(look(argument));
    if (question == settingWord) {
        const std::size_t space = std::min(argument.find(' '), argument.size() - 1);
        return desktopSetting(argument.substr(0, space), argument.substr(space + 1)).value_or("");
    }
    const SoundOutcome outcome =
        play(argument == urgentWord ? NotificationTone::urgent : NotificationTone::standard);
    for (const auto& [value, name] : outcomeWords)
        if (value == outcome)
            return std::string{name};
    std::unreachable();
}

// --- In the program ---

/// Ends the helper with the caller, without waiting for its end.
struct Helper {
    QProcess* process = new QProcess;
    ~Helper()
    {
        process->disconnect();
        if (process->state() == QProcess::NotRunning) {
            process->deleteLater();
            return;
        }
        QObject::connect(process, &QProcess::finished, process, &QObject::deleteLater);
        process->kill();
    }
};

/// The helper's line; empty when it failed or did not end in time.
asio::awaitable<std::optional<std::string>> run(QString program, QStringList arguments,
                                                std::chrono::milliseconds limit)
{
    using Wake = asio::experimental::channel<void(boost::system::error_code)>;
    const auto wake = std::make_shared<Wake>(co_await asio::this_coro::executor, 1);
    const auto ended = [wake] { wake->try_send(boost::system::error_code{}); };
    const Helper helper;
    QProcess* const process = helper.process;
    QObject::connect(process, &QProcess::finished, process, ended);
    QObject::connect(process, &QProcess::errorOccurred, process, ended);
    QTimer::singleShot(limit, process, [process] { process->kill(); });
    // The libraries complain on the terminal of what they then tell by their results too.
    process->setStandardErrorFile(QProcess::nullDevice());
    process->start(program, arguments, QIODevice::ReadOnly);
    const auto [cancelled] = co_await wake->async_receive(asio::as_tuple(asio::use_awaitable));
    if (cancelled)
        throw boost::system::system_error{asio::error::operation_aborted};
    if (process->state() != QProcess::NotRunning || process->error() != QProcess::UnknownError ||
        process->exitStatus() != QProcess::NormalExit || process->exitCode() != 0)
        co_return std::nullopt;
    co_return process->readAllStandardOutput().trimmed().toStdString();
}

}  // namespace

void beDesktopHelperWhenAsked(int count, char** values)
{
    if (count != 4 || values[1] != helperWord ||
        std::ranges::find(helperWords, std::string_view{values[2]}) == helperWords.end())
        return;
    ::alarm(helperSeconds);
    const std::string line = answer(values[2], values[3]) + '\n';
    const bool told = ::write(STDOUT_FILENO, line.data(), line.size()) == static_cast<ssize_t>(line.size());
    // The libraries' own threads are left where they are.
    ::_exit(told ? 0 : 1);
}

std::string soundReportLine(const SoundReport& report)
{
    std::array<char, 32> digits{};
    std::string volume = "-";
    if (report.output.volume)
        volume.assign(digits.data(),
                      std::to_chars(digits.data(), digits.data() + digits.size(), *report.output.volume).ptr);
    std::string line{word(report.output.present)};
    line.append(" ").append(word(report.output.muted)).append(" ").append(volume).append(" ");
    return line.append(word(report.soundsInstalled));
}

std::optional<SoundReport> soundReport(std::string_view line)
{
    std::vector<std::string_view> words;
    for (std::size_t begin = 0; begin <= line.size() && words.size() < 5;) {
        const std::size_t end = std::min(line.find(' ', begin), line.size());
        words.push_back(line.substr(begin, end - begin));
        begin = end + 1;
    }
    SoundReport report;
    std::optional<bool> installed;
    if (words.size() != 4 || !readWord(words[0], report.output.present) ||
        !readWord(words[1], report.output.muted) || !readWord(words[3], installed) || !installed)
        return std::nullopt;
    report.soundsInstalled = *installed;
    if (words[2] != "-") {
        double volume = 0;
        const char* const end = words[2].data() + words[2].size();
        const auto [stopped, error] = std::from_chars(words[2].data(), end, volume);
        if (error != std::errc{} || stopped != end || !std::isfinite(volume) || volume < 0)
            return std::nullopt;
        report.output.volume = volume;
    }
    return report;
}

asio::awaitable<SoundOutcome> playInHelper(QString program, NotificationTone tone,
                                           std::chrono::milliseconds limit)
{
    const QStringList arguments{
        text(helperWord), text(playWord),
        tone == NotificationTone::urgent ? text(urgentWord) : QStringLiteral("standard")};
    const auto line = co_await run(std::move(program), arguments, limit);
    if (!line)
        co_return SoundOutcome::hung;
    for (const auto& [value, name] : outcomeWords)
        if (*line == name)
            co_return value;
    co_return SoundOutcome::failed;
}

asio::awaitable<std::optional<SoundReport>> lookInHelper(QString program, std::string server,
                                                         std::chrono::milliseconds limit)
{
    const QStringList arguments{text(helperWord), text(soundWord), QString::fromStdString(server)};
    const auto line = co_await run(std::move(program), arguments, limit);
    co_return line ? soundReport(*line) : std::nullopt;
}

asio::awaitable<std::optional<bool>> statusAreaFromHelper(QString program, std::chrono::milliseconds limit)
{
    const QStringList arguments{text(helperWord), text(trayWord), QString{}};
    const auto line = co_await run(std::move(program), arguments, limit);
    std::optional<bool> there;
    if (!line || !readWord(*line, there))
        co_return std::nullopt;
    co_return there;
}

asio::awaitable<std::optional<std::string>> settingFromHelper(QString program, std::string schema,
                                                              std::string key,
                                                              std::chrono::milliseconds limit)
{
    const QStringList arguments{text(helperWord), text(settingWord),
                                QString::fromStdString(schema + ' ' + key)};
    auto line = co_await run(std::move(program), arguments, limit);
    if (line && line->empty())
        line.reset();
    co_return line;
}

}  // namespace tidewell
