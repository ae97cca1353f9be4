// What files that are not ours cost while the host keeps them: a project with hundreds of foreign clips asks
// this plug-in about each of them, and closes some of them at its own end only.
#include <memory>
#include <vector>

#include "tests/integration/plugin_clip_test.h"
#include "tests/support/allocation_meter/allocation_meter.h"

namespace {

class RefusedFiles : public ClipTest {
 protected:
    /// Bytes that each of many refused clips keeps until it is closed.
    std::size_t bytesOfEach(const std::string& path) {
        constexpr std::size_t kClips = 20;
        std::vector<std::unique_ptr<simhost::Clip>> clips;
        clips.reserve(kClips + 1);
        const auto openOne = [&] {
            clips.push_back(std::make_unique<simhost::Clip>(importer(), path));
            EXPECT_EQ(clips.back()->getInfo(0).result, host::imBadFile);
        };
        openOne();
        host().clearTrace();
        orvantis::test::startCounting();
        for (std::size_t i = 0; i < kClips; ++i) {
            openOne();
        }
        host().clearTrace();
        const std::size_t kept = orvantis::test::counted().current;
        for (const auto& clip : clips) {
            EXPECT_EQ(clip->close(), host::imNoErr);
        }
        return kept / kClips;
    }
};

constexpr std::size_t kMostBytes = 16 * 1024;  // a window on a file has four times as many

TEST_F(RefusedFiles, OfAForeignCodecKeepNoWindows) {
    startAndInit();
    clips::Shape foreign;
    foreign.tag = "MJPG";
    EXPECT_LT(bytesOfEach(placeClip(foreign)), kMostBytes);
}

TEST_F(RefusedFiles, WithoutVideoKeepNoWindows) {
    startAndInit();
    orvantis::test::AviBuilder avi;
    avi.addStream(orvantis::test::pcmStream(2, 48000, 16)).addFilledChunk(0, 4000, 1);
    EXPECT_LT(bytesOfEach(place(u8"sound.avi", avi.build())), kMostBytes);
}

}  // namespace
