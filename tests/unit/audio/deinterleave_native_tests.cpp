// Channels that lie side by side are copied together, a few frames at a time. The samples come out the same
// one channel after the other, only later; so the second channel's buffer is one that may not be written to,
// and what the first one has by then tells which way was taken.
#include <sys/mman.h>
#include <sys/wait.h>
#include <unistd.h>

#include <gtest/gtest.h>

#include <csignal>
#include <cstddef>
#include <vector>

#include "audio/deinterleave.h"

namespace orvantis {
namespace {

constexpr std::size_t kManyFrames = 256;
constexpr std::size_t kBufferBytes = kManyFrames * sizeof(float);

/// Memory that a child process shares; gone with the program.
float* sharedPages(int protection) {
    void* const memory = mmap(nullptr, kBufferBytes, protection, MAP_SHARED | MAP_ANONYMOUS, -1, 0);
    return memory == MAP_FAILED ? nullptr : static_cast<float*>(memory);
}

/// Samples that `channel` has when the first one is written to the channel behind it.
std::size_t writtenAheadOfTheNext(std::uint32_t channelCount, std::uint32_t channel) {
    const std::vector<float> samples(kManyFrames * channelCount, 1.0F);
    std::vector<float*> channels;
    for (std::uint32_t c = 0; c < channelCount; ++c) {
        channels.push_back(sharedPages(c == channel + 1 ? PROT_NONE : PROT_READ | PROT_WRITE));
        EXPECT_NE(channels.back(), nullptr);
    }
    const pid_t child = fork();
    if (child == 0) {
        (void)std::signal(SIGSEGV, SIG_DFL);
        deinterleaveFloat(reinterpret_cast<const std::byte*>(samples.data()), channels.data(), channelCount,
                          kManyFrames);
        _exit(0);
    }
    int status = 0;
    EXPECT_EQ(waitpid(child, &status, 0), child);
    EXPECT_TRUE(WIFSIGNALED(status) && WTERMSIG(status) == SIGSEGV) << status;
    std::size_t written = 0;
    while (written < kManyFrames && channels[channel][written] == 1.0F) {
        ++written;
    }
    return written;
}

// A compiler may put some rounds of a loop together.
constexpr std::size_t kAFewRounds = 32;

TEST(DeinterleavedTogether, BothChannelsOfStereo) {
    EXPECT_LE(writtenAheadOfTheNext(2, 0), kAFewRounds);
}

TEST(DeinterleavedTogether, FourChannels) {
    EXPECT_LE(writtenAheadOfTheNext(4, 0), kAFewRounds);
    EXPECT_LE(writtenAheadOfTheNext(4, 2), kAFewRounds);
}

TEST(DeinterleavedTogether, TheLastTwoOfSix) {
    EXPECT_LE(writtenAheadOfTheNext(6, 4), kAFewRounds);
}

TEST(DeinterleavedTogether, ThreeChannelsButForTheLast) {
    EXPECT_LE(writtenAheadOfTheNext(3, 0), kAFewRounds);
    EXPECT_EQ(writtenAheadOfTheNext(3, 1), kManyFrames);  // alone behind the two
}

}  // namespace
}  // namespace orvantis
