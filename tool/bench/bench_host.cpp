#include "tool/bench/bench_host.h"

#include <atomic>
#include <cstring>
#include <iterator>
#include <memory>
#include <mutex>
#include <new>
#include <vector>

#include "host/pixel_formats.h"
#include "host/result_codes.h"

namespace simhost::tool {
namespace {

// The handle is the address of the first member.
struct BenchFrame {
    host::PPixContents* contents = nullptr;
    std::unique_ptr<char[]> pixels;
    std::size_t capacity = 0;
    std::int32_t rowBytes = 0;
    std::uint64_t serial = 0;
};

struct SpareFrames {
    std::mutex mutex;
    std::vector<BenchFrame*> frames;
};

SpareFrames& spareFrames() {
    // Never destroyed: a plug-in may give frames back until the very end.
    static auto* const instance = new SpareFrames;
    return *instance;
}

BenchFrame* frameOf(host::PPixHand handle) noexcept {
    return reinterpret_cast<BenchFrame*>(handle);
}

BenchFrame* takeFrame() {
    SpareFrames& spare = spareFrames();
    const std::lock_guard lock(spare.mutex);
    if (spare.frames.empty()) {
        return new BenchFrame;
    }
    BenchFrame* const frame = spare.frames.back();
    spare.frames.pop_back();
    return frame;
}

void putFrame(BenchFrame* frame) {
    SpareFrames& spare = spareFrames();
    const std::lock_guard lock(spare.mutex);
    spare.frames.push_back(frame);
}

host::prSuiteError createPPix(host::PPixHand* handle, std::int32_t /*access*/, std::uint32_t /*pixelFormat*/,
                              const host::prRect* bounds) {
    // Room for a pixel of every format, in rows that begin on a cache line.
    constexpr std::int32_t kLargestPixel = 8;
    constexpr std::int32_t kRowAlignment = 64;
    const std::int32_t width = bounds->right - bounds->left;
    const std::int32_t rowBytes = (width * kLargestPixel + kRowAlignment - 1) / kRowAlignment * kRowAlignment;
    const auto bytes =
        static_cast<std::size_t>(rowBytes) * static_cast<std::size_t>(bounds->bottom - bounds->top);
    try {
        BenchFrame* const frame = takeFrame();
        if (frame->capacity < bytes) {
            frame->pixels = std::make_unique_for_overwrite<char[]>(bytes);
            frame->capacity = bytes;
        }
        frame->rowBytes = rowBytes;
        static std::atomic<std::uint64_t> created = 0;
        frame->serial = ++created;
        *handle = &frame->contents;
        return host::kSuiteNoError;
    } catch (const std::bad_alloc&) {
        return host::kSuiteFailed;
    }
}

host::prSuiteError dispose(host::PPixHand handle) {
    putFrame(frameOf(handle));
    return host::kSuiteNoError;
}

host::prSuiteError getPixels(host::PPixHand handle, std::int32_t /*access*/, char** pixels) {
    *pixels = frameOf(handle)->pixels.get();
    return host::kSuiteNoError;
}

host::prSuiteError getRowBytes(host::PPixHand handle, std::int32_t* rowBytes) {
    *rowBytes = frameOf(handle)->rowBytes;
    return host::kSuiteNoError;
}

host::prSuiteError getTicksPerSecond(host::PrTime* ticks) {
    *ticks = kBenchTicks;
    return host::kSuiteNoError;
}

host::prSuiteError answerNo(std::uint32_t /*pixelFormat*/, std::int32_t* answer) {
    *answer = 0;
    return host::kSuiteNoError;
}

host::prSuiteError ignoreEvent(std::uint32_t /*type*/, const char16_t* /*title*/,
                               const char16_t* /*description*/) {
    return host::kSuiteNoError;
}

// The host's conversion is the host's own cost. Here it is one copy of the samples.
template <std::size_t bytesPerSample>
host::prSuiteError moveSamples(const void* source, float** destination, std::uint32_t channels,
                               std::uint32_t frames) {
    const std::size_t bytes = std::size_t{frames} * bytesPerSample;
    for (std::uint32_t c = 0; c < channels; ++c) {
        std::memcpy(destination[c], static_cast<const char*>(source) + c * bytes, bytes);
    }
    return host::kSuiteNoError;
}

constexpr host::PPixCreatorSuite kPPixCreator{createPPix, nullptr};
constexpr host::PPixCacheSuite kPPixCache{};
constexpr host::PPixSuite kPPix{dispose, getPixels, nullptr, getRowBytes, nullptr,
                                nullptr, nullptr,   nullptr, nullptr};
constexpr host::TimeSuite kTime{getTicksPerSecond, nullptr, nullptr};
constexpr host::ImageProcessingSuite kImageProcessing{answerNo, answerNo, answerNo, nullptr,
                                                      nullptr,  nullptr,  nullptr};
constexpr host::AudioSuite kAudio{nullptr,        nullptr,        nullptr,        nullptr,
                                  moveSamples<1>, moveSamples<2>, moveSamples<3>, moveSamples<4>};
constexpr host::ErrorSuite kError{ignoreEvent};

struct NamedSuite {
    const char* name;
    const void* table;
};
constexpr NamedSuite kSuites[] = {
    {host::kPPixCreatorSuiteName, &kPPixCreator},
    {host::kPPixCacheSuiteName, &kPPixCache},
    {host::kPPixSuiteName, &kPPix},
    {host::kTimeSuiteName, &kTime},
    {host::kImageProcessingSuiteName, &kImageProcessing},
    {host::kAudioSuiteName, &kAudio},
    {host::kErrorSuiteName, &kError},
};

host::SPErr acquireSuite(const char* name, std::int32_t /*version*/, const void** suite) {
    for (const NamedSuite& known : kSuites) {
        if (std::strcmp(known.name, name) == 0) {
            *suite = known.table;
            return host::kSuiteNoError;
        }
    }
    return host::kSuiteFailed;
}

host::SPErr releaseSuite(const char* /*name*/, std::int32_t /*version*/) {
    return host::kSuiteNoError;
}

host::SPBasicSuite g_basic{acquireSuite, releaseSuite, nullptr, nullptr, nullptr, nullptr, nullptr};

host::SPBasicSuite* getBasicSuite() {
    return &g_basic;
}

constexpr host::UtilityFunctions kUtilities{nullptr, nullptr, nullptr,       nullptr, nullptr,
                                            nullptr, nullptr, getBasicSuite, nullptr};
constexpr host::piSuites kPiSuites{1, nullptr, nullptr, nullptr, &kUtilities, nullptr};

}  // namespace

host::imStdParms benchStdParms() noexcept {
    return {1, nullptr, &kPiSuites};
}

const host::PPixCreatorSuite& benchPPixCreatorSuite() noexcept {
    return kPPixCreator;
}

const host::PPixSuite& benchPPixSuite() noexcept {
    return kPPix;
}

std::uint64_t benchFrameSerial(host::PPixHand frame) noexcept {
    return frameOf(frame)->serial;
}

}  // namespace simhost::tool
