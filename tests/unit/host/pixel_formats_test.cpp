// The host's pixel formats: each constant must read as its text in memory, and no two may be equal.

#include <gtest/gtest.h>

#include <cstdint>
#include <cstring>
#include <iterator>
#include <map>
#include <string>

#include "host/pixel_formats.h"

namespace {

using namespace host;

struct NamedFormat {
    const char* text;
    std::uint32_t value;
    const char* name;
};

// clang-format off
#define FORMAT(text, name) {text, PrPixelFormat_##name, #name}

constexpr NamedFormat kFormats[] = {
    FORMAT("bgra", BGRA_4444_8u),
    FORMAT("vuya", VUYA_4444_8u),
    FORMAT("VUYA", VUYA_4444_8u_709),
    FORMAT("argb", ARGB_4444_8u),
    FORMAT("bgrx", BGRX_4444_8u),
    FORMAT("vuyx", VUYX_4444_8u),
    FORMAT("vux7", VUYX_4444_8u_709),
    FORMAT("xrgb", XRGB_4444_8u),
    FORMAT("bgrp", BGRP_4444_8u),
    FORMAT("vuyp", VUYP_4444_8u),
    FORMAT("vup7", VUYP_4444_8u_709),
    FORMAT("prgb", PRGB_4444_8u),
    FORMAT("Bgra", BGRA_4444_16u),
    FORMAT("Vuya", VUYA_4444_16u),
    FORMAT("Argb", ARGB_4444_16u),
    FORMAT("Bgrx", BGRX_4444_16u),
    FORMAT("Xrgb", XRGB_4444_16u),
    FORMAT("Bgrp", BGRP_4444_16u),
    FORMAT("Prgb", PRGB_4444_16u),
    FORMAT("BGra", BGRA_4444_32f),
    FORMAT("VUya", VUYA_4444_32f),
    FORMAT("vUYa", VUYA_4444_32f_709),
    FORMAT("ARgb", ARGB_4444_32f),
    FORMAT("BGrx", BGRX_4444_32f),
    FORMAT("VUyx", VUYX_4444_32f),
    FORMAT("VUx7", VUYX_4444_32f_709),
    FORMAT("XRgb", XRGB_4444_32f),
    FORMAT("BGrp", BGRP_4444_32f),
    FORMAT("VUyp", VUYP_4444_32f),
    FORMAT("VUp7", VUYP_4444_32f_709),
    FORMAT("PRgb", PRGB_4444_32f),
    FORMAT("RGB1", RGB_444_10u),
    FORMAT("yuy2", YUYV_422_8u_601),
    FORMAT("yuy3", YUYV_422_8u_709),
    FORMAT("uyvy", UYVY_422_8u_601),
    FORMAT("uyv7", UYVY_422_8u_709),
    FORMAT("v210", V210_422_10u_601),
    FORMAT("v211", V210_422_10u_709),
    FORMAT("UYvy", UYVY_422_32f_601),
    FORMAT("UYv7", UYVY_422_32f_709),
    FORMAT("BGaL", BGRA_4444_32f_Linear),
    FORMAT("BGpL", BGRP_4444_32f_Linear),
    FORMAT("BGxL", BGRX_4444_32f_Linear),
    FORMAT("ARgL", ARGB_4444_32f_Linear),
    FORMAT("PRgL", PRGB_4444_32f_Linear),
    FORMAT("XRgL", XRGB_4444_32f_Linear),
    FORMAT("yv12", YUV_420_MPEG2_FRAME_PICTURE_PLANAR_8u_601),
    FORMAT("yvi2", YUV_420_MPEG2_FIELD_PICTURE_PLANAR_8u_601),
    FORMAT("yv1f", YUV_420_MPEG2_FRAME_PICTURE_PLANAR_8u_601_FullRange),
    FORMAT("yvif", YUV_420_MPEG2_FIELD_PICTURE_PLANAR_8u_601_FullRange),
    FORMAT("yv17", YUV_420_MPEG2_FRAME_PICTURE_PLANAR_8u_709),
    FORMAT("yvi7", YUV_420_MPEG2_FIELD_PICTURE_PLANAR_8u_709),
    FORMAT("yv1F", YUV_420_MPEG2_FRAME_PICTURE_PLANAR_8u_709_FullRange),
    FORMAT("yviF", YUV_420_MPEG2_FIELD_PICTURE_PLANAR_8u_709_FullRange),
    FORMAT("Yv12", YUV_420_MPEG4_FRAME_PICTURE_PLANAR_8u_601),
    FORMAT("Yvi2", YUV_420_MPEG4_FIELD_PICTURE_PLANAR_8u_601),
    FORMAT("Yv1f", YUV_420_MPEG4_FRAME_PICTURE_PLANAR_8u_601_FullRange),
    FORMAT("Yvif", YUV_420_MPEG4_FIELD_PICTURE_PLANAR_8u_601_FullRange),
    FORMAT("Yv17", YUV_420_MPEG4_FRAME_PICTURE_PLANAR_8u_709),
    FORMAT("Yvi7", YUV_420_MPEG4_FIELD_PICTURE_PLANAR_8u_709),
    FORMAT("Yv1F", YUV_420_MPEG4_FRAME_PICTURE_PLANAR_8u_709_FullRange),
    FORMAT("YviF", YUV_420_MPEG4_FIELD_PICTURE_PLANAR_8u_709_FullRange),
    FORMAT("dvn2", NTSCDV25),
    FORMAT("dvp2", PALDV25),
    FORMAT("dvn5", NTSCDV50),
    FORMAT("dvp5", PALDV50),
    FORMAT("dvn7", NTSCDV100_720p),
    FORMAT("dvp7", PALDV100_720p),
    FORMAT("dvn1", NTSCDV100_1080i),
    FORMAT("dvp1", PALDV100_1080i),
    FORMAT("raww", Raw),
    FORMAT("badf", Invalid),
};

// Known to later hosts only.
constexpr NamedFormat kLaterFormats[] = {
    FORMAT("@PQ7", RGB_444_12u_PQ_709),
    FORMAT("@PQP", RGB_444_12u_PQ_P3),
    FORMAT("@PQ2", RGB_444_12u_PQ_2020),
    FORMAT("@HL1", RGB_444_10u_HLG),
    FORMAT("@HL2", RGB_444_12u_HLG),
    FORMAT("nvi3", YUV_420_MPEG4_FIELD_PICTURE_BIPLANAR_8u_601),
    FORMAT("nv13", YUV_420_MPEG4_FRAME_PICTURE_BIPLANAR_8u_601),
    FORMAT("nvi1", YUV_420_MPEG4_FIELD_PICTURE_BIPLANAR_8u_601_FullRange),
    FORMAT("nv11", YUV_420_MPEG4_FRAME_PICTURE_BIPLANAR_8u_601_FullRange),
    FORMAT("nvi2", YUV_420_MPEG4_FIELD_PICTURE_BIPLANAR_8u_709),
    FORMAT("nv12", YUV_420_MPEG4_FRAME_PICTURE_BIPLANAR_8u_709),
    FORMAT("nvi0", YUV_420_MPEG4_FIELD_PICTURE_BIPLANAR_8u_709_FullRange),
    FORMAT("nv10", YUV_420_MPEG4_FRAME_PICTURE_BIPLANAR_8u_709_FullRange),
    FORMAT("Nvi3", YVU_420_MPEG4_FIELD_PICTURE_BIPLANAR_8u_601),
    FORMAT("Nv13", YVU_420_MPEG4_FRAME_PICTURE_BIPLANAR_8u_601),
    FORMAT("Nvi1", YVU_420_MPEG4_FIELD_PICTURE_BIPLANAR_8u_601_FullRange),
    FORMAT("Nv11", YVU_420_MPEG4_FRAME_PICTURE_BIPLANAR_8u_601_FullRange),
    FORMAT("Nvi2", YVU_420_MPEG4_FIELD_PICTURE_BIPLANAR_8u_709),
    FORMAT("Nv12", YVU_420_MPEG4_FRAME_PICTURE_BIPLANAR_8u_709),
    FORMAT("Nvi0", YVU_420_MPEG4_FIELD_PICTURE_BIPLANAR_8u_709_FullRange),
    FORMAT("Nv10", YVU_420_MPEG4_FRAME_PICTURE_BIPLANAR_8u_709_FullRange),
    FORMAT("p0i0", YUV_420_MPEG4_FIELD_PICTURE_BIPLANAR_10u_as16u_709),
    FORMAT("p010", YUV_420_MPEG4_FRAME_PICTURE_BIPLANAR_10u_as16u_709),
    FORMAT("p0if", YUV_420_MPEG4_FIELD_PICTURE_BIPLANAR_10u_as16u_709_FullRange),
    FORMAT("p01f", YUV_420_MPEG4_FRAME_PICTURE_BIPLANAR_10u_as16u_709_FullRange),
    FORMAT("P0i0", YUV_420_MPEG4_FIELD_PICTURE_BIPLANAR_10u_as16u_2020),
    FORMAT("P010", YUV_420_MPEG4_FRAME_PICTURE_BIPLANAR_10u_as16u_2020),
    FORMAT("P0if", YUV_420_MPEG4_FIELD_PICTURE_BIPLANAR_10u_as16u_2020_FullRange),
    FORMAT("P01f", YUV_420_MPEG4_FRAME_PICTURE_BIPLANAR_10u_as16u_2020_FullRange),
    FORMAT("POi0", YUV_420_MPEG4_FIELD_PICTURE_BIPLANAR_10u_as16u_2020_HDR),
    FORMAT("PO10", YUV_420_MPEG4_FRAME_PICTURE_BIPLANAR_10u_as16u_2020_HDR),
    FORMAT("POif", YUV_420_MPEG4_FIELD_PICTURE_BIPLANAR_10u_as16u_2020_HDR_FullRange),
    FORMAT("PO1f", YUV_420_MPEG4_FRAME_PICTURE_BIPLANAR_10u_as16u_2020_HDR_FullRange),
    FORMAT("Phl0", YUV_420_MPEG4_FIELD_PICTURE_BIPLANAR_10u_as16u_2020_HDR_HLG),
    FORMAT("PHL0", YUV_420_MPEG4_FRAME_PICTURE_BIPLANAR_10u_as16u_2020_HDR_HLG),
    FORMAT("Phlf", YUV_420_MPEG4_FIELD_PICTURE_BIPLANAR_10u_as16u_2020_HDR_HLG_FullRange),
    FORMAT("PHLf", YUV_420_MPEG4_FRAME_PICTURE_BIPLANAR_10u_as16u_2020_HDR_HLG_FullRange),
};
// clang-format on

std::string inMemory(std::uint32_t code) {
    std::string text(4, '\0');
    std::memcpy(text.data(), &code, 4);
    return text;
}

bool contains(const std::string& text, const char* part) {
    return text.find(part) != std::string::npos;
}

TEST(PixelFormats, ReadAsTheirTextInMemory) {
    for (const NamedFormat& format : kFormats) EXPECT_EQ(inMemory(format.value), format.text) << format.name;
    for (const NamedFormat& format : kLaterFormats)
        EXPECT_EQ(inMemory(format.value), format.text) << format.name;
}

TEST(PixelFormats, AreAllDifferent) {
    EXPECT_EQ(std::size(kFormats), 72u);
    EXPECT_EQ(std::size(kLaterFormats), 37u);
    std::map<std::uint32_t, std::string> seen{{PrPixelFormat_Any, "Any"}};
    for (const NamedFormat& format : kFormats) {
        const auto [entry, isNew] = seen.emplace(format.value, format.name);
        EXPECT_TRUE(isNew) << format.name << " equals " << entry->second;
    }
    for (const NamedFormat& format : kLaterFormats) {
        const auto [entry, isNew] = seen.emplace(format.value, format.name);
        EXPECT_TRUE(isNew) << format.name << " equals " << entry->second;
    }
    EXPECT_EQ(seen.size(), 110u);
}

TEST(PixelFormats, AnyIsZero) {
    EXPECT_EQ(PrPixelFormat_Any, 0u);
}

TEST(PixelFormats, CapitalsTellTheDepthOfRgbFormats) {
    // One capital means 16 bits, two mean float, none means 8 bits: "bgra", "Bgra", "BGra".
    struct Family {
        const char* text;
        std::uint32_t eight, sixteen, real;
    };
    const Family families[] = {
        {"bgra", PrPixelFormat_BGRA_4444_8u, PrPixelFormat_BGRA_4444_16u, PrPixelFormat_BGRA_4444_32f},
        {"bgrx", PrPixelFormat_BGRX_4444_8u, PrPixelFormat_BGRX_4444_16u, PrPixelFormat_BGRX_4444_32f},
        {"bgrp", PrPixelFormat_BGRP_4444_8u, PrPixelFormat_BGRP_4444_16u, PrPixelFormat_BGRP_4444_32f},
        {"argb", PrPixelFormat_ARGB_4444_8u, PrPixelFormat_ARGB_4444_16u, PrPixelFormat_ARGB_4444_32f},
        {"xrgb", PrPixelFormat_XRGB_4444_8u, PrPixelFormat_XRGB_4444_16u, PrPixelFormat_XRGB_4444_32f},
        {"prgb", PrPixelFormat_PRGB_4444_8u, PrPixelFormat_PRGB_4444_16u, PrPixelFormat_PRGB_4444_32f},
    };
    // Bit 5 of an ASCII letter is its case; the first letter is the lowest byte.
    for (const Family& family : families) {
        EXPECT_EQ(inMemory(family.eight), family.text);
        EXPECT_EQ(family.sixteen, family.eight ^ 0x00000020u) << family.text;
        EXPECT_EQ(family.real, family.eight ^ 0x00002020u) << family.text;
    }
}

TEST(PixelFormats, CapitalsOfYuvFormatsFollowNoRule) {
    EXPECT_EQ(inMemory(PrPixelFormat_VUYA_4444_8u), "vuya");
    EXPECT_EQ(inMemory(PrPixelFormat_VUYA_4444_8u_709), "VUYA");
    EXPECT_EQ(inMemory(PrPixelFormat_VUYA_4444_16u), "Vuya");
    EXPECT_EQ(inMemory(PrPixelFormat_VUYA_4444_32f), "VUya");
    EXPECT_EQ(inMemory(PrPixelFormat_VUYA_4444_32f_709), "vUYa");
    EXPECT_EQ(inMemory(PrPixelFormat_UYVY_422_8u_601), "uyvy");
    EXPECT_EQ(inMemory(PrPixelFormat_UYVY_422_8u_709), "uyv7");
    EXPECT_EQ(inMemory(PrPixelFormat_UYVY_422_32f_601), "UYvy");
    EXPECT_EQ(inMemory(PrPixelFormat_UYVY_422_32f_709), "UYv7");
}

TEST(PixelFormats, PlanarNamesAndCodesAgree) {
    // "yv1f": y or Y = MPEG-2 or MPEG-4 siting; 1 or i = frame or field pictures; last 2 and f = 601, 7 and F
    // = 709, f and F = full range.
    int planar = 0;
    for (const NamedFormat& format : kFormats) {
        const std::string name = format.name;
        if (!contains(name, "_PLANAR_")) continue;
        ++planar;
        const bool full = contains(name, "FullRange");
        std::string expected = contains(name, "MPEG2") ? "y" : "Y";
        expected += 'v';
        expected += contains(name, "FRAME_PICTURE") ? '1' : 'i';
        if (contains(name, "_601")) {
            expected += full ? 'f' : '2';
        } else {
            expected += full ? 'F' : '7';
        }
        EXPECT_EQ(inMemory(format.value), expected) << name;
    }
    EXPECT_EQ(planar, 16);
}

}  // namespace
