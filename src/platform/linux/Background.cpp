#include "platform/linux/Background.h"

#include <QMetaObject>
#include <QObject>
#include <thread>

namespace tidewell {

std::shared_ptr<void> runInBackground(std::function<void()> work, std::function<void()> done)
{
    // On the main thread, and never deleted: a thread may still post to it while the program ends.
    static QObject* const mailbox = new QObject;
    auto token = std::make_shared<std::function<void()>>(std::move(done));
    std::thread{[work = std::move(work), weak = std::weak_ptr{token}] {
        work();
        QMetaObject::invokeMethod(
            mailbox,
            [weak] {
                if (const auto handler = weak.lock())
                    (*handler)();
            },
            Qt::QueuedConnection);
    }}.detach();
    return token;
}

}  // namespace tidewell
