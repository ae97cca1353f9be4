// Clips of other people's muxers: cut everywhere, and what comes out opened by the plug-in and listed by
// ffprobe.
#include <gmock/gmock.h>

#include <cstdio>
#include <filesystem>
#include <fstream>
#include <sstream>

#include "host/result_codes.h"
#include "tests/integration/plugin_test.h"
#include "tests/rescue/crash_disk.h"
#include "tests/rescue/cut_check.h"
#include "tests/support/temp_folder.h"
#include "tests/support/thorough.h"
#include "tool/rescue/mending.h"
#include "tool/rescue/new_clip.h"
#include "tool/rescue/undo_file.h"

namespace simhost::tool {
namespace {

namespace fs = std::filesystem;

std::vector<fs::path> clipsIn(const char* folder) {
    std::vector<fs::path> out;
    for (const auto& entry : fs::directory_iterator(folder)) {
        if (entry.path().extension() == ".avi") {
            out.push_back(entry.path());
        }
    }
    std::sort(out.begin(), out.end());
    return out;
}

TestBytes loaded(const fs::path& path) {
    const std::string text = orvantis::test::readFile(path);
    return {text.begin(), text.end()};
}

TEST(RescueRealClips, CutAtEveryStructuralPointTheWholeChunksAreFound) {
    constexpr std::uintmax_t kLarge = 100'000'000;  // tests/rescue/measure.sh takes all of its points
    for (const char* folder : {ORVANTIS_CLIPS_DIR, ORVANTIS_REAL_FRAMES}) {
        const std::vector<fs::path> clips = clipsIn(folder);
        EXPECT_GE(clips.size(), 40U);
        for (const fs::path& path : clips) {
            const auto file = systemDisk().openToRead(path.string());
            const std::vector<ChunkFact> truth = indexedChunks(*file);
            ASSERT_FALSE(truth.empty()) << path;
            const std::vector<std::uint64_t> points = structuralPoints(*file);
            const std::size_t step = fs::file_size(path) > kLarge ? 31 : orvantis::test::sampleStep(5);
            for (std::size_t i = 0; i < points.size(); i += step) {
                ASSERT_EQ(wrongInScan(*file, truth, points[i]), "") << path << " cut at " << points[i];
            }
        }
    }
}

TEST(RescueRealClips, EveryRescueOfAClipOfEachMuxer) {
    constexpr std::uintmax_t kSmall = 400'000;
    for (const fs::path& path : clipsIn(ORVANTIS_CLIPS_DIR)) {
        if (fs::file_size(path) > kSmall) {
            continue;
        }
        TestBytes whole = loaded(path);
        MemoryStorage file(whole);
        const std::vector<ChunkFact> truth = indexedChunks(file);
        const std::vector<std::uint64_t> points = structuralPoints(file);
        for (std::size_t i = 0; i < points.size();
             i +=
             23 * orvantis::test::sampleStep(3)) {  // a prime, so that all kinds of points have their turn
            ASSERT_EQ(wrongInRescue(whole, truth, points[i]), "") << path << " cut at " << points[i];
        }
    }
}

// A clip that is cut in its last frame, as a new file and mended where it lies.
struct Rescued {
    orvantis::test::TempFolder folder;
    std::vector<std::string> paths;
    std::size_t frames = 0;

    explicit Rescued(const fs::path& clip) {
        TestBytes cut = loaded(clip);
        MemoryStorage whole(cut);
        std::vector<ChunkFact> truth = indexedChunks(whole);
        std::erase_if(truth, [](const ChunkFact& chunk) { return chunk.stream != 0; });
        frames = truth.size() - 1;
        cut.resize(static_cast<std::size_t>(truth.back().offset + truth.back().size - 1));
        TestBytes fresh;
        MemoryStorage target(fresh);
        MemoryStorage source(cut);
        const ClipScan scan = scanClip(source);
        writeNewClip(source, scan, layOutNewClip(scan), target);
        put("new.avi", fresh);
        CrashDisk disk(cut);
        {
            const auto file = disk.openToChange("clip");
            ClipScan again = scanClip(*file);
            const IndexCheck check = checkIndexes(*file, again);
            applyMending(disk, *file, "undo", "part", planMending(*file, again, check));
        }
        put("mended.avi", disk.bytes("clip"));
    }

