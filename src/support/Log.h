#pragma once

#include <functional>
#include <string>
#include <string_view>

namespace tidewell {

enum class LogLevel { debug, info, warning, error };

/// The subsystem that every line carries: the application's identifier.
inline constexpr std::string_view logSubsystem = "org.tidewell.Tidewell";

/// Writes lines to the system log under the subsystem and one category, the name of the type that writes.
/// A value that is cheap to copy; any thread. What is secret must not be passed in: no redaction happens
/// here, except that control characters are replaced and a line is cut after 4096 bytes.
class Log {
public:
    explicit Log(std::string_view category) : category_{category} {}

    void debug(std::string_view line) const { write(LogLevel::debug, line); }
    void info(std::string_view line) const { write(LogLevel::info, line); }
    void warning(std::string_view line) const { write(LogLevel::warning, line); }
    void error(std::string_view line) const { write(LogLevel::error, line); }

private:
    void write(LogLevel level, std::string_view line) const;
    std::string category_;
};

/// Where lines go; by default nowhere, so tests are quiet. Called on the thread that logs, one line at a
/// time.
using LogSink = std::function<void(LogLevel, std::string_view category, std::string_view line)>;

/// Replaces the sink and returns the earlier one. Any thread.
LogSink setLogSink(LogSink sink);

/// The sink of the running program: the journal where there is one (debug lines left out), and standard error
/// from `terminalLevel` up.
[[nodiscard]] LogSink systemLogSink(LogLevel terminalLevel);

}  // namespace tidewell
