#include "tool/shared/base/number_text.h"

#include <algorithm>
#include <chrono>
#include <cmath>
#include <cstddef>
#include <cstdio>
#include <iterator>

namespace simhost::tool {

std::string decimalText(double value, int digits) {
    char text[400];  // the largest double has 309 digits
    (void)std::snprintf(text, sizeof text, "%.*f", digits, value);
    return text;
}

std::string counted(std::uint64_t count, const char* one, const char* many) {
    return std::to_string(count) + " " + (count == 1 ? one : many);
}

std::string bytesText(double bytes) {
    constexpr const char* kUnits[] = {"bytes", "KiB", "MiB", "GiB", "TiB"};
    std::size_t unit = 0;
    while (bytes >= 1024 && unit + 1 < std::size(kUnits)) {
        bytes /= 1024;
        ++unit;
    }
    return decimalText(bytes, unit == 0 ? 0 : 1) + " " + kUnits[unit];
}

std::string timeText(double seconds) {
    // Beyond this no clock helps, and no integer holds it.
    constexpr double kMost = 1e9;
    if (!std::isfinite(seconds) || seconds < 0 || seconds > kMost) {
        return "unknown";
    }
    const auto milliseconds = static_cast<long long>(std::llround(seconds * 1000));
    char text[48];
    (void)std::snprintf(text, sizeof text, "%02lld:%02lld:%02lld.%03lld", milliseconds / 3'600'000,
                        milliseconds / 60'000 % 60, milliseconds / 1000 % 60, milliseconds % 1000);
    return text;
}

std::string timeLeftText(double secondsSpent, std::uint64_t done, std::uint64_t total) {
    constexpr double kMostSeconds = 99 * 3600.0;
    if (secondsSpent < 1 || done == 0) {
        return {};
    }
    const double left =
        secondsSpent * static_cast<double>(total - std::min(done, total)) / static_cast<double>(done);
    if (left > kMostSeconds) {
        return {};
    }
    const auto whole = static_cast<unsigned>(std::lround(left));
    char text[32];
    (void)std::snprintf(text, sizeof text, ", %u:%02u left", whole / 60, whole % 60);
    return text;
}

std::string dateText(std::int64_t seconds) {
    using namespace std::chrono;
    const sys_seconds time{std::chrono::seconds(seconds)};
    const auto day = floor<days>(time);
    const year_month_day date(day);
    const hh_mm_ss clock(time - day);
    char text[64];
    (void)std::snprintf(text, sizeof text, "%04d-%02u-%02u %02d:%02d:%02d UTC", static_cast<int>(date.year()),
                        static_cast<unsigned>(date.month()), static_cast<unsigned>(date.day()),
                        static_cast<int>(clock.hours().count()), static_cast<int>(clock.minutes().count()),
                        static_cast<int>(clock.seconds().count()));
    return text;
}

}  // namespace simhost::tool
