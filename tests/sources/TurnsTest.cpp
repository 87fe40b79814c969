#include "sources/Turns.h"

#include <gtest/gtest.h>

#include "support/Task.h"

namespace tidewell {
namespace {

TEST(Turns, anEventLoopMayEndUnderThoseWhoHaveATurnAndWaitForOne)
{
    using Step = asio::experimental::channel<void(boost::system::error_code)>;
    int reached = 0;
    auto io = std::make_unique<asio::io_context>(1);
    const auto take = [](std::shared_ptr<Turns> turns, std::shared_ptr<Step> step,
                         int& count) -> asio::awaitable<void> {
        const Turns::Turn turn = co_await turns->next();
        ++count;
        co_await step->async_receive(asio::use_awaitable);
    };
    {
        const auto turns = std::make_shared<Turns>(io->get_executor());
        const auto step = std::make_shared<Step>(io->get_executor());
        for (int i = 0; i < 4; ++i)
            std::ignore = startTask(io->get_executor(), take(turns, step, reached));
        io->poll();
        EXPECT_EQ(reached, 1);
        EXPECT_TRUE(step->try_send(boost::system::error_code{}));
        io->restart();
        io->poll();
        EXPECT_EQ(reached, 2) << "the turn is passed on";
    }
    io.reset();
    EXPECT_EQ(reached, 2);
}

}  // namespace
}  // namespace tidewell
