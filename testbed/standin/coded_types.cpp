#include "standin/coded_types.h"

#include <algorithm>

#include "video/orvantis_type_codes.h"

namespace orvantis::standin {
namespace {

constexpr ColorModel kRgb = ColorModel::kRgb;
constexpr ColorModel kYuv = ColorModel::kYuv;
constexpr ColorModel kGrey = ColorModel::kGrey;

// clang-format off
constexpr CodedType kCodedTypes[] = {
    {kOrvantisCodedRgb8,      {'O', '8', 'R', 'G'}, "RGB 8-bit",      kRgb,  false, 0, 0, 8},
    {kOrvantisCodedRgba8,     {'O', '8', 'R', 'A'}, "RGBA 8-bit",     kRgb,  true,  0, 0, 8},
    {kOrvantisCodedYuv444p8,  {'O', '8', 'Y', '4'}, "YUV444 8-bit",   kYuv,  false, 0, 0, 8},
    {kOrvantisCodedYuv422p8,  {'O', '8', 'Y', '2'}, "YUV422 8-bit",   kYuv,  false, 1, 0, 8},
    {kOrvantisCodedYuv420p8,  {'O', '8', 'Y', '0'}, "YUV420 8-bit",   kYuv,  false, 1, 1, 8},
    {kOrvantisCodedYuva8,     {'O', '8', 'Y', 'A'}, "YUVA4444 8-bit", kYuv,  true,  0, 0, 8},
    {kOrvantisCodedGrey8,     {'O', '8', 'G', '0'}, "YUV400 8-bit",   kGrey, false, 0, 0, 8},
    {kOrvantisCodedYuv422p10, {'O', '0', 'Y', '2'}, "YUV422 10-bit",  kYuv,  false, 1, 0, 10},
    {kOrvantisCodedRgb10,     {'O', '0', 'R', 'G'}, "RGB 10-bit",     kRgb,  false, 0, 0, 10},
    {kOrvantisCodedRgba10,    {'O', '0', 'R', 'A'}, "RGBA 10-bit",    kRgb,  true,  0, 0, 10},
    {kOrvantisCodedRgb12,     {'O', '2', 'R', 'G'}, "RGB 12-bit",     kRgb,  false, 0, 0, 12},
    {kOrvantisCodedRgba12,    {'O', '2', 'R', 'A'}, "RGBA 12-bit",    kRgb,  true,  0, 0, 12},
    {kOrvantisCodedRgb14,     {'O', '4', 'R', 'G'}, "RGB 14-bit",     kRgb,  false, 0, 0, 14},
    {kOrvantisCodedRgba14,    {'O', '4', 'R', 'A'}, "RGBA 14-bit",    kRgb,  true,  0, 0, 14},
    {kOrvantisCodedGrey10,    {'O', '0', 'G', '0'}, "YUV400 10-bit",  kGrey, false, 0, 0, 10},
    {kOrvantisCodedYuv444p10, {'O', '0', 'Y', '4'}, "YUV444 10-bit",  kYuv,  false, 0, 0, 10},
    {kOrvantisCodedYuv420p10, {'O', '0', 'Y', '0'}, "YUV420 10-bit",  kYuv,  false, 1, 1, 10},
};
// clang-format on

}  // namespace

std::span<const CodedType> codedTypes() noexcept {
    return kCodedTypes;
}

const CodedType* findCodedType(std::uint32_t code) noexcept {
    const auto* found = std::ranges::find(kCodedTypes, code, &CodedType::code);
    return found == std::end(kCodedTypes) ? nullptr : found;
}

const CodedType* findCodedType(std::array<char, 4> tag) noexcept {
    const auto* found = std::ranges::find(kCodedTypes, tag, &CodedType::tag);
    return found == std::end(kCodedTypes) ? nullptr : found;
}

}  // namespace orvantis::standin
