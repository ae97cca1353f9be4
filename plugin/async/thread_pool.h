// The door to the system's thread pool. std::async would start a bare thread for every frame on some
// runtimes, so the pool is asked directly.
#pragma once

#include <cstdint>
#include <functional>
#include <future>

namespace orvantis {

/// Runs `work` once, at once, on a thread of the system's pool, never on the caller's, and never deferred.
/// The future carries its result or its exception. `work` and everything it holds may be destroyed a moment
/// after the future became ready, so it must own nothing that waits or needs the caller. The module stays
/// loaded until the pool's thread has left it. Throws std::system_error when the pool takes no work. Any
/// thread.
std::future<std::int32_t> runOnThreadPool(std::function<std::int32_t()> work);

}  // namespace orvantis
