#pragma once

#include <functional>
#include <memory>
#include <vector>

namespace tidewell {

/// Turns Unix signals into calls on the main thread: SIGTERM, SIGINT and SIGHUP as a rule.
///
/// One object at a time; created and destroyed on the main thread, with a QCoreApplication. Its end
/// puts the earlier dispositions back. A signal that the process was started to ignore (nohup) stays ignored.
class UnixSignals final {
public:
    using Handler = std::function<void(int signal)>;

    UnixSignals(const std::vector<int>& signals, Handler handler);
    ~UnixSignals();
    UnixSignals(const UnixSignals&) = delete;

private:
    struct Impl;
    std::unique_ptr<Impl> impl_;
};

}  // namespace tidewell
