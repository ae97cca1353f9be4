#include "tool/shared/media/sound_reading.h"

#include <algorithm>

#include "tool/shared/base/progress.h"

namespace simhost::tool {

std::uint64_t SoundSampling::start(std::uint64_t block) const noexcept {
    // Rounded up, so that a block does not begin in the column before its own.
    return length / blocks * block + (length % blocks * block + blocks - 1) / blocks;
}

std::optional<SoundSampling> soundSampling(const SoundShape& shape, std::uint32_t columns,
                                           std::uint64_t mostSamples) noexcept {
    const std::uint64_t most = mostSamples / std::max(shape.channels, 1U);
    if (shape.length <= most || columns == 0) {
        return std::nullopt;
    }
    return SoundSampling{shape.length, columns,
                         static_cast<std::uint32_t>(std::max<std::uint64_t>(most / columns, 1))};
}

std::optional<SoundFailure> sampleSound(const Clip& clip, const SoundShape& shape,
                                        const SoundSampling& sampling, bool showProgress,
                                        const std::function<void(std::uint64_t, const AudioAnswer&)>& take) {
    Progress progress(showProgress, "sample frames", sampling.blocks * sampling.taken);
    for (std::uint64_t block = 0; block < sampling.blocks; ++block) {
        const std::uint64_t at = sampling.start(block);
        const AudioAnswer answer =
            clip.importAudio(static_cast<std::int64_t>(at), sampling.taken, shape.channels);
        if (answer.result != host::imNoErr) {
            return SoundFailure{at, answer.result};
        }
        take(at, answer);
        progress.advance(sampling.taken);
    }
    return std::nullopt;
}

std::optional<SoundFailure> readSound(const Clip& clip, const SoundShape& shape, bool showProgress,
                                      const std::function<void(const AudioAnswer&)>& take) {
    constexpr std::uint32_t kBlock = 48000;
    Progress progress(showProgress, "sample frames", shape.length);
    for (std::uint64_t at = 0; at < shape.length; at += kBlock) {
        const auto size = static_cast<std::uint32_t>(std::min<std::uint64_t>(kBlock, shape.length - at));
        const AudioAnswer answer = clip.importAudio(static_cast<std::int64_t>(at), size, shape.channels);
        if (answer.result != host::imNoErr) {
            return SoundFailure{at, answer.result};
        }
        take(answer);
        progress.advance(size);
    }
    return std::nullopt;
}

}  // namespace simhost::tool
