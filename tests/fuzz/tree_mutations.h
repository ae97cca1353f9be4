// The ways in which an AVI file's tree of chunks is changed: one row each, by name.
#pragma once

#include <span>

#include "tests/fuzz/chunk_tree.h"
#include "tests/fuzz/dice.h"

namespace fuzz {

struct TreeMutation {
    const char* name;
    /// Changes the tree. False when it has nothing to change in this way; the tree is then as it was.
    bool (*apply)(ChunkTree&, Dice&);
    /// It moves chunks: the indexes may be repaired behind it. What is no such change is a lie that a repair
    /// would take back, and comes behind the repair.
    bool movesChunks;
    /// What is written afterwards is read again as the same tree: sizes stay true.
    bool keepsTree;
};

std::span<const TreeMutation> treeMutations();

/// Puts a copy of some chunk of `other` into the tree, in the place of one of the same code if there is one.
bool takeChunkFrom(ChunkTree& tree, const ChunkTree& other, Dice& dice);

}  // namespace fuzz
