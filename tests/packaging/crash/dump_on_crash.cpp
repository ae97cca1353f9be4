// Runs a program as its debugger and writes a minidump when it crashes, as Windows' error reporting does
// where that is switched on.
//
//   dump_on_crash DUMP PROGRAM ARGUMENTS...    result 0 when there was a crash and its dump is written
#include <windows.h>

#include <dbghelp.h>
#include <shellapi.h>

#include <cstdio>
#include <string>

namespace {

bool writeDump(const wchar_t* file, const PROCESS_INFORMATION& process, DWORD threadId,
               const EXCEPTION_RECORD& exception) {
    const HANDLE thread = OpenThread(THREAD_ALL_ACCESS, FALSE, threadId);
    alignas(16) CONTEXT context{};
    context.ContextFlags = CONTEXT_FULL;
    const HANDLE out =
        CreateFileW(file, GENERIC_WRITE, 0, nullptr, CREATE_ALWAYS, FILE_ATTRIBUTE_NORMAL, nullptr);
    bool written = false;
    if (thread != nullptr && out != INVALID_HANDLE_VALUE && GetThreadContext(thread, &context) != 0) {
        EXCEPTION_RECORD record = exception;
        EXCEPTION_POINTERS pointers{&record, &context};
        MINIDUMP_EXCEPTION_INFORMATION information{threadId, &pointers, FALSE};
        written = MiniDumpWriteDump(process.hProcess, process.dwProcessId, out, MiniDumpNormal, &information,
                                    nullptr, nullptr) != 0;
    }
    if (out != INVALID_HANDLE_VALUE) {
        CloseHandle(out);
    }
    if (thread != nullptr) {
        CloseHandle(thread);
    }
    return written;
}

std::wstring commandLine(wchar_t** arguments, int count) {
    std::wstring out;
    for (int i = 2; i < count; ++i) {
        out += (out.empty() ? L"\"" : L" \"") + std::wstring(arguments[i]) + L"\"";
    }
    return out;
}

}  // namespace

int main() {
    int count = 0;
    wchar_t** arguments = CommandLineToArgvW(GetCommandLineW(), &count);
    if (arguments == nullptr || count < 3) {
        return 2;
    }
    std::wstring command = commandLine(arguments, count);
    STARTUPINFOW start{};
    start.cb = sizeof start;
    PROCESS_INFORMATION process{};
    if (CreateProcessW(nullptr, command.data(), nullptr, nullptr, FALSE, DEBUG_ONLY_THIS_PROCESS, nullptr,
                       nullptr, &start, &process) == 0) {
        return 3;
    }
    int result = 4;  // ended without a crash
    DEBUG_EVENT event{};
    while (WaitForDebugEvent(&event, 60'000) != 0) {
        DWORD answer = DBG_CONTINUE;
        if (event.dwDebugEventCode == EXCEPTION_DEBUG_EVENT &&
            event.u.Exception.ExceptionRecord.ExceptionCode != EXCEPTION_BREAKPOINT) {
            answer = DBG_EXCEPTION_NOT_HANDLED;
            if (event.u.Exception.dwFirstChance == 0) {
                const EXCEPTION_RECORD& exception = event.u.Exception.ExceptionRecord;
                result = writeDump(arguments[1], process, event.dwThreadId, exception) ? 0 : 5;
                TerminateProcess(process.hProcess, 1);
            }
        }
        const bool ended = event.dwDebugEventCode == EXIT_PROCESS_DEBUG_EVENT;
        ContinueDebugEvent(event.dwProcessId, event.dwThreadId, answer);
        if (ended) {
            break;
        }
    }
    CloseHandle(process.hThread);
    CloseHandle(process.hProcess);
    LocalFree(static_cast<void*>(arguments));
    return result;
}
