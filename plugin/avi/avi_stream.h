// One stream of an AVI file: its header and format as read, and the list of its data chunks. Built by
// AviReader while the file is opened, only read afterwards.
#pragma once

#include <cstddef>
#include <cstdint>
#include <span>
#include <vector>

#include "avi/avi_structs.h"
#include "avi/chunk_list.h"

namespace orvantis {

/// One OpenDML standard index. Its entries went into the chunk list.
struct StandardIndex {
    AviStdIndexHeader header;  ///< as read
    std::uint32_t entries;     ///< how many of those that it claims are there
};

class AviStream {
 public:
    /// `ordinal` counts every strl list of the file, those that failed to parse included.
    explicit AviStream(std::uint64_t ordinal);

    std::uint64_t index;               ///< the ordinal
    AviStreamHeader header{};          ///< strh, 56 bytes as read
    std::vector<std::uint8_t> format;  ///< the whole strf
    std::vector<AviSuperIndexEntry> superIndex;
    std::vector<StandardIndex> standardIndexes;
    bool hasOpenDmlIndex = false;  ///< the stream's indx was read completely
    ChunkList legacyEntries;       ///< from idx1
    ChunkList openDmlEntries;      ///< from the standard indexes
    std::uint32_t chunkId;         ///< two digits and "??": formed before the stream header is known

    /// The list in force: OpenDML when that index was read completely, else idx1.
    const ChunkList& entries() const noexcept { return hasOpenDmlIndex ? openDmlEntries : legacyEntries; }
    /// Sum of the sizes of entries().
    std::uint64_t totalBytes() const noexcept { return entries().totalBytes(); }
    /// The entry whose bytes [start, start + size) hold `bytePos`, or entries().end(). Logarithmic; never an
    /// empty entry.
    ChunkList::Iterator findByPosition(std::uint64_t bytePos) const noexcept {
        return entries().findByPosition(bytePos);
    }

    /// The first 40 bytes of the format, zero-filled where it is shorter. Playing hands the whole format to
    /// the codec library; this is for reports of a file.
    BitmapInfoHeader formatHeader() const noexcept;
    /// The format's bytes behind the fixed header (40 for video, 18 for audio, else 0); empty when nothing is
    /// left. No selector asks for them; the fuzzers hold them to their bounds beside formatHeader().
    std::span<const std::uint8_t> extraData() const noexcept;

    /// For an empty entry of entries(): the number of the chunk that repeats in its place, the nearest
    /// earlier one with data, else the first one with data among entries 1 to frameCount - 1; -1 if there is
    /// none. Logarithmic.
    std::int64_t nearestWithData(std::uint64_t entry, std::int64_t frameCount) const noexcept;
};

}  // namespace orvantis
