// The system that the plug-in's Windows files meet here: what a scenario sets and asks of it.
#pragma once

namespace schedules::windows {

/// A new schedule; at most `poolThreads` threads in the plug-in's pool, whatever it asks for.
void begin(unsigned poolThreads) noexcept;
/// The host gives up the module. Ends the schedule with a finding when a thread of the pool is on its way
/// into the plug-in or inside it and nothing holds the module for it.
void unloadModule();
/// Pools and work objects that the plug-in has made and not closed.
unsigned open() noexcept;

}  // namespace schedules::windows
