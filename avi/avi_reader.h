// Reads the structure of an AVI file and builds each stream's list of data chunks. Never throws for a malformed file:
// problems are collected as lines of text and a false result says that the file cannot be used. One reader per open
// file; not thread-safe: parsing happens while the file is described, before any frame or audio read.
#pragma once

#include <cstdint>
#include <memory>
#include <span>
#include <string>
#include <vector>

#include "avi/avi_stream.h"
#include "avi/avi_structs.h"
#include "avi/riff_chunk.h"
#include "fileio/file.h"

namespace orvantis {

class AviReader {
   public:
    AviReader() = default;

    /// Parses `file` from its current position (the start) and starts from an empty state each time. With `headerOnly`
    /// no index is read: readIndexes() can follow when the chunk lists are wanted after all. False when the file is no
    /// usable AVI; errorText() then says why. `file` is not owned and must stay open until readIndexes() is done.
    bool parse(fileio::File& file, bool headerOnly);
    /// The second half of a full parse: OpenDML indexes, idx1, and the chunk lists of every stream. Problems go to
    /// errorText(); a stream without a usable index has an empty list. Runs once per parse; a further call does nothing.
    void readIndexes();

    const std::string& errorText() const noexcept { return errors; }
    /// Positions in `streams`, in order, of the streams with this fccType (kStreamTypeVideo, kStreamTypeAudio).
    std::vector<std::size_t> streamsOfType(std::uint32_t type) const;

    fileio::File* file = nullptr;      ///< not owned
    std::vector<RiffChunk> chunks;     ///< top level of the chunk tree
    std::string errors;                ///< one line per problem
    AviMainHeader mainHeader{};
    AviExtHeader extHeader{};
    std::vector<std::unique_ptr<AviStream>> streams;
    std::vector<AviOldIndexEntry> legacyIndex;
    // Further private state (limits of one parse, positions of the indexes) is the implementation's.
};

}  // namespace orvantis
