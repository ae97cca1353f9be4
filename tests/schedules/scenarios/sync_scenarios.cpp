// Calls that meet on synchronous importers.
#include "tests/schedules/scenarios/scenarios.h"

#include <optional>

#include "suites/suite_ref.h"
#include "tests/schedules/scheduler/engine.h"
#include "video/format_tables.h"

namespace schedules {

namespace {

using world::Clip;
using world::FrameAnswer;
using world::kException;
using world::kOk;

/// imFileReadFailed: the file is quieted.
constexpr std::int32_t kReadFailed = 33;
/// imBadFile: likewise, to the question about the file.
constexpr std::int32_t kBadFile = 2;

void twoFramesOneFile(Stage& stage) {
    const Clip clip;
    FrameAnswer first;
    FrameAnswer second;
    stage.thread("frame 0", [&] { first = clip.frame(0); });
    stage.thread("frame 1", [&] { second = clip.frame(1); });
    stage.run();
    Stage::expectFrame(first, 0, "frame 0");
    Stage::expectFrame(second, 1, "frame 1");
}

void soundAgainstFrame(Stage& stage) {
    const Clip clip;
    FrameAnswer answer;
    stage.thread("sound", [&] { Stage::expectCode(clip.sound(4), kOk, "sound"); });
    stage.thread("frame", [&] { answer = clip.frame(1); });
    stage.run();
    Stage::expectFrame(answer, 1, "frame");
}

void twoSounds(Stage& stage) {
    const Clip clip;
    stage.thread("sound A", [&] { Stage::expectCode(clip.sound(-1), kOk, "sound A"); });
    stage.thread("sound B", [&] { Stage::expectCode(clip.sound(-1), kOk, "sound B"); });
    stage.run();
}

void quietAgainstFrame(Stage& stage) {
    const Clip clip;
    FrameAnswer answer;
    stage.thread("quiet", [&] { Stage::expectCode(clip.quiet(), kOk, "quiet"); });
    stage.thread("frame", [&] { answer = clip.frame(0); });
    stage.run();
    if (answer.picture != 0) {
        Stage::expectCode(answer.result, kReadFailed, "frame of a quieted file");
    }
    Stage::expectCode(clip.reopen(), kOk, "reopen");
    Stage::expectFrame(clip.frame(2), 2, "frame of the reopened file");
}

void closeAgainstFrame(Stage& stage) {
    Clip clip;
    FrameAnswer answer;
    stage.thread("close", [&] { Stage::expectCode(clip.close(), kOk, "close"); });
    stage.thread("frame", [&] { answer = clip.frame(0); });
    stage.run();
    clip.forget();
    Stage::expectFrameOrGone(answer, 0, "frame");
}

void closeAgainstTwoFrames(Stage& stage) {
    Clip clip;
    FrameAnswer first;
    FrameAnswer second;
    stage.thread("close", [&] { Stage::expectCode(clip.close(), kOk, "close"); });
    stage.thread("frame 0", [&] { first = clip.frame(0); });
    stage.thread("frame 1", [&] { second = clip.frame(1); });
    stage.run();
    clip.forget();
    Stage::expectFrameOrGone(first, 0, "frame 0");
    Stage::expectFrameOrGone(second, 1, "frame 1");
}

void closeInsideCall(Stage& stage) {
    Clip clip;
    FrameAnswer first;
    FrameAnswer second;
    world::host().onCreateFrame = [&] { Stage::expectCode(clip.close(), kOk, "close"); };
    stage.thread("frame 0", [&] { first = clip.frame(0); });
    stage.thread("frame 1", [&] { second = clip.frame(1); });
    stage.run();
    clip.forget();
    Stage::expect(first.result == kOk || second.result == kOk, "the call that the close came from");
    Stage::expectFrameOrGone(first, 0, "frame 0");
    Stage::expectFrameOrGone(second, 1, "frame 1");
}

void quietInsideCall(Stage& stage) {
    const Clip clip;
    FrameAnswer answer;
    std::int32_t reopened = -1;
    world::host().onCreateFrame = [&] { Stage::expectCode(clip.quiet(), kOk, "quiet"); };
    stage.thread("frame", [&] { answer = clip.frame(0); });
    stage.thread("reopen", [&] { reopened = clip.reopen(); });
    stage.run();
    Stage::expectFrame(answer, 0, "frame");
    // The quiet may come between the opening and the question about the file.
    if (reopened != kOk) {
        Stage::expectCode(reopened, kBadFile, "reopen");
    }
    Stage::expectCode(clip.reopen(), kOk, "reopen behind both");
    Stage::expectFrame(clip.frame(2), 2, "frame behind both");
}

void reopenAgainstFrame(Stage& stage) {
    const Clip clip;
    FrameAnswer answer;
    stage.thread("reopen", [&] { Stage::expectCode(clip.reopen(), kOk, "reopen"); });
    stage.thread("frame", [&] { answer = clip.frame(1); });
    stage.run();
    Stage::expectFrame(answer, 1, "frame");
}

void twoFiles(Stage& stage) {
    stage.thread("file A", [] {
        const Clip clip;
        Stage::expectFrame(clip.frame(0), 0, "frame of A");
    });
    stage.thread("file B", [] {
        const Clip clip;
        Stage::expectFrame(clip.frame(1), 1, "frame of B");
    });
    stage.run();
}

void twoCloses(Stage& stage) {
    Clip clip;
    std::int32_t first = -1;
    std::int32_t second = -1;
    stage.thread("close A", [&] { first = clip.close(); });
    stage.thread("close B", [&] { second = clip.close(); });
    stage.run();
    clip.forget();
    Stage::expect(first == kOk ? second == kException : first == kException && second == kOk,
                  "one of two closes closes");
}

void twoCallsReacquireSuite(Stage& stage) {
    world::host().refusesCreator = true;
    const Clip clip;
    world::host().refusesCreator = false;
    FrameAnswer first;
    FrameAnswer second;
    stage.thread("frame 0", [&] { first = clip.frame(0); });
    stage.thread("frame 1", [&] { second = clip.frame(1); });
    stage.run();
    Stage::expectFrame(first, 0, "frame 0");
    Stage::expectFrame(second, 1, "frame 1");
    Stage::expectCode(world::host().creatorAcquired, 1, "acquisitions");
}

void tablesBuiltAgain(Stage& stage) {
    const Clip clip;
    // A table is kept for good: only as long as there are answers that no schedule has heard is one made.
    world::host().topRowFirst = engine::schedule() % 8;
    FrameAnswer answer;
    const host::SPBasicSuite* const basic = orvantis::basicSuiteOf(world::stdParms());
    stage.thread("build A", [basic] { orvantis::buildFormatTables(basic); });
    stage.thread("build B", [basic] { orvantis::buildFormatTables(basic); });
    stage.thread("frame", [&] { answer = clip.frame(1); });
    stage.run();
    Stage::expectFrame(answer, 1, "frame");
}

constexpr Scenario kScenarios[] = {
    {"two-frames-one-file", "two frames of one file at once", twoFramesOneFile},
    {"sound-against-frame", "sound and a frame of one file at once", soundAgainstFrame},
    {"two-sounds", "two sequential reads of sound at once", twoSounds},
    {"quiet-against-frame", "a quiet while a frame is asked for", quietAgainstFrame},
    {"close-against-frame", "a close while a frame is asked for", closeAgainstFrame},
    {"close-against-two-frames", "a close while two frames are asked for", closeAgainstTwoFrames},
    {"close-inside-call", "the host closes the file from inside one of two calls", closeInsideCall},
    {"quiet-inside-call", "the host quiets from inside a call while another thread reopens", quietInsideCall},
    {"reopen-against-frame", "the file is opened and described anew while a frame is asked for",
     reopenAgainstFrame},
    {"two-files", "two files opened, used and closed at once", twoFiles},
    {"two-closes-of-a-file", "two closes of one file", twoCloses},
    {"two-calls-reacquire-suite", "two calls ask at once for a suite that was refused before",
     twoCallsReacquireSuite},
    {"tables-built-again", "the format tables are built twice while a frame is decoded", tablesBuiltAgain},
};

}  // namespace

std::span<const Scenario> syncScenarios() {
    return kScenarios;
}

}  // namespace schedules
