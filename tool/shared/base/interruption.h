// Ctrl-C, and the system's other ways to ask the program to end. Nothing unfinished is left behind: the work
// under way stops at its next step and cleans up as after a failure; work that does not come to a next step
// within three seconds, or is interrupted once more, is ended with the process.
#pragma once

namespace simhost::tool {

/// Call first thing in main(), while there is no other thread.
void watchForInterruption();

/// Any thread.
bool interrupted() noexcept;
/// Throws a ToolError with kInterrupted once the program is to end. Any thread.
void throwIfInterrupted();

namespace detail {
/// By the watching thread. Implemented in interruption.cpp.
void noteInterruption() noexcept;
}  // namespace detail

}  // namespace simhost::tool
