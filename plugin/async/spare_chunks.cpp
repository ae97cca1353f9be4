#include "async/spare_chunks.h"

#include <new>
#include <utility>

namespace orvantis {

FrameChunk SpareChunks::take() noexcept {
    if (m_chunks.empty()) {
        return {};
    }
    // The one put last: the processor's caches know it best.
    FrameChunk chunk = std::move(m_chunks.back());
    m_chunks.pop_back();
    m_bytes -= chunk.buffer.capacity();
    return chunk;
}

void SpareChunks::put(FrameChunk chunk) noexcept {
    const std::size_t bytes = chunk.buffer.capacity();
    if (bytes == 0 || bytes > kMaxBytes - m_bytes) {
        return;
    }
    try {
        m_chunks.push_back(std::move(chunk));
        m_bytes += bytes;
    } catch (const std::bad_alloc&) {
        // Freed instead of kept: the frame that came with it is delivered all the same.
    }
}

void SpareChunks::clear() noexcept {
    m_chunks.clear();
    m_bytes = 0;
}

}  // namespace orvantis
