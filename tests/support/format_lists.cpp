#include "tests/support/format_lists.h"

#include <algorithm>

namespace formatlists {
namespace {

// clang-format off
constexpr HostFormat kHostFormats[] = {
    {"VUyp", "PrPixelFormat_VUYP_4444_32f"},
    {"VUp7", "PrPixelFormat_VUYP_4444_32f_709"},
    {"PRgb", "PrPixelFormat_PRGB_4444_32f"},
    {"RGB1", "PrPixelFormat_RGB_444_10u"},
    {"yv1F", "PrPixelFormat_YUV_420_MPEG2_FRAME_PICTURE_PLANAR_8u_709_FullRange"},
    {"yviF", "PrPixelFormat_YUV_420_MPEG2_FIELD_PICTURE_PLANAR_8u_709_FullRange"},
    {"Yv12", "PrPixelFormat_YUV_420_MPEG4_FRAME_PICTURE_PLANAR_8u_601"},
    {"Yvi2", "PrPixelFormat_YUV_420_MPEG4_FIELD_PICTURE_PLANAR_8u_601"},
    {"PRgL", "PrPixelFormat_PRGB_4444_32f_Linear"},
    {"XRgL", "PrPixelFormat_XRGB_4444_32f_Linear"},
    {"yv12", "PrPixelFormat_YUV_420_MPEG2_FRAME_PICTURE_PLANAR_8u_601"},
    {"yvi2", "PrPixelFormat_YUV_420_MPEG2_FIELD_PICTURE_PLANAR_8u_601"},
    {"Yv1F", "PrPixelFormat_YUV_420_MPEG4_FRAME_PICTURE_PLANAR_8u_709_FullRange"},
    {"YviF", "PrPixelFormat_YUV_420_MPEG4_FIELD_PICTURE_PLANAR_8u_709_FullRange"},
    {"dvn2", "PrPixelFormat_NTSCDV25"},
    {"dvp2", "PrPixelFormat_PALDV25"},
    {"Yv1f", "PrPixelFormat_YUV_420_MPEG4_FRAME_PICTURE_PLANAR_8u_601_FullRange"},
    {"Yvif", "PrPixelFormat_YUV_420_MPEG4_FIELD_PICTURE_PLANAR_8u_601_FullRange"},
    {"Yv17", "PrPixelFormat_YUV_420_MPEG4_FRAME_PICTURE_PLANAR_8u_709"},
    {"Yvi7", "PrPixelFormat_YUV_420_MPEG4_FIELD_PICTURE_PLANAR_8u_709"},
    {"yv1f", "PrPixelFormat_YUV_420_MPEG2_FRAME_PICTURE_PLANAR_8u_601_FullRange"},
    {"yvif", "PrPixelFormat_YUV_420_MPEG2_FIELD_PICTURE_PLANAR_8u_601_FullRange"},
    {"yv17", "PrPixelFormat_YUV_420_MPEG2_FRAME_PICTURE_PLANAR_8u_709"},
    {"yvi7", "PrPixelFormat_YUV_420_MPEG2_FIELD_PICTURE_PLANAR_8u_709"},
    {"dvn5", "PrPixelFormat_NTSCDV50"},
    {"dvp5", "PrPixelFormat_PALDV50"},
    {"dvn7", "PrPixelFormat_NTSCDV100_720p"},
    {"dvp7", "PrPixelFormat_PALDV100_720p"},
    {"v210", "PrPixelFormat_V210_422_10u_601"},
    {"v211", "PrPixelFormat_V210_422_10u_709"},
    {"UYvy", "PrPixelFormat_UYVY_422_32f_601"},
    {"UYv7", "PrPixelFormat_UYVY_422_32f_709"},
    {"yuy2", "PrPixelFormat_YUYV_422_8u_601"},
    {"yuy3", "PrPixelFormat_YUYV_422_8u_709"},
    {"uyvy", "PrPixelFormat_UYVY_422_8u_601"},
    {"uyv7", "PrPixelFormat_UYVY_422_8u_709"},
    {"BGaL", "PrPixelFormat_BGRA_4444_32f_Linear"},
    {"BGpL", "PrPixelFormat_BGRP_4444_32f_Linear"},
    {"BGxL", "PrPixelFormat_BGRX_4444_32f_Linear"},
    {"ARgL", "PrPixelFormat_ARGB_4444_32f_Linear"},
    {"Xrgb", "PrPixelFormat_XRGB_4444_16u"},
    {"Bgrp", "PrPixelFormat_BGRP_4444_16u"},
    {"Prgb", "PrPixelFormat_PRGB_4444_16u"},
    {"BGra", "PrPixelFormat_BGRA_4444_32f"},
    {"bgra", "PrPixelFormat_BGRA_4444_8u"},
    {"vuya", "PrPixelFormat_VUYA_4444_8u"},
    {"VUYA", "PrPixelFormat_VUYA_4444_8u_709"},
    {"argb", "PrPixelFormat_ARGB_4444_8u"},
    {"bgrp", "PrPixelFormat_BGRP_4444_8u"},
    {"vuyp", "PrPixelFormat_VUYP_4444_8u"},
    {"vup7", "PrPixelFormat_VUYP_4444_8u_709"},
    {"prgb", "PrPixelFormat_PRGB_4444_8u"},
    {"bgrx", "PrPixelFormat_BGRX_4444_8u"},
    {"vuyx", "PrPixelFormat_VUYX_4444_8u"},
    {"vux7", "PrPixelFormat_VUYX_4444_8u_709"},
    {"xrgb", "PrPixelFormat_XRGB_4444_8u"},
    {"dvn1", "PrPixelFormat_NTSCDV100_1080i"},
    {"dvp1", "PrPixelFormat_PALDV100_1080i"},
    {"raww", "PrPixelFormat_Raw"},
    {"badf", "PrPixelFormat_Invalid"},
    {"VUyx", "PrPixelFormat_VUYX_4444_32f"},
    {"VUx7", "PrPixelFormat_VUYX_4444_32f_709"},
    {"XRgb", "PrPixelFormat_XRGB_4444_32f"},
    {"BGrp", "PrPixelFormat_BGRP_4444_32f"},
    {"VUya", "PrPixelFormat_VUYA_4444_32f"},
    {"vUYa", "PrPixelFormat_VUYA_4444_32f_709"},
    {"ARgb", "PrPixelFormat_ARGB_4444_32f"},
    {"BGrx", "PrPixelFormat_BGRX_4444_32f"},
    {"Bgra", "PrPixelFormat_BGRA_4444_16u"},
    {"Vuya", "PrPixelFormat_VUYA_4444_16u"},
    {"Argb", "PrPixelFormat_ARGB_4444_16u"},
    {"Bgrx", "PrPixelFormat_BGRX_4444_16u"},
};

constexpr HostFormat kLaterHostFormats[] = {
    {"@PQ7", "PrPixelFormat_RGB_444_12u_PQ_709"},
    {"@PQP", "PrPixelFormat_RGB_444_12u_PQ_P3"},
    {"@PQ2", "PrPixelFormat_RGB_444_12u_PQ_2020"},
    {"@HL1", "PrPixelFormat_RGB_444_10u_HLG"},
    {"@HL2", "PrPixelFormat_RGB_444_12u_HLG"},
    {"nvi3", "PrPixelFormat_YUV_420_MPEG4_FIELD_PICTURE_BIPLANAR_8u_601"},
    {"nv13", "PrPixelFormat_YUV_420_MPEG4_FRAME_PICTURE_BIPLANAR_8u_601"},
    {"nvi1", "PrPixelFormat_YUV_420_MPEG4_FIELD_PICTURE_BIPLANAR_8u_601_FullRange"},
    {"nv11", "PrPixelFormat_YUV_420_MPEG4_FRAME_PICTURE_BIPLANAR_8u_601_FullRange"},
    {"nvi2", "PrPixelFormat_YUV_420_MPEG4_FIELD_PICTURE_BIPLANAR_8u_709"},
    {"nv12", "PrPixelFormat_YUV_420_MPEG4_FRAME_PICTURE_BIPLANAR_8u_709"},
    {"nvi0", "PrPixelFormat_YUV_420_MPEG4_FIELD_PICTURE_BIPLANAR_8u_709_FullRange"},
    {"nv10", "PrPixelFormat_YUV_420_MPEG4_FRAME_PICTURE_BIPLANAR_8u_709_FullRange"},
    {"Nvi3", "PrPixelFormat_YVU_420_MPEG4_FIELD_PICTURE_BIPLANAR_8u_601"},
    {"Nv13", "PrPixelFormat_YVU_420_MPEG4_FRAME_PICTURE_BIPLANAR_8u_601"},
    {"Nvi1", "PrPixelFormat_YVU_420_MPEG4_FIELD_PICTURE_BIPLANAR_8u_601_FullRange"},
    {"Nv11", "PrPixelFormat_YVU_420_MPEG4_FRAME_PICTURE_BIPLANAR_8u_601_FullRange"},
    {"Nvi2", "PrPixelFormat_YVU_420_MPEG4_FIELD_PICTURE_BIPLANAR_8u_709"},
    {"Nv12", "PrPixelFormat_YVU_420_MPEG4_FRAME_PICTURE_BIPLANAR_8u_709"},
    {"Nvi0", "PrPixelFormat_YVU_420_MPEG4_FIELD_PICTURE_BIPLANAR_8u_709_FullRange"},
    {"Nv10", "PrPixelFormat_YVU_420_MPEG4_FRAME_PICTURE_BIPLANAR_8u_709_FullRange"},
    {"p0i0", "PrPixelFormat_YUV_420_MPEG4_FIELD_PICTURE_BIPLANAR_10u_as16u_709"},
    {"p010", "PrPixelFormat_YUV_420_MPEG4_FRAME_PICTURE_BIPLANAR_10u_as16u_709"},
    {"p0if", "PrPixelFormat_YUV_420_MPEG4_FIELD_PICTURE_BIPLANAR_10u_as16u_709_FullRange"},
    {"p01f", "PrPixelFormat_YUV_420_MPEG4_FRAME_PICTURE_BIPLANAR_10u_as16u_709_FullRange"},
    {"P0i0", "PrPixelFormat_YUV_420_MPEG4_FIELD_PICTURE_BIPLANAR_10u_as16u_2020"},
    {"P010", "PrPixelFormat_YUV_420_MPEG4_FRAME_PICTURE_BIPLANAR_10u_as16u_2020"},
    {"P0if", "PrPixelFormat_YUV_420_MPEG4_FIELD_PICTURE_BIPLANAR_10u_as16u_2020_FullRange"},
    {"P01f", "PrPixelFormat_YUV_420_MPEG4_FRAME_PICTURE_BIPLANAR_10u_as16u_2020_FullRange"},
    {"POi0", "PrPixelFormat_YUV_420_MPEG4_FIELD_PICTURE_BIPLANAR_10u_as16u_2020_HDR"},
    {"PO10", "PrPixelFormat_YUV_420_MPEG4_FRAME_PICTURE_BIPLANAR_10u_as16u_2020_HDR"},
    {"POif", "PrPixelFormat_YUV_420_MPEG4_FIELD_PICTURE_BIPLANAR_10u_as16u_2020_HDR_FullRange"},
    {"PO1f", "PrPixelFormat_YUV_420_MPEG4_FRAME_PICTURE_BIPLANAR_10u_as16u_2020_HDR_FullRange"},
    {"Phl0", "PrPixelFormat_YUV_420_MPEG4_FIELD_PICTURE_BIPLANAR_10u_as16u_2020_HDR_HLG"},
    {"PHL0", "PrPixelFormat_YUV_420_MPEG4_FRAME_PICTURE_BIPLANAR_10u_as16u_2020_HDR_HLG"},
    {"Phlf", "PrPixelFormat_YUV_420_MPEG4_FIELD_PICTURE_BIPLANAR_10u_as16u_2020_HDR_HLG_FullRange"},
    {"PHLf", "PrPixelFormat_YUV_420_MPEG4_FRAME_PICTURE_BIPLANAR_10u_as16u_2020_HDR_HLG_FullRange"},
};

constexpr DeliveredFormat kDeliveredFormats[] = {
    {"yuy2", "YUYV 4:2:2 [8] Rec.601",      4, 1, Family::kYuv422, false, true},
    {"yuy3", "YUYV 4:2:2 [8] Rec.709",      4, 2, Family::kYuv422, false, true},
    {"uyvy", "UYVY 4:2:2 [8] Rec.601",      5, 1, Family::kYuv422, false, true},
    {"uyv7", "UYVY 4:2:2 [8] Rec.709",      5, 2, Family::kYuv422, false, true},
    {"vuya", "VUYA 4:4:4:4 [8] Rec.601",   50, 1, Family::kYuv444, false, false},
    {"VUYA", "VUYA 4:4:4:4 [8] Rec.709",   50, 2, Family::kYuv444, false, false},
    {"vuyx", "VUYX 4:4:4 [8] Rec.601",     49, 1, Family::kYuv444, false, false},
    {"vux7", "VUYX 4:4:4 [8] Rec.709",     49, 2, Family::kYuv444, false, false},
    {"bgra", "BGRA [8]",                    2, 2, Family::kRgb,    false, false},
    {"argb", "ARGB [8]",                   19, 2, Family::kRgb,    false, false},
    {"bgrx", "BGRX [8]",                    1, 2, Family::kRgb,    false, false},
    {"xrgb", "XRGB [8]",                   16, 2, Family::kRgb,    false, false},
    {"v210", "v210 4:2:2 [10] Rec.601",    11, 1, Family::kYuv422, false, true},
    {"v211", "v210 4:2:2 [10] Rec.709",    11, 2, Family::kYuv422, false, true},
    {"RGB1", "RGB [10]",                   15, 2, Family::kRgb,    false, true},
    {"Bgra", "BGRA [16]",                  31, 2, Family::kRgb,    true,  false},
    {"Bgrx", "BGRX [16]",                  32, 2, Family::kRgb,    true,  false},
};
// clang-format on

}  // namespace

std::span<const HostFormat> hostFormats() {
    return kHostFormats;
}

std::span<const HostFormat> laterHostFormats() {
    return kLaterHostFormats;
}

std::uint32_t formatValue(const char* code) {
    std::uint32_t value = 0;
    for (int i = 3; i >= 0; --i) {
        value = value << 8 | static_cast<unsigned char>(code[i]);
    }
    return value;
}

std::span<const DeliveredFormat> deliveredFormats() {
    return kDeliveredFormats;
}

std::vector<std::string> deliveredCodes(std::initializer_list<Family> families) {
    std::vector<std::string> codes;
    for (const DeliveredFormat& format : kDeliveredFormats) {
        if (std::ranges::count(families, format.family) != 0) {
            codes.emplace_back(format.code);
        }
    }
    return codes;
}

std::size_t CodedType::payloadBytes(std::uint32_t width, std::uint32_t height) const {
    const std::size_t full = std::size_t{width} * height;
    const std::size_t chromaWidth = width / chromaStepX + (width % chromaStepX != 0);
    const std::size_t chromaHeight = height / chromaStepY + (height % chromaStepY != 0);
    std::size_t samples = full;
    if (model != Model::kGrey) {
        samples += 2 * chromaWidth * chromaHeight;
    }
    if (alpha) {
        samples += full;
    }
    return samples * (bits == 8 ? 1 : 2);
}

void PrintTo(const CodedType& type, std::ostream* out) {
    *out << type.tag;
}

const std::vector<CodedType>& codedTypes() {
    // clang-format off
    static const std::vector<CodedType> types{
        {"O8RA", "Orvantis 8-bit RGBA",                 102, "gbrap",       Model::kRgb,  true,  1, 1,  8, {}},
        {"O8RG", "Orvantis 8-bit RGB",                  101, "gbrp",        Model::kRgb,  false, 1, 1,  8, {}},
        {"O8YA", "Orvantis 8-bit YUVA 4:4:4:4",         106, "yuva444p",    Model::kYuv,  true,  1, 1,  8, {"vuya", "VUYA"}},
        {"O8Y4", "Orvantis 8-bit YUV 4:4:4",            103, "yuv444p",     Model::kYuv,  false, 1, 1,  8, {"vuyx", "vux7"}},
        {"O8Y2", "Orvantis 8-bit YUV 4:2:2",            104, "yuv422p",     Model::kYuv,  false, 2, 1,  8, {"yuy2", "yuy3", "uyvy", "uyv7"}},
        {"O8Y0", "Orvantis 8-bit YUV 4:2:0",            105, "yuv420p",     Model::kYuv,  false, 2, 2,  8, {"yuy2", "yuy3", "uyvy", "uyv7"}},
        {"O8G0", "Orvantis 8-bit YUV 4:0:0 greyscale",  107, "gray",        Model::kGrey, false, 1, 1,  8, {"yuy2", "yuy3", "uyvy", "uyv7"}},
        {"O0RA", "Orvantis 10-bit RGBA",                110, "gbrap10le",   Model::kRgb,  true,  1, 1, 10, {}},
        {"O0RG", "Orvantis 10-bit RGB",                 109, "gbrp10le",    Model::kRgb,  false, 1, 1, 10, {}},
        {"O0Y4", "Orvantis 10-bit YUV 4:4:4",           118, "yuv444p10le", Model::kYuv,  false, 1, 1, 10, {}},
        {"O0Y2", "Orvantis 10-bit YUV 4:2:2",           108, "yuv422p10le", Model::kYuv,  false, 2, 1, 10, {}},
        {"O0Y0", "Orvantis 10-bit YUV 4:2:0",           123, "yuv420p10le", Model::kYuv,  false, 2, 2, 10, {"v210", "v211"}},
        {"O0G0", "Orvantis 10-bit YUV 4:0:0 greyscale", 115, "gray10le",    Model::kGrey, false, 1, 1, 10, {}},
        {"O2RA", "Orvantis 12-bit RGBA",                112, "gbrap12le",   Model::kRgb,  true,  1, 1, 12, {}},
        {"O2RG", "Orvantis 12-bit RGB",                 111, "gbrp12le",    Model::kRgb,  false, 1, 1, 12, {}},
        {"O4RA", "Orvantis 14-bit RGBA",                114, nullptr,       Model::kRgb,  true,  1, 1, 14, {}},
        {"O4RG", "Orvantis 14-bit RGB",                 113, "gbrp14le",    Model::kRgb,  false, 1, 1, 14, {}},
    };
    // clang-format on
    return types;
}

}  // namespace formatlists
