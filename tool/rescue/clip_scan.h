// Searches a whole AVI file for its chunks, whatever its indexes and the sizes of its lists say: from chunk
// to chunk, and behind damage from byte to byte up to where chunks follow one another again. Only headers are
// read as long as all is well, so time goes with the number of chunks, and memory with 16 bytes for each.
//
// A chunk counts as whole when all of its data is in the file and something follows at the place where it
// should: a chunk, a list, the end of a list or of the file, or zeros to the file's end. One that damage
// follows may have lost its own end, so it counts as damaged. What happened inside a chunk's data cannot be
// seen here.
#pragma once

#include <cstdint>
#include <functional>
#include <optional>
#include <string>
#include <vector>

#include "tool/rescue/clip_headers.h"
#include "tool/rescue/found_chunks.h"
#include "tool/rescue/storage.h"

namespace simhost::tool {

/// Bytes that are no part of a sound structure.
struct Stretch {
    enum class Kind {
        kNoChunks,      ///< nothing in it looks like a chunk
        kDamagedChunk,  ///< begins with the header of a stream's chunk, and something else follows its data
        kCutChunk,      ///< a stream's chunk that reaches beyond the end of the file
        kStrangeChunk,  ///< among the data a chunk of no stream
        kCutOther,      ///< an index, a list or padding that reaches beyond the end of the file
        kZeros,         ///< zeros, to the end of the file
        kUnreadable,    ///< a stream's chunk with data that the disk cannot read; only reading all data tells
    };
    Extent place;
    Kind kind = Kind::kNoChunks;
    unsigned stream = 0;     ///< of kDamagedChunk and kCutChunk
    std::uint32_t code = 0;  ///< of the chunk that begins there, if one does
};

/// A RIFF form: the first, 'AVI ', and OpenDML's 'AVIX'.
struct FoundForm {
    std::uint64_t at = 0;          ///< of "RIFF"
    std::uint64_t moviAt = 0;      ///< of the list 'movi'; 0: none
    std::uint64_t dataEnd = 0;     ///< behind the last whole chunk in it
    bool moviSizeIsRight = false;  ///< the list ends where a chunk or the file does
    std::uint32_t formSize = 0;    ///< as the header has it
    std::uint32_t moviSize = 0;    ///< likewise
    std::uint64_t indexAt = 0;     ///< of idx1; 0: none that is whole
    std::uint64_t recAt = 0;       ///< of the last list 'rec '; 0: none
};

struct ClipScan {
    static constexpr std::size_t kMostStretches = 4096;

    std::uint64_t fileSize = 0;
    ClipHeaders headers;
    FoundChunks chunks;
    std::vector<FoundForm> forms;  ///< empty when the headers do not serve
    std::vector<Stretch> damaged;  ///< in the order of the file; the first kMostStretches
    std::uint64_t damagedCount = 0;
    std::uint64_t damagedBytes = 0;

    void addDamage(const Stretch& stretch);
    /// The one that reaches to the end of the file, if it does.
    const Stretch* tail() const noexcept {
        return !damaged.empty() && damaged.back().place.end == fileSize ? &damaged.back() : nullptr;
    }
};

/// Called with the place in the file that the search has come to; may throw to end it.
using ScanStep = std::function<void(std::uint64_t)>;

/// Throws ToolError when the file cannot be read at all, is larger than FoundChunk::kMostOffset, or holds
/// more chunks than FoundChunks::kMost.
ClipScan scanClip(Storage& file, const ScanStep& step = {});

}  // namespace simhost::tool
