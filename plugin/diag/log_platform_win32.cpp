// The log's door to Windows. See log_platform.h for what each function promises.

// clang-format off
#include <windows.h>
#include <shlobj.h>
#include <shlwapi.h>
// clang-format on
#include <direct.h>
#include <io.h>
#include <stdio.h>
#include <wchar.h>

#include <array>

#include "diag/log_platform.h"

namespace orvantis::log_platform {

std::optional<std::uint32_t> readSwitchValue() {
    HKEY key = nullptr;
    // A failed open leaves the key null; the query then fails by itself, and closing a null key does nothing.
    (void)RegOpenKeyExA(HKEY_CURRENT_USER, "Software\\Orvantis", 0, KEY_QUERY_VALUE, &key);
    DWORD value = 0;
    DWORD size = sizeof value;
    const LSTATUS queried =
        RegQueryValueExA(key, "EnableAdobeLog", nullptr, nullptr, reinterpret_cast<BYTE*>(&value), &size);
    (void)RegCloseKey(key);
    if (queried != ERROR_SUCCESS) {
        return std::nullopt;
    }
    return value;
}

std::optional<Path> profileFolder() {
    std::array<wchar_t, MAX_PATH> folder{};
    if (FAILED(SHGetFolderPathW(nullptr, CSIDL_PROFILE, nullptr, 0, folder.data()))) {
        return std::nullopt;
    }
    return Path(folder.data());
}

bool appendFolder(Path& folder, const char* name) {
    std::array<wchar_t, MAX_PATH> joined{};
    if (folder.size() >= joined.size()) {
        return false;
    }
    folder.copy(joined.data(), folder.size());
    const std::string narrow(name);
    if (PathAppendW(joined.data(), Path(narrow.begin(), narrow.end()).c_str()) == FALSE) {
        return false;
    }
    folder = joined.data();
    return true;
}

void makeFolder(const Path& folder) {
    (void)_wmkdir(folder.c_str());
}

Path numberedFile(const Path& folder, const char* baseName, int number) {
    std::array<wchar_t, 1024> path{};  // wsprintfW never writes more
    // In wsprintfW's formats, unlike the runtime's, "%S" is the narrow one.
    wsprintfW(path.data(), L"%s\\%S_%02d.log", folder.c_str(), baseName, number);
    return Path(path.data());
}

std::FILE* openForReading(const Path& path) {
    return _wfopen(path.c_str(), L"r");
}

std::FILE* openForWriting(const Path& path) {
    return _wfopen(path.c_str(), L"w");
}

void writeText(const char* text, std::FILE& file) {
    (void)std::fputs(text, &file);
}

void writeTextUnlocked(const char* text, std::FILE& file) noexcept {
    std::array<char, 512> bytes{};  // each byte of the line twice, at worst
    DWORD count = 0;
    for (; *text != '\0' && count + 2 <= bytes.size(); ++text) {
        if (*text == '\n') {
            bytes[count++] = '\r';
        }
        bytes[count++] = *text;
    }
    // Neither of these looks at the stream's lock.
    const auto handle = reinterpret_cast<HANDLE>(_get_osfhandle(_fileno(&file)));
    DWORD written = 0;
    (void)WriteFile(handle, bytes.data(), count, &written, nullptr);
}

void openConsole() {
    (void)AllocConsole();
    (void)SetConsoleScreenBufferSize(GetStdHandle(STD_OUTPUT_HANDLE), COORD{120, 500});
}

void writeConsole(const char* text) noexcept {
    DWORD written = 0;
    (void)WriteConsoleA(GetStdHandle(STD_OUTPUT_HANDLE), text, static_cast<DWORD>(lstrlenA(text)), &written,
                        nullptr);
}

std::tm localTime() noexcept {
    const std::time_t now = std::time(nullptr);
    std::tm local{};
    (void)localtime_s(&local, &now);
    return local;
}

std::int64_t utcSeconds() noexcept {
    // Not the runtime's time(), which may ask for the time zone too. In tenths of microseconds since 1601.
    constexpr std::int64_t kUnitsPerSecond = 10'000'000;
    constexpr std::int64_t kSecondsTo1970 = 11'644'473'600;
    FILETIME now{};
    GetSystemTimeAsFileTime(&now);
    const auto units = static_cast<std::int64_t>(std::uint64_t{now.dwHighDateTime} << 32 | now.dwLowDateTime);
    return units / kUnitsPerSecond - kSecondsTo1970;
}

std::uint32_t threadId() noexcept {
    return GetCurrentThreadId();
}

std::string applicationPath() {
    std::array<char, 260> path{};
    (void)GetModuleFileNameA(nullptr, path.data(), static_cast<DWORD>(path.size()));
    path.back() = '\0';
    return path.data();
}

}  // namespace orvantis::log_platform
