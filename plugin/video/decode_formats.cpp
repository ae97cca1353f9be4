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
    // A preference narrows the list but never empties it. (Written out: algorithms that take a lambda make
    // functions with its path in their names, which would be in the symbols.)
    std::vector<FormatInfo> narrowed;
    for (const FormatInfo& row : candidates) {
        if (std::ranges::find(preferred, row.pixelFormat) != preferred.end()) {
            narrowed.push_back(row);
        }
    }
    return narrowed.empty() ? candidates : narrowed;
}

}  // namespace orvantis
