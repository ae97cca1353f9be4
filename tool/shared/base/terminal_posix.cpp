// The tool's terminal for native builds, in the place of tool/shared/base/terminal_win32.cpp.
#include "tool/shared/base/terminal.h"

#include <unistd.h>

#include <cstdlib>

namespace simhost::tool {

bool prepareColours() {
    const char* forbidden = std::getenv("NO_COLOR");
    return (forbidden == nullptr || *forbidden == '\0') && isatty(STDOUT_FILENO) != 0;
}

}  // namespace simhost::tool
