// Contact sheets and waveforms.
#include <gtest/gtest.h>

#include <algorithm>

#include "tool/shared/pictures/contact_sheet.h"
#include "tool/shared/pictures/waveform.h"

namespace simhost::tool {
namespace {

Picture plain(std::int32_t width, std::int32_t height, int channels, int bits,
              std::vector<std::uint16_t> pixel) {
    Picture out;
    out.width = width;
    out.height = height;
    out.channels = channels;
    out.bits = bits;
    for (std::int32_t i = 0; i < width * height; ++i) {
        out.samples.insert(out.samples.end(), pixel.begin(), pixel.end());
    }
    return out;
}

std::vector<std::uint16_t> at(const Picture& picture, std::int32_t x, std::int32_t y) {
    const std::uint16_t* pixel = picture.row(y) + std::ptrdiff_t{3} * x;
    return {pixel, pixel + 3};
}

TEST(ContactSheetTest, PicturesAreScaledToTheCellAndKeepTheirColour) {
    ContactSheet sheet(100);
    sheet.add(plain(400, 200, 3, 16, {65535, 0, 32768}), "0");
    sheet.add(plain(50, 20, 3, 8, {0, 255, 0}), "1");
    sheet.add(plain(400, 200, 3, 8, {0, 0, 255}), "2");
    const Picture out = sheet.render();
    EXPECT_EQ(out.width, 8 + 2 * 108) << "two columns";
    EXPECT_EQ(out.height, 8 + 2 * (50 + kTextHeight + 8));
    EXPECT_EQ(at(out, 58, 33), (std::vector<std::uint16_t>{255, 0, 128}));
    EXPECT_EQ(at(out, 116 + 49, 8 + 19), (std::vector<std::uint16_t>{0, 255, 0}));
    EXPECT_NE(at(out, 116 + 50, 8 + 19), (std::vector<std::uint16_t>{0, 255, 0}));
    EXPECT_EQ(at(out, 58, 8 + 70 + 25), (std::vector<std::uint16_t>{0, 0, 255}));
}

TEST(ContactSheetTest, ColumnsCanBeGiven) {
    ContactSheet sheet(10);
    for (int i = 0; i < 6; ++i) {
        sheet.add(plain(10, 10, 3, 8, {1, 2, 3}), "");
    }
    EXPECT_EQ(sheet.render(6).width, 8 + 6 * 18);
    EXPECT_EQ(sheet.render(6).height, 8 + 10 + kTextHeight + 8);
    EXPECT_EQ(sheet.render(100).width, 8 + 6 * 18);
}

TEST(ContactSheetTest, TransparentPixelsShowTheGround) {
    ContactSheet sheet(16);
    sheet.add(plain(16, 16, 4, 8, {255, 255, 255, 0}), "");
    const Picture out = sheet.render();
    EXPECT_EQ(at(out, 8, 8), (std::vector<std::uint16_t>{150, 150, 150}));
    EXPECT_EQ(at(out, 8 + 8, 8), (std::vector<std::uint16_t>{105, 105, 105}));
}

TEST(ContactSheetTest, AnExtremelyFlatPictureKeepsOneRow) {
    ContactSheet sheet(10);
    sheet.add(plain(4000, 1, 3, 8, {9, 9, 9}), "");
    EXPECT_EQ(at(sheet.render(), 8, 8), (std::vector<std::uint16_t>{9, 9, 9}));
}

// The pixels of the text's level in a part of a picture.
std::size_t inkIn(const Picture& picture, std::int32_t top, std::int32_t bottom) {
    std::size_t out = 0;
    for (std::int32_t y = top; y < bottom; ++y) {
        for (std::int32_t x = 0; x < picture.width; ++x) {
            out += at(picture, x, y) == std::vector<std::uint16_t>{225, 225, 225} ? 1U : 0U;
        }
    }
    return out;
}

TEST(ContactSheetTest, ATitleStandsAboveThePictures) {
    ContactSheet sheet(100, "clip.avi");
    sheet.add(plain(100, 50, 3, 8, {9, 9, 9}), "");
    const Picture out = sheet.render();
    EXPECT_EQ(out.height, 8 + kTextHeight + 8 + 50 + kTextHeight + 8);
    EXPECT_GT(inkIn(out, 8, 8 + kTextHeight), 30U);
    EXPECT_EQ(at(out, 8, 8 + kTextHeight + 8), (std::vector<std::uint16_t>{9, 9, 9}));
}

TEST(ContactSheetTest, NoSheetIsTooWideForProgramsThatShowIt) {
    ContactSheet sheet(240, std::string(2000, 'W'));
    for (int i = 0; i < 40; ++i) {
        sheet.add(plain(240, 2, 3, 8, {9, 9, 9}), "label");
    }
    EXPECT_EQ(sheet.render(40).width, 8 + 16 * 248);
    sheet.add(plain(240, 2, 3, 8, {9, 9, 9}), std::string(2000, 'W'));
    EXPECT_LE(sheet.render(40).width, kMostPictureWidth);
}

TEST(ContactSheetTest, ATallPictureStaysSmall) {
    ContactSheet sheet(10);
    sheet.add(plain(1, 20000, 3, 8, {9, 9, 9}), "");
    sheet.add(plain(40, 400, 3, 8, {9, 9, 9}), "");
    EXPECT_EQ(sheet.render(2).height, 8 + 20 + kTextHeight + 8);
    EXPECT_EQ(at(sheet.render(2), 8, 8 + 19), (std::vector<std::uint16_t>{9, 9, 9}));
}

TEST(ContactSheetTest, LargeFramesAreFewOnASheet) {
    EXPECT_EQ(ContactSheet::mostFrames(1, 16, 16), ContactSheet::kMostCells);
    EXPECT_EQ(ContactSheet::mostFrames(1, 1920, 1080), 48U);
    EXPECT_EQ(ContactSheet::mostFrames(4, 1920, 1080), 12U) << "each in four formats";
    EXPECT_EQ(ContactSheet::mostFrames(1, 7680, 4320), 3U);
    EXPECT_EQ(ContactSheet::mostFrames(1, 2'000'000'000, 2'000'000'000), 1U);
    EXPECT_EQ(ContactSheet::mostFrames(1000, 0, 0), 1U);
}

TEST(ContactSheetTest, FramesAreSpreadFromTheFirstToTheLast) {
    std::vector<std::uint32_t> frames(1'000'000);
    for (std::uint32_t i = 0; i < frames.size(); ++i) {
        frames[i] = 2 * i;
    }
    const auto some = spreadFrames(frames, ContactSheet::kMostCells);
    ASSERT_EQ(some.size(), ContactSheet::kMostCells);
    EXPECT_EQ(some.front(), 0U);
    EXPECT_EQ(some.back(), 1'999'998U);
    EXPECT_TRUE(std::is_sorted(some.begin(), some.end()));
    EXPECT_EQ(spreadFrames({3, 5}, 120), (std::vector<std::uint32_t>{3, 5}));
    EXPECT_EQ(spreadFrames({3, 5, 7}, 1), (std::vector<std::uint32_t>{3}));
    EXPECT_TRUE(spreadFrames({}, 120).empty());
}

TEST(DrawTextTest, LongTextsEndInDots) {
    const std::string text = fittedText("a long title of a clip", 60);
    EXPECT_LE(textWidth(text), 60);
    EXPECT_TRUE(text.ends_with("..."));
    EXPECT_EQ(fittedText("short", 60), "short");
}

TEST(DrawTextTest, MarksPixelsInsideItsBoxAndIsCutAtTheEdge) {
    Picture picture = plain(20, 12, 3, 8, {0, 0, 0});
    drawText(picture, 0, 0, "H", 200);
    const auto lit = std::count(picture.samples.begin(), picture.samples.end(), 200);
    EXPECT_GT(lit, 3 * 8);
    EXPECT_LT(lit, 3 * 60);
    for (std::int32_t y = 0; y < 12; ++y) {
        EXPECT_EQ(at(picture, textWidth("H"), y), (std::vector<std::uint16_t>{0, 0, 0}));
    }
    drawText(picture, 15, 8, "many more letters than fit\xC3\xA9", 100);
    drawText(picture, -100, -100, "X", 100);
    EXPECT_GT(std::count(picture.samples.begin(), picture.samples.end(), 100), 0);
}

TEST(WaveformTest, ColumnsSpanWhatTheirSamplesSpan) {
    Waveform waveform(1, 200, 100);
    std::vector<float> samples(200, 0.0F);
    samples[100] = 0.5F;   // column 50
    samples[101] = -0.5F;  // the same
    waveform.add(0, std::span(samples).first(150));
    waveform.add(0, std::span(samples).subspan(150));
    const Picture out = waveform.render({});
    const std::vector<std::uint16_t> wave = {120, 200, 255};
    const auto height = [&](std::int32_t column) {
        int count = 0;
        for (std::int32_t y = 6; y < 126; ++y) {
            count += at(out, 6 + column, y) == wave ? 1 : 0;
        }
        return count;
    };
    EXPECT_EQ(height(49), 1);
    EXPECT_EQ(height(50), 60);
    EXPECT_EQ(height(51), 30) << "joined to the last sample before";
    EXPECT_EQ(height(52), 1);
}

TEST(WaveformTest, WhatIsLeftOutIsNotDrawn) {
    Waveform waveform(1, 1000, 10);
    const std::vector<float> up(5, 1.0F);
    const std::vector<float> down(5, -1.0F);
    waveform.add(0, up);
    waveform.skipTo(0, 500);
    waveform.add(0, down);
    const Picture out = waveform.render({});
    const std::vector<std::uint16_t> wave = {120, 200, 255};
    EXPECT_EQ(at(out, 6, 6), wave);
    EXPECT_EQ(at(out, 6 + 5, 6 + 119), wave);
    EXPECT_NE(at(out, 6 + 5, 6), wave) << "it does not join the samples ahead of the gap";
    EXPECT_NE(at(out, 6 + 1, 6), wave);
    EXPECT_NE(at(out, 6 + 4, 6 + 119), wave);
}

TEST(WaveformTest, SamplesBeyondFullScaleAreMarked) {
    Waveform waveform(2, 10, 10);
    waveform.add(1, std::vector<float>(10, 1.5F));
    const Picture out = waveform.render({});
    EXPECT_EQ(at(out, 6, 6 + 120 + kTextHeight + 6), (std::vector<std::uint16_t>{255, 80, 80}));
    EXPECT_EQ(at(out, 6, 6), (std::vector<std::uint16_t>{24, 24, 24})) << "the channel without samples";
}

TEST(WaveformTest, TitleScaleAndTimesStandAroundTheStrips) {
    Waveform waveform(1, 200, 400);
    waveform.add(0, std::vector<float>(200, 1.0F));
    const Picture bare = waveform.render({});
    const Picture out = waveform.render({}, {"clip.avi", 7200});
    EXPECT_EQ(out.width, bare.width + 20);
    EXPECT_GT(inkIn(out, 6, 6 + kTextHeight), 30U) << "the title";
    const std::int32_t top = 6 + kTextHeight + 6;
    EXPECT_EQ(at(out, 26, top), (std::vector<std::uint16_t>{120, 200, 255})) << "the strip";
    const std::int32_t axis = top + 120 + kTextHeight + 6;
    EXPECT_EQ(at(out, 26 + 50, axis), (std::vector<std::uint16_t>{90, 90, 90}));
    EXPECT_GT(inkIn(out, axis + 5, out.height), 5 * 60U) << "five times";
    EXPECT_LE(Waveform(32, 1, 1200).render({}, {"a", 1}).width, kMostPictureWidth);
}

}  // namespace
}  // namespace simhost::tool
