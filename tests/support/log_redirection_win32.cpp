// See log_redirection.h.

// clang-format off
#include <windows.h>
#include <shlobj.h>
// clang-format on

#include <array>
#include <stdexcept>

#include "tests/support/child_process.h"
#include "tests/support/environment.h"
#include "tests/support/log_redirection.h"

namespace orvantis::test {

namespace {

constexpr const char* kKeyVariable = "ORVANTIS_TEST_REGISTRY_KEY";
constexpr const char* kParentKey = "Software\\OrvantisTest";
constexpr const char* kSwitchKey = "Software\\Orvantis";
constexpr const char* kSwitchValue = "EnableAdobeLog";
constexpr const wchar_t* kFoldersKey =
    L"Software\\Microsoft\\Windows\\CurrentVersion\\Explorer\\User Shell Folders";
// The profile folder's identifier and its plain name: systems differ in which one they look for.
constexpr const wchar_t* kProfileValues[] = {L"{5E6C858F-0E22-4760-9AFE-EA3317B67173}", L"Profile"};

void check(LSTATUS status, const char* what) {
    if (status != ERROR_SUCCESS) {
        throw std::runtime_error(std::string(what) + ": error " + std::to_string(status));
    }
}

class Key {
 public:
    Key() = default;
    ~Key() {
        if (m_key != nullptr) {
            (void)RegCloseKey(m_key);
        }
    }
    Key(const Key&) = delete;
    Key& operator=(const Key&) = delete;
    HKEY get() const { return m_key; }
    HKEY* put() { return &m_key; }

 private:
    HKEY m_key = nullptr;
};

void replaceCurrentUser(const std::string& path) {
    Key key;
    check(RegCreateKeyExA(HKEY_CURRENT_USER, path.c_str(), 0, nullptr, 0, KEY_ALL_ACCESS, nullptr, key.put(),
                          nullptr),
          "private registry key");
    check(RegOverridePredefKey(HKEY_CURRENT_USER, key.get()), "registry redirection");
}

}  // namespace

LogRedirection::LogRedirection(const std::filesystem::path& profile)
    : m_key(std::string(kParentKey) + "\\" + std::to_string(thisProcessId()) + "-" +
            std::to_string(GetTickCount64())) {
    replaceCurrentUser(m_key);
    setEnvironment(kKeyVariable, m_key);
    setProfile(profile);
}

LogRedirection::~LogRedirection() {
    unsetEnvironment(kKeyVariable);
    (void)RegOverridePredefKey(HKEY_CURRENT_USER, nullptr);
    (void)RegDeleteTreeA(HKEY_CURRENT_USER, m_key.c_str());
    (void)RegDeleteKeyA(HKEY_CURRENT_USER, kParentKey);  // refused while other tests have keys in it
}

void LogRedirection::setSwitch(std::uint32_t value) {
    setSwitch(REG_DWORD, &value, sizeof value);
}

void LogRedirection::setSwitch(std::uint32_t type, const void* bytes, std::uint32_t size) {
    Key key;
    check(RegCreateKeyExA(HKEY_CURRENT_USER, kSwitchKey, 0, nullptr, 0, KEY_ALL_ACCESS, nullptr, key.put(),
                          nullptr),
          "switch key");
    check(RegSetValueExA(key.get(), kSwitchValue, 0, type, static_cast<const BYTE*>(bytes), size),
          "switch value");
}

void LogRedirection::removeSwitch() {
    (void)RegDeleteTreeA(HKEY_CURRENT_USER, kSwitchKey);
}

void LogRedirection::setProfile(const std::filesystem::path& profile) {
    Key key;
    check(RegCreateKeyExW(HKEY_CURRENT_USER, kFoldersKey, 0, nullptr, 0, KEY_ALL_ACCESS, nullptr, key.put(),
                          nullptr),
          "folders key");
    const std::wstring text = profile.wstring();
    for (const wchar_t* value : kProfileValues) {
        check(RegSetValueExW(key.get(), value, 0, REG_SZ, reinterpret_cast<const BYTE*>(text.c_str()),
                             static_cast<DWORD>((text.size() + 1) * sizeof(wchar_t))),
              "profile folder");
    }
}

std::filesystem::path LogRedirection::effectiveProfile() const {
    std::array<wchar_t, MAX_PATH> folder{};
    if (FAILED(SHGetFolderPathW(nullptr, CSIDL_PROFILE, nullptr, 0, folder.data()))) {
        return {};
    }
    return folder.data();
}

void LogRedirection::inherit() {
    if (const std::optional<std::string> key = getEnvironment(kKeyVariable)) {
        replaceCurrentUser(*key);
    }
}

}  // namespace orvantis::test
