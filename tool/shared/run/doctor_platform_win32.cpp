// clang-format off
#include <windows.h>
// clang-format on

#include <algorithm>
#include <array>
#include <cstdint>

#include "simhost/text.h"
#include "tool/shared/run/doctor_platform.h"

namespace simhost::tool {
namespace {

class Key {
 public:
    Key(HKEY parent, const wchar_t* name) {
        if (RegOpenKeyExW(parent, name, 0, KEY_READ | KEY_WOW64_64KEY, &m_key) != ERROR_SUCCESS) {
            m_key = nullptr;
        }
    }
    Key(const Key&) = delete;
    Key& operator=(const Key&) = delete;
    ~Key() {
        if (m_key != nullptr) {
            RegCloseKey(m_key);
        }
    }
    HKEY get() const noexcept { return m_key; }

 private:
    HKEY m_key = nullptr;
};

std::string utf8(const std::wstring& text) {
    return toUtf8(std::u16string(text.begin(), text.end()));
}

void addOnce(std::vector<std::string>& list, std::string path) {
    while (path.size() > 3 && (path.back() == '\\' || path.back() == '/')) {
        path.pop_back();
    }
    const auto same = [&path](const std::string& other) {
        return _stricmp(other.c_str(), path.c_str()) == 0;
    };
    if (!path.empty() && std::none_of(list.begin(), list.end(), same)) {
        list.push_back(std::move(path));
    }
}

std::string environmentVariable(const wchar_t* name) {
    std::wstring value(32768, L'\0');
    value.resize(GetEnvironmentVariableW(name, value.data(), static_cast<DWORD>(value.size())));
    return utf8(value);
}

std::string textValue(HKEY key, const wchar_t* name) {
    std::array<wchar_t, 2048> text{};
    auto bytes = static_cast<DWORD>((text.size() - 1) * sizeof(wchar_t));
    DWORD type = 0;
    if (RegQueryValueExW(key, name, nullptr, &type, reinterpret_cast<BYTE*>(text.data()), &bytes) !=
            ERROR_SUCCESS ||
        (type != REG_SZ && type != REG_EXPAND_SZ)) {
        return {};
    }
    if (type == REG_SZ) {
        return utf8(text.data());
    }
    std::wstring whole(32768, L'\0');
    const DWORD length =
        ExpandEnvironmentStringsW(text.data(), whole.data(), static_cast<DWORD>(whole.size()));
    whole.resize(length == 0 || length > whole.size() ? 0 : length - 1);
    return utf8(whole);
}

void addFoldersOf(const wchar_t* product, std::vector<std::string>& out) {
    const Key versions(HKEY_LOCAL_MACHINE, product);
    for (DWORD i = 0; versions.get() != nullptr; ++i) {
        std::array<wchar_t, 256> name{};
        auto length = static_cast<DWORD>(name.size());
        if (RegEnumKeyExW(versions.get(), i, name.data(), &length, nullptr, nullptr, nullptr, nullptr) !=
            ERROR_SUCCESS) {
            return;
        }
        const Key version(versions.get(), name.data());
        if (version.get() != nullptr) {
            addOnce(out, textValue(version.get(), L"CommonPluginInstallPath"));
        }
    }
}

}  // namespace

std::vector<std::string> registeredPluginFolders() {
    std::vector<std::string> out;
    addFoldersOf(L"SOFTWARE\\Adobe\\Premiere Pro", out);
    addFoldersOf(L"SOFTWARE\\Adobe\\After Effects", out);
    return out;
}

std::vector<std::string> usualPluginFolders() {
    std::string programs = environmentVariable(L"ProgramW6432");
    if (programs.empty()) {
        programs = "C:\\Program Files";
    }
    return {programs + "\\Adobe\\Common\\Plug-ins\\7.0\\MediaCore",
            programs + "\\Adobe\\Common\\Plugins\\7.0\\MediaCore"};
}

std::vector<std::string> libraryFolders() {
    std::vector<std::string> out;
    std::array<wchar_t, MAX_PATH + 1> folder{};
    if (GetSystemDirectoryW(folder.data(), MAX_PATH) != 0) {
        addOnce(out, utf8(folder.data()));
    }
    if (GetWindowsDirectoryW(folder.data(), MAX_PATH) != 0) {
        addOnce(out, utf8(folder.data()));
    }
    const std::string path = environmentVariable(L"PATH");
    for (std::size_t at = 0; at < path.size();) {
        const std::size_t end = std::min(path.find(';', at), path.size());
        std::string part = path.substr(at, end - at);
        part.erase(std::remove(part.begin(), part.end(), '"'), part.end());
        addOnce(out, part);
        at = end + 1;
    }
    return out;
}

std::string narrowSystemFolder() {
    std::array<wchar_t, MAX_PATH + 1> folder{};
    return GetSystemWow64DirectoryW(folder.data(), MAX_PATH) == 0 ? std::string() : utf8(folder.data());
}

LogSetting logSetting() {
    HKEY key = nullptr;
    const LSTATUS opened = RegOpenKeyExA(HKEY_CURRENT_USER, "Software\\Orvantis", 0, KEY_READ, &key);
    if (opened != ERROR_SUCCESS) {
        return opened == ERROR_FILE_NOT_FOUND ? LogSetting::kOff : LogSetting::kUnknown;
    }
    // As the plug-in reads it: of any type, of four bytes at most.
    DWORD number = 0;
    DWORD size = sizeof number;
    const LSTATUS read =
        RegQueryValueExA(key, "EnableAdobeLog", nullptr, nullptr, reinterpret_cast<BYTE*>(&number), &size);
    RegCloseKey(key);
    if (read != ERROR_SUCCESS) {
        return read == ERROR_FILE_NOT_FOUND ? LogSetting::kOff : LogSetting::kUnknown;
    }
    return number != 0 ? LogSetting::kOn : LogSetting::kOff;
}

}  // namespace simhost::tool
