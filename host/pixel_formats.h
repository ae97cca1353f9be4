// The host's pixel formats: code, name and memory layout of each, said once. The format tables, the names in
// the log, the listing at start and the simulated host all take them from here.
//
// A code is 32 bits whose four characters stand lowest byte first, so that the value reads as text in memory.
// Case is significant: codes that differ in case only are different formats. File types and sub-types use the
// opposite order, see host/four_char_codes.h. Pure constants; any thread.

#pragma once

#include <cstdint>

#include "host/named_codes.h"

namespace host {

/// The code with the four characters in memory order, `c0` in the lowest byte.
constexpr std::uint32_t pixelFormatCode(char c0, char c1, char c2, char c3) noexcept {
    return static_cast<std::uint32_t>(static_cast<unsigned char>(c0)) |
           (static_cast<std::uint32_t>(static_cast<unsigned char>(c1)) << 8) |
           (static_cast<std::uint32_t>(static_cast<unsigned char>(c2)) << 16) |
           (static_cast<std::uint32_t>(static_cast<unsigned char>(c3)) << 24);
}

/// What the host is documented to answer about a format.
enum PixelFormatProperty : std::uint32_t { kCompressed = 1, kAlpha = 2, kTopRowFirst = 4 };

struct PixelFormat {
    constexpr PixelFormat(const char (&text)[5], const char* hostsName, std::int32_t pixels = 0,
                          std::int32_t bytes = 0, std::uint32_t properties = 0) noexcept
        : code(pixelFormatCode(text[0], text[1], text[2], text[3])),
          name(hostsName),
          pixelsPerGroup(pixels),
          bytesPerGroup(bytes),
          compressed((properties & kCompressed) != 0),
          alpha((properties & kAlpha) != 0),
          topLeft((properties & kTopRowFirst) != 0) {}

