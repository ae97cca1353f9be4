// Both tables against lists of their own, the lookups, and the host's answers about top rows.
#include "video/format_tables.h"

#include <gtest/gtest.h>

#include <atomic>
#include <cstdint>
#include <set>
#include <span>
#include <string>
#include <thread>
#include <vector>

#include "tests/support/captured_log.h"
#include "tests/support/fake_codec/fake_codec.h"
#include "tests/support/fake_host/fake_host.h"
#include "tests/support/format_lists.h"

namespace orvantis {
namespace {

using fakecodec::FakeCodec;
using test::FakeHost;

// The value of four characters in memory order, as the host's pixel formats have them.
const auto formatOf = formatlists::formatValue;

// The value of four characters as a sub-type has them: the first in the highest byte.
std::uint32_t subTypeValue(const char* tag) {
    const char backwards[]{tag[3], tag[2], tag[1], tag[0], 0};
    return formatOf(backwards);
}

std::string asText(std::u16string_view text) {
    return {text.begin(), text.end()};
}

const std::vector<formatlists::CodedType>& kSubTypes = formatlists::codedTypes();
const std::span<const formatlists::DeliveredFormat> kFormats = formatlists::deliveredFormats();

TEST(SubTypeInfos, AreTheRowsOfTheListInOrder) {
    ASSERT_EQ(SubTypeInfos().size(), kSubTypes.size())
        << "CONTRIBUTING.md, \"How do I add ...\", a coded type";
    for (std::size_t i = 0; i < kSubTypes.size(); ++i) {
        const SubTypeInfo& row = SubTypeInfos()[i];
        const formatlists::CodedType& expected = kSubTypes[i];
        SCOPED_TRACE(expected.name);
        EXPECT_EQ(row.subType, subTypeValue(expected.tag));
        EXPECT_EQ(asText(row.subTypeName), expected.name);
        EXPECT_EQ(row.orvTypeComp, expected.code);
        EXPECT_EQ(row.subsamplingH, expected.chromaStepX);
        EXPECT_EQ(row.subsamplingV, expected.chromaStepY);
        EXPECT_EQ(row.colorModel, expected.modelNumber());
        std::vector<std::uint32_t> preferred;
        for (const char* code : expected.preferred) {
            preferred.push_back(formatOf(code));
        }
        EXPECT_EQ(std::vector(row.preferredFormats.begin(), row.preferredFormats.end()), preferred);
    }
}

TEST(SubTypeInfos, CodesTypesAndNamesAreUnique) {
    std::set<std::uint32_t> codes;
    std::set<std::uint32_t> types;
    std::set<std::string> names;
    for (const SubTypeInfo& row : SubTypeInfos()) {
        codes.insert(row.subType);
        types.insert(row.orvTypeComp);
        names.insert(asText(row.subTypeName));
    }
    EXPECT_EQ(codes.size(), kSubTypes.size());
    EXPECT_EQ(types.size(), kSubTypes.size());
    EXPECT_EQ(names.size(), kSubTypes.size());
}

TEST(SubTypeInfos, PreferOnlyFormatsOfTheFormatTable) {
    for (const SubTypeInfo& row : SubTypeInfos()) {
        for (const std::uint32_t preferred : row.preferredFormats) {
            EXPECT_NO_THROW(GetFormatInfo_by_pixelFormat(preferred)) << asText(row.subTypeName);
        }
    }
}

TEST(FormatInfos, AreTheRowsOfTheListInOrder) {
    ASSERT_EQ(FormatInfos().size(), kFormats.size())
        << "CONTRIBUTING.md, \"How do I add ...\", a host pixel format";
    for (std::size_t i = 0; i < kFormats.size(); ++i) {
        const FormatInfo& row = FormatInfos()[i];
        const formatlists::DeliveredFormat& expected = kFormats[i];
        SCOPED_TRACE(expected.name);
        EXPECT_EQ(row.pixelFormat, formatOf(expected.code));
        EXPECT_STREQ(row.name, expected.name);
        EXPECT_EQ(row.orvType, expected.orvType);
        EXPECT_EQ(row.colorSpace, expected.colorSpace);
        EXPECT_EQ(row.isLimitedRange(), expected.limited());
        EXPECT_EQ(row.isAdobe16u(), expected.adobe16u);
        EXPECT_EQ(row.flags & ~std::uint32_t{kIsAdobe16u | kIsTopLeft | kIsLimitedRange}, 0U);
    }
}

TEST(FormatInfos, FlagBitsAreTheirPlaces) {
    EXPECT_EQ(kIsAdobe16u, 1U);
    EXPECT_EQ(kIsTopLeft, 2U);
    EXPECT_EQ(kIsLimitedRange, 4U);
}

TEST(FormatInfos, PixelFormatsAndNamesAreUnique) {
    std::set<std::uint32_t> codes;
    std::set<std::string> names;
    for (const FormatInfo& row : FormatInfos()) {
        codes.insert(row.pixelFormat);
        names.insert(row.name);
    }
    EXPECT_EQ(codes.size(), kFormats.size());
    EXPECT_EQ(names.size(), kFormats.size());
}

// Each test runs in a process of its own under CTest; run together they must not depend on order either, so
// every test builds the tables that it looks at.

TEST(FormatTablesBuild, TopLeftIsWhatTheHostAnswersForEachRow) {
    FakeHost host;
    buildFormatTables(host.basicSuite());
    for (std::size_t i = 0; i < kFormats.size(); ++i) {
        EXPECT_EQ(FormatInfos()[i].isTopLeft(), kFormats[i].topLeftInTheField) << kFormats[i].name;
    }
}

TEST(FormatTablesBuild, OppositeAnswersGiveTheOppositeFlagsAndNothingElse) {
    FakeHost host;
    buildFormatTables(host.basicSuite());
    const std::vector<FormatInfo> before(FormatInfos().begin(), FormatInfos().end());
    const auto usual = host.answer;
    host.answer = [&](FakeHost::Question question, std::uint32_t code) { return !usual(question, code); };
    buildFormatTables(host.basicSuite());
    ASSERT_EQ(FormatInfos().size(), before.size());
    for (std::size_t i = 0; i < before.size(); ++i) {
        EXPECT_EQ(FormatInfos()[i].flags, before[i].flags ^ kIsTopLeft) << before[i].name;
        EXPECT_EQ(FormatInfos()[i].pixelFormat, before[i].pixelFormat);
    }
}

TEST(FormatTablesBuild, AsksOncePerRowInOrderWithAClearedAnswer) {
    FakeHost host;
    buildFormatTables(host.basicSuite());
    std::vector<FakeHost::AskedFormat> expected;
    expected.reserve(std::size(kFormats));
    for (const formatlists::DeliveredFormat& row : kFormats) {
        expected.push_back({FakeHost::kTopLeft, formatOf(row.code), 0});
    }
    EXPECT_EQ(host.asked, expected);
}

TEST(FormatTablesBuild, HostThatFailsToAnswerMeansNotTopLeft) {
    FakeHost host;
    host.questionResults[FakeHost::kTopLeft] = -1;
    buildFormatTables(host.basicSuite());
    for (const FormatInfo& row : FormatInfos()) {
        EXPECT_FALSE(row.isTopLeft()) << row.name;
    }
}

TEST(FormatTablesBuild, AnyNonZeroAnswerMeansTopLeft) {
    FakeHost host;
    const_cast<host::ImageProcessingSuite&>(host.imageProcessingSuite()).FormatIsOriginTopLeft =
        [](std::uint32_t, std::int32_t* place) {
            *place = -256;
            return 0;
        };
    buildFormatTables(host.basicSuite());
    for (const FormatInfo& row : FormatInfos()) {
        EXPECT_TRUE(row.isTopLeft()) << row.name;
    }
}

TEST(FormatTablesBuild, SuiteIsAcquiredAndReleasedWithItsLines) {
    test::CapturedLog log;
    FakeHost host;
    buildFormatTables(host.basicSuite());
    EXPECT_EQ(host.suiteCalls, (std::vector<std::string>{"+ Premiere Image Processing Suite 2",
                                                         "- Premiere Image Processing Suite 2"}));
    ASSERT_EQ(log.lines().size(), 2U);
    EXPECT_TRUE(log.lines()[0].starts_with(
        "Acquiring suite: r: 0, v: 2, n: 'Premiere Image Processing Suite', ptr: "));
    EXPECT_EQ(log.lines()[1], "Releasing suite: r: 0, v: 2, n: 'Premiere Image Processing Suite'");
}

TEST(FormatTablesBuild, RefusedSuiteThrowsAndLeavesTheTablesInForce) {
    FakeHost host;
    buildFormatTables(host.basicSuite());
    const FormatInfo* const before = FormatInfos().data();
    host.refusedSuites = {"Premiere Image Processing Suite"};
    host.suiteCalls.clear();
    try {
        buildFormatTables(host.basicSuite());
        ADD_FAILURE() << "nothing was thrown";
    } catch (const std::runtime_error& error) {
        EXPECT_STREQ(error.what(), "Could not acquire suite: 'Premiere Image Processing Suite', ver: 2");
    }
    EXPECT_EQ(host.suiteCalls, std::vector<std::string>(2, "! Premiere Image Processing Suite 2"));
    EXPECT_EQ(FormatInfos().data(), before);
}

TEST(FormatTablesBuild, RowsInUseStayAsTheyWere) {
    FakeHost host;
    buildFormatTables(host.basicSuite());
    const FormatInfo& held = GetFormatInfo_by_pixelFormat(formatOf("bgra"));
    EXPECT_FALSE(held.isTopLeft());
    host.answer = [](FakeHost::Question, std::uint32_t) { return true; };
    buildFormatTables(host.basicSuite());
    EXPECT_FALSE(held.isTopLeft());
    EXPECT_TRUE(GetFormatInfo_by_pixelFormat(formatOf("bgra")).isTopLeft());
}

TEST(FormatTablesBuild, SameAnswersBringTheSameTableBack) {
    FakeHost host;
    const auto usual = host.answer;
    buildFormatTables(host.basicSuite());
    const FormatInfo* const first = FormatInfos().data();
    host.answer = [](FakeHost::Question, std::uint32_t) { return true; };
    buildFormatTables(host.basicSuite());
    EXPECT_NE(FormatInfos().data(), first);
    host.answer = usual;
    buildFormatTables(host.basicSuite());
    EXPECT_EQ(FormatInfos().data(), first);
}

TEST(FormatTablesBuild, ReadersNeverSeeAMixture) {
    FakeHost host;
    std::atomic<bool> stop = false;
    std::atomic<int> mixtures = 0;
    host.answer = [](FakeHost::Question, std::uint32_t) { return true; };
    buildFormatTables(host.basicSuite());
    std::thread reader([&] {
        while (!stop) {
            const std::span<const FormatInfo> rows = FormatInfos();
            for (const FormatInfo& row : rows) {
                if (row.isTopLeft() != rows[0].isTopLeft()) {
                    ++mixtures;
                }
            }
        }
    });
    for (int i = 0; i < 1000; ++i) {
        host.answer = [i](FakeHost::Question, std::uint32_t) { return i % 2 == 0; };
        buildFormatTables(host.basicSuite());
    }
    stop = true;
    reader.join();
    EXPECT_EQ(mixtures, 0);
}

TEST(FormatLookup, FindsEveryRow) {
    for (const SubTypeInfo& row : SubTypeInfos()) {
        EXPECT_EQ(&GetSubTypeInfo_by_orvTypeComp(row.orvTypeComp), &row);
    }
    for (const FormatInfo& row : FormatInfos()) {
        EXPECT_EQ(&GetFormatInfo_by_pixelFormat(row.pixelFormat), &row);
    }
}

template <class Action>
std::string messageOf(Action&& action) {
    try {
        action();
    } catch (const std::runtime_error& error) {
        return error.what();
    }
    return "no error";
}

TEST(FormatLookup, UnknownTypeIsNamedByTheLibrary) {
    FakeCodec library;
    library.setString(kOrvantisStringTypeName, 116, "GREY12");
    EXPECT_EQ(messageOf([] { GetSubTypeInfo_by_orvTypeComp(116); }),
              "GetSubTypeInfo_by_orvTypeComp(): type not found: GREY12 (116)");
    library.setNullString(kOrvantisStringTypeName, 4294967295);
    EXPECT_EQ(messageOf([] { GetSubTypeInfo_by_orvTypeComp(4294967295); }),
              "GetSubTypeInfo_by_orvTypeComp(): type not found:  (4294967295)");
}

TEST(FormatLookup, UnknownPixelFormatIsNamedByTheHostsIdentifier) {
    EXPECT_EQ(messageOf([] { GetFormatInfo_by_pixelFormat(formatOf("BGra")); }),
              "GetFormatInfo_by_pixelFormat(): pixel format not found: PrPixelFormat_BGRA_4444_32f [BGra]");
    EXPECT_EQ(messageOf([] { GetFormatInfo_by_pixelFormat(0); }),
              "GetFormatInfo_by_pixelFormat(): pixel format not found: PrPixelFormat_Any [[0][0][0][0]]");
    EXPECT_EQ(messageOf([] { GetFormatInfo_by_pixelFormat(formatOf("zzz9")); }),
              "GetFormatInfo_by_pixelFormat(): pixel format not found: ???? [zzz9]");
}

}  // namespace
}  // namespace orvantis
