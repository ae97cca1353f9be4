// The one place for compiler-specific annotations. Everything expands to nothing on a compiler that lacks it.
#pragma once

#include <cstdio>  // defines __MINGW_PRINTF_FORMAT where it exists

// Lets the compiler check a printf-style format (parameter number `formatAt`) against the arguments from
// `firstAt` on. On mingw-w64 the plain "printf" archetype means Microsoft's old one and warns falsely on %zu
// and %lld.
#if defined(__MINGW_PRINTF_FORMAT)
#define ORVANTIS_PRINTF(formatAt, firstAt) __attribute__((format(__MINGW_PRINTF_FORMAT, formatAt, firstAt)))
#elif defined(__GNUC__) || defined(__clang__)
#define ORVANTIS_PRINTF(formatAt, firstAt) __attribute__((format(printf, formatAt, firstAt)))
#else
#define ORVANTIS_PRINTF(formatAt, firstAt)
#endif

// A function that is seldom called: kept out of line, and out of the way of the code that calls it.
#if defined(__GNUC__) || defined(__clang__)
#define ORVANTIS_COLD __attribute__((cold, noinline))
#elif defined(_MSC_VER)
#define ORVANTIS_COLD __declspec(noinline)
#else
#define ORVANTIS_COLD
#endif

// The plug-in's one export. On Windows the module definition file names it; elsewhere symbols are hidden by
// default.
#if !defined(_WIN32) && (defined(__GNUC__) || defined(__clang__))
#define ORVANTIS_EXPORT __attribute__((visibility("default")))
#else
#define ORVANTIS_EXPORT
#endif
