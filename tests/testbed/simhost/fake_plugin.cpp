#include "fake_plugin.h"

#include <cstdlib>
#include <cstring>
#include <memory>

#include "host/four_char_codes.h"
#include "host/pixel_formats.h"
#include "host/record_values.h"
#include "host/result_codes.h"
#include "host/selectors.h"
#include "simhost/guarded_record.h"
#include "simhost/pixel_layout.h"

namespace simhost::test {
namespace {

FakePlugin* g_fake = nullptr;

std::int32_t entry(std::int32_t selector, host::imStdParms* parms, void* param1, void* param2) {
    const auto found = g_fake->on.find(selector);
    return found == g_fake->on.end() ? host::imUnsupported : found->second(parms, param1, param2);
}

std::int32_t asyncEntry(std::int32_t selector, void* param) {
    const auto found = g_fake->onAsync.find(selector);
    return found == g_fake->onAsync.end() ? host::aiUnsupported : found->second(param);
}

constexpr std::int32_t kWidth = 4;
constexpr std::int32_t kHeight = 3;
constexpr std::int32_t kFrames = 10;
constexpr std::int32_t kChannels = 2;
constexpr std::uint32_t kFormats[] = {host::PrPixelFormat_BGRA_4444_8u, host::PrPixelFormat_V210_422_10u_709};

// What the fake keeps for one file.
struct File {
    const host::SPBasicSuite* basic = nullptr;
    const host::PPixCreatorSuite* creator = nullptr;
    const host::PPixSuite* ppix = nullptr;
    const host::TimeSuite* time = nullptr;
    std::int64_t audioPosition = 0;

    explicit File(const host::SPBasicSuite* suite) : basic(suite) {
        creator = acquire<host::PPixCreatorSuite>(basic, host::kPPixCreatorSuiteName,
                                                  host::kPPixCreatorSuiteVersion);
        ppix = acquire<host::PPixSuite>(basic, host::kPPixSuiteName, host::kPPixSuiteVersion);
        time = acquire<host::TimeSuite>(basic, host::kTimeSuiteName, host::kTimeSuiteVersion);
    }
    File(const File&) = delete;
    File& operator=(const File&) = delete;
    ~File() {
        if (time != nullptr) {
            (void)basic->ReleaseSuite(host::kTimeSuiteName, host::kTimeSuiteVersion);
        }
        if (ppix != nullptr) {
            (void)basic->ReleaseSuite(host::kPPixSuiteName, host::kPPixSuiteVersion);
        }
        if (creator != nullptr) {
            (void)basic->ReleaseSuite(host::kPPixCreatorSuiteName, host::kPPixCreatorSuiteVersion);
        }
    }

