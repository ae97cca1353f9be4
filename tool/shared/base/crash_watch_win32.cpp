#include <windows.h>
// clang-format off
#include <dbghelp.h>  // needs windows.h before it
// clang-format on

#include <csignal>
#include <cstdint>
#include <cstdio>
#include <string_view>

#include "simhost/text.h"
#include "tool/shared/base/crash_watch.h"

namespace simhost::tool {
namespace {

std::wstring g_crashRecord;  // set before any crash, only read by the filter
std::wstring g_crashDump;

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

void writeCrashRecord(const char* what, const void* address) {
    const CodePlace place = codePlace(address);
    char text[1024];
    const int length =
        std::snprintf(text, sizeof text, "%s\n%s\n0x%llx\n", what, place.module.c_str(), place.offset);
    const HANDLE file = CreateFileW(g_crashRecord.c_str(), GENERIC_WRITE, FILE_SHARE_READ, nullptr,
                                    CREATE_ALWAYS, FILE_ATTRIBUTE_NORMAL, nullptr);
    if (file != INVALID_HANDLE_VALUE) {
        DWORD written = 0;
        (void)WriteFile(file, text, static_cast<DWORD>(length), &written, nullptr);
        (void)CloseHandle(file);
    }
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
    writeCrashRecord(what, record.ExceptionAddress);
    writeDump(pointers);
    (void)TerminateProcess(GetCurrentProcess(), record.ExceptionCode);
    return EXCEPTION_EXECUTE_HANDLER;
}

void tellAbort(int) {
    writeCrashRecord("the process aborted itself", nullptr);
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
    HMODULE module = nullptr;
    if (address == nullptr || GetModuleHandleExW(GET_MODULE_HANDLE_EX_FLAG_FROM_ADDRESS |
                                                     GET_MODULE_HANDLE_EX_FLAG_UNCHANGED_REFCOUNT,
                                                 static_cast<LPCWSTR>(address), &module) == FALSE) {
        return {};
    }
    std::wstring path(32768, L'\0');
    path.resize(GetModuleFileNameW(module, path.data(), static_cast<DWORD>(path.size())));
    const std::string utf8 = toUtf8(std::u16string(path.begin(), path.end()));
    return {utf8.substr(utf8.find_last_of("/\\") + 1),
            reinterpret_cast<std::uintptr_t>(address) - reinterpret_cast<std::uintptr_t>(module)};
}

}  // namespace simhost::tool
