// Both tables against lists of their own, the lookups, and the host's answers about top rows.
#include "video/format_tables.h"

#include <gtest/gtest.h>

#include <atomic>
#include <cstdint>
#include <set>
#include <string>
#include <thread>
#include <vector>

#include "tests/support/captured_log.h"
#include "tests/support/fake_codec/fake_codec.h"
#include "tests/unit/video/fake_host.h"

namespace orvantis {
namespace {

using fakecodec::FakeCodec;
using test::FakeHost;

// The value of four characters in memory order, as the host's pixel formats have them.
std::uint32_t format(const char* code) {
    std::uint32_t value = 0;
    for (int i = 3; i >= 0; --i) value = value << 8 | static_cast<unsigned char>(code[i]);
    return value;
}

std::string asText(std::u16string_view text) {
    return {text.begin(), text.end()};
}

struct SubTypeRow {
    std::uint32_t subType;
    const char* name;
    std::uint32_t type;
    std::uint32_t h;
    std::uint32_t v;
    std::uint32_t model;
    std::vector<std::string> preferred;
};

const std::vector<SubTypeRow> kSubTypes{
    // clang-format off
    {0x4F385241, "Orvantis 8-bit RGBA",                 102, 1, 1, 1, {}},                                // O8RA
    {0x4F385247, "Orvantis 8-bit RGB",                  101, 1, 1, 0, {}},                                // O8RG
    {0x4F385941, "Orvantis 8-bit YUVA 4:4:4:4",         106, 1, 1, 3, {"vuya", "VUYA"}},                  // O8YA
    {0x4F385934, "Orvantis 8-bit YUV 4:4:4",            103, 1, 1, 2, {"vuyx", "vux7"}},                  // O8Y4
    {0x4F385932, "Orvantis 8-bit YUV 4:2:2",            104, 2, 1, 2, {"yuy2", "yuy3", "uyvy", "uyv7"}},  // O8Y2
    {0x4F385930, "Orvantis 8-bit YUV 4:2:0",            105, 2, 2, 2, {"yuy2", "yuy3", "uyvy", "uyv7"}},  // O8Y0
    {0x4F384730, "Orvantis 8-bit YUV 4:0:0 greyscale",  107, 1, 1, 2, {"yuy2", "yuy3", "uyvy", "uyv7"}},  // O8G0
    {0x4F305241, "Orvantis 10-bit RGBA",                110, 1, 1, 1, {}},                                // O0RA
    {0x4F305247, "Orvantis 10-bit RGB",                 109, 1, 1, 0, {}},                                // O0RG
    {0x4F305934, "Orvantis 10-bit YUV 4:4:4",           118, 1, 1, 2, {}},                                // O0Y4
    {0x4F305932, "Orvantis 10-bit YUV 4:2:2",           108, 2, 1, 2, {}},                                // O0Y2
    {0x4F305930, "Orvantis 10-bit YUV 4:2:0",           123, 2, 2, 2, {"v210", "v211"}},                  // O0Y0
    {0x4F304730, "Orvantis 10-bit YUV 4:0:0 greyscale", 115, 1, 1, 2, {}},                                // O0G0
    {0x4F325241, "Orvantis 12-bit RGBA",                112, 1, 1, 1, {}},                                // O2RA
    {0x4F325247, "Orvantis 12-bit RGB",                 111, 1, 1, 0, {}},                                // O2RG
    {0x4F345241, "Orvantis 14-bit RGBA",                114, 1, 1, 1, {}},                                // O4RA
    {0x4F345247, "Orvantis 14-bit RGB",                 113, 1, 1, 0, {}},                                // O4RG
    // clang-format on
};

struct FormatRow {
    const char* code;
    const char* name;
    std::uint32_t orvType;
    std::uint32_t colorSpace;
    bool limited;
    bool adobe16u;
    bool topLeftInTheField;  ///< what the real host says
};

const std::vector<FormatRow> kFormats{
    // clang-format off
    {"yuy2", "YUYV 4:2:2 [8] Rec.601",    4, 1, true,  false, true},
    {"yuy3", "YUYV 4:2:2 [8] Rec.709",    4, 2, true,  false, true},
    {"uyvy", "UYVY 4:2:2 [8] Rec.601",    5, 1, true,  false, true},
    {"uyv7", "UYVY 4:2:2 [8] Rec.709",    5, 2, true,  false, true},
    {"vuya", "VUYA 4:4:4:4 [8] Rec.601", 50, 1, true,  false, false},
    {"VUYA", "VUYA 4:4:4:4 [8] Rec.709", 50, 2, true,  false, false},
    {"vuyx", "VUYX 4:4:4 [8] Rec.601",   49, 1, true,  false, false},
    {"vux7", "VUYX 4:4:4 [8] Rec.709",   49, 2, true,  false, false},
    {"bgra", "BGRA [8]",                  2, 2, false, false, false},
    {"argb", "ARGB [8]",                 19, 2, false, false, false},
    {"bgrx", "BGRX [8]",                  1, 2, false, false, false},
    {"xrgb", "XRGB [8]",                 16, 2, false, false, false},
    {"v210", "v210 4:2:2 [10] Rec.601",  11, 1, true,  false, true},
    {"v211", "v210 4:2:2 [10] Rec.709",  11, 2, true,  false, true},
    {"RGB1", "RGB [10]",                 15, 2, false, false, true},
    {"Bgra", "BGRA [16]",                31, 2, false, true,  false},
    {"Bgrx", "BGRX [16]",                32, 2, false, true,  false},
    // clang-format on
};

TEST(SubTypeInfos, AreTheSeventeenRowsInOrder) {
    ASSERT_EQ(SubTypeInfos().size(), 17U);
    for (std::size_t i = 0; i < kSubTypes.size(); ++i) {
        const SubTypeInfo& row = SubTypeInfos()[i];
        const SubTypeRow& expected = kSubTypes[i];
        SCOPED_TRACE(expected.name);
        EXPECT_EQ(row.subType, expected.subType);
        EXPECT_EQ(asText(row.subTypeName), expected.name);
        EXPECT_EQ(row.orvTypeComp, expected.type);
        EXPECT_EQ(row.subsamplingH, expected.h);
        EXPECT_EQ(row.subsamplingV, expected.v);
        EXPECT_EQ(row.colorModel, expected.model);
        std::vector<std::uint32_t> preferred;
        for (const std::string& code : expected.preferred) preferred.push_back(format(code.c_str()));
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
    EXPECT_EQ(codes.size(), 17U);
    EXPECT_EQ(types.size(), 17U);
    EXPECT_EQ(names.size(), 17U);
}

TEST(SubTypeInfos, PreferOnlyFormatsOfTheFormatTable) {
    for (const SubTypeInfo& row : SubTypeInfos()) {
        for (const std::uint32_t preferred : row.preferredFormats) {
            EXPECT_NO_THROW(GetFormatInfo_by_pixelFormat(preferred)) << asText(row.subTypeName);
        }
    }
}

TEST(FormatInfos, AreTheSeventeenRowsInOrder) {
    ASSERT_EQ(FormatInfos().size(), 17U);
    for (std::size_t i = 0; i < kFormats.size(); ++i) {
        const FormatInfo& row = FormatInfos()[i];
        const FormatRow& expected = kFormats[i];
        SCOPED_TRACE(expected.name);
        EXPECT_EQ(row.pixelFormat, format(expected.code));
        EXPECT_STREQ(row.name, expected.name);
        EXPECT_EQ(row.orvType, expected.orvType);
        EXPECT_EQ(row.colorSpace, expected.colorSpace);
        EXPECT_EQ(row.isLimitedRange(), expected.limited);
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
    EXPECT_EQ(codes.size(), 17U);
    EXPECT_EQ(names.size(), 17U);
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
    for (const FormatRow& row : kFormats) expected.push_back({FakeHost::kTopLeft, format(row.code), 0});
    EXPECT_EQ(host.asked, expected);
}

TEST(FormatTablesBuild, HostThatFailsToAnswerMeansNotTopLeft) {
    FakeHost host;
    host.questionResults[FakeHost::kTopLeft] = -1;
    buildFormatTables(host.basicSuite());
    for (const FormatInfo& row : FormatInfos()) EXPECT_FALSE(row.isTopLeft()) << row.name;
}

TEST(FormatTablesBuild, AnyNonZeroAnswerMeansTopLeft) {
    FakeHost host;
    const_cast<host::ImageProcessingSuite&>(host.imageProcessingSuite()).FormatIsOriginTopLeft =
        [](std::uint32_t, std::int32_t* place) {
            *place = -256;
            return 0;
        };
    buildFormatTables(host.basicSuite());
    for (const FormatInfo& row : FormatInfos()) EXPECT_TRUE(row.isTopLeft()) << row.name;
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
    EXPECT_EQ(host.suiteCalls, std::vector<std::string>{"! Premiere Image Processing Suite 2"});
    EXPECT_EQ(FormatInfos().data(), before);
}

TEST(FormatTablesBuild, RowsInUseStayAsTheyWere) {
    FakeHost host;
    buildFormatTables(host.basicSuite());
    const FormatInfo& held = GetFormatInfo_by_pixelFormat(format("bgra"));
    EXPECT_FALSE(held.isTopLeft());
    host.answer = [](FakeHost::Question, std::uint32_t) { return true; };
    buildFormatTables(host.basicSuite());
    EXPECT_FALSE(held.isTopLeft());
    EXPECT_TRUE(GetFormatInfo_by_pixelFormat(format("bgra")).isTopLeft());
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
                if (row.isTopLeft() != rows[0].isTopLeft()) ++mixtures;
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
    EXPECT_EQ(messageOf([] { GetFormatInfo_by_pixelFormat(format("BGra")); }),
              "GetFormatInfo_by_pixelFormat(): pixel format not found: PrPixelFormat_BGRA_4444_32f [BGra]");
    EXPECT_EQ(messageOf([] { GetFormatInfo_by_pixelFormat(0); }),
              "GetFormatInfo_by_pixelFormat(): pixel format not found: PrPixelFormat_Any [[0][0][0][0]]");
    EXPECT_EQ(messageOf([] { GetFormatInfo_by_pixelFormat(format("zzz9")); }),
              "GetFormatInfo_by_pixelFormat(): pixel format not found: ???? [zzz9]");
}

}  // namespace
}  // namespace orvantis
