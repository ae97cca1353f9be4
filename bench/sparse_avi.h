// Writes AVI files of any length that cost no disk: headers and indexes are real, the frames' bytes are holes
// in the file, which read as zeros. Native builds only.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

namespace orvantis::bench {

enum class IndexForm {
    kOpenDml,  ///< a super index for each stream, standard indexes behind each part of at most 1 GiB
    kIdx1,     ///< the old index alone; the file must stay below 4 GiB
};

struct SparseAudio {
    std::uint16_t channels;
    std::uint16_t bits;
    bool isFloat;
};

struct SparseAviPlan {
    std::string codec = "O8Y2";  ///< biCompression and fccHandler
    std::int32_t width = 32;
    std::int32_t height = 32;
    std::uint32_t frames = 1;
    std::uint32_t frameBytes = 2048;
    std::uint32_t framesPerSecond = 100;
    std::vector<SparseAudio> audio;  ///< at 48000 Hz, one chunk behind each frame
    IndexForm index = IndexForm::kOpenDml;
    /// So many chunk headers at the start are written, for readers that look at the data; the rest is holes.
    std::uint32_t framesWithHeaders = 2000;
};

/// Where the data of an index chunk lies.
struct IndexPlace {
    std::uint64_t offset;
    std::uint64_t size;
};

/// Returns the places of the standard indexes or of idx1, in the order in which a reader comes to them.
/// Throws std::system_error when the file cannot be written and std::length_error when the plan does not fit
/// the index form.
std::vector<IndexPlace> writeSparseAvi(const std::string& path, const SparseAviPlan& plan);

}  // namespace orvantis::bench
