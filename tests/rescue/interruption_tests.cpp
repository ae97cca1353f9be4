// Ctrl-C at every operation of a rescue: a clip, and what is made of it, is as before or finished.
#include <filesystem>

#include "tests/support/child_process.h"
#include "tests/tool/stream_capture.h"
#include "tests/tool/tool_run.h"

namespace {

using orvantis::test::Bytes;
using simhost::tool::kInterrupted;
using simhost::tool::kSuccess;
using testing::AnyOf;
using testing::ElementsAre;

class RescueInterrupted : public ToolTest {
 protected:
    RescueInterrupted() {
        auto builder = clips::builder();
        Bytes bytes = builder.build();
        bytes.resize(static_cast<std::size_t>(builder.placements().back().offset + 10));
        clip = write("clips/clip.avi", bytes);
        before = read("clips/clip.avi");
    }
    /// Gives the exit code. The operations on the disk are counted from 1; 0 is none.
    int rescue(const std::string& what, unsigned operation) {
        const orvantis::test::StreamCapture out(1, folder / "out");
        const orvantis::test::StreamCapture err(2, folder / "err");
        return orvantis::test::ChildProcess(ORVANTIS_INTERRUPTED_RESCUE,
                                            {what, clip, std::to_string(operation), in("clips/new.avi")})
            .wait();
    }
    unsigned operationsOf(const std::string& what) {
        EXPECT_EQ(rescue(what, 0), kSuccess);
        return static_cast<unsigned>(std::stoul(read("err")));
    }
    std::vector<std::string> names() const { return namesIn(folder / "clips"); }

    std::string clip;
    std::string before;
#if defined(_WIN32)
    static constexpr unsigned kStep = 7;  // a process takes long to start there
#else
    static constexpr unsigned kStep = 1;
#endif
};

TEST_F(RescueInterrupted, ANewFileIsWholeOrNotThere) {
    const unsigned operations = operationsOf("out");
    ASSERT_GE(operations, 10U);
    const std::string whole = read("clips/new.avi");
    unsigned ended = 0;
    for (unsigned n = 1; n <= operations; n += kStep) {
        std::filesystem::remove(folder / "clips/new.avi");
        const int code = rescue("out", n);
        ended += code == kInterrupted ? 1U : 0U;
        ASSERT_THAT(code, AnyOf(kInterrupted, kSuccess)) << n;
        if (code == kInterrupted) {
            EXPECT_THAT(names(), ElementsAre("clip.avi")) << n;
        } else {
            EXPECT_THAT(names(), ElementsAre("clip.avi", "new.avi")) << n;
            EXPECT_TRUE(read("clips/new.avi") == whole) << n;
        }
        EXPECT_TRUE(read("clips/clip.avi") == before) << n;
    }
    EXPECT_GT(ended, operations / kStep / 2) << "it does not go on to its end";
}

TEST_F(RescueInterrupted, AClipChangedInPlaceIsAsBeforeOrFinished) {
    const unsigned operations = operationsOf("in-place");
    ASSERT_GT(operations, 10U);
    const std::string after = read("clips/clip.avi");
    ASSERT_FALSE(after == before);
    unsigned unchanged = 0;
    for (unsigned n = 1; n <= operations; n += kStep) {
        std::filesystem::remove(folder / "clips/clip.avi.undo");
        write("clips/clip.avi", before);
        ASSERT_THAT(rescue("in-place", n), AnyOf(kInterrupted, kSuccess)) << n;
        if (read("clips/clip.avi") == before) {
            ++unchanged;
            EXPECT_THAT(names(), ElementsAre("clip.avi")) << n;
        } else {
            EXPECT_TRUE(read("clips/clip.avi") == after) << n;
            EXPECT_THAT(names(), ElementsAre("clip.avi", "clip.avi.undo")) << n;
        }
    }
    EXPECT_GT(unchanged, operations / kStep / 2) << "what has begun is taken back";
}

TEST_F(RescueInterrupted, AnUndoIsDoneOrNotBegun) {
    ASSERT_EQ(rescue("in-place", 0), kSuccess);
    const std::string after = read("clips/clip.avi");
    const std::string undo = read("clips/clip.avi.undo");
    const unsigned operations = operationsOf("undo");
    unsigned done = 0;
    for (unsigned n = 1; n <= operations; n += kStep) {
        write("clips/clip.avi", after);
        write("clips/clip.avi.undo", undo);
        ASSERT_THAT(rescue("undo", n), AnyOf(kInterrupted, kSuccess)) << n;
        if (read("clips/clip.avi") == before) {
            ++done;
            EXPECT_THAT(names(), ElementsAre("clip.avi")) << n;
        } else {
            EXPECT_TRUE(read("clips/clip.avi") == after) << n;
            EXPECT_THAT(names(), ElementsAre("clip.avi", "clip.avi.undo")) << n;
        }
    }
    EXPECT_GT(done, 0U);
}

}  // namespace
