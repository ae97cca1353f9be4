// clang-format off
#include <windows.h>
// clang-format on
#include <fcntl.h>
#include <io.h>

#include <cerrno>
#include <iterator>
#include <system_error>

#include "simhost/text.h"
#include "tool/shared/base/file_facts.h"
#include "tool/shared/base/wide_text_win32.h"

namespace simhost::tool {
namespace {

std::string reasonOf(DWORD error) {
    if (error == ERROR_DISK_FULL || error == ERROR_HANDLE_DISK_FULL) {
        return "disk full";
    }
    wchar_t buffer[512];
    const DWORD length = FormatMessageW(FORMAT_MESSAGE_FROM_SYSTEM | FORMAT_MESSAGE_IGNORE_INSERTS, nullptr,
                                        error, 0, buffer, static_cast<DWORD>(std::size(buffer)), nullptr);
    std::string text = toUtf8(std::u16string(buffer, buffer + length));
    while (!text.empty() &&
           (text.back() == '\n' || text.back() == '\r' || text.back() == ' ' || text.back() == '.')) {
        text.pop_back();
    }
    return text.empty() ? "error " + std::to_string(error) : text;
}

class Handle {
 public:
    explicit Handle(HANDLE handle) noexcept : m_handle(handle) {}
    Handle(const Handle&) = delete;
    Handle& operator=(const Handle&) = delete;
    ~Handle() {
        if (valid()) {
            (void)CloseHandle(m_handle);
        }
    }
    bool valid() const noexcept { return m_handle != INVALID_HANDLE_VALUE; }
    HANDLE get() const noexcept { return m_handle; }

 private:
    HANDLE m_handle;
};

constexpr DWORD kShareAll = FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE;

// The handle is opened for no access at all, which is granted even where another program holds the file.
HANDLE openToLook(const std::string& pathUtf8) {
    return CreateFileW(wideText(pathUtf8).c_str(), 0, kShareAll, nullptr, OPEN_EXISTING,
                       FILE_FLAG_BACKUP_SEMANTICS, nullptr);
}

bool meansMissing(DWORD error) {
    return error == ERROR_FILE_NOT_FOUND || error == ERROR_PATH_NOT_FOUND || error == ERROR_INVALID_NAME ||
           error == ERROR_BAD_NETPATH || error == ERROR_BAD_NET_NAME || error == ERROR_DIRECTORY;
}

std::int64_t secondsSince1970(const FILETIME& time) {
    constexpr std::int64_t kTicksPerSecond = 10'000'000;
    constexpr std::int64_t kSecondsFrom1601 = 11'644'473'600;
    const std::uint64_t ticks = (std::uint64_t{time.dwHighDateTime} << 32) | time.dwLowDateTime;
    return static_cast<std::int64_t>(ticks) / kTicksPerSecond - kSecondsFrom1601;
}

}  // namespace

FileFacts fileFacts(const std::string& pathUtf8) {
    FileFacts out;
    out.path = pathUtf8;
    const Handle file(openToLook(pathUtf8));
    if (!file.valid()) {
        const DWORD error = GetLastError();
        if (!meansMissing(error)) {
            out.kind = FileKind::kUnknown;
            out.reason = reasonOf(error);
        }
        return out;
    }
    BY_HANDLE_FILE_INFORMATION info{};
    if (GetFileType(file.get()) != FILE_TYPE_DISK || GetFileInformationByHandle(file.get(), &info) == FALSE) {
        out.kind = FileKind::kOther;
        return out;
    }
    out.kind = (info.dwFileAttributes & FILE_ATTRIBUTE_DIRECTORY) != 0 ? FileKind::kFolder : FileKind::kFile;
    out.volume = info.dwVolumeSerialNumber;
    out.index = (std::uint64_t{info.nFileIndexHigh} << 32) | info.nFileIndexLow;
    out.modified = secondsSince1970(info.ftLastWriteTime);
    std::wstring whole(32768, L'\0');
    const DWORD length = GetFinalPathNameByHandleW(file.get(), whole.data(), static_cast<DWORD>(whole.size()),
                                                   FILE_NAME_NORMALIZED);
    if (length != 0 && length < whole.size()) {
        out.path = toUtf8(std::u16string(whole.begin(), whole.begin() + length));
    }
    return out;
}

std::string whyUnreadable(const std::string& pathUtf8) {
    const Handle file(
        CreateFileW(wideText(pathUtf8).c_str(), GENERIC_READ, kShareAll, nullptr, OPEN_EXISTING, 0, nullptr));
    return file.valid() ? std::string() : reasonOf(GetLastError());
}

CreatedFile createFile(const std::string& pathUtf8, bool device) {
    CreatedFile out;
    Handle file(CreateFileW(wideText(pathUtf8).c_str(), GENERIC_WRITE, kShareAll, nullptr,
                            device ? OPEN_EXISTING : CREATE_NEW, FILE_ATTRIBUTE_NORMAL, nullptr));
    if (!file.valid()) {
        out.reason = reasonOf(GetLastError());
        return out;
    }
    // A handle of its own for the C library, which closes it.
    HANDLE own = nullptr;
    if (DuplicateHandle(GetCurrentProcess(), file.get(), GetCurrentProcess(), &own, 0, FALSE,
                        DUPLICATE_SAME_ACCESS) == FALSE) {
        out.reason = reasonOf(GetLastError());
        return out;
    }
    const int number = _open_osfhandle(reinterpret_cast<std::intptr_t>(own), _O_BINARY);
    if (number < 0) {
        (void)CloseHandle(own);
        out.reason = systemReason(errno);
        return out;
    }
    out.file = _fdopen(number, "wb");
    if (out.file == nullptr) {
        out.reason = systemReason(errno);
        (void)_close(number);
    }
    return out;
}

std::string systemReason(int error) {
    return error == ENOSPC ? "disk full" : std::generic_category().message(error);
}

}  // namespace simhost::tool
