// Host threads on shared synchronous importers at random: frames, sound, descriptions, quiet, re-open, close,
// also from inside a call, while services of the host, the codec library and reads of the file fail now and
// then. The seed is printed and can be set, so that a failure can be run again: ORVANTIS_STRESS_SEED, and
// ORVANTIS_STRESS_OPERATIONS for longer runs.
#include <array>
#include <atomic>
#include <cstdlib>
#include <random>
#include <thread>

#include "simhost/shared_library.h"
#include "standin/error_codes.h"
#include "tests/integration/sync_calls_fixture.h"
#include "tests/support/file_hooks.h"
#include "tests/support/thorough.h"

namespace {

using orvantis::test::ScopedEnvironment;

constexpr std::uint64_t kThreads = 4;
constexpr float kSample = 0x1111 / 32768.0F;

std::uint64_t numberFrom(const char* variable, std::uint64_t otherwise) {
    const char* text = std::getenv(variable);
    return text != nullptr ? std::strtoull(text, nullptr, 10) : otherwise;
}

/// One file as the threads of the host share it. What the pointer says may be out of date at any moment.
struct File {
    std::u16string path;
    std::atomic<void*> privateData{nullptr};
};

struct Tally {
    std::atomic<std::uint64_t> frames{0}, refused{0}, sounds{0}, quiets{0}, reopened{0}, closes{0}, inner{0},
        failed{0}, wrong{0};
};

/// What the thread's call at this moment is on, for calls from inside it.
thread_local void* t_current = nullptr;
thread_local std::mt19937_64* t_random = nullptr;

class SyncStress : public SyncCallsTest {
 protected:
    void run(bool faults, std::uint64_t usualOperations) {
        const std::uint64_t seed = numberFrom("ORVANTIS_STRESS_SEED", std::random_device{}());
        const std::uint64_t each =
            numberFrom("ORVANTIS_STRESS_OPERATIONS", orvantis::test::howManyAtRandom(usualOperations)) /
            kThreads;
        RecordProperty("seed", std::to_string(seed));
        std::printf("seed %llu\n", static_cast<unsigned long long>(seed));
        m_faults = faults;
#ifndef _WIN32
        orvantis::test::InstalledFileHooks hooks;
        m_hooks = &*hooks;
#endif
        // Loaded here too, so that its account can be read when the plug-in is gone.
        const simhost::SharedLibrary codec(codecFolder() + ORVANTIS_CODEC_FILE);
        std::mt19937_64 random(seed);
        const ScopedEnvironment plan("ORVANTIS_STANDIN_FAIL", faults ? codecFaults(random, each) : "");
        startAndInit();
        const std::string bytes = numberedClip();
        for (std::size_t i = 0; i < m_files.size(); ++i) {
            const auto path = clipPath().parent_path() / ("clip" + std::to_string(i) + ".avi");
            orvantis::test::writeFile(path, bytes);
            m_files[i].path = orvantis::test::utf16Path(path);
        }
        host().setHook([this](simhost::Service called) {
            if (called == simhost::Service::kCreatePPix && t_random != nullptr) {
                callBack(*t_random);
            }
        });
        std::vector<std::thread> threads;
        for (std::uint64_t t = 0; t < kThreads; ++t) {
            threads.emplace_back([this, each, threadSeed = seed + t] {
                std::mt19937_64 own(threadSeed);
                t_random = &own;
                for (std::uint64_t i = 0; i < each; ++i) {
                    operate(own);
                }
                t_random = nullptr;
            });
        }
        for (std::thread& thread : threads) {
            thread.join();
        }
        host().clearFaults();
        for (File& file : m_files) {
            static_cast<void>(raw().close(file.privateData));
        }
        stop();
        check(faults);
        const auto libraryClose = reinterpret_cast<std::int32_t (*)()>(codec.find("orvantis_library_close"));
        ASSERT_NE(libraryClose, nullptr);
        EXPECT_EQ(libraryClose(), static_cast<std::int32_t>(orvantis::standin::Error::kNotInitialised))
            << "an initialisation or a session of the codec library was left";
#ifndef _WIN32
        EXPECT_EQ(hooks->opened, hooks->closes);
#endif
    }

 private:
    static std::string codecFaults(std::mt19937_64& random, std::uint64_t operations) {
        constexpr const char* kFunctions[] = {"decompress", "decompress_begin", "decompress_end",
                                              "decompress_query"};
        std::string plan = "#" + std::to_string(random());
        for (std::uint64_t i = 0; i < 30; ++i) {
            // Behind imInit's own questions, so that there is something to work with.
            plan += "," + std::string(kFunctions[i % 4]) + ":" +
                    std::to_string(100 + random() % (operations + 1));
        }
        return plan;
    }
    void addFault(std::mt19937_64& random) {
        constexpr simhost::Service kServices[] = {
            simhost::Service::kCreatePPix, simhost::Service::kGetPixels, simhost::Service::kGetRowBytes,
            simhost::Service::kGetTicksPerSecond, simhost::Service::kAcquireSuite};
        simhost::FaultPlan fault;
        fault.service = kServices[random() % 5];
        fault.nth = 1 + random() % 3;
        host().addFault(fault);
        if (m_hooks == nullptr) {
            return;
        }
        auto& operations = random() % 2 == 0 ? m_hooks->reads : m_hooks->seeks;
        operations.failAt = operations.count + 1 + random() % 3;
    }

