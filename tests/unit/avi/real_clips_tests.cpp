// Clips that other people's muxers wrote: each chunk that we list is the packet that ffprobe lists, byte for
// byte.
//
// ffprobe says where a packet's data lies, leaves empty chunks out, and cuts sound into packets of at most
// 1024 sample frames; so sound is compared as runs of bytes.
#include <gtest/gtest.h>

#include <algorithm>
#include <cstring>
#include <filesystem>
#include <fstream>
#include <nlohmann/json.hpp>
#include <optional>
#include <set>
#include <string>

#include "avi/avi_reader.h"
#include "avi/avi_stream.h"
#include "avi/frame_chunk.h"
#include "fileio/win_file.h"

namespace orvantis {
namespace {

struct Clip {
    const char* name;
    std::size_t frames;       // chunks of the video stream, the empty ones included
    std::size_t emptyFrames;  // how many of them are
    bool openDml = false;
    std::size_t standardIndexes = 0;  // of the video stream
};

// What tests/clips/make_clips.sh makes.
const Clip kClips[] = {
    {"coded_ffvhuff", 10, 0},
    {"coded_huffyuv", 10, 0},
    {"coded_mjpeg", 10, 0},
    {"mencoder", 20, 0},
    {"mencoder_repeated", 40, 20},
    {"opendml_dvgrab", 10, 0, true, 1},
    {"opendml_ffmpeg_large", 180, 0, true, 2},
    {"opendml_lqt", 20, 0, true, 1},
    {"rate_15_2", 4, 0},
    {"rate_1_200", 4, 0},
    {"rate_24", 4, 0},
    {"rate_240", 4, 0},
    {"rate_24000_1001", 4, 0},
    {"rate_25", 4, 0},
    {"rate_30", 4, 0},
    {"rate_30000_1001", 4, 0},
    {"rate_50", 4, 0},
    {"rate_60", 4, 0},
    {"rate_60000_1001", 4, 0},
    {"raw_O0G0", 5, 0},
    {"raw_O0RA", 5, 0},
    {"raw_O0RG", 5, 0},
    {"raw_O0Y0", 5, 0},
    {"raw_O0Y2", 5, 0},
    {"raw_O0Y4", 5, 0},
    {"raw_O2RA", 5, 0},
    {"raw_O2RG", 5, 0},
    {"raw_O4RG", 5, 0},
    {"raw_O8G0", 5, 0},
    {"raw_O8RA", 5, 0},
    {"raw_O8RG", 5, 0},
    {"raw_O8Y0", 5, 0},
    {"raw_O8Y2", 5, 0},
    {"raw_O8Y4", 5, 0},
    {"raw_O8YA", 5, 0},
    {"repeated", 28, 18},  // of each three frames the first
    {"sound_f32_stereo", 10, 0},
    {"sound_first", 10, 0},
    {"sound_none", 10, 0},
    {"sound_s16_six", 10, 0},
    {"sound_s16_stereo", 10, 0},
    {"sound_s24_stereo", 10, 0},
    {"sound_s32_stereo", 10, 0},
    {"sound_three", 10, 0},
    {"sound_u8_mono", 10, 0},
};

std::filesystem::path folder() {
    return std::filesystem::path(ORVANTIS_CLIPS_DIR);
}

// The clips that their muxers failed to make on this machine, by the names of their files.
std::set<std::string> notMade() {
    std::set<std::string> names;
    std::ifstream list(folder() / "not_made.txt");
    for (std::string name; std::getline(list, name);) {
        names.insert(name);
    }
    return names;
}

// A piece of the file that belongs to one stream.
struct Span {
    std::uint64_t position;
    std::uint64_t bytes;

