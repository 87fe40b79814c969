#include "platform/linux/LogindEvents.h"

#include <optional>
#include <utility>
#include <vector>

#include "platform/linux/BusConnection.h"
#include "platform/linux/WorkspaceSignals.h"
#include "support/Log.h"

namespace tidewell {
namespace {

const Log log{"LogindEvents"};

struct Observer {
    WorkspaceEvent event;
    std::function<void()> handler;
};

}  // namespace

struct LogindEvents::Impl {
    std::vector<std::weak_ptr<Observer>> observers{};
    std::vector<QString> connections{};
    std::vector<std::shared_ptr<void>> connecting{};
    WorkspaceSignals signalReceiver{[this](WorkspaceEvent event) { tell(event); }};

    ~Impl()
    {
        for (const QString& name : connections)
            QDBusConnection::disconnectFromBus(name);
    }

    void tell(WorkspaceEvent event)
    {
        // A handler may drop its own token or add another.
        const auto present = observers;
        for (const auto& weak : present) {
            const auto observer = weak.lock();
            if (observer && observer->event == event)
                observer->handler();
        }
    }

    void listen(const QString& address, void (WorkspaceSignals::*listenOn)(QDBusConnection),
                const char* missed)
    {
        connecting.push_back(
            connectToBus(address, [this, listenOn, missed](std::optional<QDBusConnection> bus) {
                if (!bus) {
                    log.info(missed);
                    return;
                }
                connections.push_back(bus->name());
                (signalReceiver.*listenOn)(*bus);
            }));
    }
};

LogindEvents::LogindEvents(const QString& systemBus, const QString& sessionBus)
    : impl_{std::make_shared<Impl>()}
{
    impl_->listen(systemBus.isEmpty() ? systemBusAddress() : systemBus, &WorkspaceSignals::listenForSleep,
                  "There is no system bus: sleep and wake are not announced");
    impl_->listen(sessionBus.isEmpty() ? sessionBusAddress() : sessionBus,
                  &WorkspaceSignals::listenForScreens,
                  "There is no session bus: screen sleep is not announced");
}

LogindEvents::~LogindEvents() = default;

std::shared_ptr<void> LogindEvents::observe(WorkspaceEvent event, std::function<void()> handler)
{
    std::erase_if(impl_->observers, [](const auto& weak) { return weak.expired(); });
    auto observer = std::make_shared<Observer>(event, std::move(handler));
    impl_->observers.push_back(observer);
    return observer;
}

}  // namespace tidewell
