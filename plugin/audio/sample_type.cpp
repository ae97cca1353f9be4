#include "audio/sample_type.h"

#include "audio/wave_format.h"
#include "host/audio_codes.h"

namespace orvantis {

std::uint32_t audioSampleTypeFromFormat(std::uint32_t formatCode, std::uint32_t bitsPerSample) noexcept {
    if (formatCode == kWaveFormatPcm) {
        switch (bitsPerSample) {
            case 8:
                return host::kPrAudioSampleType_8BitInt;
            case 16:
                return host::kPrAudioSampleType_16BitInt;
            case 24:
                return host::kPrAudioSampleType_24BitInt;
            case 32:
                return host::kPrAudioSampleType_32BitInt;
            default:
                break;
        }
    }
    if (formatCode == kWaveFormatIeeeFloat && bitsPerSample == 32) {
        return host::kPrAudioSampleType_32BitFloat;
    }
    return host::kPrAudioSampleType_Other;
}

const char* audioSampleTypeName(std::uint32_t sampleType) noexcept {
    switch (sampleType) {
        case host::kPrAudioSampleType_8BitInt:
            return "8 bit";
        case host::kPrAudioSampleType_16BitInt:
            return "16 bit";
        case host::kPrAudioSampleType_24BitInt:
            return "24 bit";
        case host::kPrAudioSampleType_32BitInt:
            return "32 bit";
        case host::kPrAudioSampleType_32BitFloat:
            return "32 bit float";
        default:
            return "Unknown sample type";
    }
}

}  // namespace orvantis
