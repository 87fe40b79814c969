#pragma once

#include <memory>

#include "support/MainLoop.h"

namespace tidewell {

/// Runs a MainLoop inside Qt's event loop: work that any thread posts to its executor runs on the main
/// thread. Created and destroyed on the main thread, with a QCoreApplication; outlives everything that posts.
class QtMainLoop final {
public:
    QtMainLoop();
    ~QtMainLoop();
    QtMainLoop(const QtMainLoop&) = delete;

    [[nodiscard]] asio::any_io_executor executor();
    [[nodiscard]] MainLoop& loop();

private:
    struct Impl;
    std::unique_ptr<Impl> impl_;
};

}  // namespace tidewell
