// clang-format off
#include <windows.h>
#include <shellapi.h>
#include <shlobj.h>
// clang-format on
#include <io.h>

#include <cstdio>
#include <memory>
#include <optional>
#include <stdexcept>

#include "simhost/text.h"
#include "tool/shared/base/import_patch_win32.h"
#include "tool/shared/base/tool_platform.h"

namespace simhost::tool {
namespace {

std::string utf8(const wchar_t* text) {
    return toUtf8(reinterpret_cast<const char16_t*>(text));
}

void check(LSTATUS status, const char* what) {
    if (status != ERROR_SUCCESS) {
        throw std::runtime_error(std::string("cannot switch the log on: ") + what + ": error " +
                                 std::to_string(status));
    }
}

// One for each process, gone with the next start of the system if the tool should be killed.
std::string privateKey() {
    return "Software\\OrvantisImporterHost\\" + std::to_string(GetCurrentProcessId());
}

template <class Function>
Function functionOf(HMODULE module, const char* name) {
    return reinterpret_cast<Function>(reinterpret_cast<void*>(GetProcAddress(module, name)));
}

struct LocalFreeing {
    void operator()(wchar_t** memory) const noexcept { LocalFree(memory); }
};

}  // namespace

std::vector<std::string> programArguments(int /*argc*/, const char* const* /*argv*/) {
    // The narrow arguments have lost what the system's code page cannot hold.
    int count = 0;
    const std::unique_ptr<wchar_t*, LocalFreeing> arguments(CommandLineToArgvW(GetCommandLineW(), &count));
    std::vector<std::string> out;
    for (int i = 1; arguments && i < count; ++i) {
        out.push_back(utf8(arguments.get()[i]));
    }
    return out;
}

std::string executableFolder() {
    std::vector<wchar_t> path(32768);
    GetModuleFileNameW(nullptr, path.data(), static_cast<DWORD>(path.size()));
    const std::string file = utf8(path.data());
    return file.substr(0, file.find_last_of("\\/"));
}

std::uint32_t threadNumber() {
    return GetCurrentThreadId();
}

void prepareTerminal() {
    SetConsoleOutputCP(CP_UTF8);
}

bool stderrIsTerminal() {
    return _isatty(_fileno(stderr)) != 0;
}

// The plug-in's view of HKEY_CURRENT_USER is replaced by a key of our own, and its way to ask for the profile
// by a function of ours. It reads both while this object lives; everything that it asks later finds the real
// ones.
struct LogSwitch::State {
    HKEY key = nullptr;
    std::optional<ImportPatch> profile;
};

namespace {

std::wstring& toldProfile() {
    static std::wstring folder;
    return folder;
}

HRESULT WINAPI tellProfile(HWND /*owner*/, int /*folder*/, HANDLE /*token*/, DWORD /*flags*/, LPWSTR path) {
    (void)lstrcpynW(path, toldProfile().c_str(), MAX_PATH);
    return S_OK;
}

}  // namespace

LogSwitch::LogSwitch(bool on, const std::string& profileUtf8, const void* plugin)
    : m_state(std::make_unique<State>()) {
    if (!profileUtf8.empty()) {
        const std::u16string folder = toUtf16(profileUtf8);
        toldProfile().assign(folder.begin(), folder.end());
        m_state->profile.emplace(plugin, "SHGetFolderPathW", reinterpret_cast<const void*>(&tellProfile));
    }
    HKEY key = nullptr;
    check(RegCreateKeyExA(HKEY_CURRENT_USER, privateKey().c_str(), 0, nullptr, REG_OPTION_VOLATILE,
                          KEY_ALL_ACCESS, nullptr, &key, nullptr),
          "private key");
    m_state->key = key;
    HKEY values = nullptr;
    LSTATUS status = RegCreateKeyExA(key, "Software\\Orvantis", 0, nullptr, REG_OPTION_VOLATILE,
                                     KEY_ALL_ACCESS, nullptr, &values, nullptr);
    if (status == ERROR_SUCCESS) {
        const DWORD value = on ? 1 : 0;
        status = RegSetValueExA(values, "EnableAdobeLog", 0, REG_DWORD, reinterpret_cast<const BYTE*>(&value),
                                sizeof value);
        RegCloseKey(values);
    }
    if (status == ERROR_SUCCESS) {
        status = RegOverridePredefKey(HKEY_CURRENT_USER, key);
    }
    if (status != ERROR_SUCCESS) {
        RegCloseKey(key);
        RegDeleteTreeA(HKEY_CURRENT_USER, privateKey().c_str());
        check(status, "value");
    }
}

LogSwitch::~LogSwitch() {
    RegOverridePredefKey(HKEY_CURRENT_USER, nullptr);
    RegCloseKey(m_state->key);
    RegDeleteTreeA(HKEY_CURRENT_USER, privateKey().c_str());
    // Fails, as it should, while another run has a key below it.
    RegDeleteKeyA(HKEY_CURRENT_USER, "Software\\OrvantisImporterHost");
}

std::string logFolderBelow(const std::string& profileUtf8) {
    return profileUtf8 + "\\orvantis\\adobe";
}

std::string logFolder() {
    wchar_t path[MAX_PATH] = {};
    if (SHGetFolderPathW(nullptr, CSIDL_PROFILE, nullptr, SHGFP_TYPE_CURRENT, path) != S_OK) {
        return {};
    }
    return logFolderBelow(utf8(path));
}

std::string systemName() {
    // The documented functions tell programs without a manifest of an older system.
    HMODULE system = GetModuleHandleW(L"ntdll.dll");
    using GetVersion = LONG(WINAPI*)(OSVERSIONINFOW*);
    using WineVersion = const char*(__cdecl*)();
    const auto getVersion = functionOf<GetVersion>(system, "RtlGetVersion");
    OSVERSIONINFOW info{};
    info.dwOSVersionInfoSize = sizeof info;
    if (getVersion == nullptr || getVersion(&info) != 0) {
        return "Windows";
    }
    std::string out = "Windows " + std::to_string(info.dwMajorVersion) + "." +
                      std::to_string(info.dwMinorVersion) + "." + std::to_string(info.dwBuildNumber);
    if (const auto wineVersion = functionOf<WineVersion>(system, "wine_get_version")) {
        out += std::string(" (Wine ") + wineVersion() + ")";
    }
    return out;
}

std::string loadedLibrary(const std::string& name) {
    const std::u16string wide = toUtf16(name);
    HMODULE module = GetModuleHandleW(std::wstring(wide.begin(), wide.end()).c_str());
    if (module == nullptr) {
        return {};
    }
    std::vector<wchar_t> path(32768);
    GetModuleFileNameW(module, path.data(), static_cast<DWORD>(path.size()));
    return utf8(path.data());
}

std::string codecLibraryName() {
    return "orvantis_common64.dll";
}

bool openWithSystem(const std::string& pathUtf8) {
    const std::u16string path = toUtf16(pathUtf8);
    constexpr std::intptr_t kLargestError = 32;
    HINSTANCE shown = ShellExecuteW(nullptr, L"open", std::wstring(path.begin(), path.end()).c_str(), nullptr,
                                    nullptr, SW_SHOWNORMAL);
    return reinterpret_cast<std::intptr_t>(shown) > kLargestError;
}

}  // namespace simhost::tool
