// What the plug-in's threads wait at. These are the standard ones; the names are where the exploration of
// schedules puts its own in their place, by a header of the same path that its build finds first
// (tests/schedules/seam/).
#pragma once

#include <condition_variable>
#include <future>

namespace orvantis {

/// For std::unique_lock<Mutex>.
using ConditionVariable = std::condition_variable;

template <class T>
using Promise = std::promise<T>;
template <class T>
using Future = std::future<T>;

}  // namespace orvantis
