// Records of the two analysis selectors: the properties text and the data-rate table.
// Used by the importer's analysis handlers on the host's calling threads; a record is valid only during the
// call. Records are packed by one and belong to the host: read and write their fields by value, never bind a
// reference or pointer to one.

#pragma once

#include "host/layout_checks.h"

#include <cstddef>
#include <cstdint>
#include <type_traits>

namespace host {

#pragma pack(push, 1)

// imAnalysis, param2. The text goes to `buffer`, at most `buffersize` bytes with its terminator; the host
// owns it.
struct imAnalysisRec {
    void* privatedata;  // read
    void* prefs;
    std::int32_t buffersize;  // read
    char* buffer;             // read, written through
    std::int32_t timecodeFormat;
};
ORVANTIS_HOST_FIELD(imAnalysisRec, privatedata, 0, 8);
ORVANTIS_HOST_FIELD(imAnalysisRec, prefs, 8, 8);
ORVANTIS_HOST_FIELD(imAnalysisRec, buffersize, 16, 4);
ORVANTIS_HOST_FIELD(imAnalysisRec, buffer, 20, 8);
ORVANTIS_HOST_FIELD(imAnalysisRec, timecodeFormat, 28, 4);
static_assert(sizeof(imAnalysisRec) == 32);
static_assert(std::is_standard_layout_v<imAnalysisRec> && std::is_trivially_copyable_v<imAnalysisRec>);

// One entry of the table that imDataRateAnalysis fills: one coded frame. Bit 31 of `sampledur` marks a key
// frame.
struct imDataSample {
    std::uint32_t sampledur;   // written
    std::uint32_t samplesize;  // written
};
ORVANTIS_HOST_FIELD(imDataSample, sampledur, 0, 4);
ORVANTIS_HOST_FIELD(imDataSample, samplesize, 4, 4);
static_assert(sizeof(imDataSample) == 8);
static_assert(std::is_standard_layout_v<imDataSample> && std::is_trivially_copyable_v<imDataSample>);

// imDataRateAnalysis, param2. Called twice: without a buffer the importer writes the bytes it needs to
// `buffersize`, with one it fills as many imDataSample entries as `buffersize` bytes hold. The entries are
// packed too.
struct imDataRateAnalysisRec {
    void* privatedata;  // read
    void* prefs;
    std::int32_t buffersize;  // read, written
    imDataSample* buffer;     // read, written through
    std::int32_t baserate;    // written
};
ORVANTIS_HOST_FIELD(imDataRateAnalysisRec, privatedata, 0, 8);
ORVANTIS_HOST_FIELD(imDataRateAnalysisRec, prefs, 8, 8);
ORVANTIS_HOST_FIELD(imDataRateAnalysisRec, buffersize, 16, 4);
ORVANTIS_HOST_FIELD(imDataRateAnalysisRec, buffer, 20, 8);
ORVANTIS_HOST_FIELD(imDataRateAnalysisRec, baserate, 28, 4);
static_assert(sizeof(imDataRateAnalysisRec) == 32);
static_assert(std::is_standard_layout_v<imDataRateAnalysisRec> &&
              std::is_trivially_copyable_v<imDataRateAnalysisRec>);

#pragma pack(pop)

}  // namespace host
