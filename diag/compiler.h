// The one place for compiler-specific annotations. Everything expands to nothing on a compiler that lacks it.
#pragma once

#include <cstdio>  // defines __MINGW_PRINTF_FORMAT where it exists

// Lets the compiler check a printf-style format (parameter number `format`) against the arguments from `first` on.
// On mingw-w64 the plain "printf" archetype means Microsoft's old one and warns falsely on %zu and %lld.
#if defined(__MINGW_PRINTF_FORMAT)
#define ORVANTIS_PRINTF(format, first) __attribute__((format(__MINGW_PRINTF_FORMAT, format, first)))
#elif defined(__GNUC__) || defined(__clang__)
#define ORVANTIS_PRINTF(format, first) __attribute__((format(printf, format, first)))
#else
#define ORVANTIS_PRINTF(format, first)
#endif
