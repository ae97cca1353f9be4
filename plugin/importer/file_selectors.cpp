#include "importer/file_selectors.h"

#include <algorithm>
#include <cstdio>
#include <memory>
#include <optional>
#include <string>
#include <utility>
#include <vector>

#include "avi/avi_stream.h"
#include "diag/format.h"
#include "diag/log.h"
#include "host/four_char_codes.h"
#include "host/pixel_formats.h"
#include "host/record_values.h"
#include "host/result_codes.h"
#include "importer/file_info.h"
#include "importer/importer_calls.h"

namespace orvantis {

host::ImporterResult openFile8(const host::imStdParms* stdParms, host::imFileRef* fileRef,
                               host::imFileOpenRec8& record) {
    // A quieted file comes back with its importer.
    std::unique_ptr<OrvantisImporter> created;
    std::optional<ImporterCall> call;
    void* const privateData = record.privatedata;
    if (privateData == nullptr) {
        created = std::make_unique<OrvantisImporter>(stdParms);
    } else {
        call.emplace(privateData, ImporterCall::Kind::kExclusive);
    }
    OrvantisImporter& importer = created ? *created : call->importer();

    importer.logFile();
    if (!importer.open(record.fileinfo.filepath, record.inStreamIdx, record.inReadWrite)) {
        return host::ImporterResult::imBadFile;
    }

    const auto osFile = reinterpret_cast<host::imFileRef>(importer.file().osHandle());
    if (created) {
        record.privatedata = publishImporter(std::move(created));  // the host's until imCloseFile
    }
    if (fileRef != nullptr) {
        *fileRef = osFile;
    }
    record.fileinfo.fileref = osFile;
    record.fileinfo.filetype = static_cast<std::int32_t>(host::kFileTypeAviv);
    return host::ImporterResult::imNoErr;
}

host::ImporterResult getInfo8(host::imFileInfoRec8& record) {
    const ImporterCall call(record.privatedata, ImporterCall::Kind::kExclusive);
    OrvantisImporter& importer = call.importer();
    importer.logFile();
    const std::int32_t streamIndex = record.streamIdx;
    logMessage("fileInfoRec8P->streamIdx: %d", streamIndex);

    const host::ImporterResult result = importer.parse(streamIndex);
    if (result != host::ImporterResult::imNoErr && result != host::ImporterResult::imIterateStreams &&
        result != host::ImporterResult::imBadStreamIndex) {
        return result;
    }

    importer.setImporterId(record.vidInfo.importerID);
    importer.suites();
    record.accessModes = host::kAccessModeSeparateSequentialAudio;
    record.hasDataRate = 1;

    const VideoInfo* const video = importer.videoInfo();
    record.hasVideo = video != nullptr ? 1 : 0;
    if (video != nullptr) {
        fillVideoFields(record, *video);
    }

    const AudioInfo* const audio = importer.audioInfo();
    record.hasAudio = audio != nullptr ? 1 : 0;
    if (audio != nullptr) {
        audio->fillFileInfo(record);
    }
    return result;
}

host::ImporterResult analysis(host::imAnalysisRec& record) {
    const ImporterCall call(record.privatedata);
    OrvantisImporter& importer = call.importer();
    importer.logFile();
    const std::int32_t bufferSize = record.buffersize;
    logMessage("buffersize: %d", bufferSize);

    const std::string text = importer.describeStreams();
    if (record.buffer != nullptr && bufferSize > 0) {
        static_cast<void>(
            std::snprintf(record.buffer, static_cast<std::size_t>(bufferSize), "%s", text.c_str()));
    }
    return host::ImporterResult::imNoErr;
}

host::ImporterResult dataRateAnalysis(host::imDataRateAnalysisRec& record) {
    const ImporterCall call(record.privatedata);
    const OrvantisImporter& importer = call.importer();
    importer.logFile();
    const std::int32_t bufferSize = record.buffersize;
    logMessage("buffersize: %d", bufferSize);

    const VideoInfo& video = importer.requireVideoInfo();
    host::imDataSample* const samples = record.buffer;
    if (samples == nullptr) {
        record.buffersize = static_cast<std::int32_t>(static_cast<std::int64_t>(sizeof(host::imDataSample)) *
                                                      video.numFrames());
        return host::ImporterResult::imNoErr;
    }
    const ChunkList& frames = video.stream().entries();
    const std::size_t room =
        bufferSize > 0 ? static_cast<std::size_t>(bufferSize) / sizeof(host::imDataSample) : 0;
    const std::size_t count = std::min(frames.size(), room);
    const std::uint32_t duration =
        static_cast<std::uint32_t>(video.frameRate().denominator) | host::kDataSampleKeyFrame;
    for (std::size_t i = 0; i < count; ++i) {
        samples[i] = {duration, frames.placeOf(i).size};
    }
    record.baserate = 0;
    return host::ImporterResult::imNoErr;
}

host::ImporterResult getIndPixelFormat(std::uint32_t index, host::imIndPixelFormatRec& record) {
    const ImporterCall call(record.privatedata);
    const OrvantisImporter& importer = call.importer();
    importer.logFile();
    const std::vector<FormatInfo>& formats = importer.requireVideoInfo().decodeFormats();
    if (index >= formats.size()) {
        return host::ImporterResult::imBadFormatIndex;
    }

    const std::uint32_t pixelFormat = formats[index].pixelFormat;
    record.outPixelFormat = pixelFormat;
    logMessage("Adding pixel format: %s [%s]", host::pixelFormatName(pixelFormat),
               fourccToString(pixelFormat).c_str());
    return host::ImporterResult::imNoErr;
}

host::ImporterResult quietFile(host::imFileRef* fileRef, void* privateData) {
    if (privateData == nullptr) {
        return host::ImporterResult::imNoErr;  // nothing was opened
    }
    quietImporter(privateData);
    if (fileRef != nullptr) {
        *fileRef = host::kInvalidFileRef;
    }
    return host::ImporterResult::imNoErr;
}

host::ImporterResult closeFile(host::imFileRef* fileRef, void* privateData) {
    if (privateData == nullptr) {
        return host::ImporterResult::imNoErr;
    }
    closeImporter(privateData);
    if (fileRef != nullptr) {
        *fileRef = host::kInvalidFileRef;
    }
    return host::ImporterResult::imNoErr;
}

}  // namespace orvantis
