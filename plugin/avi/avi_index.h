// The two index forms of AVI files and the chunk lists made of them. Used by AviReader only, while a file is
// opened.
#pragma once

#include <cstdint>
#include <memory>
#include <span>
#include <string>
#include <vector>

#include "avi/avi_stream.h"
#include "avi/avi_structs.h"
#include "avi/file_window.h"
#include "avi/riff_chunk.h"

namespace orvantis {

/// Reads the OpenDML indexes of one file. Super indexes may name each other, and many may name one chunk, so
/// what is read for one file is bounded by the file's size; beyond the bounds a read fails like any other.
class OpenDmlIndexReader {
 public:
    /// Super indexes inside super indexes; real files have one level.
    static constexpr std::size_t kMaxSuperIndexDepth = 8;

    /// Problems become lines of `errors`. Both references are kept.
    OpenDmlIndexReader(FileWindow& input, std::string& errors);

    /// Reads the index data (behind the chunk header) at `position` into the stream's superIndex and
    /// standardIndexes, together with the indexes that a super index names. True when everything was
    /// understood and read. Never throws.
    bool readOpenDmlIndex(std::uint64_t position, std::uint32_t size, AviStream& stream) noexcept;

 private:
    bool readBlock(std::uint64_t position, std::uint32_t size, RawVector<AviStdIndexEntry>& block);
    bool readNamedIndexes(std::size_t first, std::uint32_t count, std::uint64_t superPosition,
                          AviStream& stream);
    void record(const AviStream& stream, std::uint64_t position, std::uint32_t size,
                const char* message) noexcept;

    FileWindow& m_input;
    std::string& m_errors;
    std::uint64_t m_chunksLeft;
    std::uint64_t m_bytesLeft;
    std::vector<std::uint64_t> m_chain;  ///< positions of the super indexes being read, outermost first
};

/// Fills legacyEntries and openDmlEntries of every stream. `legacyIndex` is idx1, whose offsets count from
/// `movi`; without a movi list (null) there are no legacy lists. A list that does not fit into memory stays
/// empty. Never throws.
void buildChunkLists(std::span<const AviOldIndexEntry> legacyIndex, const RiffChunk* movi,
                     std::span<const std::unique_ptr<AviStream>> streams) noexcept;

}  // namespace orvantis
