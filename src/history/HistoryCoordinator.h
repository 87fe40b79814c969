#pragma once

#include <expected>
#include <functional>
#include <memory>
#include <optional>
#include <vector>

#include "history/GlucoseHistoryStore.h"
#include "support/Asio.h"
#include "support/Clock.h"

namespace tidewell {

/// Between polling and saved history: follows the account, saves what was fetched, removes what is too old,
/// gives back what was saved, and says what is wrong. Never holds up polling, whatever the disk or the secret
/// store does.
///
/// Lives on the engine; the store's calls run one at a time on the workers. Every public member may be called
/// from any thread, but for status() and observe(), which belong to `main`.
///
/// A save that failed is tried again with the next readings that come, together with these. What another
/// process changes about saved history is noticed then too.
class HistoryCoordinator {
public:
    struct Parts {
        asio::any_io_executor engine;
        asio::any_io_executor main;
        asio::any_io_executor workers;
        Clock& clock;  ///< Outlives the coordinator and the last turn of `engine`.
        /// Keeps alive all that the store refers to: a call that hangs may outlive everything else.
        std::shared_ptr<GlucoseHistoryStore> store;
    };
    explicit HistoryCoordinator(Parts parts);
    /// Begins nothing any more. A save that runs ends whole on its worker; one that waits is dropped.
    ~HistoryCoordinator();
    HistoryCoordinator(const HistoryCoordinator&) = delete;
    HistoryCoordinator& operator=(const HistoryCoordinator&) = delete;

    /// Which call of follow() readings belong to.
    using Mark = std::uint64_t;

    /// Another account or person, or none: readings of earlier marks are not saved any more, from here on.
    void follow(std::optional<HistoryScopeID> scope);
    [[nodiscard]] Mark mark() const;

    /// Readings as they are known after a fetch, those of earlier ones among them. Saves the ones that are
    /// new or have changed, when saving is on.
    void save(Mark mark, std::vector<GlucoseReading> readings, Date fetchedAt);

    /// The saved readings of the last 24 hours, by time; nothing when there are none, and for a mark that is
    /// outdated. When they cannot be read, or that takes longer than three seconds, they come once a save has
    /// worked: nobody waits for it who has anything else to do. Awaited on `engine`.
    [[nodiscard]] asio::awaitable<std::vector<GlucoseReading>> restore(Mark mark);

    /// What is saved from `begin` up to before `end`, of the account of status(). Resumes on the executor on
    /// which it is awaited; a caller that is cancelled leaves at once. accountRequired while nobody's history
    /// is followed.
    [[nodiscard]] asio::awaitable<std::expected<GlucoseHistorySnapshot, GlucoseHistoryError>> snapshot(
        Date begin, Date end);
    /// Notes that the report of `scope` has opened; it then stays open. Nothing when the account is another
    /// one by now. Awaited like snapshot().
    [[nodiscard]] asio::awaitable<std::expected<void, GlucoseHistoryError>> setInsightsUnlocked(
        HistoryScopeID scope);

    // What the person changes about saved history, of the account that is followed and as the store has it.
    // Begins with the call, in the order of the calls, and ends whole, whether or not anybody waits for it;
    // status() follows. Awaited like snapshot().
    using Changed = std::expected<GlucoseHistoryStatus, GlucoseHistoryError>;
    [[nodiscard]] asio::awaitable<Changed> enable(std::int64_t retentionDays, std::int64_t consentVersion);
    [[nodiscard]] asio::awaitable<Changed> pause();
    [[nodiscard]] asio::awaitable<Changed> setRetention(std::int64_t days);
    /// Of the account, or of every account and person; the latter needs nobody to be signed in.
    [[nodiscard]] asio::awaitable<Changed> deleteHistory(bool everyAccount);

    /// Another process changed saved history, or how it is saved.
    void historyDidChange();

    [[nodiscard]] const GlucoseHistoryStatus& status() const;
    /// Calls the observer on `main` after each change of status(), until the token goes.
    using Observer = std::function<void(const GlucoseHistoryStatus&)>;
    [[nodiscard]] std::shared_ptr<void> observe(Observer observer);

private:
    struct Impl;
    std::shared_ptr<Impl> impl_;
};

}  // namespace tidewell
