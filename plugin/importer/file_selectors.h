// The selectors that work on one file, apart from frames and samples. Each checks its record, delegates,
// fills the record and returns the host's result code; all may throw, which the entry guard answers. Any host
// thread; see importer/importer_calls.h for what waits for what. Private data that is no importer which the
// host holds is answered with std::logic_error.
#pragma once

#include <cstdint>

#include "host/basic_types.h"
#include "host/records.h"
#include "host/result_codes.h"
#include "host/std_parms.h"

namespace orvantis {

host::ImporterResult openFile8(const host::imStdParms* stdParms, host::imFileRef* fileRef,
                               host::imFileOpenRec8& record);
host::ImporterResult getInfo8(host::imFileInfoRec8& record);
host::ImporterResult analysis(host::imAnalysisRec& record);
host::ImporterResult dataRateAnalysis(host::imDataRateAnalysisRec& record);
host::ImporterResult getIndPixelFormat(std::uint32_t index, host::imIndPixelFormatRec& record);
/// Closes the OS file, keeps the importer without its buffers. `fileRef` may be null. Null private data:
/// nothing to do.
host::ImporterResult quietFile(host::imFileRef* fileRef, void* privateData);
/// Closes the OS file and destroys the importer. `fileRef` may be null. Null private data: nothing to do.
host::ImporterResult closeFile(host::imFileRef* fileRef, void* privateData);

}  // namespace orvantis
