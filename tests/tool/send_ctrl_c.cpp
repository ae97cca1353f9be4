// send_ctrl_c PROCESS: Ctrl-C in the console of a process, and so for all processes of that console.
#include <windows.h>

#include <cstdlib>

int main(int count, char** arguments) {
    if (count != 2) {
        return 2;
    }
    (void)FreeConsole();
    if (AttachConsole(static_cast<DWORD>(std::strtoul(arguments[1], nullptr, 10))) == FALSE) {
        return 1;
    }
    (void)SetConsoleCtrlHandler(nullptr, TRUE);  // not for this one
    return GenerateConsoleCtrlEvent(CTRL_C_EVENT, 0) == FALSE ? 1 : 0;
}
