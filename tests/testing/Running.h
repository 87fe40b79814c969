#pragma once

#include <boost/asio/bind_cancellation_slot.hpp>
#include <boost/asio/cancellation_signal.hpp>
#include <boost/asio/error.hpp>
#include <boost/system/system_error.hpp>

#include <exception>
#include <memory>
#include <optional>
#include <type_traits>
#include <utility>
#include <variant>

#include "support/Asio.h"

namespace tidewell {

/// A coroutine that a test has started: what became of it, and a way to cancel it.
/// Used on the thread that runs its executor.
template <class T>
class Running {
public:
    Running(asio::any_io_executor executor, asio::awaitable<T> work) : state_{std::make_shared<State>()}
    {
        asio::co_spawn(
            executor, carry(std::move(work), state_),
            asio::bind_cancellation_slot(state_->signal.slot(), [state = state_](std::exception_ptr error) {
                state->ended = true;
                state->error = error;
            }));
    }

    [[nodiscard]] bool ended() const { return state_->ended; }
    /// Whether it left with operation_aborted, the one error that callers know as cancellation.
    [[nodiscard]] bool cancelled() const
    {
        try {
            if (state_->error)
                std::rethrow_exception(state_->error);
        } catch (const boost::system::system_error& thrown) {
            return thrown.code() == asio::error::operation_aborted;
        } catch (...) {
        }
        return false;
    }
    /// Requires that it has ended with a result; throws what it threw.
    [[nodiscard]] const auto& result() const
    {
        if (state_->error)
            std::rethrow_exception(state_->error);
        return state_->result.value();
    }
    void cancel() { state_->signal.emit(asio::cancellation_type::terminal); }

private:
    struct State {
        asio::cancellation_signal signal{};
        bool ended = false;
        std::exception_ptr error{};
        std::optional<T> result{};
    };
    static asio::awaitable<void> carry(asio::awaitable<T> work, std::shared_ptr<State> state)
    {
        state->result = co_await std::move(work);
    }

    std::shared_ptr<State> state_;
};

}  // namespace tidewell
