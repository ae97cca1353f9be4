// The work of an endurance run: several clips at once, each on a thread of its own, opened, played forwards,
// scrubbed, listened to, read ahead asynchronously, quieted, opened again and closed at random. Every answer
// is checked: what was delivered once must be delivered the same for ever.
#pragma once

#include <atomic>
#include <chrono>
#include <cstdint>
#include <functional>
#include <memory>
#include <mutex>
#include <string>
#include <vector>

#include "simhost/importer.h"

namespace simhost::tool {

/// One file as the plug-in described it before the run.
struct SoakFile {
    std::string pathUtf8;
    bool playable = false;               ///< else the plug-in refused it, and has to do so each time
    std::int32_t openResult = 0;         ///< of imOpenFile8
    std::int32_t infoResult = 0;         ///< of imGetInfo8 for stream 0
    std::uint32_t frames = 0;            ///< of these the first kMostFrames are played
    std::vector<std::uint32_t> formats;  ///< the first few that are offered
    std::uint32_t channels = 0;          ///< 0 without sound
    std::int64_t sampleFrames = 0;
    /// What each frame looked like when it was first delivered, format by format; 0 = not yet.
    std::unique_ptr<std::atomic<std::uint64_t>[]> hashes;

    static constexpr std::uint32_t kMostFrames = 256;
    static constexpr std::size_t kMostFormats = 3;
};

SoakFile describeSoakFile(const Importer& importer, std::string pathUtf8);

struct SoakTally {
    std::atomic<std::uint64_t> opens{0}, refusals{0}, frames{0}, sampleFrames{0}, asyncImporters{0}, wrong{0};

    /// Counts what should not have happened and remembers the first few.
    void addWrong(std::string text);
    std::vector<std::string> messages() const;

 private:
    mutable std::mutex m_mutex;
    std::vector<std::string> m_messages;
};

struct SoakWork {
    std::uint32_t clips = 4;  ///< open at once
    std::uint64_t seed = 1;
    std::chrono::milliseconds pause{0};  ///< between two actions on a clip
};

/// Works until `until` and returns when every clip is closed. `atWork` is called on the calling thread half
/// way through.
void soakRound(const Importer& importer, std::vector<SoakFile>& files, const SoakWork& work,
               std::chrono::steady_clock::time_point until, const std::function<void()>& atWork,
               SoakTally& tally);

}  // namespace simhost::tool
