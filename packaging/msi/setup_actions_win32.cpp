// What the MSI package does itself, as Windows Installer calls it: finds the folder in which the host looks
// for importers, as setup.exe does (installer.nsi, findPluginFolder), and removes what setup.exe has
// installed. The library lies in the package and is never installed. One function for each action; Windows
// Installer's own process, one thread.

// clang-format off
#include <windows.h>
#include <msi.h>
#include <msiquery.h>
// clang-format on

#include <array>
#include <cwctype>
#include <string>

namespace {

constexpr const wchar_t* kOwnKey = L"Software\\Orvantis\\Importer";
constexpr const wchar_t* kSetupKey =
    L"Software\\Microsoft\\Windows\\CurrentVersion\\Uninstall\\ImporterOrvantis";
constexpr const wchar_t* kSwitchKey = L"Software\\Orvantis";
constexpr const wchar_t* kLogSwitch = L"EnableAdobeLog";
constexpr const wchar_t* kSwitchedBySetup = L"SwitchedOnBySetup";
constexpr DWORD kMostPath = 32768;

std::wstring textValue(const std::wstring& key, const wchar_t* name) {
    std::wstring out(kMostPath, L'\0');
    auto bytes = static_cast<DWORD>((out.size() - 1) * sizeof(wchar_t));
    // A REG_EXPAND_SZ is one of these, too, with its variables expanded.
    if (RegGetValueW(HKEY_LOCAL_MACHINE, key.c_str(), name, RRF_RT_REG_SZ | RRF_SUBKEY_WOW6464KEY, nullptr,
                     out.data(), &bytes) != ERROR_SUCCESS) {
        return {};
    }
    out.resize(out.find(L'\0'));
    return out;
}

bool isSet(const std::wstring& key, const wchar_t* name) {
    DWORD number = 0;
    DWORD bytes = sizeof number;
    return RegGetValueW(HKEY_LOCAL_MACHINE, key.c_str(), name, RRF_RT_REG_DWORD | RRF_SUBKEY_WOW6464KEY,
                        nullptr, &number, &bytes) == ERROR_SUCCESS &&
           number == 1;
}

// A number beside the log's switch; 0 without one.
DWORD logNumber(const wchar_t* name) {
    DWORD number = 0;
    DWORD bytes = sizeof number;
    RegGetValueW(HKEY_CURRENT_USER, kSwitchKey, name, RRF_RT_REG_DWORD, nullptr, &number, &bytes);
    return number;
}

std::wstring property(MSIHANDLE session, const wchar_t* name) {
    std::wstring out(kMostPath, L'\0');
    auto length = static_cast<DWORD>(out.size());
    out.resize(MsiGetPropertyW(session, name, out.data(), &length) == ERROR_SUCCESS ? length : 0);
    return out;
}

std::wstring withoutBackslashes(std::wstring path) {
    while (!path.empty() && path.back() == L'\\') {
        path.pop_back();
    }
    return path;
}

bool isAbsolute(const std::wstring& path) {
    return path.starts_with(L"\\\\") || (path.size() > 1 && path[1] == L':');
}

// -1, 0, 1: "22.5" is more than "22.0" and "9.0".
int compareVersions(const std::wstring& left, const std::wstring& right) {
    std::size_t l = 0;
    std::size_t r = 0;
    while (l < left.size() || r < right.size()) {
        const auto next = [](const std::wstring& text, std::size_t& at) {
            unsigned long number = 0;
            for (; at < text.size() && text[at] != L'.'; ++at) {
                number = std::iswdigit(text[at]) != 0 ? number * 10 + (text[at] - L'0') : number;
            }
            ++at;
            return number;
        };
        const unsigned long a = next(left, l);
        const unsigned long b = next(right, r);
        if (a != b) {
            return a < b ? -1 : 1;
        }
    }
    return 0;
}

// The folder that the highest version of a product records; empty when none does.
std::wstring newestPluginFolder(const std::wstring& product) {
    HKEY versions = nullptr;
    if (RegOpenKeyExW(HKEY_LOCAL_MACHINE, product.c_str(), 0, KEY_READ | KEY_WOW64_64KEY, &versions) !=
        ERROR_SUCCESS) {
        return {};
    }
    std::wstring best;
    std::wstring folder;
    std::array<wchar_t, 256> name{};
    auto length = static_cast<DWORD>(name.size());
    for (DWORD i = 0; RegEnumKeyExW(versions, i, name.data(), &length, nullptr, nullptr, nullptr, nullptr) ==
                      ERROR_SUCCESS;
         ++i, length = static_cast<DWORD>(name.size())) {
        const std::wstring version = name.data();
        const std::wstring recorded = textValue(product + L"\\" + version, L"CommonPluginInstallPath");
        if (version[0] >= L'1' && version[0] <= L'9' && isAbsolute(recorded) &&
            (best.empty() || compareVersions(version, best) > 0)) {
            best = version;
            folder = recorded;
        }
    }
    RegCloseKey(versions);
    return withoutBackslashes(folder);
}

std::wstring searchedFolder() {
    std::wstring host = newestPluginFolder(L"SOFTWARE\\Adobe\\Premiere Pro");
    if (host.empty()) {
        host = newestPluginFolder(L"SOFTWARE\\Adobe\\After Effects");
    }
    if (host.empty()) {
        std::wstring programs(kMostPath, L'\0');
        programs.resize(GetEnvironmentVariableW(L"ProgramW6432", programs.data(), kMostPath));
        const std::wstring common =
            (programs.empty() ? L"C:\\Program Files" : programs) + L"\\Adobe\\Common\\";
        // Both spellings are in use; take the one that is there.
        const std::wstring newer = common + L"Plugins\\7.0\\MediaCore";
        host = GetFileAttributesW(newer.c_str()) != INVALID_FILE_ATTRIBUTES
                   ? newer
                   : common + L"Plug-ins\\7.0\\MediaCore";
    }
    return host + L"\\Orvantis";
}

// A folder that was chosen for the installed version stays.
std::wstring chosenFolder() {
    for (const wchar_t* key : {kOwnKey, kSetupKey}) {
        if (isSet(key, L"FolderWasChosen") || textValue(key, L"FolderWasChosen") == L"1") {
            return withoutBackslashes(textValue(key, L"InstallLocation"));
        }
    }
    return {};
}

// Runs a program to its end and gives its exit code.
DWORD runProgram(std::wstring command) {
    STARTUPINFOW start{};
    start.cb = sizeof start;
    PROCESS_INFORMATION process{};
    if (CreateProcessW(nullptr, command.data(), nullptr, nullptr, FALSE, CREATE_NO_WINDOW, nullptr, nullptr,
                       &start, &process) == 0) {
        return GetLastError();
    }
    DWORD code = 1;
    WaitForSingleObject(process.hProcess, INFINITE);
    GetExitCodeProcess(process.hProcess, &code);
    CloseHandle(process.hThread);
    CloseHandle(process.hProcess);
    return code;
}

}  // namespace

