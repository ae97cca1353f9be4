// One stream of an AVI file: its header and format as read, and the list of its data chunks. Built by
// AviReader while the file is opened, only read afterwards.
#pragma once

#include <cstddef>
#include <cstdint>
#include <cstring>
#include <span>
#include <utility>
#include <vector>

#include "avi/avi_structs.h"
#include "avi/index_entry.h"
#include "avi/raw_vector.h"

namespace orvantis {

/// One OpenDML standard index as read, in one piece: its 24-byte header, then its 8-byte entries.
class StandardIndex {
 public:
    /// How many entries' room the header takes.
    static constexpr std::size_t kHeaderEntries = sizeof(AviStdIndexHeader) / sizeof(AviStdIndexEntry);

    /// `block` holds the header in its first kHeaderEntries elements.
    explicit StandardIndex(RawVector<AviStdIndexEntry>&& block) noexcept : m_block(std::move(block)) {}

    AviStdIndexHeader header() const noexcept {
        AviStdIndexHeader result;
        std::memcpy(&result, m_block.data(), sizeof(result));
        return result;
    }
    std::span<const AviStdIndexEntry> entries() const noexcept {
        return std::span<const AviStdIndexEntry>(m_block).subspan(kHeaderEntries);
    }

 private:
    RawVector<AviStdIndexEntry> m_block;
};

/// A run of chunks without data: entries first to last, both included.
struct EmptyRun {
    std::uint32_t first;
    std::uint32_t last;
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
    bool hasOpenDmlIndex = false;            ///< the stream's indx was read completely
    std::vector<IndexEntry> legacyEntries;   ///< from idx1
    std::vector<IndexEntry> openDmlEntries;  ///< from the standard indexes
    std::uint32_t chunkId;  ///< two digits and "??": formed before the stream header is known

    /// The list in force: OpenDML when that index was read completely, else idx1.
    const std::vector<IndexEntry>& entries() const noexcept {
        return hasOpenDmlIndex ? openDmlEntries : legacyEntries;
    }
    /// Sum of the sizes of entries().
    std::uint64_t totalBytes() const noexcept;
    /// The entry whose bytes [start, start + size) hold `bytePos`, or null. Logarithmic; never an empty
    /// entry.
    const IndexEntry* findByPosition(std::uint64_t bytePos) const noexcept;

    /// The first 40 bytes of the format, zero-filled where it is shorter.
    BitmapInfoHeader formatHeader() const noexcept;
    /// The format's bytes behind the fixed header (40 for video, 18 for audio, else 0); empty when nothing is
    /// left.
    std::span<const std::uint8_t> extraData() const noexcept;

    /// Prepares nearestWithData() once the lists are built. Called by AviReader. Throws std::bad_alloc.
    void indexEmptyRuns();
    /// For an empty entry of entries(): the number of the chunk that repeats in its place, the nearest
    /// earlier one with data, else the first one with data among entries 1 to frameCount - 1; -1 if there is
    /// none. Logarithmic.
    std::int64_t nearestWithData(std::uint64_t entry, std::int64_t frameCount) const noexcept;

 private:
    std::vector<EmptyRun> m_emptyRuns;  ///< ascending, apart from one another
};

}  // namespace orvantis
