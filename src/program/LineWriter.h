#pragma once

#include <condition_variable>
#include <deque>
#include <functional>
#include <mutex>
#include <string>
#include <system_error>
#include <thread>

namespace tidewell {

/// Writes lines to a file descriptor on a thread of its own, so that a reader that does not read blocks
/// nobody.
///
/// Each line is written out at once. At most 256 lines wait; beyond that the oldest unwritten one is left
/// out.
class LineWriter {
public:
    /// `ended` is called once, on the writer's thread, when nothing can be written any more.
    LineWriter(int descriptor, std::function<void()> ended);
    ~LineWriter();
    LineWriter(const LineWriter&) = delete;
    LineWriter& operator=(const LineWriter&) = delete;

    /// Adds the end of the line. Any thread.
    void write(std::string line);

    /// Gives the lines that wait half a second to be written; the last call. Why nothing could be written; a
    /// reader that went away, or does not read, is no error.
    std::error_code finish();

private:
    void run();
    /// False when the descriptor takes no more, or the writer is to end.
    bool writeAll(const std::string& line);
    [[nodiscard]] bool expired();

    const int descriptor_;
    const std::function<void()> ended_;
    std::mutex mutex_;
    std::condition_variable changed_;
    std::deque<std::string> lines_;
    std::error_code failure_;
    bool ending_ = false;
    std::chrono::steady_clock::time_point deadline_{};
    std::thread thread_;
};

}  // namespace tidewell
