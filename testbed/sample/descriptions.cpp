#include "descriptions.h"

#include <algorithm>
#include <cstring>

#include "host/audio_codes.h"
#include "host/pixel_formats.h"
#include "host/record_values.h"
#include "host/result_codes.h"

namespace sample {

// ---- what the importer is ----

std::int32_t init(host::imImportInfoRec* record) {
    if (record != nullptr) {
        record->avoidAudioConform = host::kPrTrue;  // sound is read as fast as it is played
    }
    return host::imNoErr;
}

std::int32_t getIndFormat(std::uint32_t index, host::imIndFormatRec* record) {
    if (index != 0 || record == nullptr) {
        return host::imBadFormatIndex;  // ends the host's list
    }
    record->filetype = kFileType;
    record->canWriteTimecode = host::kPrFalse;
    std::memcpy(record->FormatName, "Plain Clip", sizeof("Plain Clip"));
    std::memcpy(record->FormatShortName, "Plain Clip", sizeof("Plain Clip"));
    std::memcpy(record->PlatformExtension, "plainclip\0",
                sizeof("plainclip\0"));  // an empty name ends the list
    return host::imNoErr;
}

// The names come as one block of the host's memory, which the host frees.
std::int32_t getSubTypeNames(const host::imStdParms* parms, void** place) {
    const host::piSuites* const suites = parms != nullptr ? parms->piSuites : nullptr;
    if (place == nullptr || suites == nullptr || suites->memFuncs == nullptr) {
        return host::imOtherErr;
    }
    host::imSubTypeDescriptionRec row{};
    row.subType = kFileType;
    std::memcpy(row.subTypeName, u"Plain BGRA", sizeof(u"Plain BGRA"));
    void* const block = suites->memFuncs->newPtr(sizeof(row));
    if (block == nullptr) {
        return host::imMemErr;
    }
    std::memcpy(block, &row, sizeof(row));
    *place = block;
    return host::imNoErr;
}

// ---- what is in it ----

std::int32_t getInfo(const Clip& clip, host::imFileInfoRec8& record) {
    if (record.streamIdx != 0) {
        return host::imBadStreamIndex;
    }
    const PlainHeader& header = clip.header;
    record.hasVideo = 1;
    record.vidInfo.imageWidth = static_cast<std::int32_t>(header.width);
    record.vidInfo.imageHeight = static_cast<std::int32_t>(header.height);
    record.vidInfo.depth = 32;
    record.vidInfo.subType = kFileType;
    record.vidInfo.fieldType = host::kFieldTypeProgressive;
    record.vidInfo.alphaType = host::kAlphaTypeStraight;
    record.vidInfo.pixelAspectNum = 1;
    record.vidInfo.pixelAspectDen = 1;
    record.vidInfo.supportsAsyncIO = host::kPrTrue;
    record.vidInfo.supportsGetSourceVideo = host::kPrTrue;
    record.vidInfo.hasPulldown = host::kPrFalse;
    record.vidScale = static_cast<std::int32_t>(header.rate);
    record.vidSampleSize = static_cast<std::int32_t>(header.duration);
    record.vidDuration = static_cast<std::int32_t>(header.frames * header.duration);
    record.hasAudio = header.channels != 0 ? 1 : 0;
    if (header.channels != 0) {
        record.audInfo.numChannels = static_cast<std::int32_t>(header.channels);
        record.audInfo.sampleRate = static_cast<float>(header.sampleRate);
        record.audInfo.sampleType = host::kPrAudioSampleType_32BitFloat;
        record.audDuration = header.sampleFrames;
    }
    record.accessModes = host::kAccessModeSeparateSequentialAudio;
    record.hasDataRate = 1;
    return host::imNoErr;
}

std::int32_t getIndPixelFormat(std::uint32_t index, host::imIndPixelFormatRec& record) {
    if (index != 0) {
        return host::imBadFormatIndex;
    }
    record.outPixelFormat = host::PrPixelFormat_BGRA_4444_8u;
    return host::imNoErr;
}

// The text of the host's Properties window: cut to its buffer, and ended there.
std::int32_t analysis(host::imAnalysisRec& record) {
    constexpr char kText[] = "Plain Clip: frames and sound as they are";
    if (record.buffer != nullptr && record.buffersize > 0) {
        const std::size_t bytes = std::min(sizeof(kText), static_cast<std::size_t>(record.buffersize));
        std::memcpy(record.buffer, kText, bytes);
        record.buffer[bytes - 1] = '\0';
    }
    return host::imNoErr;
}

// Called without a buffer for the size of one, then with it.
std::int32_t dataRates(const Clip& clip, host::imDataRateAnalysisRec& record) {
    constexpr std::size_t kBytes = sizeof(host::imDataSample);
    if (record.buffer == nullptr) {
        record.buffersize =
            static_cast<std::int32_t>(std::min<std::uint64_t>(kBytes * clip.header.frames, 0x7FFF'FFF8));
        return host::imNoErr;
    }
    const auto size = static_cast<std::size_t>(std::max(record.buffersize, std::int32_t{0}));
    const host::imDataSample one{clip.header.duration | host::kDataSampleKeyFrame,
                                 static_cast<std::uint32_t>(clip.header.frameBytes())};
    for (std::size_t i = 0; i < std::min<std::size_t>(size / kBytes, clip.header.frames); ++i) {
        std::memcpy(record.buffer + i, &one, kBytes);
    }
    record.baserate = 0;
    return host::imNoErr;
}

std::int32_t channelLayout(const Clip& clip, host::imGetAudioChannelLayoutRec& record) {
    if (clip.header.channels == 2) {
        record.outChannelLabels[0] = host::kPrAudioChannelLabel_FrontLeft;
        record.outChannelLabels[1] = host::kPrAudioChannelLabel_FrontRight;
    } else if (clip.header.channels == 1) {
        record.outChannelLabels[0] = host::kPrAudioChannelLabel_FrontCenter;
    }
    return host::imNoErr;
}

}  // namespace sample
