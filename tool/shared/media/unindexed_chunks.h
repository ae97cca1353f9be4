// Chunks that are in a file and in no index, as far as a few reads tell: what a rescue would bring back. Main
// thread only.
#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <utility>
#include <vector>

#include "fileio/file.h"

namespace simhost::tool {

/// How many chunks of streams 0 to `streams` - 1 lie between the indexed ones and behind the last of them.
/// `chunks` are begin and end of the indexed ones, headers and padding included, in any order; when there are
/// none, the search begins at `dataStart`, the first chunk of the list 'movi'. Goes from header to header,
/// reads at most kMostUnindexedReads of them, and stops at damage, so it is a lower bound.
std::uint64_t countUnindexedChunks(fileio::File& file,
                                   std::vector<std::pair<std::uint64_t, std::uint64_t>> chunks,
                                   std::optional<std::uint64_t> dataStart, std::size_t streams);

inline constexpr std::size_t kMostUnindexedReads = 20'000;

}  // namespace simhost::tool
