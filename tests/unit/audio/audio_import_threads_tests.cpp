// Sound requests that meet: each reads with the file's position and a buffer to itself, and sequential ones
// share the stream out among themselves.
#include <gtest/gtest.h>

#include <algorithm>
#include <cstdint>
#include <mutex>
#include <thread>
#include <vector>

#include "audio/audio_info.h"
#include "avi/avi_stream.h"
#include "avi/chunk_list_builder.h"
#include "import_fixture.h"
#include "tests/support/latch.h"
#include "tests/support/memory_file.h"

namespace orvantis {
namespace {

using namespace audio_test;

constexpr std::uint32_t kFrames = 8000;
constexpr std::uint32_t kStep = 40;

// Float samples, which are delivered bit for bit: sample frame n is the number n.
class AudioImportThreads : public testing::Test {
 protected:
    AudioImportThreads() {
        stream.header.fccType = kStreamTypeAudio;
        stream.header.dwLength = kFrames;
        stream.format = waveBytes({.tag = kTagFloat, .channels = 1, .bits = 32});
        ChunkListBuilder list;
        for (std::uint32_t n = 0; n < kFrames; n += 100) {
            list.add(file.bytes().size(), 0, 400, true);
            for (std::uint32_t i = n; i < n + 100; ++i) {
                const auto sample = static_cast<float>(i);
                std::byte bytes[4];
                std::memcpy(bytes, &sample, 4);
                file.bytes().insert(file.bytes().end(), bytes, bytes + 4);
            }
        }
        stream.legacyEntries = list.finish();
    }
    std::vector<float> read(std::int64_t position) {
        std::vector<float> samples(kStep, kUntouched);
        float* buffers[] = {samples.data()};
        host::imImportAudioRec7 record{};
        record.position = position;
        record.size = kStep;
        record.buffer = buffers;
        EXPECT_EQ(numberOf(info.importAudio(record)), 0);
        return samples;
    }
    template <class Work>
    static void onFourThreads(Work work) {
        test::Latch start(4);
        std::vector<std::thread> threads;
        for (int t = 0; t < 4; ++t) {
            threads.emplace_back([&, t] {
                start.arriveAndWait();
                work(t);
            });
        }
        for (std::thread& thread : threads) {
            thread.join();
        }
    }

    test::MemoryFile file;
    std::mutex filePosition;
    AviStream stream{1};
    LazyImporterSuites suites{nullptr};
    AudioInfo info{AudioOwner{&file, &filePosition, &suites}};
};

TEST_F(AudioImportThreads, EachReadGetsWhatItAskedFor) {
    ASSERT_EQ(numberOf(info.init(stream)), 0);
    onFourThreads([&](int t) {
        for (std::int64_t i = 0; i < 1000; ++i) {
            const std::int64_t position = (i * 37 + t * 1711) % (kFrames - kStep);
            const std::vector<float> samples = read(position);
            for (std::uint32_t n = 0; n < kStep; ++n) {
                ASSERT_EQ(samples[n], static_cast<float>(position + n)) << position;
            }
        }
    });
}

TEST_F(AudioImportThreads, SequentialReadsThatMeetShareTheStreamOut) {
    ASSERT_EQ(numberOf(info.init(stream)), 0);
    std::vector<float> firsts[4];
    onFourThreads([&](int t) {
        for (std::uint32_t i = 0; i < kFrames / kStep / 4; ++i) {
            const std::vector<float> samples = read(-1);
            for (std::uint32_t n = 1; n < kStep; ++n) {
                ASSERT_EQ(samples[n], samples[0] + static_cast<float>(n));
            }
            firsts[t].push_back(samples[0]);
        }
    });
    std::vector<float> all;
    for (const std::vector<float>& some : firsts) {
        all.insert(all.end(), some.begin(), some.end());
    }
    std::ranges::sort(all);
    ASSERT_EQ(all.size(), kFrames / kStep);
    for (std::size_t i = 0; i < all.size(); ++i) {
        ASSERT_EQ(all[i], static_cast<float>(i * kStep)) << "delivered twice, or not at all";
    }
}

}  // namespace
}  // namespace orvantis
