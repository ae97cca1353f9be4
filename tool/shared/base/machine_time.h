// What the machine's processors do. Implemented by machine_time_win32.cpp and machine_time_posix.cpp.
#pragma once

#include <optional>

namespace simhost::tool {

/// Seconds since some moment in the past in which processors had nothing to do, all of them together, in
/// steps of about 10 ms; nothing where the system does not tell. Any thread.
std::optional<double> idleProcessorSeconds();

}  // namespace simhost::tool
