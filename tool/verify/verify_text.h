// What verify answers: in words, and as JSON. Pure functions; any thread.
#pragma once

#include <nlohmann/json_fwd.hpp>
#include <string>
#include <vector>

#include "tool/verify/clip_hashes.h"

namespace simhost::tool {

/// What was done with the hashes of a clip.
enum class HashUse { kNone, kWritten, kCompared };

struct VerifyAnswer {
    std::string file;
    std::string list;  ///< path; empty with kNone
    HashUse use = HashUse::kNone;
    std::uint64_t resumed = 0;  ///< hashes of an earlier run
    ClipHashes clip;
    std::vector<VerifyFinding> findings;

    bool isWhole() const noexcept;
};

/// Findings in the list before the rest is counted only.
inline constexpr std::size_t kMostTold = 1000;

std::string verifyText(const VerifyAnswer& answer);
nlohmann::ordered_json verifyJson(const VerifyAnswer& answer);

}  // namespace simhost::tool
