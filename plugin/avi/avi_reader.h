// Reads the structure of an AVI file and builds each stream's list of data chunks. Never throws for a
// malformed file: problems are collected as lines of text and a false result says that the file cannot be
// used. One reader per open file; not thread-safe: parsing happens while the file is described, before any
// frame or audio read.
#pragma once

#include <cstddef>
#include <cstdint>
#include <memory>
#include <optional>
#include <span>
#include <string>
#include <vector>

#include "avi/avi_structs.h"
#include "avi/file_window.h"
#include "avi/index_input.h"
#include "avi/problems.h"
#include "avi/riff_chunk.h"
#include "avi/riff_walk.h"
#include "fileio/file.h"

namespace orvantis {

class AviStream;

class AviReader {
 public:
    AviReader();
    ~AviReader();

    /// Parses `file` from its current position (the start) and starts from an empty state each time. With
    /// `headerOnly` no index is read, and nothing behind the movi list unless the headers lie there:
    /// readIndexes() can follow when the chunk lists are wanted after all; without, it is part of this call.
    /// False when the file is no usable AVI; errorText() then says why. `file` is not owned and must stay
    /// open until readIndexes() is done. Its position afterwards is undefined.
    [[nodiscard]] bool parse(fileio::File& file, bool headerOnly);
    /// The second half of a full parse: OpenDML indexes, idx1, and the chunk lists of every stream. Problems
    /// go to errorText(), in the order of a full parse; a stream without a usable index has an empty list.
    /// Runs once per successful parse; a further call does nothing.
    void readIndexes();
    /// Gives back what readIndexes() would have needed, and makes it do nothing: for a file that is refused
    /// for what its headers say.
    void dropIndexes() noexcept;

    const std::string& errorText() const noexcept { return errors.text(); }
    /// Positions in `streams`, in order, of the streams with this fccType (kStreamTypeVideo,
    /// kStreamTypeAudio).
    std::vector<std::size_t> streamsOfType(std::uint32_t type) const;
    /// Reads the first `count` data bytes of `chunk`. False when the chunk has fewer, or they cannot be read;
    /// `dest` may then hold a part of them. Before the first parse there is nothing to read; behind one, as
    /// long as its file is there.
    [[nodiscard]] bool readChunkData(const RiffChunk& chunk, void* dest, std::size_t count) noexcept;

    fileio::File* file = nullptr;  ///< not owned
    std::vector<RiffChunk>
        chunks;       ///< top level of the chunk tree; given up before the indexes are read if it is huge
    Problems errors;  ///< one line per problem; in the order of a full parse between calls
    AviMainHeader mainHeader{};
    AviExtHeader extHeader{};
    std::vector<std::unique_ptr<AviStream>> streams;

 private:
    // A stream's indx chunk, to be read by readIndexes().
    struct PendingIndex {
        AviStream* stream;
        std::uint64_t position;
        std::uint32_t size;
    };

    void reset() noexcept;
    bool parseHeaders(bool headerOnly);
    void finishWalk() noexcept;
    void addStream(const RiffChunk& strl, std::uint64_t ordinal);
    bool parseStreamList(const RiffChunk& strl, AviStream& stream);
    void readExtHeader(const RiffChunk& odml);
    void readOpenDmlIndexes(IndexInput& input);

    FileWindow m_input;
    std::optional<RestOfWalk> m_restOfWalk;  // until what lies behind movi is wanted
    std::vector<PendingIndex> m_pendingIndexes;
    std::uint64_t m_formatBytesLeft = 0;  // all strf together
    bool m_indexesPending = false;
};

}  // namespace orvantis
