// The sentences about a file's oddities.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include "tool/shared/media/avi_facts.h"

namespace simhost::tool {
namespace {

using testing::ElementsAre;
using testing::HasSubstr;
using testing::IsEmpty;

// Four seconds of pictures and of sound.
AviFacts sound() {
    AviFacts facts;
    facts.usable = true;
    StreamFacts video;
    video.kind = StreamFacts::Kind::kVideo;
    video.rate = 25;
    video.scale = 1;
    video.declaredLength = 100;
    video.chunks = 100;
    video.index = IndexKind::kOpenDml;
    StreamFacts audio = video;
    audio.kind = StreamFacts::Kind::kAudio;
    audio.rate = 48000;
    audio.declaredLength = 192000;
    facts.streams = {video, audio};
    return facts;
}

TEST(AviWarnings, ASoundFileHasNone) {
    EXPECT_THAT(aviWarnings(sound()), IsEmpty());
}

TEST(AviWarnings, AFileThatIsNoAviHasOne) {
    AviFacts facts;
    facts.problems = "hdrl missing\n";
    EXPECT_THAT(aviWarnings(facts), ElementsAre(HasSubstr("hdrl missing")));
}

TEST(AviWarnings, LengthsThatDisagreeAreTold) {
    AviFacts facts = sound();
    facts.streams[0].declaredLength = 90;
    facts.streams[1].declaredLength = 96000;
    EXPECT_THAT(aviWarnings(facts),
                ElementsAre(HasSubstr("tells 90 frames, the index holds 100"),
                            "The pictures last 4.000 s, the sound of stream 1 2.000 s; where one is shorter, "
                            "there is silence."));
}

// Sound in blocks of 4 bytes: three seconds of it are indexed, whatever the header says.
TEST(AviWarnings, TheIndexedBytesOfSoundCount) {
    AviFacts facts = sound();
    facts.streams[1].sampleSize = 4;
    facts.streams[1].bytes = 4 * 144000;
    EXPECT_THAT(aviWarnings(facts),
                ElementsAre(HasSubstr("Stream 1 (sound): the header tells 192000 sample frames, the index "
                                      "holds 144000"),
                            HasSubstr("the sound of stream 1 3.000 s")));
    facts.streams[1].bytes = 4 * 192000;
    EXPECT_THAT(aviWarnings(facts), IsEmpty());
}

TEST(AviWarnings, StreamsThatAreNotUsedAreTold) {
    AviFacts facts = sound();
    facts.streams.push_back(facts.streams[0]);
    facts.streams.emplace_back();
    EXPECT_THAT(aviWarnings(facts), ElementsAre(HasSubstr("Stream 2 (pictures) is a further video stream"),
                                                HasSubstr("Stream 3 (other data) is neither")));
}

TEST(AviWarnings, IndexTroubleIsTold) {
    AviFacts facts = sound();
    facts.streams[0].openDmlRefused = true;
    facts.streams[0].index = IndexKind::kLegacy;
    facts.streams[1].index = IndexKind::kNone;
    EXPECT_THAT(aviWarnings(facts), ElementsAre(HasSubstr("Stream 0 (pictures): its OpenDML index"),
                                                HasSubstr("Stream 1 (sound) has no usable index")));
}

TEST(AviWarnings, EmptyFramesAndLostChunksAreCounted) {
    AviFacts facts = sound();
    facts.streams[0].emptyChunks = 7;
    facts.streams[0].longestEmptyRun = 3;
    facts.streams[1].chunksPastEnd = 2;
    facts.gapCount = 1;
    EXPECT_THAT(
        aviWarnings(facts),
        ElementsAre(HasSubstr("7 of 100 frames hold no data (at most 3 in a row)"),
                    HasSubstr("2 of 100 chunks lie behind the end"), HasSubstr("leave out a stretch of")));
}

TEST(AviWarnings, RatesOfZeroAreNoDivision) {
    AviFacts facts = sound();
    facts.streams[0].rate = 0;
    facts.streams[1].rate = 0;
    EXPECT_THAT(aviWarnings(facts), IsEmpty());
}

}  // namespace
}  // namespace simhost::tool
