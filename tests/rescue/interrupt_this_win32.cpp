#include "tests/rescue/interrupt_this.h"

#include <windows.h>

namespace simhost::tool {

void takeOwnConsole() {
    (void)FreeConsole();
    (void)AllocConsole();
    (void)ShowWindow(GetConsoleWindow(), SW_HIDE);
}

void interruptThisProcess() {
    (void)GenerateConsoleCtrlEvent(CTRL_C_EVENT, 0);
}

}  // namespace simhost::tool
