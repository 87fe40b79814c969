#include "config/ConfigurationManager.h"

#include <fmt/format.h>

#include <algorithm>
#include <utility>
#include <vector>

#include "config/StoredConfiguration.h"
#include "support/Log.h"
#include "support/Task.h"
#include "support/Workers.h"

namespace tidewell {

struct ConfigurationManager::Impl {
    using Result = std::expected<void, ConfigurationProblem>;
    using Job = std::function<StoredOutcome(const Places&, const HeldConfiguration&)>;
    enum class Kind { load, save };

    asio::any_io_executor main;
    asio::any_io_executor workers;
    Places places;
    HeldConfiguration held{};
    std::optional<ConfigurationProblem> problem{};
    bool loaded = false;
    Task<Result> latest{};  ///< The last job that was begun; the next one waits for it.
    std::vector<std::weak_ptr<Observer>> observers{};

    /// Runs the job after the one before it, and takes over what comes of it.
    static asio::awaitable<Result> run(std::shared_ptr<Impl> self, Task<Result> previous, Kind kind, Job job)
    {
        if (previous) {
            try {
                co_await previous.wait();
            } catch (const std::exception& fault) {
                // Those who asked for it hear of it too; it left nothing half done.
                Log{"ConfigurationManager"}.error(
                    fmt::format("A load or save was abandoned: {}", fault.what()));
            }
            previous = {};
        }
        auto work = [places = self->places, held = self->held, job = std::move(job)] {
            return job(places, held);
        };
        StoredOutcome outcome = co_await runOnWorker(self->workers, std::move(work));
        self->take(outcome, kind);
        if (!outcome.succeeded)
            co_return std::unexpected{*outcome.problem};
        co_return Result{};
    }

    static asio::awaitable<Result> begin(const std::shared_ptr<Impl>& self, Kind kind, Job job)
    {
        self->latest = startTask(self->main, run(self, self->latest, kind, std::move(job)));
        return self->latest.wait();
    }

    static asio::awaitable<Result> save(const std::shared_ptr<Impl>& self, ConfigurationEdit edit)
    {
        return begin(self, Kind::save,
                     [edit = std::move(edit)](const Places& given, const HeldConfiguration& before) {
                         return saveStored(given, before, edit);
                     });
    }

    void take(StoredOutcome& outcome, Kind kind)
    {
        problem = outcome.problem;
        if (problem)
            Log{"ConfigurationManager"}.warning(problem->message);
        const bool firstLoad = kind == Kind::load && !std::exchange(loaded, loaded || kind == Kind::load);
        if (!outcome.held)
            return;
        const HeldConfiguration before = std::exchange(held, std::move(*outcome.held));
        if (firstLoad)
            return;
        if (held.account != before.account)
            announce(ConfigurationChange::configuration);
        if (held.settings != before.settings)
            announce(ConfigurationChange::appSettings);
    }

    void announce(ConfigurationChange change)
    {
        std::erase_if(observers, [](const auto& observer) { return observer.expired(); });
        const auto present = observers;  // An observer may come or go while they are told.
        for (const auto& entry : present) {
            if (const auto observer = entry.lock())
                (*observer)(change);
        }
    }
};

ConfigurationManager::ConfigurationManager(asio::any_io_executor main, asio::any_io_executor workers,
                                           Places places)
    : impl_{std::make_shared<Impl>(std::move(main), std::move(workers), std::move(places))}
{
}

ConfigurationManager::~ConfigurationManager() = default;

bool ConfigurationManager::loaded() const { return impl_->loaded; }
const std::optional<GlucoseAccountConfiguration>& ConfigurationManager::account() const
{
    return impl_->held.account;
}
const AppSettings& ConfigurationManager::settings() const { return impl_->held.settings; }
const std::optional<ConfigurationProblem>& ConfigurationManager::problem() const { return impl_->problem; }

asio::awaitable<std::expected<void, ConfigurationProblem>> ConfigurationManager::load()
{
    return Impl::begin(impl_, Impl::Kind::load, loadStored);
}

asio::awaitable<std::expected<void, ConfigurationProblem>> ConfigurationManager::saveAccount(
    std::optional<GlucoseAccountConfiguration> account)
{
    return Impl::save(impl_, {.replacesAccount = true, .account = std::move(account)});
}

asio::awaitable<std::expected<void, ConfigurationProblem>> ConfigurationManager::saveSettings(
    AppSettings settings)
{
    return changeSettings(impl_->held.settings, std::move(settings));
}

asio::awaitable<std::expected<void, ConfigurationProblem>> ConfigurationManager::changeSettings(
    AppSettings from, AppSettings to)
{
    return Impl::save(impl_, {.formerSettings = std::move(from), .settings = std::move(to)});
}

std::shared_ptr<void> ConfigurationManager::observe(Observer observer)
{
    auto token = std::make_shared<Observer>(std::move(observer));
    impl_->observers.push_back(token);
    return token;
}

}  // namespace tidewell
