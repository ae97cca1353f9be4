#include "tool/bench/bench_clip.h"

#include <cstring>
#include <memory>

#include "host/record_values.h"
#include "host/result_codes.h"
#include "host/selectors.h"
#include "simhost/clip.h"
#include "simhost/text.h"
#include "tool/bench/bench_host.h"
#include "tool/shared/base/tool_error.h"

namespace simhost::tool {
namespace {

template <class Record>
Record clearedRecord() noexcept {
    Record record;
    std::memset(static_cast<void*>(&record), 0, sizeof(record));
    return record;
}

void require(std::int32_t result, const char* call) {
    if (result != 0) {
        throw ToolError(kFailed, std::string(call) + ": result " + std::to_string(result));
    }
}

}  // namespace

BenchImporter::BenchImporter(host::ImportEntryFn entry) : m_entry(entry), m_stdParms(benchStdParms()) {
    auto record = clearedRecord<host::imImportInfoRec>();
    require(call(host::imInit, &record, nullptr), "imInit");
}

BenchImporter::~BenchImporter() {
    (void)call(host::imShutdown, nullptr, nullptr);
}

std::int32_t BenchImporter::call(std::int32_t selector, void* param1, void* param2) const {
    return m_entry(selector, &m_stdParms, param1, param2);
}

BenchClip::BenchClip(const BenchImporter& importer, const std::string& pathUtf8)
    : m_importer(&importer), m_path(toUtf16(pathUtf8)), m_fileRef(host::kInvalidFileRef) {
    auto record = clearedRecord<host::imFileOpenRec8>();
    record.fileinfo.filepath = m_path.c_str();
    record.fileinfo.fileref = host::kInvalidFileRef;
    record.inReadWrite = host::kOpenForReading;
    host::imFileRef fileRef = host::kInvalidFileRef;
    require(importer.call(host::imOpenFile8, &fileRef, &record), "imOpenFile8");
    m_privateData = record.privatedata;
    m_fileRef = fileRef;
}

BenchClip::~BenchClip() {
    (void)m_importer->call(host::imCloseFile, &m_fileRef, m_privateData);
}

std::int32_t BenchClip::tryDescribe() {
    auto record = clearedRecord<host::imFileInfoRec8>();
    record.privatedata = m_privateData;
    const std::int32_t result = m_importer->call(host::imGetInfo8, nullptr, &record);
    m_rate = record.vidScale;
    m_frameDuration = record.vidSampleSize;
    m_frames = record.hasVideo != 0 && m_frameDuration > 0
                   ? static_cast<std::uint32_t>(record.vidDuration / m_frameDuration)
                   : 0;
    m_audioChannels = record.hasAudio != 0 ? static_cast<std::uint32_t>(record.audInfo.numChannels) : 0;
    m_audioRate = record.hasAudio != 0 ? static_cast<std::uint32_t>(record.audInfo.sampleRate) : 0;
    m_width = record.vidInfo.imageWidth;
    m_height = record.vidInfo.imageHeight;
    return result;
}

void BenchClip::describe() {
    const std::int32_t result = tryDescribe();
    if (result != host::imIterateStreams) {
        require(result, "imGetInfo8");
    }
    auto record = clearedRecord<host::imIndPixelFormatRec>();
    record.privatedata = m_privateData;
    require(m_importer->call(host::imGetIndPixelFormat, nullptr, &record), "imGetIndPixelFormat");
    m_format = {0, 0, record.outPixelFormat};
}

void BenchClip::fillRequest(host::imSourceVideoRec& record, std::uint32_t index,
                            host::PPixHand* frame) const {
    std::memset(static_cast<void*>(&record), 0, sizeof(record));
    record.inPrivateData = m_privateData;
    record.inFrameTime = firstTickOfFrame(index, m_rate, m_frameDuration, kBenchTicks);
    record.inFrameFormats = &m_format;
    record.inNumFrameFormats = 1;
    record.outFrame = frame;
}

void BenchClip::frame(std::uint32_t index) const {
    host::PPixHand frame = nullptr;
    host::imSourceVideoRec record;
    fillRequest(record, index, &frame);
    require(m_importer->call(host::imGetSourceVideo, nullptr, &record), "imGetSourceVideo");
    benchPPixSuite().Dispose(frame);
}

void BenchClip::quiet() {
    require(m_importer->call(host::imQuietFile, &m_fileRef, m_privateData), "imQuietFile");
}

void BenchClip::audio(std::int64_t position, std::uint32_t size, float** buffers) const {
    auto record = clearedRecord<host::imImportAudioRec7>();
    record.position = position;
    record.size = size;
    record.buffer = buffers;
    record.privateData = m_privateData;
    require(m_importer->call(host::imImportAudio7, nullptr, &record), "imImportAudio7");
}

BenchAsync::BenchAsync(const BenchClip& clip) : m_clip(&clip) {
    auto record = clearedRecord<host::imAsyncImporterCreationRec>();
    record.inPrivateData = clip.privateData();
    require(clip.importer().call(host::imCreateAsyncImporter, &record, nullptr), "imCreateAsyncImporter");
    m_entry = record.outAsyncEntry;
    m_privateData = record.outAsyncPrivateData;
}

BenchAsync::~BenchAsync() {
    (void)m_entry(host::aiFlush, m_privateData);
    (void)m_entry(host::aiClose, m_privateData);
}

void BenchAsync::initiate(std::uint32_t index) const {
    host::aiAsyncRequest request;
    std::memset(static_cast<void*>(&request), 0, sizeof(request));
    host::imSourceVideoRec source;
    m_clip->fillRequest(source, index, nullptr);
    request.inPrivateData = m_privateData;
    request.inSourceRec = source;
    require(m_entry(host::aiInitiateAsyncRead, &request), "aiInitiateAsyncRead");
}

void BenchAsync::flush() const {
    require(m_entry(host::aiFlush, m_privateData), "aiFlush");
}

std::uint64_t BenchAsync::frame(std::uint32_t index) const {
    host::PPixHand frame = nullptr;
    host::imSourceVideoRec record;
    m_clip->fillRequest(record, index, &frame);
    record.inPrivateData = m_privateData;
    require(m_entry(host::aiGetFrame, &record), "aiGetFrame");
    const std::uint64_t serial = benchFrameSerial(frame);
    benchPPixSuite().Dispose(frame);
    return serial;
}

}  // namespace simhost::tool
