// UTF-8 and UTF-16. The same expectations hold for the system's conversion and for the native twin; where
// systems differ in how many U+FFFD a broken sequence gives, only what all of them promise is asserted.

#include "diag/text.h"

#include <gtest/gtest.h>

#include <string>

namespace {

using namespace std::string_literals;
using namespace std::string_view_literals;
using orvantis::utf16FromUtf8;
using orvantis::utf8FromUtf16;

struct Pair {
    std::string utf8;
    std::u16string utf16;
};

// Both ends of each length of UTF-8, and the neighbours of the surrogates.
const Pair kWellFormed[] = {
    {"", u""},
    {"A", u"A"},
    {"C:\\Videos\\clip.avi", u"C:\\Videos\\clip.avi"},
    {"\x7F", u"\x7F"},
    {"\xC2\x80", u"\u0080"},
    {"\xC3\xA4\xC3\xB6\xC3\xBC", u"\u00E4\u00F6\u00FC"},
    {"\xDF\xBF", u"\u07FF"},
    {"\xE0\xA0\x80", u"\u0800"},
    {"\xE2\x82\xAC", u"\u20AC"},
    {"\xE6\x97\xA5\xE6\x9C\xAC", u"\u65E5\u672C"},
    {"\xED\x9F\xBF", u"\uD7FF"},
    {"\xEE\x80\x80", u"\uE000"},
    {"\xEF\xBF\xBD", u"\uFFFD"},
    {"\xEF\xBF\xBF", u"\uFFFF"},
    {"\xF0\x90\x80\x80", u"\U00010000"},
    {"\xF0\x9F\x8E\xAC", u"\U0001F3AC"},
    {"\xF4\x8F\xBF\xBF", u"\U0010FFFF"},
};

TEST(Text, WellFormedTextGoesBothWays) {
    for (const Pair& pair : kWellFormed) {
        EXPECT_EQ(utf16FromUtf8(pair.utf8), pair.utf16) << pair.utf8;
        EXPECT_EQ(utf8FromUtf16(pair.utf16), pair.utf8);
    }
}

TEST(Text, NulsAreCharacters) {
    EXPECT_EQ(utf16FromUtf8("a\0b"sv), u"a\0b"s);
    EXPECT_EQ(utf8FromUtf16(u"a\0b"sv), "a\0b"s);
}

TEST(Text, LongTextIsConvertedWhole) {
    std::string utf8;
    std::u16string utf16;
    for (int i = 0; i < 50000; ++i) {
        utf8 += "x\xF0\x9F\x8E\xAC\xE2\x82\xAC";
        utf16 += u"x\U0001F3AC\u20AC";
    }
    EXPECT_EQ(utf16FromUtf8(utf8), utf16);
    EXPECT_EQ(utf8FromUtf16(utf16), utf8);
}

TEST(Text, LoneSurrogatesBecomeReplacementCharacters) {
    EXPECT_EQ(utf8FromUtf16(u"a\xD83C"
                            u"b"),
              "a\xEF\xBF\xBD"
              "b");  // high one alone
    EXPECT_EQ(utf8FromUtf16(u"a\xDFAC"
                            u"b"),
              "a\xEF\xBF\xBD"
              "b");                                                         // low one alone
    EXPECT_EQ(utf8FromUtf16(u"\xDFAC\xD83C"), "\xEF\xBF\xBD\xEF\xBF\xBD");  // in the wrong order
    EXPECT_EQ(utf8FromUtf16(u"\xD83C\xD83C\xDFAC"), "\xEF\xBF\xBD\xF0\x9F\x8E\xAC");
    EXPECT_EQ(utf8FromUtf16(u"end\xD83C"), "end\xEF\xBF\xBD");
    EXPECT_EQ(utf8FromUtf16(u"\xD800\xDBFF\xDC00\xDFFF"), "\xEF\xBF\xBD\xF4\x8F\xB0\x80\xEF\xBF\xBD");
}

TEST(Text, BytesThatBelongNowhereBecomeReplacementCharacters) {
    EXPECT_EQ(utf16FromUtf8("a\x80"
                            "b"),
              u"a\uFFFD"
              u"b");
    EXPECT_EQ(utf16FromUtf8("a\xBF\xBF"
                            "b"),
              u"a\uFFFD\uFFFD"
              u"b");
    EXPECT_EQ(utf16FromUtf8("a\xFE\xFF"
                            "bcdef"),
              u"a\uFFFD\uFFFD"
              u"bcdef");
    EXPECT_EQ(utf16FromUtf8("caf\xE9 abc"), u"caf\uFFFD abc");  // a name in an old code page
}

TEST(Text, CutSequencesBecomeOneReplacementCharacter) {
    EXPECT_EQ(utf16FromUtf8("a\xC3"), u"a\uFFFD");
    EXPECT_EQ(utf16FromUtf8("a\xE2\x82"), u"a\uFFFD");
    EXPECT_EQ(utf16FromUtf8("a\xF0\x9F\x8E"), u"a\uFFFD");
    EXPECT_EQ(utf16FromUtf8("a\xE2\x82"
                            "bcd"),
              u"a\uFFFD"
              u"bcd");
    EXPECT_EQ(utf16FromUtf8("a\xF0\x9F\x8E"
                            "bcd"),
              u"a\uFFFD"
              u"bcd");
}

TEST(Text, OverlongFormsSurrogatesAndTooLargeValuesAreNeverDecoded) {
    const std::string_view broken[] = {
        "\xC0\x80",         "\xC1\xBF",         "\xE0\x80\x80",
        "\xE0\x9F\xBF",     "\xF0\x80\x80\x80", "\xF0\x8F\xBF\xBF",  // overlong
        "\xED\xA0\x80",     "\xED\xBF\xBF",                          // surrogates
        "\xF4\x90\x80\x80", "\xF5\x80\x80\x80", "\xFF\xBF\xBF\xBF",  // too large
    };
    for (const std::string_view bytes : broken) {
        const std::u16string text = utf16FromUtf8("<" + std::string(bytes) + ">end");
        // Between the neighbours, which survive, stand replacement characters and nothing else.
        ASSERT_GE(text.size(), 6u);
        EXPECT_EQ(text.front(), u'<');
        EXPECT_EQ(text.substr(text.size() - 4), u">end");
        const std::u16string between = text.substr(1, text.size() - 5);
        EXPECT_GE(between.size(), 1u);
        EXPECT_LE(between.size(), bytes.size());
        EXPECT_EQ(between, std::u16string(between.size(), u'\uFFFD'));
    }
}

}  // namespace
