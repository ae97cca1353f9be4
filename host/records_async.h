// Records of the asynchronous importer: its creation and the request to read one frame ahead.
// The creation record comes on a calling thread of the host, requests on any of its threads; valid only
// during the call. Records are packed by one and belong to the host: read and write their fields by value,
// never bind a reference or pointer to one.

#pragma once

#include "host/entry_points.h"
#include "host/layout_checks.h"
#include "host/records_video.h"

#include <cstddef>
#include <cstdint>
#include <type_traits>

namespace host {

#pragma pack(push, 1)

// imCreateAsyncImporter, param1. The host calls `outAsyncEntry` from then on and hands `outAsyncPrivateData`
// back.
struct imAsyncImporterCreationRec {
    void* inPrivateData;  // read
    void* inPrefs;
    AsyncImportEntryFn outAsyncEntry;  // written
    void* outAsyncPrivateData;         // written
};
ORVANTIS_HOST_FIELD(imAsyncImporterCreationRec, inPrivateData, 0, 8);
ORVANTIS_HOST_FIELD(imAsyncImporterCreationRec, inPrefs, 8, 8);
ORVANTIS_HOST_FIELD(imAsyncImporterCreationRec, outAsyncEntry, 16, 8);
ORVANTIS_HOST_FIELD(imAsyncImporterCreationRec, outAsyncPrivateData, 24, 8);
static_assert(sizeof(imAsyncImporterCreationRec) == 32);
static_assert(std::is_standard_layout_v<imAsyncImporterCreationRec> &&
              std::is_trivially_copyable_v<imAsyncImporterCreationRec>);

// aiInitiateAsyncRead. The frame request is embedded, 12 bytes further on than in the record of aiGetFrame,
// and the importer pointer to use is the outer one: the inner `inPrivateData` and `outFrame` are not defined
// here.
struct aiAsyncRequest {
    void* inPrivateData;  // read
    std::int32_t unused1;
    imSourceVideoRec inSourceRec;  // read
};
ORVANTIS_HOST_FIELD(aiAsyncRequest, inPrivateData, 0, 8);
ORVANTIS_HOST_FIELD(aiAsyncRequest, unused1, 8, 4);
ORVANTIS_HOST_FIELD(aiAsyncRequest, inSourceRec, 12, 112);
static_assert(sizeof(aiAsyncRequest) == 124);
static_assert(std::is_standard_layout_v<aiAsyncRequest> && std::is_trivially_copyable_v<aiAsyncRequest>);

#pragma pack(pop)

static_assert(offsetof(aiAsyncRequest, inSourceRec) + offsetof(imSourceVideoRec, inFrameTime) == 24);
static_assert(offsetof(aiAsyncRequest, inSourceRec) + offsetof(imSourceVideoRec, inFrameFormats) == 32);
static_assert(offsetof(aiAsyncRequest, inSourceRec) + offsetof(imSourceVideoRec, inNumFrameFormats) == 40);

}  // namespace host
