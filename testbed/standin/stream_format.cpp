#include "standin/stream_format.h"

#include <array>

namespace orvantis::standin {
namespace {

// BITMAPINFOHEADER
constexpr std::size_t kHeaderBytes = 40;
constexpr std::size_t kOffsetSize = 0;
constexpr std::size_t kOffsetWidth = 4;
constexpr std::size_t kOffsetHeight = 8;
constexpr std::size_t kOffsetCompression = 16;

// The tallest picture of the two standard-definition systems.
constexpr std::uint32_t kTallestRec601 = 576;

std::uint32_t readLe32(std::span<const std::uint8_t> bytes, std::size_t offset) {
    return std::uint32_t{bytes[offset]} | std::uint32_t{bytes[offset + 1]} << 8 |
           std::uint32_t{bytes[offset + 2]} << 16 | std::uint32_t{bytes[offset + 3]} << 24;
}

}  // namespace

std::uint32_t StreamFormat::colorSpace() const noexcept {
    return coded->isRgb() || height > kTallestRec601 ? kOrvantisColorSpaceRec709 : kOrvantisColorSpaceRec601;
}

std::uint32_t StreamFormat::range() const noexcept {
    return coded->isRgb() ? kOrvantisRangeFull : kOrvantisRangeLimited;
}

Error parseStreamFormat(std::span<const std::uint8_t> bytes, StreamFormat& result) noexcept {
    if (bytes.size() < kHeaderBytes || readLe32(bytes, kOffsetSize) < kHeaderBytes) {
        return Error::kMalformedFormatData;
    }
    const std::array<char, 4> tag = {
        static_cast<char>(bytes[kOffsetCompression]), static_cast<char>(bytes[kOffsetCompression + 1]),
        static_cast<char>(bytes[kOffsetCompression + 2]), static_cast<char>(bytes[kOffsetCompression + 3])};
    const CodedType* coded = findCodedType(tag);
    if (coded == nullptr) {
        return Error::kUnknownCompression;
    }
    const std::uint32_t width = readLe32(bytes, kOffsetWidth);
    std::uint32_t height = readLe32(bytes, kOffsetHeight);
    if ((height & 0x80000000U) != 0) {
        height = 0U - height;  // two's complement: -2147483648 stays what it is and is too large
    }
    if (width == 0 || width > kMaxPictureSide || height == 0 || height > kMaxPictureSide) {
        return Error::kInvalidPictureSize;
    }
    result = {coded, width, height};
    return Error::kNone;
}

OrvantisFrameFormat describe(const StreamFormat& stream) noexcept {
    return {stream.width,
            stream.height,
            kOrvantisFrameFormatWord3,
            kOrvantisFrameFormatWord4,
            stream.coded->code,
            0,
            stream.colorSpace(),
            stream.range(),
            0};
}

}  // namespace orvantis::standin
