// Which formats a video is offered in: what the library accepts, narrowed by what its coded type prefers.
#include <gtest/gtest.h>

#include <algorithm>
#include <array>
#include <ostream>
#include <string>
#include <vector>

#include "diag/format.h"
#include "tests/support/fake_codec/fake_codec.h"
#include "tests/support/fake_host/fake_host.h"
#include "tests/support/format_lists.h"
#include "video/decode_formats.h"
#include "video/format_tables.h"
#include "video/orvantis_error.h"

namespace orvantis {
namespace {

using fakecodec::Call;
using fakecodec::FakeCodec;
using fakecodec::Function;
using formatlists::Family;
using test::FakeHost;

constexpr std::array<std::uint8_t, 40> kFormat{40};

using Codes = std::vector<std::string>;

const std::size_t kRows = formatlists::deliveredFormats().size();

const Codes kAllCodes = formatlists::deliveredCodes({Family::kRgb, Family::kYuv422, Family::kYuv444});

class DecodeFormats : public testing::Test {
 protected:
    DecodeFormats() { buildFormatTables(host.basicSuite()); }

    Codes build() {
        Codes codes;
        for (const FormatInfo& row : buildDecodeFormats(kFormat)) {
            codes.push_back(fourccToString(row.pixelFormat));
        }
        return codes;
    }

