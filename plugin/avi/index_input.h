// Index data on its way from the file into the chunk lists: piece by piece through one buffer of bounded
// size, so that no index is ever held whole. Memory that a process touches for the first time costs several
// times what it costs to read as much from the system's cache.
#pragma once

#include <cstddef>
#include <cstdint>

#include "avi/file_window.h"
#include "fileio/read_buffer.h"

namespace orvantis {

class IndexInput {
 public:
    static constexpr std::uint32_t kPieceBytes = 64 * 1024;

    /// The reference is kept.
    explicit IndexInput(FileWindow& file) : m_file(file) {}

    std::uint64_t fileSize() const noexcept { return m_file.fileSize(); }
    /// Whether the file is long enough to have these bytes.
    bool holds(std::uint64_t position, std::uint64_t count) const noexcept {
        return m_file.holds(position, count);
    }
    /// Exactly `count` bytes (at most kPieceBytes), valid until the next call; null when they cannot be read.
    /// Throws std::bad_alloc.
    const std::byte* read(std::uint64_t position, std::uint32_t count) {
        std::byte* const piece = m_buffer.ensure(count);
        return m_file.readBulk(position, piece, count) ? piece : nullptr;
    }

 private:
    FileWindow& m_file;
    fileio::ReadBuffer m_buffer;
};

}  // namespace orvantis
