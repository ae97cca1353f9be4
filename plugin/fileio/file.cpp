// What every file shares: the exact forms of read and seek, and the positioned write.

#include "fileio/file.h"

#include "fileio/error.h"

namespace fileio {

std::uint64_t File::alignment() {
    return 4096;
}

std::uint64_t File::blockSize() {
    return 4096;
}

std::uint64_t File::writeAt(const void* buffer, std::uint64_t count, std::int64_t offset) {
    const std::int64_t before = tell();
    if (!seek(offset)) {
        return 0;
    }
    const std::uint64_t written = write(buffer, count);
    (void)seek(before);
    return written;
}

void File::readExact(void* buffer, std::uint64_t count) {
    const std::uint64_t got = read(buffer, count);
    if (got != count) {
        throw ReadError(count, got);
    }
}

void File::seekTo(std::int64_t offset) {
    if (!seek(offset)) {
        throw SeekError(offset);
    }
}

}  // namespace fileio
