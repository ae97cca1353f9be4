// The host's pixel formats, names and layouts against the tests' own list: each code must read as its text in
// memory, and no two may be equal.

#include <gtest/gtest.h>

#include <algorithm>
#include <cstdint>
#include <cstring>
#include <map>
#include <set>
#include <string>

#include "host/pixel_formats.h"
#include "tests/support/format_lists.h"

namespace {

using namespace host;
using formatlists::formatValue;
using formatlists::HostFormat;
using formatlists::hostFormats;
using formatlists::laterHostFormats;

std::string inMemory(std::uint32_t code) {
    std::string text(4, '\0');
    std::memcpy(text.data(), &code, 4);
    return text;
}

bool contains(const std::string& text, const char* part) {
    return text.find(part) != std::string::npos;
}

TEST(PixelFormats, ReadAsTheirTextInMemoryInTheListsOrder) {
    ASSERT_EQ(std::size(kPixelFormats), hostFormats().size())
        << "CONTRIBUTING.md, \"How do I add ...\", a host pixel format";
    for (std::size_t i = 0; i < hostFormats().size(); ++i) {
        EXPECT_EQ(inMemory(kPixelFormats[i].code), hostFormats()[i].code);
        EXPECT_STREQ(kPixelFormats[i].name, hostFormats()[i].name);
    }
    ASSERT_EQ(std::size(kLaterPixelFormats), laterHostFormats().size())
        << "CONTRIBUTING.md, \"How do I add ...\", a host pixel format";
    for (std::size_t i = 0; i < laterHostFormats().size(); ++i) {
        EXPECT_EQ(inMemory(kLaterPixelFormats[i].code), laterHostFormats()[i].code);
        EXPECT_STREQ(kLaterPixelFormats[i].name, laterHostFormats()[i].name);
    }
}

TEST(PixelFormats, AreAllDifferent) {
    std::map<std::uint32_t, std::string> seen{{PrPixelFormat_Any, "Any"}};
    std::set<std::string> names{"PrPixelFormat_Any"};
    const auto add = [&](const PixelFormat& format) {
        const auto [entry, isNew] = seen.emplace(format.code, format.name);
        EXPECT_TRUE(isNew) << format.name << " equals " << entry->second;
        EXPECT_TRUE(names.insert(format.name).second) << format.name;
    };
    std::ranges::for_each(kPixelFormats, add);
    std::ranges::for_each(kLaterPixelFormats, add);
}

TEST(PixelFormats, AreNamed) {
    for (const HostFormat& format : hostFormats()) {
        EXPECT_STREQ(pixelFormatName(formatValue(format.code)), format.name);
    }
    for (const HostFormat& format : laterHostFormats()) {
        EXPECT_STREQ(pixelFormatName(formatValue(format.code)), format.name);
    }
    EXPECT_STREQ(pixelFormatName(0), "PrPixelFormat_Any");
    EXPECT_STREQ(pixelFormatName(0x61726762), "PrPixelFormat_BGRA_4444_8u");
    EXPECT_STREQ(pixelFormatName(0x30313276), "PrPixelFormat_V210_422_10u_601");
}

TEST(PixelFormats, OtherValuesAreQuestionMarks) {
    EXPECT_STREQ(pixelFormatName(1), "????");
    EXPECT_STREQ(pixelFormatName(0xFFFFFFFF), "????");
    EXPECT_STREQ(pixelFormatName(0x62677262), "????");  // "brgb"
    EXPECT_STREQ(pixelFormatName(0x61726742 + 1), "????");
    EXPECT_STREQ(pixelFormatName(0x41524742), "????");  // "BGRA": case tells formats apart
    EXPECT_STREQ(pixelFormatName(0x62677261 ^ 0xFF000000), "????");
}

// The name tells the layout: "_4444_" are four samples a pixel, and "_8u", "_16u", "_32f" their size.
TEST(PixelFormats, LayoutsAreWhatTheNamesSay) {
    for (const PixelFormat& format : kPixelFormats) {
        const std::string name = format.name;
        SCOPED_TRACE(name);
        const int sample = contains(name, "_32f") ? 4 : contains(name, "_16u") ? 2 : 1;
        int pixels = 0;
        int bytes = 0;
        if (contains(name, "_4444_")) {
            pixels = 1;
            bytes = 4 * sample;
        } else if (contains(name, "V210")) {
            pixels = 6;
            bytes = 16;
        } else if (contains(name, "_422_")) {
            pixels = 2;
            bytes = 4 * sample;
        } else if (contains(name, "RGB_444_10u")) {
            pixels = 1;
            bytes = 4;
        }
        EXPECT_EQ(format.pixelsPerGroup, pixels);
        EXPECT_EQ(format.bytesPerGroup, bytes);
        EXPECT_EQ(format.compressed, contains(name, "DV"));
        EXPECT_EQ(format.topLeft, !contains(name, "_4444_"));
        const std::string letters = name.substr(std::strlen("PrPixelFormat_"), 4);
        const bool opaque = contains(letters, "X") || !contains(name, "_4444_");
        EXPECT_EQ(format.alpha, !opaque);
    }
}

TEST(PixelFormats, AnyIsZero) {
    EXPECT_EQ(PrPixelFormat_Any, 0u);
}

// The code of a name without "PrPixelFormat_".
std::uint32_t code(const std::string& name) {
    return codeNamed(kPixelFormats, ("PrPixelFormat_" + name).c_str());
}

TEST(PixelFormats, CapitalsTellTheDepthOfRgbFormats) {
    // One capital means 16 bits, two mean float, none means 8 bits: "bgra", "Bgra", "BGra".
    // Bit 5 of an ASCII letter is its case; the first letter is the lowest byte.
    for (const std::string family : {"BGRA", "BGRX", "BGRP", "ARGB", "XRGB", "PRGB"}) {
        const std::uint32_t eight = code(family + "_4444_8u");
        std::string small = family;
        for (char& letter : small) {
            letter = static_cast<char>(letter + ('a' - 'A'));
        }
        EXPECT_EQ(inMemory(eight), small);
        EXPECT_EQ(code(family + "_4444_16u"), eight ^ 0x00000020u) << family;
        EXPECT_EQ(code(family + "_4444_32f"), eight ^ 0x00002020u) << family;
    }
}

TEST(PixelFormats, CapitalsOfYuvFormatsFollowNoRule) {
    EXPECT_EQ(inMemory(PrPixelFormat_VUYA_4444_8u), "vuya");
    EXPECT_EQ(inMemory(PrPixelFormat_VUYA_4444_8u_709), "VUYA");
    EXPECT_EQ(inMemory(code("VUYA_4444_16u")), "Vuya");
    EXPECT_EQ(inMemory(code("VUYA_4444_32f")), "VUya");
    EXPECT_EQ(inMemory(code("VUYA_4444_32f_709")), "vUYa");
    EXPECT_EQ(inMemory(PrPixelFormat_UYVY_422_8u_601), "uyvy");
    EXPECT_EQ(inMemory(PrPixelFormat_UYVY_422_8u_709), "uyv7");
    EXPECT_EQ(inMemory(PrPixelFormat_UYVY_422_32f_601), "UYvy");
    EXPECT_EQ(inMemory(code("UYVY_422_32f_709")), "UYv7");
}

TEST(PixelFormats, PlanarNamesAndCodesAgree) {
    // "yv1f": y or Y = MPEG-2 or MPEG-4 siting; 1 or i = frame or field pictures; last 2 and f = 601, 7 and F
    // = 709, f and F = full range.
    int planar = 0;
    for (const PixelFormat& format : kPixelFormats) {
        const std::string name = format.name;
        if (!contains(name, "_PLANAR_")) {
            continue;
        }
        ++planar;
        const bool full = contains(name, "FullRange");
        std::string expected = contains(name, "MPEG2") ? "y" : "Y";
        expected += 'v';
        expected += contains(name, "FRAME_PICTURE") ? '1' : 'i';
        if (contains(name, "_601")) {
            expected += full ? 'f' : '2';
        } else {
            expected += full ? 'F' : '7';
        }
        EXPECT_EQ(inMemory(format.code), expected) << name;
    }
    EXPECT_EQ(planar, 16);
}

}  // namespace
