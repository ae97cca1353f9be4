// What a plug-in holds of its host at one moment: suites, frames, memory. Everything must be back when it has
// shut down.
#pragma once

#include <cstddef>
#include <cstdint>
#include <map>
#include <string>
#include <vector>

#include "simhost/violation.h"

namespace simhost {

struct HostBalance {
    std::map<std::string, std::int64_t> suites;  ///< "name version" of each suite still held, and how often
    std::size_t frames = 0;                      ///< frame buffers created, neither delivered nor disposed of
    std::size_t frameBytes = 0;
    std::size_t deliveredFrames = 0;  ///< in the host's hands; no leak of the plug-in
    std::size_t blocks = 0;           ///< memory blocks
    std::uint64_t blockBytes = 0;

    /// True when the plug-in holds nothing.
    bool isBalanced() const noexcept { return suites.empty() && frames == 0 && blocks == 0; }
    /// What is still held, as the rules that it breaks once imShutdown has returned; empty when balanced.
    std::vector<Violation> violations() const;
    /// The same as one line each.
    std::string report() const;
};

}  // namespace simhost
