// Reads a file's structure in few and large steps. Headers of a few bytes each are served from two windows on
// the file: the first one stays on the first place read, which is where an AVI file has all its headers, the
// second one follows the reader. Bulk data goes straight to its destination. Never throws; a failure of any
// kind is a false result. Owned by AviReader while it parses.
#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>

#include "avi/walk_arithmetic.h"
#include "fileio/file.h"

namespace orvantis {

class FileWindow {
 public:
    static constexpr std::size_t kWindowBytes = 64 * 1024;

    /// Starts on `file`, which must outlive the reading. Nothing is read yet.
    void attach(fileio::File& file, std::uint64_t fileSize) noexcept;
    /// Gives the windows back. What is read from now on is read exactly, from the same file.
    void release() noexcept;

    std::uint64_t fileSize() const noexcept { return m_fileSize; }
    /// Whether the file is long enough to have these bytes.
    bool holds(std::uint64_t position, std::uint64_t count) const noexcept {
        return isInFile(position, count, m_fileSize);
    }

    /// Copies exactly `count` bytes (at most kWindowBytes) from `position`; a miss costs one seek and one
    /// read. Where a window cannot be filled, because of a bad sector behind a header, exactly these bytes
    /// are asked for. Fails too when there were more misses than any way forward through the file can need:
    /// only lists that lie over one another send the reader to and fro so often.
    [[nodiscard]] bool readSmall(std::uint64_t position, void* destination, std::size_t count) noexcept;

    /// Reads exactly `count` bytes straight to `destination`, with one seek and one read; or without any,
    /// when a window has them already. Fails at once, without reading, when the file is too short.
    [[nodiscard]] bool readBulk(std::uint64_t position, void* destination, std::uint64_t count) noexcept;

 private:
    struct Window {
        std::unique_ptr<std::byte[]> bytes;
        std::uint64_t position = 0;
        std::size_t count = 0;

        const std::byte* find(std::uint64_t at, std::uint64_t length) const noexcept;
    };

    bool refill(Window& window, std::uint64_t position) noexcept;
    bool readExactly(std::uint64_t position, void* destination, std::uint64_t count) noexcept;
    bool meetsTrouble(std::uint64_t position) const noexcept;
    void noteTrouble(std::uint64_t position) noexcept;

    fileio::File* m_file = nullptr;  // null until attach()
    bool m_windowed = false;         // until release()
    std::uint64_t m_fileSize = 0;
    std::uint64_t m_refillsLeft = 0;
    std::uint64_t m_troubleStart =
        0;  // where windows could not be filled; empty when not before m_troubleEnd
    std::uint64_t m_troubleEnd = 0;
    Window m_first;
    Window m_second;
};

}  // namespace orvantis
