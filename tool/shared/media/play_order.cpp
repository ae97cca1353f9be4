#include "tool/shared/media/play_order.h"

#include <algorithm>
#include <random>

namespace simhost::tool {

std::optional<PlayPattern> parsePlayPattern(std::string_view text) {
    struct Row {
        std::string_view name;
        PlayPattern pattern;
    };
    constexpr Row kRows[] = {{"sequential", PlayPattern::kSequential},
                             {"scrub", PlayPattern::kScrub},
                             {"reverse", PlayPattern::kReverse},
                             {"random", PlayPattern::kRandom}};
    for (const Row& row : kRows) {
        if (row.name == text) {
            return row.pattern;
        }
    }
    return std::nullopt;
}

std::vector<std::uint32_t> playOrder(PlayPattern pattern, const std::vector<std::uint32_t>& frames,
                                     std::uint32_t seed) {
    std::vector<std::uint32_t> out;
    switch (pattern) {
        case PlayPattern::kSequential:
            return frames;
        case PlayPattern::kReverse:
            out.assign(frames.rbegin(), frames.rend());
            break;
        case PlayPattern::kScrub: {
            // Eight frames forward in twos, five back one by one, and so on to the end.
            constexpr std::size_t kForward = 8;
            constexpr std::size_t kStride = 2;
            constexpr std::size_t kBack = 5;
            for (std::size_t start = 0; start < frames.size(); start += kForward - kBack) {
                const std::size_t turn = std::min(start + kForward, frames.size() - 1);
                for (std::size_t i = start; i < turn; i += kStride) {
                    out.push_back(frames[i]);
                }
                for (std::size_t i = 0; i < kBack && i <= turn; ++i) {
                    out.push_back(frames[turn - i]);
                }
            }
            break;
        }
        case PlayPattern::kRandom: {
            std::mt19937 random(seed);
            for (std::size_t i = 0; i < frames.size(); ++i) {
                // Not a distribution of the library: those differ between compilers.
                out.push_back(frames[random() % frames.size()]);
            }
            break;
        }
    }
    return out;
}

}  // namespace simhost::tool
