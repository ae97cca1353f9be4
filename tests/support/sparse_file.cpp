// See sparse_file.h.

#include "tests/support/sparse_file.h"

#include <algorithm>
#include <cstring>

namespace orvantis::test {

void SparseFile::put(std::int64_t offset, std::span<const std::byte> bytes) {
    m_places[offset].assign(bytes.begin(), bytes.end());
    m_size = std::max(m_size, offset + static_cast<std::int64_t>(bytes.size()));
}

bool SparseFile::open(const char* /*utf8Path*/, int /*mode*/) {
    ++m_counts.opens;
    m_position = 0;
    return true;
}

void SparseFile::close() {
    ++m_counts.closes;
}

std::int64_t SparseFile::size() {
    ++m_counts.sizes;
    return m_size;
}

std::int64_t SparseFile::tell() {
    ++m_counts.tells;
    return m_position;
}

bool SparseFile::seek(std::int64_t offset) {
    ++m_counts.seeks;
    if (offset < 0) {
        return false;
    }
    m_position = offset;
    return true;
}

std::uint64_t SparseFile::read(void* buffer, std::uint64_t count) {
    ++m_counts.reads;
    m_counts.largestRead = std::max(m_counts.largestRead, count);
    if (m_position >= m_size) {
        return 0;
    }
    const std::int64_t wanted =
        std::min<std::int64_t>(static_cast<std::uint32_t>(count), m_size - m_position);
    const std::int64_t end = m_position + wanted;
    if (wanted > 0) {
        std::memset(buffer, 0, static_cast<std::size_t>(wanted));
    }
    for (const auto& [offset, bytes] : m_places) {
        const std::int64_t from = std::max(offset, m_position);
        const std::int64_t to = std::min(offset + static_cast<std::int64_t>(bytes.size()), end);
        if (from < to) {
            std::memcpy(static_cast<std::byte*>(buffer) + (from - m_position), bytes.data() + (from - offset),
                        static_cast<std::size_t>(to - from));
        }
    }
    m_position = end;
    m_counts.bytesRead += static_cast<std::uint64_t>(wanted);
    return static_cast<std::uint64_t>(wanted);
}

std::uint64_t SparseFile::write(const void* /*buffer*/, std::uint64_t /*count*/) {
    ++m_counts.writes;
    return 0;
}

}  // namespace orvantis::test
