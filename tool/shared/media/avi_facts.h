// What the plug-in's own reader finds in an AVI file beyond what the plug-in tells its host: which index
// serves each stream, the chunks' sizes, and what is odd about them. Main thread only; the log is not used.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

namespace simhost::tool {

enum class IndexKind { kNone, kLegacy, kOpenDml };

struct StreamFacts {
    enum class Kind { kVideo, kAudio, kOther };
    Kind kind = Kind::kOther;
    std::string format;  ///< "O8Y2", "PCM, 16 bits, 2 channels, 48000 Hz"
    std::uint32_t rate = 0;
    std::uint32_t scale = 0;
    std::uint32_t sampleSize = 0;      ///< bytes of a unit of length; 0: a chunk is one, or it varies
    std::uint32_t declaredLength = 0;  ///< of the header: frames, or sample frames
    IndexKind index = IndexKind::kNone;
    bool openDmlRefused = false;  ///< it has an OpenDML index, but that could not be used
    std::uint64_t chunks = 0;
    std::uint64_t bytes = 0;
    std::uint64_t emptyChunks = 0;
    std::uint64_t longestEmptyRun = 0;
    std::uint64_t chunksPastEnd = 0;  ///< not wholly inside the file

    /// What the index holds, in the header's unit; the header's word for sound whose chunks vary.
    std::uint64_t length() const noexcept;
    double seconds() const noexcept;
};

/// Bytes between indexed chunks that no index mentions, beyond what index chunks and padding explain.
struct Gap {
    std::uint64_t position = 0;
    std::uint64_t bytes = 0;
};

struct AviFacts {
    static constexpr std::uint64_t kLeastGap = 64 * 1024;
    static constexpr std::size_t kMostGaps = 20;

    bool usable = false;
    std::string problems;  ///< the reader's lines
    std::uint64_t fileSize = 0;
    std::vector<StreamFacts> streams;
    std::vector<std::uint32_t> frameSizes;  ///< of the first video stream
    std::vector<Gap> gaps;                  ///< in the order of the file, the first kMostGaps
    std::uint64_t gapCount = 0;
};

/// Nothing when the file cannot be opened.
std::optional<AviFacts> readAviFacts(const std::string& pathUtf8);

/// Sentences for the user: what is unusual about the file and what it leads to.
std::vector<std::string> aviWarnings(const AviFacts& facts);

}  // namespace simhost::tool
