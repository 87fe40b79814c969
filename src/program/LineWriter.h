#pragma once

#include <condition_variable>
#include <deque>
#include <functional>
#include <mutex>
#include <string>
#include <thread>

namespace tidewell {

/// Writes lines to a file descriptor on a thread of its own, so that a reader that does not read blocks
/// nobody.
///
/// Each line is written out at once. At most 256 lines wait; beyond that the oldest unwritten one is left
/// out.
class LineWriter {
public:
    /// `readerGone` is called once, on the writer's thread, when nobody can read any more.
    LineWriter(int descriptor, std::function<void()> readerGone);
    /// Gives the lines that wait half a second to be written.
    ~LineWriter();
    LineWriter(const LineWriter&) = delete;
    LineWriter& operator=(const LineWriter&) = delete;

    /// Adds the end of the line. Any thread.
    void write(std::string line);

private:
    void run();
    /// False when the descriptor takes no more, or the writer is to end.
    bool writeAll(const std::string& line);
    [[nodiscard]] bool expired();

    const int descriptor_;
    const std::function<void()> readerGone_;
    std::mutex mutex_;
    std::condition_variable changed_;
    std::deque<std::string> lines_;
    bool ending_ = false;
    std::chrono::steady_clock::time_point deadline_{};
    std::thread thread_;
};

}  // namespace tidewell
