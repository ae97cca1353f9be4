// Ctrl-C for the running process. Implemented by interrupt_this_win32.cpp and interrupt_this_posix.cpp.
#pragma once

namespace simhost::tool {

/// Call before anything else: on Windows the event goes to all processes of a console.
void takeOwnConsole();
/// Comes back when the system has taken note; the program hears of it on a thread of its own.
void interruptThisProcess();

}  // namespace simhost::tool
