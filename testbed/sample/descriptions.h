// What the importer and a clip tell about themselves. Each fills its record as the selector of that name
// demands and touches no other field: those are the host's, and its older generations have fewer.
#pragma once

#include <cstdint>

#include "clip.h"
#include "host/records.h"
#include "host/std_parms.h"

namespace sample {

inline constexpr std::int32_t kFileType = 0x504C4E43;  // 'PLNC', the first character highest

std::int32_t init(host::imImportInfoRec* record);
std::int32_t getIndFormat(std::uint32_t index, host::imIndFormatRec* record);
std::int32_t getSubTypeNames(const host::imStdParms* parms, void** place);
std::int32_t getInfo(const Clip& clip, host::imFileInfoRec8& record);
std::int32_t getIndPixelFormat(std::uint32_t index, host::imIndPixelFormatRec& record);
std::int32_t analysis(host::imAnalysisRec& record);
std::int32_t dataRates(const Clip& clip, host::imDataRateAnalysisRec& record);
std::int32_t channelLayout(const Clip& clip, host::imGetAudioChannelLayoutRec& record);

}  // namespace sample
