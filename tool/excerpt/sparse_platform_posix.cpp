#include <sys/stat.h>
#include <unistd.h>

#include <cerrno>

#include "tool/excerpt/sparse_platform.h"
#include "tool/shared/base/file_facts.h"

namespace simhost::tool {

void allowHoles(std::FILE* /*file*/) noexcept {}

bool seekTo(std::FILE* file, std::uint64_t position) noexcept {
    return ::fseeko(file, static_cast<off_t>(position), SEEK_SET) == 0;
}

std::string renameToNew(const std::string& from, const std::string& to) {
    // A second name fails when there is something of that name, which a renaming would replace.
    if (::link(from.c_str(), to.c_str()) == 0) {
        (void)::unlink(from.c_str());
        return {};
    }
    if (errno == EEXIST || ::access(to.c_str(), F_OK) == 0) {
        return systemReason(EEXIST);
    }
    // Some file systems have no second names.
    return ::rename(from.c_str(), to.c_str()) == 0 ? std::string() : systemReason(errno);
}

std::uint64_t bytesOnDisk(const std::string& path) {
    constexpr std::uint64_t kBlock = 512;
    struct stat status {};
    return ::stat(path.c_str(), &status) == 0 ? static_cast<std::uint64_t>(status.st_blocks) * kBlock : 0;
}

}  // namespace simhost::tool
