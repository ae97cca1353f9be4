#include "tool/shared/base/import_patch_win32.h"

#include <windows.h>

#include <cstdint>
#include <cstring>
#include <stdexcept>
#include <string>

namespace simhost::tool {
namespace {

template <class T>
const T* at(const std::uint8_t* base, std::uint64_t offset) {
    return reinterpret_cast<const T*>(base + offset);
}

// The place in the module's table of imported addresses. The loader has checked the tables.
const void** importOf(const void* inModule, const char* function) {
    HMODULE module = nullptr;
    if (GetModuleHandleExW(
            GET_MODULE_HANDLE_EX_FLAG_FROM_ADDRESS | GET_MODULE_HANDLE_EX_FLAG_UNCHANGED_REFCOUNT,
            static_cast<LPCWSTR>(inModule), &module) == FALSE) {
        return nullptr;
    }
    const auto* base = reinterpret_cast<const std::uint8_t*>(module);
    const auto* headers =
        at<IMAGE_NT_HEADERS64>(base, static_cast<std::uint32_t>(at<IMAGE_DOS_HEADER>(base, 0)->e_lfanew));
    const auto& table = headers->OptionalHeader.DataDirectory[IMAGE_DIRECTORY_ENTRY_IMPORT];
    if (table.VirtualAddress == 0) {
        return nullptr;
    }
    for (const auto* library = at<IMAGE_IMPORT_DESCRIPTOR>(base, table.VirtualAddress); library->Name != 0;
         ++library) {
        if (library->OriginalFirstThunk == 0) {
            continue;
        }
        const auto* name = at<IMAGE_THUNK_DATA64>(base, library->OriginalFirstThunk);
        const auto* address = at<IMAGE_THUNK_DATA64>(base, library->FirstThunk);
        for (; name->u1.AddressOfData != 0; ++name, ++address) {
            const bool named = (name->u1.Ordinal & IMAGE_ORDINAL_FLAG64) == 0;
            if (named &&
                std::strcmp(at<IMAGE_IMPORT_BY_NAME>(base, name->u1.AddressOfData)->Name, function) == 0) {
                return reinterpret_cast<const void**>(const_cast<IMAGE_THUNK_DATA64*>(address));
            }
        }
    }
    return nullptr;
}

// The table is not for writing once the module is loaded.
bool put(const void** place, const void* value) {
    DWORD former = 0;
    if (VirtualProtect(place, sizeof *place, PAGE_READWRITE, &former) == FALSE) {
        return false;
    }
    *place = value;
    return VirtualProtect(place, sizeof *place, former, &former) != FALSE;
}

}  // namespace

ImportPatch::ImportPatch(const void* inModule, const char* function, const void* replacement)
    : m_place(importOf(inModule, function)) {
    if (m_place == nullptr) {
        throw std::runtime_error(std::string("the plug-in does not import ") + function);
    }
    m_former = *m_place;
    if (!put(m_place, replacement)) {
        throw std::runtime_error(std::string("cannot replace ") + function);
    }
}

ImportPatch::~ImportPatch() {
    (void)put(m_place, m_former);
}

}  // namespace simhost::tool
