#include <fcntl.h>
#include <sys/stat.h>
#include <unistd.h>

#include <filesystem>

#include "input_file.h"

namespace sample {

bool InputFile::open(const char16_t* path) {
    close();
    const int descriptor = ::open(std::filesystem::path(path).c_str(), O_RDONLY | O_CLOEXEC);
    struct stat about {};
    if (descriptor >= 0 && (::fstat(descriptor, &about) != 0 || !S_ISREG(about.st_mode))) {
        (void)::close(descriptor);
        return false;
    }
    m_handle = descriptor >= 0 ? static_cast<std::uint64_t>(descriptor) : kNone;
    return isOpen();
}

void InputFile::close() noexcept {
    if (isOpen()) {
        (void)::close(static_cast<int>(m_handle));
        m_handle = kNone;
    }
}

std::uint64_t InputFile::size() const {
    struct stat about {};
    return ::fstat(static_cast<int>(m_handle), &about) == 0 ? static_cast<std::uint64_t>(about.st_size) : 0;
}

bool InputFile::readAt(std::uint64_t offset, void* to, std::size_t bytes) const {
    auto* at = static_cast<unsigned char*>(to);
    while (bytes > 0) {
        const ssize_t got = ::pread(static_cast<int>(m_handle), at, bytes, static_cast<off_t>(offset));
        if (got <= 0) {
            return false;
        }
        at += got;
        offset += static_cast<std::uint64_t>(got);
        bytes -= static_cast<std::size_t>(got);
    }
    return true;
}

}  // namespace sample
