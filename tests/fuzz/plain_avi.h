// Whether a file is built as the format's documents say, so that two readers have to agree on it. What else
// there is, each reader treats in its own way.
#pragma once

#include "tests/fuzz/chunk_tree.h"

namespace fuzz {

/// One form with one hdrl, one movi behind it and at most one idx1 behind that; every stream list has one
/// strh and one strf of the sizes that their kinds have, and nothing in it that belongs elsewhere; its index
/// names it; no size lies; nothing that belongs to one place lies in another.
bool isPlain(const ChunkTree& tree);

}  // namespace fuzz
