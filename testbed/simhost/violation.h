// One broken rule of the host, and what was seen of it.
#pragma once

#include <span>
#include <string>
#include <vector>

#include "simhost/rules.h"

namespace simhost {

struct Violation {
    Rule rule{};
    std::string call;         ///< the selector, or the function of the host, that it was seen in; empty: none
    std::string seen;         ///< what was found instead of what the rule says
    std::string record = {};  ///< the host's name of the record, or what else it is about; empty: none
    std::string field = {};   ///< the host's name of its field; empty: none

    /// One line without its end: "frames.access: CreatePPix, access: 0". The parts that are empty are left
    /// out.
    std::string text() const;
};

/// The text of each.
std::vector<std::string> texts(std::span<const Violation> violations);

}  // namespace simhost
