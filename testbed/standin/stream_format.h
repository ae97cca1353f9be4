// What the format data of a video stream says: the bytes of an AVI `strf` chunk, a BITMAPINFOHEADER.
//
// Called by: orvantis_decompress_query and orvantis_decompress_begin. Pure; any thread. Keeps nothing of the
// bytes.

#pragma once

#include <cstdint>
#include <span>

#include "standin/coded_types.h"
#include "standin/error_codes.h"
#include "video/orvantis_common64.h"

namespace orvantis::standin {

// Larger pictures are refused, so that every later product of sizes fits 64 bits with room to spare.
inline constexpr std::uint32_t kMaxPictureSide = 65535;

struct StreamFormat {
    const CodedType* coded = nullptr;
    std::uint32_t width = 0;
    std::uint32_t height = 0;

    // The matrix that the coded samples were made with. The format data does not say it, so the rule of the
    // trade decides: Rec.709 for RGB and for YUV pictures taller than 576 rows, Rec.601 for the rest.
    std::uint32_t colorSpace() const noexcept;
    // RGB is full range, YUV limited.
    std::uint32_t range() const noexcept;
};

// Reads the first 40 bytes; more are ignored, as are biBitCount, biPlanes and biSizeImage. A negative
// biHeight counts like a positive one: the rows of the payload are always top first. On an error `result` is
// left alone.
Error parseStreamFormat(std::span<const std::uint8_t> bytes, StreamFormat& result) noexcept;

// The answer to a query without output.
OrvantisFrameFormat describe(const StreamFormat& stream) noexcept;

}  // namespace orvantis::standin
