// Sound from real muxers through the loaded plug-in: every sample against ffmpeg's own extraction, every
// label against the channel mask, and any range equal to the same part of the whole.
#include <gtest/gtest.h>

#include <bit>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <map>
#include <random>

#include "host/audio_codes.h"
#include "host/pixel_formats.h"
#include "host/result_codes.h"
#include "tests/integration/plugin_log_text.h"
#include "tests/integration/plugin_test.h"
#include "tests/support/log_capture.h"
#include "tests/support/temp_folder.h"

namespace {

struct RealStream {
    std::string clip, kind;
    std::int32_t number = 0;
    std::uint32_t channels = 0, rate = 0, mask = 0;
};

std::filesystem::path folder() {
    return std::filesystem::path(ORVANTIS_REAL_AUDIO);
}
std::string clipPath(const std::string& name) {
    return orvantis::test::utf8Path(folder() / (name + ".avi"));
}

std::vector<RealStream> realStreams() {
    std::ifstream list(folder() / "clips.txt");
    std::vector<RealStream> streams;
    RealStream s;
    while (list >> s.clip >> s.number >> s.kind >> s.channels >> s.rate >> std::hex >> s.mask >> std::dec) {
        streams.push_back(s);
    }
    return streams;
}

struct SampleKind {
    std::uint32_t hostType;
    std::size_t bytes;
};

const SampleKind& kindOf(const std::string& name) {
    static const std::map<std::string, SampleKind> kinds = {
        {"u8", {host::kPrAudioSampleType_8BitInt, 1}},
        {"s16", {host::kPrAudioSampleType_16BitInt, 2}},
        {"s24", {host::kPrAudioSampleType_24BitInt, 3}},
        {"s32", {host::kPrAudioSampleType_32BitInt, 4}},
        {"f32", {host::kPrAudioSampleType_32BitFloat, 4}}};
    return kinds.at(name);
}

/// One coded sample as the host's documented conversion gives it: full scale is 1, float passes bit for bit.
float sampleValue(const std::string& kind, const std::uint8_t* bytes) {
    if (kind == "u8") {
        return static_cast<float>(bytes[0] - 128) / 128.0f;
    }
    const std::int32_t b0 = bytes[0], b1 = bytes[1];
    if (kind == "s16") {
        return static_cast<float>(static_cast<std::int16_t>(b1 << 8 | b0)) / 32768.0f;
    }
    const std::int32_t b2 = bytes[2];
    if (kind == "s24") {
        const std::int32_t value = (b2 << 16 | b1 << 8 | b0) - ((b2 & 0x80) != 0 ? 1 << 24 : 0);
        return static_cast<float>(value) / 8388608.0f;
    }
    std::int32_t word = 0;
    std::memcpy(&word, bytes, 4);
    return kind == "s32" ? static_cast<float>(static_cast<double>(word) / 2147483648.0)
                         : std::bit_cast<float>(word);
}

/// The stream as ffmpeg extracts it, one list of samples a channel.
std::vector<std::vector<float>> reference(const RealStream& stream) {
    const std::string bytes =
        orvantis::test::readFile(folder() / (stream.clip + "." + std::to_string(stream.number) + ".pcm"));
    const std::size_t width = kindOf(stream.kind).bytes;
    const std::size_t frames = bytes.size() / (width * stream.channels);
    std::vector<std::vector<float>> channels(stream.channels, std::vector<float>(frames));
    const auto* at = reinterpret_cast<const std::uint8_t*>(bytes.data());
    for (std::size_t f = 0; f < frames; ++f) {
        for (auto& channel : channels) {
            channel[f] = sampleValue(stream.kind, at);
            at += width;
        }
    }
    return channels;
}

bool sameBits(const float* a, const float* b, std::size_t count) {
    return std::memcmp(a, b, count * sizeof(float)) == 0;
}

class RealAudio : public PluginTest {
 protected:
    /// A clip described for that stream, as the host asks for it.
    simhost::Clip open(const RealStream& stream) {
        simhost::OpenOptions options;
        options.streamIndex = stream.number;
        return simhost::Clip(importer(), clipPath(stream.clip), options);
    }
};

TEST_F(RealAudio, EveryStreamIsDescribedAsItIs) {
    startAndInit();
    const std::vector<RealStream> streams = realStreams();
    ASSERT_EQ(streams.size(), 18u);
    for (const RealStream& stream : streams) {
        SCOPED_TRACE(stream.clip);
        simhost::Clip clip = open(stream);
        const auto info = clip.getInfo(stream.number);
        EXPECT_EQ(static_cast<int>(info.record.hasAudio), 1);
        EXPECT_EQ(static_cast<std::uint32_t>(info.record.audInfo.numChannels), stream.channels);
        EXPECT_EQ(static_cast<float>(info.record.audInfo.sampleRate), static_cast<float>(stream.rate));
        EXPECT_EQ(static_cast<std::uint32_t>(info.record.audInfo.sampleType), kindOf(stream.kind).hostType);
        EXPECT_EQ(static_cast<std::size_t>(info.record.audDuration), reference(stream)[0].size());
    }
}

TEST_F(RealAudio, EverySampleIsTheOneThatFfmpegExtracts) {
    startAndInit();
    for (const RealStream& stream : realStreams()) {
        SCOPED_TRACE(stream.clip + " stream " + std::to_string(stream.number));
        const std::vector<std::vector<float>> expected = reference(stream);
        const std::size_t frames = expected[0].size();
        simhost::Clip clip = open(stream);
        clip.getInfo(stream.number);

        // In one request, and in a row of sequential ones of an odd size.
        const simhost::AudioAnswer whole =
            clip.importAudio(0, static_cast<std::uint32_t>(frames), stream.channels);
        ASSERT_EQ(whole.result, host::imNoErr);
        constexpr std::uint32_t kPiece = 977;
        std::vector<std::vector<float>> pieces(stream.channels);
        static_cast<void>(clip.importAudio(0, 0, stream.channels));  // back to the start
        for (std::size_t done = 0; done < frames; done += kPiece) {
            const auto size = static_cast<std::uint32_t>(std::min<std::size_t>(kPiece, frames - done));
            const simhost::AudioAnswer piece = clip.importAudio(-1, size, stream.channels);
            ASSERT_EQ(piece.result, host::imNoErr);
            for (std::uint32_t c = 0; c < stream.channels; ++c) {
                pieces[c].insert(pieces[c].end(), piece.channels[c].begin(), piece.channels[c].end());
            }
        }
        for (std::uint32_t c = 0; c < stream.channels; ++c) {
            EXPECT_TRUE(sameBits(whole.channels[c].data(), expected[c].data(), frames)) << "channel " << c;
            ASSERT_EQ(pieces[c].size(), frames);
            EXPECT_TRUE(sameBits(pieces[c].data(), expected[c].data(), frames))
                << "channel " << c << ", sequential";
        }
    }
}

TEST_F(RealAudio, AThousandRangesOfEachStreamAreTheSamePartsOfTheWhole) {
    startAndInit();
    std::mt19937 random(20261121);
    for (const RealStream& stream : realStreams()) {
        SCOPED_TRACE(stream.clip + " stream " + std::to_string(stream.number));
        const std::vector<std::vector<float>> expected = reference(stream);
        const std::size_t frames = expected[0].size();
        // Behind the end 8-bit silence is the lowest level: the bytes are cleared before their sign is
        // turned.
        const float silence = stream.kind == "u8" ? -1.0f : 0.0f;
        simhost::Clip clip = open(stream);
        clip.getInfo(stream.number);
        for (int i = 0; i < 1000; ++i) {
            const std::size_t start = random() % (frames + 200);
            const auto size = static_cast<std::uint32_t>(1 + random() % 700);
            const simhost::AudioAnswer answer =
                clip.importAudio(static_cast<std::int64_t>(start), size, stream.channels);
            ASSERT_EQ(answer.result, host::imNoErr);
            for (std::uint32_t c = 0; c < stream.channels; ++c) {
                std::vector<float> wanted(size, silence);
                if (start < frames) {
                    const std::size_t real = std::min<std::size_t>(size, frames - start);
                    std::copy_n(expected[c].begin() + static_cast<std::ptrdiff_t>(start), real,
                                wanted.begin());
                }
                ASSERT_TRUE(sameBits(answer.channels[c].data(), wanted.data(), size))
                    << "channel " << c << ", frames " << start << " + " << size;
            }
        }
    }
}

/// The labels of a channel mask, lowest bit first, by the loudspeakers' names.
std::vector<std::uint32_t> labelsOf(std::uint32_t mask) {
    static const std::map<std::uint32_t, std::uint32_t> kLabels = {{0x1, 100},   {0x2, 101},   {0x4, 102},
                                                                   {0x8, 103},   {0x10, 104},  {0x20, 105},
                                                                   {0x100, 106}, {0x200, 109}, {0x400, 110}};
    std::vector<std::uint32_t> labels;
    for (std::uint32_t bit = 1; bit != 0; bit <<= 1) {
        if ((mask & bit) != 0) {
            labels.push_back(kLabels.at(bit));
        }
    }
    return labels;
}

TEST_F(RealAudio, EveryChannelFeedsItsLoudspeaker) {
    startAndInit();
    constexpr std::uint32_t kUntouched = 0xA7A7A7A7;
    for (const RealStream& stream : realStreams()) {
        SCOPED_TRACE(stream.clip + " stream " + std::to_string(stream.number));
        simhost::Clip clip = open(stream);
        clip.getInfo(stream.number);
        const auto layout = clip.channelLayout(0xA7);
        ASSERT_EQ(layout.result, host::imNoErr);
        // Without a mask stereo and six channels have their usual loudspeakers, other counts none.
        std::vector<std::uint32_t> expected = labelsOf(stream.mask);
        if (stream.mask == 0 && stream.channels == 2) {
            expected = {100, 101};
        }
        if (stream.mask == 0 && stream.channels == 6) {
            expected = {100, 101, 102, 103, 104, 105};
        }
        for (std::size_t i = 0; i < 32; ++i) {
            const std::uint32_t label = layout.record.outChannelLabels[i];
            EXPECT_EQ(label, i < expected.size() ? expected[i] : kUntouched) << i;
        }
    }
}

TEST_F(RealAudio, StreamsAreWalkedAsTheHostDoesIt) {
    startAndInit();
    simhost::Clip clip(importer(), clipPath("several"));
    const std::vector<simhost::StreamInfo> streams = clip.walkStreams();
    ASSERT_EQ(streams.size(), 3u);
    EXPECT_EQ(streams[0].answer.result, host::imIterateStreams);
    EXPECT_EQ(streams[1].answer.result, host::imIterateStreams);
    EXPECT_EQ(streams[2].answer.result, host::imBadStreamIndex);
    EXPECT_EQ(static_cast<int>(streams[0].answer.record.hasVideo), 1);
    EXPECT_EQ(static_cast<int>(streams[1].answer.record.hasVideo), 0);
    EXPECT_EQ(static_cast<int>(streams[2].answer.record.audInfo.numChannels), 6);
}

TEST_F(RealAudio, CompressedSoundAloneIsLeftOutAndTheVideoPlays) {
    for (const char* name : {"compressed-libmp3lame", "compressed-ac3"}) {
        SCOPED_TRACE(name);
        if (std::string(name) == "compressed-libmp3lame") {
            startAndInit();
        }
        simhost::Clip clip(importer(), clipPath(name));
        const auto info = clip.getInfo(0);
        EXPECT_EQ(info.result, host::imNoErr);
        EXPECT_EQ(static_cast<int>(info.record.hasAudio), 0);
        EXPECT_EQ(static_cast<int>(info.record.hasVideo), 1);
        EXPECT_TRUE(clip.getFrame(3, host::PrPixelFormat_BGRA_4444_8u).frame);
        EXPECT_EQ(clip.importAudio(0, 10, 2).result, host::kUnhandledException);
    }
}

TEST_F(RealAudio, CompressedSoundAmongSeveralIsASilentPlaceholder) {
    startAndInit();
    simhost::Clip clip(importer(), clipPath("compressed-first"));
    const auto info = clip.getInfo(0);
    EXPECT_EQ(info.result, host::imIterateStreams);
    EXPECT_EQ(static_cast<int>(info.record.hasAudio), 1);
    EXPECT_EQ(static_cast<int>(info.record.audInfo.numChannels), 2);
    EXPECT_EQ(static_cast<float>(info.record.audInfo.sampleRate), 48000.0f);
    EXPECT_EQ(static_cast<std::uint32_t>(info.record.audInfo.sampleType), 14u);
    EXPECT_EQ(static_cast<std::int64_t>(info.record.audDuration), 0);
    const simhost::AudioAnswer answer = clip.importAudio(0, 100, 2);
    EXPECT_EQ(answer.result, host::imNoErr);
    for (const auto& channel : answer.channels) {
        for (const float sample : channel) {
            ASSERT_EQ(sample, simhost::Clip::kAudioPrefill) << "the host's buffers stay as they are";
        }
    }
    EXPECT_EQ(clip.channelLayout().result, host::imUnsupported);

    // The stream behind it plays.
    const RealStream second{"compressed-first", "s16", 1, 2, 48000, 0};
    EXPECT_EQ(clip.getInfo(1).result, host::imBadStreamIndex);
    const std::vector<std::vector<float>> expected = reference(second);
    const simhost::AudioAnswer sound = clip.importAudio(0, static_cast<std::uint32_t>(expected[0].size()), 2);
    EXPECT_TRUE(sameBits(sound.channels[1].data(), expected[1].data(), expected[1].size()));
}

TEST_F(RealAudio, WithoutTheHostsAudioSuiteFloatPlaysAndIntegersFail) {
    simhost::HostProfile profile = simhost::defaultProfile();
    profile.refusedSuites = {"Premiere Audio Suite"};
    startAndInit(profile);
    simhost::Clip integers(importer(), clipPath("s16-2ch-48000"));
    ASSERT_EQ(integers.getInfo(0).result, host::imNoErr);
    EXPECT_EQ(integers.importAudio(0, 100, 2).result, host::kUnhandledException);
    ASSERT_EQ(host().events().size(), 1u);
    EXPECT_NE(host().events()[0].description.find("Could not acquire suite: 'Premiere Audio Suite', ver: 1"),
              std::string::npos);
    simhost::Clip floats(importer(), clipPath("f32-2ch-44100"));
    ASSERT_EQ(floats.getInfo(0).result, host::imNoErr);
    EXPECT_EQ(floats.importAudio(0, 100, 2).result, host::imNoErr);
}

TEST_F(RealAudio, ConvertersAreCalledOncePerRequest) {
    startAndInit();
    simhost::Clip clip(importer(), clipPath("s24-2ch-48000"));
    ASSERT_EQ(clip.getInfo(0).result, host::imNoErr);
    for (int i = 0; i < 5; ++i) {
        ASSERT_EQ(clip.importAudio(i * 1000, 1000, 2).result, host::imNoErr);
    }
    EXPECT_EQ(host().calls(simhost::Service::kConvertFrom24Bit), 5u);
    EXPECT_EQ(host().calls(simhost::Service::kConvertFrom16Bit), 0u);
}

TEST_F(RealAudio, OneRequestsWholeLog) {
    orvantis::test::LogCapture capture;
    LogText log(capture, "");
    startAndInit();
    simhost::Clip clip(importer(), clipPath("mencoder"));
    ASSERT_EQ(clip.getInfo(0).result, host::imNoErr);
    static_cast<void>(log.news());
    // 800 of the 1000 frames lie behind the end of the stream's 57600.
    ASSERT_EQ(clip.importAudio(57400, 1000, 2).result, host::imNoErr);
    std::vector<std::string> lines = log.newLines();
    std::erase_if(lines, [](const std::string& line) { return line.starts_with("reading : "); });
    ASSERT_EQ(lines.size(), 14U);
    EXPECT_EQ(lines[0], "----------------------");
    EXPECT_EQ(lines[1], "[imImportAudio7] (25)");
    lines.erase(lines.begin(), lines.begin() + 4);  // those and the file's two
    const std::vector<std::string> expected = {
        "importAudioRec7P->position: 57400",
        "m_audioPosition           : 0",
        "startPos                  : 57400",
        "importAudioRec7P->size    : 1000",
        "endPos                    : 58400",
        "m_numAudioSampleFrames    : 57600",
        "startPosBytes             : 229600",
        "sizeBytes                 : 4000",
        "fill    : 3200",
        "    [imNoErr] (0)",
    };
    EXPECT_EQ(lines, expected);
}

}  // namespace
