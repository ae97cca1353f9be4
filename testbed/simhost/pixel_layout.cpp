#include "simhost/pixel_layout.h"

#include <algorithm>
#include <iterator>

#include "simhost/text.h"

namespace simhost {
namespace {

constexpr std::string_view kPrefix = "PrPixelFormat_";

}  // namespace

std::span<const PixelLayout> pixelLayouts() noexcept {
    return host::kPixelFormats;
}

const PixelLayout* findPixelLayout(std::uint32_t format) noexcept {
    const auto* found = std::ranges::find(host::kPixelFormats, format, &PixelLayout::code);
    return found == std::end(host::kPixelFormats) ? nullptr : found;
}

std::optional<std::uint32_t> pixelFormatFromText(std::string_view text) {
    for (const PixelLayout& layout : pixelLayouts()) {
        const std::string_view name = layout.name;
        if (text == name || text == name.substr(kPrefix.size()) || text == codeText(layout.code, false)) {
            return layout.code;
        }
    }
    return std::nullopt;
}

std::int64_t minimalRowBytes(const PixelLayout& layout, std::int32_t width) noexcept {
    const std::int64_t groups = (std::int64_t{width} + layout.pixelsPerGroup - 1) / layout.pixelsPerGroup;
    return groups * layout.bytesPerGroup;
}

}  // namespace simhost
