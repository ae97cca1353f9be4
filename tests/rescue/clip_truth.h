// What a file holds by its own index, and where its structure begins and ends: what a rescue of its beginning
// is held against.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "tests/rescue/memory_storage.h"
#include "tool/rescue/clip_scan.h"

namespace simhost::tool {

struct ChunkFact {
    unsigned stream = 0;
    std::uint64_t offset = 0;
    std::uint32_t size = 0;

    bool operator==(const ChunkFact&) const = default;
};

/// The chunks that the plug-in's reader lists, in the order of the file. Empty when it cannot read the file.
std::vector<ChunkFact> indexedChunks(Storage& file);
/// Those that a file of `size` bytes holds whole.
std::vector<ChunkFact> wholeBefore(const std::vector<ChunkFact>& chunks, std::uint64_t size);
std::vector<ChunkFact> foundChunks(const ClipScan& scan);

/// Sizes at which a file can be cut: in, at and around every header and every end of a chunk or list,
/// ascending.
std::vector<std::uint64_t> structuralPoints(Storage& file);

/// The data of a file's chunks, stream by stream; those that lie behind the end are left out.
struct StreamData {
    std::vector<std::uint32_t> sizes;
    std::uint64_t hash = 0;

    bool operator==(const StreamData&) const = default;
};
std::vector<StreamData> dataOf(Storage& file, const std::vector<ChunkFact>& chunks, std::size_t streams);

}  // namespace simhost::tool
