// Records of the process-wide selectors: what the importer is, which file format and sub-types it announces.
// Used by the dispatcher on the host's calling threads; a record is valid only during the call that passes
// it. Records are packed by one and belong to the host: read and write their fields by value, never bind a
// reference or pointer to one.

#pragma once

#include "host/layout_checks.h"

#include <cstddef>
#include <cstdint>
#include <type_traits>

namespace host {

#pragma pack(push, 1)

// imInit, param1. The importer writes two fields and leaves the rest as the host preset it. Older hosts pass
// a shorter record; nothing behind `avoidAudioConform` is touched.
struct imImportInfoRec {
    std::uint32_t importerType;
    std::int32_t unused1;
    std::int32_t canSave;
    std::int32_t canDelete;
    std::int32_t canResize;
    std::int32_t canDoSubsize;
    std::int32_t canDoContinuousTime;
    std::int32_t noFile;
    std::int32_t addToMenu;
    std::int32_t hasSetup;
    std::int32_t dontCache;
    std::int32_t setupOnDblClk;
    std::int32_t keepLoaded;
    std::int32_t priority;  // written
    std::int32_t canAsync;
    std::int32_t canCreate;
    std::int32_t canCalcSizes;
    std::int32_t canTrim;
    std::int32_t avoidAudioConform;  // written
    char16_t* acceleratorFileExt;
    std::int32_t canCopy;
    std::int32_t canSupplyMetadataClipName;
    std::int32_t canValidatePrefs;
    std::int32_t canProvidePeakAudio;
    std::int32_t canProvideFileList;
    std::int32_t canProvideClosedCaptions;
    char fileInfoVersion[37];
    std::int32_t hasSourceSettingsEffect;
    std::int32_t hasPersistentData;
    std::int32_t reserved[10];
};
ORVANTIS_HOST_FIELD(imImportInfoRec, importerType, 0, 4);
ORVANTIS_HOST_FIELD(imImportInfoRec, unused1, 4, 4);
ORVANTIS_HOST_FIELD(imImportInfoRec, canSave, 8, 4);
ORVANTIS_HOST_FIELD(imImportInfoRec, canDelete, 12, 4);
ORVANTIS_HOST_FIELD(imImportInfoRec, canResize, 16, 4);
ORVANTIS_HOST_FIELD(imImportInfoRec, canDoSubsize, 20, 4);
ORVANTIS_HOST_FIELD(imImportInfoRec, canDoContinuousTime, 24, 4);
ORVANTIS_HOST_FIELD(imImportInfoRec, noFile, 28, 4);
ORVANTIS_HOST_FIELD(imImportInfoRec, addToMenu, 32, 4);
ORVANTIS_HOST_FIELD(imImportInfoRec, hasSetup, 36, 4);
ORVANTIS_HOST_FIELD(imImportInfoRec, dontCache, 40, 4);
ORVANTIS_HOST_FIELD(imImportInfoRec, setupOnDblClk, 44, 4);
ORVANTIS_HOST_FIELD(imImportInfoRec, keepLoaded, 48, 4);
ORVANTIS_HOST_FIELD(imImportInfoRec, priority, 52, 4);
ORVANTIS_HOST_FIELD(imImportInfoRec, canAsync, 56, 4);
ORVANTIS_HOST_FIELD(imImportInfoRec, canCreate, 60, 4);
ORVANTIS_HOST_FIELD(imImportInfoRec, canCalcSizes, 64, 4);
ORVANTIS_HOST_FIELD(imImportInfoRec, canTrim, 68, 4);
ORVANTIS_HOST_FIELD(imImportInfoRec, avoidAudioConform, 72, 4);
ORVANTIS_HOST_FIELD(imImportInfoRec, acceleratorFileExt, 76, 8);
ORVANTIS_HOST_FIELD(imImportInfoRec, canCopy, 84, 4);
ORVANTIS_HOST_FIELD(imImportInfoRec, canSupplyMetadataClipName, 88, 4);
ORVANTIS_HOST_FIELD(imImportInfoRec, canValidatePrefs, 92, 4);
ORVANTIS_HOST_FIELD(imImportInfoRec, canProvidePeakAudio, 96, 4);
ORVANTIS_HOST_FIELD(imImportInfoRec, canProvideFileList, 100, 4);
ORVANTIS_HOST_FIELD(imImportInfoRec, canProvideClosedCaptions, 104, 4);
ORVANTIS_HOST_FIELD(imImportInfoRec, fileInfoVersion, 108, 37);
ORVANTIS_HOST_FIELD(imImportInfoRec, hasSourceSettingsEffect, 145, 4);
ORVANTIS_HOST_FIELD(imImportInfoRec, hasPersistentData, 149, 4);
ORVANTIS_HOST_FIELD(imImportInfoRec, reserved, 153, 40);
static_assert(sizeof(imImportInfoRec) == 193);
static_assert(std::is_standard_layout_v<imImportInfoRec> && std::is_trivially_copyable_v<imImportInfoRec>);

// imGetIndFormat, param2. The texts are char, NUL-terminated; PlatformExtension is a list of NUL-terminated
// extensions that an empty one ends. `flags` keeps what the host put there.
struct imIndFormatRec {
    std::int32_t filetype;  // written
    std::int32_t flags;
    std::int32_t canWriteTimecode;  // written
    char FormatName[256];           // written
    char FormatShortName[32];       // written
    char PlatformExtension[256];    // written
    std::int32_t hasAlternateTypes;
    std::int32_t alternateTypes[50];
    std::int32_t canWriteMetaData;
};
ORVANTIS_HOST_FIELD(imIndFormatRec, filetype, 0, 4);
ORVANTIS_HOST_FIELD(imIndFormatRec, flags, 4, 4);
ORVANTIS_HOST_FIELD(imIndFormatRec, canWriteTimecode, 8, 4);
ORVANTIS_HOST_FIELD(imIndFormatRec, FormatName, 12, 256);
ORVANTIS_HOST_FIELD(imIndFormatRec, FormatShortName, 268, 32);
ORVANTIS_HOST_FIELD(imIndFormatRec, PlatformExtension, 300, 256);
ORVANTIS_HOST_FIELD(imIndFormatRec, hasAlternateTypes, 556, 4);
ORVANTIS_HOST_FIELD(imIndFormatRec, alternateTypes, 560, 200);
ORVANTIS_HOST_FIELD(imIndFormatRec, canWriteMetaData, 760, 4);
static_assert(sizeof(imIndFormatRec) == 764);
static_assert(std::is_standard_layout_v<imIndFormatRec> && std::is_trivially_copyable_v<imIndFormatRec>);

// imGetSubTypeNames: one entry of the array that param2 hands over. The host derives the number of entries
// from the size of the memory block, so the size of this record is part of the contract.
struct imSubTypeDescriptionRec {
    std::int32_t subType;       // written
    char16_t subTypeName[256];  // written
};
ORVANTIS_HOST_FIELD(imSubTypeDescriptionRec, subType, 0, 4);
ORVANTIS_HOST_FIELD(imSubTypeDescriptionRec, subTypeName, 4, 512);
static_assert(sizeof(imSubTypeDescriptionRec) == 516);
static_assert(std::is_standard_layout_v<imSubTypeDescriptionRec> &&
              std::is_trivially_copyable_v<imSubTypeDescriptionRec>);

#pragma pack(pop)

}  // namespace host
