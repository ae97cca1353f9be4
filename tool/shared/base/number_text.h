// Numbers for people. Pure functions; any thread.
#pragma once

#include <string>

namespace simhost::tool {

std::string decimalText(double value, int digits);
/// "3.2 MiB"
std::string bytesText(double bytes);
/// "01:02:03.250"; "unknown" for what is no time of a clip.
std::string timeText(double seconds);

}  // namespace simhost::tool
