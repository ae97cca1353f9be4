// Records of the audio selectors: a request for sample frames, and the channel layout.
// Used by the audio handlers on the host's calling threads; a record is valid only during the call.
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

// imImportAudio7, param2. `position` and `size` count sample frames, a negative position means "go on from
// the last". `buffer` is an array of one float buffer per channel. The importer pointer is not the first
// field here.
struct imImportAudioRec7 {
    PrAudioSample position;  // read
    std::uint32_t size;      // read
    float** buffer;          // read
    void* privateData;       // read
    void* prefs;
};
ORVANTIS_HOST_FIELD(imImportAudioRec7, position, 0, 8);
ORVANTIS_HOST_FIELD(imImportAudioRec7, size, 8, 4);
ORVANTIS_HOST_FIELD(imImportAudioRec7, buffer, 12, 8);
ORVANTIS_HOST_FIELD(imImportAudioRec7, privateData, 20, 8);
ORVANTIS_HOST_FIELD(imImportAudioRec7, prefs, 28, 8);
static_assert(sizeof(imImportAudioRec7) == 36);
static_assert(std::is_standard_layout_v<imImportAudioRec7> &&
              std::is_trivially_copyable_v<imImportAudioRec7>);

// imGetAudioChannelLayout, param2. The labels are kPrAudioChannelLabel_ codes, one per channel from index 0.
struct imGetAudioChannelLayoutRec {
    void* inPrivateData;                 // read
    std::uint32_t outChannelLabels[32];  // written
};
ORVANTIS_HOST_FIELD(imGetAudioChannelLayoutRec, inPrivateData, 0, 8);
ORVANTIS_HOST_FIELD(imGetAudioChannelLayoutRec, outChannelLabels, 8, 128);
static_assert(sizeof(imGetAudioChannelLayoutRec) == 136);
static_assert(std::is_standard_layout_v<imGetAudioChannelLayoutRec> &&
              std::is_trivially_copyable_v<imGetAudioChannelLayoutRec>);

#pragma pack(pop)

}  // namespace host
