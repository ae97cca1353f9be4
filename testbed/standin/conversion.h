// From the request of a frame format to the pixels of a frame.
//
// Owns: the check of a requested output, and the plan of one decompression. Called by: query and begin
// (check, plan), decompress (convert). One plan belongs to one session and is used by one thread at a time.

#pragma once

#include <cstdint>
#include <span>

#include "standin/error_codes.h"
#include "standin/levels.h"
#include "standin/payload.h"
#include "standin/row_packers.h"
#include "standin/stream_format.h"
#include "video/orvantis_common64.h"

namespace orvantis::standin {

// Whether the stream can be delivered as `output` asks. On success `produced` is what the frames will be: the
// request with the video's size. On an error it is left alone.
Error checkOutput(const StreamFormat& stream, const OrvantisFrameFormat& output,
                  OrvantisFrameFormat& produced) noexcept;

class Conversion {
 public:
    // `produced` comes from checkOutput(). Allocates its level tables; convert() allocates nothing.
    Conversion(const StreamFormat& stream, const OrvantisFrameFormat& produced);

    Conversion(const Conversion&) = delete;
    Conversion& operator=(const Conversion&) = delete;

    std::uint64_t payloadBytes() const noexcept { return m_payload.totalBytes; }
    std::uint64_t rowBytes() const noexcept { return m_rowBytes; }

    // Whether a frame and an output buffer fit this conversion. Longer frames are accepted, the excess is
    // ignored.
    Error check(std::uint64_t frameBytes, const OrvantisOutputBuffer& out) const noexcept;

    // Decodes a frame that check() accepted. Writes rowBytes() of every row and nothing else.
    void convert(const std::uint8_t* frame, const OrvantisOutputBuffer& out) const noexcept;

 private:
    std::uint32_t m_height;
    bool m_bottomUp;
    PayloadLayout m_payload;
    std::uint64_t m_rowBytes;
    LevelTable m_colorLevels;
    LevelTable m_alphaLevels;
    RowContext m_context;  // points into the two tables
    RowPacker m_packer;
};

}  // namespace orvantis::standin
