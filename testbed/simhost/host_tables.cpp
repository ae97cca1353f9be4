#include "simhost/host_tables.h"

#include <cstddef>
#include <string_view>

#include "host/result_codes.h"
#include "host/suites.h"
#include "simhost/host_services.h"

namespace simhost {
namespace {

template <std::size_t N>
struct SlotName {
    char text[N];
    constexpr SlotName(const char (&name)[N])
        : text() {  // NOLINT(google-explicit-constructor): literals convert
        for (std::size_t i = 0; i < N; ++i) {
            text[i] = name[i];
        }
    }
};

// A function of its own for each slot. It is called with arguments that it does not declare, which the host's
// calling convention allows: the caller cleans up. Null and a failure are the same register.
template <SlotName kName>
std::intptr_t unusedSlot() {
    HostServices::unused(kName.text);
    return host::kSuiteNotImplemented;
}

template <SlotName kName>
void* unusedSlotReturningNull() {
    HostServices::unused(kName.text);
    return nullptr;
}

template <SlotName kName>
void* unused() {
    return reinterpret_cast<void*>(&unusedSlot<kName>);
}

template <SlotName kName, class Function>
void setUnused(Function*& slot) {
    slot = reinterpret_cast<Function*>(reinterpret_cast<void*>(&unusedSlotReturningNull<kName>));
}

host::MemoryFunctions makeMemoryTable() {
    host::MemoryFunctions t{};
    t.newPtr = HostServices::newPtr;
    t.setPtrSize = HostServices::setPtrSize;
    t.getPtrSize = HostServices::getPtrSize;
    t.disposePtr = HostServices::disposePtr;
    t.newPtrClear = HostServices::newPtrClear;
    setUnused<"newHandle">(t.newHandle);
    setUnused<"setHandleSize">(t.setHandleSize);
    setUnused<"getHandleSize">(t.getHandleSize);
    setUnused<"disposeHandle">(t.disposeHandle);
    setUnused<"newHandleClear">(t.newHandleClear);
    setUnused<"lockHandle">(t.lockHandle);
    setUnused<"unlockHandle">(t.unlockHandle);
    return t;
}

host::UtilityFunctions makeUtilityTable() {
    host::UtilityFunctions t{};
    t.getSettings = unused<"getSettings">();
    t.getSerialNumber = unused<"getSerialNumber">();
    t.getFileTimebase = unused<"getFileTimebase">();
    t.getFileVideo = unused<"getFileVideo">();
    t.getFileAudioSecond = unused<"getFileAudioSecond">();
    t.getPlugInResFile = unused<"getPlugInResFile">();
    t.getFileVideoBounds = unused<"getFileVideoBounds">();
    t.getSPBasicSuite = HostServices::getSPBasicSuite;
    t.getFileExtString = unused<"getFileExtString">();
    return t;
}

host::SPBasicSuite makeBasicTable() {
    host::SPBasicSuite t{};
    t.AcquireSuite = HostServices::acquireSuite;
    t.ReleaseSuite = HostServices::releaseSuite;
    t.IsEqual = unused<"IsEqual">();
    t.AllocateBlock = unused<"AllocateBlock">();
    t.FreeBlock = unused<"FreeBlock">();
    t.ReallocateBlock = unused<"ReallocateBlock">();
    t.Undefined = unused<"Undefined">();
    return t;
}

host::ErrorSuite makeErrorTable() {
    host::ErrorSuite t{};
    t.SetEventStringUnicode = HostServices::setEventString;
    return t;
}

host::PPixCreatorSuite makeCreatorTable() {
    host::PPixCreatorSuite t{};
    t.CreatePPix = HostServices::createPPix;
    t.ClonePPix = unused<"ClonePPix">();
    return t;
}

host::PPixCacheSuite makeCacheTable() {
    host::PPixCacheSuite t{};
    t.AddFrameToCache = unused<"AddFrameToCache">();
    t.GetFrameFromCache = unused<"GetFrameFromCache">();
    t.AddRawPPixToCache = unused<"AddRawPPixToCache">();
    t.GetRawPPixFromCache = unused<"GetRawPPixFromCache">();
    t.AddNamedPPixToCache = unused<"AddNamedPPixToCache">();
    t.GetNamedPPixFromCache = unused<"GetNamedPPixFromCache">();
    t.RegisterDependencyOnNamedPPix = unused<"RegisterDependencyOnNamedPPix">();
    t.UnregisterDependencyOnNamedPPix = unused<"UnregisterDependencyOnNamedPPix">();
    t.ExpireNamedPPixFromCache = unused<"ExpireNamedPPixFromCache">();
    t.ExpireAllPPixesFromCache = unused<"ExpireAllPPixesFromCache">();
    t.AddFrameToCacheWithColorProfile = unused<"AddFrameToCacheWithColorProfile">();
    t.GetFrameFromCacheWithColorProfile = unused<"GetFrameFromCacheWithColorProfile">();
    t.AddFrameToCacheWithColorProfile2 = unused<"AddFrameToCacheWithColorProfile2">();
    t.GetFrameFromCacheWithColorProfile2 = unused<"GetFrameFromCacheWithColorProfile2">();
    return t;
}

host::PPixSuite makePPixTable() {
    host::PPixSuite t{};
    t.Dispose = HostServices::disposePPix;
    t.GetPixels = HostServices::getPixels;
    t.GetBounds = unused<"GetBounds">();
    t.GetRowBytes = HostServices::getRowBytes;
    t.GetPixelAspectRatio = unused<"GetPixelAspectRatio">();
    t.GetPixelFormat = unused<"GetPixelFormat">();
    t.GetUniqueKey = unused<"GetUniqueKey">();
    t.GetUniqueKeySize = unused<"GetUniqueKeySize">();
    t.GetRenderTime = unused<"GetRenderTime">();
    return t;
}

host::TimeSuite makeTimeTable() {
    host::TimeSuite t{};
    t.GetTicksPerSecond = HostServices::getTicksPerSecond;
    t.GetTicksPerVideoFrame = unused<"GetTicksPerVideoFrame">();
    t.GetTicksPerAudioSample = unused<"GetTicksPerAudioSample">();
    return t;
}

host::ImageProcessingSuite makeImageProcessingTable() {
    host::ImageProcessingSuite t{};
    t.FormatIsCompressed = HostServices::formatIsCompressed;
    t.FormatHasAlpha = HostServices::formatHasAlpha;
    t.FormatIsOriginTopLeft = HostServices::formatIsOriginTopLeft;
    t.GetSizeForPixelBuffer = unused<"GetSizeForPixelBuffer">();
    t.ScaleConvert = unused<"ScaleConvert">();
    t.CompressDV100720p = unused<"CompressDV100720p">();
    t.StampDVFrameAspect = unused<"StampDVFrameAspect">();
    return t;
}

host::AudioSuite makeAudioTable() {
    host::AudioSuite t{};
    t.ConvertAndInterleaveTo8BitInteger = unused<"ConvertAndInterleaveTo8BitInteger">();
    t.ConvertAndInterleaveTo16BitInteger = unused<"ConvertAndInterleaveTo16BitInteger">();
    t.ConvertAndInterleaveTo24BitInteger = unused<"ConvertAndInterleaveTo24BitInteger">();
    t.ConvertAndInterleaveTo32BitInteger = unused<"ConvertAndInterleaveTo32BitInteger">();
    t.UninterleaveAndConvertFrom8BitInteger = HostServices::convertFrom8Bit;
    t.UninterleaveAndConvertFrom16BitInteger = HostServices::convertFrom16Bit;
    t.UninterleaveAndConvertFrom24BitInteger = HostServices::convertFrom24Bit;
    t.UninterleaveAndConvertFrom32BitInteger = HostServices::convertFrom32Bit;
    return t;
}

}  // namespace

const host::MemoryFunctions& memoryTable() noexcept {
    static const host::MemoryFunctions table = makeMemoryTable();
    return table;
}

const host::UtilityFunctions& utilityTable() noexcept {
    static const host::UtilityFunctions table = makeUtilityTable();
    return table;
}

host::SPBasicSuite& basicTable() noexcept {
    static host::SPBasicSuite table = makeBasicTable();
    return table;
}

std::span<const HostSuite> hostSuites() noexcept {
    static const host::ErrorSuite error = makeErrorTable();
    static const host::PPixCreatorSuite creator = makeCreatorTable();
    static const host::PPixCacheSuite cache = makeCacheTable();
    static const host::PPixSuite ppix = makePPixTable();
    static const host::TimeSuite time = makeTimeTable();
    static const host::ImageProcessingSuite imageProcessing = makeImageProcessingTable();
    static const host::AudioSuite audio = makeAudioTable();
    static const HostSuite rows[kSuiteCount] = {
        {host::kErrorSuiteName, host::kErrorSuiteVersion, &error},
        {host::kPPixCreatorSuiteName, host::kPPixCreatorSuiteVersion, &creator},
        {host::kPPixCacheSuiteName, host::kPPixCacheSuiteVersion, &cache},
        {host::kPPixSuiteName, host::kPPixSuiteVersion, &ppix},
        {host::kTimeSuiteName, host::kTimeSuiteVersion, &time},
        {host::kImageProcessingSuiteName, host::kImageProcessingSuiteVersion, &imageProcessing},
        {host::kAudioSuiteName, host::kAudioSuiteVersion, &audio},
    };
    return rows;
}

std::size_t findSuite(const char* name, std::int32_t version) noexcept {
    const std::span<const HostSuite> rows = hostSuites();
    std::size_t i = 0;
    while (i < rows.size() && (std::string_view(rows[i].name) != name || rows[i].version != version)) {
        ++i;
    }
    return i;
}

}  // namespace simhost
