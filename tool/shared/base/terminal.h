// The terminal that the tool's output goes to, if it does. Implemented by terminal_win32.cpp and, for native
// builds, by a twin beside it. Main thread only.
#pragma once

namespace simhost::tool {

/// True when standard output is a terminal that understands colours, which are then switched on, and the user
/// has not forbidden them with the environment variable NO_COLOR.
bool prepareColours();

}  // namespace simhost::tool
