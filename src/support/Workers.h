#pragma once

#include <exception>
#include <expected>
#include <functional>
#include <optional>
#include <type_traits>
#include <utility>
#include <variant>

#include "support/Asio.h"

namespace tidewell {

/// Runs `work` on `workers` and resumes the caller on its own executor with the result. What `work` throws
/// is thrown to the caller. A caller that is cancelled leaves at once with operation_aborted; the work then
/// ends on its own and its result is dropped, so it must own everything that it touches.
template <class Work>
[[nodiscard]] asio::awaitable<std::invoke_result_t<Work>> runOnWorker(asio::any_io_executor workers,
                                                                      Work work);

}  // namespace tidewell

#include "support/Workers.inl"
