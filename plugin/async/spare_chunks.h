// Chunk buffers of requests that are done, kept for the next ones so that playback does not allocate them
// anew. Bounded by their bytes: what a clip's frames need differs by a factor of a thousand.
#pragma once

#include <cstddef>
#include <vector>

#include "avi/frame_chunk.h"

namespace orvantis {

/// Used by one thread at a time.
class SpareChunks {
 public:
    /// All spare buffers of an importer together.
    static constexpr std::size_t kMaxBytes = std::size_t{64} << 20;

    /// A buffer that was put here, or an empty one.
    FrameChunk take() noexcept;
    /// Keeps the buffer, or frees it when there is no room for it.
    void put(FrameChunk chunk) noexcept;
    /// Frees all of them.
    void clear() noexcept;
    /// What the buffers hold, in bytes.
    std::size_t bytes() const noexcept { return m_bytes; }

 private:
    std::vector<FrameChunk> m_chunks;
    std::size_t m_bytes = 0;
};

}  // namespace orvantis