    bool operator==(const Span&) const = default;
};

std::ostream& operator<<(std::ostream& out, const Span& run) {
    return out << run.bytes << " at " << run.position;
}

// Neighbours become one; empty ones vanish.
std::vector<Span> joined(const std::vector<Span>& runs) {
    std::vector<Span> result;
    for (const Span& run : runs) {
        if (run.bytes == 0) {
            continue;
        }
        if (!result.empty() && result.back().position + result.back().bytes == run.position) {
            result.back().bytes += run.bytes;
        } else {
            result.push_back(run);
        }
    }
    return result;
}

std::vector<Span> withoutEmpty(std::vector<Span> runs) {
    std::erase_if(runs, [](const Span& run) { return run.bytes == 0; });
    return runs;
}

// One clip with its listing.
struct OpenClip {
    explicit OpenClip(const Clip& clip) : made(clip), path(folder() / (std::string(clip.name) + ".avi")) {
        if (!file.open(path.u16string().c_str(), fileio::kOpenRead | fileio::kOpenShareRead)) {
            return;
        }
        if (!reader.parse(file, false)) {
            return;
        }
        std::ifstream list(path.string() + ".json");
        if (!list) {
            return;
        }
        listing = nlohmann::json::parse(list);
        isOpen = true;
    }
    const AviStream& video() const { return *reader.streams.at(videoNumber()); }
    std::size_t videoNumber() const { return reader.streamsOfType(kStreamTypeVideo).at(0); }

