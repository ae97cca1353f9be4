// Long and large files: by a storage that makes up what is read, so that a million frames and 100 GB take no
// disk.
#include <gtest/gtest.h>

#include "tests/rescue/clip_truth.h"
#include "tests/support/avi_builder/avi_builder.h"
#include "tool/rescue/new_clip.h"

namespace simhost::tool {
namespace {

using orvantis::test::AviBuilder;

// Headers, then chunks of one size, `count` of them, then the cut one that is always there.
class EndlessClip final : public Storage {
 public:
    EndlessClip(std::uint64_t count, std::uint32_t frameBytes) : m_count(count), m_stride(frameBytes + 8) {
        AviBuilder avi;
        avi.addStream(orvantis::test::videoStream("O8Y2", 1920, 1080, 25, 1));
        avi.addFilledChunk(0, 8, 1);
        m_start = avi.idx1(false).build();
        m_start.resize(static_cast<std::size_t>(avi.placements()[0].offset - 8));
        m_head = {'0', '0', 'd', 'c'};
        for (int i = 0; i < 4; ++i) {
            m_head.push_back(static_cast<std::uint8_t>(frameBytes >> (8 * i)));
        }
    }
    std::uint64_t size() override { return m_start.size() + m_count * m_stride + 20; }
    std::size_t read(std::uint64_t at, std::span<std::uint8_t> bytes) override {
        ++reads;
        bytesRead += bytes.size();
        const std::size_t count =
            static_cast<std::size_t>(std::min<std::uint64_t>(bytes.size(), size() - std::min(at, size())));
        for (std::size_t i = 0; i < count;) {
            const std::uint64_t place = at + i;
            const bool start = place < m_start.size();
            const std::uint64_t inFrame = start ? 0 : (place - m_start.size()) % m_stride;
            if (start) {
                bytes[i++] = m_start[static_cast<std::size_t>(place)];
            } else if (inFrame < 8) {
                bytes[i++] = m_head[static_cast<std::size_t>(inFrame)];
            } else {
                const std::size_t fill =
                    static_cast<std::size_t>(std::min<std::uint64_t>(m_stride - inFrame, count - i));
                std::memset(bytes.data() + i, 0x5A, fill);
                i += fill;
            }
        }
        return count;
    }
    void write(std::uint64_t, std::span<const std::uint8_t>) override {
        throw ToolError(kNoOutput, "read-only");
    }
    void resize(std::uint64_t) override { throw ToolError(kNoOutput, "read-only"); }
    void flush() override {}
    Extent dataFrom(std::uint64_t at) override { return {at, size()}; }
    void allowHoles() override {}

    std::uint64_t reads = 0;
    std::uint64_t bytesRead = 0;

 private:
    std::uint64_t m_count;
    std::uint64_t m_stride;
    TestBytes m_start;
    TestBytes m_head;
};

TEST(RescueLarge, AMillionFramesInAHundredGigabytesAreFoundByTheirHeaders) {
    constexpr std::uint64_t kFrames = 1'000'000;
    EndlessClip clip(kFrames, 100'000);
    EXPECT_GT(clip.size(), 100'000'000'000U);
    std::uint64_t steps = 0;
    std::uint64_t last = 0;
    const ClipScan scan = scanClip(clip, [&](std::uint64_t at) {
        EXPECT_GE(at, last);
        last = at;
        ++steps;
    });
    EXPECT_EQ(scan.chunks.size(), kFrames);
    EXPECT_EQ(last, clip.size());
    EXPECT_GT(steps, 10'000U);
    EXPECT_LT(clip.bytesRead, 5'000U * kFrames) << "the headers, not the data";
    ASSERT_EQ(scan.damaged.size(), 1U);
    EXPECT_EQ(scan.damaged[0].kind, Stretch::Kind::kCutChunk);

    // The new file's plan: forms of a gigabyte, an index in each, everything within 32 bits.
    const NewClipLayout layout = layOutNewClip(scan);
    EXPECT_EQ(layout.forms.size(), 94U);
    std::uint64_t entries = 0;
    for (const NewClipLayout::Form& form : layout.forms) {
        ASSERT_EQ(form.indexes.size(), 1U);
        entries += form.indexes[0].entries;
        EXPECT_LT(form.end - form.at, std::uint64_t{1} << 31);
    }
    EXPECT_EQ(entries, kFrames);
    EXPECT_GT(layout.size, kFrames * 100'008 + kFrames * 8);
}

// Only a file of holes comes to that; places beyond 48 bits would be taken for others.
TEST(RescueLarge, AFileBeyondAllPlacesIsRefused) {
    EndlessClip clip(200'000, 2'000'000'000);
    ASSERT_GT(clip.size(), std::uint64_t{1} << 48);
    EXPECT_THROW((void)scanClip(clip), ToolError);
    EXPECT_EQ(clip.reads, 0U);
}

TEST(RescueLarge, AStopInTheStepEndsTheSearch) {
    EndlessClip clip(100'000, 100'000);
    EXPECT_THROW((void)scanClip(clip,
                                [](std::uint64_t at) {
                                    if (at > 1'000'000) {
                                        throw ToolError(kInterrupted, "interrupted");
                                    }
                                }),
                 ToolError);
    EXPECT_LT(clip.reads, 1'000U);
}

}  // namespace
}  // namespace simhost::tool
