// Packs one picture row from its planes into one output row.
//
// Called by: the conversion plan, once a row. Never allocates, never writes beyond the layout's row bytes,
// and reads no sample outside the planes. Any thread; the context is read only.

#pragma once

#include <array>
#include <cstdint>

#include "standin/coded_types.h"
#include "standin/color_matrix.h"
#include "standin/output_layouts.h"
#include "standin/payload.h"

namespace orvantis::standin {

// The plane rows that belong to one picture row, in payload order; null where the coded type has no such
// plane.
using PlaneRows = std::array<const std::uint8_t*, kMaxPlanes>;

struct RowContext {
    std::uint32_t width = 0;                     // pixels
    unsigned chromaShiftX = 0;                   //
    std::uint32_t maxSample = 0;                 // larger words of a damaged payload count as this
    const std::uint16_t* colorLevels = nullptr;  // for R, G, B or Y, U, V of layouts of the same colour model
    const std::uint16_t* alphaLevels = nullptr;  //
    ColorMatrix matrix;                          // for YUV samples in RGB layouts
    std::uint32_t opaque = 0;                    // alpha of pixels that have none
    std::uint32_t neutralChroma = 0;             // of grey pictures, in samples of the coded depth
};

using RowPacker = void (*)(const PlaneRows& rows, const RowContext& context, std::uint8_t* out) noexcept;

// The packer for a pair that canDeliver() allows.
RowPacker rowPacker(const CodedType& coded, const OutputLayout& layout) noexcept;

}  // namespace orvantis::standin
