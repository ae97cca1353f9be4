// "importer_host verify": lists of ffmpeg's as oracle, and clips in which one bit is other than it was.
#include <filesystem>
#include <fstream>
#include <random>
#include <sstream>

#include "tests/tool/tool_run.h"
#include "tool/shared/base/file_facts.h"
#include "tool/shared/base/md5.h"

namespace {

namespace fs = std::filesystem;
using orvantis::test::AviBuilder;
using orvantis::test::Bytes;
using simhost::tool::kFailed;
using simhost::tool::kNoOutput;
using simhost::tool::kSuccess;
using simhost::tool::kUsage;
using testing::ElementsAre;
using testing::HasSubstr;
using testing::Not;

class ToolVerify : public ToolTest {
 protected:
    static std::string withoutSoftware(const std::string& list) {
        const std::size_t at = list.find("#software: ");
        return list.substr(0, at) + list.substr(list.find('\n', at));
    }
    /// "different frame 3", "missing sample frame 100+20"
    static std::vector<std::string> findings(const nlohmann::json& file) {
        std::vector<std::string> out;
        for (const auto& finding : file["findings"]) {
            const bool sound = finding.contains("sampleFrame");
            out.push_back(
                finding["kind"].get<std::string>() + (sound ? " sample frame " : " frame ") +
                std::to_string(finding[sound ? "sampleFrame" : "frame"].get<std::uint64_t>()) +
                (finding["count"] == 1 ? "" : "+" + std::to_string(finding["count"].get<std::uint64_t>())));
        }
        return out;
    }
    nlohmann::json verified(const std::string& clip, int code, std::vector<std::string> more = {}) const {
        std::vector<std::string> words = {"verify", clip, "--json"};
        words.insert(words.end(), more.begin(), more.end());
        const ToolRun result = runTool(words);
        EXPECT_EQ(result.code, code) << result.err;
        return result.json()["files"][0];
    }
};

#if defined(ORVANTIS_HASH_LISTS)

const fs::path kLists(ORVANTIS_HASH_LISTS);

std::string utf8(const fs::path& path) {
    return orvantis::test::utf8Path(path);
}

struct ListedClip {
    std::string name, tag, layout;
};
std::vector<ListedClip> listedClips() {
    std::ifstream list(kLists / "clips.txt");
    std::vector<ListedClip> out;
    for (ListedClip clip; list >> clip.name >> clip.tag >> clip.layout;) {
        out.push_back(clip);
    }
    return out;
}

TEST_F(ToolVerify, EveryTypeIsAsFfmpegsListsHaveIt) {
    const ToolRun result =
        runTool({"verify", utf8(kLists), "--compare", "--framemd5", utf8(kLists), "--json"});
    EXPECT_EQ(result.code, kSuccess) << result.out << result.err;
    std::size_t whole = 0;
    const auto files = result.json()["files"];
    for (const auto& file : files) {
        whole += file["whole"] == true && file["use"] == "compared";
    }
    EXPECT_EQ(whole, listedClips().size());
    EXPECT_EQ(whole, 18U);
}

TEST_F(ToolVerify, TheListsItWritesAreFfmpegsOwn) {
    ASSERT_EQ(runTool({"verify", utf8(kLists), "--framemd5", in("own/")}).code, kSuccess);
    for (const ListedClip& clip : listedClips()) {
        const std::string name = clip.name + ".avi.framemd5";
        EXPECT_EQ(withoutSoftware(read("own/" + name)),
                  withoutSoftware(orvantis::test::readFile(kLists / name)));
    }
}

struct Place {
    std::size_t offset;
    std::size_t size;
};
/// The data of the chunks with this code, as they stand in the file.
std::vector<Place> chunksOf(const std::string& bytes, const std::string& code) {
    std::vector<Place> out;
    for (std::size_t at = bytes.find("movi");
         (at = bytes.find(code, at)) < bytes.find("idx1", bytes.find("movi"));) {
        std::size_t size = 0;
        for (std::size_t i = 0; i < 4; ++i) {
            size |= std::size_t{static_cast<std::uint8_t>(bytes[at + 4 + i])} << 8 * i;
        }
        out.push_back({at + 8, size});
        at += 8 + size;
    }
    return out;
}

// Flips a random bit of a random frame in copies of every clip, several a type: every one is named, and no
// other.
TEST_F(ToolVerify, OneFlippedBitAnywhereInAFrameIsNamed) {
    std::mt19937 random(20261122);
    std::map<std::string, std::string> expected;
    constexpr int kFlips = 6;
    for (const ListedClip& clip : listedClips()) {
        const std::string whole = orvantis::test::readFile(kLists / (clip.name + ".avi"));
        const auto frames = chunksOf(whole, "00dc");
        ASSERT_GE(frames.size(), 1U) << clip.name;
        const bool deep = clip.layout.ends_with("le");
        const unsigned bits = !deep                           ? 8
                              : clip.layout.ends_with("14le") ? 14
                              : clip.layout.ends_with("12le") ? 12
                                                              : 10;
        for (int flip = 0; flip < kFlips; ++flip) {
            std::string bytes = whole;
            const std::size_t frame = random() % frames.size();
            const std::size_t at = random() % frames[frame].size;
            // The upper bits of a word that holds fewer are not part of the picture.
            const unsigned bit = random() % (deep && at % 2 == 1 ? bits - 8 : 8);
            bytes[frames[frame].offset + at] = static_cast<char>(bytes[frames[frame].offset + at] ^ 1 << bit);
            const std::string name = clip.name + "-" + std::to_string(flip) + ".avi";
            (void)write("flipped/" + name, bytes);
            fs::copy_file(kLists / (clip.name + ".avi.framemd5"), folder / "flipped" / (name + ".framemd5"));
            expected[name] = "different frame " + std::to_string(frame);
        }
    }
    const ToolRun result = runTool({"verify", in("flipped"), "--compare", "--beside", "--json"});
    EXPECT_EQ(result.code, kFailed) << result.err;
    std::size_t named = 0;
    const auto files = result.json()["files"];
    for (const auto& file : files) {
        const std::string name = fs::path(file["file"].get<std::string>()).filename().string();
        EXPECT_THAT(findings(file), ElementsAre(expected[name])) << name;
        named += file["whole"] == false;
    }
    EXPECT_EQ(named, expected.size());
}

TEST_F(ToolVerify, OneFlippedBitOfSoundIsNamed) {
    const std::string whole = orvantis::test::readFile(kLists / "ntsc.avi");
    const auto sounds = chunksOf(whole, "01wb");
    std::string bytes = whole;
    // The second chunk begins at sample frame 1601; its block of 1024 is the one that differs.
    bytes[sounds[1].offset + 4 * 1000] ^= 1;
    const std::string clip = write("flipped.avi", bytes);
    EXPECT_THAT(findings(verified(clip, kFailed, {"--framemd5", utf8(kLists / "ntsc.avi.framemd5")})),
                ElementsAre("different sample frame 1601+1024"));
}

TEST_F(ToolVerify, AListOfAnotherLayoutIsRefused) {
    const ToolRun result =
        runTool({"verify", utf8(kLists / "O8RG.avi"), "--framemd5", utf8(kLists / "O8RA.avi.framemd5")});
    EXPECT_EQ(result.code, kFailed);
    EXPECT_THAT(result.err, HasSubstr("make the list with \"-c:v rawvideo -pix_fmt gbrp\""));
}

#endif

// YUV 4:4:4 of ten bits, which no layout of the host holds as it is: hashed as the host gets it.
TEST_F(ToolVerify, PicturesWithoutALayoutOfTheirOwnAreHashedAsTheHostGetsThem) {
    std::mt19937 random(7);
    AviBuilder avi;
    avi.addStream(orvantis::test::videoStream("O0Y4", 16, 8, 25, 1));
    for (int i = 0; i < 4; ++i) {
        Bytes picture;
        for (int plane = 0; plane < 3; ++plane) {
            for (int at = 0; at < 16 * 8; ++at) {  // colours that RGB can show
                const unsigned sample = (plane == 0 ? 300 : 480) + random() % 64;
                picture.push_back(static_cast<std::uint8_t>(sample));
                picture.push_back(static_cast<std::uint8_t>(sample >> 8));
            }
        }
        avi.addChunk(0, picture);
    }
    Bytes bytes = avi.build();
    const std::string clip = write("a.avi", bytes);
    EXPECT_EQ(verified(clip, kSuccess, {"--beside"})["layout"], "PrPixelFormat_BGRA_4444_16u");
    EXPECT_EQ(verified(clip, kSuccess, {"--beside", "--compare"})["use"], "compared");
    for (int flip = 0; flip < 12; ++flip) {
        const std::size_t frame = random() % 4;
        const std::size_t at = avi.placements()[frame].offset + 2 * (random() % (3 * 16 * 8));
        bytes[at] ^= 1;
        EXPECT_THAT(findings(verified(write("a.avi", bytes), kFailed, {"--beside", "--compare"})),
                    ElementsAre("different frame " + std::to_string(frame)))
            << at;
        bytes[at] ^= 1;
    }
    // ffmpeg's list of such pictures, with six bytes a pixel.
    (void)write("other.framemd5",
                "#format: frame checksums\n#tb 0: 1/25\n#media_type 0: video\n#codec_id 0: rawvideo\n"
                "0, 0, 0, 1, 768, 4810379ed8ca3a92bc63c842227ddaad\n");
    EXPECT_THAT(
        runTool({"verify", write("a.avi", bytes), "--framemd5", in("other.framemd5")}).err,
        HasSubstr("its frames have 768 bytes, those of the clip have 1024 (PrPixelFormat_BGRA_4444_16u)\n"
                  "  -> no layout of the host holds such pictures whole: only lists of importer_host fit"));
}

/// A frame that repeats the one before, and one that is cut so that the codec refuses it.
std::string damaged() {
    AviBuilder avi;
    avi.addStream(orvantis::test::videoStream("O8Y2", clips::kWidth, clips::kHeight, 25, 1));
    for (std::uint32_t i = 0; i < 10; ++i) {
        Bytes picture = clips::codedPicture(i);
        picture.resize(i == 3 || i == 4 ? 0 : i == 7 ? 20 : picture.size());
        avi.addChunk(0, picture);
    }
    const Bytes bytes = avi.build();
    return {bytes.begin(), bytes.end()};
}

TEST_F(ToolVerify, RepeatedAndUndecodableFramesAreListedWithTheirTime) {
    const std::string clip = write("damaged.avi", damaged());
    const ToolRun result = runTool({"verify", clip});
    EXPECT_EQ(result.code, kFailed);
    EXPECT_EQ(result.out, clip +
                              "\n  10 frames as yuv422p\n"
                              "  repeated: frames 3-4 (00:00:00.120 to 00:00:00.200)\n"
                              "  UNDECODABLE: frame 7 (00:00:00.280): imBadCompression (8)\n"
                              "  NOT whole\n");
    const auto file = verified(clip, kFailed);
    EXPECT_THAT(findings(file), ElementsAre("repeated frame 3+2", "undecodable frame 7"));
    EXPECT_EQ(file["counts"]["repeated"]["frames"], 2);
    EXPECT_EQ(file["pictures"].size(), 10U);
    EXPECT_TRUE(file["pictures"][7].is_null());
    EXPECT_EQ(file["pictures"][2], file["pictures"][3]);
    EXPECT_DOUBLE_EQ(file["findings"][1]["seconds"], 0.28);
}

TEST_F(ToolVerify, RepeatedFramesAloneAreNoFault) {
    AviBuilder avi;
    avi.addStream(orvantis::test::videoStream("O8Y2", clips::kWidth, clips::kHeight, 25, 1));
    avi.addChunk(0, clips::codedPicture(0)).addChunk(0, Bytes());
    EXPECT_EQ(verified(write("a.avi", avi.build()), kSuccess)["whole"], true);
}

TEST_F(ToolVerify, FramesBehindTheEndOrInNoIndexAreMissing) {
    EXPECT_THAT(findings(verified(write("lost.avi", clipWithALostFrame()), kFailed)),
                ElementsAre("missing frame 2"));
    AviBuilder avi;
    auto plan = orvantis::test::videoStream("O8Y2", clips::kWidth, clips::kHeight, 25, 1);
    plan.length = 9;
    avi.addStream(plan).addChunk(0, clips::codedPicture(0));
    const std::string clip = write("short.avi", avi.build());
    EXPECT_THAT(findings(verified(clip, kFailed)), ElementsAre("missing frame 1+8"));
    EXPECT_THAT(runTool({"verify", clip}).out,
                HasSubstr("  MISSING: frames 1-8 (00:00:00.040 to 00:00:00.360): the header counts it, the "
                          "index has it not\n"));
}

TEST_F(ToolVerify, SoundBehindTheEndIsMissing) {
    auto avi = clips::builder();
    Bytes bytes = avi.build();
    const auto last = avi.placementsOf(1).back();
    bytes.resize(last.offset + last.size - 4);
    // Without the index behind it the clip has nothing, so the OpenDML one inside the headers serves.
    auto indexed = clips::builder({.openDml = orvantis::test::OpenDml::kStandardIndex});
    bytes = indexed.build();
    bytes.resize(indexed.placementsOf(1).back().offset + 100);
    EXPECT_THAT(findings(verified(write("cut.avi", bytes), kFailed)),
                ElementsAre("missing sample frame 1280+320"));
}

TEST_F(ToolVerify, CompressedSoundIsToldAndNoFault) {
    AviBuilder avi;
    avi.addStream(orvantis::test::videoStream("O8Y2", clips::kWidth, clips::kHeight, 25, 1));
    avi.addStream(compressedSound()).addStream(orvantis::test::pcmStream(1, 8000, 16));
    avi.addChunk(0, clips::codedPicture(0)).addFilledChunk(1, 64, 1).addFilledChunk(2, 64, 1);
    const ToolRun result = runTool({"verify", write("a.avi", avi.build())});
    EXPECT_EQ(result.code, kSuccess) << result.out;
    EXPECT_THAT(result.out, HasSubstr("not verified: sound track 1 cannot be decoded"));
    EXPECT_THAT(result.out, HasSubstr("sound track 2 as pcm_s16le"));
}

TEST_F(ToolVerify, AListIsWrittenOnceAndComparedThen) {
    const std::string clip = soundClip();
    const ToolRun first = runTool({"verify", clip, "--beside"});
    EXPECT_EQ(first.code, kSuccess) << first.err;
    EXPECT_THAT(first.out, HasSubstr("hashes written to " + clip + ".framemd5"));
    const std::string list = read("clip.avi.framemd5");
    EXPECT_THAT(runTool({"verify", clip, "--beside"}).out,
                HasSubstr("whole, equal to " + clip + ".framemd5"));
    (void)write("clip.avi", damaged());
    EXPECT_EQ(runTool({"verify", clip, "--beside", "--compare"}).code, kFailed);
    EXPECT_EQ(read("clip.avi.framemd5"), list) << "comparing writes nothing";
    EXPECT_EQ(runTool({"verify", soundClip(), "--beside", "--write"}).code, kSuccess);
}

TEST_F(ToolVerify, ComparingWithNothingIsAFailure) {
    const ToolRun result = runTool({"verify", soundClip(), "--compare", "--framemd5", in("none"), "--json"});
    EXPECT_EQ(result.code, kFailed);
    EXPECT_EQ(result.json()["error"]["kind"], "missing-list");
    EXPECT_EQ(runTool({"verify", soundClip(), "--compare"}).code, kUsage);
    EXPECT_EQ(runTool({"verify", soundClip(), soundClip("b.avi"), "--framemd5", in("list")}).code, kUsage);
    EXPECT_EQ(runTool({"verify", soundClip(), "--write", "--framemd5", in("clip.avi")}).code, kNoOutput);
}

TEST_F(ToolVerify, ClipsOfOneNameDoNotShareAList) {
    std::filesystem::create_directories(folder / "lists");
    const ToolRun result =
        runTool({"verify", soundClip("a/x.avi"), soundClip("b/x.avi"), "--framemd5", in("lists")});
    EXPECT_EQ(result.code, kUsage);
    EXPECT_THAT(result.err, HasSubstr("would share"));
}

TEST_F(ToolVerify, AnyNumberOfThreadsGivesTheSameHashes) {
    const std::string clip = write("clip.avi", clips::builder({.frames = 40, .audioStreams = 2}).build());
    const auto one = verified(clip, kSuccess, {"--jobs", "1"});
    const auto many = verified(clip, kSuccess, {"--jobs", "7"});
    EXPECT_EQ(one, many);
    EXPECT_EQ(one["pictures"].size(), 40U);
    EXPECT_EQ(one["sounds"].size(), 2U);
}

TEST_F(ToolVerify, OneBadFileDoesNotKeepTheOthersBack) {
    (void)soundClip("clips/b.avi");
    (void)write("clips/a.avi", "no AVI at all");
    const ToolRun result = runTool({"verify", in("clips")});
    EXPECT_EQ(result.code, kFailed);
    EXPECT_THAT(result.out, HasSubstr("1 of 2 files are whole\n"));
    const auto files = runTool({"verify", in("clips"), "--json"}).json()["files"];
    EXPECT_EQ(files[0]["error"]["kind"], "not-avi");
    EXPECT_EQ(files[1]["whole"], true);
}

// What an earlier run has done is not done again: a wrong hash of its state stands.
TEST_F(ToolVerify, WhatIsDoneIsTakenFromTheState) {
    const std::string clip = soundClip();
    ASSERT_EQ(runTool({"verify", clip, "--beside"}).code, kSuccess);
    std::string head = "importer_host verify, what is done: 1\nfile " +
                       std::to_string(fs::file_size(folder / "clip.avi")) + " " +
                       std::to_string(simhost::tool::fileFacts(clip).modified) + " yuv422p 5 " + clip + "\n";
    const std::string hash = "00112233445566778899aabbccddeeff";
    (void)write("state", head + "0 2 1 128 " + hash + "\n0 3 1 128 0011");
    const ToolRun result = runTool({"verify", clip, "--beside", "--resume", in("state")});
    EXPECT_EQ(result.code, kFailed);
    EXPECT_THAT(result.out, HasSubstr("  1 hash of an earlier run\n  DIFFERENT: frame 2 (00:00:00.080)\n"));
    EXPECT_FALSE(fs::exists(folder / "state")) << "the run has come to its end";
    // Of another file of the name it tells nothing.
    (void)write("state",
                head.replace(head.find(" yuv422p 5"), 10, " yuv422p 6") + "0 2 1 128 " + hash + "\n");
    EXPECT_EQ(runTool({"verify", clip, "--beside", "--resume", in("state")}).code, kSuccess);
}

TEST_F(ToolVerify, SoundOfAnotherLengthIsNotTakenFromTheState) {
    const std::string clip = soundClip();
    ASSERT_EQ(runTool({"verify", clip, "--beside"}).code, kSuccess);
    (void)write("state", "importer_host verify, what is done: 1\nfile " +
                             std::to_string(fs::file_size(folder / "clip.avi")) + " " +
                             std::to_string(simhost::tool::fileFacts(clip).modified) + " yuv422p 5 " + clip +
                             "\n1 0 5 20 00112233445566778899aabbccddeeff\n");
    const ToolRun result = runTool({"verify", clip, "--beside", "--resume", in("state")});
    EXPECT_EQ(result.code, kSuccess) << result.out;
    EXPECT_THAT(result.out, Not(HasSubstr("of an earlier run")));
}

// One block of sound, longer than one request.
TEST_F(ToolVerify, ALongBlockIsHashedToItsEnd) {
    AviBuilder avi;
    avi.addStream(orvantis::test::videoStream("O8Y2", clips::kWidth, clips::kHeight, 25, 1));
    avi.addStream(orvantis::test::pcmStream(1, 8000, 8)).addChunk(0, clips::codedPicture(0));
    Bytes sound;
    for (std::uint32_t i = 0; i < 120'000; ++i) {
        sound.push_back(static_cast<std::uint8_t>(i * i >> 7));
    }
    avi.addChunk(1, sound);
    const auto file = verified(write("a.avi", avi.build()), kSuccess);
    ASSERT_EQ(file["sounds"][0]["blocks"].size(), 1U);
    EXPECT_EQ(file["sounds"][0]["blocks"][0]["hash"], simhost::tool::hexText(simhost::tool::md5(sound)));
}

TEST_F(ToolVerify, AFileThatIsNoStateIsLeftAlone) {
    (void)write("letter.txt", "Dear Sir,\nyours.\n");
    const ToolRun result = runTool({"verify", soundClip(), "--resume", in("letter.txt")});
    EXPECT_EQ(result.code, kNoOutput);
    EXPECT_EQ(read("letter.txt"), "Dear Sir,\nyours.\n");
}

}  // namespace
