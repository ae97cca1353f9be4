// The chunk lists made the straightforward way: every index is read in one piece and kept whole, counted
// first, and copied into a list of whole entries. What AviReader makes of an index in pieces is compared with
// it.
#pragma once

#include <cstdint>
#include <span>
#include <string>
#include <vector>

#include "avi/avi_structs.h"
#include "avi/file_window.h"
#include "avi/riff_chunk.h"
#include "tests/unit/avi/plain_chunk_list.h"

namespace orvantis::test {

/// A standard index as read.
struct WholeStandardIndex {
    AviStdIndexHeader header;
    std::vector<AviStdIndexEntry> entries;
};

/// What the indexes of one stream come to.
struct WholeStream {
    /// For an empty entry: the number of the chunk that repeats in its place, or -1.
    std::int64_t nearestWithData(std::uint64_t entry, std::int64_t frameCount) const;
    const PlainChunkList& entries() const { return hasOpenDmlIndex ? openDmlEntries : legacyEntries; }
    /// Prepares nearestWithData().
    void indexEmptyRuns();

    std::uint64_t index = 0;  ///< ordinal
    std::vector<AviSuperIndexEntry> superIndex;
    std::vector<WholeStandardIndex> standardIndexes;
    bool hasOpenDmlIndex = false;
    PlainChunkList legacyEntries;
    PlainChunkList openDmlEntries;

 private:
    struct EmptyRun {
        std::uint32_t first;
        std::uint32_t last;
    };
    std::vector<EmptyRun> m_emptyRuns;
};

class WholeIndexReader {
 public:
    static constexpr std::size_t kMaxSuperIndexDepth = 8;

    WholeIndexReader(FileWindow& input, std::string& errors);
    bool readOpenDmlIndex(std::uint64_t position, std::uint32_t size, WholeStream& stream);

 private:
    bool readBlock(std::uint64_t position, std::uint32_t size, std::vector<AviStdIndexEntry>& block);
    bool readNamedIndexes(std::size_t first, std::uint32_t count, std::uint64_t superPosition,
                          WholeStream& stream);
    void record(const WholeStream& stream, std::uint64_t position, std::uint32_t size,
                const std::string& message);

    FileWindow& m_input;
    std::string& m_errors;
    std::uint64_t m_chunksLeft;
    std::uint64_t m_bytesLeft;
    std::vector<std::uint64_t> m_chain;
};

/// Both lists of every stream. Null: the file has no such chunk.
void buildWholeLists(FileWindow& input, const RiffChunk* idx1, const RiffChunk* movi,
                     std::span<WholeStream> streams);

}  // namespace orvantis::test
