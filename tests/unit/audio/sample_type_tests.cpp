#include "audio/sample_type.h"

#include <gtest/gtest.h>

#include <map>
#include <string>
#include <utility>

namespace orvantis {
namespace {

TEST(SampleType, FollowsFormatAndBits) {
    const std::map<std::pair<std::uint32_t, std::uint32_t>, std::uint32_t> known = {
        {{1, 8}, 1}, {{1, 16}, 3}, {{1, 24}, 4}, {{1, 32}, 5}, {{3, 32}, 6},
    };
    for (std::uint32_t format = 0; format < 10; ++format) {
        for (std::uint32_t bits = 0; bits <= 80; ++bits) {
            const auto found = known.find({format, bits});
            const std::uint32_t expected = found != known.end() ? found->second : 14;
            EXPECT_EQ(audioSampleTypeFromFormat(format, bits), expected) << format << ", " << bits;
        }
    }
}

TEST(SampleType, FloatOfOtherThan32BitsIsUnknown) {
    for (const std::uint32_t bits : {8u, 16u, 24u, 64u}) {
        EXPECT_EQ(audioSampleTypeFromFormat(3, bits), 14u) << bits;
    }
}

TEST(SampleType, NamesAreThoseOfTheFiveKinds) {
    const std::map<std::uint32_t, std::string> known = {
        {1, "8 bit"}, {3, "16 bit"}, {4, "24 bit"}, {5, "32 bit"}, {6, "32 bit float"},
    };
    for (std::uint32_t code = 0; code < 300; ++code) {
        const auto found = known.find(code);
        EXPECT_EQ(audioSampleTypeName(code), found != known.end() ? found->second : "Unknown sample type")
            << code << ": CONTRIBUTING.md, \"How do I add ...\", an audio format";
    }
    EXPECT_STREQ(audioSampleTypeName(0xFFFFFFFFu), "Unknown sample type");
}

}  // namespace
}  // namespace orvantis
