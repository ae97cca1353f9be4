// See thread_stacks.h. Each thread is stopped for as long as its frames are unwound by the tables that the
// compiler wrote for exceptions, and goes on before anything is printed.

// clang-format off
#include <windows.h>
#include <tlhelp32.h>
// clang-format on

#include <array>
#include <cstdio>
#include <vector>

#include "tests/support/main/thread_stacks.h"

namespace orvantis::test {

namespace {

constexpr std::size_t kMostFrames = 64;

struct Frames {
    std::array<DWORD64, kMostFrames> addresses{};
    std::size_t count = 0;
};

std::vector<DWORD> otherThreads() {
    std::vector<DWORD> threads;
    const HANDLE snapshot = CreateToolhelp32Snapshot(TH32CS_SNAPTHREAD, 0);
    if (snapshot == INVALID_HANDLE_VALUE) {
        return threads;
    }
    THREADENTRY32 entry{};
    entry.dwSize = sizeof entry;
    for (BOOL more = Thread32First(snapshot, &entry); more != FALSE; more = Thread32Next(snapshot, &entry)) {
        if (entry.th32OwnerProcessID == GetCurrentProcessId() && entry.th32ThreadID != GetCurrentThreadId()) {
            threads.push_back(entry.th32ThreadID);
        }
    }
    (void)CloseHandle(snapshot);
    return threads;
}

// Allocates nothing: the stopped thread may hold the heap's lock.
void unwind(CONTEXT& context, Frames& frames) {
    while (context.Rip != 0 && frames.count < kMostFrames) {
        frames.addresses[frames.count++] = context.Rip;
        DWORD64 base = 0;
        const PRUNTIME_FUNCTION function = RtlLookupFunctionEntry(context.Rip, &base, nullptr);
        if (function == nullptr) {
            // A function that calls nothing has no entry; where it returns to is on top of the stack.
            if (context.Rsp == 0 || frames.count > 1) {
                return;
            }
            context.Rip = *reinterpret_cast<const DWORD64*>(context.Rsp);
            context.Rsp += sizeof(DWORD64);
            continue;
        }
        void* handlerData = nullptr;
        DWORD64 establisher = 0;
        (void)RtlVirtualUnwind(UNW_FLAG_NHANDLER, base, context.Rip, function, &context, &handlerData,
                               &establisher, nullptr);
    }
}

bool framesOf(DWORD id, Frames& frames) {
    const HANDLE thread =
        OpenThread(THREAD_SUSPEND_RESUME | THREAD_GET_CONTEXT | THREAD_QUERY_INFORMATION, FALSE, id);
    if (thread == nullptr) {
        return false;
    }
    bool known = false;
    if (SuspendThread(thread) != static_cast<DWORD>(-1)) {
        CONTEXT context{};
        context.ContextFlags = CONTEXT_FULL;
        known = GetThreadContext(thread, &context) != FALSE;
        if (known) {
            unwind(context, frames);
        }
        (void)ResumeThread(thread);
    }
    (void)CloseHandle(thread);
    return known;
}

void printFrame(std::size_t number, DWORD64 address) {
    HMODULE module = nullptr;
    std::array<char, MAX_PATH> path{};
    if (GetModuleHandleExA(
            GET_MODULE_HANDLE_EX_FLAG_FROM_ADDRESS | GET_MODULE_HANDLE_EX_FLAG_UNCHANGED_REFCOUNT,
            reinterpret_cast<LPCSTR>(address), &module) == FALSE ||
        GetModuleFileNameA(module, path.data(), static_cast<DWORD>(path.size())) == 0) {
        std::fprintf(stderr, "  #%zu 0x%llx\n", number, static_cast<unsigned long long>(address));
        return;
    }
    std::fprintf(stderr, "  #%zu %s+0x%llx\n", number, path.data(),
                 static_cast<unsigned long long>(address - reinterpret_cast<DWORD64>(module)));
}

}  // namespace

void prepareThreadStacks() {}

void printThreadStacks() {
    for (const DWORD id : otherThreads()) {
        Frames frames;
        const bool known = framesOf(id, frames);
        std::fprintf(stderr, "Thread %lu%s\n", static_cast<unsigned long>(id), known ? ":" : ": no answer");
        for (std::size_t i = 0; i < frames.count; ++i) {
            printFrame(i, frames.addresses[i]);
        }
    }
}

bool anotherThreadWorks() {
    return true;
}

}  // namespace orvantis::test
