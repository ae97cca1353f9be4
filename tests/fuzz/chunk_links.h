// Which index entry of a file means which chunk, so that the indexes can be made true again when chunks have
// been moved. Knows idx1, standard indexes and super indexes.
#pragma once

#include <cstddef>
#include <cstdint>
#include <vector>

#include "tests/fuzz/chunk_tree.h"

namespace fuzz {

/// One entry of an index that points at a chunk's header or data.
struct ChunkLink {
    enum class Kind { kOldIndex, kStandardIndex, kSuperIndex };
    Kind kind;
    std::uint32_t index;   ///< number of the chunk with the index
    std::size_t entry;     ///< of that index, from 0
    std::uint32_t target;  ///< number of the chunk that it points at
    bool absolute;         ///< of oldIndex: counts from the file's start
};

/// The entries that point at a chunk. Needs the offsets that the tree was read or laid out with.
std::vector<ChunkLink> linksOf(const ChunkTree& tree);

/// Lays the tree out and writes the true place and size of each target into its entries. Entries whose index
/// or target is gone stay as they are.
void repairLinks(ChunkTree& tree, const std::vector<ChunkLink>& links);

/// Writes numbers that count chunks: frames of the main header, its extension and the stream headers.
void repairCounts(ChunkTree& tree);

/// A new idx1 with an entry for each chunk of the first movi, rec lists included.
Bytes makeOldIndex(ChunkTree& tree);

/// The first list of this type, or null.
ChunkNode* findList(ChunkTree& tree, std::uint32_t type);

/// Offsets of fields.
inline constexpr std::size_t kOldEntryBytes = 16;
inline constexpr std::size_t kIndexHeaderBytes = 24;
inline constexpr std::size_t kIndexBaseAt = 12;

/// What a chunk's data is when taken for an OpenDML index: its entries' kind and size.
bool isStandardIndex(const Bytes& data);
bool isSuperIndex(const Bytes& data);
/// Whether the chunk's name says that it is an index: indx, ix##, ##ix.
bool isOpenDmlIndex(const ChunkNode& node);

}  // namespace fuzz
