#pragma once

#include <functional>
#include <memory>

namespace tidewell {

/// Runs `work` on a thread of its own, then `done` on the main thread from the event loop.
///
/// For the rare calls of libraries that may block for as long as they like. Nobody waits for the
/// thread, not even the end of the program, so `work` must own what it touches. `done` is left out once
/// the returned token has gone. Called on the main thread, with a QCoreApplication.
[[nodiscard]] std::shared_ptr<void> runInBackground(std::function<void()> work, std::function<void()> done);

}  // namespace tidewell
