// A standard session of the host on one file: everything a host does with a clip, from imInit to imShutdown.
// Fuzzers, fault injection and endurance runs use it; its hashes let runs under different hosts be compared.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "simhost/importer.h"

namespace simhost {

struct SessionOptions {
    std::string pathUtf8;
    bool initAndShutdown = true;        ///< send imInit first and imShutdown last
    bool async = true;                  ///< also play through an asynchronous importer
    std::uint32_t framesPerFormat = 3;  ///< spread over the clip, first and last among them
    std::uint32_t audioFrames = 1000;   ///< sample frames per audio request
    std::uint32_t mostFormats = 32;     ///< pixel formats to ask frames in
};

struct SessionStep {
    std::string name;
    std::int32_t result;
};

struct SessionSummary {
    std::vector<SessionStep> steps;  ///< every selector sent, in order, with its result
    bool opened = false;
    std::uint32_t streams = 0;           ///< streams described
    std::uint64_t frames = 0;            ///< frames delivered, both ways
    std::uint64_t audioFrames = 0;       ///< sample frames asked for in calls that succeeded
    std::uint64_t pictureHash = 0;       ///< of the synchronous frames from the top row down, without padding
    std::uint64_t audioHash = 0;         ///< of the samples' bits
    std::uint64_t asyncDifferences = 0;  ///< asynchronous frames that differ from the synchronous ones

    /// One line for each step.
    std::string text() const;
};

/// Runs on the calling thread. The Host's balance and violations tell what it left behind.
SessionSummary runSession(const Importer& importer, const SessionOptions& options);

/// FNV-1a over bytes, to go on from `seed`.
std::uint64_t hashBytes(const void* bytes, std::size_t size,
                        std::uint64_t seed = 0xCBF29CE484222325u) noexcept;

}  // namespace simhost