/// Immediate, before costing: PLUGINDIR unless it was given, OLDERSETUP with the folder of what setup.exe has
/// installed.
extern "C" __declspec(dllexport) UINT __stdcall FindPluginFolder(MSIHANDLE session) {
    // The removal of an older version may switch off what it had switched on; this one takes that over.
    if (property(session, L"LOG").empty() && !property(session, L"WIX_UPGRADE_DETECTED").empty() &&
        logNumber(kSwitchedBySetup) == 1) {
        MsiSetPropertyW(session, L"LOG", L"1");
    }
    MsiSetPropertyW(session, L"SwitchLog", property(session, L"LOG").c_str());  // for the deferred action
    const bool installed = !property(session, L"Installed").empty();
    if (installed) {
        // Where it is, whatever a host records by now.
        MsiSetPropertyW(session, L"FOLDERWASCHOSEN", textValue(kOwnKey, L"FolderWasChosen").c_str());
        MsiSetPropertyW(session, L"PLUGINDIR", textValue(kOwnKey, L"InstallLocation").c_str());
        return ERROR_SUCCESS;
    }
    if (property(session, L"PLUGINDIR").empty()) {
        const std::wstring chosen = chosenFolder();
        MsiSetPropertyW(session, L"FOLDERWASCHOSEN", chosen.empty() ? L"0" : L"1");
        MsiSetPropertyW(session, L"PLUGINDIR", (chosen.empty() ? searchedFolder() : chosen).c_str());
    } else {
        MsiSetPropertyW(session, L"FOLDERWASCHOSEN", L"1");
    }
    MsiSetPropertyW(session, L"ARPINSTALLLOCATION", property(session, L"PLUGINDIR").c_str());
    const std::wstring older = textValue(kSetupKey, L"InstallLocation");
    if (GetFileAttributesW((older + L"\\uninstall.exe").c_str()) != INVALID_FILE_ATTRIBUTES) {
        MsiSetPropertyW(session, L"OLDERSETUP", older.c_str());
        MsiSetPropertyW(session, L"RemoveOlderSetup", older.c_str());  // for the deferred action of that name
    }
    return ERROR_SUCCESS;
}

