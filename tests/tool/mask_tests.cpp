// Names of people do not get out, in whatever form a text has them; and the archive around the texts.
#include "tool/collect/mask.h"

#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>
#include <string>

#include "tool/collect/zip_file.h"
#include "tool/shared/base/deflate.h"

namespace {

using simhost::tool::Mask;
using testing::HasSubstr;

const Mask& johnsMask() {
    static const Mask mask({{"john.smith"}, {"C:\\Users\\john.smith", "C:\\Users\\JOHNSM~1"}});
    return mask;
}

std::string wide(std::string_view ascii, bool big) {
    std::string out;
    for (const char c : ascii) {
        out += big ? std::string{'\0', c} : std::string{c, '\0'};
    }
    return out;
}

TEST(PersonalMask, AHomeGoesWithWhateverSeparatorsAndCase) {
    for (const char* path :
         {"C:\\Users\\john.smith\\a.avi", "c:/users/JOHN.SMITH/a.avi", "C:\\\\Users\\\\john.smith\\a.avi",
          "C:\\/Users\\/john.smith\\a.avi", "C:\\\\\\\\Users\\\\\\\\john.smith\\a.avi",
          "C:%5CUsers%5Cjohn.smith\\a.avi", "C:%2fUsers%2fjohn%2Esmith\\a.avi", "C:\\Users\\johnsm~1\\a.avi",
          "C:\\u005cUsers\\u005Cjohn.smith\\a.avi"}) {
        const std::string masked = johnsMask().apply(std::string("at ") + path + ".");
        EXPECT_THAT(masked, testing::AnyOf("at %USERPROFILE%\\a.avi.", "at %USERPROFILE%/a.avi.")) << path;
    }
    EXPECT_EQ(johnsMask().apply("file:///C:/Users/john.smith/x"), "file:///%USERPROFILE%/x");
}

TEST(PersonalMask, ANameGoesAnywhere) {
    EXPECT_EQ(johnsMask().apply("D:\\john.smith\\John.Smith_2.avi"), "D:\\%USERNAME%\\%USERNAME%_2.avi");
    EXPECT_EQ(johnsMask().apply("xjohn.smithx"), "x%USERNAME%x");
    EXPECT_EQ(johnsMask().apply("john smith, johnsmith"), "john smith, johnsmith") << "other words";
}

TEST(PersonalMask, TextOfTwoBytesALetterIsSearchedToo) {
    for (const bool big : {false, true}) {
        EXPECT_EQ(johnsMask().apply("ab" + wide("C:\\Users\\John.Smith\\a john.smith", big) + "cd"),
                  "ab" + wide("%USERPROFILE%\\a %USERNAME%", big) + "cd");
        EXPECT_EQ(johnsMask().apply("a" + wide("john.smith", big)), "a" + wide("%USERNAME%", big))
            << "also at odd places";
    }
}

TEST(PersonalMask, LettersOfOtherAlphabetsHaveCasesToo) {
    const Mask mask({{"J\u00fcrgen", "\u041e\u043b\u044c\u0433\u0430", "\u017d\u00e1k"}, {}});
    EXPECT_EQ(mask.apply("J\u00dcRGEN j\u00fcrgen J\\u00fcrgen J\\u00DCRGEN J%C3%BCrgen"),
              "%USERNAME% %USERNAME% %USERNAME% %USERNAME% %USERNAME%");
    EXPECT_EQ(mask.apply("\u041e\u041b\u042c\u0413\u0410 \u017e\u00c1K"), "%USERNAME% %USERNAME%");
    const std::string utf16("J\0\xfc\0R\0g\0E\0n\0", 12);
    EXPECT_EQ(mask.apply(utf16), wide("%USERNAME%", false));
}

TEST(PersonalMask, EntitiesOfHtmlAreLetters) {
    const Mask mask({{"o'neil & co"}, {}});
    EXPECT_EQ(mask.apply("O&#39;Neil &amp; Co"), "%USERNAME%");
    EXPECT_EQ(mask.apply("O'NEIL & CO"), "%USERNAME%");
}

TEST(PersonalMask, AShortNameGoesWhereItStandsAlone) {
    const Mask mask({{"al"}, {}});
    EXPECT_EQ(mask.apply("D:\\al\\also\\metal al.avi"), "D:\\%USERNAME%\\also\\metal %USERNAME%.avi");
    // Behind an escape, which ends with what looks like a letter.
    EXPECT_EQ(mask.apply("D:%5Cal%5Cmetal D:\\u005cAL\\u005cx"),
              "D:%5C%USERNAME%%5Cmetal D:\\u005c%USERNAME%\\u005cx");
    EXPECT_EQ(mask.apply("one\\nAl was here"), "one\\n%USERNAME% was here") << "a line's end in JSON";
    EXPECT_EQ(mask.apply("Al"), "%USERNAME%");
}

// Names are letters and nothing else, whatever they mean to other programs.
TEST(PersonalMask, AnyNameIsFoundInEveryForm) {
    for (const std::string name : {"a.b*c", "(x)+[y]$", "^q|r{2}?", "Jane Doe", "m\u00fcller \u00df",
                                   "o'neil & co", "%USERNAME%x", "root", "test", "x1", "100%"}) {
        const Mask mask({{name}, {"C:\\Users\\" + name, "/home/" + name}});
        std::string json;
        std::string url;
        std::string utf16;
        for (const char c : name) {
            constexpr const char* kDigits = "0123456789ABCDEF";
            const auto byte = static_cast<unsigned char>(c);
            json += c == '\\' ? "\\\\" : std::string(1, c);
            url += std::string("%") + kDigits[byte >> 4] + kDigits[byte & 15];
            utf16 += byte < 0x80 ? std::string{c, '\0'} : std::string();
        }
        std::string upper = name;
        std::ranges::transform(upper, upper.begin(),
                               [](char c) { return c >= 'a' && c <= 'z' ? static_cast<char>(c - 32) : c; });
        for (const std::string& form : {name, json, url, upper}) {
            EXPECT_EQ(mask.apply("D:\\" + form + "\\a " + form), "D:\\%USERNAME%\\a %USERNAME%") << form;
            EXPECT_EQ(mask.apply("c:/users/" + form + "/a"), "%USERPROFILE%/a") << form;
            EXPECT_EQ(mask.apply("\"C:\\\\Users\\\\" + form + "\\\\a\""), "\"%USERPROFILE%\\\\a\"") << form;
            EXPECT_EQ(mask.apply("file:///home/" + form + "/a"), "file:%USERPROFILE%/a") << form;
        }
        if (utf16.size() == 2 * name.size()) {
            EXPECT_EQ(mask.apply("\xff\xfe" + utf16), "\xff\xfe" + wide("%USERNAME%", false)) << name;
        }
    }
}

TEST(PersonalMask, RootsAndNothingMaskNothing) {
    const Mask mask({{""}, {"", "/", "C:\\", "\\"}});
    EXPECT_EQ(mask.apply("/a/b C:\\a"), "/a/b C:\\a");
}

TEST(PersonalMask, TheProgramsOwnPartsOfAPageStay) {
    const Mask mask({{"root"}, {}});
    EXPECT_EQ(
        mask.applyToPage("<style>:root{}</style><p>root</p><img src=\"data:image/png;base64,root\"> root"),
        "<style>:root{}</style><p>%USERNAME%</p><img src=\"data:image/png;base64,root\"> %USERNAME%");
    EXPECT_EQ(mask.apply(":root"), ":%USERNAME%");
    // A user may be called as a part of the page's language is.
    for (const char* name : {"mark", "Class", "div", "alt", "style"}) {
        const Mask other({{name}, {}});
        const std::string page = "<!doctype html><div class=\"mark div\"><mark role=\"alt\">style of a div";
        const std::string masked = other.applyToPage(page);
        EXPECT_TRUE(masked.starts_with("<!doctype html><div class=\"mark div\"><mark role=\"alt\">"))
            << masked;
        EXPECT_EQ(other.applyToPage("<img alt=\"" + std::string(name) + " 1\" class=\"a\">" + name + "<"),
                  "<img alt=\"%USERNAME% 1\" class=\"a\">%USERNAME%<")
            << name;
    }
}

// Every form of the name in every place of a longer text.
TEST(PersonalMask, NothingIsLeftWhereverItStands) {
    for (std::size_t at = 0; at < 40; ++at) {
        std::string text(40, '.');
        text.insert(at, "c:/users/john.smith");
        EXPECT_EQ(johnsMask().apply(text).find("john"), std::string::npos) << at;
    }
}

TEST(ZipArchive, IsWhatTheFormatSays) {
    simhost::tool::ZipFile zip;
    zip.add("a.txt", "hello hello hello hello");
    zip.add("f/\u00e4.txt", "");
    const auto bytes = zip.finish();
    const std::string text(bytes.begin(), bytes.end());
    EXPECT_TRUE(text.starts_with("PK\x03\x04"));
    EXPECT_EQ(text.substr(30, 5), "a.txt");
    EXPECT_THAT(text, HasSubstr("f/\u00e4.txt"));
    const std::size_t end = text.size() - 22;
    EXPECT_EQ(text.substr(end, 4), "PK\x05\x06");
    EXPECT_EQ(text[end + 10], 2) << "entries";
    const auto directory = static_cast<std::uint8_t>(text[end + 16]);
    EXPECT_EQ(text.substr(directory, 4), "PK\x01\x02");
}

// The check value of the algorithm's catalogue.
TEST(ZipArchive, HasTheUsualCheckSum) {
    const std::string_view text = "123456789";
    EXPECT_EQ(simhost::tool::crc32({reinterpret_cast<const std::uint8_t*>(text.data()), text.size()}),
              0xCBF43926U);
}

}  // namespace
