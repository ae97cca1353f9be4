#include "tests/schedules/world/host.h"

#include <array>
#include <cstring>
#include <utility>

#include "host/pixel_formats.h"
#include "tests/schedules/scheduler/engine.h"
#include "tests/schedules/scheduler/finding.h"
#include "tests/schedules/scheduler/races.h"

namespace schedules::world {

namespace {

constexpr std::size_t kMostFrames = 32;
constexpr std::size_t kFrameBytes = 64;
constexpr std::int32_t kRefused = 0x53210001;

struct Frame {
    host::PPixContents* contents;  // its address is the handle
    bool live;
    std::array<char, kFrameBytes> pixels;
};

struct Tables {
    std::array<Frame, kMostFrames> frames{};
    host::SPBasicSuite basic{};
    host::PPixCreatorSuite creator{};
    host::PPixCacheSuite cache{};
    host::PPixSuite ppix{};
    host::TimeSuite time{};
    host::ImageProcessingSuite imageProcessing{};
    host::AudioSuite audio{};
    host::ErrorSuite error{};
    host::UtilityFunctions utilities{};
    host::piSuites suites{};
    host::imStdParms parms{};
};

Frame* frameOf(host::PPixHand handle);

Tables& tables();

bool isCreator(const char* name) {
    return std::strcmp(name, host::kPPixCreatorSuiteName) == 0;
}

host::SPErr acquireSuite(const char* name, std::int32_t /*version*/, const void** suite) {
    Tables& all = tables();
    const std::pair<const char*, const void*> offered[] = {
        {host::kPPixCreatorSuiteName, &all.creator}, {host::kPPixCacheSuiteName, &all.cache},
        {host::kPPixSuiteName, &all.ppix},           {host::kTimeSuiteName, &all.time},
        {host::kAudioSuiteName, &all.audio},         {host::kImageProcessingSuiteName, &all.imageProcessing},
        {host::kErrorSuiteName, &all.error},
    };
    if (isCreator(name) && host().refusesCreator) {
        return kRefused;
    }
    for (const auto& [known, table] : offered) {
        if (std::strcmp(name, known) != 0) {
            continue;
        }
        *suite = table;
        ++host().suitesHeld;
        if (isCreator(name)) {
            ++host().creatorHeld;
            ++host().creatorAcquired;
        }
        return 0;
    }
    return kRefused;
}

host::SPErr releaseSuite(const char* name, std::int32_t /*version*/) {
    --host().suitesHeld;
    if (isCreator(name)) {
        --host().creatorHeld;
    }
    return 0;
}

host::prSuiteError createPPix(host::PPixHand* handle, std::int32_t /*access*/, std::uint32_t /*format*/,
                              const host::prRect* /*bounds*/) {
    if (const std::function<void()> hook = std::exchange(host().onCreateFrame, nullptr)) {
        hook();
    }
    for (Frame& frame : tables().frames) {
        if (frame.live) {
            continue;
        }
        frame.live = true;
        frame.pixels.fill(-1);
        ++host().framesOut;
        *handle = &frame.contents;
        return 0;
    }
    return kRefused;
}

host::prSuiteError dispose(host::PPixHand handle) {
    frameOf(handle)->live = false;
    --host().framesOut;
    return 0;
}

host::prSuiteError getPixels(host::PPixHand handle, std::int32_t /*access*/, char** pixels) {
    *pixels = frameOf(handle)->pixels.data();
    return 0;
}

host::prSuiteError getRowBytes(host::PPixHand handle, std::int32_t* rowBytes) {
    static_cast<void>(frameOf(handle));
    *rowBytes = 16;
    return 0;
}

host::prSuiteError isTopLeft(std::uint32_t format, std::int32_t* answer) {
    const std::uint32_t asked[] = {host::PrPixelFormat_YUYV_422_8u_601, host::PrPixelFormat_UYVY_422_8u_601,
                                   host::PrPixelFormat_V210_422_10u_601};
    *answer = 0;
    for (unsigned i = 0; i < std::size(asked); ++i) {
        if (format == asked[i] && (host().topRowFirst >> i & 1) != 0) {
            *answer = 1;
        }
    }
    return 0;
}

host::prSuiteError isNot(std::uint32_t /*format*/, std::int32_t* answer) {
    *answer = 0;
    return 0;
}

host::prSuiteError convert(const void* source, float** buffers, std::uint32_t channels,
                           std::uint32_t frames) {
    const auto* sample = static_cast<const std::int16_t*>(source);
    for (std::uint32_t f = 0; f < frames; ++f) {
        for (std::uint32_t c = 0; c < channels; ++c) {
            buffers[c][f] = static_cast<float>(*sample++);
        }
    }
    return 0;
}

Tables& tables() {
    static Tables* const instance = [] {
        auto* const all = new Tables;
        all->basic.AcquireSuite = acquireSuite;
        all->basic.ReleaseSuite = releaseSuite;
        all->creator.CreatePPix = createPPix;
        all->ppix.Dispose = dispose;
        all->ppix.GetPixels = getPixels;
        all->ppix.GetRowBytes = getRowBytes;
        all->time.GetTicksPerSecond = [](host::PrTime* ticks) {
            *ticks = 254016000000;
            return host::prSuiteError{0};
        };
        all->imageProcessing.FormatIsCompressed = isNot;
        all->imageProcessing.FormatHasAlpha = isNot;
        all->imageProcessing.FormatIsOriginTopLeft = isTopLeft;
        all->audio.UninterleaveAndConvertFrom16BitInteger = convert;
        all->error.SetEventStringUnicode = [](std::uint32_t, const char16_t*, const char16_t*) {
            return host::prSuiteError{0};
        };
        all->utilities.getSPBasicSuite = [] { return &tables().basic; };
        all->suites.utilFuncs = &all->utilities;
        all->parms.piSuites = &all->suites;
        return all;
    }();
    return *instance;
}

Frame* frameOf(host::PPixHand handle) {
    for (Frame& frame : tables().frames) {
        if (&frame.contents == handle && frame.live) {
            return &frame;
        }
    }
    found("a frame is used that is no frame or was given back", "");
}

}  // namespace

Host& host() noexcept {
    static Host instance;
    return instance;
}

void beginHost() {
    host() = {};
    for (Frame& frame : tables().frames) {
        frame.live = false;
    }
}

host::imStdParms* stdParms() noexcept {
    return &tables().parms;
}

int pictureIn(host::PPixHand frame) noexcept {
    return frameOf(frame)->pixels[0];
}

void giveBack(host::PPixHand frame) noexcept {
    dispose(frame);
}

}  // namespace schedules::world