/// Deferred, before files are copied: a host that finds two copies of one importer loads either.
extern "C" __declspec(dllexport) UINT __stdcall RemoveOlderSetup(MSIHANDLE session) {
    const std::wstring folder = property(session, L"CustomActionData");
    // The uninstaller of setup.exe returns at once unless it is a copy that is told the folder. The copy runs
    // with the system's rights: it stays where only those can write who could change the uninstaller itself,
    // and not in a temporary folder.
    const std::wstring copy = folder + L"\\uninstall-copy.exe";
    if (CopyFileW((folder + L"\\uninstall.exe").c_str(), copy.c_str(), FALSE) == 0) {
        return ERROR_INSTALL_FAILURE;
    }
    const DWORD code = runProgram(L"\"" + copy + L"\" /S /UPGRADE _?=" + folder);
    DeleteFileW(copy.c_str());
    RemoveDirectoryW(folder.c_str());  // the uninstaller could not, for its copy; others' files keep it
    return code == 0 ? ERROR_SUCCESS : ERROR_INSTALL_FAILURE;
}

/// Deferred, as the account that installs: the diagnostic log on or off, as setup.exe's /LOG= does it.
extern "C" __declspec(dllexport) UINT __stdcall SwitchLog(MSIHANDLE session) {
    const DWORD on = property(session, L"CustomActionData") == L"1" ? 1 : 0;
    const bool wasOn = logNumber(kLogSwitch) != 0;
    LSTATUS status = RegSetKeyValueW(HKEY_CURRENT_USER, kSwitchKey, kLogSwitch, REG_DWORD, &on, sizeof on);
    if (on == 0) {
        RegDeleteKeyValueW(HKEY_CURRENT_USER, kSwitchKey, kSwitchedBySetup);
    } else if (status == ERROR_SUCCESS && !wasOn) {
        // What setup has switched on, removal switches off.
        status = RegSetKeyValueW(HKEY_CURRENT_USER, kSwitchKey, kSwitchedBySetup, REG_DWORD, &on, sizeof on);
    }
    return status == ERROR_SUCCESS ? ERROR_SUCCESS : ERROR_INSTALL_FAILURE;
}

/// Deferred, as the account that removes: a log that setup has switched on goes off with the plug-in.
extern "C" __declspec(dllexport) UINT __stdcall SwitchLogOff(MSIHANDLE) {
    if (logNumber(kSwitchedBySetup) == 1) {
        RegDeleteKeyValueW(HKEY_CURRENT_USER, kSwitchKey, kLogSwitch);
        RegDeleteKeyValueW(HKEY_CURRENT_USER, kSwitchKey, kSwitchedBySetup);
    }
    return ERROR_SUCCESS;
}
