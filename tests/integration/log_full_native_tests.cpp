// A disk that fills up while the log is written: a limit on the size of files does the same to one process.
#include <sys/resource.h>

#include <csignal>

#include "host/pixel_formats.h"
#include "host/result_codes.h"
#include "tests/integration/plugin_clip_test.h"

namespace {

class FullDisk : public ClipTest {};

TEST_F(FullDisk, TheLogStopsAndThePluginPlaysOn) {
    logOn();
    startAndInit();
    simhost::Clip clip(importer(), placeClip());
    ASSERT_EQ(clip.getInfo(0).result, host::imNoErr);
    const auto files = logCapture().files();
    ASSERT_EQ(files.size(), 1U);
    const auto before = std::filesystem::file_size(files.front());

    rlimit old{};
    ASSERT_EQ(getrlimit(RLIMIT_FSIZE, &old), 0);
    rlimit full = old;
    full.rlim_cur = before + 100;  // in the middle of a line
    const auto handler = std::signal(SIGXFSZ, SIG_IGN);
    ASSERT_EQ(setrlimit(RLIMIT_FSIZE, &full), 0);
    for (std::uint32_t i = 0; i < 5; ++i) {
        const auto answer = clip.getFrame(i, host::PrPixelFormat_YUYV_422_8u_601);
        ASSERT_EQ(answer.result, host::imNoErr);
        EXPECT_EQ(answer.frame->picture(), clips::yuy2Picture(i));
    }
    EXPECT_EQ(clip.importAudio(0, 100, 2).result, host::imNoErr);
    EXPECT_LE(std::filesystem::file_size(files.front()), before + 100);
    ASSERT_EQ(setrlimit(RLIMIT_FSIZE, &old), 0);
    static_cast<void>(std::signal(SIGXFSZ, handler));

    // Room again: later lines come.
    EXPECT_EQ(clip.close(), host::imNoErr);
    EXPECT_NE(orvantis::test::readFile(files.front()).find("[imCloseFile]"), std::string::npos);
}

}  // namespace
