// Files for native builds, in the place of tool/shared/base/file_facts_win32.cpp.
#include "tool/shared/base/file_facts.h"

#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>
#include <cstdlib>
#include <memory>
#include <system_error>

namespace simhost::tool {

FileFacts fileFacts(const std::string& pathUtf8) {
    FileFacts out;
    out.path = pathUtf8;
    struct stat info {};
    if (::stat(pathUtf8.c_str(), &info) != 0) {
        if (errno != ENOENT && errno != ENOTDIR) {
            out.kind = FileKind::kUnknown;
            out.reason = systemReason(errno);
        }
        return out;
    }
    out.kind = S_ISREG(info.st_mode)   ? FileKind::kFile
               : S_ISDIR(info.st_mode) ? FileKind::kFolder
                                       : FileKind::kOther;
    out.volume = info.st_dev;
    out.index = info.st_ino;
    out.modified = info.st_mtime;
    const std::unique_ptr<char, decltype(&std::free)> whole(::realpath(pathUtf8.c_str(), nullptr),
                                                            &std::free);
    if (whole != nullptr) {
        out.path = whole.get();
    }
    return out;
}

std::string whyUnreadable(const std::string& pathUtf8) {
    const int file = ::open(pathUtf8.c_str(), O_RDONLY | O_CLOEXEC | O_NONBLOCK);
    if (file < 0) {
        return systemReason(errno);
    }
    (void)::close(file);
    return {};
}

CreatedFile createFile(const std::string& pathUtf8, bool device) {
    CreatedFile out;
    out.file = std::fopen(pathUtf8.c_str(), device ? "wb" : "wbx");
    if (out.file == nullptr) {
        out.reason = systemReason(errno);
    }
    return out;
}

std::string systemReason(int error) {
    return error == ENOSPC ? "disk full" : std::generic_category().message(error);
}

}  // namespace simhost::tool
