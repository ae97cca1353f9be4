// In the place of the plug-in's own header: the plug-in with plain lists, for comparison.
#pragma once

#include "tests/unit/avi/plain_chunk_list.h"

namespace orvantis {
using ChunkList = PlainChunkList;
}
