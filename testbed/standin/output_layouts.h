// The output layouts: their names, what they can do, and which coded type can be delivered in which of them.
//
// Called by: the queries and the conversions. Read-only tables; any thread.

#pragma once

#include <cstdint>

#include "standin/coded_types.h"

namespace orvantis::standin {

// The library's type codes of output layouts run from 1 to this one.
inline constexpr std::uint32_t kLastOutputLayout = 61;

// How the pixels of a deliverable layout are built.
enum class LayoutKind {
    kRgb,     // four components a pixel, full range
    kYuv422,  // two pixels share one chroma pair, limited range
    kYuv444,  // four components a pixel, limited range
};

struct OutputLayout {
    std::uint32_t type;       // orvType
    LayoutKind kind;          //
    unsigned bits;            // of one component in the layout
    unsigned pixelsPerGroup;  // the smallest unit that is written whole
    unsigned bytesPerGroup;   //
};

// The row of a layout that frames can be delivered in, or null.
const OutputLayout* findOutputLayout(std::uint32_t type) noexcept;

// Bytes that one row of `width` pixels takes; the last group is written whole.
std::uint64_t outputRowBytes(const OutputLayout& layout, std::uint32_t width) noexcept;

// True when video of the coded type can be delivered in the layout. RGB never becomes YUV, and YUV is put
// into YUV layouts only where its chroma needs no horizontal resampling.
bool canDeliver(const CodedType& coded, const OutputLayout& layout) noexcept;

// Answers of orvantis_get_param for any type code: every deliverable layout can be flipped, the two 16-bit
// ones know the 0 to 32768 range.
bool canFlip(std::uint32_t type) noexcept;
bool supportsRange0To32768(std::uint32_t type) noexcept;

// The name of a coded type or of an output layout; null for a code that is neither.
const char* typeName(std::uint32_t type) noexcept;

}  // namespace orvantis::standin
