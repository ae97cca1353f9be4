#include "simhost/clip.h"

#include <algorithm>
#include <cstring>
#include <limits>
#include <memory>
#include <utility>

#include "host/selectors.h"
#include "simhost/async_clip.h"
#include "simhost/frame_request.h"
#include "simhost/text.h"

namespace simhost {
namespace {

// An importer that offers formats for ever would keep the host busy for ever.
constexpr std::uint32_t kMostPixelFormats = 1000;
constexpr std::int32_t kMostStreams = 1000;
constexpr std::size_t kAudioGuardFloats = 16;
constexpr float kAudioGuard = 98765.0F;

}  // namespace

host::PrTime firstTickOfFrame(std::uint32_t index, std::int32_t rate, std::int32_t duration,
                              std::int64_t ticksPerSecond) noexcept {
    if (rate <= 0 || duration <= 0 || ticksPerSecond <= 0) {
        return 0;
    }
    constexpr std::int64_t kMost = std::numeric_limits<std::int64_t>::max();
    if (ticksPerSecond > kMost / duration) {
        return kMost;
    }
    // index × (whole + part / rate), so that no product leaves 64 bits before the result does.
    const std::int64_t ticks = ticksPerSecond * duration;
    const std::int64_t whole = ticks / rate;
    const std::int64_t part = ticks % rate;
    const std::int64_t rest = (part * std::int64_t{index} + rate - 1) / rate;
    if (index != 0 && whole > (kMost - rest) / std::int64_t{index}) {
        return kMost;
    }
    return whole * std::int64_t{index} + rest;
}

Clip::Clip(const Importer& importer, std::u16string path, OpenOptions options)
    : m_importer(&importer), m_path(std::move(path)), m_options(options), m_openAnswer(open(nullptr)) {}

Clip::Clip(const Importer& importer, std::string_view pathUtf8, OpenOptions options)
    : Clip(importer, toUtf16(pathUtf8), options) {}

Clip::Clip(Clip&& other) noexcept
    : m_importer(other.m_importer),
      m_path(std::move(other.m_path)),
      m_options(other.m_options),
      m_fileRef(other.m_fileRef),
      m_privateData(std::exchange(other.m_privateData, nullptr)),
      m_openAnswer(other.m_openAnswer),
      m_rate(other.m_rate),
      m_frameDuration(other.m_frameDuration) {}

Clip::~Clip() {
    (void)close();
}

Answer<host::imFileOpenRec8> Clip::open(void* privateData) {
    auto record = filledRecord<host::imFileOpenRec8>(m_importer->recordFill());
    record.fileinfo.filetype = 0;
    // A copy that dies with the call, so that a plug-in that keeps the address is found out.
    const auto path = std::make_unique<std::u16string>(m_path);
    record.fileinfo.filepath = path->c_str();
    record.fileinfo.fileref = host::kInvalidFileRef;
    record.privatedata = privateData;
    record.inReadWrite = m_options.readWrite;
    record.inImporterID = m_options.importerId;
    record.inStreamIdx = m_options.streamIndex;
    host::imFileRef fileRef = host::kInvalidFileRef;
    auto answer = m_importer->callWithRecord(host::imOpenFile8, &fileRef, record);
    if (answer.result == host::imNoErr) {
        if (answer.record.privatedata == nullptr) {
            host().addViolation({Rule::kFilesPrivateData, "imOpenFile8", "null with result 0",
                                 "imFileOpenRec8", "privatedata"});
        }
        if (fileRef != byValue(answer.record.fileinfo.fileref)) {
            host().addViolation({Rule::kFilesOneReference, "imOpenFile8",
                                 std::to_string(byValue(answer.record.fileinfo.fileref)) +
                                     " in the record, " + std::to_string(fileRef) + " at the first parameter",
                                 "imFileOpenRec8", "fileinfo.fileref"});
        }
        m_fileRef = fileRef;
        m_privateData = answer.record.privatedata;
    } else if (answer.record.privatedata != privateData) {
        host().addViolation({Rule::kFilesRefusal, "imOpenFile8",
                             "changed with result " + std::to_string(answer.result), "imFileOpenRec8",
                             "privatedata"});
    }
    return answer;
}

Answer<host::imFileInfoRec8> Clip::getInfo(std::int32_t streamIndex) {
    auto access = filledRecord<host::imFileAccessRec8>(m_importer->recordFill());
    access.filepath = m_path.c_str();
    access.fileref = m_fileRef;
    GuardedRecord guardedAccess(access);
    auto record = filledRecord<host::imFileInfoRec8>(m_importer->recordFill());
    record.vidInfo.importerID = m_options.importerId;
    record.privatedata = m_privateData;
    record.streamIdx = streamIndex;
    auto answer = m_importer->callWithRecord(host::imGetInfo8, guardedAccess.address(), record,
                                             recordSizes(host().profile().interfaceVersion).fileInfo);
    m_importer->checkBounds(guardedAccess, "imGetInfo8");
    if (answer.record.hasVideo == 1) {
        m_rate = answer.record.vidScale;
        m_frameDuration = answer.record.vidSampleSize;
    }
    return answer;
}

std::vector<StreamInfo> Clip::walkStreams() {
    std::vector<StreamInfo> out;
    for (std::int32_t index = 0; index < kMostStreams; ++index) {
        out.push_back({index, getInfo(index)});
        if (out.back().answer.result != host::imIterateStreams) {
            break;
        }
    }
    return out;
}

AnalysisText Clip::analysis(std::int32_t bufferSize, bool withBuffer, std::uint8_t fill) const {
    AnalysisText out;
    GuardedBytes buffer(static_cast<std::size_t>(std::max(bufferSize, 0)), fill);
    auto record = filledRecord<host::imAnalysisRec>(m_importer->recordFill());
    record.privatedata = m_privateData;
    record.buffersize = bufferSize;
    record.buffer = withBuffer ? reinterpret_cast<char*>(buffer.data()) : nullptr;
    out.answer = m_importer->callWithRecord(host::imAnalysis, reinterpret_cast<void*>(m_fileRef), record);
    m_importer->checkBuffer(buffer, "imAnalysis", "imAnalysisRec");
    out.result = out.answer.result;
    out.buffer.assign(buffer.data(), buffer.data() + buffer.size());
    const auto end = std::find(out.buffer.begin(), out.buffer.end(), std::uint8_t{0});
    out.text.assign(out.buffer.begin(), end);
    out.terminated = end != out.buffer.end();
    return out;
}

DataRates Clip::dataRates() const {
    auto record = filledRecord<host::imDataRateAnalysisRec>(m_importer->recordFill());
    record.privatedata = m_privateData;
    record.buffersize = 0;
    record.buffer = nullptr;
    const auto sizing =
        m_importer->callWithRecord(host::imDataRateAnalysis, reinterpret_cast<void*>(m_fileRef), record);
    if (sizing.result != host::imNoErr) {
        DataRates out;
        out.sizingResult = sizing.result;
        return out;
    }
    DataRates out = dataRates(sizing.record.buffersize);
    out.bufferSize = sizing.record.buffersize;
    return out;
}

DataRates Clip::dataRates(std::int32_t bufferSize) const {
    DataRates out;
    GuardedBytes buffer(static_cast<std::size_t>(std::max(bufferSize, 0)));
    auto record = filledRecord<host::imDataRateAnalysisRec>(m_importer->recordFill());
    record.privatedata = m_privateData;
    record.buffersize = bufferSize;
    record.buffer = reinterpret_cast<host::imDataSample*>(buffer.data());
    const auto answer =
        m_importer->callWithRecord(host::imDataRateAnalysis, reinterpret_cast<void*>(m_fileRef), record);
    m_importer->checkBuffer(buffer, "imDataRateAnalysis", "imDataRateAnalysisRec");
    out.bufferSize = bufferSize;
    out.result = answer.result;
    out.baseRate = answer.record.baserate;
    out.samples.resize(buffer.size() / sizeof(host::imDataSample));
    if (!out.samples.empty()) {
        std::memcpy(out.samples.data(), buffer.data(), out.samples.size() * sizeof(host::imDataSample));
    }
    return out;
}

Answer<host::imIndPixelFormatRec> Clip::pixelFormat(std::uint32_t index) const {
    auto record = filledRecord<host::imIndPixelFormatRec>(m_importer->recordFill());
    record.privatedata = m_privateData;
    GuardedRecord guarded(record);
    const std::int32_t result =
        m_importer->callWithNumber(host::imGetIndPixelFormat, index, guarded.address());
    m_importer->checkBounds(guarded, "imGetIndPixelFormat");
    return {result, record, guarded.value()};
}

PixelFormats Clip::pixelFormats() const {
    PixelFormats out;
    for (std::uint32_t index = 0; index < kMostPixelFormats; ++index) {
        const auto answer = pixelFormat(index);
        out.lastResult = answer.result;
        if (answer.result != host::imNoErr) {
            break;
        }
        out.formats.push_back(byValue(answer.record.outPixelFormat));
    }
    return out;
}

FrameAnswer Clip::getSourceVideo(host::PrTime time, std::span<const host::imFrameFormat> formats) const {
    const auto record = frameRequest(*m_importer, m_privateData, time, formats);
    return requestFrame(*m_importer, record, "imGetSourceVideo", [this](void* address) {
        return m_importer->call(host::imGetSourceVideo, reinterpret_cast<void*>(m_fileRef), address);
    });
}

FrameAnswer Clip::getFrame(std::uint32_t index, std::uint32_t pixelFormat) const {
    const host::imFrameFormat formats[] = {{0, 0, pixelFormat}};
    return getSourceVideo(frameTime(index), formats);
}

host::PrTime Clip::frameTime(std::uint32_t index) const {
    return firstTickOfFrame(index, m_rate, m_frameDuration, host().ticksPerSecond());
}

AudioAnswer Clip::importAudio(std::int64_t position, std::uint32_t size, std::uint32_t channels,
                              float prefill) const {
    AudioAnswer out;
    out.channels.assign(channels, std::vector<float>(std::size_t{size} + kAudioGuardFloats, prefill));
    std::vector<float*> pointers;
    for (std::vector<float>& channel : out.channels) {
        std::fill(channel.begin() + size, channel.end(), kAudioGuard);
        pointers.push_back(channel.data());
    }
    auto record = filledRecord<host::imImportAudioRec7>(m_importer->recordFill());
    record.position = position;
    record.size = size;
    record.buffer = pointers.data();
    record.privateData = m_privateData;
    out.answer = m_importer->callWithRecord(host::imImportAudio7, reinterpret_cast<void*>(m_fileRef), record);
    out.result = out.answer.result;
    for (std::vector<float>& channel : out.channels) {
        if (std::any_of(channel.begin() + size, channel.end(), [](float f) { return f != kAudioGuard; })) {
            host().addViolation({Rule::kSoundBounds, "imImportAudio7",
                                 "floats written behind the " + std::to_string(size) + " of a channel",
                                 "imImportAudioRec7", "buffer"});
        }
        channel.resize(size);
    }
    return out;
}

Answer<host::imGetAudioChannelLayoutRec> Clip::channelLayout(std::uint8_t fill) const {
    auto record = filledRecord<host::imGetAudioChannelLayoutRec>(fill);
    record.inPrivateData = m_privateData;
    return m_importer->callWithRecord(host::imGetAudioChannelLayout, reinterpret_cast<void*>(m_fileRef),
                                      record);
}

std::int32_t Clip::letGo(std::int32_t selector) {
    const std::int32_t result = m_importer->call(selector, &m_fileRef, m_privateData);
    if (m_fileRef != host::kInvalidFileRef) {
        host().addViolation({Rule::kFilesReferenceCleared,
                             host::selectorName(static_cast<std::uint32_t>(selector)),
                             std::to_string(m_fileRef), "", "file reference"});
        m_fileRef = host::kInvalidFileRef;
    }
    return result;
}

std::int32_t Clip::quiet() {
    return letGo(host::imQuietFile);
}

Answer<host::imFileOpenRec8> Clip::reopen() {
    return open(m_privateData);
}

std::int32_t Clip::close() {
    if (!isOpen()) {
        return host::imNoErr;
    }
    const std::int32_t result = letGo(host::imCloseFile);
    m_privateData = nullptr;
    return result;
}

AsyncClip Clip::createAsync() const {
    return AsyncClip(*this);
}

}  // namespace simhost
