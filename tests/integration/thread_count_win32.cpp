// clang-format off
#include <windows.h>
#include <tlhelp32.h>
// clang-format on

#include "tests/integration/thread_count.h"

unsigned threadCount() {
    const HANDLE snapshot = CreateToolhelp32Snapshot(TH32CS_SNAPTHREAD, 0);
    if (snapshot == INVALID_HANDLE_VALUE) {
        return 0;
    }
    unsigned threads = 0;
    THREADENTRY32 entry{};
    entry.dwSize = sizeof entry;
    for (BOOL more = Thread32First(snapshot, &entry); more; more = Thread32Next(snapshot, &entry)) {
        if (entry.th32OwnerProcessID == GetCurrentProcessId()) {
            ++threads;
        }
    }
    CloseHandle(snapshot);
    return threads;
}
