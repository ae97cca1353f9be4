// Turns of an asynchronous importer through the loaded plug-in: frames in order, pending requests that take
// no threads, and one clip that does not wait for another.
#include <atomic>
#include <cstdint>
#include <filesystem>
#include <fstream>
#include <future>
#include <memory>
#include <mutex>
#include <string>
#include <vector>

#include "host/result_codes.h"
#include "host/selectors.h"
#include "tests/integration/async_fixture.h"
#include "tests/integration/thread_count.h"
#include "tests/support/environment.h"
#include "tests/support/latch.h"

namespace {

constexpr std::uint32_t kPictureBytes = 3u * kClipWidth * kClipHeight;

/// Holds the first CreatePPix of the test, and lets all others pass.
class FirstFrameGate {
 public:
    explicit FirstFrameGate(simhost::Host& host) {
        host.setHook([state = m_state](simhost::Service called) {
            if (called != simhost::Service::kCreatePPix || state->seen.exchange(true)) {
                return;
            }
            state->arrived.countDown();
            state->open.wait();
        });
    }
    FirstFrameGate(const FirstFrameGate&) = delete;
    FirstFrameGate& operator=(const FirstFrameGate&) = delete;
    ~FirstFrameGate() { open(); }

    void waitForArrival() { m_state->arrived.wait(); }
    void open() { m_state->open.countDown(); }

 private:
    struct State {
        std::atomic<bool> seen = false;
        orvantis::test::Latch arrived{1};
        orvantis::test::Latch open{1};
    };

