// Numbers for people. Pure functions; any thread.
#pragma once

#include <cstdint>
#include <string>

namespace simhost::tool {

std::string decimalText(double value, int digits);
/// "1 file", "2 files"
std::string counted(std::uint64_t count, const char* one, const char* many);
/// "3.2 MiB"
std::string bytesText(double bytes);
/// "01:02:03.250"; "unknown" for what is no time of a clip.
std::string timeText(double seconds);
/// ", 0:42 left" for work that goes on at the pace so far; empty in the first second, which tells little, and
/// for days.
std::string timeLeftText(double secondsSpent, std::uint64_t done, std::uint64_t total);
/// "2026-11-15 22:10:09 UTC" of seconds since 1970.
std::string dateText(std::int64_t seconds);

}  // namespace simhost::tool
