#include "tool/validate/base/playing.h"

#include <algorithm>
#include <bit>
#include <filesystem>
#include <set>

#include "host/result_codes.h"
#include "tool/shared/base/output_file.h"

namespace simhost::tool::validate {
namespace {

constexpr const char* kNoClip = "the plug-in opens none of the clips: name one that it plays";

bool isSteady(Playing& playing) {
    return playing.picture(0) == playing.picture(0);
}

bool isSteadyAsync(Playing& playing, const AsyncClip& async) {
    for (const std::uint32_t frame : {0u, playing.frames() - 1}) {
        const host::imFrameFormat wanted[] = {{0, 0, playing.formats().front()}};
        (void)async.initiate(playing.frameTime(frame), wanted);
        const FrameAnswer answer = async.getFrame(playing.frameTime(frame), wanted);
        if (!answer.frame || playing.picture(frame) != answer.frame->picture()) {
            return false;
        }
    }
    return true;
}

bool hasSteadySound(Playing& playing) {
    const auto size = static_cast<std::uint32_t>(std::min<std::uint64_t>(playing.sound()->length, 256));
    const auto read = [&] { return playing.clip().importAudio(0, size, playing.sound()->channels); };
    const AudioAnswer first = read();
    return first.result == host::imNoErr && soundDifference(first.channels, read().channels).empty();
}

}  // namespace

Playing::Playing(const Importer& importer, const std::string& path, std::int32_t stream)
    : m_path(path), m_clip(importer, path, OpenOptions{stream}) {
    if (!m_clip.isOpen()) {
        return;
    }
    const auto answer = m_clip.getInfo(stream);
    m_info = answer.record;
    m_infoResult = answer.result;
    if (m_info.hasVideo == 1) {
        m_frames = frameCount(m_info);
    }
    m_sound = soundShape(m_info);
    if (m_sound && m_sound->length == 0) {
        m_sound.reset();
    }
}

std::unique_ptr<Playing> Playing::open(const Importer& importer, const std::string& path,
                                       std::int32_t stream) {
    std::unique_ptr<Playing> made(new Playing(importer, path, stream));
    const bool described = made->m_infoResult == host::imNoErr ||
                           made->m_infoResult == host::imIterateStreams ||
                           (made->m_infoResult == host::imBadStreamIndex &&
                            (made->m_info.hasVideo == 1 || made->m_info.hasAudio == 1));
    return made->m_clip.isOpen() && described ? std::move(made) : nullptr;
}

const std::vector<std::uint32_t>& Playing::formats() {
    if (!m_formats) {
        m_formats = m_clip.pixelFormats().formats;
        std::erase_if(*m_formats, [](std::uint32_t code) {
            const PixelLayout* layout = findPixelLayout(code);
            return layout == nullptr || layout->pixelsPerGroup == 0;
        });
    }
    return *m_formats;
}

bool Playing::showsPictures() {
    if (!m_shows) {
        m_shows = m_frames > 0 && m_info.vidInfo.supportsGetSourceVideo != 0 && !formats().empty() &&
                  picture(0).has_value();
    }
    return *m_shows;
}

std::optional<Picture> Playing::picture(std::uint32_t index, std::uint32_t format) const {
    const FrameAnswer answer = m_clip.getFrame(index, format);
    return answer.frame ? std::optional(answer.frame->picture()) : std::nullopt;
}

std::vector<std::uint32_t> Playing::someFrames(Trial& trial, std::uint32_t most) const {
    std::set<std::uint32_t> chosen;
    if (m_frames > 0) {
        chosen = {0, m_frames - 1};
    }
    const std::uint32_t wanted = std::min(most, m_frames);
    for (std::uint32_t tries = 0; chosen.size() < wanted && tries < 4 * most; ++tries) {
        chosen.insert(static_cast<std::uint32_t>(trial.draw(m_frames)));
    }
    return {chosen.begin(), chosen.end()};
}

void forClips(Trial& trial, Stage& stage, const std::function<void(Playing&)>& work) {
    bool any = false;
    for (const ClipFile& clip : trial.setting().clips) {
        if (const auto playing = Playing::open(stage.importer(), clip.path)) {
            any = true;
            work(*playing);
        }
    }
    if (!any) {
        Trial::skip(kNoClip);
    }
}

void forPictures(Trial& trial, Stage& stage, const std::function<void(Playing&)>& work) {
    bool any = false;
    forClips(trial, stage, [&](Playing& playing) {
        if (playing.showsPictures()) {
            any = true;
            work(playing);
        }
    });
    if (!any) {
        Trial::skip("the plug-in shows no picture of any clip");
    }
}

void forSteadyPictures(Trial& trial, Stage& stage, const std::function<void(Playing&)>& work) {
    bool any = false;
    forPictures(trial, stage, [&](Playing& playing) {
        if (isSteady(playing)) {
            any = true;
            work(playing);
        }
    });
    if (!any) {
        Trial::skip("the same frame asked for twice differs: see frames.same-twice");
    }
}

void forSound(Trial& trial, Stage& stage, const std::function<void(Playing&)>& work) {
    constexpr std::int32_t kMostStreams = 8;
    bool any = false;
    forClips(trial, stage, [&](Playing& first) {
        std::int32_t result = first.infoResult();
        for (std::int32_t stream = 0; stream < kMostStreams; ++stream) {
            const auto further =
                stream == 0 ? nullptr : Playing::open(stage.importer(), first.path(), stream);
            Playing* playing = stream == 0 ? &first : further.get();
            if (playing != nullptr && playing->sound()) {
                any = true;
                work(*playing);
            }
            result = playing != nullptr ? playing->infoResult() : host::imNoErr;
            if (result != host::imIterateStreams) {
                break;
            }
        }
    });
    if (!any) {
        Trial::skip("the plug-in announces no sound of any clip");
    }
}

void forSteadySound(Trial& trial, Stage& stage, const std::function<void(Playing&)>& work) {
    bool any = false;
    forSound(trial, stage, [&](Playing& playing) {
        if (hasSteadySound(playing)) {
            any = true;
            work(playing);
        }
    });
    if (!any) {
        Trial::skip("the same sound asked for twice differs: see sound.same-twice");
    }
}

void forAsync(Trial& trial, Stage& stage, const std::function<void(Playing&, AsyncClip&)>& work) {
    bool any = false;
    forSteadyPictures(trial, stage, [&](Playing& playing) {
        if (!playing.saysAsync()) {
            return;
        }
        AsyncClip async(playing.clip());
        if (async.isOpen()) {
            any = true;
            work(playing, async);
        }
    });
    if (!any) {
        Trial::skip("the plug-in announces no asynchronous importer");
    }
}

void forSteadyAsync(Trial& trial, Stage& stage, const std::function<void(Playing&, AsyncClip&)>& work) {
    bool any = false;
    forAsync(trial, stage, [&](Playing& playing, AsyncClip& async) {
        if (isSteadyAsync(playing, async)) {
            any = true;
            work(playing, async);
        }
    });
    if (!any) {
        Trial::skip("the asynchronous importer shows other pictures: see async.same-pixels");
    }
}

std::string copyOfClip(Trial& trial, Stage& stage, const std::string& name) {
    for (const ClipFile& clip : trial.setting().clips) {
        if (Playing::open(stage.importer(), clip.path) == nullptr) {
            continue;
        }
        const std::filesystem::path source = pathFromUtf8(clip.path);
        std::string path = trial.freshPath((name.empty() ? "copy" : name) + pathToUtf8(source.extension()));
        std::error_code error;
        std::filesystem::copy_file(source, pathFromUtf8(path), error);
        if (error) {
            Trial::skip("the clip cannot be copied: " + error.message());
        }
        return path;
    }
    Trial::skip(kNoClip);
}

std::string frameCall(std::uint32_t index, std::uint32_t format, const char* selector) {
    return std::string(selector) + ", frame " + std::to_string(index) + " as " + pixelFormatName(format);
}

std::string pictureDifference(const std::optional<Picture>& expected, const std::optional<Picture>& seen) {
    if (expected.has_value() != seen.has_value()) {
        return seen ? "a frame where there was none" : "no frame where there was one";
    }
    if (!seen || *expected == *seen) {
        return {};
    }
    if (expected->size() != seen->size()) {
        return "a picture of " + std::to_string(seen->size()) + " bytes instead of " +
               std::to_string(expected->size());
    }
    const auto at =
        std::mismatch(expected->begin(), expected->end(), seen->begin()).first - expected->begin();
    return "another picture, from its byte " + std::to_string(at) + " of " + std::to_string(seen->size()) +
           " on";
}

std::string soundDifference(const std::vector<std::vector<float>>& expected,
                            const std::vector<std::vector<float>>& seen) {
    for (std::size_t channel = 0; channel < std::min(expected.size(), seen.size()); ++channel) {
        const auto& a = expected[channel];
        const auto& b = seen[channel];
        const auto same = [](float x, float y) {
            return std::bit_cast<std::uint32_t>(x) == std::bit_cast<std::uint32_t>(y);
        };
        const auto at = std::mismatch(a.begin(), a.end(), b.begin(), b.end(), same).first;
        if (at != a.end() || a.size() != b.size()) {
            return "other samples, from sample frame " + std::to_string(at - a.begin()) + " of channel " +
                   std::to_string(channel) + " on";
        }
    }
    return {};
}

}  // namespace simhost::tool::validate
