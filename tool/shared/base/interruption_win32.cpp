// The system runs the handler on a thread of its own, one for each event.
#include <windows.h>

#include <atomic>

#include "tool/shared/base/interruption.h"
#include "tool/shared/base/temporary_path.h"
#include "tool/shared/base/tool_error.h"

namespace simhost::tool {
namespace {

std::atomic<DWORD> g_patienceMilliseconds = 3000;

BOOL WINAPI handleEvent(DWORD /*event*/) {
    static std::atomic<bool> again = false;
    const bool first = !again.exchange(true);
    detail::noteInterruption();
    if (first) {
        do {
            Sleep(g_patienceMilliseconds);
        } while (detail::endIsHeldBack());
    }
    removeTemporaryPaths();
    // Without the ends of modules, which other threads are at work in.
    (void)TerminateProcess(GetCurrentProcess(), kInterrupted);
    return TRUE;
}

}  // namespace

void watchForInterruption(std::chrono::milliseconds patience) {
    g_patienceMilliseconds = static_cast<DWORD>(patience.count());
    (void)SetConsoleCtrlHandler(handleEvent, TRUE);
}

}  // namespace simhost::tool
