#include "tests/schedules/world/calls.h"

#include <memory>

#include "entry/import_entry.h"
#include "host/pixel_formats.h"
#include "host/record_values.h"
#include "host/records.h"
#include "host/selectors.h"
#include "tests/schedules/scheduler/finding.h"
#include "tests/schedules/world/clip.h"
#include "tests/schedules/world/host.h"

namespace schedules::world {

namespace {

constexpr host::imFrameFormat kAnySizeBgra{0, 0, host::PrPixelFormat_BGRA_4444_8u};
constexpr std::int64_t kTicksPerFrame = 254016000000 / 25;

template <class Selector>
std::int32_t call(Selector selector, void* param1, void* param2) {
    return static_cast<std::int32_t>(
        xImportEntry(static_cast<std::int32_t>(selector), stdParms(), param1, param2));
}

host::imSourceVideoRec requestFor(void* privateData, std::uint32_t index, host::PPixHand* frame) {
    host::imSourceVideoRec record{};
    record.inPrivateData = privateData;
    record.inFrameTime = index * kTicksPerFrame;
    record.inFrameFormats = &kAnySizeBgra;
    record.inNumFrameFormats = 1;
    record.outFrame = frame;
    return record;
}

FrameAnswer answerOf(std::int32_t result, host::PPixHand frame) {
    FrameAnswer answer{result, -1};
    if (frame != nullptr) {
        answer.picture = pictureIn(frame);
        giveBack(frame);
    }
    return answer;
}

std::int32_t open(void** privateData) {
    host::imFileOpenRec8 record{};
    record.fileinfo.filepath = u"C:\\clip.avi";
    record.privatedata = *privateData;
    record.inReadWrite = host::kOpenForReading;
    host::imFileRef fileRef = host::kInvalidFileRef;
    const std::int32_t result = call(host::imOpenFile8, &fileRef, &record);
    *privateData = record.privatedata;
    return result;
}

std::int32_t info(void* privateData) {
    // Too big for a thread's stack of a schedule to have many of.
    const auto record = std::make_unique<host::imFileInfoRec8>();
    record->privatedata = privateData;
    return call(host::imGetInfo8, nullptr, record.get());
}

void require(std::int32_t result, const char* what) {
    if (result != kOk) {
        found("the scenario does not come to its beginning", what);
    }
}

}  // namespace

void startPlugin() {
    host::imImportInfoRec record{};
    require(call(host::imInit, &record, nullptr), "imInit");
}

void endPlugin() {
    require(call(host::imShutdown, nullptr, nullptr), "imShutdown");
}

Clip::Clip() {
    require(open(&m_privateData), "imOpenFile8");
    require(info(m_privateData), "imGetInfo8");
}

Clip::~Clip() {
    if (m_privateData != nullptr) {
        close();
    }
}

FrameAnswer Clip::frame(std::uint32_t index) const {
    host::PPixHand frame = nullptr;
    host::imSourceVideoRec record = requestFor(m_privateData, index, &frame);
    const std::int32_t result = call(host::imGetSourceVideo, nullptr, &record);
    return answerOf(result, frame);
}

std::int32_t Clip::sound(std::int64_t position) const {
    constexpr std::uint32_t kSamples = 4;
    float left[kSamples];
    float right[kSamples];
    float* buffers[] = {left, right};
    host::imImportAudioRec7 record{};
    record.position = position;
    record.size = kSamples;
    record.buffer = buffers;
    record.privateData = m_privateData;
    const std::int32_t result = call(host::imImportAudio7, nullptr, &record);
    for (std::uint32_t i = 0; result == kOk && i < kSamples; ++i) {
        if (left[i] != kSample || right[i] != kSample) {
            found("wrong sound", "");
        }
    }
    return result;
}

std::int32_t Clip::quiet() const {
    host::imFileRef fileRef = 77;
    return call(host::imQuietFile, &fileRef, m_privateData);
}

std::int32_t Clip::reopen() const {
    void* privateData = m_privateData;
    const std::int32_t result = open(&privateData);
    return result != kOk ? result : info(privateData);
}

std::int32_t Clip::close() const {
    host::imFileRef fileRef = 77;
    return call(host::imCloseFile, &fileRef, m_privateData);
}

AsyncClip::AsyncClip(const Clip& clip) {
    host::imAsyncImporterCreationRec record{};
    record.inPrivateData = clip.privateData();
    require(call(host::imCreateAsyncImporter, &record, nullptr), "imCreateAsyncImporter");
    m_entry = record.outAsyncEntry;
    m_privateData = record.outAsyncPrivateData;
}

AsyncClip::~AsyncClip() {
    if (m_privateData != nullptr) {
        close();
    }
}

std::int32_t AsyncClip::initiate(std::uint32_t index) const {
    host::aiAsyncRequest record{};
    record.inPrivateData = m_privateData;
    record.inSourceRec = requestFor(nullptr, index, nullptr);
    return m_entry(static_cast<std::int32_t>(host::aiInitiateAsyncRead), &record);
}

FrameAnswer AsyncClip::get(std::uint32_t index) const {
    host::PPixHand frame = nullptr;
    host::imSourceVideoRec record = requestFor(m_privateData, index, &frame);
    const std::int32_t result = m_entry(static_cast<std::int32_t>(host::aiGetFrame), &record);
    return answerOf(result, frame);
}

std::int32_t AsyncClip::flush() const {
    return m_entry(static_cast<std::int32_t>(host::aiFlush), m_privateData);
}

std::int32_t AsyncClip::close() const {
    return m_entry(static_cast<std::int32_t>(host::aiClose), m_privateData);
}

}  // namespace schedules::world
