#include "avi/riff_walk.h"

#include <algorithm>
#include <exception>
#include <utility>

#include "avi/walk_arithmetic.h"

namespace orvantis {

namespace {

constexpr std::uint64_t kHeaderBytes = 8;
// Children of a form, which is a list at the top level.
constexpr int kFormDepth = 1;

bool contains(std::span<const std::uint32_t> codes, std::uint32_t code) noexcept {
    return std::find(codes.begin(), codes.end(), code) != codes.end();
}

class Walker {
 public:
    Walker(FileWindow& input, const WalkRules& rules, std::uint64_t chunksLeft)
        : m_input(input), m_rules(rules), m_chunksLeft(chunksLeft) {}

    /// The walk pauses behind the first list of this type in a form, and tells where in `rest`.
    void pauseAt(std::uint32_t type, std::optional<RestOfWalk>& rest) noexcept {
        m_pauseType = type;
        m_rest = &rest;
    }

    // `depth` counts the lists that this level lies in.
    bool walkLevel(std::vector<RiffChunk>& list, ByteRange range, int depth) noexcept {
        auto [position, bytes] = range;
        bool sound = true;
        std::uint64_t consumed = 0;
        while (consumed < bytes) {
            RiffChunk* chunk = readHeader(list, position);
            if (chunk == nullptr) {
                return false;
            }
            if (chunk->isList() &&
                (m_rules.descendTypes.empty() || contains(m_rules.descendTypes, chunk->type))) {
                if (depth >= kMaxListDepth) {
                    sound = false;
                } else if (!walkLevel(chunk->children, {chunk->dataPosition(), chunk->dataSize()},
                                      depth + 1)) {
                    sound = false;
                    if (m_exhausted) {
                        return false;
                    }
                }
            }
            if (contains(m_rules.stopKeys, chunk->isList() ? chunk->type : chunk->id)) {
                return sound;
            }

            const std::uint32_t padded = paddedLength(chunk->size);
            if (!walkMovesOn(padded)) {
                return false;
            }
            position += padded;
            consumed += padded;
            if (m_rest != nullptr && depth == kFormDepth && chunk->isListOf(m_pauseType)) {
                m_rest->emplace(RestOfWalk{{position, restOfLevel(bytes, consumed)}, m_chunksLeft, sound});
                return sound;
            }
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
        if (!m_input.readSmall(position, header, sizeof(header))) {
            return nullptr;
        }
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
    WalkRules m_rules;
    std::uint64_t m_chunksLeft;
    std::uint32_t m_pauseType = 0;
    std::optional<RestOfWalk>* m_rest = nullptr;  // null: no pause
    bool m_exhausted = false;                     // ends every level
};

}  // namespace

bool walk(FileWindow& input, ByteRange range, const WalkRules& rules, std::vector<RiffChunk>& list) noexcept {
    return Walker(input, rules, mostChunks(input.fileSize(), kMaxChunks)).walkLevel(list, range, 0);
}

StartOfWalk walkUpTo(FileWindow& input, ByteRange range, const WalkRules& rules, std::uint32_t pauseType,
                     std::vector<RiffChunk>& list) noexcept {
    StartOfWalk start{};
    Walker walker(input, rules, mostChunks(input.fileSize(), kMaxChunks));
    walker.pauseAt(pauseType, start.rest);
    start.sound = walker.walkLevel(list, range, 0);
    return start;
}

bool walkRest(FileWindow& input, const RestOfWalk& rest, const WalkRules& rules,
              std::vector<RiffChunk>& children) noexcept {
    Walker walker(input, rules, rest.chunksLeft);
    return walker.walkLevel(children, rest.range, kFormDepth) && rest.sound;
}

}  // namespace orvantis
