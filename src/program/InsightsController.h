#pragma once

#include <QPointer>
#include <QTimer>
#include <functional>
#include <memory>

#include "history/HistoryCoordinator.h"
#include "program/Core.h"
#include "ui/InsightsViewState.h"
#include "ui/InsightsWindow.h"

namespace tidewell {

/// A report with what it was made of, for whoever saves it.
struct InsightsShown {
    std::shared_ptr<const InsightsReportContent> report{};
    std::optional<HistoryScopeID> scope{};  ///< Whose readings these are.
    QPointer<QWidget> window{};             ///< Goes when it closes.
};

/// The Insights window and what it shows: reads saved history, notes that the report has opened, calculates
/// on a worker, and drops what was asked for before. Renews the report while its window is open: when saved
/// history or the preferences change, and some minutes after a reading came. Main thread, which never waits.
class InsightsController final {
public:
    explicit InsightsController(Core& core);
    ~InsightsController();
    InsightsController(const InsightsController&) = delete;
    InsightsController& operator=(const InsightsController&) = delete;

    /// Shows the window, or brings it to the front.
    void show();
    /// What "Save report…" does; without one there is no such button. Before the first show().
    void onSaveReport(std::function<void(InsightsShown)> handler) { saveReport_ = std::move(handler); }

    /// What "Insights settings" does; without one the window names the command. Before the first show().
    void onOpenSettings(std::function<void()> handler) { openSettings_ = std::move(handler); }

    /// Called when the report that is shown is not the followed person's any more, or its history was
    /// deleted.
    void onReportGone(std::function<void()> handler) { reportGone_ = std::move(handler); }

private:
    /// Whose history it is, and since when it is collected.
    struct Origin {
        std::optional<HistoryScopeID> scope{};
        std::optional<Date> collectionStartedAt{};
        bool operator==(const Origin&) const = default;
    };
    /// What a window is made for, by the clock of one zone.
    struct Request {
        std::uint64_t generation = 0;
        std::shared_ptr<const std::uint64_t> latest{};
        InsightsPeriod period{};
        DateInterval interval{};
        TimeZone zone = TimeZone::utc();
        GlucoseUnits unit = GlucoseUnits::mgdL;
        Date now{};
        Origin followed{};
        /// Whether nothing was asked for since; if not, the controller may be gone.
        [[nodiscard]] bool isCurrent() const { return *latest == generation; }
    };
    [[nodiscard]] Origin followed() const;
    void makeWindow();
    void windowClosed();
    /// Begins to read and calculate anew; what runs is dropped.
    void reload();
    asio::awaitable<void> load(Request request);
    /// Where collection stands; present when the report is not open, or that cannot be told. Like report(),
    /// it returns something or other once the request is outdated.
    asio::awaitable<std::optional<InsightsViewState>> collection(Request request);
    asio::awaitable<InsightsViewState> report(Request request);
    /// With the period of a request that is current.
    void present(const Request& request, InsightsViewState state);
    void present(InsightsViewState state);
    [[nodiscard]] Request makeRequest();
    [[nodiscard]] bool showsCompletion() const;
    void completionSeen();

    Core& core_;
    std::function<void(InsightsShown)> saveReport_{};
    std::function<void()> openSettings_{};
    std::function<void()> reportGone_{};
    QPointer<InsightsWindow> window_{};  ///< Made when it is shown, and gone when it was closed.
    InsightsViewState state_{};
    Origin shown_{};  ///< Of `state_`.
    std::shared_ptr<std::uint64_t> generation_ = std::make_shared<std::uint64_t>(0);
    Task<void> load_;
    QTimer renewal_;
    std::shared_ptr<void> historyObserver_;
    std::shared_ptr<void> settingsObserver_;
    std::shared_ptr<void> readingObserver_;
};

/// The time that a picked period stands for: whole local dates, or days up to `now`; never beyond it.
[[nodiscard]] DateInterval insightsInterval(const InsightsPeriod& period, Date now, TimeZone zone);

}  // namespace tidewell
