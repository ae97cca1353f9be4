#include <windows.h>

#include <stdexcept>
#include <string_view>

#include "simhost/text.h"
#include "tool/shared/base/child_process.h"

namespace simhost::tool {
namespace {

std::wstring childWide(const std::string& utf8) {
    const std::u16string text = toUtf16(utf8);
    return {text.begin(), text.end()};
}

// Quotes one argument so that the runtime of the child reads it back unchanged.
std::wstring childQuoted(const std::wstring& argument) {
    std::wstring out = L"\"";
    std::size_t backslashes = 0;
    for (const wchar_t c : argument) {
        // Backslashes count as such unless they stand before a quote, where they come in pairs.
        if (c == L'"') {
            out.append(backslashes + 1, L'\\');
        }
        backslashes = c == L'\\' ? backslashes + 1 : 0;
        out += c;
    }
    out.append(backslashes, L'\\');
    return out + L'"';
}

HANDLE asHandle(std::intptr_t value) {
    return reinterpret_cast<HANDLE>(value);
}

[[noreturn]] void failWith(const char* what) {
    throw std::runtime_error(std::string(what) + ": error " + std::to_string(GetLastError()));
}

// A job ends its processes when the last handle to it is closed, also when this process dies.
std::intptr_t endingJob(HANDLE process) {
    const HANDLE job = CreateJobObjectW(nullptr, nullptr);
    if (job == nullptr) {
        return 0;
    }
    JOBOBJECT_EXTENDED_LIMIT_INFORMATION limits{};
    limits.BasicLimitInformation.LimitFlags = JOB_OBJECT_LIMIT_KILL_ON_JOB_CLOSE;
    (void)SetInformationJobObject(job, JobObjectExtendedLimitInformation, &limits, sizeof limits);
    (void)AssignProcessToJobObject(job, process);
    return reinterpret_cast<std::intptr_t>(job);
}

}  // namespace

std::string thisProgramFile() {
    std::wstring path(32768, L'\0');
    path.resize(GetModuleFileNameW(nullptr, path.data(), static_cast<DWORD>(path.size())));
    return toUtf8(std::u16string(path.begin(), path.end()));
}

// The job does it.
void endWithParent() {}

ChildProcess::ChildProcess(const std::vector<std::string>& arguments, const std::string& outputUtf8) {
    const std::wstring program = childWide(thisProgramFile());
    std::wstring line = childQuoted(program);
    for (const std::string& argument : arguments) {
        line += L' ' + childQuoted(childWide(argument));
    }
    SECURITY_ATTRIBUTES inherited{sizeof(SECURITY_ATTRIBUTES), nullptr, TRUE};
    const HANDLE output = CreateFileW(childWide(outputUtf8).c_str(), GENERIC_WRITE,
                                      FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE, &inherited,
                                      CREATE_ALWAYS, FILE_ATTRIBUTE_NORMAL, nullptr);
    if (output == INVALID_HANDLE_VALUE) {
        failWith("cannot write what a child process prints");
    }
    STARTUPINFOW startup{};
    startup.cb = sizeof startup;
    startup.dwFlags = STARTF_USESTDHANDLES;
    startup.hStdOutput = output;
    startup.hStdError = output;
    PROCESS_INFORMATION process{};
    const BOOL started =
        CreateProcessW(program.c_str(), line.data(), nullptr, nullptr, TRUE,
                       CREATE_SUSPENDED | CREATE_NO_WINDOW, nullptr, nullptr, &startup, &process);
    const DWORD error = GetLastError();
    (void)CloseHandle(output);
    if (started == FALSE) {
        SetLastError(error);
        failWith("cannot start the program again");
    }
    m_process = reinterpret_cast<std::intptr_t>(process.hProcess);
    m_job = endingJob(process.hProcess);
    (void)ResumeThread(process.hThread);
    (void)CloseHandle(process.hThread);
}

ChildProcess::~ChildProcess() {
    kill();
    if (m_job != 0) {
        (void)CloseHandle(asHandle(m_job));
    }
}

std::optional<std::uint32_t> ChildProcess::waitFor(std::chrono::milliseconds patience) {
    if (m_process == 0) {
        return m_exitCode;
    }
    const HANDLE process = asHandle(m_process);
    if (WaitForSingleObject(process, static_cast<DWORD>(patience.count())) != WAIT_OBJECT_0) {
        return std::nullopt;
    }
    DWORD code = 0;
    (void)GetExitCodeProcess(process, &code);
    (void)CloseHandle(process);
    m_process = 0;
    m_exitCode = code;
    return m_exitCode;
}

double ChildProcess::worked() const {
    FILETIME begun{};
    FILETIME ended{};
    FILETIME kernel{};
    FILETIME user{};
    if (m_process == 0 || GetProcessTimes(asHandle(m_process), &begun, &ended, &kernel, &user) == FALSE) {
        return 0;
    }
    const auto seconds = [](const FILETIME& time) {
        return static_cast<double>((std::uint64_t{time.dwHighDateTime} << 32) | time.dwLowDateTime) * 1e-7;
    };
    return seconds(kernel) + seconds(user);
}

void ChildProcess::kill() {
    if (m_process != 0) {
        (void)TerminateProcess(asHandle(m_process), 1);
        while (!waitFor(std::chrono::milliseconds(1000))) {
        }
    }
}

}  // namespace simhost::tool
