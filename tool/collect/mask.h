// Takes a person's name and home folder out of what is sent to others. They are found in any letter case,
// with any separators, as UTF-8 and as UTF-16, and inside JSON strings, HTML text and URLs. Pure; any thread.
#pragma once

#include <string>
#include <string_view>
#include <vector>

namespace simhost::tool {

/// What stands in their place. The texts need no escape anywhere.
inline constexpr std::string_view kMaskedHome = "%USERPROFILE%";
inline constexpr std::string_view kMaskedName = "%USERNAME%";

struct PersonalNames {
    std::vector<std::string> users;  ///< UTF-8
    std::vector<std::string> homes;  ///< paths, UTF-8
};

class Mask {
 public:
    /// Empty names, and homes that are a root, mask nothing. A name of one or two letters is masked where it
    /// stands alone.
    explicit Mask(const PersonalNames& names);

    std::string apply(std::string_view text) const;
    /// The same but for what a page of the report has from the program itself: its style, and the bytes of
    /// its pictures.
    std::string applyToPage(std::string_view page) const;

 private:
    struct Pattern {
        std::u32string text;  ///< folded; U'/' stands for separators
        bool home = false;
        bool alone = false;
    };
    std::vector<Pattern> m_patterns;  // homes first, the longest first
};

}  // namespace simhost::tool
