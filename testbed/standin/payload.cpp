#include "standin/payload.h"

namespace orvantis::standin {
namespace {

std::uint64_t shiftedUp(std::uint64_t size, unsigned shift) {
    return (size + (1U << shift) - 1) >> shift;
}

}  // namespace

PayloadLayout payloadLayout(const CodedType& coded, std::uint32_t width, std::uint32_t height) noexcept {
    PayloadLayout layout;
    const auto append = [&](unsigned index, unsigned shiftX, unsigned shiftY) {
        Plane& plane = layout.planes[index];
        plane.offset = layout.totalBytes;
        plane.rowBytes = shiftedUp(width, shiftX) * coded.bytesPerSample();
        plane.shiftY = shiftY;
        layout.totalBytes += plane.rowBytes * shiftedUp(height, shiftY);
    };
    append(0, 0, 0);
    if (coded.model != ColorModel::kGrey) {
        append(1, coded.chromaShiftX, coded.chromaShiftY);
        append(2, coded.chromaShiftX, coded.chromaShiftY);
    }
    if (coded.hasAlpha) {
        append(kAlphaPlane, 0, 0);
    }
    return layout;
}

}  // namespace orvantis::standin
