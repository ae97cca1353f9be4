// The selectors that work on one file, apart from frames and samples. Each checks its record, delegates,
// fills the record and returns the host's result code; all may throw, which the entry guard answers. Host
// threads.
#pragma once

#include <cstdint>

#include "host/basic_types.h"
#include "host/records.h"
#include "host/std_parms.h"
#include "importer/orvantis_importer.h"

namespace orvantis {

/// The importer behind the private data of a record. Throws std::logic_error when it is null.
OrvantisImporter& importerOf(void* privateData);

std::int32_t openFile8(const host::imStdParms* stdParms, host::imFileRef* fileRef,
                       host::imFileOpenRec8& record);
std::int32_t getInfo8(host::imFileInfoRec8& record);
std::int32_t analysis(host::imAnalysisRec& record);
std::int32_t dataRateAnalysis(host::imDataRateAnalysisRec& record);
std::int32_t getIndPixelFormat(std::uint32_t index, host::imIndPixelFormatRec& record);
/// Closes the OS file, keeps the importer. `fileRef` may be null.
std::int32_t quietFile(host::imFileRef* fileRef, void* privateData);
/// Closes the OS file and destroys the importer. `fileRef` may be null.
std::int32_t closeFile(host::imFileRef* fileRef, void* privateData);

}  // namespace orvantis
