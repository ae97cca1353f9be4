// Where the planes of a coded picture lie in a frame's bytes.
//
// The payload of this library is the plain picture: planes G B R (A) or Y U V (A), rows top first and
// unpadded, samples of more than 8 bits as 16-bit little-endian words. Called by: the conversions. Pure; any
// thread.

#pragma once

#include <array>
#include <cstdint>

#include "standin/coded_types.h"

namespace orvantis::standin {

inline constexpr unsigned kMaxPlanes = 4;
inline constexpr unsigned kAlphaPlane = 3;

struct Plane {
    std::uint64_t offset = 0;    // bytes from the start of the payload
    std::uint64_t rowBytes = 0;  // 0 when the coded type has no such plane
    unsigned shiftY = 0;         // picture row y is in plane row y >> shiftY
};

struct PayloadLayout {
    std::array<Plane, kMaxPlanes> planes;  // in payload order; alpha is always planes[kAlphaPlane]
    std::uint64_t totalBytes = 0;
};

// `width` and `height` are at most kMaxPictureSide. Chroma planes of odd sizes are rounded up.
PayloadLayout payloadLayout(const CodedType& coded, std::uint32_t width, std::uint32_t height) noexcept;

}  // namespace orvantis::standin
