// An AVI file as the tree of chunks that it is, to be changed and written again: what the mutator of the fuzz
// targets works on. Takes any bytes; what is no chunk is kept as it stands, so that nothing is lost on the
// way.
#pragma once

#include <cstddef>
#include <cstdint>
#include <optional>
#include <span>
#include <vector>

namespace fuzz {

using Bytes = std::vector<std::uint8_t>;

struct ChunkNode {
    std::uint32_t id = 0;
    std::uint32_t type = 0;               ///< of a list
    bool isList = false;                  ///< a "RIFF" or "LIST" with room for its type
    std::vector<ChunkNode> children;      ///< of a list
    Bytes data;                           ///< of a chunk; behind the last child, what is no chunk
    std::optional<std::uint32_t> claim;   ///< the size to write where it is not the true one
    std::optional<std::uint8_t> padding;  ///< behind an odd size; none at the end of some files
    std::uint64_t offset = 0;             ///< of its header, when last read or written
    std::uint32_t number = 0;             ///< tells equal chunks apart; unique in a tree

    /// The same chunks with the same contents; padding and numbers are not compared.
    friend bool operator==(const ChunkNode& a, const ChunkNode& b) {
        return a.id == b.id && a.type == b.type && a.isList == b.isList && a.claim == b.claim &&
               a.data == b.data && a.children == b.children;
    }
};

struct ChunkTree {
    ChunkNode root;  ///< the file: children and the bytes behind them; has no header
    std::uint32_t nextNumber = 1;
};

/// Lists inside lists; what lies deeper is plain data.
inline constexpr int kMostLevels = 12;

/// The tree of `file`. A chunk that claims more than its list has left gets what there is, and keeps the
/// claim.
ChunkTree readTree(std::span<const std::uint8_t> file);
/// The bytes of the tree: those that it was read from, as long as nothing is changed. Sizes are the true
/// ones, claims apart. Sets all offsets.
Bytes writeTree(ChunkTree& tree);
/// Sets all offsets to where writeTree() will put the chunks, and returns the file's size.
std::uint64_t layOut(ChunkTree& tree);
/// Bytes that a node takes, its header and padding included.
std::uint64_t bytesOf(const ChunkNode& node, bool isLast);
/// Gives a copied node, and all below it, numbers of their own.
void renumber(ChunkTree& tree, ChunkNode& node);

/// Calls `visit(node)` for every node below the root, parents first.
template <class Node, class Visit>
void forEachChunk(Node& node, const Visit& visit) {
    for (auto& child : node.children) {
        visit(child);
        forEachChunk(child, visit);
    }
}

/// Little-endian numbers in a chunk's data; reading behind its end gives zeros, writing there does nothing.
std::uint64_t numberAt(const Bytes& data, std::size_t at, std::size_t bytes);
void putNumber(Bytes& data, std::size_t at, std::size_t bytes, std::uint64_t value);

}  // namespace fuzz
