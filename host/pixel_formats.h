// The host's pixel formats: 32-bit codes whose four characters stand lowest byte first, so that the value
// reads as text in memory. Case is significant: codes that differ in case only are different formats. File
// types and sub-types use the opposite order, see host/four_char_codes.h. Pure constants, used by the format
// tables and the name lookup.

#pragma once

#include <cstdint>

namespace host {

// The code with the four characters in memory order, `c0` in the lowest byte.
constexpr std::uint32_t pixelFormatCode(char c0, char c1, char c2, char c3) noexcept {
    return static_cast<std::uint32_t>(static_cast<unsigned char>(c0)) |
           (static_cast<std::uint32_t>(static_cast<unsigned char>(c1)) << 8) |
           (static_cast<std::uint32_t>(static_cast<unsigned char>(c2)) << 16) |
           (static_cast<std::uint32_t>(static_cast<unsigned char>(c3)) << 24);
}

// Accepts every format; has no characters.
inline constexpr std::uint32_t PrPixelFormat_Any = 0;

inline constexpr std::uint32_t PrPixelFormat_BGRA_4444_8u = pixelFormatCode('b', 'g', 'r', 'a');
static_assert(PrPixelFormat_BGRA_4444_8u == 0x61726762u);
inline constexpr std::uint32_t PrPixelFormat_VUYA_4444_8u = pixelFormatCode('v', 'u', 'y', 'a');
static_assert(PrPixelFormat_VUYA_4444_8u == 0x61797576u);
inline constexpr std::uint32_t PrPixelFormat_VUYA_4444_8u_709 = pixelFormatCode('V', 'U', 'Y', 'A');
static_assert(PrPixelFormat_VUYA_4444_8u_709 == 0x41595556u);
inline constexpr std::uint32_t PrPixelFormat_ARGB_4444_8u = pixelFormatCode('a', 'r', 'g', 'b');
static_assert(PrPixelFormat_ARGB_4444_8u == 0x62677261u);
inline constexpr std::uint32_t PrPixelFormat_BGRX_4444_8u = pixelFormatCode('b', 'g', 'r', 'x');
static_assert(PrPixelFormat_BGRX_4444_8u == 0x78726762u);
inline constexpr std::uint32_t PrPixelFormat_VUYX_4444_8u = pixelFormatCode('v', 'u', 'y', 'x');
static_assert(PrPixelFormat_VUYX_4444_8u == 0x78797576u);
inline constexpr std::uint32_t PrPixelFormat_VUYX_4444_8u_709 = pixelFormatCode('v', 'u', 'x', '7');
static_assert(PrPixelFormat_VUYX_4444_8u_709 == 0x37787576u);
inline constexpr std::uint32_t PrPixelFormat_XRGB_4444_8u = pixelFormatCode('x', 'r', 'g', 'b');
static_assert(PrPixelFormat_XRGB_4444_8u == 0x62677278u);
inline constexpr std::uint32_t PrPixelFormat_BGRP_4444_8u = pixelFormatCode('b', 'g', 'r', 'p');
static_assert(PrPixelFormat_BGRP_4444_8u == 0x70726762u);
inline constexpr std::uint32_t PrPixelFormat_VUYP_4444_8u = pixelFormatCode('v', 'u', 'y', 'p');
static_assert(PrPixelFormat_VUYP_4444_8u == 0x70797576u);
inline constexpr std::uint32_t PrPixelFormat_VUYP_4444_8u_709 = pixelFormatCode('v', 'u', 'p', '7');
static_assert(PrPixelFormat_VUYP_4444_8u_709 == 0x37707576u);
inline constexpr std::uint32_t PrPixelFormat_PRGB_4444_8u = pixelFormatCode('p', 'r', 'g', 'b');
static_assert(PrPixelFormat_PRGB_4444_8u == 0x62677270u);
inline constexpr std::uint32_t PrPixelFormat_BGRA_4444_16u = pixelFormatCode('B', 'g', 'r', 'a');
static_assert(PrPixelFormat_BGRA_4444_16u == 0x61726742u);
inline constexpr std::uint32_t PrPixelFormat_VUYA_4444_16u = pixelFormatCode('V', 'u', 'y', 'a');
static_assert(PrPixelFormat_VUYA_4444_16u == 0x61797556u);
inline constexpr std::uint32_t PrPixelFormat_ARGB_4444_16u = pixelFormatCode('A', 'r', 'g', 'b');
static_assert(PrPixelFormat_ARGB_4444_16u == 0x62677241u);
inline constexpr std::uint32_t PrPixelFormat_BGRX_4444_16u = pixelFormatCode('B', 'g', 'r', 'x');
static_assert(PrPixelFormat_BGRX_4444_16u == 0x78726742u);
inline constexpr std::uint32_t PrPixelFormat_XRGB_4444_16u = pixelFormatCode('X', 'r', 'g', 'b');
static_assert(PrPixelFormat_XRGB_4444_16u == 0x62677258u);
inline constexpr std::uint32_t PrPixelFormat_BGRP_4444_16u = pixelFormatCode('B', 'g', 'r', 'p');
static_assert(PrPixelFormat_BGRP_4444_16u == 0x70726742u);
inline constexpr std::uint32_t PrPixelFormat_PRGB_4444_16u = pixelFormatCode('P', 'r', 'g', 'b');
static_assert(PrPixelFormat_PRGB_4444_16u == 0x62677250u);
inline constexpr std::uint32_t PrPixelFormat_BGRA_4444_32f = pixelFormatCode('B', 'G', 'r', 'a');
static_assert(PrPixelFormat_BGRA_4444_32f == 0x61724742u);
inline constexpr std::uint32_t PrPixelFormat_VUYA_4444_32f = pixelFormatCode('V', 'U', 'y', 'a');
static_assert(PrPixelFormat_VUYA_4444_32f == 0x61795556u);
inline constexpr std::uint32_t PrPixelFormat_VUYA_4444_32f_709 = pixelFormatCode('v', 'U', 'Y', 'a');
static_assert(PrPixelFormat_VUYA_4444_32f_709 == 0x61595576u);
inline constexpr std::uint32_t PrPixelFormat_ARGB_4444_32f = pixelFormatCode('A', 'R', 'g', 'b');
static_assert(PrPixelFormat_ARGB_4444_32f == 0x62675241u);
inline constexpr std::uint32_t PrPixelFormat_BGRX_4444_32f = pixelFormatCode('B', 'G', 'r', 'x');
static_assert(PrPixelFormat_BGRX_4444_32f == 0x78724742u);
inline constexpr std::uint32_t PrPixelFormat_VUYX_4444_32f = pixelFormatCode('V', 'U', 'y', 'x');
static_assert(PrPixelFormat_VUYX_4444_32f == 0x78795556u);
inline constexpr std::uint32_t PrPixelFormat_VUYX_4444_32f_709 = pixelFormatCode('V', 'U', 'x', '7');
static_assert(PrPixelFormat_VUYX_4444_32f_709 == 0x37785556u);
inline constexpr std::uint32_t PrPixelFormat_XRGB_4444_32f = pixelFormatCode('X', 'R', 'g', 'b');
static_assert(PrPixelFormat_XRGB_4444_32f == 0x62675258u);
inline constexpr std::uint32_t PrPixelFormat_BGRP_4444_32f = pixelFormatCode('B', 'G', 'r', 'p');
static_assert(PrPixelFormat_BGRP_4444_32f == 0x70724742u);
inline constexpr std::uint32_t PrPixelFormat_VUYP_4444_32f = pixelFormatCode('V', 'U', 'y', 'p');
static_assert(PrPixelFormat_VUYP_4444_32f == 0x70795556u);
inline constexpr std::uint32_t PrPixelFormat_VUYP_4444_32f_709 = pixelFormatCode('V', 'U', 'p', '7');
static_assert(PrPixelFormat_VUYP_4444_32f_709 == 0x37705556u);
inline constexpr std::uint32_t PrPixelFormat_PRGB_4444_32f = pixelFormatCode('P', 'R', 'g', 'b');
static_assert(PrPixelFormat_PRGB_4444_32f == 0x62675250u);
inline constexpr std::uint32_t PrPixelFormat_RGB_444_10u = pixelFormatCode('R', 'G', 'B', '1');
static_assert(PrPixelFormat_RGB_444_10u == 0x31424752u);
inline constexpr std::uint32_t PrPixelFormat_YUYV_422_8u_601 = pixelFormatCode('y', 'u', 'y', '2');
static_assert(PrPixelFormat_YUYV_422_8u_601 == 0x32797579u);
inline constexpr std::uint32_t PrPixelFormat_YUYV_422_8u_709 = pixelFormatCode('y', 'u', 'y', '3');
static_assert(PrPixelFormat_YUYV_422_8u_709 == 0x33797579u);
inline constexpr std::uint32_t PrPixelFormat_UYVY_422_8u_601 = pixelFormatCode('u', 'y', 'v', 'y');
static_assert(PrPixelFormat_UYVY_422_8u_601 == 0x79767975u);
inline constexpr std::uint32_t PrPixelFormat_UYVY_422_8u_709 = pixelFormatCode('u', 'y', 'v', '7');
static_assert(PrPixelFormat_UYVY_422_8u_709 == 0x37767975u);
inline constexpr std::uint32_t PrPixelFormat_V210_422_10u_601 = pixelFormatCode('v', '2', '1', '0');
static_assert(PrPixelFormat_V210_422_10u_601 == 0x30313276u);
inline constexpr std::uint32_t PrPixelFormat_V210_422_10u_709 = pixelFormatCode('v', '2', '1', '1');
static_assert(PrPixelFormat_V210_422_10u_709 == 0x31313276u);
inline constexpr std::uint32_t PrPixelFormat_UYVY_422_32f_601 = pixelFormatCode('U', 'Y', 'v', 'y');
static_assert(PrPixelFormat_UYVY_422_32f_601 == 0x79765955u);
inline constexpr std::uint32_t PrPixelFormat_UYVY_422_32f_709 = pixelFormatCode('U', 'Y', 'v', '7');
static_assert(PrPixelFormat_UYVY_422_32f_709 == 0x37765955u);
inline constexpr std::uint32_t PrPixelFormat_BGRA_4444_32f_Linear = pixelFormatCode('B', 'G', 'a', 'L');
static_assert(PrPixelFormat_BGRA_4444_32f_Linear == 0x4C614742u);
inline constexpr std::uint32_t PrPixelFormat_BGRP_4444_32f_Linear = pixelFormatCode('B', 'G', 'p', 'L');
static_assert(PrPixelFormat_BGRP_4444_32f_Linear == 0x4C704742u);
inline constexpr std::uint32_t PrPixelFormat_BGRX_4444_32f_Linear = pixelFormatCode('B', 'G', 'x', 'L');
static_assert(PrPixelFormat_BGRX_4444_32f_Linear == 0x4C784742u);
inline constexpr std::uint32_t PrPixelFormat_ARGB_4444_32f_Linear = pixelFormatCode('A', 'R', 'g', 'L');
static_assert(PrPixelFormat_ARGB_4444_32f_Linear == 0x4C675241u);
inline constexpr std::uint32_t PrPixelFormat_PRGB_4444_32f_Linear = pixelFormatCode('P', 'R', 'g', 'L');
static_assert(PrPixelFormat_PRGB_4444_32f_Linear == 0x4C675250u);
inline constexpr std::uint32_t PrPixelFormat_XRGB_4444_32f_Linear = pixelFormatCode('X', 'R', 'g', 'L');
static_assert(PrPixelFormat_XRGB_4444_32f_Linear == 0x4C675258u);
inline constexpr std::uint32_t PrPixelFormat_YUV_420_MPEG2_FRAME_PICTURE_PLANAR_8u_601 =
    pixelFormatCode('y', 'v', '1', '2');
static_assert(PrPixelFormat_YUV_420_MPEG2_FRAME_PICTURE_PLANAR_8u_601 == 0x32317679u);
inline constexpr std::uint32_t PrPixelFormat_YUV_420_MPEG2_FIELD_PICTURE_PLANAR_8u_601 =
    pixelFormatCode('y', 'v', 'i', '2');
static_assert(PrPixelFormat_YUV_420_MPEG2_FIELD_PICTURE_PLANAR_8u_601 == 0x32697679u);
inline constexpr std::uint32_t PrPixelFormat_YUV_420_MPEG2_FRAME_PICTURE_PLANAR_8u_601_FullRange =
    pixelFormatCode('y', 'v', '1', 'f');
static_assert(PrPixelFormat_YUV_420_MPEG2_FRAME_PICTURE_PLANAR_8u_601_FullRange == 0x66317679u);
inline constexpr std::uint32_t PrPixelFormat_YUV_420_MPEG2_FIELD_PICTURE_PLANAR_8u_601_FullRange =
    pixelFormatCode('y', 'v', 'i', 'f');
static_assert(PrPixelFormat_YUV_420_MPEG2_FIELD_PICTURE_PLANAR_8u_601_FullRange == 0x66697679u);
inline constexpr std::uint32_t PrPixelFormat_YUV_420_MPEG2_FRAME_PICTURE_PLANAR_8u_709 =
    pixelFormatCode('y', 'v', '1', '7');
static_assert(PrPixelFormat_YUV_420_MPEG2_FRAME_PICTURE_PLANAR_8u_709 == 0x37317679u);
inline constexpr std::uint32_t PrPixelFormat_YUV_420_MPEG2_FIELD_PICTURE_PLANAR_8u_709 =
    pixelFormatCode('y', 'v', 'i', '7');
static_assert(PrPixelFormat_YUV_420_MPEG2_FIELD_PICTURE_PLANAR_8u_709 == 0x37697679u);
inline constexpr std::uint32_t PrPixelFormat_YUV_420_MPEG2_FRAME_PICTURE_PLANAR_8u_709_FullRange =
    pixelFormatCode('y', 'v', '1', 'F');
static_assert(PrPixelFormat_YUV_420_MPEG2_FRAME_PICTURE_PLANAR_8u_709_FullRange == 0x46317679u);
inline constexpr std::uint32_t PrPixelFormat_YUV_420_MPEG2_FIELD_PICTURE_PLANAR_8u_709_FullRange =
    pixelFormatCode('y', 'v', 'i', 'F');
static_assert(PrPixelFormat_YUV_420_MPEG2_FIELD_PICTURE_PLANAR_8u_709_FullRange == 0x46697679u);
inline constexpr std::uint32_t PrPixelFormat_YUV_420_MPEG4_FRAME_PICTURE_PLANAR_8u_601 =
    pixelFormatCode('Y', 'v', '1', '2');
static_assert(PrPixelFormat_YUV_420_MPEG4_FRAME_PICTURE_PLANAR_8u_601 == 0x32317659u);
inline constexpr std::uint32_t PrPixelFormat_YUV_420_MPEG4_FIELD_PICTURE_PLANAR_8u_601 =
    pixelFormatCode('Y', 'v', 'i', '2');
static_assert(PrPixelFormat_YUV_420_MPEG4_FIELD_PICTURE_PLANAR_8u_601 == 0x32697659u);
inline constexpr std::uint32_t PrPixelFormat_YUV_420_MPEG4_FRAME_PICTURE_PLANAR_8u_601_FullRange =
    pixelFormatCode('Y', 'v', '1', 'f');
static_assert(PrPixelFormat_YUV_420_MPEG4_FRAME_PICTURE_PLANAR_8u_601_FullRange == 0x66317659u);
inline constexpr std::uint32_t PrPixelFormat_YUV_420_MPEG4_FIELD_PICTURE_PLANAR_8u_601_FullRange =
    pixelFormatCode('Y', 'v', 'i', 'f');
static_assert(PrPixelFormat_YUV_420_MPEG4_FIELD_PICTURE_PLANAR_8u_601_FullRange == 0x66697659u);
inline constexpr std::uint32_t PrPixelFormat_YUV_420_MPEG4_FRAME_PICTURE_PLANAR_8u_709 =
    pixelFormatCode('Y', 'v', '1', '7');
static_assert(PrPixelFormat_YUV_420_MPEG4_FRAME_PICTURE_PLANAR_8u_709 == 0x37317659u);
inline constexpr std::uint32_t PrPixelFormat_YUV_420_MPEG4_FIELD_PICTURE_PLANAR_8u_709 =
    pixelFormatCode('Y', 'v', 'i', '7');
static_assert(PrPixelFormat_YUV_420_MPEG4_FIELD_PICTURE_PLANAR_8u_709 == 0x37697659u);
inline constexpr std::uint32_t PrPixelFormat_YUV_420_MPEG4_FRAME_PICTURE_PLANAR_8u_709_FullRange =
    pixelFormatCode('Y', 'v', '1', 'F');
static_assert(PrPixelFormat_YUV_420_MPEG4_FRAME_PICTURE_PLANAR_8u_709_FullRange == 0x46317659u);
inline constexpr std::uint32_t PrPixelFormat_YUV_420_MPEG4_FIELD_PICTURE_PLANAR_8u_709_FullRange =
    pixelFormatCode('Y', 'v', 'i', 'F');
static_assert(PrPixelFormat_YUV_420_MPEG4_FIELD_PICTURE_PLANAR_8u_709_FullRange == 0x46697659u);
inline constexpr std::uint32_t PrPixelFormat_NTSCDV25 = pixelFormatCode('d', 'v', 'n', '2');
static_assert(PrPixelFormat_NTSCDV25 == 0x326E7664u);
inline constexpr std::uint32_t PrPixelFormat_PALDV25 = pixelFormatCode('d', 'v', 'p', '2');
static_assert(PrPixelFormat_PALDV25 == 0x32707664u);
inline constexpr std::uint32_t PrPixelFormat_NTSCDV50 = pixelFormatCode('d', 'v', 'n', '5');
static_assert(PrPixelFormat_NTSCDV50 == 0x356E7664u);
inline constexpr std::uint32_t PrPixelFormat_PALDV50 = pixelFormatCode('d', 'v', 'p', '5');
static_assert(PrPixelFormat_PALDV50 == 0x35707664u);
inline constexpr std::uint32_t PrPixelFormat_NTSCDV100_720p = pixelFormatCode('d', 'v', 'n', '7');
static_assert(PrPixelFormat_NTSCDV100_720p == 0x376E7664u);
inline constexpr std::uint32_t PrPixelFormat_PALDV100_720p = pixelFormatCode('d', 'v', 'p', '7');
static_assert(PrPixelFormat_PALDV100_720p == 0x37707664u);
inline constexpr std::uint32_t PrPixelFormat_NTSCDV100_1080i = pixelFormatCode('d', 'v', 'n', '1');
static_assert(PrPixelFormat_NTSCDV100_1080i == 0x316E7664u);
inline constexpr std::uint32_t PrPixelFormat_PALDV100_1080i = pixelFormatCode('d', 'v', 'p', '1');
static_assert(PrPixelFormat_PALDV100_1080i == 0x31707664u);
inline constexpr std::uint32_t PrPixelFormat_Raw = pixelFormatCode('r', 'a', 'w', 'w');
static_assert(PrPixelFormat_Raw == 0x77776172u);
inline constexpr std::uint32_t PrPixelFormat_Invalid = pixelFormatCode('b', 'a', 'd', 'f');
static_assert(PrPixelFormat_Invalid == 0x66646162u);

// Formats that later hosts added. The importer never offers them; a log line can still name them.
inline constexpr std::uint32_t PrPixelFormat_RGB_444_12u_PQ_709 = pixelFormatCode('@', 'P', 'Q', '7');
static_assert(PrPixelFormat_RGB_444_12u_PQ_709 == 0x37515040u);
inline constexpr std::uint32_t PrPixelFormat_RGB_444_12u_PQ_P3 = pixelFormatCode('@', 'P', 'Q', 'P');
static_assert(PrPixelFormat_RGB_444_12u_PQ_P3 == 0x50515040u);
inline constexpr std::uint32_t PrPixelFormat_RGB_444_12u_PQ_2020 = pixelFormatCode('@', 'P', 'Q', '2');
static_assert(PrPixelFormat_RGB_444_12u_PQ_2020 == 0x32515040u);
inline constexpr std::uint32_t PrPixelFormat_RGB_444_10u_HLG = pixelFormatCode('@', 'H', 'L', '1');
static_assert(PrPixelFormat_RGB_444_10u_HLG == 0x314C4840u);
inline constexpr std::uint32_t PrPixelFormat_RGB_444_12u_HLG = pixelFormatCode('@', 'H', 'L', '2');
static_assert(PrPixelFormat_RGB_444_12u_HLG == 0x324C4840u);
inline constexpr std::uint32_t PrPixelFormat_YUV_420_MPEG4_FIELD_PICTURE_BIPLANAR_8u_601 =
    pixelFormatCode('n', 'v', 'i', '3');
static_assert(PrPixelFormat_YUV_420_MPEG4_FIELD_PICTURE_BIPLANAR_8u_601 == 0x3369766Eu);
inline constexpr std::uint32_t PrPixelFormat_YUV_420_MPEG4_FRAME_PICTURE_BIPLANAR_8u_601 =
    pixelFormatCode('n', 'v', '1', '3');
static_assert(PrPixelFormat_YUV_420_MPEG4_FRAME_PICTURE_BIPLANAR_8u_601 == 0x3331766Eu);
inline constexpr std::uint32_t PrPixelFormat_YUV_420_MPEG4_FIELD_PICTURE_BIPLANAR_8u_601_FullRange =
    pixelFormatCode('n', 'v', 'i', '1');
static_assert(PrPixelFormat_YUV_420_MPEG4_FIELD_PICTURE_BIPLANAR_8u_601_FullRange == 0x3169766Eu);
inline constexpr std::uint32_t PrPixelFormat_YUV_420_MPEG4_FRAME_PICTURE_BIPLANAR_8u_601_FullRange =
    pixelFormatCode('n', 'v', '1', '1');
static_assert(PrPixelFormat_YUV_420_MPEG4_FRAME_PICTURE_BIPLANAR_8u_601_FullRange == 0x3131766Eu);
inline constexpr std::uint32_t PrPixelFormat_YUV_420_MPEG4_FIELD_PICTURE_BIPLANAR_8u_709 =
    pixelFormatCode('n', 'v', 'i', '2');
static_assert(PrPixelFormat_YUV_420_MPEG4_FIELD_PICTURE_BIPLANAR_8u_709 == 0x3269766Eu);
inline constexpr std::uint32_t PrPixelFormat_YUV_420_MPEG4_FRAME_PICTURE_BIPLANAR_8u_709 =
    pixelFormatCode('n', 'v', '1', '2');
static_assert(PrPixelFormat_YUV_420_MPEG4_FRAME_PICTURE_BIPLANAR_8u_709 == 0x3231766Eu);
inline constexpr std::uint32_t PrPixelFormat_YUV_420_MPEG4_FIELD_PICTURE_BIPLANAR_8u_709_FullRange =
    pixelFormatCode('n', 'v', 'i', '0');
static_assert(PrPixelFormat_YUV_420_MPEG4_FIELD_PICTURE_BIPLANAR_8u_709_FullRange == 0x3069766Eu);
inline constexpr std::uint32_t PrPixelFormat_YUV_420_MPEG4_FRAME_PICTURE_BIPLANAR_8u_709_FullRange =
    pixelFormatCode('n', 'v', '1', '0');
static_assert(PrPixelFormat_YUV_420_MPEG4_FRAME_PICTURE_BIPLANAR_8u_709_FullRange == 0x3031766Eu);
inline constexpr std::uint32_t PrPixelFormat_YVU_420_MPEG4_FIELD_PICTURE_BIPLANAR_8u_601 =
    pixelFormatCode('N', 'v', 'i', '3');
static_assert(PrPixelFormat_YVU_420_MPEG4_FIELD_PICTURE_BIPLANAR_8u_601 == 0x3369764Eu);
inline constexpr std::uint32_t PrPixelFormat_YVU_420_MPEG4_FRAME_PICTURE_BIPLANAR_8u_601 =
    pixelFormatCode('N', 'v', '1', '3');
static_assert(PrPixelFormat_YVU_420_MPEG4_FRAME_PICTURE_BIPLANAR_8u_601 == 0x3331764Eu);
inline constexpr std::uint32_t PrPixelFormat_YVU_420_MPEG4_FIELD_PICTURE_BIPLANAR_8u_601_FullRange =
    pixelFormatCode('N', 'v', 'i', '1');
static_assert(PrPixelFormat_YVU_420_MPEG4_FIELD_PICTURE_BIPLANAR_8u_601_FullRange == 0x3169764Eu);
inline constexpr std::uint32_t PrPixelFormat_YVU_420_MPEG4_FRAME_PICTURE_BIPLANAR_8u_601_FullRange =
    pixelFormatCode('N', 'v', '1', '1');
static_assert(PrPixelFormat_YVU_420_MPEG4_FRAME_PICTURE_BIPLANAR_8u_601_FullRange == 0x3131764Eu);
inline constexpr std::uint32_t PrPixelFormat_YVU_420_MPEG4_FIELD_PICTURE_BIPLANAR_8u_709 =
    pixelFormatCode('N', 'v', 'i', '2');
static_assert(PrPixelFormat_YVU_420_MPEG4_FIELD_PICTURE_BIPLANAR_8u_709 == 0x3269764Eu);
inline constexpr std::uint32_t PrPixelFormat_YVU_420_MPEG4_FRAME_PICTURE_BIPLANAR_8u_709 =
    pixelFormatCode('N', 'v', '1', '2');
static_assert(PrPixelFormat_YVU_420_MPEG4_FRAME_PICTURE_BIPLANAR_8u_709 == 0x3231764Eu);
inline constexpr std::uint32_t PrPixelFormat_YVU_420_MPEG4_FIELD_PICTURE_BIPLANAR_8u_709_FullRange =
    pixelFormatCode('N', 'v', 'i', '0');
static_assert(PrPixelFormat_YVU_420_MPEG4_FIELD_PICTURE_BIPLANAR_8u_709_FullRange == 0x3069764Eu);
inline constexpr std::uint32_t PrPixelFormat_YVU_420_MPEG4_FRAME_PICTURE_BIPLANAR_8u_709_FullRange =
    pixelFormatCode('N', 'v', '1', '0');
static_assert(PrPixelFormat_YVU_420_MPEG4_FRAME_PICTURE_BIPLANAR_8u_709_FullRange == 0x3031764Eu);
inline constexpr std::uint32_t PrPixelFormat_YUV_420_MPEG4_FIELD_PICTURE_BIPLANAR_10u_as16u_709 =
    pixelFormatCode('p', '0', 'i', '0');
static_assert(PrPixelFormat_YUV_420_MPEG4_FIELD_PICTURE_BIPLANAR_10u_as16u_709 == 0x30693070u);
inline constexpr std::uint32_t PrPixelFormat_YUV_420_MPEG4_FRAME_PICTURE_BIPLANAR_10u_as16u_709 =
    pixelFormatCode('p', '0', '1', '0');
static_assert(PrPixelFormat_YUV_420_MPEG4_FRAME_PICTURE_BIPLANAR_10u_as16u_709 == 0x30313070u);
inline constexpr std::uint32_t PrPixelFormat_YUV_420_MPEG4_FIELD_PICTURE_BIPLANAR_10u_as16u_709_FullRange =
    pixelFormatCode('p', '0', 'i', 'f');
static_assert(PrPixelFormat_YUV_420_MPEG4_FIELD_PICTURE_BIPLANAR_10u_as16u_709_FullRange == 0x66693070u);
inline constexpr std::uint32_t PrPixelFormat_YUV_420_MPEG4_FRAME_PICTURE_BIPLANAR_10u_as16u_709_FullRange =
    pixelFormatCode('p', '0', '1', 'f');
static_assert(PrPixelFormat_YUV_420_MPEG4_FRAME_PICTURE_BIPLANAR_10u_as16u_709_FullRange == 0x66313070u);
inline constexpr std::uint32_t PrPixelFormat_YUV_420_MPEG4_FIELD_PICTURE_BIPLANAR_10u_as16u_2020 =
    pixelFormatCode('P', '0', 'i', '0');
static_assert(PrPixelFormat_YUV_420_MPEG4_FIELD_PICTURE_BIPLANAR_10u_as16u_2020 == 0x30693050u);
inline constexpr std::uint32_t PrPixelFormat_YUV_420_MPEG4_FRAME_PICTURE_BIPLANAR_10u_as16u_2020 =
    pixelFormatCode('P', '0', '1', '0');
static_assert(PrPixelFormat_YUV_420_MPEG4_FRAME_PICTURE_BIPLANAR_10u_as16u_2020 == 0x30313050u);
inline constexpr std::uint32_t PrPixelFormat_YUV_420_MPEG4_FIELD_PICTURE_BIPLANAR_10u_as16u_2020_FullRange =
    pixelFormatCode('P', '0', 'i', 'f');
static_assert(PrPixelFormat_YUV_420_MPEG4_FIELD_PICTURE_BIPLANAR_10u_as16u_2020_FullRange == 0x66693050u);
inline constexpr std::uint32_t PrPixelFormat_YUV_420_MPEG4_FRAME_PICTURE_BIPLANAR_10u_as16u_2020_FullRange =
    pixelFormatCode('P', '0', '1', 'f');
static_assert(PrPixelFormat_YUV_420_MPEG4_FRAME_PICTURE_BIPLANAR_10u_as16u_2020_FullRange == 0x66313050u);
inline constexpr std::uint32_t PrPixelFormat_YUV_420_MPEG4_FIELD_PICTURE_BIPLANAR_10u_as16u_2020_HDR =
    pixelFormatCode('P', 'O', 'i', '0');
static_assert(PrPixelFormat_YUV_420_MPEG4_FIELD_PICTURE_BIPLANAR_10u_as16u_2020_HDR == 0x30694F50u);
inline constexpr std::uint32_t PrPixelFormat_YUV_420_MPEG4_FRAME_PICTURE_BIPLANAR_10u_as16u_2020_HDR =
    pixelFormatCode('P', 'O', '1', '0');
static_assert(PrPixelFormat_YUV_420_MPEG4_FRAME_PICTURE_BIPLANAR_10u_as16u_2020_HDR == 0x30314F50u);
inline constexpr std::uint32_t
    PrPixelFormat_YUV_420_MPEG4_FIELD_PICTURE_BIPLANAR_10u_as16u_2020_HDR_FullRange =
        pixelFormatCode('P', 'O', 'i', 'f');
static_assert(PrPixelFormat_YUV_420_MPEG4_FIELD_PICTURE_BIPLANAR_10u_as16u_2020_HDR_FullRange == 0x66694F50u);
inline constexpr std::uint32_t
    PrPixelFormat_YUV_420_MPEG4_FRAME_PICTURE_BIPLANAR_10u_as16u_2020_HDR_FullRange =
        pixelFormatCode('P', 'O', '1', 'f');
static_assert(PrPixelFormat_YUV_420_MPEG4_FRAME_PICTURE_BIPLANAR_10u_as16u_2020_HDR_FullRange == 0x66314F50u);
inline constexpr std::uint32_t PrPixelFormat_YUV_420_MPEG4_FIELD_PICTURE_BIPLANAR_10u_as16u_2020_HDR_HLG =
    pixelFormatCode('P', 'h', 'l', '0');
static_assert(PrPixelFormat_YUV_420_MPEG4_FIELD_PICTURE_BIPLANAR_10u_as16u_2020_HDR_HLG == 0x306C6850u);
inline constexpr std::uint32_t PrPixelFormat_YUV_420_MPEG4_FRAME_PICTURE_BIPLANAR_10u_as16u_2020_HDR_HLG =
    pixelFormatCode('P', 'H', 'L', '0');
static_assert(PrPixelFormat_YUV_420_MPEG4_FRAME_PICTURE_BIPLANAR_10u_as16u_2020_HDR_HLG == 0x304C4850u);
inline constexpr std::uint32_t
    PrPixelFormat_YUV_420_MPEG4_FIELD_PICTURE_BIPLANAR_10u_as16u_2020_HDR_HLG_FullRange =
        pixelFormatCode('P', 'h', 'l', 'f');
static_assert(PrPixelFormat_YUV_420_MPEG4_FIELD_PICTURE_BIPLANAR_10u_as16u_2020_HDR_HLG_FullRange ==
              0x666C6850u);
inline constexpr std::uint32_t
    PrPixelFormat_YUV_420_MPEG4_FRAME_PICTURE_BIPLANAR_10u_as16u_2020_HDR_HLG_FullRange =
        pixelFormatCode('P', 'H', 'L', 'f');
static_assert(PrPixelFormat_YUV_420_MPEG4_FRAME_PICTURE_BIPLANAR_10u_as16u_2020_HDR_HLG_FullRange ==
              0x664C4850u);

}  // namespace host
