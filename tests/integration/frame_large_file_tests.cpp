// A clip whose frames lie behind 5 GiB of the file, through the loaded plug-in. The file is sparse and costs
// no disk.
#include <fstream>

#include "host/result_codes.h"
#include "tests/integration/async_fixture.h"

namespace {

constexpr std::uint64_t kShift = 5ULL << 30;

class LargeFile : public PluginTest {
 protected:
    /// The numbered clip with a standard index whose base is moved by kShift, and its chunks there instead of
    /// behind the headers.
    void writeClip() {
        using namespace orvantis::test;
        AviBuilder avi;
        avi.addStream(videoStream("O8RG", kClipWidth, kClipHeight, 25, 1));
        for (std::uint32_t i = 0; i < kClipFrames; ++i) {
            avi.addFilledChunk(0, 3 * kClipWidth * kClipHeight, frameValue(i));
        }
        Bytes head = avi.openDml(OpenDml::kStandardIndex).idx1(false).build();
        const Bytes shifted = head;
        // qwBaseOffset stands 12 bytes into the index data, which follows the 8 bytes of the chunk's header.
        const std::size_t base = static_cast<std::size_t>(avi.indxOffset(0)) + 8 + 12;
        std::uint64_t value = 0;
        for (int i = 7; i >= 0; --i) {
            value = value << 8 | head[base + static_cast<std::size_t>(i)];
        }
        value += kShift;
        for (std::size_t i = 0; i < 8; ++i) {
            head[base + i] = static_cast<std::uint8_t>(value >> (8 * i));
        }
        std::fill(head.begin() + static_cast<std::ptrdiff_t>(avi.placements()[0].offset), head.end(),
                  std::uint8_t{0});

        std::ofstream out(path(), std::ios::binary);
        out.write(reinterpret_cast<const char*>(head.data()), static_cast<std::streamsize>(head.size()));
        out.seekp(static_cast<std::streamoff>(kShift));
        out.write(reinterpret_cast<const char*>(shifted.data()),
                  static_cast<std::streamsize>(shifted.size()));
        ASSERT_TRUE(out.good());
    }
    std::filesystem::path path() const { return m_folder / "large.avi"; }

 private:
    orvantis::test::TempFolder m_folder;
};

TEST_F(LargeFile, FramesBehindFiveGigabytesAreShown) {
    writeClip();
    ASSERT_GT(std::filesystem::file_size(path()), kShift);
    startAndInit();
    simhost::Clip clip(importer(), orvantis::test::utf8Path(path()));
    ASSERT_EQ(clip.getInfo(0).result, host::imNoErr);
    for (std::uint32_t i = 0; i < kClipFrames; ++i) {
        const simhost::FrameAnswer answer = clip.getFrame(i, host::PrPixelFormat_BGRA_4444_8u);
        ASSERT_TRUE(answer.frame) << i;
        EXPECT_TRUE(showsFrame(*answer.frame, i)) << i;
    }
}

}  // namespace
