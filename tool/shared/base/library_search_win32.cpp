#include <windows.h>

#include "simhost/text.h"
#include "tool/shared/base/library_search.h"

namespace simhost::tool {

std::string whyNotLoadable(const std::string& name, const std::string& folderUtf8) {
    const auto wide = [](const std::string& utf8) {
        const std::u16string text = toUtf16(utf8);
        return std::wstring(text.begin(), text.end());
    };
    if (!folderUtf8.empty()) {
        std::wstring full(32768, L'\0');
        full.resize(GetFullPathNameW(wide(folderUtf8).c_str(), static_cast<DWORD>(full.size()), full.data(),
                                     nullptr));
        (void)SetDllDirectoryW(full.c_str());
    }
    const HMODULE found = LoadLibraryExW(wide(name).c_str(), nullptr, 0);
    const DWORD error = GetLastError();
    (void)SetDllDirectoryW(nullptr);
    if (found == nullptr) {
        return error == ERROR_MOD_NOT_FOUND ? "it, or a library that it needs, is not there (error 126)"
                                            : "error " + std::to_string(error);
    }
    (void)FreeLibrary(found);
    return {};
}

}  // namespace simhost::tool
