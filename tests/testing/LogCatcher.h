#pragma once

#include <fmt/ranges.h>
#include <string>
#include <vector>

#include "support/Log.h"

namespace tidewell {

/// Collects what is logged while it lives, of one category or of all.
class LogCatcher {
public:
    explicit LogCatcher(std::string only = {})
        : before_{setLogSink([this, only](LogLevel, std::string_view category, std::string_view line) {
              if (only.empty() || only == category)
                  lines_.emplace_back(line);
          })}
    {
    }
    LogCatcher(const LogCatcher&) = delete;
    LogCatcher& operator=(const LogCatcher&) = delete;
    ~LogCatcher() { setLogSink(before_); }

    [[nodiscard]] const std::vector<std::string>& lines() const { return lines_; }
    /// All lines, one below the other.
    [[nodiscard]] std::string text() const { return fmt::format("{}", fmt::join(lines_, "\n")); }

private:
    std::vector<std::string> lines_{};
    LogSink before_;
};

}  // namespace tidewell