    std::shared_ptr<State> m_state = std::make_shared<State>();
};

/// The numbers that stand in "{384 bytes}" of every line of the codec's trace on decompressing, in order.
std::vector<std::uint32_t> decompressedBytes(const std::filesystem::path& trace) {
    std::vector<std::uint32_t> sizes;
    std::ifstream file(trace);
    for (std::string line; std::getline(file, line);) {
        const std::size_t call = line.find(" decompress(");
        const std::size_t end = line.find(" bytes}", call);
        if (call == std::string::npos || end == std::string::npos) {
            continue;
        }
        const std::size_t begin = line.rfind('{', end) + 1;
        sizes.push_back(static_cast<std::uint32_t>(std::stoul(line.substr(begin, end - begin))));
    }
    return sizes;
}

/// A clip whose frames can be told apart in the codec's trace: the size of frame i is i bytes beyond that of
/// a picture.
std::string clipOfGrowingFrames() {
    using namespace orvantis::test;
    AviBuilder avi;
    avi.addStream(videoStream("O8RG", kClipWidth, kClipHeight, 25, 1));
    for (std::uint32_t i = 0; i < kClipFrames; ++i) {
        avi.addFilledChunk(0, kPictureBytes + i, frameValue(i));
    }
    const Bytes bytes = avi.build();
    return std::string(bytes.begin(), bytes.end());
}

class AsyncTurns : public AsyncTest {
 protected:
    std::int32_t initiate(std::uint32_t index) { return async().initiate(timeOf(index), anySize(kBgra)); }
};

TEST_F(AsyncTurns, FramesAreDecompressedInTheOrderInWhichTheyWereAskedFor) {
    constexpr std::uint32_t kPasses = 50, kInFlight = 7, kFrames = kPasses * kClipFrames;
    orvantis::test::TempFolder folder;
    const std::filesystem::path trace = folder / "codec.txt";
    const orvantis::test::ScopedEnvironment traced("ORVANTIS_STANDIN_LOG", orvantis::test::utf8Path(trace));
    openAsync();
    orvantis::test::writeFile(folder / "growing.avi", clipOfGrowingFrames());
    simhost::Clip growing(importer(), orvantis::test::utf8Path(folder / "growing.avi"));
    ASSERT_EQ(growing.openResult(), host::imNoErr);
    ASSERT_EQ(growing.getInfo(0).result, host::imNoErr);
    const simhost::AsyncClip playing(growing);
    ASSERT_EQ(playing.creation().result, host::imNoErr);
    std::uint32_t announced = 0;
    for (std::uint32_t i = 0; i < kFrames; ++i) {
        for (; announced < kFrames && announced < i + kInFlight; ++announced) {
            ASSERT_EQ(playing.initiate(timeOf(announced % kClipFrames), anySize(kBgra)), host::aiNoError);
        }
        ASSERT_TRUE(playing.getFrame(timeOf(i % kClipFrames), anySize(kBgra)).frame);
    }
    const std::vector<std::uint32_t> sizes = decompressedBytes(trace);
    ASSERT_EQ(sizes.size(), kFrames);
    std::uint32_t outOfOrder = 0;
    for (std::uint32_t i = 0; i < kFrames; ++i) {
        outOfOrder += sizes[i] != kPictureBytes + i % kClipFrames;
    }
    EXPECT_EQ(outOfOrder, 0u) << "of " << kFrames;
}

TEST_F(AsyncTurns, HundredsOfPendingRequestsOfABlockedClipTakeNoThreads) {
    constexpr std::uint32_t kPending = 700;
    openAsync();
    FirstFrameGate gate(host());
    const simhost::AsyncClip other(clip());
    ASSERT_EQ(other.creation().result, host::imNoErr);
    ASSERT_EQ(initiate(0), host::aiNoError);
    gate.waitForArrival();
    const unsigned before = threadCount();
    for (std::uint32_t i = 1; i < kPending; ++i) {
        ASSERT_EQ(initiate(i % kClipFrames), host::aiNoError);
    }
    // Another clip's frame comes while all of them stand behind the one that is held.
    const simhost::FrameAnswer answer = other.getFrame(timeOf(9), anySize(kBgra));
    ASSERT_TRUE(answer.frame);
    EXPECT_TRUE(showsFrame(*answer.frame, 9));
    EXPECT_LE(threadCount(), before + 32) << "threads that do nothing but wait for their turn";
    EXPECT_EQ(host().calls(simhost::Service::kCreatePPix), 1u) << "besides the one that is held";
    gate.open();
    for (std::uint32_t i = 0; i < kPending; ++i) {
        const simhost::FrameAnswer one = async().getFrame(timeOf(i % kClipFrames), anySize(kBgra));
        ASSERT_TRUE(one.frame) << i;
        ASSERT_TRUE(showsFrame(*one.frame, i % kClipFrames)) << i;
    }
}

// More clips than the pool has threads, each with a frame held inside its decode: the pool is full, and the
// rest of the clips wait for a thread. Each goes on as threads come free.
TEST_F(AsyncTurns, AFullPoolMakesFramesLaterNeverStuck) {
    constexpr std::size_t kClips = 150;
    constexpr std::uint32_t kEach = 4;
    openAsync();
    dropAsync();
    std::vector<std::unique_ptr<simhost::AsyncClip>> clips;
    for (std::size_t i = 0; i < kClips; ++i) {
        clips.push_back(std::make_unique<simhost::AsyncClip>(clip()));
        ASSERT_EQ(clips.back()->creation().result, host::imNoErr);
    }
    struct Held {
        orvantis::test::Latch full{128};  // threads that the pool has at most
        orvantis::test::Latch open{1};
    };
    const auto held = std::make_shared<Held>();
    host().setHook([held](simhost::Service called) {
        if (called != simhost::Service::kCreatePPix) {
            return;
        }
        held->full.countDown();
        held->open.wait();
    });
    for (std::uint32_t frame = 0; frame < kEach; ++frame) {
        for (const auto& each : clips) {
            ASSERT_EQ(each->initiate(timeOf(frame), anySize(kBgra)), host::aiNoError);
        }
    }
    held->full.wait();
    held->open.countDown();
    // The last asked for first, and the last clip first: no order of calls may matter.
    for (std::uint32_t frame = kEach; frame-- > 0;) {
        for (std::size_t i = kClips; i-- > 0;) {
            const simhost::FrameAnswer answer = clips[i]->getFrame(timeOf(frame), anySize(kBgra));
            ASSERT_TRUE(answer.frame);
            ASSERT_TRUE(showsFrame(*answer.frame, frame));
        }
    }
}

// The pool's threads are held but for one, which has six frames of a clip to decompress; another clip's task
// comes, and finds none free.
TEST_F(AsyncTurns, AClipDoesNotKeepTheOnlyFreeThreadFromAnother) {
    constexpr unsigned kThreads = 128;  // that the pool has at most
    constexpr std::uint32_t kEach = 7, kOther = 20;
    orvantis::test::TempFolder folder;
    const std::filesystem::path trace = folder / "codec.txt";
    const orvantis::test::ScopedEnvironment traced("ORVANTIS_STANDIN_LOG", orvantis::test::utf8Path(trace));
    openAsync();
    dropAsync();
    struct Held {
        std::atomic<unsigned> calls = 0;
        orvantis::test::Latch first{1}, full{kThreads}, openFirst{1}, openOthers{1};
    };
    const auto held = std::make_shared<Held>();
    host().setHook([held](simhost::Service called) {
        if (called != simhost::Service::kCreatePPix) {
            return;
        }
        const unsigned number = held->calls++;
        if (number < kThreads) {
            held->first.countDown();
            held->full.countDown();
            (number == 0 ? held->openFirst : held->openOthers).wait();
        }
    });
    orvantis::test::writeFile(folder / "growing.avi", clipOfGrowingFrames());
    simhost::Clip growing(importer(), orvantis::test::utf8Path(folder / "growing.avi"));
    ASSERT_EQ(growing.openResult(), host::imNoErr);
    ASSERT_EQ(growing.getInfo(0).result, host::imNoErr);
    const simhost::AsyncClip busy(growing), other(growing);
    for (std::uint32_t i = 0; i < kEach; ++i) {
        ASSERT_EQ(busy.initiate(timeOf(i), anySize(kBgra)), host::aiNoError);
    }
    held->first.wait();
    std::vector<std::unique_ptr<simhost::AsyncClip>> holding;
    for (unsigned i = 1; i < kThreads; ++i) {
        holding.push_back(std::make_unique<simhost::AsyncClip>(clip()));
        ASSERT_EQ(holding.back()->initiate(timeOf(0), anySize(kBgra)), host::aiNoError);
    }
    // With every thread held, all of the busy clip's frames have been read and wait for their turn.
    held->full.wait();
    ASSERT_EQ(other.initiate(timeOf(kOther), anySize(kBgra)), host::aiNoError);
    held->openFirst.countDown();
    EXPECT_TRUE(other.getFrame(timeOf(kOther), anySize(kBgra)).frame);
    for (std::uint32_t i = 0; i < kEach; ++i) {
        EXPECT_TRUE(busy.getFrame(timeOf(i), anySize(kBgra)).frame);
    }
    std::vector<std::uint32_t> frames;
    for (const std::uint32_t bytes : decompressedBytes(trace)) {
        frames.push_back(bytes - kPictureBytes);
    }
    EXPECT_EQ(frames, (std::vector<std::uint32_t>{0, 1, kOther, 2, 3, 4, 5, 6}));
    held->openOthers.countDown();
}

// Nobody waits for the blocked frame: neither the flush, since a call has taken that frame out of the list,
// nor what is asked for of another clip.
TEST_F(AsyncTurns, HundredsOfRequestsBehindABlockedFrameAreDroppedWhileItIsBlocked) {
    openAsync();
    FirstFrameGate gate(host());
    auto waiting =
        std::async(std::launch::async, [this] { return async().getFrame(timeOf(0), anySize(kBgra)); });
    gate.waitForArrival();
    for (std::uint32_t i = 0; i < 700; ++i) {
        ASSERT_EQ(initiate(i % kClipFrames), host::aiNoError);
    }
    EXPECT_EQ(async().flush(), host::aiNoError);
    gate.open();
    EXPECT_TRUE(waiting.get().frame);
    EXPECT_EQ(host().calls(simhost::Service::kCreatePPix), 1u);
}

}  // namespace
