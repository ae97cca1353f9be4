#include "tests/tool/running_tool.h"

#include <windows.h>

#include <array>
#include <stdexcept>

#include "diag/text.h"
#include "tests/support/child_process.h"

namespace {

HANDLE handleOf(std::intptr_t value) {
    return reinterpret_cast<HANDLE>(value);
}

// The arguments of these tests hold neither quotes nor a backslash at their end.
std::wstring commandLine(const std::vector<std::string>& arguments) {
    std::string out = "\"" ORVANTIS_BUILT_TOOL "\"";
    for (const std::string& argument : arguments) {
        out += " \"" + argument + "\"";
    }
    const std::u16string wide = orvantis::utf16FromUtf8(out);
    return {wide.begin(), wide.end()};
}

}  // namespace

RunningTool::RunningTool(const std::vector<std::string>& arguments) {
    SECURITY_ATTRIBUTES inherited{sizeof(SECURITY_ATTRIBUTES), nullptr, TRUE};
    HANDLE from = nullptr;
    HANDLE to = nullptr;
    if (CreatePipe(&from, &to, &inherited, 0) == FALSE) {
        throw std::runtime_error("no pipe");
    }
    (void)SetHandleInformation(from, HANDLE_FLAG_INHERIT, 0);
    m_errors = reinterpret_cast<std::intptr_t>(from);
    STARTUPINFOW startup{};
    startup.cb = sizeof startup;
    startup.dwFlags = STARTF_USESTDHANDLES;
    startup.hStdOutput = GetStdHandle(STD_OUTPUT_HANDLE);
    startup.hStdError = to;
    PROCESS_INFORMATION process{};
    std::wstring line = commandLine(arguments);
    // With a console of its own, so that Ctrl-C goes to nobody else.
    const BOOL started = CreateProcessW(nullptr, line.data(), nullptr, nullptr, TRUE, CREATE_NO_WINDOW,
                                        nullptr, nullptr, &startup, &process);
    (void)CloseHandle(to);
    if (started == FALSE) {
        throw std::runtime_error("cannot start the tool");
    }
    (void)CloseHandle(process.hThread);
    m_process = reinterpret_cast<std::intptr_t>(process.hProcess);
    m_number = process.dwProcessId;
}

RunningTool::~RunningTool() {
    if (m_process != 0) {
        (void)TerminateProcess(handleOf(m_process), 1);
        (void)WaitForSingleObject(handleOf(m_process), INFINITE);
        (void)CloseHandle(handleOf(m_process));
    }
    (void)CloseHandle(handleOf(m_errors));
}

bool RunningTool::waitFor(const std::string& text) {
    std::string read;
    std::array<char, 256> block{};
    while (read.find(text) == std::string::npos) {
        DWORD count = 0;
        if (ReadFile(handleOf(m_errors), block.data(), static_cast<DWORD>(block.size()), &count, nullptr) ==
                FALSE ||
            count == 0) {
            return false;
        }
        read.append(block.data(), count);
    }
    return true;
}

// Only a process of the console can do it; this one would lose its own.
void RunningTool::interrupt() const {
    (void)orvantis::test::ChildProcess(ORVANTIS_SEND_CTRL_C, {std::to_string(m_number)}).wait();
}

int RunningTool::wait() {
    (void)waitFor("\x01");  // which never comes: up to the stream's end
    DWORD code = 0;
    (void)WaitForSingleObject(handleOf(m_process), INFINITE);
    (void)GetExitCodeProcess(handleOf(m_process), &code);
    (void)CloseHandle(handleOf(m_process));
    m_process = 0;
    return static_cast<int>(code);
}
