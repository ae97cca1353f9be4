#include "tool/validate/base/known_frames.h"

namespace simhost::tool::validate {

KnownFrames::KnownFrames(Trial& trial, Playing& playing, std::uint32_t most)
    : m_format(playing.formats().front()), m_frames(playing.someFrames(trial, most)) {
    for (const std::uint32_t frame : m_frames) {
        m_pictures.push_back(playing.picture(frame, m_format));
    }
}

bool KnownFrames::isShown(Trial& trial, const Playing& playing, std::size_t i,
                          const std::string& when) const {
    return compare(trial, playing, i, playing.picture(m_frames[i], m_format),
                   frameCall(m_frames[i], m_format) + when);
}

bool KnownFrames::isShown(Trial& trial, const Playing& playing, std::size_t i, const FrameAnswer& answer,
                          const std::string& when) const {
    return compare(trial, playing, i, answer.frame ? std::optional(answer.frame->picture()) : std::nullopt,
                   frameCall(m_frames[i], m_format, "aiGetFrame") + when);
}

bool KnownFrames::compare(Trial& trial, const Playing& playing, std::size_t i,
                          const std::optional<Picture>& seen, const std::string& call) const {
    const std::string difference = pictureDifference(m_pictures[i], seen);
    if (!difference.empty()) {
        trial.fail({.call = call, .clip = playing.path(), .seen = difference});
    }
    return difference.empty();
}

}  // namespace simhost::tool::validate
