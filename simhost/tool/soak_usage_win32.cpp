// clang-format off
#include <windows.h>
#include <psapi.h>
// clang-format on

#include <cstddef>
#include <vector>

#include "simhost/text.h"
#include "simhost/tool/soak_usage.h"

namespace simhost::tool {
namespace {

// The system's list of all handles, as NtQuerySystemInformation gives it.
struct HandleEntry {
    void* object;
    ULONG_PTR process;
    ULONG_PTR handle;
    ULONG access;
    USHORT backTrace;
    USHORT type;
    ULONG attributes;
    ULONG reserved;
};
struct HandleList {
    ULONG_PTR count;
    ULONG_PTR reserved;
    HandleEntry first;
};
using QuerySystemInformation = LONG(WINAPI*)(int, void*, ULONG, ULONG*);
constexpr int kExtendedHandleInformation = 64;
constexpr LONG kBufferTooSmall = static_cast<LONG>(0xC0000004);
constexpr std::size_t kLargestList = std::size_t{1} << 28;

// Wine does not keep count for GetProcessHandleCount, but it lists the handles.
std::uint64_t countListedHandles() {
    const HMODULE library = GetModuleHandleW(L"ntdll.dll");
    const FARPROC found = library == nullptr ? nullptr : GetProcAddress(library, "NtQuerySystemInformation");
    if (found == nullptr) {
        return 0;
    }
    const auto query = reinterpret_cast<QuerySystemInformation>(reinterpret_cast<void*>(found));
    std::vector<ULONG_PTR> buffer(8192);
    LONG status = kBufferTooSmall;
    while (status == kBufferTooSmall && buffer.size() * sizeof(ULONG_PTR) < kLargestList) {
        buffer.resize(buffer.size() * 2);
        ULONG needed = 0;
        status = query(kExtendedHandleInformation, buffer.data(),
                       static_cast<ULONG>(buffer.size() * sizeof(ULONG_PTR)), &needed);
    }
    if (status != 0) {
        return 0;
    }
    const auto* list = reinterpret_cast<const HandleList*>(buffer.data());
    const HandleEntry* entries = &list->first;
    std::uint64_t count = 0;
    for (ULONG_PTR i = 0; i < list->count; ++i) {
        count += entries[i].process == GetCurrentProcessId() ? 1U : 0U;
    }
    return count;
}

}  // namespace

ProcessUsage processUsage() {
    ProcessUsage out;
    DWORD handles = 0;
    if (GetProcessHandleCount(GetCurrentProcess(), &handles)) {
        out.handles = handles;
    }
    if (out.handles == 0) {
        out.handles = countListedHandles();
    }
    PROCESS_MEMORY_COUNTERS memory{};
    if (GetProcessMemoryInfo(GetCurrentProcess(), &memory, sizeof memory)) {
        out.privateBytes = memory.PagefileUsage;  // what the system has committed for this process
        out.workingSet = memory.WorkingSetSize;
    }
    return out;
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
