#include "audio/channel_layout.h"
#include "avi/avi_stream.h"

#include <gtest/gtest.h>

#include <map>
#include <string>
#include <vector>

#include "audio/audio_info.h"
#include "host_record.h"
#include "tests/support/captured_log.h"
#include "wave_bytes.h"

namespace orvantis {
namespace {

using namespace audio_test;
using Lines = std::vector<std::string>;

TEST(ChannelLabelName, KnowsTheHostsLabels) {
    const std::map<std::uint32_t, std::string> names = {
        {0, "Discrete"},
        {100, "FrontLeft"},
        {101, "FrontRight"},
        {102, "FrontCenter"},
        {103, "LowFrequency"},
        {104, "BackLeft"},
        {105, "BackRight"},
        {106, "BackCenter"},
        {107, "FrontLeftOfCenter"},
        {108, "FrontRightOfCenter"},
        {109, "SideLeft"},
        {110, "SideRight"},
        {111, "TopCenter"},
        {112, "TopFrontLeft"},
        {113, "TopFrontRight"},
        {114, "TopFrontCenter"},
        {115, "TopBackLeft"},
        {116, "TopBackRight"},
        {117, "TopBackCenter"},
        {118, "FrontLeftWide"},
        {119, "FrontRightWide"},
        {127, "LeftHeight"},
        {128, "RightHeight"},
        {129, "RearSurroundLeft"},
        {130, "RearSurroundRight"},
        {131, "LFE2"},
        {132, "LeftTotal"},
        {133, "RightTotal"},
        {134, "Ambisonic_W"},
        {135, "Ambisonic_X"},
        {136, "Ambisonic_Y"},
        {137, "Ambisonic_Z"},
    };
    ASSERT_EQ(names.size(), 32u);
    for (std::uint32_t label = 0; label < 400; ++label) {
        const auto found = names.find(label);
        const std::string expected =
            found != names.end() ? "kPrAudioChannelLabel_" + found->second : "Unknown_Channel_Label";
        EXPECT_EQ(channelLabelName(label), expected) << label;
    }
    EXPECT_STREQ(channelLabelName(0xFFFFFFFFu), "Unknown_Channel_Label");
}

TEST(ChannelLabelFromSpeakerBit, FollowsTheLoudspeakerNotTheRank) {
    const std::vector<std::uint32_t> labels = {
        100, 101, 102, 103, 104, 105, 107, 108, 106, 109, 110, 111, 112, 114, 113, 115, 117, 116,
    };
    for (unsigned bit = 0; bit < 32; ++bit) {
        const std::uint32_t expected = bit < labels.size() ? labels[bit] : 0;
        EXPECT_EQ(channelLabelFromSpeakerBit(1u << bit), expected) << bit;
    }
}

TEST(ChannelLabelFromSpeakerBit, NoBitOrSeveralNameNoLoudspeaker) {
    EXPECT_EQ(channelLabelFromSpeakerBit(0), 0u);
    EXPECT_EQ(channelLabelFromSpeakerBit(3), 0u);
}

using LayoutRecord = HostRecord<host::imGetAudioChannelLayoutRec>;

class ChannelLayoutTest : public testing::Test {
 protected:
    /// The stream gets exactly `labels`, and all other bytes of the record stay.
    void expectLabels(const WaveBytes& wave, const std::vector<std::uint32_t>& labels) {
        analyse(waveBytes(wave));
        LayoutRecord record;
        EXPECT_EQ(numberOf(info.getChannelLayout(*record)), 0);
        std::vector<std::uint8_t> expected(sizeof(host::imGetAudioChannelLayoutRec), kPattern);
        for (std::size_t i = 0; i < labels.size(); ++i) {
            put(expected, 8 + 4 * i, labels[i]);
        }
        EXPECT_EQ(record.bytes(), expected);
    }
    void analyse(std::vector<std::uint8_t> format) {
        stream.format = std::move(format);
        static_cast<void>(info.init(stream));
        m_log.clear();
    }

