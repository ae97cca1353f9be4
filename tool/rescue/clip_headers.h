// The headers of an AVI file (list 'hdrl' of "AVI RIFF File Reference", with OpenDML's additions), kept byte
// for byte, with the places that a rescue changes in them. Sizes of lists are not believed where they cannot
// be right: a recorder that died may never have filled them in.
#pragma once

#include <cstddef>
#include <cstdint>
#include <string>
#include <vector>

#include "avi/avi_structs.h"
#include "tool/rescue/byte_window.h"

namespace simhost::tool {

/// A chunk or list inside the headers. Places count from the start of ClipHeaders::bytes.
struct HeaderChunk {
    std::uint32_t code = 0;
    std::uint32_t type = 0;   ///< of a list, else 0
    std::size_t at = 0;       ///< of the 8-byte header
    std::size_t data = 0;     ///< of the data; of a list behind its type
    std::size_t end = 0;      ///< of the data, without padding
    bool sizeIsRight = true;  ///< the header's size is that of the data
    std::vector<HeaderChunk> children;

    bool isList() const noexcept { return type != 0; }
    std::size_t bytes() const noexcept { return end - data; }
};

struct ClipStream {
    enum class Kind { kVideo, kAudio, kOther };

    Kind kind = Kind::kOther;
    std::size_t list = 0;                ///< which child of ClipHeaders::root
    orvantis::AviStreamHeader header{};  ///< strh
    std::size_t headerAt = 0;            ///< of its data
    std::vector<std::uint8_t> format;    ///< strf
    /// The place for a super index: data of `indx`, or of a JUNK chunk that a recorder has kept for it.
    std::size_t indexAt = 0;
    std::size_t indexBytes = 0;  ///< 0: there is none

    /// "O8Y2", "PCM"
    std::string formatName() const;
    /// Of uncompressed sound the bytes of a sample frame, else 0.
    std::uint32_t frameBytes() const noexcept;
    /// What dwLength, and the durations of an OpenDML index, count: frames, sample frames or chunks.
    std::uint64_t lengthOf(std::uint64_t chunks, std::uint64_t bytes) const noexcept;
    double seconds(std::uint64_t length) const noexcept;
    /// No chunk of this stream should be larger.
    std::uint64_t mostChunkBytes() const noexcept;
};

struct ClipHeaders {
    static constexpr std::size_t kMostBytes = std::size_t{16} << 20;

    std::string fault;                ///< why nothing can be done with them; empty when they serve
    bool formIsRight = false;         ///< the file begins with "RIFF", a size, "AVI "
    std::uint64_t at = 0;             ///< of the list, in the file
    std::vector<std::uint8_t> bytes;  ///< the whole list
    HeaderChunk root;                 ///< hdrl
    std::size_t mainAt = 0;           ///< of avih's data
    std::size_t extendedAt = 0;       ///< of dmlh's first word; 0: there is none
    std::vector<ClipStream> streams;  ///< in the order of the file, all of them
    std::uint64_t moviAt = 0;         ///< of the first list 'movi'; 0: the headers do not lead to one

    std::uint64_t end() const noexcept { return at + bytes.size(); }
    std::uint32_t wordAt(std::size_t place) const noexcept;
};

/// Never throws for what the file holds. Reads no more than the headers and the chunks before the data.
ClipHeaders readClipHeaders(ByteWindow& file);

/// The little-endian word at the start of `bytes`, which has four.
std::uint32_t wordOf(const std::uint8_t* bytes) noexcept;
/// The four letters of a code.
std::string codeName(std::uint32_t code);

}  // namespace simhost::tool
