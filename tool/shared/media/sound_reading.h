// The sound of a stream, block by block, as the host asks for it: all of it, or samples of it. Main thread
// only.
#pragma once

#include <cstdint>
#include <functional>
#include <optional>

#include "simhost/clip.h"
#include "tool/shared/media/media_facts.h"

namespace simhost::tool {

struct SoundFailure {
    std::uint64_t position = 0;  ///< the sample frame from which on there is nothing
    std::int32_t result = 0;
};

/// Stretches of a sound, evenly spread from its beginning.
struct SoundSampling {
    std::uint64_t length = 0;  ///< of the sound, in sample frames
    std::uint64_t blocks = 0;  ///< that it is divided into
    std::uint32_t taken = 0;   ///< sample frames from the beginning of each

    /// Where a block begins; that of `blocks` is the end.
    std::uint64_t start(std::uint64_t block) const noexcept;
};

/// Samples of all channels that are looked at for one drawing: a minute of stereo and a bit, read in a
/// moment.
inline constexpr std::uint64_t kMostDrawnSamples = 12'000'000;

/// What to read for a drawing of so many columns, a block for each: at most `most` samples of all channels,
/// but at least one sample frame for each column. Nothing when all of it may be read.
std::optional<SoundSampling> soundSampling(const SoundShape& shape, std::uint32_t columns,
                                           std::uint64_t most = kMostDrawnSamples) noexcept;

/// Hands the stretches to `take`, each with its position, up to the end or the first refusal.
std::optional<SoundFailure> sampleSound(const Clip& clip, const SoundShape& shape,
                                        const SoundSampling& sampling, bool showProgress,
                                        const std::function<void(std::uint64_t, const AudioAnswer&)>& take);

/// Hands the samples to `take` in order, up to the end or the first refusal. `showProgress` draws a bar.
std::optional<SoundFailure> readSound(const Clip& clip, const SoundShape& shape, bool showProgress,
                                      const std::function<void(const AudioAnswer&)>& take);

}  // namespace simhost::tool
