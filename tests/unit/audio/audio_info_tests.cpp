#include "audio/audio_info.h"
#include "avi/avi_stream.h"

#include <gtest/gtest.h>

#include <string>
#include <vector>

#include "host_record.h"
#include "tests/support/captured_log.h"
#include "wave_bytes.h"

namespace orvantis {
namespace {

using namespace audio_test;
using Lines = std::vector<std::string>;

using FileInfoRecord = HostRecord<host::imFileInfoRec8>;

AviStream audioStream(std::vector<std::uint8_t> format, std::uint32_t length = 0) {
    AviStream stream(1);
    stream.header.fccType = kStreamTypeAudio;
    stream.header.dwLength = length;
    stream.format = std::move(format);
    return stream;
}

/// The pattern-filled record with nothing but the four audio fields changed.
std::vector<std::uint8_t> expectedRecord(std::int32_t channels, float rate, std::uint32_t type,
                                         std::int64_t frames) {
    std::vector<std::uint8_t> bytes(sizeof(host::imFileInfoRec8), kPattern);
    put(bytes, 174, channels);
    put(bytes, 178, rate);
    put(bytes, 182, type);
    put(bytes, 186, frames);
    return bytes;
}

class AudioInfoTest : public testing::Test {
 protected:
    /// Analyses `stream`, expects it to be rejected with exactly `text` in the log, and the dummy in the
    /// record.
    void expectRejected(const AviStream& stream, const std::string& text) {
        m_log.clear();
        EXPECT_EQ(numberOf(info.init(stream)), 2);
        EXPECT_FALSE(info.valid());
        EXPECT_EQ(m_log.takeWithoutSuites(), Lines{text});
        EXPECT_EQ(info.description(), "    Not usable: " + text);
    }
    void expectRejected(const WaveBytes& wave, const std::string& text) {
        expectRejected(audioStream(waveBytes(wave), 1000), text);
    }
    /// Analyses `stream`, expects it to be accepted without a word, and gives the host the sample type.
    void expectAccepted(const WaveBytes& wave, std::uint32_t sampleType) {
        const AviStream stream = audioStream(waveBytes(wave), 1000);
        m_log.clear();
        EXPECT_EQ(numberOf(info.init(stream)), 0);
        EXPECT_TRUE(info.valid());
        EXPECT_EQ(m_log.takeWithoutSuites(), Lines{});
        FileInfoRecord record;
        info.fillFileInfo(*record);
        EXPECT_EQ(record.bytes(),
                  expectedRecord(wave.channels, static_cast<float>(wave.rate), sampleType, 1000));
    }

