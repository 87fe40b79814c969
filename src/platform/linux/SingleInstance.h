#pragma once

#include <chrono>
#include <expected>
#include <filesystem>
#include <functional>
#include <memory>
#include <system_error>

namespace tidewell {

/// What a later start has to say to the running instance.
enum class InstanceWord {
    activate,              ///< The person started the program again: show what there is to show.
    configurationChanged,  ///< The stored configuration was changed by the command line.
    snoozeChanged,         ///< So was the snooze.
    historyChanged,        ///< So was saved history, or how it is saved.
    areYouThere,           ///< Nothing; the answer is what counts.
};

/// Keeps a user to one running instance, and lets later starts reach it.
///
/// The right to run is a kernel lock on a file in the runtime folder, so it ends with the process however
/// that ends. Words come over a Unix socket beside it that only the same user may use.
class SingleInstance final {
public:
    enum class SendResult { delivered, notRunning, noAnswer };

    /// Becomes the one instance. Empty pointer: another one runs. Error: the folder is of no use, and nothing
    /// can be said about other instances. Main thread, with a QCoreApplication; does not wait.
    [[nodiscard]] static std::expected<std::unique_ptr<SingleInstance>, std::error_code> acquire(
        const std::filesystem::path& runtimeFolder);
    ~SingleInstance();
    SingleInstance(const SingleInstance&) = delete;

    /// Called on the main thread from the event loop. The same word several times in one turn counts once.
    void onWord(std::function<void(InstanceWord)> handler);

    /// Hands a word to the running instance and waits for its answer. Blocks up to `deadline`. Any thread.
    [[nodiscard]] static SendResult send(const std::filesystem::path& runtimeFolder, InstanceWord word,
                                         std::chrono::milliseconds deadline = std::chrono::seconds{1});

private:
    struct Impl;
    explicit SingleInstance(std::unique_ptr<Impl> impl);
    std::unique_ptr<Impl> impl_;
};

}  // namespace tidewell
