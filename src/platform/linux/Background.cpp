#include "platform/linux/Background.h"

#include <QMetaObject>
#include <QObject>
#include <thread>

namespace tidewell {

std::shared_ptr<void> runInBackground(std::function<void()> work, std::function<void()> done)
{
    // Lives on the main thread; the thread that lets it go last only asks for its deletion.
    const std::shared_ptr<QObject> mailbox{new QObject, [](QObject* object) { object->deleteLater(); }};
    auto token = std::make_shared<std::function<void()>>(std::move(done));
    std::thread{[mailbox, work = std::move(work), weak = std::weak_ptr{token}] {
        work();
        QMetaObject::invokeMethod(
            mailbox.get(),
            [weak] {
                if (const auto handler = weak.lock())
                    (*handler)();
            },
            Qt::QueuedConnection);
    }}.detach();
    return token;
}

}  // namespace tidewell
