#pragma once

#include <boost/asio/experimental/channel.hpp>
#include <deque>
#include <memory>
#include <utility>

#include "support/Asio.h"

namespace tidewell {

/// Lets one call at a time through, in the order of asking. Lives on `executor`; outlives its turns.
class Turns {
public:
    /// The right to go on; whoever is next gets it when this goes.
    class Turn {
    public:
        explicit Turn(Turns& turns) : turns_{&turns} {}
        Turn(Turn&& other) noexcept : turns_{std::exchange(other.turns_, nullptr)} {}
        Turn& operator=(Turn&&) = delete;
        ~Turn()
        {
            if (turns_)
                turns_->passOn();
        }

    private:
        Turns* turns_;
    };

    explicit Turns(asio::any_io_executor executor) : executor_{std::move(executor)} {}

    /// Waits until nobody else has a turn. Throws operation_aborted when the caller is cancelled.
    [[nodiscard]] asio::awaitable<Turn> next();

private:
    /// Each is for one waiter and one use, without a buffer: a send succeeds only while the waiter is there.
    /// (After a cancelled receive a channel with a buffer refuses to take what is sent next.)
    using Wake = asio::experimental::channel<void(boost::system::error_code)>;
    struct Waiter;

    void passOn();

    asio::any_io_executor executor_;
    bool taken_ = false;
    std::deque<std::shared_ptr<Waiter>> waiting_{};
};

}  // namespace tidewell
