#include "tool/shared/media/sound_reading.h"

#include <algorithm>

#include "tool/shared/base/progress.h"

namespace simhost::tool {

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