    test::CapturedLog m_log;
    LazyImporterSuites suites{nullptr};
    AudioInfo info{AudioOwner{nullptr, nullptr, &suites}};
};

TEST(AudioInfoLifetime, IsLogged) {
    test::CapturedLog log;
    LazyImporterSuites suites(nullptr);
    {
        const AudioInfo info({nullptr, nullptr, &suites});
        EXPECT_EQ(log.takeWithoutSuites(), Lines{"AudioInfo::AudioInfo()"});
        EXPECT_FALSE(info.valid());
    }
    EXPECT_EQ(log.takeWithoutSuites(), Lines{"AudioInfo::~AudioInfo()"});
}

TEST_F(AudioInfoTest, IntegerFormatsAreAcceptedWithTheirCode) {
    expectAccepted({.bits = 8}, 1);
    expectAccepted({.bits = 16}, 3);
    expectAccepted({.bits = 24}, 4);
    expectAccepted({.bits = 32}, 5);
}

TEST_F(AudioInfoTest, FloatOf32BitsIsAccepted) {
    expectAccepted({.tag = kTagFloat, .bits = 32}, 6);
    expectAccepted({.tag = kTagExtensible, .bits = 32, .subFormat = 3}, 6);
}

TEST_F(AudioInfoTest, FloatOfOtherBitsIsAcceptedAsAnUnknownType) {
    expectAccepted({.tag = kTagFloat, .bits = 16}, 14);
    expectAccepted({.tag = kTagFloat, .bits = 8}, 14);
    expectAccepted({.tag = kTagFloat, .bits = 24}, 14);
    expectAccepted({.tag = kTagExtensible, .bits = 16, .subFormat = 3}, 14);
}

TEST_F(AudioInfoTest, ExtensiblePcmOf24BitsIsAccepted) {
    expectAccepted({.tag = kTagExtensible, .channels = 6, .bits = 24, .mask = 0x3F}, 4);
}

TEST_F(AudioInfoTest, AFormatOf16BytesIsEnoughAndItsMaskIsZero) {
    const AviStream stream = audioStream(waveBytes({}), 48000);
    ASSERT_EQ(stream.format.size(), 16u);
    EXPECT_EQ(numberOf(info.init(stream)), 0);
    EXPECT_EQ(+info.format().dwChannelMask, 0u);
    EXPECT_EQ(+info.format().cbSize, 0u);
    m_log.clear();

    FileInfoRecord record;
    info.fillFileInfo(*record);
    EXPECT_EQ(m_log.takeWithoutSuites(),
              (Lines{"Audio info:",                                                //
                     "    wFormatTag:      1",                                     //
                     "    format guid:     00000001-0000-0010-8000-00aa00389b71",  //
                     "    nChannels:       2",                                     //
                     "    nSamplesPerSec:  48000",                                 //
                     "    wBitsPerSample:  16",                                    //
                     "    dwChannelMask:   0x0",                                   //
                     "    numSampleFrames: 48000"}));
    EXPECT_EQ(record.bytes(), expectedRecord(2, 48000.0f, 3, 48000));
}

TEST_F(AudioInfoTest, AnExtensibleFormatIsLoggedWithItsGuidAndMask) {
    const AviStream stream = audioStream(waveBytes({.tag = kTagExtensible,
                                                    .channels = 6,
                                                    .rate = 96000,
                                                    .bits = 32,
                                                    .mask = 0x8000060F,
                                                    .subFormat = 3}),
                                         12);
    EXPECT_EQ(numberOf(info.init(stream)), 0);
    m_log.clear();
    FileInfoRecord record;
    info.fillFileInfo(*record);
    EXPECT_EQ(m_log.takeWithoutSuites(),
              (Lines{"Audio info:",                                                //
                     "    wFormatTag:      65534",                                 //
                     "    format guid:     00000003-0000-0010-8000-00aa00389b71",  //
                     "    nChannels:       6",                                     //
                     "    nSamplesPerSec:  96000",                                 //
                     "    wBitsPerSample:  32",                                    //
                     "    dwChannelMask:   0x8000060f",                            //
                     "    numSampleFrames: 12"}));
}

TEST_F(AudioInfoTest, AFormatBelow16BytesIsTooSmall) {
    std::vector<std::uint8_t> format = waveBytes({});
    for (const std::size_t size : {15u, 14u, 1u, 0u}) {
        format.resize(size);
        expectRejected(audioStream(format),
                       "Avi audio stream format size is too small: " + std::to_string(size));
    }
}

// Nothing of it was copied, so the dummy is what comes of zeros.
TEST_F(AudioInfoTest, ATooSmallFormatIsDescribedAsTheSmallestDummy) {
    std::vector<std::uint8_t> format = waveBytes({.channels = 7, .rate = 44100});
    format.resize(15);
    EXPECT_EQ(numberOf(info.init(audioStream(format, 5000))), 2);
    m_log.clear();
    FileInfoRecord record;
    info.fillFileInfo(*record);
    EXPECT_EQ(m_log.takeWithoutSuites(),
              (Lines{"Audio is INVALID! Dummy:",                                   //
                     "Audio info:",                                                //
                     "    wFormatTag:      0",                                     //
                     "    format guid:     00000000-0000-0010-8000-00aa00389b71",  //
                     "    nChannels:       0",                                     //
                     "    nSamplesPerSec:  0",                                     //
                     "    wBitsPerSample:  0",                                     //
                     "    dwChannelMask:   0x0",                                   //
                     "    numSampleFrames: 5000"}));
    EXPECT_EQ(record.bytes(), expectedRecord(1, 1000.0f, 14, 0));
}

TEST_F(AudioInfoTest, ACompressedTagIsUnsupported) {
    expectRejected({.tag = 0x0055},
                   "Avi unsupported audio stream format: 00000055-0000-0010-8000-00aa00389b71");
    expectRejected({.tag = 0}, "Avi unsupported audio stream format: 00000000-0000-0010-8000-00aa00389b71");
    expectRejected({.tag = 2}, "Avi unsupported audio stream format: 00000002-0000-0010-8000-00aa00389b71");
    expectRejected({.tag = 0xFFFF},
                   "Avi unsupported audio stream format: 0000ffff-0000-0010-8000-00aa00389b71");
}

TEST_F(AudioInfoTest, ACompressedSubFormatIsUnsupported) {
    expectRejected({.tag = kTagExtensible, .subFormat = 0x0092},
                   "Avi unsupported audio stream format: 00000092-0000-0010-8000-00aa00389b71");
    // The first word counts whole.
    expectRejected({.tag = kTagExtensible, .subFormat = 0x00010001},
                   "Avi unsupported audio stream format: 00010001-0000-0010-8000-00aa00389b71");
}

TEST_F(AudioInfoTest, AVendorsGuidThatBeginsLikePcmIsUnsupported) {
    for (std::size_t byte = 28; byte < 40; ++byte) {
        std::vector<std::uint8_t> format = waveBytes({.tag = kTagExtensible});
        format[byte] ^= 0x40;
        EXPECT_EQ(numberOf(info.init(audioStream(format))), 2) << byte;
        EXPECT_FALSE(info.valid()) << byte;
    }
    std::vector<std::uint8_t> format = waveBytes({.tag = kTagExtensible});
    format[39] = 0x72;
    expectRejected(audioStream(format),
                   "Avi unsupported audio stream format: 00000001-0000-0010-8000-00aa00389b72");
}

TEST_F(AudioInfoTest, AnExtensibleTagWithoutASubFormatIsUnsupported) {
    std::vector<std::uint8_t> format = waveBytes({.tag = kTagExtensible});
    format.resize(18);
    expectRejected(audioStream(format),
                   "Avi unsupported audio stream format: 00000000-0000-0000-0000-000000000000");
}

TEST_F(AudioInfoTest, MoreThan32ChannelsAreTooMany) {
    expectRejected({.channels = 33}, "Avi too many audio channels: 33");
    expectRejected({.channels = 65535, .bits = 8, .blockAlign = 65535}, "Avi too many audio channels: 65535");
}

TEST_F(AudioInfoTest, ThirtyTwoChannelsAreAccepted) {
    expectAccepted({.channels = 32, .bits = 32}, 5);
}

TEST_F(AudioInfoTest, NoChannelsAreAcceptedWithABlockOfNoBytes) {
    expectAccepted({.channels = 0}, 3);
    expectRejected({.channels = 0, .blockAlign = 2},
                   "Avi audio stream format error: nBlockAlign != nChannels * (wBitsPerSample / 8)");
}

TEST_F(AudioInfoTest, OddBitDepthsAreUnsupported) {
    for (const unsigned bits : {0u, 1u, 7u, 9u, 12u, 20u, 31u, 40u, 64u, 65535u}) {
        expectRejected({.bits = static_cast<std::uint16_t>(bits)},
                       "Avi unsupported audio bits per sample: " + std::to_string(bits));
    }
    expectRejected({.tag = kTagFloat, .bits = 64}, "Avi unsupported audio bits per sample: 64");
}

TEST_F(AudioInfoTest, ABlockAlignThatDoesNotFitIsAnError) {
    const std::string text = "Avi audio stream format error: nBlockAlign != nChannels * (wBitsPerSample / 8)";
    expectRejected({.channels = 2, .bits = 16, .blockAlign = 2}, text);
    expectRejected({.channels = 2, .bits = 16, .blockAlign = 0}, text);
    expectRejected({.channels = 2, .bits = 16, .blockAlign = 5}, text);
    expectRejected({.channels = 2, .bits = 24, .blockAlign = 8}, text);  // samples padded to 32 bits
}

TEST_F(AudioInfoTest, TheFirstFaultIsTheOneReported) {
    expectRejected({.tag = 0x55, .channels = 33, .bits = 12, .blockAlign = 1},
                   "Avi unsupported audio stream format: 00000055-0000-0010-8000-00aa00389b71");
    expectRejected({.channels = 33, .bits = 12, .blockAlign = 1}, "Avi too many audio channels: 33");
    expectRejected({.channels = 2, .bits = 12, .blockAlign = 1}, "Avi unsupported audio bits per sample: 12");
}

// Many writers leave them wrong.
TEST_F(AudioInfoTest, ByteRateExtraSizeAndValidBitsAreNotLookedAt) {
    std::vector<std::uint8_t> format = waveBytes({.tag = kTagExtensible});
    for (const std::size_t byte : {8u, 9u, 10u, 11u, 16u, 17u, 18u, 19u}) {
        format[byte] = 0xEE;
    }
    EXPECT_EQ(numberOf(info.init(audioStream(format))), 0);
    EXPECT_TRUE(info.valid());
}

TEST_F(AudioInfoTest, ALongerFormatThanTheStructureIsAccepted) {
    std::vector<std::uint8_t> format = waveBytes({.tag = kTagExtensible});
    format.resize(1000, 0xEE);
    EXPECT_EQ(numberOf(info.init(audioStream(format))), 0);
}

TEST_F(AudioInfoTest, LengthIsTheHeadersWithAllItsBits) {
    const AviStream stream = audioStream(waveBytes({}), 0xFFFFFFFF);
    EXPECT_EQ(numberOf(info.init(stream)), 0);
    m_log.clear();
    FileInfoRecord record;
    info.fillFileInfo(*record);
    EXPECT_EQ(record.bytes(), expectedRecord(2, 48000.0f, 3, 4294967295));
    EXPECT_EQ(m_log.takeWithoutSuites().back(), "    numSampleFrames: -1");
}

TEST_F(AudioInfoTest, RateOfAUsableStreamIsNotClamped) {
    for (const std::uint32_t rate : {0u, 500u, 384000u, 4294967295u}) {
        expectAccepted({.rate = rate}, 3);
    }
}

TEST_F(AudioInfoTest, DummyHasAtLeastOneChannelAnd1000Hertz) {
    EXPECT_EQ(numberOf(info.init(audioStream(waveBytes({.channels = 0, .rate = 500, .bits = 12}), 77))), 2);
    m_log.clear();
    FileInfoRecord record;
    info.fillFileInfo(*record);
    EXPECT_EQ(record.bytes(), expectedRecord(1, 1000.0f, 14, 0));
    EXPECT_EQ(m_log.takeWithoutSuites(),
              (Lines{"Audio is INVALID! Dummy:",                                   //
                     "Audio info:",                                                //
                     "    wFormatTag:      1",                                     //
                     "    format guid:     00000001-0000-0010-8000-00aa00389b71",  //
                     "    nChannels:       0",                                     //
                     "    nSamplesPerSec:  500",                                   //
                     "    wBitsPerSample:  12",                                    //
                     "    dwChannelMask:   0x0",                                   //
                     "    numSampleFrames: 77"}));
}

TEST_F(AudioInfoTest, DummyHasAtMost32ChannelsAnd192000Hertz) {
    EXPECT_EQ(numberOf(info.init(audioStream(waveBytes({.channels = 48, .rate = 384000}), 77))), 2);
    FileInfoRecord record;
    info.fillFileInfo(*record);
    EXPECT_EQ(record.bytes(), expectedRecord(32, 192000.0f, 14, 0));
}

TEST_F(AudioInfoTest, DummyKeepsValuesWithinItsLimits) {
    EXPECT_EQ(numberOf(info.init(audioStream(waveBytes({.tag = 0x55, .channels = 6, .rate = 44100}), 77))),
              2);
    FileInfoRecord record;
    info.fillFileInfo(*record);
    EXPECT_EQ(record.bytes(), expectedRecord(6, 44100.0f, 14, 0));
    EXPECT_EQ(
        numberOf(info.init(audioStream(waveBytes({.tag = 0x55, .channels = 1, .rate = 0xFFFFFFFF}), 77))), 2);
    FileInfoRecord second;
    info.fillFileInfo(*second);
    EXPECT_EQ(second.bytes(), expectedRecord(1, 192000.0f, 14, 0));
}

TEST_F(AudioInfoTest, WithoutAnAnalysisTheDummyIsDescribed) {
    FileInfoRecord record;
    info.fillFileInfo(*record);
    EXPECT_EQ(record.bytes(), expectedRecord(1, 1000.0f, 14, 0));
    EXPECT_EQ(m_log.takeWithoutSuites(),
              (Lines{"AudioInfo::AudioInfo()",                                     //
                     "Audio is INVALID! Dummy:",                                   //
                     "Audio info:",                                                //
                     "    wFormatTag:      0",                                     //
                     "    format guid:     00000000-0000-0010-8000-00aa00389b71",  //
                     "    nChannels:       0",                                     //
                     "    nSamplesPerSec:  0",                                     //
                     "    wBitsPerSample:  0",                                     //
                     "    dwChannelMask:   0x0",                                   //
                     "    numSampleFrames: 0"}));
}

TEST_F(AudioInfoTest, AnotherAnalysisStartsAfresh) {
    expectRejected({.channels = 33}, "Avi too many audio channels: 33");
    expectAccepted({.channels = 1, .bits = 24}, 4);
    expectRejected({.bits = 12}, "Avi unsupported audio bits per sample: 12");
    // Nothing of the earlier format may show.
    expectRejected(audioStream({}), "Avi audio stream format size is too small: 0");
    FileInfoRecord record;
    info.fillFileInfo(*record);
    EXPECT_EQ(record.bytes(), expectedRecord(1, 1000.0f, 14, 0));
}

// --- the text for the Properties window ---

TEST_F(AudioInfoTest, DescriptionOfAPlainStereoStream) {
    const AviStream stream = audioStream(waveBytes({}), 72000);
    EXPECT_EQ(numberOf(info.init(stream)), 0);
    EXPECT_EQ(info.description(),
              "    Sample type: 16 bit\n"
              "    Channels: 2\n"
              "    Sample rate: 48000 Hz\n"
              "    Sample frames: 72000\n"
              "    Duration: 1.500 s\n"
              "    Channel mask: none\n"
              "    Channel labels: FrontLeft, FrontRight");
}

TEST_F(AudioInfoTest, DescriptionOfAnExtensibleStream) {
    const AviStream stream = audioStream(waveBytes({.tag = kTagExtensible,
                                                    .channels = 3,
                                                    .rate = 44100,
                                                    .bits = 32,
                                                    .mask = 0x40108,
                                                    .subFormat = 3}),
                                         0xFFFFFFFF);
    EXPECT_EQ(numberOf(info.init(stream)), 0);
    EXPECT_EQ(info.description(),
              "    Sample type: 32 bit float\n"
              "    Channels: 3\n"
              "    Sample rate: 44100 Hz\n"
              "    Sample frames: 4294967295\n"
              "    Duration: 97391.549 s\n"
              "    Channel mask: 0x40108\n"
              "    Channel labels: LowFrequency, BackCenter, Discrete");
}

TEST_F(AudioInfoTest, DescriptionDoesWithoutRateAndLabels) {
    const AviStream stream =
        audioStream(waveBytes({.tag = kTagFloat, .channels = 1, .rate = 0, .bits = 16}), 10);
    EXPECT_EQ(numberOf(info.init(stream)), 0);
    EXPECT_EQ(info.description(),
              "    Sample type: Unknown sample type\n"
              "    Channels: 1\n"
              "    Sample rate: 0 Hz\n"
              "    Sample frames: 10\n"
              "    Duration: unknown\n"
              "    Channel mask: none\n"
              "    Channel labels: none");
}

TEST_F(AudioInfoTest, DescriptionWithoutAnAnalysisSaysSo) {
    EXPECT_EQ(info.description(), "    Not usable: no audio stream was analysed");
}

}  // namespace
}  // namespace orvantis
