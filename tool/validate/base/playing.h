// A clip that the plug-in has opened and described, with what the checks ask of every clip. Calls come from
// one thread at a time.
#pragma once

#include <cstdint>
#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "simhost/async_clip.h"
#include "simhost/clip.h"
#include "tool/shared/media/media_facts.h"
#include "tool/validate/base/stage.h"

namespace simhost::tool::validate {

using Picture = std::vector<std::uint8_t>;

class Playing {
 public:
    /// Nothing when the plug-in refuses the file or its description.
    static std::unique_ptr<Playing> open(const Importer& importer, const std::string& path,
                                         std::int32_t stream = 0);

    Clip& clip() noexcept { return m_clip; }
    const std::string& path() const noexcept { return m_path; }
    const host::imFileInfoRec8& info() const noexcept { return m_info; }
    /// What was answered to imGetInfo8.
    std::int32_t infoResult() const noexcept { return m_infoResult; }
    std::uint32_t frames() const noexcept { return m_frames; }
    /// On offer, as far as the simulated host can make frames of them; asked for at the first use.
    const std::vector<std::uint32_t>& formats();
    const std::optional<SoundShape>& sound() const noexcept { return m_sound; }

    /// Has pictures, and gives the first one.
    bool showsPictures();
    /// Says that it has an asynchronous importer.
    bool saysAsync() const noexcept { return m_info.vidInfo.supportsAsyncIO != 0; }

    /// The rows from the top, without padding; nothing when the plug-in refuses.
    std::optional<Picture> picture(std::uint32_t index, std::uint32_t format) const;
    std::optional<Picture> picture(std::uint32_t index) { return picture(index, formats().front()); }

    /// Where a frame begins, in the ticks of the host.
    host::PrTime frameTime(std::uint32_t frame) const { return m_clip.frameTime(frame); }

    /// First, last and others drawn by the trial, sorted, each once.
    std::vector<std::uint32_t> someFrames(Trial& trial, std::uint32_t most) const;

 private:
    Playing(const Importer& importer, const std::string& path, std::int32_t stream);

    std::string m_path;
    Clip m_clip;
    host::imFileInfoRec8 m_info{};
    std::int32_t m_infoResult = 0;
    std::uint32_t m_frames = 0;
    std::optional<std::vector<std::uint32_t>> m_formats;
    std::optional<SoundShape> m_sound;
    std::optional<bool> m_shows;
};

/// The clips that the plug-in opens, one at a time. Throws Skipped when it opens none.
void forClips(Trial& trial, Stage& stage, const std::function<void(Playing&)>& work);
/// Those that show pictures.
void forPictures(Trial& trial, Stage& stage, const std::function<void(Playing&)>& work);
/// The same, but without those that do not show the same picture twice: that is the matter of
/// frames.same-twice.
void forSteadyPictures(Trial& trial, Stage& stage, const std::function<void(Playing&)>& work);
/// Every stream of every clip that has sound.
void forSound(Trial& trial, Stage& stage, const std::function<void(Playing&)>& work);
/// The same, but without those that do not give the same sound twice: that is the matter of sound.same-twice.
void forSteadySound(Trial& trial, Stage& stage, const std::function<void(Playing&)>& work);
/// The clips that show the same picture twice and have an asynchronous importer, with it.
void forAsync(Trial& trial, Stage& stage, const std::function<void(Playing&, AsyncClip&)>& work);
/// The same, but without those that show other pictures by it: that is the matter of async.same-pixels.
void forSteadyAsync(Trial& trial, Stage& stage, const std::function<void(Playing&, AsyncClip&)>& work);

/// The first clip that the plug-in opens: the path of a copy that may be harmed. Throws Skipped.
std::string copyOfClip(Trial& trial, Stage& stage, const std::string& name = {});

/// "imGetSourceVideo, frame 3 as PrPixelFormat_BGRA_4444_8u"
std::string frameCall(std::uint32_t index, std::uint32_t format, const char* selector = "imGetSourceVideo");
/// "another picture from byte 12 of row 3 on", or how the sizes differ; empty when equal.
std::string pictureDifference(const std::optional<Picture>& expected, const std::optional<Picture>& seen);
/// "other samples from channel 1, sample frame 300 on"; empty when equal.
std::string soundDifference(const std::vector<std::vector<float>>& expected,
                            const std::vector<std::vector<float>>& seen);

}  // namespace simhost::tool::validate
