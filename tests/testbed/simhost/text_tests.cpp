#include "simhost/text.h"

#include <gtest/gtest.h>

namespace simhost {
namespace {

TEST(SimhostText, RoundTripsEveryLengthOfUtf8) {
    const std::string utf8 = "a\xC3\xA9\xE2\x82\xAC\xF0\x9F\x8E\x9E";
    EXPECT_EQ(toUtf16(utf8), u"a\u00E9\u20AC\U0001F39E");
    EXPECT_EQ(toUtf8(toUtf16(utf8)), utf8);
}

TEST(SimhostText, IllFormedInputBecomesTheReplacementCharacter) {
    EXPECT_EQ(toUtf16("\x80x"), u"\uFFFDx");
    EXPECT_EQ(toUtf16("\xC3"), u"\uFFFD");
    EXPECT_EQ(toUtf16("\xC0\x80"), u"\uFFFD\uFFFD");
    EXPECT_EQ(toUtf16("\xED\xA0\x80"), u"\uFFFD\uFFFD\uFFFD");
    const char16_t lone[] = {0xD800, u'x', 0};
    EXPECT_EQ(toUtf8(lone), "\xEF\xBF\xBDx");
    const char16_t low[] = {0xDC00, 0};
    EXPECT_EQ(toUtf8(low), "\xEF\xBF\xBD");
}

TEST(SimhostText, CodesReadInBothDirections) {
    EXPECT_EQ(codeText(0x41564956, true), "AVIV");
    EXPECT_EQ(codeText(0x61726762, false), "bgra");
    EXPECT_EQ(codeText(0x00000141, false), "A???");
}

}  // namespace
}  // namespace simhost
