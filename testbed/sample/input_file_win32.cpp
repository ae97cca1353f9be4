#include <windows.h>

#include "input_file.h"

namespace sample {
namespace {

HANDLE asHandle(std::uint64_t handle) {
    return reinterpret_cast<HANDLE>(static_cast<std::uintptr_t>(handle));
}

}  // namespace

bool InputFile::open(const char16_t* path) {
    close();
    const HANDLE handle = CreateFileW(reinterpret_cast<const wchar_t*>(path), GENERIC_READ,
                                      FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE, nullptr,
                                      OPEN_EXISTING, FILE_ATTRIBUTE_NORMAL, nullptr);
    m_handle = static_cast<std::uint64_t>(reinterpret_cast<std::uintptr_t>(handle));
    return isOpen();
}

void InputFile::close() noexcept {
    if (isOpen()) {
        (void)CloseHandle(asHandle(m_handle));
        m_handle = kNone;
    }
}

std::uint64_t InputFile::size() const {
    LARGE_INTEGER size;
    return GetFileSizeEx(asHandle(m_handle), &size) != 0 ? static_cast<std::uint64_t>(size.QuadPart) : 0;
}

bool InputFile::readAt(std::uint64_t offset, void* to, std::size_t bytes) const {
    auto* at = static_cast<unsigned char*>(to);
    while (bytes > 0) {
        OVERLAPPED place{};
        place.Offset = static_cast<DWORD>(offset);
        place.OffsetHigh = static_cast<DWORD>(offset >> 32);
        DWORD got = 0;
        const auto wanted = static_cast<DWORD>(bytes < 0x1000'0000 ? bytes : 0x1000'0000);
        if (ReadFile(asHandle(m_handle), at, wanted, &got, &place) == 0 || got == 0) {
            return false;
        }
        at += got;
        offset += got;
        bytes -= got;
    }
    return true;
}

}  // namespace sample
