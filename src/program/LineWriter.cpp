#include "program/LineWriter.h"

#include <fcntl.h>
#include <poll.h>
#include <unistd.h>

#include <algorithm>
#include <cerrno>
#include <chrono>
#include <climits>

namespace tidewell {

namespace {

constexpr std::size_t waitingLines = 256;
constexpr std::chrono::milliseconds lastGrace{500};
/// How often a blocked write looks whether the program ends.
constexpr int pollMilliseconds = 100;
/// How often an idle writer looks whether its reader has gone; a reader that left costs nobody until then.
constexpr std::chrono::seconds readerCheck{60};

/// Whether poll() says that nobody reads at the other end.
bool readerLeft(int descriptor)
{
    pollfd state{.fd = descriptor, .events = 0, .revents = 0};
    return ::poll(&state, 1, 0) > 0 && (state.revents & (POLLERR | POLLNVAL));
}

}  // namespace

LineWriter::LineWriter(int descriptor, std::function<void()> ended)
    : descriptor_{descriptor}, ended_{std::move(ended)}, thread_{[this] { run(); }}
{
}

LineWriter::~LineWriter() { (void)finish(); }

std::error_code LineWriter::finish()
{
    if (!thread_.joinable())
        return failure_;
    {
        const std::lock_guard lock{mutex_};
        ending_ = true;
        deadline_ = std::chrono::steady_clock::now() + lastGrace;
    }
    changed_.notify_one();
    thread_.join();
    return failure_;
}

void LineWriter::write(std::string line)
{
    line += '\n';
    {
        const std::lock_guard lock{mutex_};
        if (lines_.size() == waitingLines)
            lines_.pop_front();
        lines_.push_back(std::move(line));
    }
    changed_.notify_one();
}

void LineWriter::run()
{
    for (;;) {
        std::string line;
        {
            std::unique_lock lock{mutex_};
            while (lines_.empty() && !ending_) {
                if (changed_.wait_for(lock, readerCheck) == std::cv_status::timeout &&
                    readerLeft(descriptor_)) {
                    lock.unlock();
                    ended_();
                    return;
                }
            }
            if (lines_.empty())
                return;
            line = std::move(lines_.front());
            lines_.pop_front();
        }
        if (!writeAll(line)) {
            if (!expired())
                ended_();
            return;
        }
    }
}

bool LineWriter::writeAll(const std::string& line)
{
    std::size_t written = 0;
    while (written < line.size()) {
        pollfd state{.fd = descriptor_, .events = POLLOUT, .revents = 0};
        const int ready = ::poll(&state, 1, pollMilliseconds);
        if (ready < 0 && errno != EINTR)
            return false;
        if (ready <= 0) {
            if (expired())
                return false;
            continue;
        }
        if (state.revents & (POLLERR | POLLNVAL))
            return false;
        // A pipe that is ready takes at least PIPE_BUF bytes without blocking, and no more is offered.
        const auto count = ::write(descriptor_, line.data() + written,
                                   std::min<std::size_t>(line.size() - written, PIPE_BUF));
        if (count < 0 && errno != EINTR && errno != EAGAIN) {
            if (errno != EPIPE) {
                const std::lock_guard lock{mutex_};
                failure_ = {errno, std::generic_category()};
            }
            return false;
        }
        if (count > 0)
            written += static_cast<std::size_t>(count);
    }
    return true;
}

bool LineWriter::expired()
{
    const std::lock_guard lock{mutex_};
    return ending_ && std::chrono::steady_clock::now() >= deadline_;
}

}  // namespace tidewell