    std::int32_t frame(const host::imSourceVideoRec& request) const {
        const host::imFrameFormat* formats = request.inFrameFormats;
        if (formats == nullptr || creator == nullptr || ppix == nullptr || time == nullptr) {
            return host::imOtherErr;
        }
        host::PrTime ticks = 0;
        if (time->GetTicksPerSecond(&ticks) != 0 || ticks < 25) {
            return host::imFrameNotFound;
        }
        const std::int64_t index = request.inFrameTime < 0 ? -1 : request.inFrameTime / (ticks / 25);
        if (index < 0 || index >= kFrames) {
            return host::imFrameNotFound;
        }
        host::PPixHand made = nullptr;
        const host::prRect bounds{0, 0, kWidth, kHeight};
        const std::uint32_t format = formats[0].inPixelFormat;
        if (creator->CreatePPix(&made, host::kBufferAccessWriteOnly, format, &bounds) != 0) {
            return host::imOtherErr;
        }
        char* pixels = nullptr;
        std::int32_t rowBytes = 0;
        if (ppix->GetPixels(made, host::kBufferAccessWriteOnly, &pixels) != 0 ||
            ppix->GetRowBytes(made, &rowBytes) != 0) {
            (void)ppix->Dispose(made);
            return host::imOtherErr;
        }
        const auto bytes = static_cast<std::size_t>(minimalRowBytes(*findPixelLayout(format), kWidth));
        for (std::int32_t y = 0; y < kHeight; ++y) {
            std::memset(pixels + std::ptrdiff_t{y} * rowBytes, static_cast<int>(16 * index + 1), bytes);
        }
        *request.outFrame = made;
        return host::imNoErr;
    }
};

template <class Record>
Record* at(void* param) {
    return static_cast<Record*>(param);
}

File* fileOf(void* privateData) {
    return static_cast<File*>(privateData);
}

void describe(host::imFileInfoRec8* record) {
    record->hasVideo = 1;
    record->hasAudio = 1;
    record->vidInfo.imageWidth = kWidth;
    record->vidInfo.imageHeight = kHeight;
    record->vidScale = 25;
    record->vidSampleSize = 1;
    record->vidDuration = kFrames;
    record->audInfo.numChannels = kChannels;
    record->audInfo.sampleRate = 48000.0F;
    record->audInfo.sampleType = 6;
    record->audDuration = 5000;
}

std::int32_t readAudio(host::imImportAudioRec7* record) {
    File* file = fileOf(record->privateData);
    const std::int64_t start = record->position < 0 ? file->audioPosition : std::int64_t{record->position};
    float** buffers = record->buffer;
    for (std::int32_t channel = 0; channel < kChannels; ++channel) {
        for (std::uint32_t i = 0; i < record->size; ++i) {
            buffers[channel][i] = static_cast<float>(start + i) + static_cast<float>(channel) / 2.0F;
        }
    }
    file->audioPosition = start + record->size;
    return host::imNoErr;
}

}  // namespace

FakePlugin::FakePlugin() : plugin(&entry) {
    if (g_fake != nullptr) {
        std::abort();
    }
    g_fake = this;
}

FakePlugin::~FakePlugin() {
    g_fake = nullptr;
}

host::AsyncImportEntryFn fakeAsyncEntry() noexcept {
    return &asyncEntry;
}

host::SPBasicSuite* basicSuiteOf(const host::imStdParms* parms) {
    const host::piSuites* tables = parms->piSuites;
    const host::UtilityFunctions* utilities = tables->utilFuncs;
    return utilities->getSPBasicSuite();
}

void makeWellBehaved(FakePlugin& fake) {
    fake.on[host::imInit] = [](auto*, void*, void*) { return host::imNoErr; };
    fake.on[host::imShutdown] = [](auto*, void*, void*) { return host::imNoErr; };
    fake.on[host::imGetSupports8] = [](auto*, void*, void*) { return host::malSupports8; };
    fake.on[host::imGetIndFormat] = [](auto*, void* index, void*) {
        return index == nullptr ? host::imNoErr : host::imBadFormatIndex;
    };
    fake.on[host::imOpenFile8] = [](auto* parms, void* fileRef, void* record) {
        auto* open = at<host::imFileOpenRec8>(record);
        if (open->privatedata == nullptr) {
            open->privatedata = new File(basicSuiteOf(parms));
        }
        open->fileinfo.fileref = 77;
        *at<host::imFileRef>(fileRef) = 77;
        return host::imNoErr;
    };
    fake.on[host::imQuietFile] = [](auto*, void* fileRef, void*) {
        *at<host::imFileRef>(fileRef) = host::kInvalidFileRef;
        return host::imNoErr;
    };
    fake.on[host::imCloseFile] = [](auto*, void* fileRef, void* file) {
        *at<host::imFileRef>(fileRef) = host::kInvalidFileRef;
        delete fileOf(file);
        return host::imNoErr;
    };
    fake.on[host::imGetInfo8] = [](auto*, void*, void* record) {
        describe(at<host::imFileInfoRec8>(record));
        return host::imNoErr;
    };
    fake.on[host::imGetIndPixelFormat] = [](auto*, void* index, void* record) {
        const auto i = reinterpret_cast<std::uintptr_t>(index);
        if (i >= std::size(kFormats)) {
            return host::imBadFormatIndex;
        }
        at<host::imIndPixelFormatRec>(record)->outPixelFormat = kFormats[i];
        return host::imNoErr;
    };
    fake.on[host::imGetSourceVideo] = [](auto*, void*, void* record) {
        const auto request = *at<host::imSourceVideoRec>(record);
        return fileOf(request.inPrivateData)->frame(request);
    };
    fake.on[host::imImportAudio7] = [](auto*, void*, void* record) {
        return readAudio(at<host::imImportAudioRec7>(record));
    };
}

}  // namespace simhost::test
