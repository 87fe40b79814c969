#pragma once

#include <boost/asio/experimental/channel.hpp>
#include <cstdint>
#include <expected>
#include <memory>
#include <optional>

#include "polling/GlucoseAlertEvaluator.h"
#include "polling/MissingDataAlert.h"
#include "polling/RunGeneration.h"
#include "polling/StatusBarPollingCoordinator.h"
#include "support/Log.h"
#include "support/Task.h"

namespace tidewell {

/// The alerts of StatusBarPollingCoordinator, which alone owns it: the pass behind each good answer, the look
/// for missing data, and the snooze.
///
/// Lives on the engine unless a member says otherwise. Whatever waits belongs to a run, and neither posts nor
/// records anything when that run is no longer the current one of `generation`.
class PollingAlerts : public std::enable_shared_from_this<PollingAlerts> {
public:
    PollingAlerts(StatusBarPollingCoordinator::Parts parts, std::shared_ptr<const RunGeneration> generation);

    /// On `main`: the view model and the preferences go.
    void close() { closed_ = true; }

    // The run.

    /// Begins to look for missing data.
    void begin(const Uuid& run);
    /// Cancels what waits.
    void end();
    /// Forgets which alerts were posted, so that each may come again.
    void rearm() { evaluator_.reset(); }
    /// Forgets everything that another account must not find.
    void forgetAccount();

    /// Returns the poll's number.
    [[nodiscard]] std::uint64_t pollBegins() { return ++pollsBegun_; }
    /// The newest reading held, when a poll has ended well.
    void recordReading(GlucoseReading newest);
    /// What a poll has left to say: on screen, and in the text for missing data.
    void recordProblem(std::optional<ErrorInfo> problem) { problem_ = std::move(problem); }
    void pollEnded(std::uint64_t number);
    void machineWoke();

    /// Begins a pass for the newest reading; behind the earlier one, if that still goes on. A reading that is
    /// overtaken meanwhile has no pass of its own.
    void startPass(const Uuid& run);
    /// The desktop answers again: what did not get through is tried anew at once. After that, not again for a
    /// minute, since trying may itself be what makes the desktop answer.
    void alertPathDidRecover();

    // Snooze and preferences: of the program, whatever run it is.

    void snooze(Seconds duration);
    void resume();
    /// Reads the stored snooze again, and shows it.
    void reloadSnooze();
    /// Shows the snooze in the view model.
    void publishSnooze();
    void settingsDidUpdate();

private:
    using Self = std::shared_ptr<PollingAlerts>;
    using Posted = std::expected<void, NotificationError>;
    using Wake = asio::experimental::channel<void(boost::system::error_code)>;

    [[nodiscard]] bool isCurrent(const Uuid& run) const { return generation_->isCurrent(run); }
    [[nodiscard]] GlucoseAlertEvaluator::Pass moment() const;
    static asio::awaitable<GlucoseAlertSettings> settingsInForce(Self self);
    [[nodiscard]] asio::awaitable<bool> mayPost();
    [[nodiscard]] asio::awaitable<Posted> post(GlucoseAlertContent content, NotificationTone tone,
                                               bool offersSnooze);
    void logFailedPost(const NotificationError& error) const;

    /// How a pass ended.
    enum class PassEnd {
        settled,    ///< Posted, or there is nothing to post.
        overtaken,  ///< It has to begin anew.
        untold,     ///< The desktop did not take it.
    };
    static asio::awaitable<void> passes(Self self, Uuid run);
    static asio::awaitable<PassEnd> pass(Self self, Uuid run);
    [[nodiscard]] bool isStillDue(GlucoseAlertKind kind, const GlucoseReading& reading,
                                  const GlucoseAlertSettings& settings) const;

    void lookForMissingData();
    static asio::awaitable<void> watchForMissingData(Self self, Uuid run);
    static asio::awaitable<void> pauseWatch(Self self, std::optional<Date> until);
    static asio::awaitable<void> pause(Self self, std::shared_ptr<Wake> wake, std::optional<Date> until);
    static asio::awaitable<bool> tellOfMissingData(Self self, Uuid run, GlucoseAlertSettings settings);

    void loadSnooze();
    void storeSnooze(std::optional<Date> until);
    void followSnooze();

    const StatusBarPollingCoordinator::Parts parts_;
    const std::shared_ptr<const RunGeneration> generation_;
    const Log log_{"StatusBarPollingCoordinator"};
    bool closed_ = false;  ///< Belongs to `main`.

    std::optional<Date> snoozedUntil_{};
    Seconds snoozeLength_{0};  ///< From when we learnt of it to its end.
    GlucoseAlertEvaluator evaluator_{};
    MissingDataAlert missingData_{};
    std::optional<GlucoseReading> newest_{};
    std::optional<ErrorInfo> problem_{};
    std::uint64_t pollsBegun_ = 0;
    std::uint64_t revision_ = 0;        ///< Counts the changes of snooze and preferences.
    bool changed_ = false;              ///< Since the last look for missing data.
    std::shared_ptr<Wake> wake_{};      ///< Ends the wait for the next look; of one use.
    bool passWanted_ = false;           ///< Since the last pass began.
    bool passing_ = false;              ///< A pass goes on, or waits to be tried again.
    bool passUntold_ = false;           ///< The last pass did not get through.
    bool recovered_ = false;            ///< The desktop did, since the last pass began.
    bool missingUntold_ = false;        ///< Nor did the last word of missing data.
    std::shared_ptr<Wake> passWake_{};  ///< Ends the wait for the next try; of one use.
    std::optional<Date> hurriedAt_{};   ///< When the desktop's recovery last had us try anew.

    Task<void> passTask_{};
    Task<void> missingDataTask_{};
};

}  // namespace tidewell
