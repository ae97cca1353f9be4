// clang-format off
#include <windows.h>
#include <winioctl.h>
// clang-format on
#include <io.h>

#include <cerrno>
#include <string>

#include "tool/excerpt/sparse_platform.h"
#include "tool/shared/base/file_facts.h"
#include "tool/shared/base/wide_text_win32.h"

namespace simhost::tool {

void allowHoles(std::FILE* file) noexcept {
    // Where the file system refuses, the holes are noughts on the disk.
    DWORD returned = 0;
    (void)DeviceIoControl(reinterpret_cast<HANDLE>(_get_osfhandle(_fileno(file))), FSCTL_SET_SPARSE, nullptr,
                          0, nullptr, 0, &returned, nullptr);
}

bool seekTo(std::FILE* file, std::uint64_t position) noexcept {
    return _fseeki64(file, static_cast<long long>(position), SEEK_SET) == 0;
}

std::string renameToNew(const std::string& from, const std::string& to) {
    // Without MOVEFILE_REPLACE_EXISTING it fails when there is something of that name.
    if (MoveFileExW(wideText(from).c_str(), wideText(to).c_str(), 0) != FALSE) {
        return {};
    }
    const DWORD error = GetLastError();
    return error == ERROR_ALREADY_EXISTS || error == ERROR_FILE_EXISTS ? systemReason(EEXIST)
                                                                       : "error " + std::to_string(error);
}

std::uint64_t bytesOnDisk(const std::string& path) {
    DWORD high = 0;
    const DWORD low = GetCompressedFileSizeW(wideText(path).c_str(), &high);
    return low == INVALID_FILE_SIZE && GetLastError() != NO_ERROR ? 0 : std::uint64_t{high} << 32 | low;
}

}  // namespace simhost::tool
