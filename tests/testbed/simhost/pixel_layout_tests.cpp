#include "simhost/pixel_layout.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <set>
#include <string_view>

#include "host/pixel_formats.h"
#include "tests/support/format_lists.h"

namespace simhost {
namespace {

TEST(PixelLayout, KnowsTheWholeEnumerationOnce) {
    std::set<std::uint32_t> codes;
    for (const PixelLayout& layout : pixelLayouts()) {
        codes.insert(layout.code);
    }
    EXPECT_EQ(pixelLayouts().size(), formatlists::hostFormats().size());
    EXPECT_EQ(codes.size(), formatlists::hostFormats().size());
}

TEST(PixelLayout, BottomRowsComeFirstExactlyWhereTheNameSays4444) {
    for (const PixelLayout& layout : pixelLayouts()) {
        const bool named = std::string_view(layout.name).find("_4444_") != std::string_view::npos;
        EXPECT_EQ(layout.topLeft, !named) << layout.name;
    }
}

TEST(PixelLayout, RowsHoldWholeGroups) {
    struct Case {
        std::uint32_t format;
        std::int32_t width;
        std::int64_t bytes;
    };
    const Case cases[] = {
        {host::PrPixelFormat_YUYV_422_8u_601, 3, 8},   {host::PrPixelFormat_YUYV_422_8u_709, 4, 8},
        {host::PrPixelFormat_UYVY_422_8u_601, 1, 4},   {host::PrPixelFormat_VUYA_4444_8u, 3, 12},
        {host::PrPixelFormat_V210_422_10u_601, 6, 16}, {host::PrPixelFormat_V210_422_10u_709, 7, 32},
        {host::PrPixelFormat_RGB_444_10u, 5, 20},      {host::PrPixelFormat_BGRA_4444_16u, 5, 40},
        {host::PrPixelFormat_BGRX_4444_16u, 1, 8},     {host::PrPixelFormat_BGRA_4444_32f, 2, 32},
        {host::PrPixelFormat_UYVY_422_32f_601, 3, 32},
    };
    for (const Case& c : cases) {
        EXPECT_EQ(minimalRowBytes(*findPixelLayout(c.format), c.width), c.bytes) << pixelFormatName(c.format);
    }
}

TEST(PixelLayout, CompressedAndPlanarFormatsCannotBeCreated) {
    EXPECT_TRUE(findPixelLayout(host::PrPixelFormat_PALDV25)->compressed);
    EXPECT_EQ(findPixelLayout(host::PrPixelFormat_PALDV25)->pixelsPerGroup, 0);
    EXPECT_EQ(findPixelLayout(host::PrPixelFormat_Raw)->pixelsPerGroup, 0);
    EXPECT_EQ(findPixelLayout(host::PrPixelFormat_YUV_420_MPEG2_FRAME_PICTURE_PLANAR_8u_601)->pixelsPerGroup,
              0);
}

TEST(PixelLayout, AlphaIsInTheFormatsWithAnAOrAP) {
    EXPECT_TRUE(findPixelLayout(host::PrPixelFormat_BGRA_4444_16u)->alpha);
    EXPECT_TRUE(findPixelLayout(host::PrPixelFormat_PRGB_4444_32f_Linear)->alpha);
    EXPECT_FALSE(findPixelLayout(host::PrPixelFormat_XRGB_4444_8u)->alpha);
    EXPECT_FALSE(findPixelLayout(host::PrPixelFormat_RGB_444_10u)->alpha);
}

TEST(PixelLayout, TextsNameFormatsWithCaseInMind) {
    EXPECT_EQ(pixelFormatFromText("bgra"), host::PrPixelFormat_BGRA_4444_8u);
    EXPECT_EQ(pixelFormatFromText("Bgra"), host::PrPixelFormat_BGRA_4444_16u);
    EXPECT_EQ(pixelFormatFromText("V210_422_10u_601"), host::PrPixelFormat_V210_422_10u_601);
    EXPECT_EQ(pixelFormatFromText("PrPixelFormat_Raw"), host::PrPixelFormat_Raw);
    EXPECT_EQ(pixelFormatFromText("bGRA"), std::nullopt);
    EXPECT_EQ(pixelFormatFromText(""), std::nullopt);
    EXPECT_STREQ(pixelFormatName(0), "PrPixelFormat_Any");
    EXPECT_STREQ(pixelFormatName(1), "????");
}

}  // namespace
}  // namespace simhost
