#include "video/decode_formats.h"

#include <algorithm>
#include <iterator>

namespace orvantis {

OrvantisFrameFormat outputFormatOf(const FormatInfo& info) noexcept {
    OrvantisFrameFormat format = emptyFrameFormat();
    format.type = info.orvType;
    format.flags =
        (info.isTopLeft() ? 0 : kOrvantisFlagBottomUp) | (info.isAdobe16u() ? kOrvantisFlagRange0_32768 : 0);
    format.colorSpace = info.colorSpace;
    format.range = info.isLimitedRange() ? kOrvantisRangeLimited : kOrvantisRangeFull;
    return format;
}

std::vector<FormatInfo> buildDecodeFormats(FormatData format) {
    const OrvantisCodec codec;

    const std::span<const FormatInfo> rows = FormatInfos();
    std::vector<FormatInfo> candidates;
    candidates.reserve(rows.size());
    std::ranges::copy_if(rows, std::back_inserter(candidates), [&](const FormatInfo& row) {
        return codec.canDecompress(format, outputFormatOf(row));
    });

    const OrvantisFrameFormat coded = codec.decompressQuery(format, nullptr);
    const std::span<const std::uint32_t> preferred =
        GetSubTypeInfo_by_orvTypeComp(coded.type).preferredFormats;
    const auto isPreferred = [&](const FormatInfo& row) {
        return std::ranges::find(preferred, row.pixelFormat) != preferred.end();
    };
    // A preference narrows the list but never empties it.
    if (std::ranges::any_of(candidates, isPreferred)) {
        std::erase_if(candidates, [&](const FormatInfo& row) { return !isPreferred(row); });
    }
    return candidates;
}

}  // namespace orvantis
