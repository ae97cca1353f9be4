// clang-format off
#include <windows.h>
// clang-format on

#include <algorithm>
#include <array>
#include <utility>

#include "simhost/text.h"
#include "tool/shared/base/wide_text_win32.h"
#include "tool/shared/run/crash_dumps.h"

namespace simhost::tool {
namespace {

constexpr const wchar_t* kLocalDumps = L"SOFTWARE\\Microsoft\\Windows\\Windows Error Reporting\\LocalDumps";
constexpr const wchar_t* kUsualFolder = L"%LOCALAPPDATA%\\CrashDumps";
constexpr const wchar_t* kMark = L"SwitchedOnByImporterHost";
constexpr DWORD kSmallDump = 1;
constexpr DWORD kDumpsKept = 5;

std::string narrowText(const std::wstring& text) {
    return toUtf8(std::u16string(text.begin(), text.end()));
}

std::wstring dumpKeyOf(const std::string& program) {
    return std::wstring(kLocalDumps) + L"\\" + wideText(program);
}

bool hasDumpValue(const std::wstring& key, const wchar_t* name) {
    return RegGetValueW(HKEY_LOCAL_MACHINE, key.c_str(), name, RRF_RT_ANY | RRF_SUBKEY_WOW6464KEY, nullptr,
                        nullptr, nullptr) == ERROR_SUCCESS;
}

bool dumpKeyExists(const std::wstring& key) {
    HKEY opened = nullptr;
    const bool exists = RegOpenKeyExW(HKEY_LOCAL_MACHINE, key.c_str(), 0, KEY_READ | KEY_WOW64_64KEY,
                                      &opened) == ERROR_SUCCESS;
    if (exists) {
        RegCloseKey(opened);
    }
    return exists;
}

std::wstring expandedText(const std::wstring& text) {
    std::wstring whole(32768, L'\0');
    const DWORD length =
        ExpandEnvironmentStringsW(text.c_str(), whole.data(), static_cast<DWORD>(whole.size()));
    whole.resize(length == 0 || length > whole.size() ? 0 : length - 1);
    return whole;
}

// Empty when the key names no folder.
std::wstring dumpFolderOf(const std::wstring& key) {
    std::array<wchar_t, 2048> text{};
    auto bytes = static_cast<DWORD>((text.size() - 1) * sizeof(wchar_t));
    const LSTATUS read =
        RegGetValueW(HKEY_LOCAL_MACHINE, key.c_str(), L"DumpFolder",
                     RRF_RT_REG_SZ | RRF_RT_REG_EXPAND_SZ | RRF_NOEXPAND | RRF_SUBKEY_WOW6464KEY, nullptr,
                     text.data(), &bytes);
    return read == ERROR_SUCCESS ? expandedText(text.data()) : std::wstring();
}

DumpSwitch dumpOutcome(LSTATUS status) {
    switch (status) {
        case ERROR_SUCCESS:
        case ERROR_FILE_NOT_FOUND:
            return DumpSwitch::kDone;
        case ERROR_ACCESS_DENIED:
            return DumpSwitch::kNotAllowed;
        default:
            return DumpSwitch::kFailed;
    }
}

DumpSwitch switchOn(const std::wstring& name) {
    HKEY key = nullptr;
    LSTATUS status = RegCreateKeyExW(HKEY_LOCAL_MACHINE, name.c_str(), 0, nullptr, 0,
                                     KEY_WRITE | KEY_WOW64_64KEY, nullptr, &key, nullptr);
    const std::array<std::pair<const wchar_t*, DWORD>, 3> values = {
        {{kMark, 1}, {L"DumpType", kSmallDump}, {L"DumpCount", kDumpsKept}}};
    for (const auto& [value, number] : values) {
        if (status == ERROR_SUCCESS) {
            status = RegSetValueExW(key, value, 0, REG_DWORD, reinterpret_cast<const BYTE*>(&number),
                                    sizeof number);
        }
    }
    if (key != nullptr) {
        RegCloseKey(key);
    }
    return dumpOutcome(status);
}

}  // namespace

DumpSetting dumpSetting(const std::string& program) {
    const std::wstring own = dumpKeyOf(program);
    DumpSetting out;
    out.ours = hasDumpValue(own, kMark);
    // The key alone holds the programs' keys; one of its values is what switches dumps on for all programs.
    const std::wstring all = kLocalDumps;
    out.on = dumpKeyExists(own) || hasDumpValue(all, L"DumpFolder") || hasDumpValue(all, L"DumpType") ||
             hasDumpValue(all, L"DumpCount");
    std::wstring folder = dumpFolderOf(own);
    folder = folder.empty() ? dumpFolderOf(all) : folder;
    out.folder = narrowText(folder.empty() ? expandedText(kUsualFolder) : folder);
    return out;
}

DumpSwitch setDumps(const std::string& program, bool on) {
    const std::wstring name = dumpKeyOf(program);
    const DumpSetting now = dumpSetting(program);
    if (dumpKeyExists(name) && !now.ours) {
        return DumpSwitch::kNotOurs;
    }
    if (on) {
        return switchOn(name);
    }
    return dumpOutcome(RegDeleteKeyExW(HKEY_LOCAL_MACHINE, name.c_str(), KEY_WOW64_64KEY, 0));
}

std::vector<std::string> dumpsOf(const std::string& program, const std::string& folder) {
    std::vector<std::pair<ULONGLONG, std::string>> found;
    WIN32_FIND_DATAW entry{};
    // The system names them PROGRAM.process.dmp.
    const HANDLE search = FindFirstFileW(wideText(folder + "\\" + program + ".*.dmp").c_str(), &entry);
    if (search == INVALID_HANDLE_VALUE) {
        return {};
    }
    do {
        const ULONGLONG time =
            (ULONGLONG{entry.ftLastWriteTime.dwHighDateTime} << 32) | entry.ftLastWriteTime.dwLowDateTime;
        found.emplace_back(time, folder + "\\" + narrowText(entry.cFileName));
    } while (FindNextFileW(search, &entry) != 0);
    FindClose(search);
    std::sort(found.begin(), found.end(), [](const auto& a, const auto& b) { return a.first > b.first; });
    std::vector<std::string> out;
    out.reserve(found.size());
    for (auto& [time, path] : found) {
        out.push_back(std::move(path));
    }
    return out;
}

}  // namespace simhost::tool
