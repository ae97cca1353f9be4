#include <windows.h>
// clang-format off
#include <dbghelp.h>  // needs windows.h before it
// clang-format on

#include <csignal>
#include <cstdint>
#include <cstdio>
#include <cstring>
#include <iterator>

#include "simhost/text.h"
#include "tool/shared/base/crash_watch.h"

namespace simhost::tool {
namespace {

std::wstring g_crashRecord;  // set before any crash, only read by the filter
std::wstring g_crashDump;
constexpr int kMostCrashCalls = 48;

std::wstring crashWide(const std::string& utf8) {
    const std::u16string text = toUtf16(utf8);
    return {text.begin(), text.end()};
}

const char* exceptionWords(DWORD code) {
    switch (code) {
        case EXCEPTION_ACCESS_VIOLATION:
            return "access to memory that is not there";
        case EXCEPTION_STACK_OVERFLOW:
            return "stack overflow";
        case EXCEPTION_ILLEGAL_INSTRUCTION:
            return "illegal instruction";
        case EXCEPTION_INT_DIVIDE_BY_ZERO:
            return "division by zero";
        case 0xE06D7363:
        case 0x20474343:
            return "a C++ exception that nobody caught";
        default:
            return "exception";
    }
}

// No memory is taken from here on: the heap may be what is damaged.
void formatPlace(const void* address, char* module, int moduleSize, unsigned long long& offset) {
    static wchar_t path[32768];  // one crash is told, and no more
    module[0] = 0;
    offset = 0;
    HMODULE found = nullptr;
    if (address == nullptr || GetModuleHandleExW(GET_MODULE_HANDLE_EX_FLAG_FROM_ADDRESS |
                                                     GET_MODULE_HANDLE_EX_FLAG_UNCHANGED_REFCOUNT,
                                                 static_cast<LPCWSTR>(address), &found) == FALSE) {
        return;
    }
    const DWORD length = GetModuleFileNameW(found, path, static_cast<DWORD>(std::size(path)));
    DWORD name = length;
    while (name > 0 && path[name - 1] != L'/' && path[name - 1] != L'\\') {
        --name;
    }
    const int bytes = WideCharToMultiByte(CP_UTF8, 0, path + name, static_cast<int>(length - name), module,
                                          moduleSize - 1, nullptr, nullptr);
    module[bytes] = 0;
    offset = reinterpret_cast<std::uintptr_t>(address) - reinterpret_cast<std::uintptr_t>(found);
}

// The calls that led to where the context is, nearest first.
class StackWalk {
 public:
    explicit StackWalk(const CONTEXT& context) : m_context(context) {}
    const void* place() const { return reinterpret_cast<const void*>(m_context.Rip); }
    // To the caller; false at the end of the stack.
    bool next() {
        DWORD64 base = 0;
        PRUNTIME_FUNCTION const function = RtlLookupFunctionEntry(m_context.Rip, &base, nullptr);
        if (function != nullptr) {
            void* handler = nullptr;
            DWORD64 frame = 0;
            (void)RtlVirtualUnwind(UNW_FLAG_NHANDLER, base, m_context.Rip, function, &m_context, &handler,
                                   &frame, nullptr);
        } else {  // one that calls nothing
            m_context.Rip = *reinterpret_cast<const DWORD64*>(m_context.Rsp);
            m_context.Rsp += sizeof(DWORD64);
        }
        return m_context.Rip != 0;
    }

