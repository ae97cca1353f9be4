#include "simhost/host_services.h"

#include <algorithm>
#include <cstdio>
#include <cstdlib>
#include <limits>
#include <new>
#include <string>

#include "simhost/audio_convert.h"
#include "simhost/host.h"
#include "simhost/text.h"

namespace simhost {
namespace {

Host& living(const char* function) {
    Host* host = Host::current();
    if (host == nullptr) {
        (void)std::fprintf(stderr, "simhost: %s was called while no host exists\n", function);
        std::abort();
    }
    return *host;
}

}  // namespace

void HostServices::unused(const char* slot) {
    living(slot).addViolation({Rule::kSuitesOffered, slot, "called"});
}

// ---- memory ----

void* HostServices::newPtr(std::uint32_t size) {
    Host& host = living("newPtr");
    return host.begin(Service::kNewPtr) ? nullptr : host.newBlock(size, false);
}

void* HostServices::newPtrClear(std::uint32_t size) {
    Host& host = living("newPtrClear");
    return host.begin(Service::kNewPtrClear) ? nullptr : host.newBlock(size, true);
}

void HostServices::setPtrSize(void** pointer, std::uint32_t newSize) {
    Host& host = living("setPtrSize");
    if (host.begin(Service::kSetPtrSize)) {
        return;
    }
    if (pointer == nullptr || !host.blockSize(*pointer)) {
        host.addViolation({Rule::kMemoryLive, "setPtrSize", "no live block"});
        return;
    }
    auto* const old = static_cast<std::uint8_t*>(*pointer);
    const std::uint32_t kept = std::min(*host.blockSize(old), newSize);
    if (auto* const made = static_cast<std::uint8_t*>(host.newBlock(newSize, false))) {
        std::copy_n(old, kept, made);
        *pointer = made;
        (void)host.freeBlock(old, "setPtrSize");
    }
}

std::int32_t HostServices::getPtrSize(void* pointer) {
    Host& host = living("getPtrSize");
    if (host.begin(Service::kGetPtrSize)) {
        return 0;
    }
    const auto size = host.blockSize(pointer);
    if (!size) {
        host.addViolation({Rule::kMemoryLive, "getPtrSize", "no live block"});
    }
    return static_cast<std::int32_t>(size.value_or(0));
}

void HostServices::disposePtr(void* pointer) {
    Host& host = living("disposePtr");
    (void)host.begin(Service::kDisposePtr);
    (void)host.freeBlock(pointer);
}

// ---- suites ----

host::SPBasicSuite* HostServices::getSPBasicSuite() {
    Host& host = living("getSPBasicSuite");
    return host.begin(Service::kGetSPBasicSuite) ? nullptr : &basicTable();
}

host::SPErr HostServices::acquireSuite(const char* name, std::int32_t version, const void** suite) {
    Host& host = living("AcquireSuite");
    if (name == nullptr || suite == nullptr) {
        host.addViolation(
            {Rule::kSuitesArguments, "AcquireSuite", "null", "", name == nullptr ? "name" : "suite"});
        return host::kSuiteBadParameters;
    }
    const auto refuse = [&host, suite](std::int32_t result) {
        if (host.m_profile.refusalWritesNull) {
            *suite = nullptr;
        }
        return result;
    };
    const auto fault = host.begin(Service::kAcquireSuite, name);
    if (fault) {
        return refuse(*fault);
    }
    std::size_t found = findSuite(name, version);
    const auto& refused = host.m_profile.refusedSuites;
    if (std::find(refused.begin(), refused.end(), name) != refused.end()) {
        found = kSuiteCount;
    }
    const std::lock_guard lock(host.m_mutex);
    if (found == kSuiteCount) {
        if (!host.m_trace.empty()) {
            host.m_trace.back().result = host::kSuiteFailed;
        }
        return refuse(host::kSuiteFailed);
    }
    ++host.m_heldSuites[found];
    *suite = hostSuites()[found].table;
    return host::kSuiteNoError;
}

host::SPErr HostServices::releaseSuite(const char* name, std::int32_t version) {
    Host& host = living("ReleaseSuite");
    if (name == nullptr) {
        host.addViolation({Rule::kSuitesArguments, "ReleaseSuite", "null", "", "name"});
        return host::kSuiteBadParameters;
    }
    // A release that is told to fail has released all the same: nobody tries again.
    const auto fault = host.begin(Service::kReleaseSuite, name);
    const std::size_t found = findSuite(name, version);
    const std::lock_guard lock(host.m_mutex);
    if (found == kSuiteCount || host.m_heldSuites[found] == 0) {
        host.violationLocked({Rule::kSuitesReleasedOnce, "ReleaseSuite",
                              std::string("'") + name + " " + std::to_string(version) + "' is not held"});
        return host::kSuiteFailed;
    }
    --host.m_heldSuites[found];
    return fault.value_or(host::kSuiteNoError);
}

// ---- error suite ----

host::prSuiteError HostServices::setEventString(std::uint32_t eventType, const char16_t* title,
                                                const char16_t* description) {
    Host& host = living("SetEventStringUnicode");
    const auto fault = host.beginSuiteCall(Service::kSetEventString, Suite::kError);
    if (fault) {
        return *fault;
    }
    if (title == nullptr || description == nullptr) {
        host.addViolation({Rule::kSuitesArguments, "SetEventStringUnicode", "null", "",
                           title == nullptr ? "title" : "description"});
        return host::kSuiteBadParameters;
    }
    HostEvent event{eventType, toUtf8(title), toUtf8(description)};
    const std::lock_guard lock(host.m_mutex);
    host.m_events.push_back(std::move(event));
    return host::kSuiteNoError;
}

// ---- frames ----

host::prSuiteError HostServices::createPPix(host::PPixHand* frame, std::int32_t access,
                                            std::uint32_t pixelFormat, const host::prRect* bounds) {
    Host& host = living("CreatePPix");
    const auto fault =
        host.beginSuiteCall(Service::kCreatePPix, Suite::kPPixCreator, pixelFormatName(pixelFormat));
    if (fault) {
        return *fault;
    }
    if (frame == nullptr || bounds == nullptr) {
        host.addViolation(
            {Rule::kSuitesArguments, "CreatePPix", "null", "", frame == nullptr ? "frame" : "bounds"});
        return host::kSuiteBadParameters;
    }
    if (access != host::kBufferAccessWriteOnly && access != host::kBufferAccessReadWrite) {
        host.addViolation({Rule::kFramesAccess, "CreatePPix", std::to_string(access), "", "access"});
        return host::kSuiteBadParameters;
    }
    const PixelLayout* layout = findPixelLayout(pixelFormat);
    const std::int64_t width = std::int64_t{bounds->right} - bounds->left;
    const std::int64_t height = std::int64_t{bounds->bottom} - bounds->top;
    constexpr std::int64_t kLargest = std::numeric_limits<std::int32_t>::max();
    if (layout == nullptr || layout->pixelsPerGroup == 0 || width <= 0 || height <= 0 || width > kLargest ||
        height > kLargest) {
        return host::kSuiteBadParameters;
    }
    try {
        const auto made =
            host.makeFrame(*layout, static_cast<std::int32_t>(width), static_cast<std::int32_t>(height));
        const std::lock_guard lock(host.m_mutex);
        host.m_frames.emplace(made->handle(), made);
        *frame = made->handle();
        return host::kSuiteNoError;
    } catch (const std::bad_alloc&) {
        return host::kSuiteOutOfMemory;
    }
}

host::prSuiteError HostServices::disposePPix(host::PPixHand frame) {
    Host& host = living("Dispose");
    // A disposal that is told to fail has happened all the same: nobody tries again.
    const auto fault = host.beginSuiteCall(Service::kDisposePPix, Suite::kPPix);
    const std::lock_guard lock(host.m_mutex);
    const auto found = host.m_frames.find(frame);
    if (!host.usableLocked(found, "Dispose")) {
        return host::kSuiteBadParameters;
    }
    auto gone = std::move(found->second);
    host.m_frames.erase(found);
    host.retireFrameLocked(std::move(gone));
    return fault.value_or(host::kSuiteNoError);
}

host::prSuiteError HostServices::getPixels(host::PPixHand frame, std::int32_t access, char** pixels) {
    Host& host = living("GetPixels");
    const auto fault = host.beginSuiteCall(Service::kGetPixels, Suite::kPPix);
    if (fault) {
        return *fault;
    }
    const std::lock_guard lock(host.m_mutex);
    const auto found = host.m_frames.find(frame);
    if (!host.usableLocked(found, "GetPixels")) {
        return host::kSuiteBadParameters;
    }
    if (access < host::kBufferAccessReadOnly || access > host::kBufferAccessReadWrite) {
        host.violationLocked({Rule::kSuitesArguments, "GetPixels", std::to_string(access), "", "access"});
        return host::kSuiteBadParameters;
    }
    if (pixels == nullptr) {
        host.violationLocked({Rule::kSuitesArguments, "GetPixels", "null", "", "pixels"});
        return host::kSuiteBadParameters;
    }
    *pixels = reinterpret_cast<char*>(found->second->pixels());
    return host::kSuiteNoError;
}

host::prSuiteError HostServices::getRowBytes(host::PPixHand frame, std::int32_t* rowBytes) {
    Host& host = living("GetRowBytes");
    const auto fault = host.beginSuiteCall(Service::kGetRowBytes, Suite::kPPix);
    if (fault) {
        return *fault;
    }
    const std::lock_guard lock(host.m_mutex);
    const auto found = host.m_frames.find(frame);
    if (!host.usableLocked(found, "GetRowBytes")) {
        return host::kSuiteBadParameters;
    }
    if (rowBytes == nullptr) {
        host.violationLocked({Rule::kSuitesArguments, "GetRowBytes", "null", "", "rowBytes"});
        return host::kSuiteBadParameters;
    }
    *rowBytes = found->second->rowBytes();
    return host::kSuiteNoError;
}

// ---- time and pixel formats ----

host::prSuiteError HostServices::getTicksPerSecond(host::PrTime* ticks) {
    Host& host = living("GetTicksPerSecond");
    const auto fault = host.beginSuiteCall(Service::kGetTicksPerSecond, Suite::kTime);
    if (fault) {
        return *fault;
    }
    if (ticks == nullptr) {
        host.addViolation({Rule::kSuitesArguments, "GetTicksPerSecond", "null", "", "ticks"});
        return host::kSuiteBadParameters;
    }
    *ticks = host.m_ticksPerSecond;
    return host::kSuiteNoError;
}

namespace {

template <class Question>
host::prSuiteError answerAbout(Host& host, Service service, const std::optional<std::int32_t>& fault,
                               std::uint32_t pixelFormat, std::int32_t* answer, Question question) {
    if (fault) {
        return *fault;
    }
    if (answer == nullptr) {
        host.addViolation({Rule::kSuitesArguments, serviceName(service), "null", "", "answer"});
        return host::kSuiteBadParameters;
    }
    const PixelLayout* layout = findPixelLayout(pixelFormat);
    if (layout == nullptr) {
        return host::kSuiteBadParameters;
    }
    *answer = question(*layout) ? 1 : 0;
    return host::kSuiteNoError;
}

}  // namespace

host::prSuiteError HostServices::formatIsCompressed(std::uint32_t pixelFormat, std::int32_t* answer) {
    Host& host = living("FormatIsCompressed");
    return answerAbout(host, Service::kFormatIsCompressed,
                       host.beginSuiteCall(Service::kFormatIsCompressed, Suite::kImageProcessing,
                                           pixelFormatName(pixelFormat)),
                       pixelFormat, answer, [](const PixelLayout& layout) { return layout.compressed; });
}

host::prSuiteError HostServices::formatHasAlpha(std::uint32_t pixelFormat, std::int32_t* answer) {
    Host& host = living("FormatHasAlpha");
    return answerAbout(
        host, Service::kFormatHasAlpha,
        host.beginSuiteCall(Service::kFormatHasAlpha, Suite::kImageProcessing, pixelFormatName(pixelFormat)),
        pixelFormat, answer, [](const PixelLayout& layout) { return layout.alpha; });
}

host::prSuiteError HostServices::formatIsOriginTopLeft(std::uint32_t pixelFormat, std::int32_t* answer) {
    Host& host = living("FormatIsOriginTopLeft");
    const bool opposite = host.m_oppositeOrigins;
    return answerAbout(host, Service::kFormatIsOriginTopLeft,
                       host.beginSuiteCall(Service::kFormatIsOriginTopLeft, Suite::kImageProcessing,
                                           pixelFormatName(pixelFormat)),
                       pixelFormat, answer,
                       [opposite](const PixelLayout& layout) { return layout.topLeft != opposite; });
}

// ---- audio ----

namespace {

host::prSuiteError convert(Host& host, Service service, const std::optional<std::int32_t>& fault,
                           unsigned bytesPerSample, const void* source, float** destination,
                           std::uint32_t channels, std::uint32_t frames) {
    if (fault) {
        return *fault;
    }
    bool good = frames == 0 || channels == 0 || (source != nullptr && destination != nullptr);
    for (std::uint32_t channel = 0; good && frames != 0 && channel < channels; ++channel) {
        good = destination[channel] != nullptr;
    }
    if (!good) {
        host.addViolation({Rule::kSuitesArguments, serviceName(service), "null", "",
                           source == nullptr ? "source" : "destination"});
        return host::kSuiteBadParameters;
    }
    uninterleaveAndConvert(bytesPerSample, static_cast<const unsigned char*>(source), destination, channels,
                           frames);
    return host::kSuiteNoError;
}

}  // namespace

#define CONVERTER(bits)                                                                                     \
    host::prSuiteError HostServices::convertFrom##bits##Bit(const void* source, float** destination,        \
                                                            std::uint32_t channels, std::uint32_t frames) { \
        Host& host = living("UninterleaveAndConvertFrom" #bits "BitInteger");                               \
        return convert(host, Service::kConvertFrom##bits##Bit,                                              \
                       host.beginSuiteCall(Service::kConvertFrom##bits##Bit, Suite::kAudio), (bits) / 8,    \
                       source, destination, channels, frames);                                              \
    }

CONVERTER(8)
CONVERTER(16)
CONVERTER(24)
CONVERTER(32)

#undef CONVERTER

}  // namespace simhost
