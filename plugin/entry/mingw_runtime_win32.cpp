// What the mingw-w64 runtime leaves in the host when the plug-in is unloaded, given back. The runtime is
// linked into the plug-in, so every load brings a new one: without this each load would keep a thread-local
// slot, of which a process has 1,088, and the memory put by for exceptions. Only in builds with that runtime,
// where the linker is told to begin and end the module here and to send the runtime's requests for slots
// here.

#include <windows.h>

#include <array>
#include <atomic>

namespace __gnu_cxx {
void __freeres() noexcept;  // NOLINT: the runtime's name
}  // namespace __gnu_cxx

// Names of the runtime and of the linker's --wrap.
// NOLINTBEGIN(bugprone-reserved-identifier)
extern "C" {
BOOL WINAPI DllMainCRTStartup(HINSTANCE module, DWORD reason, LPVOID reserved);
extern const IMAGE_TLS_DIRECTORY _tls_used;
using TlsAllocFn = DWORD(WINAPI*)();
extern const TlsAllocFn __real___imp_TlsAlloc;
}
// NOLINTEND(bugprone-reserved-identifier)

namespace {

// The runtime takes one. A slot beyond these would stay with the host, as all did without this list.
constexpr std::size_t kMostSlots = 8;
constinit std::array<std::atomic<DWORD>, kMostSlots> g_slots{};
constinit std::atomic<std::size_t> g_slotCount{0};

DWORD WINAPI allocateSlot() {
    const DWORD slot = __real___imp_TlsAlloc();
    if (slot != TLS_OUT_OF_INDEXES) {
        const std::size_t place = g_slotCount.fetch_add(1);
        if (place < kMostSlots) {
            g_slots[place] = slot;
        }
    }
    return slot;
}

// What the runtime keeps for a thread, it gives back when the thread ends. For the one that unloads the
// module this is its last moment in here. Other threads that were in here and live on cannot be reached.
void leaveThread(HINSTANCE module) {
    const auto* callback = reinterpret_cast<const PIMAGE_TLS_CALLBACK*>(_tls_used.AddressOfCallBacks);
    for (; *callback != nullptr; ++callback) {
        (*callback)(module, DLL_THREAD_DETACH, nullptr);
    }
}

void giveBack(HINSTANCE module) {
    leaveThread(module);
    const std::size_t count = g_slotCount < kMostSlots ? g_slotCount.load() : kMostSlots;
    for (std::size_t i = 0; i < count; ++i) {
        TlsFree(g_slots[i]);
    }
    __gnu_cxx::__freeres();
}

}  // namespace

// NOLINTBEGIN(bugprone-reserved-identifier)
extern "C" {
extern const TlsAllocFn __wrap___imp_TlsAlloc;
const TlsAllocFn __wrap___imp_TlsAlloc = allocateSlot;

/// The module's entry for the system, around the runtime's own.
BOOL WINAPI orvantisModuleEntry(HINSTANCE module, DWORD reason, LPVOID reserved) {
    const BOOL result = DllMainCRTStartup(module, reason, reserved);
    // At the end of the process there is nobody to give anything back to.
    if (reason == DLL_PROCESS_DETACH && reserved == nullptr) {
        giveBack(module);
    }
    return result;
}
}
// NOLINTEND(bugprone-reserved-identifier)
