#include "sample_importer.h"

#include <algorithm>
#include <cstring>
#include <exception>
#include <mutex>
#include <shared_mutex>

#include "descriptions.h"
#include "host/audio_codes.h"
#include "host/pixel_formats.h"
#include "host/record_values.h"
#include "host/result_codes.h"
#include "host/selectors.h"
#include "pictures_and_sound.h"

namespace sample {
namespace {

// ---- the life of a file ----

// On the first open the host gives null, on every later one what it was given then.
std::int32_t openFile(const host::imStdParms* parms, host::imFileRef* reference,
                      host::imFileOpenRec8* record) {
    if (record == nullptr || record->fileinfo.filepath == nullptr) {
        return host::imBadFile;
    }
    std::shared_ptr<Clip> clip = findClip(record->privatedata);
    const bool isNew = record->privatedata == nullptr;
    if (isNew) {
        clip = std::make_shared<Clip>(basicSuite(parms));
    }
    if (clip == nullptr || !clip->hasSuites()) {
        return host::imOtherErr;
    }
    const std::unique_lock alone(clip->calls);
    if (!clip->file.open(record->fileinfo.filepath) || !readHeader(clip->file, clip->header)) {
        clip->file.close();  // the host asks the next importer, which finds the file free
        return host::imBadFile;
    }
    if (isNew) {
        addClip(clip);
        record->privatedata = clip.get();
    }
    record->fileinfo.filetype = kFileType;
    record->fileinfo.fileref = clip->file.handle();
    if (reference != nullptr) {
        *reference = clip->file.handle();
    }
    return host::imNoErr;
}

// Quiet: the file is let go of, and the clip waits to be opened again.
std::int32_t letGo(host::imFileRef* reference, const void* privateData, bool forGood) {
    if (const std::shared_ptr<Clip> clip = findClip(privateData)) {
        if (forGood) {
            removeClip(privateData);
        }
        const std::unique_lock alone(clip->calls);  // waits for the calls that still read
        clip->file.close();
    }
    if (reference != nullptr) {
        *reference = host::kInvalidFileRef;
    }
    return host::imNoErr;
}

// ---- pictures and sound (pictures_and_sound.h makes them) ----

std::int32_t getSourceVideo(const Clip& clip, const host::imSourceVideoRec& request) {
    host::PPixHand frame = nullptr;
    if (request.outFrame == nullptr) {
        return host::imOtherErr;
    }
    const std::int32_t result = makeFrame(clip, request, frame);
    if (result == host::imNoErr) {
        *request.outFrame = frame;  // the host's from here on
    }
    return result;
}

// ---- the asynchronous importer ----

// It reads when a frame is fetched, so that nothing is ever under way for which a flush or a close would have
// to wait.
struct AsyncImporter {
    std::weak_ptr<Clip> clip;
};

std::int32_t createAsync(const std::shared_ptr<Clip>& clip, host::imAsyncImporterCreationRec& record) {
    record.outAsyncPrivateData = new AsyncImporter{clip};
    record.outAsyncEntry = asyncEntry;
    return host::imNoErr;
}

std::int32_t fetchFrame(const host::imSourceVideoRec& request) {
    const auto* const importer = static_cast<const AsyncImporter*>(request.inPrivateData);
    const std::shared_ptr<Clip> clip = importer != nullptr ? importer->clip.lock() : nullptr;
    if (clip == nullptr) {
        return host::aiFrameNotFound;
    }
    const std::shared_lock reading(clip->calls);
    return getSourceVideo(*clip, request) == host::imNoErr ? host::aiNoError : host::aiFrameNotFound;
}

// ---- which selector goes where ----

// Where a record names the open file. By value: records are packed, so no reference to one of their fields
// may be had.
template <class Record>
const void* privateDataOf(const Record& record) {
    if constexpr (requires { record.privatedata; }) {
        return record.privatedata;
    } else if constexpr (requires { record.privateData; }) {
        return record.privateData;
    } else {
        return record.inPrivateData;
    }
}

// Calls that read an open file go side by side.
template <class Record, class Handler>
std::int32_t onClip(void* param, Handler handler) {
    auto* const record = static_cast<Record*>(param);
    const std::shared_ptr<Clip> clip = record != nullptr ? findClip(privateDataOf(*record)) : nullptr;
    if (clip == nullptr) {
        return host::imOtherErr;
    }
    const std::shared_lock reading(clip->calls);
    return handler(clip, *record);
}

// Some selectors carry a number in their pointer, in its low 32 bits.
std::uint32_t number(void* param) {
    return static_cast<std::uint32_t>(reinterpret_cast<std::uintptr_t>(param));
}

std::int32_t dispatch(std::int32_t selector, const host::imStdParms* parms, void* param1, void* param2) {
    switch (selector) {
        case host::imInit:
            return init(static_cast<host::imImportInfoRec*>(param1));
        case host::imShutdown:
            removeAllClips();
            return host::imNoErr;
        case host::imGetSupports8:
            return host::malSupports8;  // the host uses the records that end in 8
        case host::imGetIndFormat:
            return getIndFormat(number(param1), static_cast<host::imIndFormatRec*>(param2));
        case host::imGetSubTypeNames:
            return getSubTypeNames(parms, static_cast<void**>(param2));
        case host::imOpenFile8:
            return openFile(parms, static_cast<host::imFileRef*>(param1),
                            static_cast<host::imFileOpenRec8*>(param2));
        case host::imQuietFile:
            return letGo(static_cast<host::imFileRef*>(param1), param2, false);
        case host::imCloseFile:
            return letGo(static_cast<host::imFileRef*>(param1), param2, true);
        case host::imGetInfo8:
            return onClip<host::imFileInfoRec8>(
                param2, [](auto& clip, auto& record) { return getInfo(*clip, record); });
        case host::imGetIndPixelFormat:
            return onClip<host::imIndPixelFormatRec>(
                param2, [param1](auto&, auto& record) { return getIndPixelFormat(number(param1), record); });
        case host::imAnalysis:
            return onClip<host::imAnalysisRec>(param2, [](auto&, auto& record) { return analysis(record); });
        case host::imDataRateAnalysis:
            return onClip<host::imDataRateAnalysisRec>(
                param2, [](auto& clip, auto& record) { return dataRates(*clip, record); });
        case host::imGetAudioChannelLayout:
            return onClip<host::imGetAudioChannelLayoutRec>(
                param2, [](auto& clip, auto& record) { return channelLayout(*clip, record); });
        case host::imGetSourceVideo:
            return onClip<host::imSourceVideoRec>(
                param2, [](auto& clip, auto& record) { return getSourceVideo(*clip, record); });
        case host::imImportAudio7:
            return onClip<host::imImportAudioRec7>(
                param2, [](auto& clip, auto& record) { return importAudio(*clip, record); });
        case host::imCreateAsyncImporter:
            return onClip<host::imAsyncImporterCreationRec>(
                param1, [](auto& clip, auto& record) { return createAsync(clip, record); });
        default:
            return host::imUnsupported;  // also what the host asks next year
    }
}

}  // namespace

std::int32_t importEntry(std::int32_t selector, host::imStdParms* parms, void* param1,
                         void* param2) noexcept {
    try {
        return dispatch(selector, parms, param1, param2);
    } catch (const std::exception&) {  // memory, in practice
        return host::imMemErr;
    }
}

std::int32_t asyncEntry(std::int32_t selector, void* param) noexcept {
    switch (selector) {
        case host::aiInitiateAsyncRead:
        case host::aiFlush:
            return host::aiNoError;
        case host::aiGetFrame:
            try {
                return param != nullptr ? fetchFrame(*static_cast<host::imSourceVideoRec*>(param))
                                        : host::aiFrameNotFound;
            } catch (const std::exception&) {
                return host::aiUnknownError;
            }
        case host::aiClose:
            delete static_cast<AsyncImporter*>(param);
            return host::aiNoError;
        default:
            return host::aiUnsupported;
    }
}

}  // namespace sample
