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

/// Walks the chunks that lie in `bytes` bytes from `position` on and appends them to `list`. Lists whose type
/// is in `descendTypes` (any list, when that is empty) are walked too. A level ends behind the first chunk
/// whose key (the type of a list, else the id) is in `stopKeys`.
///
/// False when the structure is damaged: a header that cannot be read, a chunk that would not move the walk
/// forward, too deep nesting, or more chunks than the file has room for (lists may claim to overlap). What
/// was found so far stays in `list`; a damaged inner list does not end the walk of its parent. Never throws;
/// running out of memory is damage.
[[nodiscard]] bool walk(FileWindow& input, std::uint64_t position, std::uint64_t bytes,
                        std::span<const std::uint32_t> descendTypes, std::span<const std::uint32_t> stopKeys,
                        std::vector<RiffChunk>& list) noexcept;

/// What is left of a walk that was interrupted.
struct RestOfWalk {
    std::uint64_t position;    ///< of the next chunk header of the first form
    std::uint64_t bytes;       ///< of that form from there on
    std::uint64_t chunksLeft;  ///< how many more chunks may be collected
    bool sound;                ///< the result so far
};

/// The same walk as far as the first list of type `pauseType` among the children of the first form, that list
/// included. `rest` is then what walkRest() goes on with; it stays empty when the walk ended before, which it
/// also does behind the first form. The result is that of the part walked.
[[nodiscard]] bool walkUpTo(FileWindow& input, std::uint64_t position, std::uint64_t bytes,
                            std::span<const std::uint32_t> descendTypes,
                            std::span<const std::uint32_t> stopKeys, std::uint32_t pauseType,
                            std::vector<RiffChunk>& list, std::optional<RestOfWalk>& rest) noexcept;

/// Walks the rest and appends it to the children of the first form. The result is that of the whole walk.
[[nodiscard]] bool walkRest(FileWindow& input, const RestOfWalk& rest,
                            std::span<const std::uint32_t> descendTypes,
                            std::span<const std::uint32_t> stopKeys,
                            std::vector<RiffChunk>& children) noexcept;

}  // namespace orvantis
