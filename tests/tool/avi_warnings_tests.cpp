// The sentences about a file's oddities.
#include <gmock/gmock.h>
#include <gtest/gtest.h>

#include <string>
#include <utility>
#include <vector>

#include "tool/shared/media/avi_findings.h"

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
    audio.rate = audio.samplesPerSecond = 48000;
    audio.declaredLength = 192000;
    audio.frameBytes = 4;
    audio.bytes = 4 * 192000;
    facts.streams = {video, audio};
    return facts;
}

// Without what to do about it.
std::vector<std::string> aviWarnings(const AviFacts& facts) {
    std::vector<std::string> out;
    for (const AviFinding& finding : aviFindings(facts)) {
        out.push_back(finding.text);
    }
    return out;
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
    EXPECT_THAT(
        aviWarnings(facts),
        ElementsAre(HasSubstr("tells 90 frames, the index holds 100; the index is what counts"),
                    "Stream 1 (sound): the header tells 96000 sample frames (2.000 s), the index holds "
                    "192000 (4.000 s). The header is what the host is told, so the last 2.000 s are "
                    "not heard.",
                    "The sound of stream 1 is much shorter than the pictures: it ends after 2.000 s of "
                    "4.000 s, and the rest is silent."));
}

TEST(AviWarnings, SoundThatIsALittleShorterIsTold) {
    AviFacts facts = sound();
    facts.streams[1].declaredLength = 182400;
    facts.streams[1].bytes = 4 * 182400;
    EXPECT_THAT(aviWarnings(facts),
                ElementsAre("The pictures last 4.000 s, the sound of stream 1 3.800 s; where one is shorter, "
                            "there is silence."));
}

// As recorders write it who count the chunks: the host is told of 100 sample frames.
TEST(AviWarnings, SoundWhoseHeaderTellsNearlyNothingIsNearlyAllLost) {
    AviFacts facts = sound();
    facts.streams[1].declaredLength = 100;
    const auto findings = aviFindings(facts);
    ASSERT_EQ(findings.size(), 2U);
    EXPECT_THAT(findings[0].text, HasSubstr("the last 3.998 s are not heard"));
    EXPECT_THAT(findings[0].advice, HasSubstr("Re-mux the file"));
    EXPECT_THAT(findings[1].text,
                HasSubstr("much shorter than the pictures: it ends after 0.002 s of 4.000 s"));
}

// Three seconds of sound are indexed; the host is told of four, and the last one is silent.
TEST(AviWarnings, SoundThatEndsBeforeItsHeaderSaysIsTold) {
    AviFacts facts = sound();
    facts.streams[1].bytes = 4 * 144000;
    EXPECT_THAT(
        aviWarnings(facts),
        ElementsAre(HasSubstr("Stream 1 (sound): the header tells 192000 sample frames (4.000 s), the "
                              "index holds 144000 (3.000 s). The header is what the host is told, so "
                              "the last 1.000 s are silence."),
                    HasSubstr("it ends after 3.000 s of 4.000 s")));
    facts.streams[1].bytes = 4 * 192000;
    EXPECT_THAT(aviWarnings(facts), IsEmpty());
}

TEST(AviWarnings, WrongIndexesAreToldInWordsAndWithWhatToDo) {
    for (const auto& [base, words] :
         {std::pair{IndexBase::kFileStart, "counts from the beginning of the file"},
          {IndexBase::kOther, "counts from a place a few bytes beside"},
          {IndexBase::kNowhere, "does not lead to the stream's chunks"}}) {
        AviFacts facts = sound();
        facts.streams[0].base = base;
        const auto findings = aviFindings(facts);
        ASSERT_EQ(findings.size(), 1U);
        EXPECT_TRUE(findings[0].bad);
        EXPECT_THAT(findings[0].text, HasSubstr(words));
        EXPECT_THAT(findings[0].advice, HasSubstr("importer_host rescue OLD.avi --out NEW.avi"));
    }
}

TEST(AviWarnings, AFileWithoutAnyIndexHasOneSentence) {
    AviFacts facts = sound();
    facts.streams[0].index = facts.streams[1].index = IndexKind::kNone;
    const auto findings = aviFindings(facts);
    ASSERT_EQ(findings.size(), 1U);
    EXPECT_TRUE(findings[0].bad);
    EXPECT_THAT(findings[0].text, HasSubstr("no usable index, so nothing of it can be shown or heard"));
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

TEST(AviWarnings, ChunksThatNoIndexNamesAreARescuesWork) {
    AviFacts facts = sound();
    facts.unindexedChunks = 3;
    const auto findings = aviFindings(facts);
    ASSERT_EQ(findings.size(), 1U);
    EXPECT_FALSE(findings[0].bad);
    EXPECT_EQ(findings[0].text,
              "The indexes leave out 3 chunks or more that the file holds: they are not played.");
    EXPECT_EQ(findings[0].advice,
              "Make a file that can be played with \"importer_host rescue OLD.avi --out NEW.avi\"; \"rescue "
              "OLD.avi\" alone "
              "says first what it would bring back.");
}

TEST(AviWarnings, RatesOfZeroAreNoDivision) {
    AviFacts facts = sound();
    facts.streams[0].rate = 0;
    facts.streams[1].rate = 0;
    EXPECT_THAT(aviWarnings(facts), IsEmpty());
}

}  // namespace
}  // namespace simhost::tool
