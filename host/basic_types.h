// Scalar types of the host's interface, shared by all its records, tables and functions.
// The host is 64-bit Windows only, where `long` has 4 bytes and `wchar_t` 2; fixed-width types and char16_t
// keep the same layout on every compiler that builds this code.

#pragma once

#include <cstddef>
#include <cstdint>

namespace host {

static_assert(sizeof(void*) == 8, "the host's records hold 64-bit addresses");
static_assert(sizeof(float) == 4 && sizeof(char16_t) == 2);

// A time or duration in host ticks (their number per second comes from the Time Suite).
using PrTime = std::int64_t;

// A position or count in sample frames of audio.
using PrAudioSample = std::int64_t;

// Result of an importer selector.
using prMALError = std::int32_t;

// Result of a suite function, 0 = success.
using prSuiteError = std::int32_t;

// Result of the basic suite, 0 = success.
using SPErr = std::int32_t;

// The host's handle of a frame buffer, null = none. What it points to is the host's own; only suites look
// inside.
struct PPixContents;
using PPixHand = PPixContents**;

// An OS file handle as the host carries it. An integer, so that no Windows header is needed.
using imFileRef = std::uint64_t;
inline constexpr imFileRef kInvalidFileRef = ~imFileRef{0};

// Has no padding by itself, so packing changes nothing. Right and bottom are exclusive.
struct prRect {
    std::int32_t left;
    std::int32_t top;
    std::int32_t right;
    std::int32_t bottom;
};
static_assert(offsetof(prRect, left) == 0 && offsetof(prRect, top) == 4);
static_assert(offsetof(prRect, right) == 8 && offsetof(prRect, bottom) == 12);
static_assert(sizeof(prRect) == 16);

}  // namespace host
