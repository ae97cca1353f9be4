// A clip whose every frame shows its own number, opened through the synchronous importer, and the means to
// hold decode tasks until the test says go.
#pragma once

#include <chrono>
#include <condition_variable>
#include <cstdint>
#include <memory>
#include <mutex>
#include <optional>
#include <span>
#include <string>
#include <vector>

#include "host/pixel_formats.h"
#include "host/record_values.h"
#include "tests/integration/plugin_test.h"
#include "tests/support/avi_builder/avi_builder.h"
#include "tests/support/temp_folder.h"

inline constexpr std::int32_t kClipWidth = 16;
inline constexpr std::int32_t kClipHeight = 8;
inline constexpr std::uint32_t kClipFrames = 40;
inline constexpr std::uint64_t kFrameBytes = 3u * kClipWidth * kClipHeight;
inline constexpr std::uint32_t kArgb = host::PrPixelFormat_ARGB_4444_8u;
inline constexpr std::uint32_t kBgra = host::PrPixelFormat_BGRA_4444_8u;
inline constexpr auto kWrongCodeWouldBeDone = std::chrono::milliseconds(100);

/// Every byte of frame `index`'s picture.
inline std::uint8_t frameValue(std::uint32_t index) {
    return static_cast<std::uint8_t>(3 * index + 7);
}

/// Eight-bit RGB at 25 frames a second, with one stereo stream.
inline std::string numberedClip() {
    using namespace orvantis::test;
    AviBuilder avi;
    avi.addStream(videoStream("O8RG", kClipWidth, kClipHeight, 25, 1)).addStream(pcmStream(2, 48000, 16));
    for (std::uint32_t i = 0; i < kClipFrames; ++i) {
        avi.addFilledChunk(0, 3 * kClipWidth * kClipHeight, frameValue(i)).addFilledChunk(1, 4 * 1920, 0x11);
    }
    const Bytes bytes = avi.build();
    return std::string(bytes.begin(), bytes.end());
}

inline std::vector<host::imFrameFormat> anySize(std::uint32_t pixelFormat) {
    return {{0, 0, pixelFormat}};
}

/// True when the frame is the picture of that number, in any of the 8-bit RGB formats.
inline bool showsFrame(const simhost::Frame& frame, std::uint32_t index) {
    const std::uint8_t value = frameValue(index);
    const bool alphaFirst = frame.pixelFormat() == host::PrPixelFormat_ARGB_4444_8u ||
                            frame.pixelFormat() == host::PrPixelFormat_XRGB_4444_8u;
    const std::size_t alpha = alphaFirst ? 0 : 3;
    const std::vector<std::uint8_t> picture = frame.picture();
    if (picture.size() != 4u * kClipWidth * kClipHeight) {
        return false;
    }
    for (std::size_t i = 0; i < picture.size(); ++i) {
        if (i % 4 != alpha && picture[i] != value) {
            return false;
        }
    }
    return true;
}

/// Holds every call of one host service until it is opened. Decode tasks create their frame under the decode
/// mutex, so holding CreatePPix holds the one task that decodes.
class ServiceGate {
 public:
    ServiceGate(simhost::Host& host, simhost::Service service) {
        // The hook shares the state: a task may still pass it when the test is through with the gate.
        host.setHook([state = m_state, service](simhost::Service called) {
            if (called == service) {
                state->pass();
            }
        });
    }
    ServiceGate(const ServiceGate&) = delete;
    ServiceGate& operator=(const ServiceGate&) = delete;
    ~ServiceGate() { open(); }

    /// Waits until a call stands at the closed gate.
    void waitForArrival() {
        std::unique_lock lock(m_state->mutex);
        m_state->changed.wait(lock, [this] { return m_state->waiting > 0; });
    }
    void open() {
        const std::lock_guard lock(m_state->mutex);
        m_state->open = true;
        m_state->changed.notify_all();
    }

 private:
    struct State {
        void pass() {
            std::unique_lock lock(mutex);
            ++waiting;
            changed.notify_all();
            changed.wait(lock, [this] { return open; });
            --waiting;
        }

        std::mutex mutex;
        std::condition_variable changed;
        int waiting = 0;
        bool open = false;
    };

    std::shared_ptr<State> m_state = std::make_shared<State>();
};

class AsyncTest : public PluginTest {
 protected:
    void openClip(const simhost::HostProfile& profile = simhost::defaultProfile()) {
        orvantis::test::writeFile(clipPath(), numberedClip());
        ASSERT_NO_FATAL_FAILURE(startAndInit(profile));
        m_clip.emplace(importer(), orvantis::test::utf8Path(clipPath()));
        ASSERT_EQ(m_clip->openResult(), host::imNoErr);
        ASSERT_EQ(m_clip->getInfo(0).result, host::imNoErr);
    }
    void openAsync() {
        ASSERT_NO_FATAL_FAILURE(openClip());
        m_async = std::make_unique<simhost::AsyncClip>(*m_clip);
        ASSERT_EQ(m_async->creation().result, host::imNoErr);
    }
    void TearDown() override {
        m_async.reset();
        m_clip.reset();
        PluginTest::TearDown();
    }

    std::filesystem::path clipPath() const { return m_folder / "numbered.avi"; }
    simhost::Clip& clip() { return *m_clip; }
    simhost::AsyncClip& async() { return *m_async; }
    void dropClip() { m_clip.reset(); }
    void dropAsync() { m_async.reset(); }
    host::PrTime timeOf(std::uint32_t index) {
        return simhost::firstTickOfFrame(index, 25, 1, host().ticksPerSecond());
    }

 private:
    orvantis::test::TempFolder m_folder;
    std::optional<simhost::Clip> m_clip;
    std::unique_ptr<simhost::AsyncClip> m_async;
};
