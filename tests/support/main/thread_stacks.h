// Where the threads of this process stand, for people who look for the reason of a hang.
#pragma once

namespace orvantis::test {

/// Call once, early: what printThreadStacks() needs is set up while nothing hangs.
void prepareThreadStacks();

/// Writes the call stack of every thread but the calling one to stderr: a line for each thread, one for each
/// frame with its module and the offset in it, innermost first. Where the system has a tool for it, function
/// and line follow. The threads go on.
void printThreadStacks();

/// False when every thread but the calling one waits, and hardly any processor time went into this process
/// since the last call. A thread that waits for a processor works. True on Windows, which does not tell.
bool anotherThreadWorks();

}  // namespace orvantis::test
