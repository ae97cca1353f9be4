// A file read through one buffer: the places that a search looks at lie near one another.
#pragma once

#include <algorithm>
#include <cstddef>
#include <cstdint>
#include <span>
#include <vector>

#include "tool/rescue/storage.h"

namespace simhost::tool {

class ByteWindow {
 public:
    static constexpr std::size_t kMostBytes = std::size_t{1} << 20;
    /// What a look at an unknown stretch begins with: pieces grow, so that a short one costs little.
    static constexpr std::size_t kFirstPiece = 4096;
    static constexpr std::size_t nextPiece(std::size_t piece) noexcept {
        return std::min(4 * piece, kMostBytes);
    }

    explicit ByteWindow(Storage& file) : m_file(file), m_size(file.size()) {}

    /// The file's, when the window was made.
    std::uint64_t size() const noexcept { return m_size; }
    /// `count` bytes at `at`, fewer at the end of the file; good until the next call. When they are not at
    /// hand, `ahead` bytes are read. `count` and `ahead` are at most kMostBytes. Bytes that the disk cannot
    /// read are 0xFF, which no chunk's code holds.
    std::span<const std::uint8_t> view(std::uint64_t at, std::size_t count, std::size_t ahead = 4096);

    /// Some of the bytes at hand could not be read.
    bool hasUnreadable() const noexcept { return m_unreadable; }

    /// Where bytes that are not zero begin, at or behind `at`: at most the end of the file. Holes cost
    /// nothing. `step` is told how far it is, now and then.
    template <class Step>
    std::uint64_t skipZeros(std::uint64_t at, Step&& step) {
        for (std::size_t piece = kFirstPiece; at < m_size; piece = nextPiece(piece)) {
            at = m_file.dataFrom(at).begin;
            const std::span<const std::uint8_t> bytes = view(at, piece, piece);
            for (std::size_t i = 0; i < bytes.size(); ++i) {
                if (bytes[i] != 0) {
                    return at + i;
                }
            }
            at += bytes.size();
            step(at);
        }
        return m_size;
    }

 private:
    void fill(std::uint64_t at, std::size_t count);

    Storage& m_file;
    std::uint64_t m_size;
    std::uint64_t m_at = 0;
    std::vector<std::uint8_t> m_bytes;
    bool m_unreadable = false;
};

}  // namespace simhost::tool
