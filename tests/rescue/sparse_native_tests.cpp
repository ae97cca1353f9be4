// A file of 100 GB that takes no room: its new file takes none either. Native only, where every file may have
// holes.
#include <sys/stat.h>

#include <csignal>
#include <fstream>

#include "tests/tool/tool_run.h"

namespace {

using simhost::tool::kSuccess;
using testing::ElementsAre;
using testing::HasSubstr;

constexpr std::uint64_t kSparseFrames = 1000;
constexpr std::uint64_t kSparseFrameBytes = 100'000'000;

class RescueSparse : public ToolTest {
 protected:
    /// Frames that are holes, and no index.
    std::string sparseClip() const {
        orvantis::test::AviBuilder avi;
        avi.addStream(orvantis::test::videoStream("O8RG", 8192, 4096, 25, 1));
        avi.addFilledChunk(0, 8, 1);
        orvantis::test::Bytes start = avi.idx1(false).build();
        start.resize(static_cast<std::size_t>(avi.placements()[0].offset - 8));
        const std::string path = write("clip.avi", start);
        std::fstream file(path, std::ios::binary | std::ios::in | std::ios::out);
        const std::uint8_t head[] = {'0', '0', 'd', 'c', 0x00, 0xE1, 0xF5, 0x05};
        for (std::uint64_t i = 0; i < kSparseFrames; ++i) {
            file.seekp(static_cast<std::streamoff>(start.size() + i * (kSparseFrameBytes + 8)));
            file.write(reinterpret_cast<const char*>(head), sizeof head);
        }
        file.close();
        std::filesystem::resize_file(path, start.size() + kSparseFrames * (kSparseFrameBytes + 8));
        return path;
    }
    static std::uint64_t roomOf(const std::string& path) {
        struct stat info {};
        (void)::stat(path.c_str(), &info);
        return static_cast<std::uint64_t>(info.st_blocks) * 512;
    }
};

TEST_F(RescueSparse, AHundredGigabytesOfHolesAreOneSecondsWork) {
    const std::string clip = sparseClip();
    ASSERT_GT(std::filesystem::file_size(clip), 100'000'000'000U);
    EXPECT_THAT(runTool({"rescue", clip}).out, HasSubstr("1000 whole chunks"));
    const ToolRun run = runTool({"rescue", clip, "--out", in("new.avi")});
    ASSERT_EQ(run.code, kSuccess) << run.err;
    EXPECT_GT(std::filesystem::file_size(in("new.avi")), 100'000'000'000U);
    EXPECT_LT(roomOf(in("new.avi")), 100'000'000U);
    const ToolRun again = runTool({"rescue", in("new.avi"), "--json"});
    EXPECT_EQ(again.code, kSuccess);
    EXPECT_EQ(again.json()["forms"], 100);
    EXPECT_EQ(again.json()["streams"][0]["index"]["entries"], 1000);
    EXPECT_THAT(runTool({"rescue", "--in-place", clip}).err,
                HasSubstr("larger than 4 GiB\n  -> write a new one, with --out"));
}

}  // namespace
