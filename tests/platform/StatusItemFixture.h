#pragma once

#include <gtest/gtest.h>

#include "FakePanel.h"
#include "platform/linux/StatusItem.h"

namespace tidewell {

using namespace std::chrono_literals;

inline StatusItemContent sample(std::string value = "120")
{
    StatusItemContent content{.value = value, .arrow = "→", .label = value + " →"};
    content.iconState = StatusBarIconState::value;
    content.tooltipTitle = value + " mg/dL →";
    content.tooltipText = "2 minutes ago";
    content.accessibilityLabel = "Tidewell";
    content.accessibilityValue = "Current glucose: " + value;
    content.accessibilityHelp = "What it is for.";
    content.menu = {{.kind = MenuItem::Kind::text, .title = "2 minutes ago", .enabled = false},
                    {.kind = MenuItem::Kind::separator},
                    {.title = "Refresh_now", .command = MenuCommand::refresh},
                    {.title = "Sign in…", .command = MenuCommand::signIn, .enabled = false},
                    {.title = "Quit", .command = MenuCommand::quit}};
    return content;
}

class StatusItemTest : public testing::Test {
protected:
    StatusItemOptions options()
    {
        StatusItemOptions made;
        made.busAddress = bus.address();
        made.iconFolder = folder.path() / "icons";
        made.time = {
            .now = [this] { return now; },
            .after = [this](std::chrono::milliseconds delay,
                            std::function<void()> work) { waiting.emplace(now + delay, std::move(work)); }};
        return made;
    }

    void advance(std::chrono::milliseconds step)
    {
        now += step;
        while (!waiting.empty() && waiting.begin()->first <= now)
            waiting.extract(waiting.begin()).mapped()();
    }

    std::unique_ptr<StatusItem> startItem(StatusItemOptions made)
    {
        auto item = std::make_unique<StatusItem>(std::move(made));
        item->onRegistered([this] { ++registered; });
        item->onCommand([this](MenuCommand command) { commands.push_back(command); });
        item->present(sample());
        item->start();
        return item;
    }

    TemporaryFolder folder{};
    TestBus bus{};
    std::chrono::milliseconds now{1'000'000};
    std::multimap<std::chrono::milliseconds, std::function<void()>> waiting{};
    int registered = 0;
    std::vector<MenuCommand> commands{};
};

/// With a panel that shows the item.
class ShownItemTest : public StatusItemTest {
protected:
    void SetUp() override
    {
        ASSERT_TRUE(runUntil([&] { return registered == 1; }));
    }
    /// Late enough to be sent at once.
    void present(const StatusItemContent& content)
    {
        advance(1s);
        item->present(content);
    }

    FakePanel panel{bus};
    std::unique_ptr<StatusItem> item = startItem(options());
};

}  // namespace tidewell
