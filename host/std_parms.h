// The standard parameters that come with every importer call, and the function tables reached through them.
// The imStdParms record is valid during the call only; the piSuites record and the tables behind it stay
// valid as long as the plug-in is loaded. Everything here belongs to the host and is only read. Records are
// packed by one: read their fields by value, never bind a reference or pointer to one.

#pragma once

#include "host/basic_types.h"
#include "host/layout_checks.h"

#include <cstddef>
#include <cstdint>
#include <type_traits>

namespace host {

// The host's suite broker. Names are NUL-terminated ASCII. A refused suite gives a non-zero result and may
// leave `suite` unwritten, so callers preset it with null and trust the pointer, not the result.
struct SPBasicSuite {
    SPErr (*AcquireSuite)(const char* name, std::int32_t version, const void** suite);
    SPErr (*ReleaseSuite)(const char* name, std::int32_t version);
    void* IsEqual;
    void* AllocateBlock;
    void* FreeBlock;
    void* ReallocateBlock;
    void* Undefined;
};
ORVANTIS_HOST_SLOT(SPBasicSuite, AcquireSuite, 0);
ORVANTIS_HOST_SLOT(SPBasicSuite, ReleaseSuite, 1);
ORVANTIS_HOST_SLOT(SPBasicSuite, IsEqual, 2);
ORVANTIS_HOST_SLOT(SPBasicSuite, AllocateBlock, 3);
ORVANTIS_HOST_SLOT(SPBasicSuite, FreeBlock, 4);
ORVANTIS_HOST_SLOT(SPBasicSuite, ReallocateBlock, 5);
ORVANTIS_HOST_SLOT(SPBasicSuite, Undefined, 6);
static_assert(sizeof(SPBasicSuite) == 7 * sizeof(void*));

// The host's memory functions. A block that is handed to the host (imGetSubTypeNames) must come from newPtr,
// because the host frees it with these functions and asks getPtrSize for its length. newPtr does not clear
// the block and answers null when there is no memory.
struct MemoryFunctions {
    void* (*newPtr)(std::uint32_t size);
    void (*setPtrSize)(void** pointer, std::uint32_t newSize);
    std::int32_t (*getPtrSize)(void* pointer);
    void (*disposePtr)(void* pointer);
    void** (*newHandle)(std::uint32_t size);
    std::int16_t (*setHandleSize)(void** handle, std::uint32_t newSize);
    std::int32_t (*getHandleSize)(void** handle);
    void (*disposeHandle)(void** handle);
    void* (*newPtrClear)(std::uint32_t size);
    void** (*newHandleClear)(std::uint32_t size);
    void (*lockHandle)(void** handle);
    void (*unlockHandle)(void** handle);
};
ORVANTIS_HOST_SLOT(MemoryFunctions, newPtr, 0);
ORVANTIS_HOST_SLOT(MemoryFunctions, setPtrSize, 1);
ORVANTIS_HOST_SLOT(MemoryFunctions, getPtrSize, 2);
ORVANTIS_HOST_SLOT(MemoryFunctions, disposePtr, 3);
ORVANTIS_HOST_SLOT(MemoryFunctions, newHandle, 4);
ORVANTIS_HOST_SLOT(MemoryFunctions, setHandleSize, 5);
ORVANTIS_HOST_SLOT(MemoryFunctions, getHandleSize, 6);
ORVANTIS_HOST_SLOT(MemoryFunctions, disposeHandle, 7);
ORVANTIS_HOST_SLOT(MemoryFunctions, newPtrClear, 8);
ORVANTIS_HOST_SLOT(MemoryFunctions, newHandleClear, 9);
ORVANTIS_HOST_SLOT(MemoryFunctions, lockHandle, 10);
ORVANTIS_HOST_SLOT(MemoryFunctions, unlockHandle, 11);
static_assert(sizeof(MemoryFunctions) == 12 * sizeof(void*));

// The host's utility functions, of which one is wanted: the way to the basic suite.
struct UtilityFunctions {
    void* getSettings;
    void* getSerialNumber;
    void* getFileTimebase;
    void* getFileVideo;
    void* getFileAudioSecond;
    void* getPlugInResFile;
    void* getFileVideoBounds;
    SPBasicSuite* (*getSPBasicSuite)();
    void* getFileExtString;
};
ORVANTIS_HOST_SLOT(UtilityFunctions, getSettings, 0);
ORVANTIS_HOST_SLOT(UtilityFunctions, getSerialNumber, 1);
ORVANTIS_HOST_SLOT(UtilityFunctions, getFileTimebase, 2);
ORVANTIS_HOST_SLOT(UtilityFunctions, getFileVideo, 3);
ORVANTIS_HOST_SLOT(UtilityFunctions, getFileAudioSecond, 4);
ORVANTIS_HOST_SLOT(UtilityFunctions, getPlugInResFile, 5);
ORVANTIS_HOST_SLOT(UtilityFunctions, getFileVideoBounds, 6);
ORVANTIS_HOST_SLOT(UtilityFunctions, getSPBasicSuite, 7);
ORVANTIS_HOST_SLOT(UtilityFunctions, getFileExtString, 8);
static_assert(sizeof(UtilityFunctions) == 9 * sizeof(void*));

#pragma pack(push, 1)

// The host's function tables. Three of them serve other kinds of plug-ins and are not declared.
struct piSuites {
    std::int32_t piInterfaceVer;
    const MemoryFunctions* memFuncs;  // read
    void* windFuncs;
    void* ppixFuncs;
    const UtilityFunctions* utilFuncs;  // read
    void* timelineFuncs;
};
ORVANTIS_HOST_FIELD(piSuites, piInterfaceVer, 0, 4);
ORVANTIS_HOST_FIELD(piSuites, memFuncs, 4, 8);
ORVANTIS_HOST_FIELD(piSuites, windFuncs, 12, 8);
ORVANTIS_HOST_FIELD(piSuites, ppixFuncs, 20, 8);
ORVANTIS_HOST_FIELD(piSuites, utilFuncs, 28, 8);
ORVANTIS_HOST_FIELD(piSuites, timelineFuncs, 36, 8);
static_assert(sizeof(piSuites) == 44);
static_assert(std::is_standard_layout_v<piSuites> && std::is_trivially_copyable_v<piSuites>);

// Second argument of every importer call. `funcs` is a table of callbacks that the host keeps for old
// plug-ins.
struct imStdParms {
    std::int32_t imInterfaceVer;
    void* funcs;
    const host::piSuites* piSuites;  // read
};
ORVANTIS_HOST_FIELD(imStdParms, imInterfaceVer, 0, 4);
ORVANTIS_HOST_FIELD(imStdParms, funcs, 4, 8);
ORVANTIS_HOST_FIELD(imStdParms, piSuites, 12, 8);
static_assert(sizeof(imStdParms) == 20);
static_assert(std::is_standard_layout_v<imStdParms> && std::is_trivially_copyable_v<imStdParms>);

#pragma pack(pop)

}  // namespace host
