#include <csignal>
#include <thread>

#include "TestBus.h"
#include "platform/linux/GioNetworkPathMonitor.h"
#include "platform/linux/LogindEvents.h"
#include "platform/linux/QtMainLoop.h"
#include "platform/linux/UnixSignals.h"

namespace tidewell {
namespace {

TEST(QtMainLoop, workOfAnyThreadRunsOnTheMainThreadInItsOrder)
{
    QtMainLoop main;
    std::vector<int> order;
    bool elsewhere = false;
    const auto here = std::this_thread::get_id();
    std::thread poster{[&] {
        for (int i = 0; i < 1000; ++i) {
            asio::post(main.executor(), [&, i] {
                elsewhere |= std::this_thread::get_id() != here;
                order.push_back(i);
            });
        }
    }};
    EXPECT_TRUE(runUntil([&] { return order.size() == 1000; }));
    poster.join();
    EXPECT_TRUE(std::ranges::is_sorted(order));
    EXPECT_FALSE(elsewhere);
    // Work that posts further work is not forgotten.
    asio::post(main.executor(), [&] { asio::post(main.executor(), [&] { order.clear(); }); });
    EXPECT_TRUE(runUntil([&] { return order.empty(); }));
}

TEST(UnixSignals, reachTheirHandlerFromTheEventLoopUntilTheObjectGoes)
{
    std::vector<int> seen;
    std::signal(SIGUSR2, SIG_IGN);
    {
        const UnixSignals signals{{SIGUSR1, SIGHUP, SIGUSR2}, [&](int signal) { seen.push_back(signal); }};
        std::raise(SIGUSR1);
        std::raise(SIGUSR2);
        std::raise(SIGHUP);
        EXPECT_TRUE(seen.empty()) << "a handler ran inside the signal";
        EXPECT_TRUE(runUntil([&] { return seen.size() == 2; }));
    }
    EXPECT_EQ(seen, (std::vector{SIGUSR1, SIGHUP}));
    EXPECT_EQ(std::signal(SIGHUP, SIG_DFL), SIG_DFL);
    EXPECT_EQ(std::signal(SIGUSR2, SIG_DFL), SIG_IGN);
}

TEST(LogindEvents, sleepWakeAndScreensReachTheirObserversAsLongAsTheyLook)
{
    TestBus bus;
    LogindEvents events{bus.address(), bus.address()};
    std::vector<WorkspaceEvent> seen;
    std::vector<std::shared_ptr<void>> tokens;
    for (const auto event :
         {WorkspaceEvent::didWake, WorkspaceEvent::willSleep, WorkspaceEvent::screensDidSleep})
        tokens.push_back(events.observe(event, [&, event] { seen.push_back(event); }));

    QDBusConnection machine = bus.connect();
    const auto emitSignal = [&](const char* path, const char* interface, const char* name,
                                const QVariant& value) {
        QDBusMessage signal = QDBusMessage::createSignal(path, interface, name);
        signal << value;
        machine.send(signal);
    };
    const auto sleeping = [&](bool on) {
        emitSignal("/org/freedesktop/login1", "org.freedesktop.login1.Manager", "PrepareForSleep", on);
    };
    // Until the connections, which are made in the background, have arrived.
    EXPECT_TRUE(runUntil([&] {
        sleeping(true);
        return !seen.empty();
    }));
    EXPECT_EQ(seen.front(), WorkspaceEvent::willSleep);
    sleeping(false);
    EXPECT_TRUE(runUntil([&] { return seen.back() == WorkspaceEvent::didWake; }));
    EXPECT_TRUE(runUntil([&] {
        emitSignal("/org/gnome/ScreenSaver", "org.gnome.ScreenSaver", "ActiveChanged", true);
        return seen.back() == WorkspaceEvent::screensDidSleep;
    }));

    // What is of another type is not ours; what nobody observes any more goes nowhere.
    seen.clear();
    tokens.resize(1);
    sleeping(true);
    emitSignal("/org/freedesktop/login1", "org.freedesktop.login1.Manager", "PrepareForSleep",
               QString{"yes"});
    sleeping(false);
    EXPECT_TRUE(runUntil([&] { return !seen.empty(); }));
    EXPECT_EQ(seen, std::vector{WorkspaceEvent::didWake});
}

TEST(GioNetworkPathMonitor, everyMonitorReportsThePresentStateAndNothingOnceCancelled)
{
    for (int round = 0; round < 3; ++round) {
        std::atomic<int> reports = 0;
        GioNetworkPathMonitor monitor;
        monitor.start([&](bool) { ++reports; });
        EXPECT_TRUE(runUntil([&] { return reports == 1; }));
        monitor.cancel();
        monitor.cancel();
    }
    std::atomic<bool> late = false;
    {
        GioNetworkPathMonitor monitor;
        monitor.start([&](bool) { late = true; });
    }
    late = false;
    std::atomic<bool> after = false;
    GioNetworkPathMonitor barrier;
    barrier.start([&](bool) { after = true; });
    EXPECT_TRUE(runUntil([&] { return after.load(); }));
    EXPECT_FALSE(late);
}

}  // namespace
}  // namespace tidewell
