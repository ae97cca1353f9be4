// clang-format off
#include <windows.h>
#include <winioctl.h>
// clang-format on

#include <algorithm>
#include <iterator>

#include "simhost/text.h"
#include "tool/rescue/storage.h"
#include "tool/shared/base/tool_error.h"
#include "tool/shared/base/wide_text_win32.h"

namespace simhost::tool {
namespace {

[[noreturn]] void failStorage(ExitCode code, const char* what, const std::string& path, DWORD error) {
    std::string reason = "disk full";
    if (error != ERROR_DISK_FULL && error != ERROR_HANDLE_DISK_FULL) {
        wchar_t buffer[512];
        const DWORD length =
            FormatMessageW(FORMAT_MESSAGE_FROM_SYSTEM | FORMAT_MESSAGE_IGNORE_INSERTS, nullptr, error, 0,
                           buffer, static_cast<DWORD>(std::size(buffer)), nullptr);
        reason = toUtf8(std::u16string(buffer, buffer + length));
        reason.erase(reason.find_last_not_of("\r\n .") + 1);
        if (reason.empty()) {
            reason = "error " + std::to_string(error);
        }
    }
    throw ToolError(code, std::string("cannot ") + what + " '" + path + "': " + reason);
}

OVERLAPPED placeAt(std::uint64_t at) {
    OVERLAPPED out{};
    out.Offset = static_cast<DWORD>(at);
    out.OffsetHigh = static_cast<DWORD>(at >> 32);
    return out;
}

class Win32Storage final : public Storage {
 public:
    Win32Storage(std::string path, DWORD access, DWORD share, DWORD creation, ExitCode code)
        : m_path(std::move(path)) {
        m_file = CreateFileW(wideText(m_path).c_str(), access, share, nullptr, creation,
                             FILE_ATTRIBUTE_NORMAL, nullptr);
        if (m_file == INVALID_HANDLE_VALUE) {
            failStorage(code, "open", m_path, GetLastError());
        }
    }
    ~Win32Storage() override { (void)CloseHandle(m_file); }

    std::uint64_t size() override {
        LARGE_INTEGER bytes{};
        if (GetFileSizeEx(m_file, &bytes) == FALSE) {
            failStorage(kFailed, "read", m_path, GetLastError());
        }
        return static_cast<std::uint64_t>(bytes.QuadPart);
    }

    std::size_t read(std::uint64_t at, std::span<std::uint8_t> bytes) override {
        std::size_t done = 0;
        while (done < bytes.size()) {
            OVERLAPPED place = placeAt(at + done);
            DWORD got = 0;
            if (ReadFile(m_file, bytes.data() + done, pieceOf(bytes.size() - done), &got, &place) == FALSE) {
                const DWORD error = GetLastError();
                if (error == ERROR_HANDLE_EOF) {
                    break;
                }
                failStorage(kFailed, "read", m_path, error);
            }
            if (got == 0) {
                break;
            }
            done += got;
        }
        return done;
    }

    void write(std::uint64_t at, std::span<const std::uint8_t> bytes) override {
        std::size_t done = 0;
        while (done < bytes.size()) {
            OVERLAPPED place = placeAt(at + done);
            DWORD put = 0;
            if (WriteFile(m_file, bytes.data() + done, pieceOf(bytes.size() - done), &put, &place) == FALSE ||
                put == 0) {
                failStorage(kNoOutput, "write to", m_path, GetLastError());
            }
            done += put;
        }
    }

    void resize(std::uint64_t size) override {
        FILE_END_OF_FILE_INFO end{};
        end.EndOfFile.QuadPart = static_cast<LONGLONG>(size);
        if (SetFileInformationByHandle(m_file, FileEndOfFileInfo, &end, sizeof end) == FALSE) {
            failStorage(kNoOutput, "change the length of", m_path, GetLastError());
        }
    }

    void flush() override {
        if (FlushFileBuffers(m_file) == FALSE) {
            failStorage(kNoOutput, "write to", m_path, GetLastError());
        }
    }

    Extent dataFrom(std::uint64_t at) override {
        const std::uint64_t end = size();
        if (at >= end) {
            return {end, end};
        }
        FILE_ALLOCATED_RANGE_BUFFER asked{};
        asked.FileOffset.QuadPart = static_cast<LONGLONG>(at);
        asked.Length.QuadPart = static_cast<LONGLONG>(end - at);
        FILE_ALLOCATED_RANGE_BUFFER found{};
        DWORD bytes = 0;
        const BOOL all = DeviceIoControl(m_file, FSCTL_QUERY_ALLOCATED_RANGES, &asked, sizeof asked, &found,
                                         sizeof found, &bytes, nullptr);
        if (all == FALSE && GetLastError() != ERROR_MORE_DATA) {
            return {at, end};
        }
        if (bytes < sizeof found) {
            return {end, end};
        }
        const auto begin = static_cast<std::uint64_t>(found.FileOffset.QuadPart);
        return {std::max(begin, at),
                std::min(begin + static_cast<std::uint64_t>(found.Length.QuadPart), end)};
    }

    void allowHoles() override {
        DWORD bytes = 0;
        (void)DeviceIoControl(m_file, FSCTL_SET_SPARSE, nullptr, 0, nullptr, 0, &bytes, nullptr);
    }

 private:
    static DWORD pieceOf(std::size_t bytes) {
        constexpr std::size_t kMost = std::size_t{1} << 30;
        return static_cast<DWORD>(std::min(bytes, kMost));
    }

    std::string m_path;
    HANDLE m_file;
};

class Win32Disk final : public Disk {
 public:
    bool exists(const std::string& path) override {
        return GetFileAttributesW(wideText(path).c_str()) != INVALID_FILE_ATTRIBUTES ||
               (GetLastError() != ERROR_FILE_NOT_FOUND && GetLastError() != ERROR_PATH_NOT_FOUND);
    }
    std::unique_ptr<Storage> openToRead(const std::string& path) override {
        return std::make_unique<Win32Storage>(path, GENERIC_READ,
                                              FILE_SHARE_READ | FILE_SHARE_WRITE | FILE_SHARE_DELETE,
                                              OPEN_EXISTING, kFailed);
    }
    std::unique_ptr<Storage> openToChange(const std::string& path) override {
        return std::make_unique<Win32Storage>(path, GENERIC_READ | GENERIC_WRITE, FILE_SHARE_READ,
                                              OPEN_EXISTING, kNoOutput);
    }
    std::unique_ptr<Storage> create(const std::string& path) override {
        return std::make_unique<Win32Storage>(path, GENERIC_READ | GENERIC_WRITE,
                                              FILE_SHARE_READ | FILE_SHARE_DELETE, CREATE_NEW, kNoOutput);
    }
    void publish(const std::string& from, const std::string& to) override {
        if (MoveFileExW(wideText(from).c_str(), wideText(to).c_str(), MOVEFILE_WRITE_THROUGH) == FALSE) {
            failStorage(kNoOutput, "create", to, GetLastError());
        }
    }
    void remove(const std::string& path) override {
        if (DeleteFileW(wideText(path).c_str()) == FALSE) {
            failStorage(kNoOutput, "remove", path, GetLastError());
        }
    }
};

}  // namespace

Disk& systemDisk() {
    static Win32Disk disk;
    return disk;
}

}  // namespace simhost::tool
