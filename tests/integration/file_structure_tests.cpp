// Odd but readable files, seen from the host: what it is told of them and which frames it gets.
#include <gmock/gmock.h>

#include <cstdint>
#include <cstring>
#include <string>
#include <vector>

#include "host/pixel_formats.h"
#include "host/result_codes.h"
#include "host/selectors.h"
#include "tests/integration/plugin_clip_test.h"

namespace {

using orvantis::test::AviBuilder;
using orvantis::test::Bytes;
using orvantis::test::OpenDml;
using orvantis::test::videoStream;
using testing::Contains;

using clips::kYuy2;

class FileStructure : public ClipTest {
 protected:
    simhost::Clip open(const Bytes& bytes, std::int32_t expected = host::imNoErr) {
        simhost::Clip clip(importer(), place(u8"clip.avi", bytes));
        EXPECT_EQ(clip.getInfo(0).result, expected);
        return clip;
    }
    static void expectFrame(simhost::Clip& clip, std::uint32_t index, std::uint32_t picture) {
        const auto answer = clip.getFrame(index, kYuy2);
        EXPECT_EQ(answer.result, host::imNoErr) << index;
        ASSERT_TRUE(answer.frame.has_value()) << index;
        EXPECT_EQ(answer.frame->picture(), clips::yuy2Picture(picture)) << index;
    }
};

TEST_F(FileStructure, AnEmptyChunkShowsTheFrameBeforeIt) {
    logOn();
    startAndInit();
    AviBuilder avi;
    avi.addStream(videoStream("O8Y2", 16, 4, 25, 1));
    for (const int picture : {-1, -1, 2, 3, 4, -1, -1, 7, -1}) {
        avi.addChunk(0, picture < 0 ? Bytes() : clips::codedPicture(static_cast<std::uint32_t>(picture)));
    }
    simhost::Clip clip = open(avi.build());
    // Where there is none before, the first one behind.
    const std::uint32_t shown[] = {2, 2, 2, 3, 4, 4, 4, 7, 7};
    for (std::uint32_t i = 0; i < 9; ++i) {
        static_cast<void>(log().news());
        expectFrame(clip, i, shown[i]);
        const auto lines = log().newLines();
        if (i == shown[i]) {
            EXPECT_THAT(lines, testing::Not(Contains(testing::StartsWith("Empty frame: "))));
        } else {
            EXPECT_THAT(lines, Contains("Empty frame: " + std::to_string(i) +
                                        ", frame read: " + std::to_string(shown[i])));
        }
    }
}

TEST_F(FileStructure, AFileOfEmptyChunksHasFramesThatAreNotFound) {
    startAndInit();
    AviBuilder avi;
    avi.addStream(videoStream("O8Y2", 16, 4, 25, 1));
    for (int i = 0; i < 3; ++i) {
        avi.addChunk(0, Bytes());
    }
    simhost::Clip clip = open(avi.build());
    EXPECT_EQ(clip.dataRates().samples.size(), 3U);
    for (std::uint32_t i = 0; i < 3; ++i) {
        EXPECT_EQ(clip.getFrame(i, kYuy2).result, host::imFrameNotFound);
    }
}

TEST_F(FileStructure, ChunksOfOddSizeArePadded) {
    startAndInit();
    AviBuilder avi;
    avi.addStream(videoStream("O8Y2", 16, 4, 25, 1));
    for (std::uint32_t i = 0; i < 4; ++i) {
        Bytes picture = clips::codedPicture(i);
        picture.push_back(0xEE);  // 129 bytes; the library ignores what it does not need
        avi.addChunk(0, picture);
    }
    simhost::Clip clip = open(avi.build());
    for (std::uint32_t i = 0; i < 4; ++i) {
        expectFrame(clip, i, i);
    }
}

TEST_F(FileStructure, AStreamListWithoutAFormatIsDroppedAndPositionsCount) {
    startAndInit();
    // A list without strf in front of the real streams: idx1's "00" means the first stream that is left.
    AviBuilder avi = clips::builder();
    const Bytes good = avi.build();
    orvantis::test::RiffBuilder broken;
    broken.beginList("LIST", "strl").begin("strh").code("vids").fill(52).end().end();
    const Bytes list = broken.take();
    Bytes bytes = good;
    bytes.insert(bytes.begin() + static_cast<std::ptrdiff_t>(avi.strlOffset(0)), list.begin(), list.end());
    const auto grow = [&bytes, &list](std::size_t sizeAt) {
        std::uint32_t size = 0;
        std::memcpy(&size, &bytes[sizeAt], 4);
        size += static_cast<std::uint32_t>(list.size());
        std::memcpy(&bytes[sizeAt], &size, 4);
    };
    grow(4);   // the form
    grow(16);  // hdrl
    simhost::Clip clip = open(bytes);
    for (std::uint32_t i = 0; i < 5; ++i) {
        expectFrame(clip, i, i);
    }
    EXPECT_EQ(clip.importAudio(321, 1, 2).channels[0][0], 321.0F / 32768.0F);
    EXPECT_NE(clip.analysis(2000).text.find("\nAudio stream 1:\n"), std::string::npos);
}

TEST_F(FileStructure, FurtherFormsAreReachedThroughTheOpenDmlIndexOnly) {
    startAndInit();
    AviBuilder avi = clips::builder({.frames = 6});
    avi.openDml(OpenDml::kSuperIndex).chunksPerForm(4).entriesPerStandardIndex(1);
    simhost::Clip clip = open(avi.build());
    for (std::uint32_t i = 0; i < 6; ++i) {
        expectFrame(clip, i, i);
    }
    EXPECT_EQ(clip.importAudio(1900, 1, 2).channels[0][0], 1900.0F / 32768.0F);
    ASSERT_EQ(clip.close(), host::imNoErr);

    avi.openDml(OpenDml::kNone);
    simhost::Clip legacy = open(avi.build());
    EXPECT_EQ(legacy.dataRates().samples.size(), 2U) << "idx1 covers the first form";
}

TEST_F(FileStructure, RecListsAndJunkAreNoObstacle) {
    startAndInit();
    AviBuilder avi = clips::builder();
    avi.chunksPerRecList(2).junk(1000);
    simhost::Clip clip = open(avi.build());
    for (std::uint32_t i = 0; i < 5; ++i) {
        expectFrame(clip, i, i);
    }
}

TEST_F(FileStructure, AbsoluteOffsetsInIdx1AreNotRecognised) {
    startAndInit();
    AviBuilder avi = clips::builder();
    avi.absoluteIdx1Offsets(true);
    simhost::Clip clip = open(avi.build());
    EXPECT_EQ(clip.dataRates().samples.size(), 5U);
    // The places are wrong by the headers' length: other bytes than the first frame's come out, and the last
    // frames lie behind the file's end.
    const auto first = clip.getFrame(0, kYuy2);
    if (first.frame) {
        EXPECT_NE(first.frame->picture(), clips::yuy2Picture(0));
    }
    for (std::uint32_t i = 0; i < 5; ++i) {
        EXPECT_THAT(clip.getFrame(i, kYuy2).result, testing::AnyOf(host::imNoErr, host::imFileReadFailed));
    }
}

TEST_F(FileStructure, AnOddIdx1SizeIsNoObstacle) {
    startAndInit();
    AviBuilder avi = clips::builder();
    Bytes bytes = avi.build();
    // 4 bytes more than whole entries, claimed and present.
    const std::size_t sizeAt = static_cast<std::size_t>(avi.idx1Offset()) + 4;
    bytes[sizeAt] = static_cast<std::uint8_t>(bytes[sizeAt] + 4);
    bytes.insert(bytes.end(), {0, 0, 0, 0});
    simhost::Clip clip = open(bytes);
    EXPECT_EQ(clip.dataRates().samples.size(), 5U);
    for (std::uint32_t i = 0; i < 5; ++i) {
        expectFrame(clip, i, i);
    }
}

TEST_F(FileStructure, WrongFormSizesAreNoObstacle) {
    startAndInit();
    // A writer that never came back to fill in the size leaves all bits set.
    Bytes bytes = clips::builder().build();
    for (std::size_t i = 4; i < 8; ++i) {
        bytes[i] = 0xFF;
    }
    simhost::Clip clip = open(bytes);
    for (std::uint32_t i = 0; i < 5; ++i) {
        expectFrame(clip, i, i);
    }
}

TEST_F(FileStructure, AFormOfSizeZeroHoldsNothing) {
    logOn();
    startAndInit();
    Bytes bytes = clips::builder().build();
    for (std::size_t i = 4; i < 8; ++i) {
        bytes[i] = 0;
    }
    simhost::Clip clip = open(bytes, host::imBadFile);
    EXPECT_THAT(log().newLines(), Contains("Failed to parse avi: hdrl missing"));
}

// --- rates ---

TEST_F(FileStructure, AnInvalidRateBecomesThirty) {
    logOn();
    startAndInit();
    for (const auto& [rate, scale] : {std::pair<std::uint32_t, std::uint32_t>{0, 1}, {25, 0}, {0, 0}}) {
        static_cast<void>(log().news());
        simhost::Clip clip(importer(), placeClip({.rate = rate, .scale = scale}));
        const auto answer = clip.getInfo(0);
        EXPECT_EQ(answer.result, host::imNoErr);
        EXPECT_EQ(simhost::byValue(answer.record.vidScale), 30);
        EXPECT_EQ(simhost::byValue(answer.record.vidSampleSize), 1);
        EXPECT_EQ(simhost::byValue(answer.record.vidDuration), 5);
        EXPECT_THAT(log().newLines(), testing::IsSupersetOf({"Invalid FPS: " + std::to_string(rate) + "/" +
                                                                 std::to_string(scale),
                                                             std::string("Adjusted FPS: 30 / 1 (30.000)")}));
        expectFrame(clip, 4, 4);
    }
}

TEST_F(FileStructure, ARateThatRoundsToNothingIsToldAndFindsNoFrame) {
    logOn();
    startAndInit();
    // One picture in 200 seconds.
    simhost::Clip clip(importer(), placeClip({.rate = 1, .scale = 200}));
    const auto answer = clip.getInfo(0);
    EXPECT_EQ(answer.result, host::imNoErr);
    EXPECT_EQ(simhost::byValue(answer.record.vidScale), 0);
    EXPECT_EQ(simhost::byValue(answer.record.vidSampleSize), 1);
    EXPECT_THAT(log().newLines(),
                testing::IsSupersetOf({"AVI FPS: 1 / 200 (0.005)", "Adjusted FPS: 0 / 1 (0.000)"}));
    const host::imFrameFormat formats[] = {{0, 0, kYuy2}};
    EXPECT_EQ(clip.getSourceVideo(0, formats).result, host::imFrameNotFound);
    EXPECT_THAT(log().newLines(),
                testing::IsSupersetOf({"frameIndex:  4294967295 (total: 5)", "frameIndex out of bounds"}));
    EXPECT_NE(clip.analysis(2000).text.find("\n    Duration: unknown\n"), std::string::npos);
}

TEST_F(FileStructure, RatesFromHostileHeadersDoNotTrap) {
    startAndInit();
    const std::uint32_t values[] = {1, 2, 0x7FFFFFFF, 0x80000000, 0xFFFFFFFF, 36310000, 0xFFFFFFFE};
    const host::imFrameFormat formats[] = {{0, 0, kYuy2}};
    for (const std::uint32_t rate : values) {
        for (const std::uint32_t scale : values) {
            simhost::Clip clip(importer(),
                               placeClip({.frames = 2, .audioStreams = 0, .rate = rate, .scale = scale}));
            EXPECT_EQ(clip.getInfo(0).result, host::imNoErr) << rate << "/" << scale;
            for (const host::PrTime time :
                 {host::PrTime{0}, host::PrTime{1}, host::PrTime{-1}, INT64_MAX, INT64_MIN}) {
                EXPECT_THAT(clip.getSourceVideo(time, formats).result,
                            testing::AnyOf(host::imNoErr, host::imFrameNotFound))
                    << rate << "/" << scale << " at " << time;
            }
            EXPECT_EQ(clip.analysis(2000).result, host::imNoErr);
        }
    }
}

}  // namespace
