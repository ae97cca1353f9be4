#include <windows.h>

#include <stdexcept>
#include <string_view>
#include <utility>

#include "simhost/shared_library.h"
#include "simhost/text.h"

namespace simhost {
namespace {

static_assert(sizeof(wchar_t) == sizeof(char16_t));

std::wstring wide(const std::string& utf8) {
    const std::u16string text = toUtf16(utf8);
    return {text.begin(), text.end()};
}

std::wstring absolutePath(const std::string& utf8) {
    const std::wstring path = wide(utf8);
    std::wstring full(32768, L'\0');
    const DWORD length =
        GetFullPathNameW(path.c_str(), static_cast<DWORD>(full.size()), full.data(), nullptr);
    full.resize(length < full.size() ? length : 0);
    return full.empty() ? path : full;
}

// `nameUtf8` is what the call was about: the system leaves a place for it in some of its sentences.
std::string systemMessage(DWORD error, const std::string& nameUtf8) {
    wchar_t buffer[512];
    const DWORD length = FormatMessageW(FORMAT_MESSAGE_FROM_SYSTEM | FORMAT_MESSAGE_IGNORE_INSERTS, nullptr,
                                        error, 0, buffer, static_cast<DWORD>(std::size(buffer)), nullptr);
    std::string text = toUtf8(std::u16string(buffer, buffer + length));
    while (!text.empty() && (text.back() == '\n' || text.back() == '\r' || text.back() == ' ')) {
        text.pop_back();
    }
    constexpr std::string_view kPlace = "%1";
    for (std::size_t at = text.find(kPlace); at != std::string::npos;
         at = text.find(kPlace, at + nameUtf8.size())) {
        text.replace(at, kPlace.size(), nameUtf8);
    }
    return text + " (error " + std::to_string(error) + ")";
}

std::string fileName(const std::string& pathUtf8) {
    return pathUtf8.substr(pathUtf8.find_last_of("/\\") + 1);
}

}  // namespace

SharedLibrary::SharedLibrary(const std::string& pathUtf8, const std::string& extraFolderUtf8) {
    // The folder takes the place of the current one in the search order. It is taken out again at once: the
    // search of libraries that are loaded later is none of our business.
    const bool extra = !extraFolderUtf8.empty();
    if (extra && SetDllDirectoryW(absolutePath(extraFolderUtf8).c_str()) == 0) {
        throw std::runtime_error("cannot search '" + extraFolderUtf8 +
                                 "': " + systemMessage(GetLastError(), extraFolderUtf8));
    }
    m_handle = LoadLibraryExW(absolutePath(pathUtf8).c_str(), nullptr, 0);
    const DWORD error = GetLastError();
    if (extra) {
        SetDllDirectoryW(nullptr);
    }
    if (m_handle == nullptr) {
        throw std::runtime_error("cannot load '" + pathUtf8 +
                                 "': " + systemMessage(error, fileName(pathUtf8)));
    }
}

SharedLibrary::SharedLibrary(SharedLibrary&& other) noexcept
    : m_handle(std::exchange(other.m_handle, nullptr)) {}

SharedLibrary& SharedLibrary::operator=(SharedLibrary&& other) noexcept {
    std::swap(m_handle, other.m_handle);
    return *this;
}

SharedLibrary::~SharedLibrary() {
    unload();
}

void* SharedLibrary::find(const char* name) const noexcept {
    const FARPROC found = GetProcAddress(static_cast<HMODULE>(m_handle), name);
    return reinterpret_cast<void*>(found);
}

void SharedLibrary::unload() noexcept {
    if (m_handle != nullptr) {
        FreeLibrary(static_cast<HMODULE>(std::exchange(m_handle, nullptr)));
    }
}

}  // namespace simhost
