#include "support/Log.h"

#include <spdlog/pattern_formatter.h>
#include <spdlog/sinks/stdout_sinks.h>
#if TIDEWELL_JOURNAL
#include <spdlog/sinks/systemd_sink.h>
#endif
#include <sys/stat.h>
#include <unistd.h>

#include <fmt/format.h>

#include <cstdlib>
#include <filesystem>
#include <memory>
#include <mutex>
#include <utility>

namespace tidewell {

namespace {

constexpr std::size_t longestLine = 4096;

std::mutex sinkMutex;
LogSink currentSink;
/// A sink that logs would wait for itself; what it says is left out.
thread_local bool insideSink = false;

/// One line of printable text: a control character, of ASCII or of Unicode's C1 block, becomes a space.
std::string printable(std::string_view line)
{
    std::string_view kept = line.substr(0, longestLine);
    if (kept.size() < line.size()) {
        // Not in the middle of a UTF-8 character; the mark is for whoever reads the log.
        std::size_t end = longestLine - 3;
        while (end > 0 && (static_cast<unsigned char>(line[end]) & 0xC0) == 0x80)
            --end;
        kept = line.substr(0, end);
    }
    std::string text{kept};
    for (std::size_t i = 0; i < text.size(); ++i) {
        const auto byte = static_cast<unsigned char>(text[i]);
        if (byte < 0x20 || byte == 0x7F) {
            text[i] = ' ';
        } else if (byte == 0xC2 && i + 1 < text.size() && static_cast<unsigned char>(text[i + 1]) < 0xA0) {
            text[i] = ' ';
            text[i + 1] = ' ';
        }
    }
    return kept.size() < line.size() ? text + "..." : text;
}

spdlog::level::level_enum levelOf(LogLevel level)
{
    switch (level) {
    case LogLevel::debug: return spdlog::level::debug;
    case LogLevel::info: return spdlog::level::info;
    case LogLevel::warning: return spdlog::level::warn;
    case LogLevel::error: return spdlog::level::err;
    }
    std::unreachable();
}

/// Whether standard error already ends in the journal: systemd then names its device and inode in
/// JOURNAL_STREAM (systemd.exec(5)).
bool standardErrorIsJournal()
{
    const char* const stream = std::getenv("JOURNAL_STREAM");
    struct stat status{};
    if (!stream || fstat(STDERR_FILENO, &status) != 0)
        return false;
    return fmt::format("{}:{}", status.st_dev, status.st_ino) == stream;
}

#if TIDEWELL_JOURNAL
/// The journal's sink, or none where no journal listens.
std::shared_ptr<spdlog::sinks::sink> journalSink()
{
    std::error_code ignored;
    if (!std::filesystem::is_socket("/run/systemd/journal/socket", ignored))
        return nullptr;
    auto sink = std::make_shared<spdlog::sinks::systemd_sink_mt>(std::string{logSubsystem}, true);
    sink->set_pattern("[%n] %v");
    return sink;
}
#else
std::shared_ptr<spdlog::sinks::sink> journalSink() { return nullptr; }
#endif

std::shared_ptr<spdlog::sinks::sink> terminalSink()
{
    auto sink = std::make_shared<spdlog::sinks::stderr_sink_mt>();
    sink->set_pattern("%H:%M:%S.%e %l [%n] %v");
    return sink;
}

void writeTo(spdlog::sinks::sink& sink, const spdlog::details::log_msg& message)
{
    try {
        sink.log(message);
        sink.flush();
    } catch (const std::exception&) {  // NOLINT(bugprone-empty-catch): there is nowhere left to say it.
    }
}

}  // namespace

void Log::write(LogLevel level, std::string_view line) const
{
    if (insideSink)
        return;
    const std::lock_guard lock{sinkMutex};
    if (!currentSink)
        return;
    insideSink = true;
    try {
        currentSink(level, category_, printable(line));
    } catch (...) {  // NOLINT(bugprone-empty-catch): logging never fails its caller.
    }
    insideSink = false;
}

LogSink setLogSink(LogSink sink)
{
    const std::lock_guard lock{sinkMutex};
    return std::exchange(currentSink, std::move(sink));
}

LogSink systemLogSink(LogLevel terminalLevel)
{
    const auto journal = journalSink();
    const auto terminal = journal && standardErrorIsJournal() ? nullptr : terminalSink();
    return
        [journal, terminal, terminalLevel](LogLevel level, std::string_view category, std::string_view line) {
            const spdlog::details::log_msg message{
                {category.data(), category.size()}, levelOf(level), {line.data(), line.size()}};
            if (journal && level > LogLevel::debug)
                writeTo(*journal, message);
            if (terminal && level >= terminalLevel)
                writeTo(*terminal, message);
        };
}

}  // namespace tidewell
