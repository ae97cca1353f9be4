// See child_process.h.

#include <windows.h>

#include <array>
#include <stdexcept>
#include <string>

#include "diag/text.h"
#include "tests/support/child_process.h"

namespace orvantis::test {

namespace {

// Quotes one argument so that the runtime of the child reads it back unchanged.
std::wstring quoted(const std::wstring& argument) {
    std::wstring result = L"\"";
    std::size_t backslashes = 0;
    for (const wchar_t c : argument) {
        if (c == L'\\') {
            ++backslashes;
            continue;
        }
        // Backslashes count as such unless they stand before a quote, where they come in pairs.
        result.append(c == L'"' ? 2 * backslashes + 1 : backslashes, L'\\');
        backslashes = 0;
        result += c;
    }
    result.append(2 * backslashes, L'\\');
    return result + L'"';
}

std::wstring wide(const std::string& utf8) {
    const std::u16string text = utf16FromUtf8(utf8);
    return {text.begin(), text.end()};
}

}  // namespace

ChildProcess::ChildProcess(const std::filesystem::path& program, const std::vector<std::string>& arguments)
    : m_process(0) {
    std::wstring line = quoted(program.wstring());
    for (const std::string& argument : arguments) {
        line += L' ' + quoted(wide(argument));
    }
    STARTUPINFOW startup{};
    startup.cb = sizeof startup;
    PROCESS_INFORMATION process{};
    if (CreateProcessW(program.c_str(), line.data(), nullptr, nullptr, TRUE, 0, nullptr, nullptr, &startup,
                       &process) == FALSE) {
        throw std::runtime_error("cannot start " + program.string() + " (error " +
                                 std::to_string(GetLastError()) + ")");
    }
    (void)CloseHandle(process.hThread);
    m_process = reinterpret_cast<std::intptr_t>(process.hProcess);
}

ChildProcess::~ChildProcess() {
    (void)wait();
}

int ChildProcess::wait() {
    if (m_process != 0) {
        HANDLE process = reinterpret_cast<HANDLE>(m_process);
        DWORD code = 0;
        (void)WaitForSingleObject(process, INFINITE);
        (void)GetExitCodeProcess(process, &code);
        (void)CloseHandle(process);
        m_process = 0;
        m_exitCode = static_cast<int>(code);
    }
    return m_exitCode;
}

std::filesystem::path thisProgram() {
    std::array<wchar_t, 32768> path{};
    (void)GetModuleFileNameW(nullptr, path.data(), static_cast<DWORD>(path.size()));
    return path.data();
}

std::uint32_t thisProcessId() {
    return GetCurrentProcessId();
}

std::uint32_t thisThreadId() {
    return GetCurrentThreadId();
}

}  // namespace orvantis::test
