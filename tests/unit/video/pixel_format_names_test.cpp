// The names of the host's pixel formats, against a list of values and names of its own.
#include "video/pixel_format_names.h"

#include <gtest/gtest.h>

#include <cstdint>
#include <set>
#include <string>

namespace orvantis {
namespace {

struct NamedFormat {
    std::uint32_t value;
    const char* name;
};

constexpr NamedFormat kFormats[]{
    // clang-format off
    {0x61726762, "PrPixelFormat_BGRA_4444_8u"},  // bgra
    {0x61797576, "PrPixelFormat_VUYA_4444_8u"},  // vuya
    {0x41595556, "PrPixelFormat_VUYA_4444_8u_709"},  // VUYA
    {0x62677261, "PrPixelFormat_ARGB_4444_8u"},  // argb
    {0x78726762, "PrPixelFormat_BGRX_4444_8u"},  // bgrx
    {0x78797576, "PrPixelFormat_VUYX_4444_8u"},  // vuyx
    {0x37787576, "PrPixelFormat_VUYX_4444_8u_709"},  // vux7
    {0x62677278, "PrPixelFormat_XRGB_4444_8u"},  // xrgb
    {0x70726762, "PrPixelFormat_BGRP_4444_8u"},  // bgrp
    {0x70797576, "PrPixelFormat_VUYP_4444_8u"},  // vuyp
    {0x37707576, "PrPixelFormat_VUYP_4444_8u_709"},  // vup7
    {0x62677270, "PrPixelFormat_PRGB_4444_8u"},  // prgb
    {0x61726742, "PrPixelFormat_BGRA_4444_16u"},  // Bgra
    {0x61797556, "PrPixelFormat_VUYA_4444_16u"},  // Vuya
    {0x62677241, "PrPixelFormat_ARGB_4444_16u"},  // Argb
    {0x78726742, "PrPixelFormat_BGRX_4444_16u"},  // Bgrx
    {0x62677258, "PrPixelFormat_XRGB_4444_16u"},  // Xrgb
    {0x70726742, "PrPixelFormat_BGRP_4444_16u"},  // Bgrp
    {0x62677250, "PrPixelFormat_PRGB_4444_16u"},  // Prgb
    {0x61724742, "PrPixelFormat_BGRA_4444_32f"},  // BGra
    {0x61795556, "PrPixelFormat_VUYA_4444_32f"},  // VUya
    {0x61595576, "PrPixelFormat_VUYA_4444_32f_709"},  // vUYa
    {0x62675241, "PrPixelFormat_ARGB_4444_32f"},  // ARgb
    {0x78724742, "PrPixelFormat_BGRX_4444_32f"},  // BGrx
    {0x78795556, "PrPixelFormat_VUYX_4444_32f"},  // VUyx
    {0x37785556, "PrPixelFormat_VUYX_4444_32f_709"},  // VUx7
    {0x62675258, "PrPixelFormat_XRGB_4444_32f"},  // XRgb
    {0x70724742, "PrPixelFormat_BGRP_4444_32f"},  // BGrp
    {0x70795556, "PrPixelFormat_VUYP_4444_32f"},  // VUyp
    {0x37705556, "PrPixelFormat_VUYP_4444_32f_709"},  // VUp7
    {0x62675250, "PrPixelFormat_PRGB_4444_32f"},  // PRgb
    {0x31424752, "PrPixelFormat_RGB_444_10u"},  // RGB1
    {0x32797579, "PrPixelFormat_YUYV_422_8u_601"},  // yuy2
    {0x33797579, "PrPixelFormat_YUYV_422_8u_709"},  // yuy3
    {0x79767975, "PrPixelFormat_UYVY_422_8u_601"},  // uyvy
    {0x37767975, "PrPixelFormat_UYVY_422_8u_709"},  // uyv7
    {0x30313276, "PrPixelFormat_V210_422_10u_601"},  // v210
    {0x31313276, "PrPixelFormat_V210_422_10u_709"},  // v211
    {0x79765955, "PrPixelFormat_UYVY_422_32f_601"},  // UYvy
    {0x37765955, "PrPixelFormat_UYVY_422_32f_709"},  // UYv7
    {0x4C614742, "PrPixelFormat_BGRA_4444_32f_Linear"},  // BGaL
    {0x4C704742, "PrPixelFormat_BGRP_4444_32f_Linear"},  // BGpL
    {0x4C784742, "PrPixelFormat_BGRX_4444_32f_Linear"},  // BGxL
    {0x4C675241, "PrPixelFormat_ARGB_4444_32f_Linear"},  // ARgL
    {0x4C675250, "PrPixelFormat_PRGB_4444_32f_Linear"},  // PRgL
    {0x4C675258, "PrPixelFormat_XRGB_4444_32f_Linear"},  // XRgL
    {0x32317679, "PrPixelFormat_YUV_420_MPEG2_FRAME_PICTURE_PLANAR_8u_601"},  // yv12
    {0x32697679, "PrPixelFormat_YUV_420_MPEG2_FIELD_PICTURE_PLANAR_8u_601"},  // yvi2
    {0x66317679, "PrPixelFormat_YUV_420_MPEG2_FRAME_PICTURE_PLANAR_8u_601_FullRange"},  // yv1f
    {0x66697679, "PrPixelFormat_YUV_420_MPEG2_FIELD_PICTURE_PLANAR_8u_601_FullRange"},  // yvif
    {0x37317679, "PrPixelFormat_YUV_420_MPEG2_FRAME_PICTURE_PLANAR_8u_709"},  // yv17
    {0x37697679, "PrPixelFormat_YUV_420_MPEG2_FIELD_PICTURE_PLANAR_8u_709"},  // yvi7
    {0x46317679, "PrPixelFormat_YUV_420_MPEG2_FRAME_PICTURE_PLANAR_8u_709_FullRange"},  // yv1F
    {0x46697679, "PrPixelFormat_YUV_420_MPEG2_FIELD_PICTURE_PLANAR_8u_709_FullRange"},  // yviF
    {0x32317659, "PrPixelFormat_YUV_420_MPEG4_FRAME_PICTURE_PLANAR_8u_601"},  // Yv12
    {0x32697659, "PrPixelFormat_YUV_420_MPEG4_FIELD_PICTURE_PLANAR_8u_601"},  // Yvi2
    {0x66317659, "PrPixelFormat_YUV_420_MPEG4_FRAME_PICTURE_PLANAR_8u_601_FullRange"},  // Yv1f
    {0x66697659, "PrPixelFormat_YUV_420_MPEG4_FIELD_PICTURE_PLANAR_8u_601_FullRange"},  // Yvif
    {0x37317659, "PrPixelFormat_YUV_420_MPEG4_FRAME_PICTURE_PLANAR_8u_709"},  // Yv17
    {0x37697659, "PrPixelFormat_YUV_420_MPEG4_FIELD_PICTURE_PLANAR_8u_709"},  // Yvi7
    {0x46317659, "PrPixelFormat_YUV_420_MPEG4_FRAME_PICTURE_PLANAR_8u_709_FullRange"},  // Yv1F
    {0x46697659, "PrPixelFormat_YUV_420_MPEG4_FIELD_PICTURE_PLANAR_8u_709_FullRange"},  // YviF
    {0x326E7664, "PrPixelFormat_NTSCDV25"},  // dvn2
    {0x32707664, "PrPixelFormat_PALDV25"},  // dvp2
    {0x356E7664, "PrPixelFormat_NTSCDV50"},  // dvn5
    {0x35707664, "PrPixelFormat_PALDV50"},  // dvp5
    {0x376E7664, "PrPixelFormat_NTSCDV100_720p"},  // dvn7
    {0x37707664, "PrPixelFormat_PALDV100_720p"},  // dvp7
    {0x316E7664, "PrPixelFormat_NTSCDV100_1080i"},  // dvn1
    {0x31707664, "PrPixelFormat_PALDV100_1080i"},  // dvp1
    {0x77776172, "PrPixelFormat_Raw"},  // raww
    {0x66646162, "PrPixelFormat_Invalid"},  // badf
    {0x00000000, "PrPixelFormat_Any"},
    {0x37515040, "PrPixelFormat_RGB_444_12u_PQ_709"},  // @PQ7
    {0x50515040, "PrPixelFormat_RGB_444_12u_PQ_P3"},  // @PQP
    {0x32515040, "PrPixelFormat_RGB_444_12u_PQ_2020"},  // @PQ2
    {0x314C4840, "PrPixelFormat_RGB_444_10u_HLG"},  // @HL1
    {0x324C4840, "PrPixelFormat_RGB_444_12u_HLG"},  // @HL2
    {0x3369766E, "PrPixelFormat_YUV_420_MPEG4_FIELD_PICTURE_BIPLANAR_8u_601"},  // nvi3
    {0x3331766E, "PrPixelFormat_YUV_420_MPEG4_FRAME_PICTURE_BIPLANAR_8u_601"},  // nv13
    {0x3169766E, "PrPixelFormat_YUV_420_MPEG4_FIELD_PICTURE_BIPLANAR_8u_601_FullRange"},  // nvi1
    {0x3131766E, "PrPixelFormat_YUV_420_MPEG4_FRAME_PICTURE_BIPLANAR_8u_601_FullRange"},  // nv11
    {0x3269766E, "PrPixelFormat_YUV_420_MPEG4_FIELD_PICTURE_BIPLANAR_8u_709"},  // nvi2
    {0x3231766E, "PrPixelFormat_YUV_420_MPEG4_FRAME_PICTURE_BIPLANAR_8u_709"},  // nv12
    {0x3069766E, "PrPixelFormat_YUV_420_MPEG4_FIELD_PICTURE_BIPLANAR_8u_709_FullRange"},  // nvi0
    {0x3031766E, "PrPixelFormat_YUV_420_MPEG4_FRAME_PICTURE_BIPLANAR_8u_709_FullRange"},  // nv10
    {0x3369764E, "PrPixelFormat_YVU_420_MPEG4_FIELD_PICTURE_BIPLANAR_8u_601"},  // Nvi3
    {0x3331764E, "PrPixelFormat_YVU_420_MPEG4_FRAME_PICTURE_BIPLANAR_8u_601"},  // Nv13
    {0x3169764E, "PrPixelFormat_YVU_420_MPEG4_FIELD_PICTURE_BIPLANAR_8u_601_FullRange"},  // Nvi1
    {0x3131764E, "PrPixelFormat_YVU_420_MPEG4_FRAME_PICTURE_BIPLANAR_8u_601_FullRange"},  // Nv11
    {0x3269764E, "PrPixelFormat_YVU_420_MPEG4_FIELD_PICTURE_BIPLANAR_8u_709"},  // Nvi2
    {0x3231764E, "PrPixelFormat_YVU_420_MPEG4_FRAME_PICTURE_BIPLANAR_8u_709"},  // Nv12
    {0x3069764E, "PrPixelFormat_YVU_420_MPEG4_FIELD_PICTURE_BIPLANAR_8u_709_FullRange"},  // Nvi0
    {0x3031764E, "PrPixelFormat_YVU_420_MPEG4_FRAME_PICTURE_BIPLANAR_8u_709_FullRange"},  // Nv10
    {0x30693070, "PrPixelFormat_YUV_420_MPEG4_FIELD_PICTURE_BIPLANAR_10u_as16u_709"},  // p0i0
    {0x30313070, "PrPixelFormat_YUV_420_MPEG4_FRAME_PICTURE_BIPLANAR_10u_as16u_709"},  // p010
    {0x66693070, "PrPixelFormat_YUV_420_MPEG4_FIELD_PICTURE_BIPLANAR_10u_as16u_709_FullRange"},  // p0if
    {0x66313070, "PrPixelFormat_YUV_420_MPEG4_FRAME_PICTURE_BIPLANAR_10u_as16u_709_FullRange"},  // p01f
    {0x30693050, "PrPixelFormat_YUV_420_MPEG4_FIELD_PICTURE_BIPLANAR_10u_as16u_2020"},  // P0i0
    {0x30313050, "PrPixelFormat_YUV_420_MPEG4_FRAME_PICTURE_BIPLANAR_10u_as16u_2020"},  // P010
    {0x66693050, "PrPixelFormat_YUV_420_MPEG4_FIELD_PICTURE_BIPLANAR_10u_as16u_2020_FullRange"},  // P0if
    {0x66313050, "PrPixelFormat_YUV_420_MPEG4_FRAME_PICTURE_BIPLANAR_10u_as16u_2020_FullRange"},  // P01f
    {0x30694F50, "PrPixelFormat_YUV_420_MPEG4_FIELD_PICTURE_BIPLANAR_10u_as16u_2020_HDR"},  // POi0
    {0x30314F50, "PrPixelFormat_YUV_420_MPEG4_FRAME_PICTURE_BIPLANAR_10u_as16u_2020_HDR"},  // PO10
    {0x66694F50, "PrPixelFormat_YUV_420_MPEG4_FIELD_PICTURE_BIPLANAR_10u_as16u_2020_HDR_FullRange"},  // POif
    {0x66314F50, "PrPixelFormat_YUV_420_MPEG4_FRAME_PICTURE_BIPLANAR_10u_as16u_2020_HDR_FullRange"},  // PO1f
    {0x306C6850, "PrPixelFormat_YUV_420_MPEG4_FIELD_PICTURE_BIPLANAR_10u_as16u_2020_HDR_HLG"},  // Phl0
    {0x304C4850, "PrPixelFormat_YUV_420_MPEG4_FRAME_PICTURE_BIPLANAR_10u_as16u_2020_HDR_HLG"},  // PHL0
    {0x666C6850, "PrPixelFormat_YUV_420_MPEG4_FIELD_PICTURE_BIPLANAR_10u_as16u_2020_HDR_HLG_FullRange"},  // Phlf
    {0x664C4850, "PrPixelFormat_YUV_420_MPEG4_FRAME_PICTURE_BIPLANAR_10u_as16u_2020_HDR_HLG_FullRange"},  // PHLf
    // clang-format on
};

TEST(PixelFormatName, EveryEnumeratorOfTheHostIsNamed) {
    EXPECT_EQ(std::size(kFormats), 110U);
    for (const NamedFormat& format : kFormats) {
        EXPECT_STREQ(pixelFormatName(format.value), format.name) << std::hex << format.value;
    }
}

TEST(PixelFormatName, ValuesAndNamesAreUnique) {
    std::set<std::uint32_t> values;
    std::set<std::string> names;
    for (const NamedFormat& format : kFormats) {
        values.insert(format.value);
        names.insert(pixelFormatName(format.value));
    }
    EXPECT_EQ(values.size(), std::size(kFormats));
    EXPECT_EQ(names.size(), std::size(kFormats));
}

TEST(PixelFormatName, OtherValuesAreQuestionMarks) {
    EXPECT_STREQ(pixelFormatName(1), "????");
    EXPECT_STREQ(pixelFormatName(0xFFFFFFFF), "????");
    EXPECT_STREQ(pixelFormatName(0x62677262), "????");  // "brgb"
    EXPECT_STREQ(pixelFormatName(0x61726742 + 1), "????");
    EXPECT_STREQ(pixelFormatName(0x41524742), "????");  // "BGRA": case tells formats apart
    EXPECT_STREQ(pixelFormatName(0x62677261 ^ 0xFF000000), "????");
}

}  // namespace
}  // namespace orvantis
