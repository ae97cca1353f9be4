// What the operating system tells of a path, and the few things about files that the standard library cannot
// do. Implemented by file_facts_win32.cpp and file_facts_posix.cpp. Paths are UTF-8. Any thread.
#pragma once

#include <cstdint>
#include <cstdio>
#include <string>

namespace simhost::tool {

enum class FileKind {
    kMissing,
    kFile,
    kFolder,
    kOther,    ///< a device, a pipe
    kUnknown,  ///< something is there, or in the way, that may not be looked at
};

/// Links are followed. Two paths with the same volume and index lead to the same file, whatever they look
/// like.
struct FileFacts {
    FileKind kind = FileKind::kMissing;
    std::uint64_t volume = 0;
    std::uint64_t index = 0;
    std::int64_t modified = 0;  ///< seconds since 1970, UTC
    std::string path;           ///< without links and short names; as given when there is nothing
    std::string reason;         ///< the system's, of kUnknown

    bool exists() const noexcept { return kind != FileKind::kMissing && kind != FileKind::kUnknown; }
    bool isSameFile(const FileFacts& other) const noexcept {
        return exists() && other.exists() && volume == other.volume && index == other.index;
    }
};
FileFacts fileFacts(const std::string& pathUtf8);

/// Empty when the file can be opened for reading, else the system's reason.
std::string whyUnreadable(const std::string& pathUtf8);

struct CreatedFile {
    std::FILE* file = nullptr;  ///< binary; the caller closes it
    std::string reason;         ///< why there is none
};
/// A file that is not there yet, which others may remove while it is open; with `device` something that is
/// there and is no file.
CreatedFile createFile(const std::string& pathUtf8, bool device);

/// What the system says to an `errno` of the C library; a full disk is "disk full" everywhere.
std::string systemReason(int error);

}  // namespace simhost::tool
