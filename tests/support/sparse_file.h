// A read-only fileio::File of any size, up to the largest offset, that holds bytes in a few places and zeros
// elsewhere: files beyond 4 GiB without the disk. One thread at a time.
#pragma once

#include <cstddef>
#include <cstdint>
#include <map>
#include <span>
#include <vector>

#include "fileio/file.h"
#include "tests/support/memory_file.h"

namespace orvantis::test {

class SparseFile final : public fileio::File {
 public:
    explicit SparseFile(std::int64_t size) : m_size(size) {}

    /// Puts `bytes` at `offset`; the file grows as needed. Places must not overlap.
    void put(std::int64_t offset, std::span<const std::byte> bytes);

    bool open(const char* utf8Path, int mode) override;
    void close() override;
    std::int64_t size() override;
    std::int64_t tell() override;
    bool seek(std::int64_t offset) override;
    std::uint64_t read(void* buffer, std::uint64_t count) override;
    std::uint64_t write(const void* buffer, std::uint64_t count) override;  ///< refused: 0

    const FileCounts& counts() const noexcept { return m_counts; }
    void resetCounts() noexcept { m_counts = {}; }

 private:
    std::map<std::int64_t, std::vector<std::byte>> m_places;
    std::int64_t m_size;
    std::int64_t m_position = 0;
    FileCounts m_counts;
};

}  // namespace orvantis::test
