// The coded video types: what a file can hold.
//
// Called by: the stream format reader, the payload layout and the conversions. Read-only tables; any thread.

#pragma once

#include <array>
#include <cstdint>
#include <span>

namespace orvantis::standin {

enum class ColorModel { kRgb, kYuv, kGrey };

struct CodedType {
    std::uint32_t code;       // orvTypeComp
    std::array<char, 4> tag;  // biCompression, in the order of the file's bytes
    const char* name;         // what orvantis_get_string answers
    ColorModel model;         //
    bool hasAlpha;            // one more plane of full size, full range
    unsigned chromaShiftX;    // chroma plane width = luma width >> shift, rounded up
    unsigned chromaShiftY;    // the same for the height
    unsigned bits;            // of one sample; more than 8 are stored in 16-bit words

    bool isRgb() const noexcept { return model == ColorModel::kRgb; }
    unsigned bytesPerSample() const noexcept { return bits > 8 ? 2 : 1; }
    std::uint32_t maxSample() const noexcept { return (1U << bits) - 1; }
};

// All rows, in the order of their codes.
std::span<const CodedType> codedTypes() noexcept;

// The row, or null.
const CodedType* findCodedType(std::uint32_t code) noexcept;
const CodedType* findCodedType(std::array<char, 4> tag) noexcept;

}  // namespace orvantis::standin
