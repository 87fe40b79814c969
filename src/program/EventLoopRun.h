#pragma once

#include <QCoreApplication>
#include <exception>
#include <optional>

#include "platform/linux/QtMainLoop.h"
#include "support/Asio.h"

namespace tidewell {

/// Runs a coroutine on the main thread inside the desktop's event loop, to its end, and returns its result:
/// for short commands that ask the desktop. With a QCoreApplication, whose loop does not run yet. `loop` goes
/// after the engine has stopped.
template <class T>
[[nodiscard]] T runInEventLoop(QtMainLoop& loop, asio::awaitable<T> work)
{
    std::optional<T> result;
    std::exception_ptr error;
    asio::co_spawn(loop.executor(), std::move(work), [&](std::exception_ptr thrown, T value) {
        error = thrown;
        result = std::move(value);
        QCoreApplication::quit();
    });
    QCoreApplication::exec();
    if (error)
        std::rethrow_exception(error);
    return std::move(*result);
}

}  // namespace tidewell
