// The eleven functions as an enumeration, for fault injection and the trace. Read only; any thread.

#pragma once

#include <array>
#include <cstddef>

namespace orvantis::standin {

enum class Function : std::size_t {
    kLibraryInit,
    kLibraryClose,
    kOpen,
    kClose,
    kDecompressQuery,
    kDecompressBegin,
    kDecompress,
    kDecompressEnd,
    kGetString,
    kGetParam,
    kCompressQuery,
};

inline constexpr std::size_t kFunctionCount = 11;

// The exported names without their common prefix "orvantis_".
inline constexpr std::array<const char*, kFunctionCount> kFunctionNames = {
    "library_init", "library_close",  "open",       "close",     "decompress_query", "decompress_begin",
    "decompress",   "decompress_end", "get_string", "get_param", "compress_query",
};

inline const char* functionName(Function function) noexcept {
    return kFunctionNames[static_cast<std::size_t>(function)];
}

}  // namespace orvantis::standin
