// clang-format off
#include <windows.h>
#include <shellapi.h>
#include <shlobj.h>
// clang-format on
#include <io.h>

#include <cstdio>
#include <memory>
#include <stdexcept>

#include "simhost/text.h"
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

// The plug-in's view of HKEY_CURRENT_USER is replaced by a key of our own. It reads the switch while this
// object lives; everything that it asks of the registry later finds the real one.
LogSwitch::LogSwitch() {
    HKEY key = nullptr;
    check(RegCreateKeyExA(HKEY_CURRENT_USER, privateKey().c_str(), 0, nullptr, REG_OPTION_VOLATILE,
                          KEY_ALL_ACCESS, nullptr, &key, nullptr),
          "private key");
    m_state = key;
    HKEY values = nullptr;
    LSTATUS status = RegCreateKeyExA(key, "Software\\Orvantis", 0, nullptr, REG_OPTION_VOLATILE,
                                     KEY_ALL_ACCESS, nullptr, &values, nullptr);
    if (status == ERROR_SUCCESS) {
        const DWORD on = 1;
        status = RegSetValueExA(values, "EnableAdobeLog", 0, REG_DWORD, reinterpret_cast<const BYTE*>(&on),
                                sizeof on);
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
    RegCloseKey(static_cast<HKEY>(m_state));
    RegDeleteTreeA(HKEY_CURRENT_USER, privateKey().c_str());
    // Fails, as it should, while another run has a key below it.
    RegDeleteKeyA(HKEY_CURRENT_USER, "Software\\OrvantisImporterHost");
}

std::string logFolder() {
    wchar_t path[MAX_PATH] = {};
    if (SHGetFolderPathW(nullptr, CSIDL_PROFILE, nullptr, SHGFP_TYPE_CURRENT, path) != S_OK) {
        return {};
    }
    return utf8(path) + "\\orvantis\\adobe";
}

}  // namespace simhost::tool
