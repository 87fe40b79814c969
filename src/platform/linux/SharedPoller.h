#pragma once

#include <QString>
#include <chrono>
#include <functional>
#include <memory>
#include <string>

#include "app/AppDelegate.h"
#include "platform/linux/SharedPollerState.h"
#include "support/Clock.h"
#include "support/Random.h"

namespace tidewell {

/// How a process takes part in sharing one poller.
enum class SharingKind {
    /// The desktop application: polls whenever it runs, and takes over from whoever did before.
    application,
    /// Polls when nobody else does, and follows otherwise.
    watcher,
    /// A short command: never polls for others.
    asker,
};

struct SharedPollerOptions {
    SharingKind kind = SharingKind::watcher;
    /// Only processes with the same text share.
    std::string profile{};
    QString busAddress{};  ///< Empty: the session bus.
};

/// Sees to it that one process of the user asks the service, whatever number of them shows its answers.
///
/// Whoever owns the name org.tidewell.Tidewell on the session bus polls and tells; the others follow, and
/// wait in the bus's queue for the name, so that the bus itself hands over when the owner goes. An owner that
/// says nothing when it should is asked; one that does not answer either is replaced where it allows that,
/// and else not followed until it speaks again. Without a bus everybody polls.
///
/// Main thread, with the event loop running. Nothing waits for the bus: the role is decided within two
/// seconds of start(), whatever the bus does.
class SharedPoller {
public:
    struct Handlers {
        /// Also called for the first decision. `alone`: others may ask the service too, so come seldom.
        std::function<void(PollingRole role, bool alone)> roleDidChange{};
        /// What the process says that polls. In the role `follows` only, except that the application hears
        /// once from whom it takes over from before it polls.
        std::function<void(const FollowedState& state)> heard{};
        // What others ask of this process while it polls.
        std::function<void()> refresh{};
        std::function<void(std::chrono::minutes)> snooze{};
        std::function<void()> resume{};
    };

    /// `clock` and `random` outlive the last turn of `main`.
    SharedPoller(asio::any_io_executor main, Clock& clock, RandomSource& random, SharedPollerOptions options,
                 Handlers handlers);
    /// Leaves the bus, and with it the name.
    ~SharedPoller();
    SharedPoller(const SharedPoller&) = delete;
    SharedPoller& operator=(const SharedPoller&) = delete;

    /// Begins, once the configuration has been read. `account` names whose data are wanted, empty without an
    /// account; `canPoll` says that the account can be asked.
    void start(std::string account, bool canPoll);
    /// Another account, or one that can be asked now.
    void setAccount(std::string account, bool canPoll);
    /// What this process shows, for the others; told to them when it polls.
    void publish(const StatusBarState& state, const PollingProgress& progress);

    /// Resumes when it has been decided for the first time who polls; start() has been called.
    [[nodiscard]] asio::awaitable<void> decided();
    /// Whether another process polls.
    [[nodiscard]] bool follows() const;
    /// Polls from now on, whoever else does: what the other one says is not enough.
    void stopFollowing();

private:
    struct Impl;
    std::shared_ptr<Impl> impl_;
};

}  // namespace tidewell
