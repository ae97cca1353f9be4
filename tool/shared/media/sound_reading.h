// The whole sound of a stream, block by block, as the host asks for it. Main thread only.
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

/// Hands the samples to `take` in order, up to the end or the first refusal. `showProgress` draws a bar.
std::optional<SoundFailure> readSound(const Clip& clip, const SoundShape& shape, bool showProgress,
                                      const std::function<void(const AudioAnswer&)>& take);

}  // namespace simhost::tool
