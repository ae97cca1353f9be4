// clang-format off
#include <windows.h>
// clang-format on
#include <lmcons.h>

#include <array>
#include <string>

#include "simhost/text.h"
#include "tool/collect/personal_names.h"

namespace simhost::tool {
namespace {

std::string fromWide(const std::wstring& text) {
    return toUtf8(std::u16string(text.begin(), text.end()));
}

std::wstring environmentText(const wchar_t* name) {
    std::array<wchar_t, 32768> buffer{};
    const DWORD length = GetEnvironmentVariableW(name, buffer.data(), static_cast<DWORD>(buffer.size()));
    return length < buffer.size() ? std::wstring(buffer.data(), length) : std::wstring();
}

// Programs of old see "C:\Users\JOHNSM~1", and so do the folders for temporary files of some.
std::wstring otherForm(const std::wstring& path, DWORD(WINAPI* form)(LPCWSTR, LPWSTR, DWORD)) {
    std::array<wchar_t, 32768> buffer{};
    const DWORD length = form(path.c_str(), buffer.data(), static_cast<DWORD>(buffer.size()));
    return length < buffer.size() ? std::wstring(buffer.data(), length) : std::wstring();
}

}  // namespace

PersonalNames personalNames() {
    PersonalNames out;
    std::array<wchar_t, UNLEN + 1> user{};
    auto length = static_cast<DWORD>(user.size());
    if (GetUserNameW(user.data(), &length) != FALSE) {
        out.users.push_back(fromWide(user.data()));
    }
    out.users.push_back(fromWide(environmentText(L"USERNAME")));
    for (const std::wstring& home :
         {environmentText(L"USERPROFILE"), environmentText(L"HOMEDRIVE") + environmentText(L"HOMEPATH")}) {
        for (const std::wstring& form :
             {home, otherForm(home, GetShortPathNameW), otherForm(home, GetLongPathNameW)}) {
            out.homes.push_back(fromWide(form));
            const std::size_t name = form.find_last_of(L"\\/");
            if (name != std::wstring::npos) {
                out.users.push_back(fromWide(form.substr(name + 1)));
            }
        }
    }
    return out;
}

}  // namespace simhost::tool
