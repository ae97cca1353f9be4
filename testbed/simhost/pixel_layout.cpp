#include "simhost/pixel_layout.h"

#include <algorithm>
#include <iterator>

#include "host/pixel_formats.h"
#include "simhost/text.h"

namespace simhost {
namespace {

#define FORMAT(id, pixels, bytes, compressed, alpha, topLeft) \
    { host::PrPixelFormat_##id, "PrPixelFormat_" #id, pixels, bytes, compressed, alpha, topLeft }

// Identifier, pixels and bytes of a group, compressed, alpha, top-left. Bottom rows come first in the formats
// with
// "_4444_" in their name and in no other.
// clang-format off
constexpr PixelLayout kLayouts[] = {
    FORMAT(BGRA_4444_8u, 1, 4, false, true, false),
    FORMAT(VUYA_4444_8u, 1, 4, false, true, false),
    FORMAT(VUYA_4444_8u_709, 1, 4, false, true, false),
    FORMAT(ARGB_4444_8u, 1, 4, false, true, false),
    FORMAT(BGRX_4444_8u, 1, 4, false, false, false),
    FORMAT(VUYX_4444_8u, 1, 4, false, false, false),
    FORMAT(VUYX_4444_8u_709, 1, 4, false, false, false),
    FORMAT(XRGB_4444_8u, 1, 4, false, false, false),
    FORMAT(BGRP_4444_8u, 1, 4, false, true, false),
    FORMAT(VUYP_4444_8u, 1, 4, false, true, false),
    FORMAT(VUYP_4444_8u_709, 1, 4, false, true, false),
    FORMAT(PRGB_4444_8u, 1, 4, false, true, false),
    FORMAT(BGRA_4444_16u, 1, 8, false, true, false),
    FORMAT(VUYA_4444_16u, 1, 8, false, true, false),
    FORMAT(ARGB_4444_16u, 1, 8, false, true, false),
    FORMAT(BGRX_4444_16u, 1, 8, false, false, false),
    FORMAT(XRGB_4444_16u, 1, 8, false, false, false),
    FORMAT(BGRP_4444_16u, 1, 8, false, true, false),
    FORMAT(PRGB_4444_16u, 1, 8, false, true, false),
    FORMAT(BGRA_4444_32f, 1, 16, false, true, false),
    FORMAT(VUYA_4444_32f, 1, 16, false, true, false),
    FORMAT(VUYA_4444_32f_709, 1, 16, false, true, false),
    FORMAT(ARGB_4444_32f, 1, 16, false, true, false),
    FORMAT(BGRX_4444_32f, 1, 16, false, false, false),
    FORMAT(VUYX_4444_32f, 1, 16, false, false, false),
    FORMAT(VUYX_4444_32f_709, 1, 16, false, false, false),
    FORMAT(XRGB_4444_32f, 1, 16, false, false, false),
    FORMAT(BGRP_4444_32f, 1, 16, false, true, false),
    FORMAT(VUYP_4444_32f, 1, 16, false, true, false),
    FORMAT(VUYP_4444_32f_709, 1, 16, false, true, false),
    FORMAT(PRGB_4444_32f, 1, 16, false, true, false),
    FORMAT(RGB_444_10u, 1, 4, false, false, true),
    FORMAT(YUYV_422_8u_601, 2, 4, false, false, true),
    FORMAT(YUYV_422_8u_709, 2, 4, false, false, true),
    FORMAT(UYVY_422_8u_601, 2, 4, false, false, true),
    FORMAT(UYVY_422_8u_709, 2, 4, false, false, true),
    FORMAT(V210_422_10u_601, 6, 16, false, false, true),
    FORMAT(V210_422_10u_709, 6, 16, false, false, true),
    FORMAT(UYVY_422_32f_601, 2, 16, false, false, true),
    FORMAT(UYVY_422_32f_709, 2, 16, false, false, true),
    FORMAT(BGRA_4444_32f_Linear, 1, 16, false, true, false),
    FORMAT(BGRP_4444_32f_Linear, 1, 16, false, true, false),
    FORMAT(BGRX_4444_32f_Linear, 1, 16, false, false, false),
    FORMAT(ARGB_4444_32f_Linear, 1, 16, false, true, false),
    FORMAT(PRGB_4444_32f_Linear, 1, 16, false, true, false),
    FORMAT(XRGB_4444_32f_Linear, 1, 16, false, false, false),
    FORMAT(YUV_420_MPEG2_FRAME_PICTURE_PLANAR_8u_601, 0, 0, false, false, true),
    FORMAT(YUV_420_MPEG2_FIELD_PICTURE_PLANAR_8u_601, 0, 0, false, false, true),
    FORMAT(YUV_420_MPEG2_FRAME_PICTURE_PLANAR_8u_601_FullRange, 0, 0, false, false, true),
    FORMAT(YUV_420_MPEG2_FIELD_PICTURE_PLANAR_8u_601_FullRange, 0, 0, false, false, true),
    FORMAT(YUV_420_MPEG2_FRAME_PICTURE_PLANAR_8u_709, 0, 0, false, false, true),
    FORMAT(YUV_420_MPEG2_FIELD_PICTURE_PLANAR_8u_709, 0, 0, false, false, true),
    FORMAT(YUV_420_MPEG2_FRAME_PICTURE_PLANAR_8u_709_FullRange, 0, 0, false, false, true),
    FORMAT(YUV_420_MPEG2_FIELD_PICTURE_PLANAR_8u_709_FullRange, 0, 0, false, false, true),
    FORMAT(YUV_420_MPEG4_FRAME_PICTURE_PLANAR_8u_601, 0, 0, false, false, true),
    FORMAT(YUV_420_MPEG4_FIELD_PICTURE_PLANAR_8u_601, 0, 0, false, false, true),
    FORMAT(YUV_420_MPEG4_FRAME_PICTURE_PLANAR_8u_601_FullRange, 0, 0, false, false, true),
    FORMAT(YUV_420_MPEG4_FIELD_PICTURE_PLANAR_8u_601_FullRange, 0, 0, false, false, true),
    FORMAT(YUV_420_MPEG4_FRAME_PICTURE_PLANAR_8u_709, 0, 0, false, false, true),
    FORMAT(YUV_420_MPEG4_FIELD_PICTURE_PLANAR_8u_709, 0, 0, false, false, true),
    FORMAT(YUV_420_MPEG4_FRAME_PICTURE_PLANAR_8u_709_FullRange, 0, 0, false, false, true),
    FORMAT(YUV_420_MPEG4_FIELD_PICTURE_PLANAR_8u_709_FullRange, 0, 0, false, false, true),
    FORMAT(NTSCDV25, 0, 0, true, false, true),
    FORMAT(PALDV25, 0, 0, true, false, true),
    FORMAT(NTSCDV50, 0, 0, true, false, true),
    FORMAT(PALDV50, 0, 0, true, false, true),
    FORMAT(NTSCDV100_720p, 0, 0, true, false, true),
    FORMAT(PALDV100_720p, 0, 0, true, false, true),
    FORMAT(NTSCDV100_1080i, 0, 0, true, false, true),
    FORMAT(PALDV100_1080i, 0, 0, true, false, true),
    FORMAT(Raw, 0, 0, false, false, true),
    FORMAT(Invalid, 0, 0, false, false, true),
};
// clang-format on

#undef FORMAT

constexpr std::string_view kPrefix = "PrPixelFormat_";

}  // namespace

std::span<const PixelLayout> pixelLayouts() noexcept {
    return kLayouts;
}

const PixelLayout* findPixelLayout(std::uint32_t format) noexcept {
    const auto* found = std::ranges::find(kLayouts, format, &PixelLayout::format);
    return found == std::end(kLayouts) ? nullptr : found;
}

std::optional<std::uint32_t> pixelFormatFromText(std::string_view text) {
    for (const PixelLayout& layout : kLayouts) {
        const std::string_view name = layout.name;
        if (text == name || text == name.substr(kPrefix.size()) || text == codeText(layout.format, false)) {
            return layout.format;
        }
    }
    return std::nullopt;
}

const char* pixelFormatName(std::uint32_t format) noexcept {
    if (format == host::PrPixelFormat_Any) {
        return "PrPixelFormat_Any";
    }
    const PixelLayout* layout = findPixelLayout(format);
    return layout == nullptr ? "????" : layout->name;
}

std::int64_t minimalRowBytes(const PixelLayout& layout, std::int32_t width) noexcept {
    const std::int64_t groups = (std::int64_t{width} + layout.pixelsPerGroup - 1) / layout.pixelsPerGroup;
    return groups * layout.bytesPerGroup;
}

}  // namespace simhost
