// Looks whether an index leads to the chunks that it names: by their headers, as they stand in the file. Main
// thread only.
#pragma once

#include <cstdint>
#include <optional>

#include "avi/chunk_list.h"
#include "avi/index_entry.h"
#include "fileio/file.h"

namespace simhost::tool {

/// What the offsets of an index turn out to count from.
enum class IndexBase {
    kRight,      ///< what they should; also when there is nothing to tell it by
    kFileStart,  ///< the file's beginning
    kOther,      ///< a place a few bytes off
    kNowhere,    ///< they lead to no chunk, whatever they count from
};

struct IndexProbe {
    IndexBase base = IndexBase::kRight;
    std::int64_t shift = 0;  ///< from where the entries lead to where their chunks are

    /// Where the data of `entry` really is.
    std::uint64_t positionOf(const orvantis::IndexEntry& entry) const noexcept {
        return entry.offset + static_cast<std::uint64_t>(shift);
    }
};

/// Reads the headers of at most kMostLookedAt chunks, spread over `entries`. `moviOffset` is that of the list
/// which idx1 counts from; nothing for indexes of the other kind, which have no choice.
IndexProbe probeIndex(fileio::File& file, const orvantis::ChunkList& entries,
                      std::optional<std::uint64_t> moviOffset);

inline constexpr std::size_t kMostLookedAt = 64;

}  // namespace simhost::tool
