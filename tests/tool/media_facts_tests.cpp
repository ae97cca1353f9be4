// What records and descriptions of the plug-in mean.
#include "tool/shared/media/media_facts.h"

#include <gtest/gtest.h>

#include "host/audio_codes.h"

namespace simhost::tool {
namespace {

TEST(MediaFacts, RatesAndLengthsOfNothingAreZero) {
    host::imFileInfoRec8 info{};
    EXPECT_EQ(frameCount(info), 0U);
    EXPECT_EQ(framesPerSecond(info), 0.0);
    info.hasVideo = 1;
    info.vidDuration = 5005;
    info.vidScale = 30000;
    EXPECT_EQ(frameCount(info), 0U) << "no division by a frame duration of 0";
    info.vidSampleSize = 1001;
    EXPECT_EQ(frameCount(info), 5U);
    EXPECT_DOUBLE_EQ(framesPerSecond(info), 30000.0 / 1001.0);
}

TEST(MediaFacts, SoundHasChannelsThatCanBeAskedFor) {
    host::imFileInfoRec8 info{};
    info.audInfo.numChannels = 2;
    info.audInfo.sampleRate = 8000.0F;
    info.audDuration = 4000;
    EXPECT_FALSE(soundShape(info)) << "without hasAudio the rest means nothing";
    info.hasAudio = 1;
    ASSERT_TRUE(soundShape(info));
    EXPECT_EQ(soundShape(info)->channels, 2U);
    EXPECT_EQ(soundShape(info)->length, 4000U);
    EXPECT_DOUBLE_EQ(soundShape(info)->seconds(), 0.5);
    info.audDuration = -1;
    EXPECT_EQ(soundShape(info)->length, 0U);
    for (const std::int32_t channels : {-1, 0, 33}) {
        info.audInfo.numChannels = channels;
        EXPECT_FALSE(soundShape(info)) << channels;
    }
    info.audInfo.numChannels = 32;
    EXPECT_TRUE(soundShape(info));
}

TEST(MediaFacts, LoudspeakersHaveReadableNames) {
    EXPECT_EQ(loudspeakerName(host::kPrAudioChannelLabel_FrontLeft), "Front left");
    EXPECT_EQ(loudspeakerName(host::kPrAudioChannelLabel_FrontRightOfCenter), "Front right of center");
    EXPECT_EQ(loudspeakerName(host::kPrAudioChannelLabel_LFE2), "LFE2");
    EXPECT_EQ(loudspeakerName(host::kPrAudioChannelLabel_Ambisonic_W), "Ambisonic W");
    EXPECT_EQ(loudspeakerName(0xFFFFFFFF), "Unknown");
}

TEST(MediaFacts, UnusableSoundsHaveTheirStreamAndReason) {
    const auto sounds = unusableSounds(
        "\nVideo stream:\n    Not usable: said of no audio stream\n"
        "Audio stream 1:\n    Sample type: 16-bit integer\n    Channels: 2\n"
        "Audio stream 12:\n    Not usable: Avi unsupported audio stream format: x\n"
        "Audio stream 13:\n    Not usable: never heard of\n");
    ASSERT_EQ(sounds.size(), 2U);
    EXPECT_EQ(sounds[0].stream, "12");
    EXPECT_TRUE(sounds[0].reason.starts_with(
        "Avi unsupported audio stream format: x: no sound: the sound is compressed"))
        << sounds[0].reason;
    EXPECT_EQ(sounds[1].reason, "never heard of");
    EXPECT_TRUE(unusableSounds("").empty());
    EXPECT_EQ(unusableSounds("Audio stream 1:\n    Not usable: x").size(), 1U) << "without a last line end";
}

}  // namespace
}  // namespace simhost::tool