    test::CapturedLog m_log;
    LazyImporterSuites suites{nullptr};
    AviStream stream{1};
    AudioInfo info{AudioOwner{nullptr, nullptr, &suites}};
};

TEST_F(ChannelLayoutTest, SurroundWithBackSpeakers) {
    expectLabels({.tag = kTagExtensible, .channels = 6, .mask = 0x3F}, {100, 101, 102, 103, 104, 105});
    EXPECT_EQ(m_log.takeWithoutSuites(), (Lines{"Audio channel layout (6 channels):",        //
                                                "    0: kPrAudioChannelLabel_FrontLeft",     //
                                                "    1: kPrAudioChannelLabel_FrontRight",    //
                                                "    2: kPrAudioChannelLabel_FrontCenter",   //
                                                "    3: kPrAudioChannelLabel_LowFrequency",  //
                                                "    4: kPrAudioChannelLabel_BackLeft",      //
                                                "    5: kPrAudioChannelLabel_BackRight"}));
}

TEST_F(ChannelLayoutTest, SurroundWithSideSpeakers) {
    expectLabels({.tag = kTagExtensible, .channels = 6, .mask = 0x60F}, {100, 101, 102, 103, 109, 110});
}

TEST_F(ChannelLayoutTest, AMaskOfZeroWritesNothing) {
    expectLabels({.tag = kTagExtensible, .channels = 2, .mask = 0}, {});
    EXPECT_EQ(m_log.takeWithoutSuites(), (Lines{"Audio channel layout (2 channels):",  //
                                                "    0: Unknown_Channel_Label",        //
                                                "    1: Unknown_Channel_Label"}));
}

TEST_F(ChannelLayoutTest, BitsAboveTheLastChannelAreNotReached) {
    expectLabels({.tag = kTagExtensible, .channels = 2, .mask = 0x80000003}, {100, 101});
    expectLabels({.tag = kTagExtensible, .channels = 2, .mask = 0x3F}, {100, 101});
    expectLabels({.tag = kTagExtensible, .channels = 1, .mask = 0x80000001}, {100});
}

TEST_F(ChannelLayoutTest, AnUnknownBitIsDiscreteAndAMissingOneLeavesTheHostsEntry) {
    expectLabels({.tag = kTagExtensible, .channels = 3, .mask = 0x40001}, {100, 0});
    EXPECT_EQ(m_log.takeWithoutSuites(), (Lines{"Audio channel layout (3 channels):",     //
                                                "    0: kPrAudioChannelLabel_FrontLeft",  //
                                                "    1: kPrAudioChannelLabel_Discrete",   //
                                                "    2: Unknown_Channel_Label"}));
}

TEST_F(ChannelLayoutTest, TheHighestBitIsDiscrete) {
    expectLabels({.tag = kTagExtensible, .channels = 2, .mask = 0x80000000}, {0});
}

TEST_F(ChannelLayoutTest, PlainStereoAndPlainSurroundHaveADefault) {
    expectLabels({.channels = 2}, {100, 101});
    expectLabels({.tag = kTagFloat, .channels = 2, .bits = 32}, {100, 101});
    expectLabels({.channels = 6}, {100, 101, 102, 103, 104, 105});
}

TEST_F(ChannelLayoutTest, OtherPlainStreamsGetNoLabels) {
    for (std::uint16_t channels = 0; channels <= 32; ++channels) {
        if (channels != 2 && channels != 6) {
            expectLabels({.channels = channels}, {});
        }
    }
}

// Some writers keep 40 bytes under a plain tag. Their mask means nothing.
TEST_F(ChannelLayoutTest, TheMaskOfAPlainStreamIsNotLookedAt) {
    std::vector<std::uint8_t> format = waveBytes({.tag = kTagExtensible, .channels = 4, .mask = 0x0F});
    format[0] = 1;
    format[1] = 0;
    analyse(format);
    ASSERT_TRUE(info.valid());
    LayoutRecord record;
    EXPECT_EQ(numberOf(info.getChannelLayout(*record)), 0);
    EXPECT_EQ(record.bytes(), std::vector<std::uint8_t>(sizeof(host::imGetAudioChannelLayoutRec), kPattern));
}

TEST_F(ChannelLayoutTest, ThirtyTwoChannelsFillTheRecordToItsEnd) {
    expectLabels({.tag = kTagExtensible, .channels = 32, .mask = 0xFFFFFFFF},
                 {100, 101, 102, 103, 104, 105, 107, 108, 106, 109, 110, 111, 112, 114, 113, 115,
                  117, 116, 0,   0,   0,   0,   0,   0,   0,   0,   0,   0,   0,   0,   0,   0});
    const Lines lines = m_log.takeWithoutSuites();
    ASSERT_EQ(lines.size(), 33u);
    EXPECT_EQ(lines[0], "Audio channel layout (32 channels):");
    EXPECT_EQ(lines[17], "    16: kPrAudioChannelLabel_TopBackCenter");
    EXPECT_EQ(lines[32], "    31: kPrAudioChannelLabel_Discrete");
}

TEST_F(ChannelLayoutTest, EverySingleBitGoesToTheFirstEntry) {
    for (unsigned bit = 0; bit < 32; ++bit) {
        expectLabels({.tag = kTagExtensible, .channels = 32, .mask = 1u << bit},
                     {channelLabelFromSpeakerBit(1u << bit)});
    }
}

TEST_F(ChannelLayoutTest, EntriesThatStayAreLoggedAsTheHostHasThem) {
    analyse(waveBytes({.channels = 1}));
    LayoutRecord record;
    record->outChannelLabels[0] = 137;
    EXPECT_EQ(numberOf(info.getChannelLayout(*record)), 0);
    EXPECT_EQ(m_log.takeWithoutSuites(), (Lines{"Audio channel layout (1 channels):",  //
                                                "    0: kPrAudioChannelLabel_Ambisonic_Z"}));
}

TEST_F(ChannelLayoutTest, NoChannelsAreNoError) {
    expectLabels({.tag = kTagExtensible, .channels = 0, .mask = 0xFF}, {});
    EXPECT_EQ(m_log.takeWithoutSuites(), Lines{"Audio channel layout (0 channels):"});
}

TEST_F(ChannelLayoutTest, AnUnusableStreamIsUnsupported) {
    for (const WaveBytes& wave : {WaveBytes{.channels = 33}, WaveBytes{.bits = 12}, WaveBytes{.tag = 0x55}}) {
        analyse(waveBytes(wave));
        LayoutRecord record;
        EXPECT_EQ(numberOf(info.getChannelLayout(*record)), 3);
        EXPECT_EQ(record.bytes(),
                  std::vector<std::uint8_t>(sizeof(host::imGetAudioChannelLayoutRec), kPattern));
        EXPECT_EQ(m_log.takeWithoutSuites(), Lines{});
    }
}

TEST(ChannelLabelsOf, TellsHowManyAreKnown) {
    WaveFormatExtensible format{};
    format.wFormatTag = kWaveFormatExtensible;
    format.nChannels = 4;
    format.dwChannelMask = 0x104;
    const ChannelLabels known = channelLabelsOf(format);
    EXPECT_EQ(known.count, 2u);
    EXPECT_EQ(known.labels[0], 102u);
    EXPECT_EQ(known.labels[1], 106u);
}

}  // namespace
}  // namespace orvantis
