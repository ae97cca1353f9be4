// See memory_file.h.

#include "tests/support/memory_file.h"

#include <algorithm>
#include <cstring>

namespace orvantis::test {

MemoryFile::MemoryFile(std::span<const std::uint8_t> bytes) : m_bytes(bytes.size()) {
    std::copy_n(reinterpret_cast<const std::byte*>(bytes.data()), bytes.size(), m_bytes.begin());
}

MemoryFile::MemoryFile(std::string_view bytes) : m_bytes(bytes.size()) {
    std::copy_n(reinterpret_cast<const std::byte*>(bytes.data()), bytes.size(), m_bytes.begin());
}

bool MemoryFile::open(const char* /*utf8Path*/, int mode) {
    ++m_counts.opens;
    if ((mode & fileio::kOpenWrite) != 0) {
        m_bytes.clear();
    }
    m_position = 0;
    m_isOpen = true;
    return true;
}

void MemoryFile::close() {
    ++m_counts.closes;
    m_isOpen = false;
}

std::int64_t MemoryFile::size() {
    ++m_counts.sizes;
    return m_isOpen ? static_cast<std::int64_t>(m_bytes.size()) : 0;
}

std::int64_t MemoryFile::tell() {
    ++m_counts.tells;
    return m_isOpen ? static_cast<std::int64_t>(m_position) : 0;
}

bool MemoryFile::seek(std::int64_t offset) {
    ++m_counts.seeks;
    if (!m_isOpen || offset < 0) {
        return false;
    }
    m_position = static_cast<std::uint64_t>(offset);
    return true;
}

std::uint64_t MemoryFile::read(void* buffer, std::uint64_t count) {
    ++m_counts.reads;
    m_counts.largestRead = std::max(m_counts.largestRead, count);
    if (!m_isOpen || m_position >= m_bytes.size()) {
        return 0;
    }
    const std::uint64_t got =
        std::min<std::uint64_t>(static_cast<std::uint32_t>(count), m_bytes.size() - m_position);
    if (got > 0) {
        std::memcpy(buffer, m_bytes.data() + m_position, static_cast<std::size_t>(got));
    }
    m_position += got;
    m_counts.bytesRead += got;
    return got;
}

std::uint64_t MemoryFile::write(const void* buffer, std::uint64_t count) {
    ++m_counts.writes;
    if (!m_isOpen) {
        return 0;
    }
    const std::uint64_t put = static_cast<std::uint32_t>(count);
    if (put > 0) {
        if (m_position + put > m_bytes.size()) {
            m_bytes.resize(static_cast<std::size_t>(m_position + put));
        }
        std::memcpy(m_bytes.data() + m_position, buffer, static_cast<std::size_t>(put));
    }
    m_position += put;
    return put;
}

}  // namespace orvantis::test
