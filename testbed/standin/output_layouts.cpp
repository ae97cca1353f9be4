#include "standin/output_layouts.h"

#include <algorithm>
#include <iterator>

#include "video/orvantis_type_codes.h"

namespace orvantis::standin {
namespace {

// clang-format off
constexpr OutputLayout kLayouts[] = {
    {kOrvantisOutBgrx,   LayoutKind::kRgb,    8,  1, 4},
    {kOrvantisOutBgra,   LayoutKind::kRgb,    8,  1, 4},
    {kOrvantisOutYuyv,   LayoutKind::kYuv422, 8,  2, 4},
    {kOrvantisOutUyvy,   LayoutKind::kYuv422, 8,  2, 4},
    {kOrvantisOutV210,   LayoutKind::kYuv422, 10, 6, 16},
    {kOrvantisOutRgb10,  LayoutKind::kRgb,    10, 1, 4},
    {kOrvantisOutXrgb,   LayoutKind::kRgb,    8,  1, 4},
    {kOrvantisOutArgb,   LayoutKind::kRgb,    8,  1, 4},
    {kOrvantisOutBgra16, LayoutKind::kRgb,    16, 1, 8},
    {kOrvantisOutBgrx16, LayoutKind::kRgb,    16, 1, 8},
    {kOrvantisOutVuyx,   LayoutKind::kYuv444, 8,  1, 4},
    {kOrvantisOutVuya,   LayoutKind::kYuv444, 8,  1, 4},
};

// The names of the type codes 1 to 61, most of which this library only knows by name.
constexpr const char* kLayoutNames[] = {
    "BGRX32",    "BGRA32",    "BGR24",     "YUYV",      "UYVY",      "YVYU",      "VYUY",       // 1..7
    "YV12",      "I420",      "NV12",      "V210",      "V216",      "V410",      "Y416",       // 8..14
    "RGB10",     "XRGB32",    "RGB24",     "RGBX32",    "ARGB32",    "RGBA32",    "ABGR32",     // 15..21
    "XBGR32",    "GREY8",     "GREY10",    "GREY12",    "GREY14",    "GREY16",    "BGR48",      // 22..28
    "RGB48",     "RGBA64",    "BGRA64",    "BGRX64",    "ARGB64",    "XRGB64",    "RGBX64",     // 29..35
    "ABGR64",    "YUV420P8",  "YUV422P8",  "YUV444P8",  "YUVA444P8", "YUV420P10", "YUV422P10",  // 36..42
    "YUV444P10", "GBRP8",     "GBRAP8",    "GBRP10",    "GBRAP10",   "AYUV",      "VUYX",       // 43..49
    "VUYA",      "XYUV",      "YUVX",      "YUVA",      "GBRP12",    "GBRAP12",   "GBRP14",     // 50..56
    "GBRAP14",   "P010",      "P210",      "P016",      "P216",                                 // 57..61
};
// clang-format on

static_assert(std::size(kLayoutNames) == kLastOutputLayout,
              "CONTRIBUTING.md, \"How do I add ...\", a host pixel format: its last paragraph");

}  // namespace

const OutputLayout* findOutputLayout(std::uint32_t type) noexcept {
    const auto* found = std::ranges::find(kLayouts, type, &OutputLayout::type);
    return found == std::end(kLayouts) ? nullptr : found;
}

std::uint64_t outputRowBytes(const OutputLayout& layout, std::uint32_t width) noexcept {
    const std::uint64_t groups = (std::uint64_t{width} + layout.pixelsPerGroup - 1) / layout.pixelsPerGroup;
    return groups * layout.bytesPerGroup;
}

bool canDeliver(const CodedType& coded, const OutputLayout& layout) noexcept {
    switch (layout.kind) {
        case LayoutKind::kRgb:
            return true;
        case LayoutKind::kYuv422:
            return coded.model == ColorModel::kGrey ||
                   (coded.model == ColorModel::kYuv && coded.chromaShiftX == 1);
        case LayoutKind::kYuv444:
            return coded.model == ColorModel::kYuv && coded.chromaShiftX == 0;
    }
    return false;
}

bool canFlip(std::uint32_t type) noexcept {
    return findOutputLayout(type) != nullptr;
}

bool supportsRange0To32768(std::uint32_t type) noexcept {
    const OutputLayout* layout = findOutputLayout(type);
    return layout != nullptr && layout->bits == 16;
}

const char* typeName(std::uint32_t type) noexcept {
    if (type >= 1 && type <= kLastOutputLayout) {
        return kLayoutNames[type - 1];
    }
    const CodedType* coded = findCodedType(type);
    return coded == nullptr ? nullptr : coded->name;
}

}  // namespace orvantis::standin