    /// Inside CreatePPix of one of the calls below.
    void callBack(std::mt19937_64& random) {
        void* const privateData = std::exchange(t_current, nullptr);  // once a call, and no deeper
        if (privateData == nullptr) {
            return;
        }
        const std::uint64_t what = random() % 60;
        if (what > 3) {
            return;
        }
        ++m_tally.inner;
        if (what == 0) {
            expectCode(raw().quiet(privateData), {host::imNoErr, host::kUnhandledException});
        }
        if (what == 1) {
            expectCode(raw().close(privateData), {host::imNoErr, host::kUnhandledException});
        }
        if (what >= 2) {
            frame(privateData, random);
        }
    }

    void operate(std::mt19937_64& random) {
        if (m_faults && random() % 64 == 0) {
            addFault(random);
        }
        File& file = m_files[random() % m_files.size()];
        void* const privateData = file.privateData;
        const std::uint64_t what = random() % 100;
        if (privateData == nullptr || what < 8) {
            openAnew(file, random);
        } else if (what < 60) {
            frame(privateData, random);
        } else if (what < 80) {
            sound(privateData, random);
        } else if (what < 84) {
            std::int32_t result = 0;
            static_cast<void>(raw().text(privateData, &result));
            expectCode(result, {host::imNoErr, host::kUnhandledException});
        } else if (what < 89) {
            expectCode(raw().quiet(privateData), {host::imNoErr, host::kUnhandledException});
            ++m_tally.quiets;
        } else {
            if (raw().open(file.path, privateData).result == host::imNoErr) {
                ++m_tally.reopened;
            }
            expectCode(raw().info(privateData).result,
                       {host::imNoErr, host::imBadFile, host::imOtherErr, host::kUnhandledException});
        }
    }

    void openAnew(File& file, std::mt19937_64& random) {
        const auto opened = raw().open(file.path, nullptr);
        if (opened.result != host::imNoErr) {
            ++m_tally.failed;
            return;
        }
        static_cast<void>(raw().info(opened.record.privatedata));
        void* const former = file.privateData.exchange(opened.record.privatedata);
        if (former == nullptr || former == opened.record.privatedata) {
            return;
        }
        expectCode(raw().close(former), {host::imNoErr, host::kUnhandledException});
        if (random() % 4 == 0) {
            static_cast<void>(raw().close(former));  // which a careless host may do
        }
        ++m_tally.closes;
    }

    void frame(void* privateData, std::mt19937_64& random) {
        const std::uint32_t formats[] = {host::PrPixelFormat_BGRA_4444_8u, host::PrPixelFormat_ARGB_4444_8u};
        const auto index = static_cast<std::uint32_t>(random() % (kClipFrames + 2));
        t_current = privateData;
        const simhost::FrameAnswer answer = raw().frame(privateData, timeOf(index), formats[random() % 2]);
        t_current = nullptr;
        if (answer.result == host::imNoErr) {
            if (!answer.frame || !showsFrame(*answer.frame, index)) {
                ++m_tally.wrong;
            }
            ++m_tally.frames;
            return;
        }
        if (answer.frame) {
            ++m_tally.wrong;
        }
        ++m_tally.refused;
        if (answer.result == host::imFrameNotFound) {
            // A host that does not tell its ticks has no time that falls on a frame.
            if (index < kClipFrames && !m_faults) {
                ++m_tally.wrong;
            }
        } else if (m_faults) {
            expectCode(answer.result, {host::imFileReadFailed, host::imOtherErr, host::imBadCompression,
                                       host::kUnhandledException});
        } else {
            expectCode(answer.result, {host::imFileReadFailed, host::kUnhandledException});
        }
    }

    void sound(void* privateData, std::mt19937_64& random) {
        std::vector<float> left(random() % 4000, -2.0F);
        std::vector<float> right(left.size(), -2.0F);
        const std::int64_t position =
            random() % 2 == 0 ? -1 : static_cast<std::int64_t>(random() % (1920 * kClipFrames));
        const std::int32_t result = raw().sound(privateData, position, left, right);
        expectCode(result, {host::imNoErr, host::kUnhandledException});
        if (result != host::imNoErr) {
            return;
        }
        for (const std::vector<float>* channel : {&left, &right}) {
            for (const float sample : *channel) {
                if (sample != kSample && sample != 0.0F) {
                    ++m_tally.wrong;
                    return;
                }
            }
        }
        ++m_tally.sounds;
    }

    void expectCode(std::int32_t code, std::initializer_list<std::int32_t> allowed) {
        if (std::find(allowed.begin(), allowed.end(), code) == allowed.end()) {
            ++m_tally.wrong;
            ADD_FAILURE() << "code " << code;
        }
    }
    void check(bool faults) {
        EXPECT_EQ(m_tally.wrong.load(), 0u);
        EXPECT_GT(m_tally.frames.load(), 0u);
        EXPECT_GT(m_tally.refused.load(), 0u);
        EXPECT_GT(m_tally.sounds.load(), 0u);
        EXPECT_GT(m_tally.quiets.load(), 0u);
        EXPECT_GT(m_tally.reopened.load(), 0u);
        EXPECT_GT(m_tally.closes.load(), 0u);
        EXPECT_GT(m_tally.inner.load(), 0u);
        if (faults) {
            EXPECT_GT(host().injectedFaults(), 0u);
        }
    }

    std::array<File, 3> m_files;
    Tally m_tally;
    bool m_faults = false;
    orvantis::test::FileHooks* m_hooks = nullptr;
};

TEST_F(SyncStress, WhateverMeetsEveryDeliveredFrameIsRightAndNothingLeaks) {
    run(false, 10'000);
}

TEST_F(SyncStress, FaultsOfHostCodecAndFileCostFramesButNothingElse) {
    run(true, 10'000);
}

}  // namespace
