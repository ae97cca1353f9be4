// Every coded type in every layout that it can be delivered in, against the reference decoder.

#include "standin/conversion.h"

#include <gtest/gtest.h>

#include <limits>
#include <memory>

#include "tests/testbed/standin/reference_decoder.h"
#include "tests/testbed/standin/standin_test_support.h"

namespace orvantis::standin::test {
namespace {

// Odd and even, one group and less, exact groups of two and six and each remainder.
struct Size {
    std::uint32_t width, height;
};
constexpr Size kSizes[] = {{1, 1}, {2, 2}, {3, 3},  {4, 1},  {5, 2}, {6, 3},
                           {7, 5}, {8, 4}, {11, 2}, {12, 1}, {17, 9}};

StreamFormat streamOf(const TestType& type, std::uint32_t width, std::uint32_t height) {
    StreamFormat stream;
    const auto bytes =
        formatData(type.tag, static_cast<std::int32_t>(width), static_cast<std::int32_t>(height));
    EXPECT_EQ(parseStreamFormat(bytes, stream), Error::kNone);
    return stream;
}

// Flags that a layout knows.
std::vector<std::uint32_t> flagsOf(std::uint32_t layout) {
    return layout == 31 || layout == 32 ? std::vector<std::uint32_t>{0, 1, 2, 3}
                                        : std::vector<std::uint32_t>{0, 1};
}

class EveryCodedType : public testing::TestWithParam<TestType> {};

TEST_P(EveryCodedType, IsDecodedIntoEveryLayoutItCanBeDeliveredIn) {
    const TestType& type = GetParam();
    int compared = 0;
    for (const Size size : kSizes) {
        const StreamFormat stream = streamOf(type, size.width, size.height);
        const std::vector<std::uint8_t> payload = randomPayload(type, size.width, size.height, size.width);
        for (const std::uint32_t layout : deliverableLayouts()) {
            for (const std::uint32_t flags : flagsOf(layout)) {
                OrvantisFrameFormat produced{};
                if (checkOutput(stream, fittingRequest(layout, flags), produced) != Error::kNone) {
                    continue;
                }
                SCOPED_TRACE(testing::Message() << size.width << "x" << size.height << " layout " << layout
                                                << " flags " << flags);
                const Conversion conversion(stream, produced);
                const std::size_t rowBytes = referenceRowBytes(layout, size.width);
                ASSERT_EQ(conversion.rowBytes(), rowBytes);
                ASSERT_EQ(conversion.payloadBytes(), payload.size());
                const auto padded = static_cast<std::int32_t>(rowBytes + 12);
                for (const std::int32_t pitch : {static_cast<std::int32_t>(rowBytes), padded, -padded}) {
                    const OutputRows rows(rowBytes, size.height, pitch);
                    ASSERT_EQ(conversion.check(payload.size(), rows.buffer()), Error::kNone);
                    conversion.convert(payload.data(), rows.buffer());
                    for (std::uint32_t row = 0; row < size.height; ++row) {
                        const std::uint32_t y = (flags & 1) != 0 ? size.height - 1 - row : row;
                        const auto expected =
                            referenceRow(type, payload, size.width, size.height, y,
                                         {layout, (flags & 2) != 0, type.model == Model::kRgb});
                        ASSERT_EQ(firstDifference(expected, rows.row(row), rowBytes), "")
                            << "pitch " << pitch << " row " << row;
                        ++compared;
                    }
                    ASSERT_EQ(rows.damagedBytes(), 0U) << "pitch " << pitch;
                }
            }
        }
    }
    EXPECT_GE(compared, 1000);
}

TEST_P(EveryCodedType, IsDeliveredInItsOwnFamilyOfLayoutsOnly) {
    const TestType& type = GetParam();
    std::vector<std::uint32_t> expected = {1, 2, 15, 16, 19, 31, 32};
    if (type.model == Model::kGrey || type.chromaStepX == 2) {
        expected = {1, 2, 4, 5, 11, 15, 16, 19, 31, 32};
    } else if (type.model == Model::kYuv) {
        expected = {1, 2, 15, 16, 19, 31, 32, 49, 50};
    }
    const StreamFormat stream = streamOf(type, 6, 4);
    std::vector<std::uint32_t> delivered;
    for (std::uint32_t layout = 0; layout <= 130; ++layout) {
        OrvantisFrameFormat produced{};
        if (checkOutput(stream, fittingRequest(layout), produced) == Error::kNone) {
            delivered.push_back(layout);
        }
    }
    EXPECT_EQ(delivered, expected);
}

// Words above the depth come from a damaged payload; they must not spill into their neighbours.
TEST_P(EveryCodedType, TakesWordsAboveItsDepthForTheLargestSample) {
    const TestType& type = GetParam();
    const std::vector<std::uint8_t> tooLarge(type.payloadBytes(7, 3), 0xFF);
    std::vector<std::uint8_t> largest = tooLarge;
    if (type.bits > 8) {
        for (std::size_t i = 1; i < largest.size(); i += 2) {
            largest[i] = static_cast<std::uint8_t>((1U << (type.bits - 8)) - 1);
        }
    }
    const StreamFormat stream = streamOf(type, 7, 3);
    for (const std::uint32_t layout : deliverableLayouts()) {
        OrvantisFrameFormat produced{};
        if (checkOutput(stream, fittingRequest(layout), produced) != Error::kNone) {
            continue;
        }
        const Conversion conversion(stream, produced);
        const std::size_t rowBytes = referenceRowBytes(layout, 7);
        const OutputRows rows(rowBytes, 3, static_cast<std::int32_t>(rowBytes));
        conversion.convert(tooLarge.data(), rows.buffer());
        for (std::uint32_t y = 0; y < 3; ++y) {
            EXPECT_EQ(firstDifference(
                          referenceRow(type, largest, 7, 3, y, {layout, false, type.model == Model::kRgb}),
                          rows.row(y), rowBytes),
                      "")
                << "layout " << layout;
        }
    }
}

INSTANTIATE_TEST_SUITE_P(Conversion, EveryCodedType, testing::ValuesIn(allTypes()), TagOfParam());

// YUV taller than 576 rows was coded with Rec.709, and the colour space asked for does not change a sample.
TEST(Conversion, TallYuvPicturesUseRec709InRgbLayouts) {
    const TestType& type = testType("O8Y4");
    const StreamFormat stream = streamOf(type, 2, 577);
    const std::vector<std::uint8_t> payload = randomPayload(type, 2, 577, 1);
    for (const std::uint32_t colorSpace : {1U, 2U}) {
        OrvantisFrameFormat produced{};
        ASSERT_EQ(checkOutput(stream, request(2, 0, colorSpace, 2), produced), Error::kNone);
        const Conversion conversion(stream, produced);
        const OutputRows rows(8, 577, 8);
        conversion.convert(payload.data(), rows.buffer());
        for (std::uint32_t y = 0; y < 577; ++y) {
            ASSERT_EQ(
                firstDifference(referenceRow(type, payload, 2, 577, y, {2, false, true}), rows.row(y), 8),
                "");
        }
    }
}

TEST(Conversion, YuvSamplesPassUntouchedInBothColorSpaces) {
    const TestType& type = testType("O8Y2");
    const StreamFormat stream = streamOf(type, 6, 2);
    const std::vector<std::uint8_t> payload = randomPayload(type, 6, 2, 3);
    std::vector<std::vector<std::uint8_t>> pictures;
    for (const std::uint32_t colorSpace : {1U, 2U}) {
        OrvantisFrameFormat produced{};
        ASSERT_EQ(checkOutput(stream, request(4, 0, colorSpace, 1), produced), Error::kNone);
        EXPECT_EQ(produced.colorSpace, colorSpace);
        const OutputRows rows(12, 2, 12);
        Conversion(stream, produced).convert(payload.data(), rows.buffer());
        pictures.push_back(rows.packed());
    }
    EXPECT_EQ(pictures[0], pictures[1]);
    EXPECT_EQ(pictures[0][0], payload[0]);      // the first Y
    EXPECT_EQ(pictures[0][1], payload[6 * 2]);  // the first U
}

// The bytes of one known pixel, written out.
TEST(Conversion, ByteOrderOfEachLayout) {
    const auto decode = [](const TestType& type, std::vector<std::uint8_t> payload, std::uint32_t width,
                           OrvantisFrameFormat output) {
        const StreamFormat stream = streamOf(type, width, 1);
        OrvantisFrameFormat produced{};
        EXPECT_EQ(checkOutput(stream, output, produced), Error::kNone);
        const std::size_t rowBytes = referenceRowBytes(output.type, width);
        const OutputRows rows(rowBytes, 1, static_cast<std::int32_t>(rowBytes));
        Conversion(stream, produced).convert(payload.data(), rows.buffer());
        return rows.packed();
    };
    using Bytes = std::vector<std::uint8_t>;
    const Bytes gbra = {0x22, 0x33, 0x11, 0x44};  // planes G B R A
    EXPECT_EQ(decode(testType("O8RA"), gbra, 1, request(2)), (Bytes{0x33, 0x22, 0x11, 0x44}));
    EXPECT_EQ(decode(testType("O8RA"), gbra, 1, request(1)), (Bytes{0x33, 0x22, 0x11, 0xFF}));
    EXPECT_EQ(decode(testType("O8RA"), gbra, 1, request(19)), (Bytes{0x44, 0x11, 0x22, 0x33}));
    EXPECT_EQ(decode(testType("O8RA"), gbra, 1, request(16)), (Bytes{0xFF, 0x11, 0x22, 0x33}));
    // 0x33 is 0x3333 in 16 bits and round(0x33 x 32768 / 255) = 0x199A in the range 0 to 32768.
    EXPECT_EQ(decode(testType("O8RA"), gbra, 1, request(31)),
              (Bytes{0x33, 0x33, 0x22, 0x22, 0x11, 0x11, 0x44, 0x44}));
    EXPECT_EQ(decode(testType("O8RA"), {0x33, 0x33, 0x33, 0xFF}, 1, request(31, 2)),
              (Bytes{0x9A, 0x19, 0x9A, 0x19, 0x9A, 0x19, 0x00, 0x80}));
    EXPECT_EQ(decode(testType("O8RG"), {0x33, 0x33, 0x33}, 1, request(32, 2)),
              (Bytes{0x9A, 0x19, 0x9A, 0x19, 0x9A, 0x19, 0x00, 0x80}));
    // R = 0x3FF, G = 0x001, B = 0x200: 1111111111'0000000001'1000000000'00 = FFC0'1800.
    EXPECT_EQ(decode(testType("O0RG"), {0x01, 0x00, 0x00, 0x02, 0xFF, 0x03}, 1, request(15)),
              (Bytes{0x00, 0x18, 0xC0, 0xFF}));
    // Y0 Y1, U, V
    EXPECT_EQ(decode(testType("O8Y2"), {1, 2, 3, 4}, 2, request(4, 0, 1, 1)), (Bytes{1, 3, 2, 4}));
    EXPECT_EQ(decode(testType("O8Y2"), {1, 2, 3, 4}, 2, request(5, 0, 1, 1)), (Bytes{3, 1, 4, 2}));
    // An odd width: the last pixel twice.
    EXPECT_EQ(decode(testType("O8Y2"), {1, 3, 4}, 1, request(4, 0, 1, 1)), (Bytes{1, 3, 1, 4}));
    // Y, U, V, A
    EXPECT_EQ(decode(testType("O8YA"), {1, 2, 3, 4}, 1, request(50, 0, 1, 1)), (Bytes{3, 2, 1, 4}));
    EXPECT_EQ(decode(testType("O8YA"), {1, 2, 3, 4}, 1, request(49, 0, 1, 1)), (Bytes{3, 2, 1, 0xFF}));
    EXPECT_EQ(decode(testType("O8Y4"), {1, 2, 3}, 1, request(50, 0, 1, 1)), (Bytes{3, 2, 1, 0xFF}));
    // Grey has neutral chroma; 10 bits: Y = 0x3AC, U = V = 0x200: 0x200 | 0x3AC << 10 | 0x200 << 20, then Y
    // again.
    EXPECT_EQ(decode(testType("O8G0"), {7, 9}, 2, request(4, 0, 1, 1)), (Bytes{7, 128, 9, 128}));
    EXPECT_EQ(decode(testType("O0G0"), {0xAC, 0x03}, 1, request(11, 0, 1, 1)),
              (Bytes{0x00, 0xB2, 0x0E, 0x20, 0xAC, 0x03, 0x00, 0x00, 0, 0, 0, 0, 0, 0, 0, 0}));
}

class ConversionCheck : public testing::Test {
 protected:
    ConversionCheck() {
        const StreamFormat stream = streamOf(testType("O8RG"), 5, 4);
        OrvantisFrameFormat produced{};
        EXPECT_EQ(checkOutput(stream, request(2), produced), Error::kNone);
        m_conversion = std::make_unique<Conversion>(stream, produced);
    }
    Error check(std::uint64_t frameBytes, std::int32_t pitch) {
        return m_conversion->check(frameBytes, {m_pixels, static_cast<std::uint32_t>(pitch),
                                                static_cast<std::uint32_t>(pitch) * 4U});
    }

