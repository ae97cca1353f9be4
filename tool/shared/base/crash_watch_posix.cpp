// Crashes of native builds, in the place of tool/shared/base/crash_watch_win32.cpp. The core file, if the
// user wants one, is the system's.
#include <dlfcn.h>
#include <execinfo.h>
#include <fcntl.h>
#include <unistd.h>

#include <algorithm>
#include <csignal>
#include <cstdint>
#include <cstdio>
#include <cstring>
#include <string_view>
#include <vector>

#include "tool/shared/base/crash_watch.h"

namespace simhost::tool {
namespace {

std::string g_crashRecord;  // set before any crash, only read by the handler

const char* signalWords(int signal) {
    switch (signal) {
        case SIGSEGV:
            return "access to memory that is not there (SIGSEGV)";
        case SIGBUS:
            return "bad access to memory (SIGBUS)";
        case SIGILL:
            return "illegal instruction (SIGILL)";
        case SIGFPE:
            return "arithmetic fault (SIGFPE)";
        default:
            return "the process aborted itself (SIGABRT)";
    }
}

const void* instructionOf(const void* context) {
#if defined(__x86_64__)
    return reinterpret_cast<const void*>(static_cast<const ucontext_t*>(context)->uc_mcontext.gregs[REG_RIP]);
#elif defined(__aarch64__)
    return reinterpret_cast<const void*>(static_cast<const ucontext_t*>(context)->uc_mcontext.pc);
#else
    (void)context;
    return nullptr;
#endif
}

constexpr int kMostCrashCalls = 48;

bool isRuntime(const std::string& module) {
    return module.starts_with("libc.so") || module.starts_with("libpthread");
}

// Who called abort(): the nearest call outside the C library that the signal came from.
const void* aborter(void* const* calls, int count) {
    bool inRuntime = false;
    for (int i = 0; i < count; ++i) {
        const bool runtime = isRuntime(codePlace(calls[i]).module);
        if (inRuntime && !runtime) {
            return calls[i];
        }
        inRuntime = inRuntime || runtime;
    }
    return nullptr;
}

std::string crashText(int signal, const void* instruction, void* const* calls, int count) {
    const auto line = [](const CodePlace& place, const char* between) {
        char offset[32];
        (void)std::snprintf(offset, sizeof offset, "%s0x%llx\n", between, place.offset);
        return place.module + offset;
    };
    const void* const at = signal == SIGABRT ? aborter(calls, count) : instruction;
    std::string out = std::string(signalWords(signal)) + "\n" + line(codePlace(at), "\n");
    // What the handler itself called comes first in the list.
    void* const* const begin = std::find(calls, calls + count, instruction);
    for (void* const* call = begin == calls + count ? calls : begin; call != calls + count; ++call) {
        out += line(codePlace(*call), "+");
    }
    return out;
}

// The process is lost: what follows may use what a signal handler may not, in the hope to tell more.
void tellCrash(int signal, siginfo_t*, void* context) {
    void* calls[kMostCrashCalls];
    const int count = ::backtrace(calls, kMostCrashCalls);
    const std::string text = crashText(signal, instructionOf(context), calls, count);
    const int file = ::open(g_crashRecord.c_str(), O_WRONLY | O_CREAT | O_TRUNC, 0600);
    if (file >= 0) {
        (void)!::write(file, text.data(), text.size());
        (void)::close(file);
    }
    (void)std::signal(signal, SIG_DFL);
    (void)::raise(signal);
}

}  // namespace

void watchForCrashes(const std::string& recordUtf8, const std::string&) {
    g_crashRecord = recordUtf8;
    // A stack that overflowed cannot carry the handler.
    static std::vector<char> stack(std::size_t{256} * 1024);
    stack_t other{};
    other.ss_sp = stack.data();
    other.ss_size = stack.size();
    (void)::sigaltstack(&other, nullptr);
    struct sigaction action {};
    action.sa_sigaction = tellCrash;
    action.sa_flags = SA_SIGINFO | SA_ONSTACK | static_cast<int>(SA_RESETHAND);
    for (const int signal : {SIGSEGV, SIGBUS, SIGILL, SIGFPE, SIGABRT}) {
        (void)::sigaction(signal, &action, nullptr);
    }
}

CodePlace codePlace(const void* address) {
    Dl_info info{};
    if (address == nullptr || ::dladdr(address, &info) == 0 || info.dli_fname == nullptr) {
        return {};
    }
    const std::string_view path = info.dli_fname;
    return {std::string(path.substr(path.find_last_of('/') + 1)),
            reinterpret_cast<std::uintptr_t>(address) - reinterpret_cast<std::uintptr_t>(info.dli_fbase)};
}

}  // namespace simhost::tool
