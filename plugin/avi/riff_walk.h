// Collects the chunk tree of a RIFF file. Pure: positions and sizes in, tree out; nothing is logged.
#pragma once

#include <cstdint>
#include <optional>
#include <span>
#include <vector>

#include "avi/file_window.h"
#include "avi/riff_chunk.h"

namespace orvantis {

/// No walk descends below this many lists; real files use three.
inline constexpr int kMaxListDepth = 64;
/// No walk collects more chunks than this, whatever the file's size.
inline constexpr std::uint64_t kMaxChunks = 4'194'304;

/// A run of bytes of the file.
struct ByteRange {
    std::uint64_t position;
    std::uint64_t bytes;
};

/// Which lists a walk goes into and where a level ends.
struct WalkRules {
    std::span<const std::uint32_t>
        descendTypes;  ///< lists of these types are walked too; when empty, any list
    std::span<const std::uint32_t>
        stopKeys;  ///< a level ends behind the first chunk of such a key (a list's type, else the id)
};

/// Walks the chunks that lie in `range` and appends them to `list`.
///
/// False when the structure is damaged: a header that cannot be read, a chunk that would not move the walk
/// forward, too deep nesting, or more chunks than the file has room for (lists may claim to overlap). What
/// was found so far stays in `list`; a damaged inner list does not end the walk of its parent. Never throws;
/// running out of memory is damage.
[[nodiscard]] bool walk(FileWindow& input, ByteRange range, const WalkRules& rules,
                        std::vector<RiffChunk>& list) noexcept;

/// What is left of a walk that was interrupted.
struct RestOfWalk {
    ByteRange range;           ///< of the first form, from its next chunk header on
    std::uint64_t chunksLeft;  ///< how many more chunks may be collected
    bool sound;                ///< the result so far
};

struct StartOfWalk {
    bool sound;                      ///< the result of the part walked
    std::optional<RestOfWalk> rest;  ///< what walkRest() goes on with; empty when the walk has ended
};

/// The same walk as far as the first list of type `pauseType` among the children of the first form, that list
/// included. It may end before, and does so behind the first form at the latest.
[[nodiscard]] StartOfWalk walkUpTo(FileWindow& input, ByteRange range, const WalkRules& rules,
                                   std::uint32_t pauseType, std::vector<RiffChunk>& list) noexcept;

/// Walks the rest and appends it to the children of the first form. The result is that of the whole walk.
[[nodiscard]] bool walkRest(FileWindow& input, const RestOfWalk& rest, const WalkRules& rules,
                            std::vector<RiffChunk>& children) noexcept;

}  // namespace orvantis
