// The type codes of the codec maker's library: what OrvantisFrameFormat::type and the functions that take a
// type understand. The plug-in's format tables and the stand-in library name them from here. Pure constants.
#pragma once

#include <cstdint>

namespace orvantis {

/// Coded types (orvTypeComp): what a file can hold.
inline constexpr std::uint32_t kOrvantisCodedRgb8 = 101;
inline constexpr std::uint32_t kOrvantisCodedRgba8 = 102;
inline constexpr std::uint32_t kOrvantisCodedYuv444p8 = 103;
inline constexpr std::uint32_t kOrvantisCodedYuv422p8 = 104;
inline constexpr std::uint32_t kOrvantisCodedYuv420p8 = 105;
inline constexpr std::uint32_t kOrvantisCodedYuva8 = 106;
inline constexpr std::uint32_t kOrvantisCodedGrey8 = 107;
inline constexpr std::uint32_t kOrvantisCodedYuv422p10 = 108;
inline constexpr std::uint32_t kOrvantisCodedRgb10 = 109;
inline constexpr std::uint32_t kOrvantisCodedRgba10 = 110;
inline constexpr std::uint32_t kOrvantisCodedRgb12 = 111;
inline constexpr std::uint32_t kOrvantisCodedRgba12 = 112;
inline constexpr std::uint32_t kOrvantisCodedRgb14 = 113;
inline constexpr std::uint32_t kOrvantisCodedRgba14 = 114;
inline constexpr std::uint32_t kOrvantisCodedGrey10 = 115;
inline constexpr std::uint32_t kOrvantisCodedYuv444p10 = 118;
inline constexpr std::uint32_t kOrvantisCodedYuv420p10 = 123;

/// Output layouts (orvType): what a frame can be decoded into.
inline constexpr std::uint32_t kOrvantisOutBgrx = 1;
inline constexpr std::uint32_t kOrvantisOutBgra = 2;
inline constexpr std::uint32_t kOrvantisOutYuyv = 4;
inline constexpr std::uint32_t kOrvantisOutUyvy = 5;
inline constexpr std::uint32_t kOrvantisOutV210 = 11;
inline constexpr std::uint32_t kOrvantisOutRgb10 = 15;
inline constexpr std::uint32_t kOrvantisOutXrgb = 16;
inline constexpr std::uint32_t kOrvantisOutArgb = 19;
inline constexpr std::uint32_t kOrvantisOutBgra16 = 31;
inline constexpr std::uint32_t kOrvantisOutBgrx16 = 32;
inline constexpr std::uint32_t kOrvantisOutVuyx = 49;
inline constexpr std::uint32_t kOrvantisOutVuya = 50;

}  // namespace orvantis