    const Clip& made;
    const std::filesystem::path path;
    fileio::WinFile file;
    AviReader reader;
    nlohmann::json listing;
    bool isOpen = false;
};

// Calls `check` with each clip that could be made.
template <typename Check>
void forEachClip(Check check) {
    const std::set<std::string> missing = notMade();
    for (const Clip& clip : kClips) {
        if (missing.contains(std::string(clip.name) + ".avi")) {
            continue;
        }
        SCOPED_TRACE(clip.name);
        OpenClip open(clip);
        ASSERT_TRUE(open.isOpen) << open.path;
        check(open);
        if (::testing::Test::HasFatalFailure()) {
            return;
        }
    }
}

TEST(RealClips, AreReadWithoutAProblem) {
    forEachClip([](OpenClip& clip) {
        EXPECT_EQ(clip.reader.errorText(), "");
        EXPECT_EQ(clip.reader.streams.size(), clip.listing["streams"].size());
    });
}

TEST(RealClips, HaveTheStreamsListed) {
    forEachClip([](OpenClip& clip) {
        for (std::size_t i = 0; i < clip.reader.streams.size(); ++i) {
            const AviStream& stream = *clip.reader.streams[i];
            const nlohmann::json& listed = clip.listing["streams"][i];
            EXPECT_EQ(stream.index, i);
            if (listed["codec_type"] == "video") {
                EXPECT_EQ(stream.header.fccType, kStreamTypeVideo);
                EXPECT_EQ(stream.formatHeader().biWidth, listed["width"].get<std::int32_t>());
                EXPECT_EQ(stream.formatHeader().biHeight, listed["height"].get<std::int32_t>());
                char code[5] = {};
                const std::uint32_t compression = stream.formatHeader().biCompression;
                std::memcpy(code, &compression, 4);
                EXPECT_EQ(code, listed["codec_tag_string"].get<std::string>());
                EXPECT_EQ(stream.header.fccHandler, compression);
                EXPECT_EQ(code[0], 'O');
                // The listing has the rate as a reduced fraction.
                const std::string rate = listed["r_frame_rate"];
                const std::uint64_t numerator = std::stoull(rate);
                const std::uint64_t denominator = std::stoull(rate.substr(rate.find('/') + 1));
                EXPECT_EQ(std::uint64_t{stream.header.dwRate} * denominator,
                          stream.header.dwScale * numerator)
                    << rate;
            } else {
                ASSERT_EQ(listed["codec_type"], "audio");
                EXPECT_EQ(stream.header.fccType, kStreamTypeAudio);
                ASSERT_GE(stream.format.size(), 16U);
                EXPECT_EQ(stream.format[2] + 256 * stream.format[3], listed["channels"].get<int>());
            }
        }
    });
}

TEST(RealClips, HaveTheFramesThatTheMuxerWrote) {
    forEachClip([](OpenClip& clip) {
        const ChunkList& list = clip.video().entries();
        EXPECT_EQ(list.size(), clip.made.frames);
        EXPECT_EQ(list.size(), clip.video().header.dwLength);
        EXPECT_EQ(static_cast<std::size_t>(std::count_if(
                      list.begin(), list.end(), [](const IndexEntry& entry) { return entry.size == 0; })),
                  clip.made.emptyFrames);
        EXPECT_EQ(clip.video().hasOpenDmlIndex, clip.made.openDml);
        EXPECT_EQ(clip.video().standardIndexes.size(), clip.made.standardIndexes);
    });
}

TEST(RealClips, HaveTheChunksListedAsPackets) {
    forEachClip([](OpenClip& clip) {
        for (std::size_t i = 0; i < clip.reader.streams.size(); ++i) {
            const AviStream& stream = *clip.reader.streams[i];
            std::vector<Span> chunks;
            std::uint64_t start = 0;
            for (const IndexEntry& entry : stream.entries()) {
                chunks.push_back(Span{entry.offset, entry.size});
                EXPECT_EQ(entry.start, start);
                start += entry.size;
            }
            EXPECT_EQ(stream.totalBytes(), start);

            std::vector<Span> packets;
            for (const nlohmann::json& packet : clip.listing["packets"]) {
                if (packet["stream_index"].get<std::size_t>() != i) {
                    continue;
                }
                packets.push_back(Span{std::stoull(packet["pos"].get<std::string>()),
                                       std::stoull(packet["size"].get<std::string>())});
            }
            EXPECT_FALSE(packets.empty());
            if (stream.header.fccType == kStreamTypeVideo) {
                EXPECT_EQ(withoutEmpty(chunks), packets) << "stream " << i;
            } else {
                EXPECT_EQ(joined(chunks), joined(packets)) << "stream " << i;
            }
        }
    });
}

TEST(RealClips, HaveTheKeyFramesListed) {
    forEachClip([](OpenClip& clip) {
        std::vector<bool> listed;
        const std::size_t number = clip.videoNumber();
        for (const nlohmann::json& packet : clip.listing["packets"]) {
            if (packet["stream_index"].get<std::size_t>() != number) {
                continue;
            }
            listed.push_back(packet["flags"].get<std::string>().at(0) == 'K');
        }
        std::vector<bool> found;
        for (const IndexEntry& entry : clip.video().entries()) {
            if (entry.size != 0) {
                found.push_back(entry.keyFrame);
            }
        }
        EXPECT_EQ(found, listed);
    });
}

TEST(RealClips, GiveEachFrameAndRepeatTheLastForEmptyOnes) {
    forEachClip([](OpenClip& clip) {
        const ChunkList& list = clip.video().entries();
        const auto frameCount = static_cast<std::int64_t>(list.size());
        std::ifstream plain(clip.path, std::ios::binary);
        FrameChunk chunk;
        std::size_t nonEmpty = 0;
        for (std::size_t i = 0; i < list.size(); ++i) {
            if (list[i].size != 0) {
                nonEmpty = i;
            }
            const FrameChunkRead read = readFrameChunk(clip.file, clip.video(), i, frameCount, chunk);
            ASSERT_EQ(read.outcome, FrameChunkRead::Outcome::kRead) << i;
            if (list[i].size == 0 && list[nonEmpty].size != 0) {
                ASSERT_EQ(read.substitute, std::optional<std::uint64_t>(nonEmpty)) << i;
            }
            if (list[nonEmpty].size == 0) {
                continue;  // empty from the start on: served from behind
            }
            ASSERT_EQ(chunk.bytes, list[nonEmpty].size) << i;
            std::vector<char> expected(chunk.bytes);
            plain.seekg(static_cast<std::streamoff>(list[nonEmpty].offset));
            plain.read(expected.data(), static_cast<std::streamsize>(expected.size()));
            ASSERT_TRUE(std::equal(expected.begin(), expected.end(),
                                   reinterpret_cast<const char*>(chunk.buffer.data())))
                << i;
        }
    });
}

TEST(RealClips, AreAllTested) {
    std::set<std::string> tested;
    for (const Clip& clip : kClips) {
        tested.insert(std::string(clip.name) + ".avi");
    }
    std::set<std::string> made;
    for (const auto& file : std::filesystem::directory_iterator(folder())) {
        if (file.path().extension() == ".avi") {
            made.insert(file.path().filename().string());
        }
    }
    const std::set<std::string> missing = notMade();
    made.insert(missing.begin(), missing.end());
    EXPECT_EQ(made, tested);
    EXPECT_GE(tested.size() - missing.size(), tested.size() - 2) << "most muxers work everywhere";
    if (!missing.empty()) {
        GTEST_SKIP() << "not made on this machine: " << testing::PrintToString(missing);
    }
}

}  // namespace
}  // namespace orvantis