 private:
    void put(const char* name, const TestBytes& bytes) {
        orvantis::test::writeFile(
            folder / name, std::string_view(reinterpret_cast<const char*>(bytes.data()), bytes.size()));
        paths.push_back(orvantis::test::utf8Path(folder / name));
    }
};

class RescuePlayed : public PluginTest {};

TEST_F(RescuePlayed, ThePlugInShowsThePicturesOfTheUncutClip) {
    startAndInit();
    std::size_t shown = 0;
    for (const fs::path& path : clipsIn(ORVANTIS_REAL_FRAMES)) {
        SCOPED_TRACE(path);
        const Rescued rescued(path);
        ASSERT_GE(rescued.frames, 1U);
        Clip whole(importer(), path.string());
        ASSERT_EQ(whole.openResult(), host::imNoErr);
        (void)whole.getInfo(0);
        const auto formats = whole.pixelFormats().formats;
        ASSERT_FALSE(formats.empty());
        for (const std::string& file : rescued.paths) {
            Clip clip(importer(), file);
            ASSERT_EQ(clip.openResult(), host::imNoErr);
            const auto info = clip.getInfo(0);
            EXPECT_EQ(info.record.vidDuration / info.record.vidSampleSize,
                      static_cast<std::int32_t>(rescued.frames));
            (void)clip.pixelFormats();
            for (std::uint32_t frame = 0; frame < rescued.frames; ++frame) {
                const FrameAnswer wanted = whole.getFrame(frame, formats.front());
                const FrameAnswer got = clip.getFrame(frame, formats.front());
                ASSERT_TRUE(wanted.frame && got.frame) << frame;
                EXPECT_TRUE(wanted.frame->picture() == got.frame->picture()) << frame;
                ++shown;
            }
        }
    }
    EXPECT_EQ(shown, 48U * 2 * 3);
}

// Where ffprobe finds each packet of the pictures, and how long it is.
std::vector<std::pair<std::uint64_t, std::uint32_t>> packetsOf(const std::string& path) {
    const std::string command =
        "ffprobe -v quiet -select_streams v:0 -show_entries packet=pos,size -of csv=p=0 '" + path + "'";
    std::unique_ptr<FILE, int (*)(FILE*)> pipe(::popen(command.c_str(), "r"), ::pclose);
    std::string text;
    for (int c = std::fgetc(pipe.get()); c != EOF; c = std::fgetc(pipe.get())) {
        text += static_cast<char>(c == ',' ? ' ' : c);
    }
    std::vector<std::pair<std::uint64_t, std::uint32_t>> out;
    std::istringstream lines(text);
    for (std::uint32_t size = 0; lines >> size;) {
        std::uint64_t position = 0;
        lines >> position;
        out.emplace_back(position, size);
    }
    return out;
}

TEST(RescueProbed, FfprobeListsTheSameFrames) {
    for (const char* name : {"raw_O8Y2", "sound_s16_stereo", "mencoder", "opendml_lqt", "coded_ffvhuff"}) {
        const Rescued rescued(fs::path(ORVANTIS_CLIPS_DIR) / (std::string(name) + ".avi"));
        for (const std::string& path : rescued.paths) {
            std::vector<std::pair<std::uint64_t, std::uint32_t>> wanted;
            const auto file = systemDisk().openToRead(path);
            for (const ChunkFact& chunk : indexedChunks(*file)) {
                if (chunk.stream == 0) {
                    wanted.emplace_back(chunk.offset, chunk.size);
                }
            }
            ASSERT_EQ(wanted.size(), rescued.frames) << path;
            EXPECT_EQ(packetsOf(path), wanted) << name << " " << path;
        }
    }
}

}  // namespace
}  // namespace simhost::tool
