// A file in memory for tests: what fileio::File promises, over a vector of bytes. Never opened or closed by
// name.
#pragma once

#include <algorithm>
#include <cstdint>
#include <cstring>
#include <utility>
#include <vector>

#include "fileio/file.h"

namespace orvantis::test {

class MemoryFile : public fileio::File {
 public:
    explicit MemoryFile(std::vector<std::uint8_t> bytes) : m_bytes(std::move(bytes)) {}

    bool open(const char* /*utf8Path*/, int /*mode*/) override { return false; }
    void close() override {}
    std::int64_t size() override { return static_cast<std::int64_t>(m_bytes.size()); }
    std::int64_t tell() override { return m_position; }
    bool seek(std::int64_t offset) override {
        if (offset < 0) return false;
        m_position = offset;
        return true;
    }
    std::uint64_t read(void* buffer, std::uint64_t count) override {
        const auto at = static_cast<std::uint64_t>(m_position);
        if (at >= m_bytes.size()) return 0;
        const std::uint64_t given =
            std::min<std::uint64_t>(static_cast<std::uint32_t>(count), m_bytes.size() - at);
        if (given != 0) std::memcpy(buffer, m_bytes.data() + at, given);
        m_position += static_cast<std::int64_t>(given);
        return given;
    }
    std::uint64_t write(const void* /*buffer*/, std::uint64_t /*count*/) override { return 0; }

    std::vector<std::uint8_t>& bytes() noexcept { return m_bytes; }

 private:
    std::vector<std::uint8_t> m_bytes;
    std::int64_t m_position = 0;
};

}  // namespace orvantis::test
