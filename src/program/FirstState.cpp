#include "program/FirstState.h"

#include <QCoreApplication>
#include <utility>

#include "program/WatchLine.h"

namespace tidewell {

namespace {

/// How long the process that polls may be about something, before we ask the service ourselves.
constexpr std::chrono::milliseconds followingPatience = 5s;

}  // namespace

struct FirstState::Impl {
    explicit Impl(Core& owner) : core{owner} {}

    Core& core;
    bool came = false;
    std::shared_ptr<void> observer{};
    Task<void> waiting{};

    void look(const StatusBarState& state)
    {
        if (core.follows() && watchIsSettled(state))
            end();
    }

    void end()
    {
        if (std::exchange(came, true))
            return;
        QCoreApplication::quit();
    }

    /// Whoever is told to stop in the meantime takes the owner down first.
    static asio::awaitable<void> wait(std::weak_ptr<Impl> weak, Core& core)
    {
        co_await core.launched();
        if (!weak.expired() && core.follows()) {
            co_await core.clock().sleepFor(followingPatience);
            if (!weak.expired() && core.follows())
                core.stopFollowing();
        }
        if (weak.expired())
            co_return;
        co_await core.coordinator().refreshNow();
        // There is nothing more to wait for, also when the request was not allowed or told nothing.
        if (const auto self = weak.lock())
            self->end();
    }
};

FirstState::FirstState(Core& core) : impl_{std::make_shared<Impl>(core)}
{
    impl_->observer = core.viewModel().observe([weak = std::weak_ptr{impl_}](const StatusBarState& state) {
        if (const auto self = weak.lock())
            self->look(state);
    });
    impl_->waiting = startTask(core.main(), Impl::wait(impl_, core));
}

FirstState::~FirstState() { impl_->waiting.cancel(); }

bool FirstState::came() const { return impl_->came; }

ExitCode FirstState::exitCode() const
{
    const auto& problem = impl_->core.configuration().problem();
    return problem && problem->error.kind == ConfigurationError::Kind::keychainError
               ? ExitCode::keyring
               : watchExitCode(impl_->core.viewModel().state());
}

}  // namespace tidewell
