// Writes what a search has found as a new OpenDML file: the old headers with their counts and lengths put
// right, every whole chunk in the order of the file, a standard index for each stream in each RIFF form, a
// super index for each stream, and idx1 for the first form.
#pragma once

#include <cstdint>
#include <functional>
#include <stdexcept>
#include <string>
#include <utility>
#include <vector>

#include "tool/rescue/clip_scan.h"
#include "tool/rescue/index_bytes.h"
#include "tool/rescue/storage.h"

namespace simhost::tool {

/// The old headers with what a rescue has to change; every other byte is as it was.
struct NewHeaders {
    FileBytes bytes;                   ///< the whole list 'hdrl'
    std::vector<std::size_t> superAt;  ///< for each stream, where the data of its super index lies
    std::vector<std::uint64_t> superBytes;
};

/// What the new headers say of a stream.
struct StreamTotals {
    std::uint64_t length = 0;  ///< dwLength
    std::size_t indexes = 0;   ///< entries of its super index
};

/// The super indexes are zeros yet.
NewHeaders rebuildHeaders(const ClipHeaders& old, const std::vector<StreamTotals>& streams,
                          std::uint64_t firstFormFrames, std::uint64_t allFrames);

/// Chunks that the disk cannot read; what() is the system's reason for the first.
class UnreadableChunks : public std::runtime_error {
 public:
    UnreadableChunks(std::vector<std::size_t> numbers, const std::string& reason)
        : std::runtime_error(reason), m_numbers(std::move(numbers)) {}

    /// Ascending.
    const std::vector<std::size_t>& numbers() const noexcept { return m_numbers; }

 private:
    std::vector<std::size_t> m_numbers;
};

/// Called with the bytes written so far; may throw to end it.
using WriteStep = std::function<void(std::uint64_t)>;

struct NewClipLayout;
/// Where everything will be in the new file. `formBytes` is what a RIFF form may hold.
NewClipLayout layOutNewClip(const ClipScan& scan, std::uint64_t formBytes = std::uint64_t{1} << 30);
/// Writes `target` from its beginning to its end. Throws UnreadableChunks when all has been read; the target
/// is of no use then.
void writeNewClip(Storage& source, const ClipScan& scan, const NewClipLayout& layout, Storage& target,
                  const WriteStep& step = {});

struct NewClipLayout {
    /// What lies between headers and data is texts and padding. More would not fit into a form with a
    /// gigabyte of data and the largest chunk, which has 32 bits for its size.
    static constexpr std::uint64_t kMostBetween = std::uint64_t{64} << 20;

    struct Form {
        std::size_t first = 0;  ///< of its chunks
        std::size_t last = 0;
        std::uint64_t at = 0;      ///< of "RIFF"
        std::uint64_t moviAt = 0;  ///< of its list
        std::uint64_t moviEnd = 0;
        std::uint64_t end = 0;
        std::vector<StandardIndexPlan> indexes;
    };

    FileBytes headers;        ///< everything of the list 'hdrl'
    Extent between;           ///< of the old file: what lies between headers and data, unless it is too much
    std::vector<Form> forms;  ///< at least one
    std::uint64_t size = 0;
};

}  // namespace simhost::tool
