// What the system tells the module at its end: whether it is unloaded, while the process and its other
// threads go on, or the process ends and those threads are gone. Runs ahead of the runtime's exit handlers.
// There is no native twin: POSIX systems end no thread before the exit handlers of a process have run.

#include <windows.h>

#include "diag/log.h"

extern "C" BOOL WINAPI DllMain(HINSTANCE /*module*/, DWORD reason, LPVOID reserved) {
    // Null behind FreeLibrary.
    if (reason == DLL_PROCESS_DETACH && reserved != nullptr) {
        orvantis::noteProcessEnd();
    }
    return TRUE;
}
