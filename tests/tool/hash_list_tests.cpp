// The hash, and the lists of hashes as text.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <algorithm>

#include "tests/support/avi_builder/avi_builder.h"
#include "tests/support/temp_folder.h"
#include "tool/shared/base/md5.h"
#include "tool/shared/base/tool_error.h"
#include "tool/verify/clip_hashes.h"
#include "tool/verify/frame_md5_file.h"
#include "tool/verify/sample_layout.h"

namespace {

using simhost::tool::ClipHashes;
using simhost::tool::FindingKind;
using simhost::tool::FrameMd5File;
using simhost::tool::md5;
using simhost::tool::Md5;
using simhost::tool::parseFrameMd5;
using simhost::tool::SampleKind;
using simhost::tool::ToolError;
using testing::ElementsAre;
using testing::HasSubstr;

std::span<const std::uint8_t> bytesOf(std::string_view text) {
    return {reinterpret_cast<const std::uint8_t*>(text.data()), text.size()};
}

// The test suite of RFC 1321.
TEST(Md5Hash, IsThatOfTheRfc) {
    const std::pair<std::string_view, const char*> suite[] = {
        {"", "d41d8cd98f00b204e9800998ecf8427e"},
        {"a", "0cc175b9c0f1b6a831c399e269772661"},
        {"abc", "900150983cd24fb0d6963f7d28e17f72"},
        {"message digest", "f96b697d7cb7938d525a2f31aaf161d0"},
        {"abcdefghijklmnopqrstuvwxyz", "c3fcd3d76192e4007dfb496cca67e13b"},
        {"ABCDEFGHIJKLMNOPQRSTUVWXYZabcdefghijklmnopqrstuvwxyz0123456789",
         "d174ab98d277d9f5a5611c2c9f419d9f"},
        {"12345678901234567890123456789012345678901234567890123456789012345678901234567890",
         "57edf4a22be3c955ac49da2e2107b67a"}};
    for (const auto& [text, hash] : suite) {
        EXPECT_EQ(simhost::tool::hexText(md5(bytesOf(text))), hash) << text;
    }
}

TEST(Md5Hash, DoesNotDependOnThePieces) {
    const std::string text(1000, 'x');
    const auto whole = md5(bytesOf(text));
    for (const std::size_t piece : {1U, 55U, 56U, 63U, 64U, 65U, 128U, 999U}) {
        Md5 hash;
        for (std::size_t at = 0; at < text.size(); at += piece) {
            hash.add(bytesOf(std::string_view(text).substr(at, piece)));
        }
        EXPECT_EQ(hash.finish(), whole) << piece;
        EXPECT_EQ(hash.finish(), md5({})) << "it has begun anew";
    }
}

constexpr std::string_view kList =
    "#format: frame checksums\n"
    "#version: 2\n"
    "#hash: MD5\n"
    "#software: Lavf59.27.100\n"
    "#tb 0: 1001/30000\n"
    "#media_type 0: video\n"
    "#codec_id 0: rawvideo\n"
    "#dimensions 0: 32x24\n"
    "#sar 0: 1/1\n"
    "#tb 1: 1/48000\n"
    "#media_type 1: audio\n"
    "#codec_id 1: pcm_s16le\n"
    "#sample_rate 1: 48000\n"
    "#channel_layout_name 1: stereo\n"
    "#stream#, dts,        pts, duration,     size, hash\n"
    "0,          0,          0,        1,     3072, 4810379ed8ca3a92bc63c842227ddaad\n"
    "1,          0,          0,     1024,     4096, 8904df5033d62a7340b98e03dea71359\n"
    "1,       1024,       1024,     1024,     4096, 9fa5c863b67d9831fa7bc93cbe868e4e\n"
    "0,          1,          1,        1,     3072, f37402423d2d907a8151400558698213\n";

TEST(HashList, IsReadAndWrittenAsFfmpegWritesIt) {
    const FrameMd5File list = parseFrameMd5(kList, "a");
    ASSERT_EQ(list.streams.size(), 2U);
    EXPECT_FALSE(list.streams[0].sound);
    EXPECT_EQ(list.streams[0].num, 1001U);
    EXPECT_EQ(list.streams[0].den, 30000U);
    EXPECT_TRUE(list.streams[1].sound);
    EXPECT_EQ(list.streams[1].codec, "pcm_s16le");
    EXPECT_EQ(list.streams[1].rate, 48000U);
    ASSERT_EQ(list.lines.size(), 4U);
    EXPECT_EQ(list.lines[2].pts, 1024);
    EXPECT_EQ(list.lines[3].size, 3072U);
    EXPECT_EQ(simhost::tool::frameMd5Text(list, "Lavf59.27.100"), kList);
}

TEST(HashList, LineEndsOfWindowsAreNone) {
    std::string text(kList);
    for (std::size_t at = text.find('\n'); at != std::string::npos; at = text.find('\n', at + 2)) {
        text.insert(at, 1, '\r');
    }
    EXPECT_EQ(simhost::tool::frameMd5Text(parseFrameMd5(text, "a"), "Lavf59.27.100"), kList);
}

std::string kindOfFailure(std::string_view text) {
    try {
        (void)parseFrameMd5(text, "a");
    } catch (const ToolError& error) {
        return error.kind() + ": " + error.what();
    }
    return "none";
}

TEST(HashList, WhatIsNoneSaysWhere) {
    EXPECT_THAT(kindOfFailure(""),
                HasSubstr("not-framemd5: 'a' is no list of hashes that can be read: is empty"));
    EXPECT_THAT(kindOfFailure("RIFF"), HasSubstr("does not begin with"));
    std::string text(kList);
    text.replace(text.rfind("f374"), 4, "g374");
    EXPECT_THAT(kindOfFailure(text), HasSubstr("line 19"));
    EXPECT_THAT(kindOfFailure("#format: frame checksums\n0, 0, 0, 1\n"), HasSubstr("line 2"));
    EXPECT_THAT(kindOfFailure("#format: frame checksums\n#tb 0: 0/0\n"), HasSubstr("line 2"));
    EXPECT_THAT(
        kindOfFailure("#format: frame checksums\n4000000000, 0, 0, 1, 1, 4810379ed8ca3a92bc63c842227ddaad\n"),
        HasSubstr("line 2"));
    EXPECT_THAT(kindOfFailure("#format: frame checksums\n#hash: SHA256\n"), HasSubstr("other-hash"));
}

TEST(SampleLayout, IntegersComeBackFromFloatsBitByBit) {
    std::vector<std::uint8_t> bytes;
    std::vector<float> floats;
    for (int v = -8388608; v < 8388608; v += 997) {
        floats.push_back(static_cast<float>(v) / 8388608.0F);
    }
    floats.push_back(8388607.0F / 8388608.0F);
    layOut({floats}, 0, floats.size(), SampleKind::kS24, bytes);
    ASSERT_EQ(bytes.size(), 3 * floats.size());
    for (std::size_t i = 0; i < floats.size(); ++i) {
        const int v = i + 1 == floats.size() ? 8388607 : -8388608 + static_cast<int>(i) * 997;
        ASSERT_EQ(bytes[3 * i] | bytes[3 * i + 1] << 8 | bytes[3 * i + 2] << 16, v & 0xFFFFFF);
    }
    layOut({{-1.0F, 0.5F}, {0.0F, 127.0F / 128.0F}}, 0, 2, SampleKind::kU8, bytes);
    EXPECT_THAT(bytes, ElementsAre(0, 128, 192, 255));
    layOut({{-1.0F, 0.5F}}, 1, 1, SampleKind::kF32, bytes);
    EXPECT_THAT(bytes, ElementsAre(0, 0, 0, 0x3F));
}

// Four frames and 3000 sample frames, as hashed.
ClipHashes smallClip() {
    ClipHashes clip;
    clip.layout = {.name = "gray", .planes = 1};
    clip.width = clip.height = 2;
    clip.rate = 25;
    clip.declared = 4;
    for (std::uint8_t i = 0; i < 4; ++i) {
        clip.states.push_back(simhost::tool::ChunkState::kThere);
        clip.pictures.push_back({{i}, 4, 0, true});
    }
    simhost::tool::TrackHashes track;
    track.channels = 1;
    track.rate = 1000;
    track.sampleFrames = track.declared = 3000;
    track.blocks = {{0, 1000}, {1000, 1000}, {2000, 1000}};
    for (std::uint8_t i = 0; i < 3; ++i) {
        track.hashes.push_back({{i, 1}, 2000, 0, true});
    }
    clip.tracks.push_back(track);
    return clip;
}

std::vector<std::string> told(const ClipHashes& clip, const FrameMd5File& list) {
    std::vector<std::string> out;
    for (const auto& finding : judge(clip, &list, matchStreams(list, "list", clip))) {
        out.push_back(std::string(findingName(finding.kind)) + " " + std::to_string(finding.track) + " " +
                      std::to_string(finding.first) + "+" + std::to_string(finding.count));
    }
    return out;
}

TEST(HashComparison, TheClipsOwnListFinds) {
    const ClipHashes clip = smallClip();
    EXPECT_THAT(told(clip, toFrameMd5(clip)), testing::IsEmpty());
}

// Whatever an importer answers: what has no hash has not been verified.
TEST(HashComparison, AFrameWithoutAHashIsNotWhole) {
    ClipHashes clip = smallClip();
    clip.pictures[2].done = false;
    const auto findings = judge(clip, nullptr, {});
    ASSERT_EQ(findings.size(), 1U);
    EXPECT_EQ(findings[0].kind, FindingKind::kUndecodable);
    EXPECT_EQ(findings[0].first, 2U);
    EXPECT_EQ(findings[0].note, "the plug-in gives no picture");
}

TEST(HashComparison, SoundThatIsNotThereIsToldWithItsReason) {
    ClipHashes clip = smallClip();
    simhost::tool::TrackHashes& track = clip.tracks[0];
    track.declared = 3500;
    track.blocks[0].state = simhost::tool::ChunkState::kMissing;
    track.hashes[0] = {};
    track.hashes[1].result = 7;
    track.hashes[2].done = false;
    std::vector<std::string> out;
    for (const auto& finding : judge(clip, nullptr, {})) {
        out.push_back(std::string(findingName(finding.kind)) + " " + std::to_string(finding.first) + "+" +
                      std::to_string(finding.count) + " " + std::to_string(finding.result) + " " +
                      finding.note);
    }
    EXPECT_THAT(out,
                ElementsAre("missing 0+1000 0 its data lies beyond the end of the file",
                            "undecodable 1000+1000 7 ", "undecodable 2000+1000 0 the plug-in gives no sound",
                            "missing 3000+500 0 the header counts it, the index has it not"));
    // A list divides the sound otherwise: what touches the missing stretch is missing.
    FrameMd5File list = toFrameMd5(smallClip());
    list.lines.resize(4);
    list.lines.push_back({1, 500, 1000, 0, {}});
    list.lines.push_back({1, 1500, 1500, 0, {}});
    takeBlocksOf(list, matchStreams(list, "list", clip), clip);
    ASSERT_EQ(track.blocks.size(), 2U);
    EXPECT_EQ(track.blocks[0].state, simhost::tool::ChunkState::kMissing);
    EXPECT_EQ(track.blocks[1].state, simhost::tool::ChunkState::kThere);
}

TEST(HashComparison, RepeatedFramesHaveNoLineAndMayHaveNothingToRepeat) {
    ClipHashes clip = smallClip();
    clip.states[0] = clip.states[2] = simhost::tool::ChunkState::kRepeated;
    clip.pictures[0] = {{}, 0, 9, false};  // nothing stands before it
    const FrameMd5File list = toFrameMd5(clip);
    EXPECT_EQ(std::ranges::count(list.lines, 0U, &simhost::tool::FrameMd5Line::stream), 2);
    const auto findings = judge(clip, nullptr, {});
    ASSERT_EQ(findings.size(), 2U);
    EXPECT_EQ(findings[0].kind, FindingKind::kMissing);
    EXPECT_EQ(findings[0].note, "it repeats a frame that is not there");
    EXPECT_EQ(findings[1].kind, FindingKind::kRepeated);
}

TEST(HashComparison, SoundOfAnotherKindOrRateIsRefused) {
    const ClipHashes clip = smallClip();
    const auto refusal = [&clip](const FrameMd5File& list) {
        try {
            (void)matchStreams(list, "list", clip);
        } catch (const ToolError& error) {
            return std::string(error.what()) + " / " + error.advice();
        }
        return std::string("none");
    };
    FrameMd5File list = toFrameMd5(clip);
    EXPECT_EQ(refusal(list), "none");
    list.streams[1].codec = "pcm_s24le";
    EXPECT_EQ(refusal(list),
              "'list' cannot be compared: its sound is pcm_s24le, that of the clip is hashed as pcm_s16le / "
              "make the "
              "list with \"-c:a pcm_s16le\"");
    list = toFrameMd5(clip);
    list.streams[1].rate = 2000;
    EXPECT_THAT(refusal(list),
                HasSubstr("its sound has 2000 sample frames a second, that of the clip has 1000"));
}

// An index may name the same bytes any number of times.
TEST(ClipChunksRead, AnIndexOfMoreThanTheFileHasFewBlocks) {
    orvantis::test::AviBuilder avi;
    avi.addStream(orvantis::test::videoStream("O8Y2", 16, 4, 25, 1));
    avi.addStream(orvantis::test::pcmStream(1, 8000, 16));
    constexpr std::uint32_t kBytes = 400'000;
    constexpr std::size_t kEntries = 200;
    avi.addFilledChunk(1, kBytes, 1);
    for (std::size_t i = 1; i < kEntries; ++i) {
        avi.addFilledChunk(1, 0, 1);
    }
    auto bytes = avi.build();
    // Every entry of idx1 becomes the first.
    const auto first = bytes.begin() + static_cast<std::ptrdiff_t>(avi.idx1Offset()) + 8;
    for (std::size_t i = 1; i < kEntries; ++i) {
        std::copy_n(first, 16, first + static_cast<std::ptrdiff_t>(16 * i));
    }
    const orvantis::test::TempFolder folder;
    orvantis::test::writeFile(folder / "a.avi",
                              std::string_view(reinterpret_cast<const char*>(bytes.data()), bytes.size()));
    const auto chunks = simhost::tool::readClipChunks(orvantis::test::utf8Path(folder / "a.avi"));
    ASSERT_TRUE(chunks.has_value());
    ASSERT_EQ(chunks->sounds.size(), 1U);
    EXPECT_EQ(chunks->sounds[0].sampleFrames, kEntries * kBytes / 2);
    EXPECT_LT(chunks->sounds[0].blocks.size(), kBytes / 2 / 1024 + 2 + kEntries);
}

TEST(HashComparison, NamesWhatDiffersAndWhatIsNotThere) {
    ClipHashes clip = smallClip();
    FrameMd5File list = toFrameMd5(clip);
    clip.pictures[1].hash[15] ^= 1;
    clip.pictures[2].hash[0] ^= 128;
    clip.tracks[0].hashes[1].hash[3] ^= 4;
    EXPECT_THAT(told(clip, list), ElementsAre("different 0 1+2", "different 1 1000+1000"));
    clip = smallClip();
    list.lines.erase(list.lines.begin() + 3);  // the last frame
    list.lines.push_back({0, 9, 1, 4, {}});
    EXPECT_THAT(told(clip, list), ElementsAre("unlisted 0 3+1", "gone 0 9+1"));
}

TEST(HashComparison, SoundGoesByTheListsOwnBlocks) {
    ClipHashes clip = smallClip();
    FrameMd5File list = toFrameMd5(clip);
    list.lines.resize(4);
    for (const auto& [first, count] : {std::pair{0, 1500}, {1500, 1000}, {2700, 600}}) {
        list.lines.push_back({1, first, count, 0, {}});
    }
    takeBlocksOf(list, matchStreams(list, "list", clip), clip);
    ASSERT_EQ(clip.tracks[0].blocks.size(), 2U) << "what reaches beyond the end cannot be hashed";
    EXPECT_EQ(clip.tracks[0].blocks[1].first, 1500U);
    EXPECT_EQ(clip.tracks[0].blocks[1].count, 1000U);
    for (auto& hash : clip.tracks[0].hashes) {
        hash.done = true;
    }
    EXPECT_THAT(told(clip, list), ElementsAre("unlisted 1 2500+500", "gone 1 2700+600"));
}

TEST(HashComparison, AListOfOtherStreamsSaysSo) {
    const ClipHashes clip = smallClip();
    FrameMd5File list = toFrameMd5(clip);
    std::erase_if(list.lines, [](const auto& line) { return line.stream == 1; });
    list.streams.pop_back();
    EXPECT_THAT(told(clip, list), ElementsAre("uncompared 1 0+0"));
    list.streams.push_back({});
    EXPECT_THAT(told(clip, list), ElementsAre("gone -1 1+1", "uncompared 1 0+0"));
}

TEST(HashComparison, AnotherLayoutIsRefusedWithWhatToDo) {
    const ClipHashes clip = smallClip();
    FrameMd5File list = toFrameMd5(clip);
    list.lines[0].size = 12;
    try {
        (void)matchStreams(list, "list", clip);
        FAIL();
    } catch (const ToolError& error) {
        EXPECT_EQ(error.kind(), "other-layout");
        EXPECT_STREQ(error.what(),
                     "'list' cannot be compared: its frames have 12 bytes, those of the clip have 4 (gray)");
        EXPECT_EQ(error.advice(), "make the list with \"-c:v rawvideo -pix_fmt gray\"");
    }
}

}  // namespace
