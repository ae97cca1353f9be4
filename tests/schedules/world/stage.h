// What a scenario is written with: threads of the host, the moment when they all run, and what has to be true
// behind it. Before and behind run() one thread sets up and takes down.
#pragma once

#include <functional>

#include "tests/schedules/world/calls.h"
#include "tests/schedules/world/host.h"

namespace schedules {

class Stage {
 public:
    /// A thread of the host. The name is what findings call it.
    void thread(const char* name, std::function<void()> body);
    /// Runs all threads, and those that the plug-in has started, to their ends.
    void run();

    /// Each ends the schedule with a finding when it does not hold.
    static void expect(bool holds, const char* what);
    static void expectCode(std::int32_t code, std::int32_t wanted, const char* what);
    static void expectFrame(const world::FrameAnswer& answer, int picture, const char* what);
    /// A call that found its importer closed, or came before that: an exception's code, or the frame.
    static void expectFrameOrGone(const world::FrameAnswer& answer, int picture, const char* what);
};

struct Scenario {
    const char* name;
    const char* about;
    void (*play)(Stage& stage);
    unsigned poolThreads = 4;  ///< of the plug-in's pool
    unsigned preemptions = 3;  ///< up to so many unless another number is asked for
};

/// Plays it once: begins a schedule, plays, and looks for what was left behind.
void playOnce(const Scenario& scenario);
/// Plays it once for what the plug-in makes on first use and keeps. Nothing is looked for.
void warmUp(const Scenario& scenario);

}  // namespace schedules
