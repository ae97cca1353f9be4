// The two index forms of AVI files and the chunk lists made of them. Used by AviReader only, while a file is
// opened.
#pragma once

#include <cstdint>
#include <memory>
#include <span>
#include <vector>

#include "avi/avi_structs.h"
#include "avi/chunk_list_builder.h"
#include "avi/index_input.h"
#include "avi/problems.h"
#include "avi/riff_chunk.h"

namespace orvantis {

class AviStream;

/// Reads the OpenDML indexes of one file. Super indexes may name each other, and many may name one chunk, so
/// what is read for one file is bounded by the file's size; beyond the bounds a read fails like any other.
class OpenDmlIndexReader {
 public:
    /// Super indexes inside super indexes; real files have one level.
    static constexpr std::size_t kMaxSuperIndexDepth = 8;

    /// Problems go to `errors`. Both references are kept.
    OpenDmlIndexReader(IndexInput& input, Problems& errors);

    /// Reads the index data (behind the chunk header) at `position` into the stream's superIndex,
    /// standardIndexes and openDmlEntries, together with the indexes that a super index names. True when
    /// everything was understood and read. Never throws; what does not fit into memory was not read.
    [[nodiscard]] bool readOpenDmlIndex(std::uint64_t position, std::uint32_t size,
                                        AviStream& stream) noexcept;

 private:
    [[nodiscard]] bool readIndex(std::uint64_t position, std::uint32_t size, AviStream& stream) noexcept;
    [[nodiscard]] bool mayRead(std::uint64_t position, std::uint32_t size) const;
    [[nodiscard]] bool readEntries(std::uint64_t position, std::uint32_t size, AviStdIndexHeader& header,
                                   std::uint32_t& count, AviStream& stream);
    [[nodiscard]] bool readNamedIndexes(std::size_t first, std::uint32_t count, std::uint64_t superPosition,
                                        AviStream& stream);
    void record(const AviStream& stream, std::uint64_t position, std::uint32_t size,
                const char* message) noexcept;

    IndexInput& m_input;
    Problems& m_errors;
    std::uint64_t m_chunksLeft;
    std::uint64_t m_bytesLeft;
    std::vector<std::uint64_t> m_chain;  ///< positions of the super indexes being read, outermost first
    ChunkListBuilder m_list;             ///< of the stream being read
};

/// Completes the chunk lists: fills legacyEntries of every stream from `idx1`, whose offsets count from
/// `movi`, in one pass. (openDmlEntries are filled while their index is read.) Without either chunk (null)
/// and from an idx1 that cannot be read whole there are no legacy lists; one that does not fit into memory
/// stays empty. Never throws.
void buildChunkLists(IndexInput& input, const RiffChunk* idx1, const RiffChunk* movi,
                     std::span<const std::unique_ptr<AviStream>> streams) noexcept;

}  // namespace orvantis
