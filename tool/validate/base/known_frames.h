// Some frames of a clip with the pictures that they show while nothing else goes on, to be held against what
// they show later. Its comparing may be done on any thread.
#pragma once

#include <cstdint>
#include <optional>
#include <string>
#include <vector>

#include "tool/validate/base/playing.h"

namespace simhost::tool::validate {

class KnownFrames {
 public:
    /// Takes up to `most` frames, the first and the last and others by lot, in the format on offer first.
    KnownFrames(Trial& trial, Playing& playing, std::uint32_t most);

    std::size_t count() const noexcept { return m_frames.size(); }
    std::uint32_t frame(std::size_t i) const { return m_frames[i]; }
    std::uint32_t format() const noexcept { return m_format; }

    /// Asks `playing`, which is open on the same file, for the frame, and fails with `when` behind the call
    /// if it shows something else. True when it is the same.
    bool isShown(Trial& trial, const Playing& playing, std::size_t i, const std::string& when) const;
    /// The same of the answer of an asynchronous importer.
    bool isShown(Trial& trial, const Playing& playing, std::size_t i, const FrameAnswer& answer,
                 const std::string& when) const;

 private:
    bool compare(Trial& trial, const Playing& playing, std::size_t i, const std::optional<Picture>& seen,
                 const std::string& call) const;

    std::uint32_t m_format;
    std::vector<std::uint32_t> m_frames;
    std::vector<std::optional<Picture>> m_pictures;
};

}  // namespace simhost::tool::validate
