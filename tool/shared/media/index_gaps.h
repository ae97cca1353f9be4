// The stretches of a file's data that no index mentions. Main thread only.
#pragma once

#include <cstddef>
#include <cstdint>
#include <utility>
#include <vector>

#include "fileio/file.h"

namespace simhost::tool {

/// Bytes between indexed chunks that no index mentions, beyond what index chunks, lists and padding explain.
struct Gap {
    std::uint64_t position = 0;
    std::uint64_t bytes = 0;
};

inline constexpr std::uint64_t kLeastGap = 64 * 1024;

/// Those of kLeastGap or more, in the order of the file. `chunks` are begin and end of the indexed chunks,
/// headers included, in any order. Of the file it reads the headers of the chunks between them, and no more
/// of those than real files have.
std::vector<Gap> findGaps(fileio::File& file, std::vector<std::pair<std::uint64_t, std::uint64_t>> chunks);

}  // namespace simhost::tool
