#include "tool/shared/base/terminal.h"

#include <io.h>
#include <windows.h>

#include <cstdio>
#include <cstdlib>

namespace simhost::tool {

bool prepareColours() {
    constexpr DWORD kVirtualTerminal =
        0x0004;  // ENABLE_VIRTUAL_TERMINAL_PROCESSING, which older headers lack
    const char* forbidden = std::getenv("NO_COLOR");
    if ((forbidden != nullptr && *forbidden != '\0') || _isatty(_fileno(stdout)) == 0) {
        return false;
    }
    HANDLE console = GetStdHandle(STD_OUTPUT_HANDLE);
    DWORD mode = 0;
    return GetConsoleMode(console, &mode) != 0 && SetConsoleMode(console, mode | kVirtualTerminal) != 0;
}

}  // namespace simhost::tool
