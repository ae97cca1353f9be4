#include "tests/support/fake_host/fake_host.h"

#include <gtest/gtest.h>

#include <algorithm>
#include <cmath>
#include <cstddef>
#include <cstring>

#include "host/pixel_formats.h"

namespace orvantis::test {

namespace {

FakeHost* currentHost = nullptr;

constexpr std::int32_t kRefused = 0x53210001;

// What the real host says: bottom row first are the formats with four samples a pixel.
bool isTopLeftInTheField(std::uint32_t pixelFormat) {
    return std::string(host::pixelFormatName(pixelFormat)).find("_4444_") == std::string::npos;
}

}  // namespace

float convertedSample(const std::uint8_t* sample, unsigned bits) {
    // The sample's bytes become the highest ones of a signed word.
    const std::size_t sampleBytes = bits / 8;
    std::int32_t value = 0;
    std::memcpy(reinterpret_cast<std::uint8_t*>(&value) + (4 - sampleBytes), sample, sampleBytes);
    return static_cast<float>(std::ldexp(static_cast<double>(value), -31));
}

template <unsigned bits>
host::prSuiteError FakeHost::convert(const void* source, float** destination, std::uint32_t channels,
                                     std::uint32_t frames) {
    constexpr std::size_t kSampleBytes = bits / 8;
    const auto* const bytes = static_cast<const std::uint8_t*>(source);
    for (std::uint32_t f = 0; f < frames; ++f) {
        for (std::uint32_t c = 0; c < channels; ++c) {
            const std::size_t sample = std::size_t{f} * channels + c;
            destination[c][f] = convertedSample(bytes + sample * kSampleBytes, bits);
        }
    }
    if (currentHost->keepsConverterCalls) {
        const std::size_t count = std::size_t{frames} * channels * kSampleBytes;
        currentHost->converterCalls.push_back(
            {bits, destination, channels, frames, source, {bytes, bytes + count}});
    }
    return currentHost->converterResult;
}

FakeHost::FakeHost() {
    EXPECT_EQ(currentHost, nullptr) << "a second fake host";
    currentHost = this;
    answer = [](Question question, std::uint32_t pixelFormat) {
        return question == kTopLeft && isTopLeftInTheField(pixelFormat);
    };
    m_basicSuite.AcquireSuite = acquireSuite;
    m_basicSuite.ReleaseSuite = releaseSuite;
    m_ppixCreatorSuite.CreatePPix = createPPix;
    m_ppixSuite.Dispose = dispose;
    m_ppixSuite.GetPixels = getPixels;
    m_ppixSuite.GetRowBytes = getRowBytes;
    m_timeSuite.GetTicksPerSecond = getTicksPerSecond;
    m_imageProcessingSuite.FormatIsCompressed = [](std::uint32_t format, std::int32_t* place) {
        return ask(kCompressed, format, place);
    };
    m_imageProcessingSuite.FormatHasAlpha = [](std::uint32_t format, std::int32_t* place) {
        return ask(kAlpha, format, place);
    };
    m_imageProcessingSuite.FormatIsOriginTopLeft = [](std::uint32_t format, std::int32_t* place) {
        return ask(kTopLeft, format, place);
    };
    m_audioSuite = {nullptr, nullptr, nullptr, nullptr, convert<8>, convert<16>, convert<24>, convert<32>};
    pixelAccesses.reserve(4096);
}

FakeHost::~FakeHost() {
    EXPECT_EQ(m_acquired, std::vector<std::string>{}) << "suites that were not released";
    EXPECT_EQ(liveFrames(), 0) << "frames that were not disposed of";
    EXPECT_EQ(created, disposed);
    currentHost = nullptr;
}

host::SPErr FakeHost::acquireSuite(const char* name, std::int32_t version, const void** suite) {
    const struct {
        const char* name;
        std::int32_t version;
        const void* table;
    } suites[]{
        {"Premiere PPix Creator Suite", 1, &currentHost->m_ppixCreatorSuite},
        {"Premiere PPix Cache Suite", 6, &currentHost->m_ppixCacheSuite},
        {"Premiere PPix Suite", 1, &currentHost->m_ppixSuite},
        {"Premiere Time Suite", 1, &currentHost->m_timeSuite},
        {"Premiere Image Processing Suite", 2, &currentHost->m_imageProcessingSuite},
        {"Premiere Audio Suite", 1, &currentHost->m_audioSuite},
    };
    const std::string key = std::string(name) + " " + std::to_string(version);
    const auto known = std::ranges::find_if(suites, [&](const auto& entry) {
        return entry.name == std::string(name) && entry.version == version;
    });
    if (known == std::end(suites)) {
        ADD_FAILURE() << "suite " << key << " does not exist";
        return kRefused;
    }
    if (currentHost->refusedSuites.contains(name)) {
        currentHost->suiteCalls.push_back("! " + key);
        return kRefused;  // and leaves the variable unwritten
    }
    currentHost->suiteCalls.push_back("+ " + key);
    currentHost->m_acquired.push_back(key);
    *suite = known->table;
    return 0;
}

host::SPErr FakeHost::releaseSuite(const char* name, std::int32_t version) {
    const std::string key = std::string(name) + " " + std::to_string(version);
    currentHost->suiteCalls.push_back("- " + key);
    auto& acquired = currentHost->m_acquired;
    const auto held = std::ranges::find(acquired, key);
    if (held == acquired.end()) {
        ADD_FAILURE() << "suite " << key << " was not acquired";
        return kRefused;
    }
    acquired.erase(held);
    return 0;
}

host::prSuiteError FakeHost::ask(Question question, std::uint32_t pixelFormat, std::int32_t* place) {
    currentHost->asked.push_back({question, pixelFormat, *place});
    const std::int32_t result = currentHost->questionResults[question];
    if (result == 0) {
        *place = currentHost->answer(question, pixelFormat) ? 1 : 0;
    }
    return result;
}

std::ptrdiff_t FakeHost::requestsFor(std::string_view suite) const {
    return std::ranges::count_if(suiteCalls, [&](std::string_view call) {
        return call[0] != '-' && call.substr(2).starts_with(suite);
    });
}

host::prSuiteError FakeHost::getTicksPerSecond(host::PrTime* ticks) {
    if (currentHost->ticksResult == 0 || currentHost->writesTicksAnyway) {
        *ticks = currentHost->ticksPerSecond;
    }
    return currentHost->ticksResult;
}

host::prSuiteError FakeHost::createPPix(host::PPixHand* frame, std::int32_t access, std::uint32_t pixelFormat,
                                        const host::prRect* bounds) {
    if (currentHost->createResult != 0) {
        return currentHost->createResult;
    }
    if (currentHost->createsNull) {
        return 0;
    }
    EXPECT_NE(access, host::kBufferAccessReadOnly) << "a new frame cannot be read only";

    auto& frames = currentHost->m_frames;
    auto unused = std::ranges::find_if(frames, [](const auto& entry) { return !entry->live; });
    if (unused == frames.end()) {
        unused = frames.insert(frames.end(), std::make_unique<Frame>());
    }
    Frame& made = **unused;
    made.live = true;
    made.access = access;
    made.pixelFormat = pixelFormat;
    made.bounds = *bounds;
    const std::int32_t width = bounds->right - bounds->left;
    const std::int32_t height = bounds->bottom - bounds->top;
    const std::int32_t pitch = width * 8 + currentHost->padding;  // room for the widest layout
    made.memory.assign(static_cast<std::size_t>(pitch) * static_cast<std::size_t>(height), kPoison);
    char* const start = reinterpret_cast<char*>(made.memory.data());
    made.rowBytes = currentHost->negativeRowBytes ? -pitch : pitch;
    made.pixels =
        currentHost->negativeRowBytes ? start + static_cast<std::ptrdiff_t>(pitch) * (height - 1) : start;
    ++currentHost->created;
    *frame = made.handle();
    return 0;
}

FakeHost::Frame& FakeHost::frameOf(host::PPixHand handle) {
    static Frame none;
    const auto frame =
        std::ranges::find_if(m_frames, [&](const auto& entry) { return entry->handle() == handle; });
    if (frame == m_frames.end() || !(*frame)->live) {
        ADD_FAILURE() << "handle " << static_cast<const void*>(handle) << " is no live frame";
        return none;
    }
    return **frame;
}

host::prSuiteError FakeHost::dispose(host::PPixHand frame) {
    currentHost->frameOf(frame).live = false;
    ++currentHost->disposed;
    return 0;
}

void FakeHost::take(host::PPixHand handle) {
    dispose(handle);
}

host::prSuiteError FakeHost::getPixels(host::PPixHand frame, std::int32_t access, char** pixels) {
    currentHost->pixelAccesses.push_back(access);
    if (currentHost->pixelsResult != 0) {
        return currentHost->pixelsResult;
    }
    *pixels = currentHost->pixelsNull ? nullptr : currentHost->frameOf(frame).pixels;
    return 0;
}

host::prSuiteError FakeHost::getRowBytes(host::PPixHand frame, std::int32_t* rowBytes) {
    if (currentHost->rowBytesResult != 0) {
        return currentHost->rowBytesResult;
    }
    *rowBytes = currentHost->frameOf(frame).rowBytes;
    return 0;
}

int FakeHost::liveFrames() const {
    return static_cast<int>(std::ranges::count_if(m_frames, [](const auto& entry) { return entry->live; }));
}

}  // namespace orvantis::test
