#include "tool/shared/base/nearest_name.h"

#include <algorithm>
#include <cctype>
#include <numeric>
#include <utility>
#include <vector>

namespace simhost::tool {
namespace {

bool same(char a, char b) {
    return std::tolower(static_cast<unsigned char>(a)) == std::tolower(static_cast<unsigned char>(b));
}

// Letters put in, left out or replaced, and neighbours exchanged.
std::size_t changes(std::string_view a, std::string_view b) {
    std::vector<std::size_t> before(b.size() + 1);
    std::vector<std::size_t> last(b.size() + 1);
    std::vector<std::size_t> now(b.size() + 1);
    std::iota(last.begin(), last.end(), std::size_t{0});
    for (std::size_t i = 1; i <= a.size(); ++i) {
        now[0] = i;
        for (std::size_t j = 1; j <= b.size(); ++j) {
            now[j] =
                std::min({last[j] + 1, now[j - 1] + 1, last[j - 1] + (same(a[i - 1], b[j - 1]) ? 0U : 1U)});
            if (i > 1 && j > 1 && same(a[i - 1], b[j - 2]) && same(a[i - 2], b[j - 1])) {
                now[j] = std::min(now[j], before[j - 2] + 1);
            }
        }
        before = std::exchange(last, now);
    }
    return last[b.size()];
}

}  // namespace

std::string nearestName(std::string_view word, std::span<const std::string> names) {
    constexpr std::size_t kLongestWord = 64;
    std::string out;
    // More than half of the letters wrong is another word.
    std::size_t best = word.size() / 2 + 1;
    for (const std::string& name : names) {
        const std::size_t count = word.size() > kLongestWord ? best : changes(word, name);
        if (count < best) {
            best = count;
            out = name;
        }
    }
    return out;
}

}  // namespace simhost::tool
