// winpthreads, on which the C++ library of mingw-w64 stands, takes an index of thread-local storage where a
// library first uses it, and never gives it back. A process has 1,088 of them, and tests load and unload this
// library more often than that. So its calls of TlsAlloc come here, and the index goes when the library does.
#include <windows.h>

#ifdef __MINGW32__

namespace {

constexpr LONG kMostSlots = 16;
DWORD g_slots[kMostSlots];
volatile LONG g_taken = 0;

DWORD WINAPI takeSlot() {
    using Alloc = DWORD(WINAPI*)();
    const HMODULE system = GetModuleHandleW(L"kernel32.dll");
    const auto alloc = reinterpret_cast<Alloc>(reinterpret_cast<void*>(GetProcAddress(system, "TlsAlloc")));
    const DWORD slot = alloc();
    if (slot != TLS_OUT_OF_INDEXES) {
        const LONG place = InterlockedIncrement(&g_taken) - 1;
        if (place < kMostSlots) {
            g_slots[place] = slot;
        }
    }
    return slot;
}

}  // namespace

// Through this name every call of a function of the system goes.
// NOLINTNEXTLINE(bugprone-reserved-identifier)
extern "C" DWORD(WINAPI* const __imp_TlsAlloc)() = &takeSlot;

extern "C" BOOL WINAPI DllMain(HINSTANCE, DWORD reason, LPVOID processEnds) {
    if (reason == DLL_PROCESS_DETACH && processEnds == nullptr) {
        for (LONG i = 0; i < g_taken && i < kMostSlots; ++i) {
            (void)TlsFree(g_slots[i]);
        }
    }
    return TRUE;
}

#endif
