// The clips that are measured, by name.
#pragma once

#include <string>
#include <vector>

#include "bench/sparse_avi.h"

namespace orvantis::bench {

inline constexpr std::uint32_t kScalingFrames[] = {10'000, 100'000, 1'000'000, 10'000'000};

struct BenchFile {
    std::string name;
    SparseAviPlan plan;
};

/// All of them, the small ones first.
std::vector<BenchFile> benchFiles();

/// Name of the OpenDML clip of so many frames, one of kScalingFrames or 1.
std::string scalingFile(std::uint32_t frames);

}  // namespace orvantis::bench
