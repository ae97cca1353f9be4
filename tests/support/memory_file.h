// A fileio::File over bytes in memory that counts what is done to it. Behaves as a WinFile opened for reading
// and writing does: seeking past the end succeeds, reading there gives nothing, a negative position is
// refused, counts are taken in 32 bits. One thread at a time.
#pragma once

#include <cstddef>
#include <cstdint>
#include <span>
#include <string_view>
#include <vector>

#include "fileio/file.h"

namespace orvantis::test {

/// What was asked of a file in memory, the refused requests included.
struct FileCounts {
    std::uint64_t opens = 0;
    std::uint64_t closes = 0;
    std::uint64_t reads = 0;
    std::uint64_t seeks = 0;
    std::uint64_t tells = 0;
    std::uint64_t sizes = 0;
    std::uint64_t writes = 0;
    std::uint64_t bytesRead = 0;    ///< really delivered
    std::uint64_t largestRead = 0;  ///< bytes asked for by the largest read
    std::uint64_t operations() const { return reads + seeks + tells + sizes + writes; }
};

class MemoryFile final : public fileio::File {
 public:
    /// Open from the start, at position 0.
    MemoryFile() = default;
    explicit MemoryFile(std::vector<std::byte> bytes) : m_bytes(std::move(bytes)) {}
    explicit MemoryFile(std::span<const std::uint8_t> bytes);
    explicit MemoryFile(std::string_view bytes);

    bool open(const char* utf8Path,
              int mode) override;  ///< any name, back to position 0; kOpenWrite empties it
    void close() override;         ///< the bytes stay for the next open()
    std::int64_t size() override;
    std::int64_t tell() override;
    bool seek(std::int64_t offset) override;
    std::uint64_t read(void* buffer, std::uint64_t count) override;
    std::uint64_t write(const void* buffer, std::uint64_t count) override;

    std::vector<std::byte>& bytes() noexcept { return m_bytes; }
    const FileCounts& counts() const noexcept { return m_counts; }
    void resetCounts() noexcept { m_counts = {}; }
    bool isOpen() const noexcept { return m_isOpen; }

 private:
    std::vector<std::byte> m_bytes;
    std::uint64_t m_position = 0;
    bool m_isOpen = true;
    FileCounts m_counts;
};

}  // namespace orvantis::test