    std::uint8_t m_pixels[1] = {};
    std::unique_ptr<Conversion> m_conversion;
};

TEST_F(ConversionCheck, AFrameOneByteShortIsTruncatedAndALongerOneIsNot) {
    EXPECT_EQ(check(0, 20), Error::kFrameTruncated);
    EXPECT_EQ(check(59, 20), Error::kFrameTruncated);
    EXPECT_EQ(check(60, 20), Error::kNone);
    EXPECT_EQ(check(61, 20), Error::kNone);
}

TEST_F(ConversionCheck, APitchMustHoldARowInEitherDirection) {
    EXPECT_EQ(check(60, 19), Error::kInvalidOutputBuffer);
    EXPECT_EQ(check(60, -19), Error::kInvalidOutputBuffer);
    EXPECT_EQ(check(60, 0), Error::kInvalidOutputBuffer);
    EXPECT_EQ(check(60, -20), Error::kNone);
    EXPECT_EQ(check(60, std::numeric_limits<std::int32_t>::min()), Error::kNone);
}

TEST_F(ConversionCheck, PixelsMustBeThere) {
    EXPECT_EQ(m_conversion->check(60, {nullptr, 20, 80}), Error::kInvalidOutputBuffer);
}

TEST_F(ConversionCheck, TotalBytesMustBePitchTimesHeightModulo2To32) {
    EXPECT_EQ(m_conversion->check(60, {m_pixels, 20, 79}), Error::kOutputBytesMismatch);
    EXPECT_EQ(m_conversion->check(60, {m_pixels, 20, 81}), Error::kOutputBytesMismatch);
    EXPECT_EQ(m_conversion->check(60, {m_pixels, 20, 0}), Error::kOutputBytesMismatch);
    EXPECT_EQ(m_conversion->check(60, {m_pixels, 0xFFFFFFECU, 0xFFFFFFB0U}), Error::kNone);  // -20, -80
    EXPECT_EQ(m_conversion->check(60, {m_pixels, 0x40000001U, 4}), Error::kNone);            // wraps
}

class CheckOutput : public testing::Test {
 protected:
    // On an error the receiving record keeps its pattern.
    Error check(const OrvantisFrameFormat& output) {
        m_produced = {9, 9, 9, 9, 9, 9, 9, 9, 9};
        const Error error = checkOutput(streamOf(testType("O8Y2"), 720, 576), output, m_produced);
        if (error != Error::kNone) {
            EXPECT_EQ(m_produced.width, 9U);
            EXPECT_EQ(m_produced.word9, 9U);
        }
        return error;
    }
    OrvantisFrameFormat with(std::uint32_t OrvantisFrameFormat::*word, std::uint32_t value) {
        OrvantisFrameFormat output = request(4, 1, 2, 1);
        output.*word = value;
        return output;
    }

