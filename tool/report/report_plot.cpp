#include "tool/report/report_plot.h"

#include <algorithm>

#include "tool/shared/base/html_text.h"
#include "tool/shared/base/number_text.h"

namespace simhost::tool {
namespace {

constexpr double kWaveHeight = 80.0;
constexpr double kRateHeight = 160.0;

std::string number(double value) {
    return decimalText(value, 1);
}

std::string svgHead(std::size_t width, double height, const char* look, const std::string& name) {
    return "<svg class=\"" + std::string(look) + "\" viewBox=\"0 0 " + std::to_string(width) + " " +
           number(height) + "\" preserveAspectRatio=\"none\" role=\"img\" aria-label=\"" + htmlEscaped(name) +
           "\">";
}

double waveY(float sample) {
    const double cut = std::clamp(static_cast<double>(sample), -1.0, 1.0);
    return (1.0 - cut) * kWaveHeight / 2.0;
}

}  // namespace

// One closed outline: the upper edge from left to right, the lower edge back. Never thinner than a line.
std::string waveSvg(const SampleRanges& ranges, const std::string& name) {
    const std::span<const SampleRange> columns = ranges.columns();
    std::string out = svgHead(columns.size(), kWaveHeight, "wave", name);
    out += "<path class=\"zero\" d=\"M0 " + number(kWaveHeight / 2) + "H" + std::to_string(columns.size()) +
           "\"/>";
    std::string upper;
    std::string lower;
    for (std::size_t i = 0; i < columns.size(); ++i) {
        const double high = waveY(columns[i].high) - 0.3;
        const double low = waveY(columns[i].low) + 0.3;
        upper +=
            (i == 0 ? "M0 " : "L" + std::to_string(i) + " ") + number(high) + "H" + std::to_string(i + 1);
        lower.insert(0, "L" + std::to_string(i + 1) + " " + number(low) + "H" + std::to_string(i));
    }
    return out + "<path class=\"sound\" d=\"" + upper + lower + "Z\"/></svg>";
}

std::string frameSizeSvg(std::span<const std::uint32_t> sizes, const std::string& name, std::size_t width) {
    const std::size_t columns = std::min(sizes.size(), width);
    std::string out = svgHead(std::max<std::size_t>(columns, 1), kRateHeight, "rate", name);
    const std::uint32_t largest = sizes.empty() ? 0 : *std::max_element(sizes.begin(), sizes.end());
    const double scale = largest == 0 ? 0.0 : kRateHeight / largest;
    std::string most;
    std::string mean;
    std::string empty;
    for (std::size_t column = 0; column < columns; ++column) {
        const auto first = static_cast<std::size_t>(std::uint64_t{column} * sizes.size() / columns);
        const auto last = static_cast<std::size_t>((std::uint64_t{column} + 1) * sizes.size() / columns);
        const auto part = sizes.subspan(first, last - first);
        double sum = 0;
        for (const std::uint32_t size : part) {
            sum += size;
        }
        const std::string x = "M" + std::to_string(column) + " ";
        const auto bar = [&x](double height) {
            return x + number(kRateHeight) + "v-" + number(height) + "h1v" + number(height) + "z";
        };
        most += bar(*std::max_element(part.begin(), part.end()) * scale);
        mean += bar(sum / static_cast<double>(part.size()) * scale);
        if (std::find(part.begin(), part.end(), 0U) != part.end()) {
            empty += x + number(kRateHeight) + "v-6.0h1v6.0z";
        }
    }
    out += "<path class=\"most\" d=\"" + most + "\"/><path class=\"mean\" d=\"" + mean + "\"/>";
    return out + (empty.empty() ? "" : "<path class=\"empty\" d=\"" + empty + "\"/>") + "</svg>";
}

}  // namespace simhost::tool
