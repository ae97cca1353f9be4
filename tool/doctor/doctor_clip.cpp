#include "tool/doctor/doctor_clip.h"

#include <algorithm>
#include <cmath>
#include <cstdio>
#include <optional>

#include "tool/shared/base/tool_error.h"
#include "tool/shared/media/avi_findings.h"
#include "tool/shared/media/media_facts.h"
#include "tool/shared/media/sound_tracks.h"
#include "tool/shared/run/result_names.h"

namespace simhost::tool {
namespace {

Check good(const char* name, const std::string& found) {
    return {CheckState::kGood, name, found, ""};
}

// What a wrong index leads to may still look like a frame or like sound.
bool isMisled(const std::optional<AviFacts>& facts, StreamFacts::Kind kind) {
    return facts && std::any_of(facts->streams.begin(), facts->streams.end(), [kind](const auto& stream) {
               return stream.kind == kind && stream.base != IndexBase::kRight;
           });
}

Check noise(const char* name, const std::string& found, bool silent = false) {
    return {CheckState::kWarning, name,
            found + ", but from the wrong place of the file" + (silent ? "" : ": it is noise"), ""};
}

void checkFrames(const Clip& clip, std::uint32_t frames, bool misled, std::vector<Check>& out) {
    const PixelFormats offered = clip.pixelFormats();
    if (offered.formats.empty()) {
        out.push_back({CheckState::kBad, "decoding", "the plug-in offers no pixel format",
                       "update the Orvantis codec"});
        return;
    }
    const std::uint32_t format = offered.formats.front();
    std::vector<std::uint32_t> wanted = {0};
    if (frames > 1) {
        wanted.push_back(frames / 2);
    }
    for (const std::uint32_t index : wanted) {
        const FrameAnswer answer = clip.getFrame(index, format);
        const std::string frame = "frame " + std::to_string(index);
        if (answer.frame) {
            const std::string found = frame + " as " + pixelFormatName(format);
            out.push_back(misled ? noise("decoding", found) : good("decoding", found));
        } else {
            out.push_back({CheckState::kBad, "decoding", frame + ": " + resultText(answer.result),
                           "the clip is damaged there, or the codec is too old for it; the diagnostic log "
                           "(--log) tells which"});
        }
    }
}

void checkPictures(const Clip& clip, const host::imFileInfoRec8& info, const std::optional<AviFacts>& facts,
                   std::vector<Check>& out) {
    if (info.hasVideo != 1) {
        out.push_back({CheckState::kBad, "pictures", "the plug-in tells of none",
                       "look at the clip with the diagnostic log on (--log)"});
        return;
    }
    const std::uint32_t frames = frameCount(info);
    char text[160];
    (void)std::snprintf(text, sizeof text, "%d x %d, %s, %.3f frames a second, %u frames",
                        static_cast<int>(byValue(info.vidInfo.imageWidth)),
                        static_cast<int>(byValue(info.vidInfo.imageHeight)), codedType(info).c_str(),
                        framesPerSecond(info), frames);
    if (frames == 0) {
        out.push_back({CheckState::kBad, "pictures", text, "none of them can be shown; why is said below"});
        return;
    }
    out.push_back(good("pictures", text));
    checkFrames(clip, frames, isMisled(facts, StreamFacts::Kind::kVideo), out);
}

// The first second of a stream, if it can be played.
void checkStream(const Clip& clip, const host::imFileInfoRec8& info, std::size_t index, bool misled,
                 std::vector<Check>& out) {
    const auto shape = soundShape(info);
    if (!shape || shape->length == 0) {
        return;
    }
    const std::string track = "track " + std::to_string(soundTrack(static_cast<std::int32_t>(index))) + ": ";
    const auto second = static_cast<std::uint32_t>(std::lround(std::clamp(shape->rate, 1.0, 1'000'000.0)));
    const auto size = static_cast<std::uint32_t>(std::min<std::uint64_t>(shape->length, second));
    const AudioAnswer answer = clip.importAudio(0, size, shape->channels);
    if (answer.result != host::imNoErr) {
        out.push_back({CheckState::kBad, "sound", track + resultText(answer.result),
                       "the clip is damaged there; the diagnostic log (--log) tells more"});
        return;
    }
    const bool silent = std::all_of(answer.channels.begin(), answer.channels.end(), [](const auto& samples) {
        return std::all_of(samples.begin(), samples.end(), [](float sample) { return sample == 0.0F; });
    });
    const std::string found =
        track + std::to_string(shape->channels) + (shape->channels == 1 ? " channel at " : " channels at ") +
        std::to_string(second) + " Hz, its beginning was read" + (silent ? " and is silent" : "");
    out.push_back(misled ? noise("sound", found, silent) : good("sound", found));
}

void checkSound(const HostedRun& hosted, const std::string& path, Clip& first,
                const std::optional<AviFacts>& facts, std::vector<Check>& out) {
    const auto tracks = soundTracks(first.analysis(1 << 20).text);
    const std::size_t before = out.size();
    const std::size_t streams = first.walkStreams().size();
    for (std::size_t i = 0; i < streams; ++i) {
        Answer<host::imFileInfoRec8> info;
        const auto clip = hosted.open(path, static_cast<std::int32_t>(i), info);
        checkStream(*clip, info.record, i, isMisled(facts, StreamFacts::Kind::kAudio), out);
    }
    for (const SoundTrack& track : tracks) {
        if (!track.problem.empty()) {
            out.push_back({CheckState::kWarning, "sound",
                           "stream " + track.stream + " of the file stays silent. It is " +
                               soundTrackName(track.number) + ". " + track.problem,
                           "convert it to uncompressed PCM"});
        }
    }
    if (out.size() == before) {
        out.push_back(good("sound", "the clip has none"));
    }
}

}  // namespace

std::vector<Check> checkClip(const HostedRun& hosted, const std::string& clipUtf8) {
    std::vector<Check> out;
    const std::optional<AviFacts> facts = readAviFacts(clipUtf8);
    try {
        Answer<host::imFileInfoRec8> info;
        const auto clip = hosted.open(clipUtf8, 0, info);
        checkPictures(*clip, info.record, facts, out);
        checkSound(hosted, clipUtf8, *clip, facts, out);
    } catch (const ToolError& error) {
        out.push_back({CheckState::kBad, "clip", error.what(), error.advice()});
        return out;
    }
    for (const AviFinding& finding : facts ? aviFindings(*facts) : std::vector<AviFinding>()) {
        out.push_back({finding.bad ? CheckState::kBad : CheckState::kWarning, "clip", firstLine(finding.text),
                       finding.advice});
    }
    return out;
}

}  // namespace simhost::tool
