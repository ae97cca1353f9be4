#include "tool/shared/media/frame_range.h"

#include <algorithm>
#include <charconv>

#include "tool/shared/base/number_text.h"

namespace simhost::tool {
namespace {

std::optional<std::uint32_t> wholeNumber(std::string_view text) {
    std::uint32_t value = 0;
    const auto [end, error] = std::from_chars(text.data(), text.data() + text.size(), value);
    return error == std::errc{} && end == text.data() + text.size() ? std::optional(value) : std::nullopt;
}

}  // namespace

std::optional<FrameRange> parseFrameRange(std::string_view text) {
    FrameRange out;
    if (text == "all") {
        return out;
    }
    const std::size_t colon = text.find(':');
    const auto first = wholeNumber(text.substr(0, colon));
    if (!first) {
        return std::nullopt;
    }
    out.first = *first;
    if (colon == std::string_view::npos) {
        out.last = out.first;
        return out;
    }
    std::string_view rest = text.substr(colon + 1);
    const std::size_t second = rest.find(':');
    const std::string_view last = rest.substr(0, second);
    if (!last.empty()) {
        out.last = wholeNumber(last);
        if (!out.last || *out.last < out.first) {
            return std::nullopt;
        }
    }
    if (second != std::string_view::npos) {
        const auto step = wholeNumber(rest.substr(second + 1));
        if (!step || *step == 0) {
            return std::nullopt;
        }
        out.step = *step;
    }
    return out;
}

std::string rangeNote(const FrameRange& range, std::uint32_t count) {
    if (!range.last || *range.last < count || range.first >= count) {
        return {};
    }
    return "the clip has " + counted(count, "frame", "frames") + ", 0 to " + std::to_string(count - 1) +
           ": the range ends there, not at " + std::to_string(*range.last);
}

std::vector<std::uint32_t> framesOf(const FrameRange& range, std::uint32_t count) {
    std::vector<std::uint32_t> out;
    const std::uint64_t end =
        std::min<std::uint64_t>(range.last ? std::uint64_t{*range.last} + 1 : count, count);
    for (std::uint64_t i = range.first; i < end; i += range.step) {
        out.push_back(static_cast<std::uint32_t>(i));
    }
    return out;
}

}  // namespace simhost::tool