    OrvantisFrameFormat m_produced{};
};

TEST_F(CheckOutput, ProducesTheRequestWithTheVideosSize) {
    ASSERT_EQ(check(request(4, 1, 2, 1)), Error::kNone);
    EXPECT_EQ(m_produced.width, 720U);
    EXPECT_EQ(m_produced.height, 576U);
    EXPECT_EQ(m_produced.word3, 254U);
    EXPECT_EQ(m_produced.word4, 1U);
    EXPECT_EQ(m_produced.type, 4U);
    EXPECT_EQ(m_produced.flags, 1U);
    EXPECT_EQ(m_produced.colorSpace, 2U);
    EXPECT_EQ(m_produced.range, 1U);
    EXPECT_EQ(m_produced.word9, 0U);
}

TEST_F(CheckOutput, TheFixedWordsAreDemanded) {
    EXPECT_EQ(check(with(&OrvantisFrameFormat::word3, 255)), Error::kInvalidFrameFormat);
    EXPECT_EQ(check(with(&OrvantisFrameFormat::word4, 0)), Error::kInvalidFrameFormat);
    EXPECT_EQ(check(with(&OrvantisFrameFormat::word9, 1)), Error::kInvalidFrameFormat);
}

TEST_F(CheckOutput, SizesAreZeroOrTheVideos) {
    EXPECT_EQ(check(with(&OrvantisFrameFormat::width, 720)), Error::kNone);
    EXPECT_EQ(check(with(&OrvantisFrameFormat::height, 576)), Error::kNone);
    EXPECT_EQ(check(with(&OrvantisFrameFormat::width, 719)), Error::kOutputSizeMismatch);
    EXPECT_EQ(check(with(&OrvantisFrameFormat::height, 577)), Error::kOutputSizeMismatch);
}

TEST_F(CheckOutput, UnknownTypesAndTypesThatDoNotFitAreToldApart) {
    EXPECT_EQ(check(with(&OrvantisFrameFormat::type, 0)), Error::kUnknownType);
    EXPECT_EQ(check(with(&OrvantisFrameFormat::type, 62)), Error::kUnknownType);
    EXPECT_EQ(check(with(&OrvantisFrameFormat::type, 3)), Error::kOutputNotSupported);   // known by name only
    EXPECT_EQ(check(with(&OrvantisFrameFormat::type, 50)), Error::kOutputNotSupported);  // 4:4:4
    EXPECT_EQ(check(with(&OrvantisFrameFormat::type, 104)), Error::kOutputNotSupported);  // a coded type
}

TEST_F(CheckOutput, FlagsAreOnesTheLayoutKnows) {
    EXPECT_EQ(check(with(&OrvantisFrameFormat::flags, 0)), Error::kNone);
    EXPECT_EQ(check(with(&OrvantisFrameFormat::flags, 2)), Error::kInvalidFlags);
    EXPECT_EQ(check(with(&OrvantisFrameFormat::flags, 4)), Error::kInvalidFlags);
    EXPECT_EQ(check(request(31, 3)), Error::kNone);
    EXPECT_EQ(check(request(31, 4)), Error::kInvalidFlags);
    EXPECT_EQ(check(request(2, 2)), Error::kInvalidFlags);
}

TEST_F(CheckOutput, ColorSpaceIsOneOfTwo) {
    EXPECT_EQ(check(with(&OrvantisFrameFormat::colorSpace, 0)), Error::kInvalidColorSpace);
    EXPECT_EQ(check(with(&OrvantisFrameFormat::colorSpace, 1)), Error::kNone);
    EXPECT_EQ(check(with(&OrvantisFrameFormat::colorSpace, 3)), Error::kInvalidColorSpace);
}

TEST_F(CheckOutput, RangeIsLimitedForYuvAndFullForRgb) {
    EXPECT_EQ(check(with(&OrvantisFrameFormat::range, 0)), Error::kInvalidRange);
    EXPECT_EQ(check(with(&OrvantisFrameFormat::range, 2)), Error::kInvalidRange);
    EXPECT_EQ(check(request(2, 0, 2, 1)), Error::kInvalidRange);
    EXPECT_EQ(check(request(2, 0, 2, 2)), Error::kNone);
}

}  // namespace
}  // namespace orvantis::standin::test