    std::uint32_t code;
    const char* name;             ///< the host's identifier
    std::int32_t pixelsPerGroup;  ///< pixels that share one group of bytes; 0 = planar, compressed or none
    std::int32_t bytesPerGroup;
    bool compressed;
    bool alpha;
    bool topLeft;
};

/// Text of the code, name, pixels and bytes of a group, properties; in the order in which the log lists them
/// at start. Bottom rows come first in the formats with "_4444_" in their name and in no other.
// clang-format off
inline constexpr PixelFormat kPixelFormats[] = {
    {"VUyp", "PrPixelFormat_VUYP_4444_32f", 1, 16, kAlpha},
    {"VUp7", "PrPixelFormat_VUYP_4444_32f_709", 1, 16, kAlpha},
    {"PRgb", "PrPixelFormat_PRGB_4444_32f", 1, 16, kAlpha},
    {"RGB1", "PrPixelFormat_RGB_444_10u", 1, 4, kTopRowFirst},
    {"yv1F", "PrPixelFormat_YUV_420_MPEG2_FRAME_PICTURE_PLANAR_8u_709_FullRange", 0, 0, kTopRowFirst},
    {"yviF", "PrPixelFormat_YUV_420_MPEG2_FIELD_PICTURE_PLANAR_8u_709_FullRange", 0, 0, kTopRowFirst},
    {"Yv12", "PrPixelFormat_YUV_420_MPEG4_FRAME_PICTURE_PLANAR_8u_601", 0, 0, kTopRowFirst},
    {"Yvi2", "PrPixelFormat_YUV_420_MPEG4_FIELD_PICTURE_PLANAR_8u_601", 0, 0, kTopRowFirst},
    {"PRgL", "PrPixelFormat_PRGB_4444_32f_Linear", 1, 16, kAlpha},
    {"XRgL", "PrPixelFormat_XRGB_4444_32f_Linear", 1, 16, 0},
    {"yv12", "PrPixelFormat_YUV_420_MPEG2_FRAME_PICTURE_PLANAR_8u_601", 0, 0, kTopRowFirst},
    {"yvi2", "PrPixelFormat_YUV_420_MPEG2_FIELD_PICTURE_PLANAR_8u_601", 0, 0, kTopRowFirst},
    {"Yv1F", "PrPixelFormat_YUV_420_MPEG4_FRAME_PICTURE_PLANAR_8u_709_FullRange", 0, 0, kTopRowFirst},
    {"YviF", "PrPixelFormat_YUV_420_MPEG4_FIELD_PICTURE_PLANAR_8u_709_FullRange", 0, 0, kTopRowFirst},
    {"dvn2", "PrPixelFormat_NTSCDV25", 0, 0, kCompressed | kTopRowFirst},
    {"dvp2", "PrPixelFormat_PALDV25", 0, 0, kCompressed | kTopRowFirst},
    {"Yv1f", "PrPixelFormat_YUV_420_MPEG4_FRAME_PICTURE_PLANAR_8u_601_FullRange", 0, 0, kTopRowFirst},
    {"Yvif", "PrPixelFormat_YUV_420_MPEG4_FIELD_PICTURE_PLANAR_8u_601_FullRange", 0, 0, kTopRowFirst},
    {"Yv17", "PrPixelFormat_YUV_420_MPEG4_FRAME_PICTURE_PLANAR_8u_709", 0, 0, kTopRowFirst},
    {"Yvi7", "PrPixelFormat_YUV_420_MPEG4_FIELD_PICTURE_PLANAR_8u_709", 0, 0, kTopRowFirst},
    {"yv1f", "PrPixelFormat_YUV_420_MPEG2_FRAME_PICTURE_PLANAR_8u_601_FullRange", 0, 0, kTopRowFirst},
    {"yvif", "PrPixelFormat_YUV_420_MPEG2_FIELD_PICTURE_PLANAR_8u_601_FullRange", 0, 0, kTopRowFirst},
    {"yv17", "PrPixelFormat_YUV_420_MPEG2_FRAME_PICTURE_PLANAR_8u_709", 0, 0, kTopRowFirst},
    {"yvi7", "PrPixelFormat_YUV_420_MPEG2_FIELD_PICTURE_PLANAR_8u_709", 0, 0, kTopRowFirst},
    {"dvn5", "PrPixelFormat_NTSCDV50", 0, 0, kCompressed | kTopRowFirst},
    {"dvp5", "PrPixelFormat_PALDV50", 0, 0, kCompressed | kTopRowFirst},
    {"dvn7", "PrPixelFormat_NTSCDV100_720p", 0, 0, kCompressed | kTopRowFirst},
    {"dvp7", "PrPixelFormat_PALDV100_720p", 0, 0, kCompressed | kTopRowFirst},
    {"v210", "PrPixelFormat_V210_422_10u_601", 6, 16, kTopRowFirst},
    {"v211", "PrPixelFormat_V210_422_10u_709", 6, 16, kTopRowFirst},
    {"UYvy", "PrPixelFormat_UYVY_422_32f_601", 2, 16, kTopRowFirst},
    {"UYv7", "PrPixelFormat_UYVY_422_32f_709", 2, 16, kTopRowFirst},
    {"yuy2", "PrPixelFormat_YUYV_422_8u_601", 2, 4, kTopRowFirst},
    {"yuy3", "PrPixelFormat_YUYV_422_8u_709", 2, 4, kTopRowFirst},
    {"uyvy", "PrPixelFormat_UYVY_422_8u_601", 2, 4, kTopRowFirst},
    {"uyv7", "PrPixelFormat_UYVY_422_8u_709", 2, 4, kTopRowFirst},
    {"BGaL", "PrPixelFormat_BGRA_4444_32f_Linear", 1, 16, kAlpha},
    {"BGpL", "PrPixelFormat_BGRP_4444_32f_Linear", 1, 16, kAlpha},
    {"BGxL", "PrPixelFormat_BGRX_4444_32f_Linear", 1, 16, 0},
    {"ARgL", "PrPixelFormat_ARGB_4444_32f_Linear", 1, 16, kAlpha},
    {"Xrgb", "PrPixelFormat_XRGB_4444_16u", 1, 8, 0},
    {"Bgrp", "PrPixelFormat_BGRP_4444_16u", 1, 8, kAlpha},
    {"Prgb", "PrPixelFormat_PRGB_4444_16u", 1, 8, kAlpha},
    {"BGra", "PrPixelFormat_BGRA_4444_32f", 1, 16, kAlpha},
    {"bgra", "PrPixelFormat_BGRA_4444_8u", 1, 4, kAlpha},
    {"vuya", "PrPixelFormat_VUYA_4444_8u", 1, 4, kAlpha},
    {"VUYA", "PrPixelFormat_VUYA_4444_8u_709", 1, 4, kAlpha},
    {"argb", "PrPixelFormat_ARGB_4444_8u", 1, 4, kAlpha},
    {"bgrp", "PrPixelFormat_BGRP_4444_8u", 1, 4, kAlpha},
    {"vuyp", "PrPixelFormat_VUYP_4444_8u", 1, 4, kAlpha},
    {"vup7", "PrPixelFormat_VUYP_4444_8u_709", 1, 4, kAlpha},
    {"prgb", "PrPixelFormat_PRGB_4444_8u", 1, 4, kAlpha},
    {"bgrx", "PrPixelFormat_BGRX_4444_8u", 1, 4, 0},
    {"vuyx", "PrPixelFormat_VUYX_4444_8u", 1, 4, 0},
    {"vux7", "PrPixelFormat_VUYX_4444_8u_709", 1, 4, 0},
    {"xrgb", "PrPixelFormat_XRGB_4444_8u", 1, 4, 0},
    {"dvn1", "PrPixelFormat_NTSCDV100_1080i", 0, 0, kCompressed | kTopRowFirst},
    {"dvp1", "PrPixelFormat_PALDV100_1080i", 0, 0, kCompressed | kTopRowFirst},
    {"raww", "PrPixelFormat_Raw", 0, 0, kTopRowFirst},
    {"badf", "PrPixelFormat_Invalid", 0, 0, kTopRowFirst},
    {"VUyx", "PrPixelFormat_VUYX_4444_32f", 1, 16, 0},
    {"VUx7", "PrPixelFormat_VUYX_4444_32f_709", 1, 16, 0},
    {"XRgb", "PrPixelFormat_XRGB_4444_32f", 1, 16, 0},
    {"BGrp", "PrPixelFormat_BGRP_4444_32f", 1, 16, kAlpha},
    {"VUya", "PrPixelFormat_VUYA_4444_32f", 1, 16, kAlpha},
    {"vUYa", "PrPixelFormat_VUYA_4444_32f_709", 1, 16, kAlpha},
    {"ARgb", "PrPixelFormat_ARGB_4444_32f", 1, 16, kAlpha},
    {"BGrx", "PrPixelFormat_BGRX_4444_32f", 1, 16, 0},
    {"Bgra", "PrPixelFormat_BGRA_4444_16u", 1, 8, kAlpha},
    {"Vuya", "PrPixelFormat_VUYA_4444_16u", 1, 8, kAlpha},
    {"Argb", "PrPixelFormat_ARGB_4444_16u", 1, 8, kAlpha},
    {"Bgrx", "PrPixelFormat_BGRX_4444_16u", 1, 8, 0},
};

/// Formats that later hosts added. The importer never offers them and nobody asks about them; a later host may
/// offer them in a request, and the log can then still name them.
inline constexpr PixelFormat kLaterPixelFormats[] = {
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
// clang-format on

/// Accepts every format; has no characters.
inline constexpr std::uint32_t PrPixelFormat_Any = 0;

/// "PrPixelFormat_BGRA_4444_8u" and so on; "????" for a value that the host does not define. Static string.
constexpr const char* pixelFormatName(std::uint32_t code) noexcept {
    if (code == PrPixelFormat_Any) {
        return "PrPixelFormat_Any";
    }
    const char* const name = findName(kPixelFormats, code);
    return name != nullptr ? name : nameOrUnknown(kLaterPixelFormats, code);
}

// A constant for each format that code names: its code, looked up by its own name when compiling.
#define ORVANTIS_HOST_PIXEL_FORMAT(name) inline constexpr std::uint32_t name = codeNamed(kPixelFormats, #name)

// Those that the importer delivers.
ORVANTIS_HOST_PIXEL_FORMAT(PrPixelFormat_YUYV_422_8u_601);
ORVANTIS_HOST_PIXEL_FORMAT(PrPixelFormat_YUYV_422_8u_709);
ORVANTIS_HOST_PIXEL_FORMAT(PrPixelFormat_UYVY_422_8u_601);
ORVANTIS_HOST_PIXEL_FORMAT(PrPixelFormat_UYVY_422_8u_709);
ORVANTIS_HOST_PIXEL_FORMAT(PrPixelFormat_VUYA_4444_8u);
ORVANTIS_HOST_PIXEL_FORMAT(PrPixelFormat_VUYA_4444_8u_709);
ORVANTIS_HOST_PIXEL_FORMAT(PrPixelFormat_VUYX_4444_8u);
ORVANTIS_HOST_PIXEL_FORMAT(PrPixelFormat_VUYX_4444_8u_709);
ORVANTIS_HOST_PIXEL_FORMAT(PrPixelFormat_BGRA_4444_8u);
ORVANTIS_HOST_PIXEL_FORMAT(PrPixelFormat_ARGB_4444_8u);
ORVANTIS_HOST_PIXEL_FORMAT(PrPixelFormat_BGRX_4444_8u);
ORVANTIS_HOST_PIXEL_FORMAT(PrPixelFormat_XRGB_4444_8u);
ORVANTIS_HOST_PIXEL_FORMAT(PrPixelFormat_V210_422_10u_601);
ORVANTIS_HOST_PIXEL_FORMAT(PrPixelFormat_V210_422_10u_709);
ORVANTIS_HOST_PIXEL_FORMAT(PrPixelFormat_RGB_444_10u);
ORVANTIS_HOST_PIXEL_FORMAT(PrPixelFormat_BGRA_4444_16u);
ORVANTIS_HOST_PIXEL_FORMAT(PrPixelFormat_BGRX_4444_16u);

// Others that tests and the simulated host name.
ORVANTIS_HOST_PIXEL_FORMAT(PrPixelFormat_ARGB_4444_16u);
ORVANTIS_HOST_PIXEL_FORMAT(PrPixelFormat_XRGB_4444_16u);
ORVANTIS_HOST_PIXEL_FORMAT(PrPixelFormat_BGRA_4444_32f);
ORVANTIS_HOST_PIXEL_FORMAT(PrPixelFormat_PRGB_4444_32f_Linear);
ORVANTIS_HOST_PIXEL_FORMAT(PrPixelFormat_UYVY_422_32f_601);
ORVANTIS_HOST_PIXEL_FORMAT(PrPixelFormat_YUV_420_MPEG2_FRAME_PICTURE_PLANAR_8u_601);
ORVANTIS_HOST_PIXEL_FORMAT(PrPixelFormat_NTSCDV25);
ORVANTIS_HOST_PIXEL_FORMAT(PrPixelFormat_PALDV25);
ORVANTIS_HOST_PIXEL_FORMAT(PrPixelFormat_Raw);
ORVANTIS_HOST_PIXEL_FORMAT(PrPixelFormat_Invalid);

#undef ORVANTIS_HOST_PIXEL_FORMAT

}  // namespace host
