// The Windows file. The only place of the plug-in that opens, reads or writes a media file.

#include "fileio/win_file.h"

#include <windows.h>

#include <cstring>
#include <string>

#include "diag/text.h"

namespace fileio {

static_assert(sizeof(wchar_t) == sizeof(char16_t));

namespace {

// INVALID_HANDLE_VALUE is a cast of -1 and so no constant expression.
HANDLE invalidHandle() noexcept {
    return INVALID_HANDLE_VALUE;
}

}  // namespace

WinFile::WinFile() noexcept : m_handle(invalidHandle()), m_isOpen(false) {}

WinFile::~WinFile() {
    if (m_isOpen) {
        (void)CloseHandle(m_handle);
    }
}

bool WinFile::open(const char* utf8Path, int mode) {
    return open(orvantis::utf16FromUtf8({utf8Path, std::strlen(utf8Path)}).c_str(), mode);
}

bool WinFile::open(const char16_t* path, int mode) {
    if (m_isOpen) {
        close();
    }
    DWORD access = 0;
    DWORD creation = 0;  // no valid disposition: the system refuses to open for neither reading nor writing
    if ((mode & kOpenRead) != 0) {
        access |= GENERIC_READ;
        creation = OPEN_EXISTING;
    }
    if ((mode & kOpenWrite) != 0) {
        access |= GENERIC_WRITE;
        creation = CREATE_ALWAYS;
    }
    DWORD attributes = FILE_ATTRIBUTE_NORMAL;
    if ((mode & kOpenUnbuffered) != 0) {
        attributes |= FILE_FLAG_NO_BUFFERING;
    }
    const DWORD share = (mode & kOpenShareRead) != 0 ? DWORD{FILE_SHARE_READ} : DWORD{0};
    m_handle = CreateFileW(reinterpret_cast<const wchar_t*>(path), access, share, nullptr, creation,
                           attributes, nullptr);
    m_isOpen = m_handle != invalidHandle();
    return m_isOpen;
}

void WinFile::close() {
    if (m_handle != invalidHandle()) {
        (void)CloseHandle(m_handle);
    }
    m_handle = invalidHandle();
    m_isOpen = false;
}

std::int64_t WinFile::size() {
    LARGE_INTEGER bytes{};
    (void)GetFileSizeEx(m_handle, &bytes);
    return bytes.QuadPart;
}

std::int64_t WinFile::tell() {
    LARGE_INTEGER position{};
    if (SetFilePointerEx(m_handle, LARGE_INTEGER{}, &position, FILE_CURRENT) == FALSE) {
        return 0;
    }
    return position.QuadPart;
}

bool WinFile::seek(std::int64_t offset) {
    LARGE_INTEGER target{};
    target.QuadPart = offset;
    return SetFilePointerEx(m_handle, target, nullptr, FILE_BEGIN) != FALSE;
}

std::uint64_t WinFile::read(void* buffer, std::uint64_t count) {
    DWORD got = 0;
    if (ReadFile(m_handle, buffer, static_cast<DWORD>(count), &got, nullptr) == FALSE) {
        return 0;
    }
    return got;
}

std::uint64_t WinFile::write(const void* buffer, std::uint64_t count) {
    DWORD written = 0;
    if (WriteFile(m_handle, buffer, static_cast<DWORD>(count), &written, nullptr) == FALSE) {
        return 0;
    }
    return written;
}

}  // namespace fileio
