// clang-format off
#include <windows.h>
#include <psapi.h>
// clang-format on

#include <algorithm>
#include <array>
#include <vector>

#include "simhost/text.h"
#include "tool/shared/base/process_usage.h"

namespace simhost::tool {
namespace {

// Values of handles are multiples of four, and the lowest free one is given out next.
constexpr ULONG_PTR kHandleStep = 4;
constexpr ULONG_PTR kLongestGap = 256;

// Wine does not keep count for GetProcessHandleCount, and asking its server for the list of all handles can
// crash it while programs start and end. So each value is tried, until a gap that no closed handles explain.
std::uint64_t countTriedHandles() {
    std::uint64_t count = 0;
    ULONG_PTR gap = 0;
    for (ULONG_PTR value = kHandleStep; gap < kLongestGap; value += kHandleStep) {
        DWORD flags = 0;
        if (GetHandleInformation(reinterpret_cast<HANDLE>(value), &flags)) {
            ++count;
            gap = 0;
        } else {
            ++gap;
        }
    }
    return count;
}

std::uint64_t bytesOn(HANDLE heap) {
    std::uint64_t bytes = 0;
    if (HeapLock(heap) != FALSE) {
        PROCESS_HEAP_ENTRY entry{};
        while (HeapWalk(heap, &entry) != FALSE) {
            bytes += (entry.wFlags & PROCESS_HEAP_ENTRY_BUSY) != 0 ? entry.cbData : 0U;
        }
        (void)HeapUnlock(heap);
    }
    return bytes;
}

std::uint64_t countHeapBytes() {
    std::array<HANDLE, 64> heaps{};
    const DWORD all = GetProcessHeaps(static_cast<DWORD>(heaps.size()), heaps.data());
    std::uint64_t bytes = 0;
    for (DWORD i = 0; i < std::min(all, static_cast<DWORD>(heaps.size())); ++i) {
        bytes += bytesOn(heaps[i]);
    }
    return bytes;
}

}  // namespace

ProcessUsage processUsage() {
    ProcessUsage out;
    DWORD handles = 0;
    if (GetProcessHandleCount(GetCurrentProcess(), &handles)) {
        out.handles = handles;
    }
    if (out.handles == 0) {
        out.handles = countTriedHandles();
    }
    out.heapBytes = countHeapBytes();
    PROCESS_MEMORY_COUNTERS memory{};
    if (GetProcessMemoryInfo(GetCurrentProcess(), &memory, sizeof memory)) {
        out.privateBytes = memory.PagefileUsage;  // what the system has committed for this process
        out.workingSet = memory.WorkingSetSize;
    }
    return out;
}

std::uint32_t freeThreadSlots() {
    std::vector<DWORD> taken;
    for (DWORD slot = TlsAlloc(); slot != TLS_OUT_OF_INDEXES; slot = TlsAlloc()) {
        taken.push_back(slot);
    }
    for (const DWORD slot : taken) {
        (void)TlsFree(slot);
    }
    return static_cast<std::uint32_t>(taken.size());
}

void setProcessEnvironment(const std::string& name, const std::string& valueUtf8) {
    const std::u16string wideName = toUtf16(name);
    const std::u16string wideValue = toUtf16(valueUtf8);
    SetEnvironmentVariableW(reinterpret_cast<const wchar_t*>(wideName.c_str()),
                            reinterpret_cast<const wchar_t*>(wideValue.c_str()));
}

std::uint32_t processNumber() noexcept {
    return GetCurrentProcessId();
}

void loseHandle() {
    (void)CreateEventW(nullptr, FALSE, FALSE, nullptr);
}

}  // namespace simhost::tool
