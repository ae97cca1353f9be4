// The stand-in's tables, format data reader, payload layout, level rules and texts.

#include <gtest/gtest.h>

#include <algorithm>
#include <limits>
#include <set>

#include "standin/coded_types.h"
#include "standin/color_matrix.h"
#include "standin/error_codes.h"
#include "standin/levels.h"
#include "standin/output_layouts.h"
#include "standin/payload.h"
#include "standin/stream_format.h"
#include "tests/testbed/standin/standin_test_support.h"

namespace orvantis::standin::test {
namespace {

TEST(CodedTypes, AreTheListedOnesWithTheirTagsAndShapes) {
    ASSERT_EQ(codedTypes().size(), allTypes().size())
        << "CONTRIBUTING.md, \"How do I add ...\", a coded type";
    std::uint32_t previous = 0;
    for (const CodedType& row : codedTypes()) {
        EXPECT_GT(row.code, previous);
        previous = row.code;
    }
    for (const TestType& type : allTypes()) {
        SCOPED_TRACE(type.tag);
        const CodedType* row = findCodedType(type.code);
        ASSERT_NE(row, nullptr);
        EXPECT_EQ(std::string(row->tag.begin(), row->tag.end()), type.tag);
        EXPECT_EQ(findCodedType(row->tag), row);
        EXPECT_EQ(row->bits, type.bits);
        EXPECT_EQ(row->hasAlpha, type.alpha);
        EXPECT_EQ(1U << row->chromaShiftX, type.chromaStepX);
        EXPECT_EQ(1U << row->chromaShiftY, type.chromaStepY);
        EXPECT_EQ(row->model == ColorModel::kRgb, type.model == Model::kRgb);
        EXPECT_EQ(row->model == ColorModel::kGrey, type.model == Model::kGrey);
    }
}

TEST(CodedTypes, CodesAndTagsBetweenAreUnknown) {
    for (const std::uint32_t code : {0U, 1U, 100U, 116U, 117U, 119U, 120U, 121U, 122U, 124U}) {
        EXPECT_EQ(findCodedType(code), nullptr) << code;
    }
    EXPECT_EQ(findCodedType(std::array<char, 4>{'o', '8', 'r', 'a'}), nullptr);
    EXPECT_EQ(findCodedType(std::array<char, 4>{'A', 'R', '8', 'O'}), nullptr);
}

TEST(TypeNames, AreDifferentShortAndThereForEveryType) {
    std::set<std::string> names;
    for (std::uint32_t type = 1; type <= 61; ++type) {
        ASSERT_NE(typeName(type), nullptr) << type;
        names.insert(typeName(type));
        EXPECT_LE(std::string(typeName(type)).size(), 10U) << type;
    }
    for (const TestType& type : allTypes()) {
        ASSERT_NE(typeName(type.code), nullptr);
        names.insert(typeName(type.code));
        EXPECT_LE(std::string(typeName(type.code)).size(), 15U);
    }
    EXPECT_EQ(names.size(), 61U + allTypes().size());
    EXPECT_EQ(names.count(""), 0U);
    for (const std::uint32_t type : {0U, 62U, 100U, 116U, 124U, 0xFFFFFFFFU}) {
        EXPECT_EQ(typeName(type), nullptr) << type;
    }
}

TEST(TypeNames, OfTheDeliverableLayouts) {
    const std::pair<std::uint32_t, const char*> expected[] = {
        {1, "BGRX32"},  {2, "BGRA32"},  {4, "YUYV"},    {5, "UYVY"},    {11, "V210"}, {15, "RGB10"},
        {16, "XRGB32"}, {19, "ARGB32"}, {31, "BGRA64"}, {32, "BGRX64"}, {49, "VUYX"}, {50, "VUYA"}};
    for (const auto& [type, name] : expected) {
        EXPECT_STREQ(typeName(type), name);
    }
    EXPECT_STREQ(typeName(102), "RGBA 8-bit");
    EXPECT_STREQ(typeName(123), "YUV420 10-bit");
}

TEST(OutputLayouts, FlipAndRangeAnswers) {
    for (std::uint32_t type = 0; type <= 130; ++type) {
        const bool deliverable = std::ranges::count(deliverableLayouts(), type) == 1;
        EXPECT_EQ(canFlip(type), deliverable) << type;
        EXPECT_EQ(supportsRange0To32768(type), type == 31 || type == 32) << type;
    }
}

TEST(StreamFormatReader, ReadsSizeAndType) {
    StreamFormat stream;
    ASSERT_EQ(parseStreamFormat(formatData("O0Y2", 1920, 1080), stream), Error::kNone);
    EXPECT_EQ(stream.coded->code, 108U);
    EXPECT_EQ(stream.width, 1920U);
    EXPECT_EQ(stream.height, 1080U);
}

TEST(StreamFormatReader, IgnoresBytesBehindTheHeader) {
    StreamFormat stream;
    EXPECT_EQ(parseStreamFormat(formatData("O8RG", 4, 2, 17), stream), Error::kNone);
}

TEST(StreamFormatReader, TakesANegativeHeightForItsAmount) {
    StreamFormat stream;
    ASSERT_EQ(parseStreamFormat(formatData("O8RG", 4, -2), stream), Error::kNone);
    EXPECT_EQ(stream.height, 2U);
}

TEST(StreamFormatReader, RefusesWhatIsNoHeader) {
    StreamFormat stream;
    std::vector<std::uint8_t> bytes = formatData("O8RG", 4, 2);
    for (std::size_t size = 0; size < 40; ++size) {
        EXPECT_EQ(parseStreamFormat({bytes.data(), size}, stream), Error::kMalformedFormatData) << size;
    }
    bytes[0] = 39;  // biSize
    EXPECT_EQ(parseStreamFormat(bytes, stream), Error::kMalformedFormatData);
    EXPECT_EQ(stream.coded, nullptr);
}

TEST(StreamFormatReader, RefusesForeignTagsAndImpossibleSizes) {
    StreamFormat stream;
    EXPECT_EQ(parseStreamFormat(formatData("MJPG", 4, 2), stream), Error::kUnknownCompression);
    EXPECT_EQ(parseStreamFormat(formatData("AR8O", 4, 2), stream), Error::kUnknownCompression);
    constexpr std::int32_t kMin = std::numeric_limits<std::int32_t>::min();
    for (const auto& [width, height] :
         {std::pair{0, 2}, {-4, 2}, {65536, 2}, {4, 0}, {4, 65536}, {4, -65536}, {4, kMin}}) {
        EXPECT_EQ(parseStreamFormat(formatData("O8RG", width, height), stream), Error::kInvalidPictureSize)
            << width << "x" << height;
    }
    EXPECT_EQ(parseStreamFormat(formatData("O8RG", 65535, 65535), stream), Error::kNone);
}

TEST(StreamFormatReader, DescribesTheCodedVideo) {
    const auto describeFile = [](const char* tag, std::int32_t height) {
        StreamFormat stream;
        EXPECT_EQ(parseStreamFormat(formatData(tag, 64, height), stream), Error::kNone);
        const OrvantisFrameFormat f = describe(stream);
        return std::vector<std::uint32_t>{f.width, f.height,     f.word3, f.word4, f.type,
                                          f.flags, f.colorSpace, f.range, f.word9};
    };
    using Words = std::vector<std::uint32_t>;
    EXPECT_EQ(describeFile("O8Y2", 576), (Words{64, 576, 254, 1, 104, 0, 1, 1, 0}));
    EXPECT_EQ(describeFile("O8Y2", 577), (Words{64, 577, 254, 1, 104, 0, 2, 1, 0}));
    EXPECT_EQ(describeFile("O0G0", 48), (Words{64, 48, 254, 1, 115, 0, 1, 1, 0}));
    EXPECT_EQ(describeFile("O8YA", 48), (Words{64, 48, 254, 1, 106, 0, 1, 1, 0}));
    EXPECT_EQ(describeFile("O4RA", 48), (Words{64, 48, 254, 1, 114, 0, 2, 2, 0}));
}

TEST(PayloadLayout, HoldsThePlanesOfOddSizes) {
    for (const TestType& type : allTypes()) {
        for (const auto& [width, height] :
             {std::pair{1U, 1U}, {3U, 1U}, {17U, 9U}, {16U, 8U}, {65535U, 65535U}}) {
            const PayloadLayout layout = payloadLayout(*findCodedType(type.code), width, height);
            EXPECT_EQ(layout.totalBytes, type.payloadBytes(width, height)) << type.tag;
            EXPECT_EQ(layout.planes[0].offset, 0U);
            EXPECT_EQ(layout.planes[kAlphaPlane].rowBytes != 0, type.alpha) << type.tag;
            EXPECT_EQ(layout.planes[1].rowBytes != 0, type.model != Model::kGrey) << type.tag;
        }
    }
    // 17x9 in 4:2:0: 153 bytes of Y, then 9x5 of U and of V.
    const PayloadLayout layout = payloadLayout(*findCodedType(105), 17, 9);
    EXPECT_EQ(layout.planes[1].offset, 153U);
    EXPECT_EQ(layout.planes[2].offset, 153U + 45U);
    EXPECT_EQ(layout.planes[1].rowBytes, 9U);
    EXPECT_EQ(layout.totalBytes, 153U + 45U + 45U);
}

TEST(Levels, KeepBlackAndWhite) {
    for (const unsigned bits : {8U, 10U, 12U, 14U}) {
        for (const unsigned outBits : {8U, 10U, 16U}) {
            const LevelTable table = fullRangeLevels(bits, outBits);
            ASSERT_EQ(table.size(), std::size_t{1} << bits);
            EXPECT_EQ(table.front(), 0);
            EXPECT_EQ(table.back(), (1U << outBits) - 1) << bits << " to " << outBits;
        }
        const LevelTable table = levels0To32768(bits);
        EXPECT_EQ(table.front(), 0);
        EXPECT_EQ(table.back(), 32768);
        EXPECT_EQ(table[table.size() / 2],
                  (table.size() / 2 * 32768 + table.size() / 2 - 1) / (table.size() - 1));
    }
}

TEST(Levels, RepeatBitsUpwardsAndRoundDownwards) {
    EXPECT_EQ(fullRangeLevels(8, 8)[0x5A], 0x5A);
    EXPECT_EQ(fullRangeLevels(8, 10)[0x5A], 0x169);  // 01011010'01
    EXPECT_EQ(fullRangeLevels(8, 16)[0x5A], 0x5A5A);
    EXPECT_EQ(fullRangeLevels(10, 16)[0x2AB], 0xAAEA);  // 1010101011'101010
    EXPECT_EQ(fullRangeLevels(10, 8)[2], 0);            // 0.4985
    EXPECT_EQ(fullRangeLevels(10, 8)[3], 1);            // 0.7478
    EXPECT_EQ(fullRangeLevels(14, 10)[16383 - 9], 1022);
    EXPECT_EQ(fullRangeLevels(14, 10)[16383 - 8], 1023);
}

TEST(Levels, LimitedRangeKeepsTheLevel) {
    EXPECT_EQ(limitedRangeLevels(8, 10)[235], 940);
    EXPECT_EQ(limitedRangeLevels(10, 10)[941], 941);
    EXPECT_EQ(limitedRangeLevels(10, 8)[940], 235);
    EXPECT_EQ(limitedRangeLevels(10, 8)[941], 235);
    EXPECT_EQ(limitedRangeLevels(10, 8)[942], 236);
    EXPECT_EQ(limitedRangeLevels(10, 8)[1023], 255);
}

TEST(ColorMatrixTest, BlackWhiteAndPrimaries) {
    for (const std::uint32_t space : {1U, 2U}) {
        for (const unsigned bits : {8U, 10U}) {
            for (const std::uint32_t white : {255U, 1023U, 32768U, 65535U}) {
                const unsigned s = 1U << (bits - 8);
                const ColorMatrix matrix(space, bits, white);
                const Rgba black = matrix.convert(16 * s, 128 * s, 128 * s);
                EXPECT_EQ(black.r + black.g + black.b, 0U);
                const Rgba full = matrix.convert(235 * s, 128 * s, 128 * s);
                EXPECT_EQ(full.r, white);
                EXPECT_EQ(full.g, white);
                EXPECT_EQ(full.b, white);
                const Rgba below = matrix.convert(0, 128 * s, 128 * s);
                EXPECT_EQ(below.r, 0U);
                const Rgba above = matrix.convert(256 * s - 1, 128 * s, 128 * s);
                EXPECT_EQ(above.g, white);
            }
        }
    }
    // The well-known 8-bit codes of red: (81, 90, 240) in Rec.601 and (63, 102, 240) in Rec.709.
    const Rgba red601 = ColorMatrix(1, 8, 255).convert(81, 90, 240);
    EXPECT_NEAR(red601.r, 255, 1);
    EXPECT_NEAR(red601.g, 0, 1);
    EXPECT_NEAR(red601.b, 0, 1);
    const Rgba red709 = ColorMatrix(2, 8, 255).convert(63, 102, 240);
    EXPECT_NEAR(red709.r, 255, 1);
    EXPECT_NEAR(red709.g, 0, 1);
    EXPECT_NEAR(red709.b, 0, 1);
    // Rec.709's green has no red in it; read with Rec.601 it has.
    EXPECT_NEAR(ColorMatrix(2, 8, 255).convert(173, 42, 26).r, 0, 1);
    EXPECT_NEAR(ColorMatrix(1, 8, 255).convert(173, 42, 26).r, 20, 1);
}

TEST(ErrorTexts, EveryCodeHasItsText) {
    const std::pair<std::int32_t, const char*> expected[] = {
        {0, "no error"},
        {1001, "library not initialised"},
        {1002, "invalid handle"},
        {1003, "too many sessions"},
        {1004, "handle in use by another call"},
        {1005, "invalid argument"},
        {1006, "malformed format data"},
        {1007, "unknown compression"},
        {1008, "invalid picture size"},
        {1009, "output type not supported for this video"},
        {1010, "invalid frame format"},
        {1011, "output size differs from the video"},
        {1012, "invalid flags"},
        {1013, "invalid colour space"},
        {1014, "invalid range"},
        {1015, "decompression already begun"},
        {1016, "decompression not begun"},
        {1017, "compressed frame truncated"},
        {1018, "invalid output buffer"},
        {1019, "output byte count does not match"},
        {1020, "unknown parameter"},
        {1021, "unknown type"},
        {1022, "not supported"},
        {1023, "out of memory"},
        {1024, "malformed stand-in settings"},
        {1025, "sessions still open"},
        {1026, "stand-in gate timed out"},
        {1027, "internal error"},
        {1900, "injected fault"},
    };
    for (const auto& [code, text] : expected) {
        EXPECT_STREQ(errorText(code), text) << code;
    }
    for (const std::int32_t code : {1, 1000, 1028, 1899, 1901, -1, 2147483647}) {
        EXPECT_STREQ(errorText(code), "unknown error") << code;
    }
}

}  // namespace
}  // namespace orvantis::standin::test
