#include "avi/riff_walk.h"

#include <algorithm>
#include <exception>
#include <utility>

namespace orvantis {

namespace {

constexpr std::uint64_t kHeaderBytes = 8;
// Chunks beyond one for each header that fits into the file: room for small files with odd, but harmless,
// lists.
constexpr std::uint64_t kSpareChunks = 1024;

bool contains(std::span<const std::uint32_t> codes, std::uint32_t code) noexcept {
    return std::find(codes.begin(), codes.end(), code) != codes.end();
}

class Walker {
 public:
    Walker(FileWindow& input, std::span<const std::uint32_t> descendTypes,
           std::span<const std::uint32_t> stopKeys)
        : m_input(input),
          m_descendTypes(descendTypes),
          m_stopKeys(stopKeys),
          m_chunksLeft(std::min(input.fileSize() / kHeaderBytes + kSpareChunks, kMaxChunks)) {}

    // `depth` counts the lists that this level lies in.
    bool walkLevel(std::vector<RiffChunk>& list, std::uint64_t position, std::uint64_t bytes,
                   int depth) noexcept {
        bool sound = true;
        std::uint64_t consumed = 0;
        while (consumed < bytes) {
            RiffChunk* chunk = readHeader(list, position);
            if (chunk == nullptr) return false;
            if (chunk->isList() && (m_descendTypes.empty() || contains(m_descendTypes, chunk->type))) {
                if (depth >= kMaxListDepth) {
                    sound = false;
                } else if (!walkLevel(chunk->children, chunk->dataPosition(), chunk->dataSize(), depth + 1)) {
                    sound = false;
                    if (m_exhausted) return false;
                }
            }
            if (contains(m_stopKeys, chunk->isList() ? chunk->type : chunk->id)) return sound;

            // The format's arithmetic is 32 bits wide, so the largest sizes wrap. Where they wrap to nothing
            // the walk would stand still.
            const std::uint32_t paddedLength = (chunk->size + 8U + 1U) & ~1U;
            if (paddedLength == 0) return false;
            position += paddedLength;
            consumed += paddedLength;
        }
        return sound;
    }

 private:
    // Reads a chunk's header and appends the chunk; null when there is no more to read or no room for it.
    RiffChunk* readHeader(std::vector<RiffChunk>& list, std::uint64_t position) noexcept {
        if (m_chunksLeft == 0) {
            m_exhausted = true;
            return nullptr;
        }
        std::uint32_t header[2];
        if (!m_input.readSmall(position, header, sizeof(header))) return nullptr;
        RiffChunk chunk;
        chunk.offset = position;
        chunk.id = header[0];
        chunk.size = header[1];
        if (chunk.isList() && !m_input.readSmall(position + kHeaderBytes, &chunk.type, sizeof(chunk.type))) {
            return nullptr;
        }
        --m_chunksLeft;
        try {
            list.push_back(std::move(chunk));
        } catch (const std::exception&) {
            m_exhausted = true;
            return nullptr;
        }
        return &list.back();
    }

    FileWindow& m_input;
    std::span<const std::uint32_t> m_descendTypes;
    std::span<const std::uint32_t> m_stopKeys;
    std::uint64_t m_chunksLeft;
    bool m_exhausted = false;  // ends every level
};

}  // namespace

bool walk(FileWindow& input, std::uint64_t position, std::uint64_t bytes,
          std::span<const std::uint32_t> descendTypes, std::span<const std::uint32_t> stopKeys,
          std::vector<RiffChunk>& list) noexcept {
    return Walker(input, descendTypes, stopKeys).walkLevel(list, position, bytes, 0);
}

}  // namespace orvantis
