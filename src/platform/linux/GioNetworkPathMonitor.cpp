#include "platform/linux/GioNetworkPathMonitor.h"

#include <gio/gio.h>

#include <mutex>
#include <optional>
#include <string_view>
#include <thread>
#include <utility>

#include "platform/linux/GObject.h"

namespace tidewell {
namespace {

/// Routes come and go several times while a network is set up.
constexpr guint settleMilliseconds = 500;

/// A monitor that asks NetworkManager or a portal holds a shared bus connection, and the library ends the
/// whole process when such a one breaks, unless it is told not to.
void surviveBusFailure(GNetworkMonitor* monitor)
{
    if (std::string_view{G_OBJECT_TYPE_NAME(monitor)} == "GNetworkMonitorNetlink")
        return;
    for (const GBusType type : {G_BUS_TYPE_SYSTEM, G_BUS_TYPE_SESSION}) {
        GErrorSlot error;
        if (const GObjectPtr<GDBusConnection> bus{g_bus_get_sync(type, nullptr, error.fill())})
            g_dbus_connection_set_exit_on_close(bus.get(), FALSE);
    }
}

/// The thread that GLib's network monitor lives on. The library makes one monitor for the process, bound to
/// the context in which it was first asked for, so this thread stays for as long as the process does.
/// Starting it may wait for the system bus, which is another reason for a thread.
GMainContext* sharedContext()
{
    static GMainContext* const context = [] {
        GMainContext* made = g_main_context_new();
        std::thread{[made] {
            g_main_context_push_thread_default(made);
            surviveBusFailure(g_network_monitor_get_default());
            GMainLoop* loop = g_main_loop_new(made, FALSE);
            g_main_loop_run(loop);
        }}.detach();
        return made;
    }();
    return context;
}

/// Runs `work` on that thread, after what was given to it before.
void runInContext(std::function<void()> work)
{
    GSource* source = g_idle_source_new();
    g_source_set_priority(source, G_PRIORITY_DEFAULT);
    g_source_set_callback(
        source,
        [](gpointer data) -> gboolean {
            (*static_cast<std::function<void()>*>(data))();
            return G_SOURCE_REMOVE;
        },
        new std::function<void()>{std::move(work)},
        [](gpointer data) { delete static_cast<std::function<void()>*>(data); });
    g_source_attach(source, sharedContext());
    g_source_unref(source);
}

}  // namespace

struct GioNetworkPathMonitor::State : std::enable_shared_from_this<State> {
    std::mutex lock{};
    std::function<void(bool)> handler{};  ///< Under lock; empty once cancelled. Called under lock.

    // On the context's thread only.
    gulong connection = 0;
    GSource* settling = nullptr;
    std::optional<bool> reported{};
    std::shared_ptr<State> self{};  ///< Keeps this alive while GLib may call it.

    void begin()
    {
        self = shared_from_this();
        GNetworkMonitor* monitor = g_network_monitor_get_default();
        connection = g_signal_connect(monitor, "network-changed", G_CALLBACK(changed), this);
        report(g_network_monitor_get_network_available(monitor) != FALSE);
    }

    void end()
    {
        if (connection != 0)
            g_signal_handler_disconnect(g_network_monitor_get_default(), connection);
        stopSettling();
        self.reset();  // The last use of this.
    }

    void stopSettling()
    {
        if (settling == nullptr)
            return;
        g_source_destroy(settling);
        g_source_unref(settling);
        settling = nullptr;
    }

    static void changed(GNetworkMonitor*, gboolean, gpointer data)
    {
        auto& state = *static_cast<State*>(data);
        state.stopSettling();
        state.settling = g_timeout_source_new(settleMilliseconds);
        g_source_set_callback(state.settling, settled, data, nullptr);
        g_source_attach(state.settling, g_main_context_get_thread_default());
    }

    static gboolean settled(gpointer data)
    {
        auto& state = *static_cast<State*>(data);
        state.stopSettling();
        state.report(g_network_monitor_get_network_available(g_network_monitor_get_default()) != FALSE);
        return G_SOURCE_REMOVE;
    }

    void report(bool satisfied)
    {
        if (reported == satisfied)
            return;
        reported = satisfied;
        const std::lock_guard guard{lock};
        if (handler)
            handler(satisfied);
    }
};

GioNetworkPathMonitor::GioNetworkPathMonitor() : state_{std::make_shared<State>()} {}

GioNetworkPathMonitor::~GioNetworkPathMonitor() { cancel(); }

void GioNetworkPathMonitor::start(std::function<void(bool)> handler)
{
    {
        const std::lock_guard guard{state_->lock};
        state_->handler = std::move(handler);
    }
    runInContext([state = state_] { state->begin(); });
}

void GioNetworkPathMonitor::cancel()
{
    {
        const std::lock_guard guard{state_->lock};
        if (!std::exchange(state_->handler, nullptr))
            return;
    }
    runInContext([state = state_] { state->end(); });
}

}  // namespace tidewell
