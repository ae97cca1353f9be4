// Ctrl-C, and the system's other ways to ask the program to end. Nothing unfinished is left behind: the work
// under way stops at its next step and cleans up as after a failure; work that does not come to a next step
// within three seconds, or is interrupted once more, is ended with the process.
#pragma once

#include <chrono>

namespace simhost::tool {

/// Call first thing in main(), while there is no other thread. `patience` is how long work may take to its
/// next step.
void watchForInterruption(std::chrono::milliseconds patience = std::chrono::seconds(3));

/// Any thread.
bool interrupted() noexcept;
/// Throws a ToolError with kInterrupted once the program is to end. Any thread.
void throwIfInterrupted();

/// While one lives, patience has no end: what is changed in a user's own file is either finished or taken
/// back, however slow the disk. An interruption that comes once more ends the process all the same. Any
/// thread.
class EndHeldBack {
 public:
    EndHeldBack() noexcept;
    EndHeldBack(const EndHeldBack&) = delete;
    EndHeldBack& operator=(const EndHeldBack&) = delete;
    ~EndHeldBack();
};

namespace detail {
/// By the watching thread, when patience is at its end.
bool endIsHeldBack() noexcept;
/// By the watching thread. Implemented in interruption.cpp.
void noteInterruption() noexcept;
}  // namespace detail

}  // namespace simhost::tool