 private:
    CONTEXT m_context;
};

bool isRuntime(const char* module) {
    for (const char* const name : {"ucrtbase.dll", "msvcrt.dll", "ntdll.dll"}) {
        if (_stricmp(module, name) == 0) {
            return true;
        }
    }
    return false;
}

// Who called abort(): the nearest call outside the C runtime that this program's handler was called by.
const void* aborter(StackWalk walk) {
    char module[256];
    unsigned long long offset = 0;
    bool inRuntime = false;
    for (int i = 0; i < kMostCrashCalls && walk.next(); ++i) {
        formatPlace(walk.place(), module, sizeof module, offset);
        if (inRuntime && !isRuntime(module)) {
            return walk.place();
        }
        inRuntime = inRuntime || isRuntime(module);
    }
    return nullptr;
}

void writeCrashRecord(const char* what, const void* address, const CONTEXT& context) {
    const HANDLE file = CreateFileW(g_crashRecord.c_str(), GENERIC_WRITE, FILE_SHARE_READ, nullptr,
                                    CREATE_ALWAYS, FILE_ATTRIBUTE_NORMAL, nullptr);
    if (file == INVALID_HANDLE_VALUE) {
        return;
    }
    static char text[1024];
    static char module[512];
    unsigned long long offset = 0;
    const auto write = [&](int length) {
        DWORD written = 0;
        (void)WriteFile(file, text, static_cast<DWORD>(length), &written, nullptr);
    };
    formatPlace(address, module, sizeof module, offset);
    write(std::snprintf(text, sizeof text, "%s\n%s\n0x%llx\n", what, module, offset));
    // Call by call, since a stack that is damaged ends the process on the way.
    StackWalk walk(context);
    for (int i = 0; i < kMostCrashCalls; ++i) {
        formatPlace(walk.place(), module, sizeof module, offset);
        write(module[0] != 0 ? std::snprintf(text, sizeof text, "%s+0x%llx\n", module, offset)
                             : std::snprintf(text, sizeof text, "%p\n", walk.place()));
        if (!walk.next()) {
            break;
        }
    }
    (void)CloseHandle(file);
}

void writeDump(EXCEPTION_POINTERS* pointers) {
    if (g_crashDump.empty()) {
        return;
    }
    using Write = decltype(&MiniDumpWriteDump);
    const HMODULE library = LoadLibraryW(L"dbghelp.dll");
    const auto found = library != nullptr ? GetProcAddress(library, "MiniDumpWriteDump") : nullptr;
    if (found == nullptr) {
        return;
    }
    const auto write = reinterpret_cast<Write>(reinterpret_cast<void*>(found));
    const HANDLE file = CreateFileW(g_crashDump.c_str(), GENERIC_WRITE, 0, nullptr, CREATE_ALWAYS,
                                    FILE_ATTRIBUTE_NORMAL, nullptr);
    if (file == INVALID_HANDLE_VALUE) {
        return;
    }
    MINIDUMP_EXCEPTION_INFORMATION about{GetCurrentThreadId(), pointers, FALSE};
    (void)write(GetCurrentProcess(), GetCurrentProcessId(), file, MiniDumpNormal, &about, nullptr, nullptr);
    (void)CloseHandle(file);
}

LONG WINAPI tellException(EXCEPTION_POINTERS* pointers) {
    const EXCEPTION_RECORD& record = *pointers->ExceptionRecord;
    char what[128];
    (void)std::snprintf(what, sizeof what, "%s (0x%08lX)", exceptionWords(record.ExceptionCode),
                        record.ExceptionCode);
    writeCrashRecord(what, record.ExceptionAddress, *pointers->ContextRecord);
    writeDump(pointers);
    (void)TerminateProcess(GetCurrentProcess(), record.ExceptionCode);
    return EXCEPTION_EXECUTE_HANDLER;
}

void tellAbort(int) {
    CONTEXT context{};
    RtlCaptureContext(&context);
    const void* const from = aborter(StackWalk(context));
    writeCrashRecord("the process aborted itself", from, context);
    EXCEPTION_RECORD record{};
    record.ExceptionCode = 0x40000015;  // STATUS_FATAL_APP_EXIT, as the system's own report of an abort says
    record.ExceptionAddress = const_cast<void*>(from);
    EXCEPTION_POINTERS pointers{&record, &context};
    writeDump(&pointers);
    (void)TerminateProcess(GetCurrentProcess(), 3);
}

}  // namespace

void watchForCrashes(const std::string& recordUtf8, const std::string& dumpUtf8) {
    g_crashRecord = crashWide(recordUtf8);
    g_crashDump = crashWide(dumpUtf8);
    // No window that waits for somebody to close it.
    (void)SetErrorMode(SEM_FAILCRITICALERRORS | SEM_NOGPFAULTERRORBOX | SEM_NOOPENFILEERRORBOX);
    (void)SetUnhandledExceptionFilter(tellException);
    (void)std::signal(SIGABRT, tellAbort);
    // The filter runs on the stack that overflowed.
    ULONG reserve = 64 * 1024;
    (void)SetThreadStackGuarantee(&reserve);
}

CodePlace codePlace(const void* address) {
    char module[512];
    CodePlace out;
    formatPlace(address, module, sizeof module, out.offset);
    out.module = module;
    return out;
}

}  // namespace simhost::tool
