// Runs one schedule: logical threads of which one has the processor at any moment, each with its clock for
// the watch over races. What the plug-in waits and locks with (the seam) comes here before it does anything,
// and here it is decided who goes on. See explorer.h for what a schedule is.
//
// An operation is a place to change threads only if its object is shared: some other thread uses it too, one
// of the two changes it, and there is no mutex that all of them hold meanwhile. Which places in the code are
// such is found out on the way; a change of threads before any other operation would show nothing that one
// before the next such operation does not show.
#pragma once

#include <cstdint>
#include <functional>
#include <string>

#include "tests/schedules/scheduler/vector_clock.h"

namespace schedules::engine {

enum class Access : std::uint8_t { kRead, kWrite };

// The life of a schedule, for Stage and main().

/// Forgets the schedule before. The caller is thread 0. Unless `watched`, memory is not watched over.
void begin(bool watched) noexcept;
/// A thread of the host. Starts when run() is called.
void addThread(const char* name, std::function<void()> body);
/// Lets all threads run, and returns when each has ended, with those that they started.
void run();
/// Prints every step of the schedules from here on.
void trace(bool on) noexcept;
void endTrace() noexcept;

// The seam.

/// Whether threads run: what is done before and behind that is done by one thread and is no operation.
bool running() noexcept;
/// Number of the running schedule, by which state that outlives schedules knows that it is old.
std::uint32_t schedule() noexcept;
unsigned currentThread() noexcept;
const char* threadName(unsigned thread) noexcept;

/// The running thread is about to do `what` with `object`, from `site` in the code: others may come first.
void operation(const char* what, const void* object, Access access, const void* site);
/// The same for what others need not come ahead of.
void note(const char* what, const void* object, Access access, const void* site);
/// The running thread waits until `ready` says true of `object`; others go on meanwhile.
void await(const char* what, bool (*ready)(const void* object), const void* object);
/// One of `count` that the system, and not the order of steps, decides.
unsigned systemsChoice(unsigned count);

/// The running thread has this mutex from here on, or no longer. Takes and gives back the number of a mutex
/// in this schedule; kNoNumber lets have it one.
inline constexpr unsigned kNoNumber = ~0U;
unsigned holds(unsigned mutexNumber) noexcept;
void holdsNoMore(unsigned mutexNumber) noexcept;

/// What the running thread has done so far is told to whoever takes `told`.
void tell(VectorClock& told) noexcept;
/// The running thread learns what was told.
void learn(const VectorClock& told) noexcept;

/// A thread of the system's own, which may begin when `mayStart` says true of `object`. It has learned what
/// the running thread knows. The plug-in has started it at this moment.
void startThread(const char* name, std::function<void()> body, bool (*mayStart)(const void* object),
                 const void* object);

}  // namespace schedules::engine
