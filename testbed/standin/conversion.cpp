#include "standin/conversion.h"

namespace orvantis::standin {
namespace {

constexpr std::uint32_t kKnownFlags = kOrvantisFlagBottomUp | kOrvantisFlagRange0_32768;

// The pitch crosses the border as 32 bits without a sign; the host's row-byte count has one.
std::int64_t signedPitch(const OrvantisOutputBuffer& out) {
    return static_cast<std::int32_t>(out.rowPitch);
}

LevelTable alphaLevels(const StreamFormat& stream, const OutputLayout& layout, bool range0To32768) {
    return range0To32768 ? levels0To32768(stream.coded->bits)
                         : fullRangeLevels(stream.coded->bits, layout.bits);
}

// YUV samples in RGB layouts go through the matrix and need no table.
LevelTable colorLevels(const StreamFormat& stream, const OutputLayout& layout, bool range0To32768) {
    if (layout.kind != LayoutKind::kRgb) {
        return limitedRangeLevels(stream.coded->bits, layout.bits);
    }
    return stream.coded->isRgb() ? alphaLevels(stream, layout, range0To32768) : LevelTable{};
}

}  // namespace

Error checkOutput(const StreamFormat& stream, const OrvantisFrameFormat& output,
                  OrvantisFrameFormat& produced) noexcept {
    if (output.word3 != kOrvantisFrameFormatWord3 || output.word4 != kOrvantisFrameFormatWord4 ||
        output.word9 != 0) {
        return Error::kInvalidFrameFormat;
    }
    if (typeName(output.type) == nullptr) {
        return Error::kUnknownType;
    }
    const OutputLayout* layout = findOutputLayout(output.type);
    if (layout == nullptr || !canDeliver(*stream.coded, *layout)) {
        return Error::kOutputNotSupported;
    }
    if ((output.width != 0 && output.width != stream.width) ||
        (output.height != 0 && output.height != stream.height)) {
        return Error::kOutputSizeMismatch;
    }
    if ((output.flags & ~kKnownFlags) != 0 ||
        ((output.flags & kOrvantisFlagRange0_32768) != 0 && !supportsRange0To32768(output.type))) {
        return Error::kInvalidFlags;
    }
    if (output.colorSpace != kOrvantisColorSpaceRec601 && output.colorSpace != kOrvantisColorSpaceRec709) {
        return Error::kInvalidColorSpace;
    }
    if (output.range != (layout->kind == LayoutKind::kRgb ? kOrvantisRangeFull : kOrvantisRangeLimited)) {
        return Error::kInvalidRange;
    }
    produced = output;
    produced.width = stream.width;
    produced.height = stream.height;
    return Error::kNone;
}

Conversion::Conversion(const StreamFormat& stream, const OrvantisFrameFormat& produced)
    : m_height(stream.height),
      m_bottomUp((produced.flags & kOrvantisFlagBottomUp) != 0),
      m_payload(payloadLayout(*stream.coded, stream.width, stream.height)) {
    const CodedType& coded = *stream.coded;
    const OutputLayout& layout = *findOutputLayout(produced.type);
    const bool range0To32768 = (produced.flags & kOrvantisFlagRange0_32768) != 0;
    const std::uint32_t maxLevel = range0To32768 ? 32768U : (1U << layout.bits) - 1;
    m_rowBytes = outputRowBytes(layout, stream.width);
    m_colorLevels = colorLevels(stream, layout, range0To32768);
    if (coded.hasAlpha) {
        m_alphaLevels = alphaLevels(stream, layout, range0To32768);
    }
    m_context.width = stream.width;
    m_context.chromaShiftX = coded.chromaShiftX;
    m_context.maxSample = coded.maxSample();
    m_context.colorLevels = m_colorLevels.data();
    m_context.alphaLevels = m_alphaLevels.data();
    m_context.matrix = ColorMatrix(stream.colorSpace(), coded.bits, maxLevel);
    m_context.opaque = maxLevel;
    m_context.neutralChroma = 1U << (coded.bits - 1);
    m_packer = rowPacker(coded, layout);
}

Error Conversion::check(std::uint64_t frameBytes, const OrvantisOutputBuffer& out) const noexcept {
    if (frameBytes < m_payload.totalBytes) {
        return Error::kFrameTruncated;
    }
    const std::int64_t pitch = signedPitch(out);
    const auto distance = static_cast<std::uint64_t>(pitch < 0 ? -pitch : pitch);
    if (out.pixels == nullptr || distance < m_rowBytes) {
        return Error::kInvalidOutputBuffer;
    }
    if (out.totalBytes != out.rowPitch * m_height) {  // modulo 2^32, as the caller forms it
        return Error::kOutputBytesMismatch;
    }
    return Error::kNone;
}

void Conversion::convert(const std::uint8_t* frame, const OrvantisOutputBuffer& out) const noexcept {
    auto* const first = static_cast<std::uint8_t*>(out.pixels);
    const std::int64_t pitch = signedPitch(out);
    for (std::uint32_t row = 0; row < m_height; ++row) {
        const std::uint32_t y = m_bottomUp ? m_height - 1 - row : row;
        PlaneRows rows{};
        for (unsigned i = 0; i < kMaxPlanes; ++i) {
            const Plane& plane = m_payload.planes[i];
            if (plane.rowBytes != 0) {
                rows[i] = frame + plane.offset + plane.rowBytes * (y >> plane.shiftY);
            }
        }
        m_packer(rows, m_context, first + pitch * static_cast<std::int64_t>(row));
    }
}

}  // namespace orvantis::standin
