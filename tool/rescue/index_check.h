// What the file's own indexes say, as the plug-in reads them, held against the chunks that a search has
// found.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "tool/rescue/clip_scan.h"

namespace simhost::tool {

struct StreamCheck {
    enum class Index { kNone, kOld, kOpenDml };

    std::uint64_t chunks = 0;  ///< whole ones in the file
    std::uint64_t empty = 0;   ///< of those, without data: frames that repeat the one before
    std::uint64_t bytes = 0;   ///< data of the whole ones
    std::uint64_t length = 0;  ///< of all of them, in the stream's units; palette changes take none
    bool found = false;
    FoundChunk last;             ///< when there is one
    Index index = Index::kNone;  ///< the one in force
    std::uint64_t entries = 0;   ///< of that index
    std::uint64_t leftOut = 0;   ///< whole chunks that it does not name
    std::uint64_t nowhere = 0;   ///< entries that lead to no whole chunk
};

struct IndexCheck {
    std::string refused;  ///< why the plug-in's reader cannot use the file at all; else empty
    std::vector<StreamCheck> streams;

    /// The plug-in would have more, or only what is there, from a file that was rescued.
    bool gains() const noexcept;
};

/// Marks the chunks that an index calls no key frames.
IndexCheck checkIndexes(Storage& file, ClipScan& scan);

}  // namespace simhost::tool
