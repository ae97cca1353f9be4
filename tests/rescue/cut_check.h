// One cut of a file, rescued in every way and held against what the file's own index says of the uncut one.
#pragma once

#include <string>
#include <vector>

#include "tests/rescue/clip_truth.h"

namespace simhost::tool {

/// Empty when a search of the first `size` bytes finds exactly the whole chunks; else what is wrong.
std::string wrongInScan(Storage& whole, const std::vector<ChunkFact>& truth, std::uint64_t size);
/// The same of the new file, and of the file mended where it lies and brought back. `whole` is in memory.
std::string wrongInRescue(TestBytes& whole, const std::vector<ChunkFact>& truth, std::uint64_t size);

}  // namespace simhost::tool
