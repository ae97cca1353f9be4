// The checked calls into the codec library: what each passes, what it answers, and the message of each
// failure.
#include "video/orvantis_codec.h"

#include <gtest/gtest.h>

#include <array>
#include <cstdint>
#include <limits>
#include <sstream>
#include <string>
#include <vector>

#include "tests/support/fake_codec/fake_codec.h"
#include "video/orvantis_error.h"

namespace orvantis {
namespace {

using fakecodec::Call;
using fakecodec::FakeCodec;
using fakecodec::Function;

constexpr std::array<std::uint8_t, 5> kStreamFormat{1, 2, 3, 4, 5};
constexpr OrvantisFrameFormat kOutput{0, 0, 254, 1, 31, 3, 2, 2, 0};

// As the contexts render it.
std::string hexadecimal(const void* address) {
    std::ostringstream text;
    text << "0x" << std::hex << reinterpret_cast<std::uintptr_t>(address);
    return text.str();
}

void expectSame(const OrvantisFrameFormat& actual, const OrvantisFrameFormat& expected) {
    EXPECT_EQ(actual.width, expected.width);
    EXPECT_EQ(actual.height, expected.height);
    EXPECT_EQ(actual.word3, expected.word3);
    EXPECT_EQ(actual.word4, expected.word4);
    EXPECT_EQ(actual.type, expected.type);
    EXPECT_EQ(actual.flags, expected.flags);
    EXPECT_EQ(actual.colorSpace, expected.colorSpace);
    EXPECT_EQ(actual.range, expected.range);
    EXPECT_EQ(actual.word9, expected.word9);
}

template <class Action>
std::string codecMessageOf(Action&& action) {
    try {
        action();
    } catch (const OrvantisError& error) {
        return error.what();
    }
    return "no error";
}

TEST(OrvantisError, MessageHasCodeLibraryTextAndContext) {
    FakeCodec library;
    library.setString(kOrvantisStringErrorText, 5, "out of coffee");
    const OrvantisError error("decompressEnd()", CodecResult{5});
    EXPECT_STREQ(error.what(), "Orvantis error (5): out of coffee: decompressEnd()");
    EXPECT_EQ(error.code, CodecResult{5});
}

TEST(OrvantisError, IsCaughtAsRuntimeErrorAndAsException) {
    FakeCodec library;
    EXPECT_THROW(throw OrvantisError("x", CodecResult{1}), std::runtime_error);
    EXPECT_THROW(throw OrvantisError("x", CodecResult{1}), std::exception);
}

TEST(OrvantisError, NegativeCodeIsDecimalAndReachesTheLibraryUnchanged) {
    FakeCodec library;
    const OrvantisError error("x", CodecResult{std::numeric_limits<std::int32_t>::min()});
    EXPECT_STREQ(error.what(), "Orvantis error (-2147483648): error-2147483648: x");
    const std::vector<Call> asked = library.callsOf(Function::kGetString);
    ASSERT_EQ(asked.size(), 1U);
    EXPECT_EQ(asked[0].number, 2U);
    EXPECT_EQ(asked[0].code, 0x80000000U);
}

TEST(OrvantisError, UnknownCodeHasWhateverTextTheLibraryGives) {
    FakeCodec library;
    library.setString(kOrvantisStringErrorText, 12345, "");
    EXPECT_STREQ(OrvantisError("x", CodecResult{12345}).what(), "Orvantis error (12345): : x");
}

TEST(OrvantisError, NullTextIsEmpty) {
    FakeCodec library;
    library.setNullString(kOrvantisStringErrorText, 9);
    EXPECT_STREQ(OrvantisError("x", CodecResult{9}).what(), "Orvantis error (9): : x");
}

TEST(OrvantisError, PercentSignsInTextsAreNoFormats) {
    FakeCodec library;
    library.setString(kOrvantisStringErrorText, 9, "%s%n");
    EXPECT_STREQ(OrvantisError("%d%s", CodecResult{9}).what(), "Orvantis error (9): %s%n: %d%s");
}

TEST(OrvantisCodec, OpensAndClosesInThisOrder) {
    FakeCodec library;
    {
        const OrvantisCodec codec;
        EXPECT_EQ(codec.handle(), 0x5100U);
        EXPECT_EQ(library.callNames(), (std::vector<std::string>{"orvantis_library_init", "orvantis_open"}));
        library.forgetCalls();
    }
    EXPECT_EQ(library.callNames(), (std::vector<std::string>{"orvantis_close", "orvantis_library_close"}));
    EXPECT_EQ(library.callsOf(Function::kClose).at(0).handle, 0x5100U);
}

TEST(OrvantisCodec, FailedInitialisationThrowsAndClosesNothing) {
    FakeCodec library;
    library.failAll(Function::kLibraryInit, 3);
    EXPECT_EQ(codecMessageOf([] { const OrvantisCodec codec; }),
              "Orvantis error (3): error3: OrvantisCodec(): orvantis_library_init()");
    EXPECT_EQ(library.callNames(), std::vector<std::string>{"orvantis_library_init"});
}

TEST(OrvantisCodec, FailedOpenThrowsAndClosesNothing) {
    FakeCodec library;
    library.failAll(Function::kOpen, -4);
    EXPECT_EQ(codecMessageOf([] { const OrvantisCodec codec; }),
              "Orvantis error (-4): error-4: OrvantisCodec(): orvantis_open()");
    EXPECT_EQ(library.callNames(), (std::vector<std::string>{"orvantis_library_init", "orvantis_open"}));
}

TEST(OrvantisCodec, HandleZeroIsNoSessionToClose) {
    FakeCodec library;
    library.nextHandle = 0;
    { const OrvantisCodec codec; }
    EXPECT_EQ(library.callNames(), (std::vector<std::string>{"orvantis_library_init", "orvantis_open"}));
}

TEST(OrvantisCodec, FailuresOfTheCloseCallsAreSwallowed) {
    FakeCodec library;
    library.failAll(Function::kClose, 1);
    library.failAll(Function::kLibraryClose, 1);
    { const OrvantisCodec codec; }
    EXPECT_EQ(library.count(Function::kClose), 1);
    EXPECT_EQ(library.count(Function::kLibraryClose), 1);
}

TEST(OrvantisCodec, ARunningDecompressionIsNotEndedByTheDestructor) {
    FakeCodec library;
    {
        OrvantisCodec codec;
        codec.decompressBegin(kStreamFormat, kOutput);
    }
    EXPECT_EQ(library.count(Function::kDecompressEnd), 0);
    EXPECT_EQ(library.count(Function::kClose), 1);
}

TEST(OrvantisCodec, EmptyFrameFormatHasTheTwoWordsOnly) {
    expectSame(emptyFrameFormat(), {0, 0, 254, 1, 0, 0, 0, 0, 0});
}

TEST(OrvantisCodecQuery, WithoutOutputTellsTheCodedFormat) {
    FakeCodec library;
    library.coded = {1920, 1080, 254, 1, 104, 5, 2, 1, 9};
    const OrvantisCodec codec;
    expectSame(codec.decompressQuery(kStreamFormat, nullptr), library.coded);
    const Call call = library.callsOf(Function::kDecompressQuery).at(0);
    EXPECT_EQ(call.handle, codec.handle());
    EXPECT_EQ(call.data, kStreamFormat.data());
    EXPECT_EQ(call.bytes, 5U);
    EXPECT_FALSE(call.output.has_value());
    expectSame(call.answerOnEntry, {0, 0, 254, 1, 0, 0, 0, 0, 0});
}

TEST(OrvantisCodecQuery, WithOutputPassesIt) {
    FakeCodec library;
    const OrvantisCodec codec;
    expectSame(codec.decompressQuery(kStreamFormat, &kOutput), {64, 48, 254, 1, 31, 3, 2, 2, 0});
    expectSame(*library.callsOf(Function::kDecompressQuery).at(0).output, kOutput);
}

TEST(OrvantisCodecQuery, FailureNamesBufferAndAbsentOutput) {
    FakeCodec library;
    library.failAll(Function::kDecompressQuery, 7);
    const OrvantisCodec codec;
    EXPECT_EQ(
        codecMessageOf([&] { codec.decompressQuery(kStreamFormat, nullptr); }),
        "Orvantis error (7): error7: decompressQuery({" + hexadecimal(kStreamFormat.data()) + ",5},null)");
}

TEST(OrvantisCodecQuery, FailureNamesTheOutputWithItsTypeAndColourSpace) {
    FakeCodec library;
    library.setString(kOrvantisStringTypeName, 31, "BGRA16");
    library.setString(kOrvantisStringColorSpaceName, 2, "Rec.709");
    library.failAll(Function::kDecompressQuery, 7);
    const OrvantisCodec codec;
    EXPECT_EQ(codecMessageOf([&] { codec.decompressQuery(kStreamFormat, &kOutput); }),
              "Orvantis error (7): error7: decompressQuery({" + hexadecimal(kStreamFormat.data()) +
                  ",5},{0,0,254,1,31 (BGRA16),3,2 (Rec.709),2,0})");
}

TEST(OrvantisCodecQuery, AbsentBufferIsNull) {
    FakeCodec library;
    library.failAll(Function::kDecompressQuery, 7);
    const OrvantisCodec codec;
    EXPECT_EQ(codecMessageOf([&] { codec.decompressQuery({}, nullptr); }),
              "Orvantis error (7): error7: decompressQuery(null,null)");
}

TEST(OrvantisCodecQuery, CanDecompressAnswersWithoutAskingForTexts) {
    FakeCodec library;
    library.accepts = [](const OrvantisFrameFormat& output) { return output.type == 31; };
    const OrvantisCodec codec;
    EXPECT_TRUE(codec.canDecompress(kStreamFormat, kOutput));
    OrvantisFrameFormat other = kOutput;
    other.type = 30;
    EXPECT_FALSE(codec.canDecompress(kStreamFormat, other));
    EXPECT_EQ(library.count(Function::kGetString), 0);
    const Call call = library.callsOf(Function::kDecompressQuery).at(1);
    EXPECT_EQ(call.handle, codec.handle());
    EXPECT_EQ(call.data, kStreamFormat.data());
    EXPECT_EQ(call.bytes, 5U);
    EXPECT_EQ(call.output->type, 30U);
}

TEST(OrvantisCodecDecode, BeginPassesFormatAndOutputAndAnswersWhatIsProduced) {
    FakeCodec library;
    OrvantisCodec codec;
    expectSame(codec.decompressBegin(kStreamFormat, kOutput), {64, 48, 254, 1, 31, 3, 2, 2, 0});
    const Call call = library.callsOf(Function::kDecompressBegin).at(0);
    EXPECT_EQ(call.handle, codec.handle());
    EXPECT_EQ(call.data, kStreamFormat.data());
    EXPECT_EQ(call.bytes, 5U);
    expectSame(*call.output, kOutput);
}

TEST(OrvantisCodecDecode, FailedBeginNamesItsArguments) {
    FakeCodec library;
    library.failAll(Function::kDecompressBegin, 11);
    OrvantisCodec codec;
    EXPECT_EQ(codecMessageOf([&] { codec.decompressBegin(kStreamFormat, kOutput); }),
              "Orvantis error (11): error11: decompressBegin({" + hexadecimal(kStreamFormat.data()) +
                  ",5},{0,0,254,1,31 (type31),3,2 (space2),2,0})");
}

TEST(OrvantisCodecDecode, DecompressPassesBothBuffers) {
    FakeCodec library;
    OrvantisCodec codec;
    codec.decompressBegin(kStreamFormat, kOutput);
    const std::array<std::byte, 3> frame{};
    char pixels[4];
    codec.decompress(frame, {pixels, 256, 256 * 48});
    const Call call = library.callsOf(Function::kDecompress).at(0);
    EXPECT_EQ(call.handle, codec.handle());
    EXPECT_EQ(call.data, frame.data());
    EXPECT_EQ(call.bytes, 3U);
    EXPECT_EQ(call.buffer.pixels, pixels);
    EXPECT_EQ(call.buffer.rowPitch, 256U);
    EXPECT_EQ(call.buffer.totalBytes, 256U * 48U);
}

TEST(OrvantisCodecDecode, FailedDecompressNamesBothBuffers) {
    FakeCodec library;
    library.failAll(Function::kDecompress, 12);
    OrvantisCodec codec;
    codec.decompressBegin(kStreamFormat, kOutput);
    const std::array<std::byte, 3> frame{};
    char pixels[4];
    EXPECT_EQ(codecMessageOf([&] {
                  codec.decompress(frame, {pixels, 256, 12288});
              }),
              "Orvantis error (12): error12: decompress({" + hexadecimal(frame.data()) + ",3},{" +
                  hexadecimal(pixels) + ",12288})");
}

TEST(OrvantisCodecDecode, EndIsNamedWithoutArguments) {
    FakeCodec library;
    OrvantisCodec codec;
    codec.decompressBegin(kStreamFormat, kOutput);
    codec.decompressEnd();
    EXPECT_EQ(library.callsOf(Function::kDecompressEnd).at(0).handle, codec.handle());

    codec.decompressBegin(kStreamFormat, kOutput);
    library.failAll(Function::kDecompressEnd, 13);
    EXPECT_EQ(codecMessageOf([&] { codec.decompressEnd(); }),
              "Orvantis error (13): error13: decompressEnd()");
}

TEST(OrvantisCodecParam, PassesTheTypeAndAnswersTheValue) {
    FakeCodec library;
    library.param = [](std::uint32_t parameter, std::uint32_t type) { return parameter * 100 + type; };
    const OrvantisCodec codec;
    EXPECT_EQ(codec.getParam(7, 31), 731U);
    const Call call = library.callsOf(Function::kGetParam).at(0);
    EXPECT_EQ(call.handle, codec.handle());
    EXPECT_EQ(call.number, 7U);
    EXPECT_EQ(call.code, 31U);
    EXPECT_EQ(call.bytes, 4U);
}

TEST(OrvantisCodecParam, FailureNamesTheParameter) {
    FakeCodec library;
    library.failAll(Function::kGetParam, 2);
    const OrvantisCodec codec;
    EXPECT_EQ(codecMessageOf([&] { codec.getParam(9, 31); }), "Orvantis error (2): error2: getParam(9,31)");
}

TEST(OrvantisCodecNames, NullIsTheEmptyText) {
    FakeCodec library;
    library.setNullString(kOrvantisStringTypeName, 1);
    library.setNullString(kOrvantisStringColorSpaceName, 1);
    EXPECT_STREQ(codecTypeName(1), "");
    EXPECT_STREQ(colorSpaceName(1), "");
    EXPECT_STREQ(codecTypeName(2), "type2");
    EXPECT_STREQ(colorSpaceName(2), "space2");
}

TEST(OrvantisCodecNames, NullNamesDoNotBreakAContext) {
    FakeCodec library;
    library.setNullString(kOrvantisStringTypeName, 31);
    library.setNullString(kOrvantisStringColorSpaceName, 2);
    library.failAll(Function::kDecompressBegin, 1);
    OrvantisCodec codec;
    EXPECT_EQ(codecMessageOf([&] { codec.decompressBegin({}, kOutput); }),
              "Orvantis error (1): error1: decompressBegin(null,{0,0,254,1,31 (),3,2 (),2,0})");
}

}  // namespace
}  // namespace orvantis
