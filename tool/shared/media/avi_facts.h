// What the plug-in's own reader finds in an AVI file beyond what the plug-in tells its host: which index
// serves each stream, the chunks' sizes, and what is odd about them. Main thread only; the log is not used.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "tool/shared/media/index_gaps.h"
#include "tool/shared/media/index_probe.h"

namespace simhost::tool {

enum class IndexKind { kNone, kLegacy, kOpenDml };

struct StreamFacts {
    enum class Kind { kVideo, kAudio, kOther };
    Kind kind = Kind::kOther;
    std::string format;      ///< "O8Y2", "PCM, 16 bits, 2 channels, 48000 Hz"
    std::int32_t width = 0;  ///< of pictures
    std::int32_t height = 0;
    std::uint32_t rate = 0;
    std::uint32_t scale = 0;
    std::uint32_t declaredLength = 0;  ///< of the header: frames, or sample frames
    /// Of uncompressed sound: bytes of a sample frame, sample frames a second, and channels. Else 0.
    std::uint32_t frameBytes = 0;
    std::uint32_t samplesPerSecond = 0;
    std::uint32_t channels = 0;
    IndexKind index = IndexKind::kNone;
    IndexBase base = IndexBase::kRight;
    bool openDmlRefused = false;  ///< it has an OpenDML index, but that could not be used
    std::uint64_t chunks = 0;
    std::uint64_t bytes = 0;
    std::uint64_t bytesInFile = 0;  ///< of the chunks that lie wholly inside, and not more than the file has
    std::uint64_t emptyChunks = 0;
    std::uint64_t longestEmptyRun = 0;
    std::uint64_t chunksPastEnd = 0;  ///< not wholly inside the file

    /// Frames or sample frames that the index holds; 0 for sound that is compressed.
    std::uint64_t heldLength() const noexcept;
    /// How long it plays before there is nothing or, for sound, silence. Pictures go by the index, sound ends
    /// with the length in its header. 0 when that cannot be told.
    double seconds() const noexcept;
};

struct AviFacts {
    static constexpr std::size_t kMostGaps = 20;

    bool usable = false;
    std::string problems;  ///< the reader's lines
    std::uint64_t fileSize = 0;
    std::vector<StreamFacts> streams;
    std::vector<std::uint32_t> frameSizes;  ///< of the first video stream
    std::vector<Gap> gaps;                  ///< in the order of the file, the first kMostGaps
    std::uint64_t gapCount = 0;
    std::uint64_t unindexedChunks = 0;  ///< at least so many that no index names; a rescue brings them back
};

/// Nothing when the file cannot be opened.
std::optional<AviFacts> readAviFacts(const std::string& pathUtf8);

}  // namespace simhost::tool
