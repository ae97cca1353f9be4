// Records of the frame selectors: the pixel formats on offer and a request for one frame.
// Used by frame import, also on the host's asynchronous threads; a record is valid only during the call.
// Records are packed by one and belong to the host: read and write their fields by value, never bind a
// reference or pointer to one.

#pragma once

#include "host/basic_types.h"
#include "host/layout_checks.h"

#include <cstddef>
#include <cstdint>
#include <type_traits>

namespace host {

#pragma pack(push, 1)

// imGetIndPixelFormat, param2. `outPixelFormat` receives a PrPixelFormat_ code.
struct imIndPixelFormatRec {
    void* privatedata;             // read
    std::uint32_t outPixelFormat;  // written
    const void* prefs;
};
ORVANTIS_HOST_FIELD(imIndPixelFormatRec, privatedata, 0, 8);
ORVANTIS_HOST_FIELD(imIndPixelFormatRec, outPixelFormat, 8, 4);
ORVANTIS_HOST_FIELD(imIndPixelFormatRec, prefs, 12, 8);
static_assert(sizeof(imIndPixelFormatRec) == 20);
static_assert(std::is_standard_layout_v<imIndPixelFormatRec> &&
              std::is_trivially_copyable_v<imIndPixelFormatRec>);

// One entry of the list of formats that the host accepts for a frame.
struct imFrameFormat {
    std::int32_t inFrameWidth;    // read, 0 = any
    std::int32_t inFrameHeight;   // read, 0 = any
    std::uint32_t inPixelFormat;  // read
};
ORVANTIS_HOST_FIELD(imFrameFormat, inFrameWidth, 0, 4);
ORVANTIS_HOST_FIELD(imFrameFormat, inFrameHeight, 4, 4);
ORVANTIS_HOST_FIELD(imFrameFormat, inPixelFormat, 8, 4);
static_assert(sizeof(imFrameFormat) == 12);
static_assert(std::is_standard_layout_v<imFrameFormat> && std::is_trivially_copyable_v<imFrameFormat>);

// imGetSourceVideo, param2, and the argument of aiGetFrame. `inFrameTime` is in ticks. `inFrameFormats` is
// the host's own list and may be null. `outFrame` is the address of the host's frame handle, stored to only
// on success. Hosts extended the record behind `prefsSize` several times; nothing there is touched.
struct imSourceVideoRec {
    void* inPrivateData;  // read
    std::int32_t currentStreamIdx;
    PrTime inFrameTime;                   // read
    const imFrameFormat* inFrameFormats;  // read
    std::int32_t inNumFrameFormats;       // read
    std::uint8_t removePulldown;
    std::uint8_t unused2[3];
    PPixHand* outFrame;  // read, written through
    void* prefs;
    std::int32_t prefsSize;
    std::uint8_t selectedColorProfileName[16];
    std::int32_t inQuality;
    std::uint8_t inRenderContext[20];
    std::uint8_t opaqueColorSpaceIdentifier[16];
};
ORVANTIS_HOST_FIELD(imSourceVideoRec, inPrivateData, 0, 8);
ORVANTIS_HOST_FIELD(imSourceVideoRec, currentStreamIdx, 8, 4);
ORVANTIS_HOST_FIELD(imSourceVideoRec, inFrameTime, 12, 8);
ORVANTIS_HOST_FIELD(imSourceVideoRec, inFrameFormats, 20, 8);
ORVANTIS_HOST_FIELD(imSourceVideoRec, inNumFrameFormats, 28, 4);
ORVANTIS_HOST_FIELD(imSourceVideoRec, removePulldown, 32, 1);
ORVANTIS_HOST_FIELD(imSourceVideoRec, unused2, 33, 3);
ORVANTIS_HOST_FIELD(imSourceVideoRec, outFrame, 36, 8);
ORVANTIS_HOST_FIELD(imSourceVideoRec, prefs, 44, 8);
ORVANTIS_HOST_FIELD(imSourceVideoRec, prefsSize, 52, 4);
ORVANTIS_HOST_FIELD(imSourceVideoRec, selectedColorProfileName, 56, 16);
ORVANTIS_HOST_FIELD(imSourceVideoRec, inQuality, 72, 4);
ORVANTIS_HOST_FIELD(imSourceVideoRec, inRenderContext, 76, 20);
ORVANTIS_HOST_FIELD(imSourceVideoRec, opaqueColorSpaceIdentifier, 96, 16);
static_assert(sizeof(imSourceVideoRec) == 112);
static_assert(std::is_standard_layout_v<imSourceVideoRec> && std::is_trivially_copyable_v<imSourceVideoRec>);

#pragma pack(pop)

}  // namespace host
