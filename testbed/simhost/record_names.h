// The host's name of each record, for reports.
#pragma once

#include "host/records.h"

namespace simhost {

template <class Record>
inline constexpr const char* kRecordName = "record";

#define SIMHOST_RECORD_NAME(record) \
    template <>                     \
    inline constexpr const char* kRecordName<host::record> = #record

SIMHOST_RECORD_NAME(imImportInfoRec);
SIMHOST_RECORD_NAME(imIndFormatRec);
SIMHOST_RECORD_NAME(imFileAccessRec8);
SIMHOST_RECORD_NAME(imFileOpenRec8);
SIMHOST_RECORD_NAME(imFileInfoRec8);
SIMHOST_RECORD_NAME(imAnalysisRec);
SIMHOST_RECORD_NAME(imDataRateAnalysisRec);
SIMHOST_RECORD_NAME(imIndPixelFormatRec);
SIMHOST_RECORD_NAME(imImportAudioRec7);
SIMHOST_RECORD_NAME(imGetAudioChannelLayoutRec);
SIMHOST_RECORD_NAME(imSourceVideoRec);
SIMHOST_RECORD_NAME(imAsyncImporterCreationRec);
SIMHOST_RECORD_NAME(aiAsyncRequest);

#undef SIMHOST_RECORD_NAME

}  // namespace simhost
