#include "tool/shared/pictures/picture.h"

#include <gtest/gtest.h>

#include <cstring>
#include <vector>

#include "host/pixel_formats.h"
#include "made_frame.h"
#include "tests/support/format_lists.h"

namespace simhost::tool {
namespace {

using Samples = std::vector<std::uint16_t>;

// The samples of a picture of one row painted with these bytes.
Picture shown(std::uint32_t format, std::int32_t width, const std::vector<std::uint8_t>& bytes) {
    Host sim;
    return toPicture(test::madeFrame(sim, format, width, 1, [&bytes](std::int32_t, std::uint8_t* row) {
        std::memcpy(row, bytes.data(), bytes.size());
    }));
}

std::vector<std::uint8_t> words(const std::vector<std::uint32_t>& values) {
    std::vector<std::uint8_t> out(values.size() * 4);
    std::memcpy(out.data(), values.data(), out.size());
    return out;
}

TEST(PictureTest, EightBitRgbIsTakenAsItIs) {
    EXPECT_EQ(shown(host::PrPixelFormat_BGRA_4444_8u, 1, {1, 2, 3, 4}).samples, (Samples{3, 2, 1, 4}));
    EXPECT_EQ(shown(host::PrPixelFormat_ARGB_4444_8u, 1, {4, 3, 2, 1}).samples, (Samples{3, 2, 1, 4}));
    EXPECT_EQ(shown(host::PrPixelFormat_BGRX_4444_8u, 1, {1, 2, 3, 4}).samples, (Samples{3, 2, 1}));
    EXPECT_EQ(shown(host::PrPixelFormat_XRGB_4444_8u, 1, {4, 3, 2, 1}).samples, (Samples{3, 2, 1}));
}

TEST(PictureTest, TopRowsComeFirstThoughTheFormatStoresThemLast) {
    Host sim;
    const auto paint = [](std::int32_t y, std::uint8_t* row) { std::memset(row, y + 1, 4); };
    EXPECT_EQ(toPicture(test::madeFrame(sim, host::PrPixelFormat_BGRX_4444_8u, 1, 2, paint)).samples,
              (Samples{1, 1, 1, 2, 2, 2}));
}

TEST(PictureTest, AStepTakesEverySuchRowAndPixel) {
    Host sim;
    const auto paint = [](std::int32_t y, std::uint8_t* row) {
        for (int x = 0; x < 5; ++x) {
            std::memset(row + std::ptrdiff_t{4} * x, 10 * y + x, 4);
        }
    };
    const Picture picture = toPicture(test::madeFrame(sim, host::PrPixelFormat_BGRX_4444_8u, 5, 3, paint), 2);
    EXPECT_EQ(picture.width, 3);
    EXPECT_EQ(picture.height, 2);
    EXPECT_EQ(picture.samples, (Samples{0, 0, 0, 2, 2, 2, 4, 4, 4, 20, 20, 20, 22, 22, 22, 24, 24, 24}));
}

TEST(PictureTest, SixteenBitsReachFullScaleAt32768) {
    // B = 0, G = 16384, R = 32768, A = 32768
    const Picture picture =
        shown(host::PrPixelFormat_BGRA_4444_16u, 1, {0x00, 0x00, 0x00, 0x40, 0x00, 0x80, 0x00, 0x80});
    EXPECT_EQ(picture.bits, 16);
    EXPECT_EQ(picture.samples, (Samples{65535, 32768, 0, 65535}));
    // 40000 is beyond the range and is cut.
    EXPECT_EQ(shown(host::PrPixelFormat_BGRX_4444_16u, 1, {0x40, 0x9C, 0, 0, 0, 0, 0, 0}).samples,
              (Samples{0, 0, 65535}));
}

TEST(PictureTest, TenBitRgbStandsInTheUpperBitsOfAWord) {
    const Picture picture =
        shown(host::PrPixelFormat_RGB_444_10u, 1, words({1023u << 22 | 512u << 12 | 0u << 2 | 3u}));
    EXPECT_EQ(picture.bits, 16);
    EXPECT_EQ(picture.samples, (Samples{65535, 32800, 0}));
}

TEST(PictureTest, LimitedRangeBlackAndWhiteAreBlackAndWhite) {
    for (const std::uint32_t format :
         {host::PrPixelFormat_YUYV_422_8u_601, host::PrPixelFormat_YUYV_422_8u_709}) {
        EXPECT_EQ(shown(format, 2, {16, 128, 235, 128}).samples, (Samples{0, 0, 0, 255, 255, 255}));
        EXPECT_EQ(shown(format, 2, {0, 128, 255, 128}).samples, (Samples{0, 0, 0, 255, 255, 255})) << "cut";
    }
    EXPECT_EQ(shown(host::PrPixelFormat_UYVY_422_8u_601, 2, {128, 235, 128, 16}).samples,
              (Samples{255, 255, 255, 0, 0, 0}));
}

// Published 8-bit values of the colour bars at 100 %: red is 81, 90, 240 by Rec.601 and 63, 102, 240 by
// Rec.709.
TEST(PictureTest, ColoursFollowTheFormatsMatrix) {
    const auto near = [](const Samples& actual, const Samples& expected) {
        ASSERT_EQ(actual.size(), expected.size());
        for (std::size_t i = 0; i < actual.size(); ++i) {
            EXPECT_NEAR(actual[i], expected[i], 2) << i;
        }
    };
    near(shown(host::PrPixelFormat_VUYX_4444_8u, 1, {240, 90, 81, 0}).samples, {255, 0, 0});
    near(shown(host::PrPixelFormat_VUYX_4444_8u_709, 1, {240, 102, 63, 0}).samples, {255, 0, 0});
    near(shown(host::PrPixelFormat_VUYX_4444_8u, 1, {34, 54, 145, 0}).samples, {0, 255, 0});
    near(shown(host::PrPixelFormat_VUYX_4444_8u_709, 1, {26, 42, 173, 0}).samples, {0, 255, 0});
    near(shown(host::PrPixelFormat_VUYA_4444_8u_709, 1, {118, 240, 32, 77}).samples, {0, 0, 255, 77});
}

TEST(PictureTest, ChromaBetweenTwoPairsIsTheirMean) {
    // Three pixels of one luma; chroma V goes from 128 to 148, and the last pixel has the second pair's.
    const Picture picture =
        shown(host::PrPixelFormat_YUYV_422_8u_601, 3, {126, 128, 126, 128, 126, 128, 126, 148});
    ASSERT_EQ(picture.samples.size(), 9u);
    const int first = picture.samples[0];
    const int between = picture.samples[3];
    const int last = picture.samples[6];
    EXPECT_EQ(first, 128);
    EXPECT_NEAR(last - first, 32, 1);
    EXPECT_NEAR(between - first, 16, 1);
}

TEST(PictureTest, V210PacksSixPixelsIntoFourWords) {
    // Luma 64 + 100 n, chroma 512: grey steps. A seventh pixel begins the next group.
    const auto pack = [](std::uint32_t a, std::uint32_t b, std::uint32_t c) { return a | b << 10 | c << 20; };
    const Picture picture = shown(host::PrPixelFormat_V210_422_10u_601, 7,
                                  words({pack(512, 64, 512), pack(164, 512, 264), pack(512, 364, 512),
                                         pack(464, 512, 564), pack(512, 940, 512), 0, 0, 0}));
    EXPECT_EQ(picture.bits, 16);
    for (std::size_t x = 0; x < 7; ++x) {
        const double expected = x == 6 ? 65535.0 : static_cast<double>(x) * 100.0 / 876.0 * 65535.0;
        for (std::size_t c = 0; c < 3; ++c) {
            EXPECT_NEAR(picture.samples[3 * x + c], expected, 3) << x << " " << c;
        }
    }
}

TEST(PictureTest, V210ChromaBelongsToItsPair) {
    const auto pack = [](std::uint32_t a, std::uint32_t b, std::uint32_t c) { return a | b << 10 | c << 20; };
    // Only the V of the second pair, at the start of the third word, is not neutral.
    const Picture picture =
        shown(host::PrPixelFormat_V210_422_10u_601, 6,
              words({pack(512, 500, 512), pack(500, 512, 500), pack(900, 500, 512), pack(500, 512, 500)}));
    EXPECT_EQ(picture.samples[0], picture.samples[1]);
    EXPECT_GT(picture.samples[6], picture.samples[7] + 10000);
    EXPECT_EQ(picture.samples[12], picture.samples[13]);
}

TEST(PictureTest, EveryFormatThatAnImporterOffersCanBeShown) {
    for (const formatlists::DeliveredFormat& format : formatlists::deliveredFormats()) {
        EXPECT_TRUE(canShow(formatlists::formatValue(format.code))) << format.code;
    }
    EXPECT_FALSE(canShow(host::PrPixelFormat_BGRA_4444_32f));
}

}  // namespace
}  // namespace simhost::tool