    FakeHost host;
    FakeCodec library;
};

TEST_F(DecodeFormats, EightBit422IsNarrowedToPackedYuv) {
    library.coded.type = 104;
    EXPECT_EQ(build(), (Codes{"yuy2", "yuy3", "uyvy", "uyv7"}));
}

TEST_F(DecodeFormats, EightBitRgbaHasNoPreferenceAndKeepsTableOrder) {
    library.coded.type = 102;
    EXPECT_EQ(build(), kAllCodes);
}

TEST_F(DecodeFormats, TenBit422IsNotNarrowedToV210) {
    library.coded.type = 108;
    EXPECT_EQ(build(), kAllCodes);
}

TEST_F(DecodeFormats, TenBit420IsNarrowedToV210) {
    library.coded.type = 123;
    EXPECT_EQ(build(), (Codes{"v210", "v211"}));
}

TEST_F(DecodeFormats, FourFourFourVariantsAreNarrowedToTheirOwn) {
    library.coded.type = 106;
    EXPECT_EQ(build(), (Codes{"vuya", "VUYA"}));
    library.coded.type = 103;
    EXPECT_EQ(build(), (Codes{"vuyx", "vux7"}));
}

TEST_F(DecodeFormats, OnlyAcceptedRowsAreCandidates) {
    library.coded.type = 102;
    library.accepts = [](const OrvantisFrameFormat& output) { return output.type == 2 || output.type == 31; };
    EXPECT_EQ(build(), (Codes{"bgra", "Bgra"}));
}

TEST_F(DecodeFormats, OneAcceptedPreferenceIsEnoughToNarrow) {
    library.coded.type = 105;
    library.accepts = [](const OrvantisFrameFormat& output) {
        return output.type == 2 || (output.type == 5 && output.colorSpace == 2);
    };
    EXPECT_EQ(build(), (Codes{"uyv7"}));
}

TEST_F(DecodeFormats, WithoutAnAcceptedPreferenceAllCandidatesStay) {
    library.coded.type = 105;
    library.accepts = [](const OrvantisFrameFormat& output) { return output.type == 2 || output.type == 11; };
    EXPECT_EQ(build(), (Codes{"bgra", "v210", "v211"}));
}

TEST_F(DecodeFormats, NothingAcceptedIsAnEmptyList) {
    library.coded.type = 105;
    library.accepts = [](const OrvantisFrameFormat&) { return false; };
    EXPECT_EQ(build(), Codes{});
}

TEST_F(DecodeFormats, AsksEveryRowInOrderThenTheCodedTypeInASessionOfItsOwn) {
    build();
    const std::vector<Call> calls = library.calls();
    ASSERT_EQ(calls.size(), 2U + kRows + 1U + 2U);
    EXPECT_EQ(calls[0].function, Function::kLibraryInit);
    EXPECT_EQ(calls[1].function, Function::kOpen);
    for (std::size_t i = 0; i < kRows; ++i) {
        const Call& call = calls[2 + i];
        const FormatInfo& row = FormatInfos()[i];
        SCOPED_TRACE(row.name);
        EXPECT_EQ(call.function, Function::kDecompressQuery);
        EXPECT_EQ(call.handle, calls[1].handle);
        EXPECT_EQ(call.data, kFormat.data());
        EXPECT_EQ(call.bytes, 40U);
        ASSERT_TRUE(call.output.has_value());
        EXPECT_EQ(call.output->type, row.orvType);
        EXPECT_EQ(call.output->colorSpace, row.colorSpace);
    }
    EXPECT_EQ(calls[kRows + 2].function, Function::kDecompressQuery);
    EXPECT_FALSE(calls[kRows + 2].output.has_value());
    EXPECT_EQ(calls[kRows + 3].function, Function::kClose);
    EXPECT_EQ(calls[kRows + 3].handle, calls[1].handle);
    EXPECT_EQ(calls[kRows + 4].function, Function::kLibraryClose);
}

TEST_F(DecodeFormats, RefusedRowsCostNoErrorTexts) {
    library.accepts = [](const OrvantisFrameFormat&) { return false; };
    build();
    EXPECT_EQ(library.count(Function::kGetString), 0);
}

TEST_F(DecodeFormats, UnknownCodedTypeThrowsAndClosesTheSession) {
    library.coded.type = 99;
    try {
        build();
        ADD_FAILURE() << "nothing was thrown";
    } catch (const std::runtime_error& error) {
        EXPECT_STREQ(error.what(), "GetSubTypeInfo_by_orvTypeComp(): type not found: type99 (99)");
    }
    EXPECT_EQ(library.openSessions(), 0);
}

TEST_F(DecodeFormats, EachFailingCallThrowsOrLeavesItsRowOut) {
    library.coded.type = 102;
    for (int call = 1; call <= static_cast<int>(kRows); ++call) {
        library.forgetCalls();
        library.stopFailing();
        library.failCall(Function::kDecompressQuery, call, 8);
        Codes expected = kAllCodes;
        expected.erase(expected.begin() + (call - 1));
        EXPECT_EQ(build(), expected) << "query " << call;
    }
    library.forgetCalls();
    library.stopFailing();
    library.failCall(Function::kDecompressQuery, static_cast<int>(kRows) + 1, 8);
    EXPECT_THROW(build(), OrvantisError);
    EXPECT_EQ(library.openSessions(), 0);

    library.stopFailing();
    library.failAll(Function::kOpen, 8);
    EXPECT_THROW(build(), OrvantisError);
    library.stopFailing();
    library.failAll(Function::kLibraryInit, 8);
    EXPECT_THROW(build(), OrvantisError);
}

struct OutputCase {
    std::uint32_t flags;
    std::uint32_t expectedFlags;
    std::uint32_t expectedRange;
};

std::ostream& operator<<(std::ostream& out, const OutputCase& row) {
    return out << "flags " << row.flags;
}

class OutputFormat : public testing::TestWithParam<OutputCase> {};

TEST_P(OutputFormat, HasTheWordsOfTheRow) {
    const OrvantisFrameFormat output = outputFormatOf({0, "", 77, 66, GetParam().flags});
    EXPECT_EQ(output.width, 0U);
    EXPECT_EQ(output.height, 0U);
    EXPECT_EQ(output.word3, 254U);
    EXPECT_EQ(output.word4, 1U);
    EXPECT_EQ(output.type, 77U);
    EXPECT_EQ(output.flags, GetParam().expectedFlags);
    EXPECT_EQ(output.colorSpace, 66U);
    EXPECT_EQ(output.range, GetParam().expectedRange);
    EXPECT_EQ(output.word9, 0U);
}

// Flag bits of a row: 1 Adobe's 16 bits, 2 top row first, 4 limited range.
INSTANTIATE_TEST_SUITE_P(AllFlags, OutputFormat,
                         testing::Values(OutputCase{0, 1, 2}, OutputCase{1, 3, 2}, OutputCase{2, 0, 2},
                                         OutputCase{3, 2, 2}, OutputCase{4, 1, 1}, OutputCase{5, 3, 1},
                                         OutputCase{6, 0, 1}, OutputCase{7, 2, 1}));

}  // namespace
}  // namespace orvantis
