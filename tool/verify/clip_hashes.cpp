#include "tool/verify/clip_hashes.h"

#include <algorithm>
#include <cmath>
#include <map>
#include <numeric>

#include "simhost/pixel_layout.h"
#include "tool/shared/base/tool_error.h"

namespace simhost::tool {
namespace {

// A time of the list in units of so many a second.
std::int64_t unitsOf(std::int64_t value, const FrameMd5Stream& stream, std::uint64_t perSecond,
                     std::uint64_t per) {
    const long double out = static_cast<long double>(value) * stream.num *
                            static_cast<long double>(perSecond) /
                            (static_cast<long double>(stream.den) * static_cast<long double>(per));
    constexpr long double kMost = 9e18L;
    return static_cast<std::int64_t>(std::llround(std::clamp(out, -kMost, kMost)));
}

const TrackHashes* trackOf(const ClipHashes& clip, std::int32_t number) {
    return number < 1 ? nullptr : &clip.tracks[static_cast<std::size_t>(number - 1)];
}

[[noreturn]] void refuseLayout(const std::string& listName, const std::string& what,
                               const std::string& advice) {
    throw ToolError(kFailed, "'" + listName + "' cannot be compared: " + what, advice, "other-layout");
}

std::uint64_t frameBytes(const ClipHashes& clip) {
    const FrameLayout& layout = clip.layout;
    if (clip.width <= 0 || clip.height <= 0) {
        return 0;
    }
    const auto w = static_cast<std::uint64_t>(clip.width);
    const auto h = static_cast<std::uint64_t>(clip.height);
    if (layout.asDelivered) {
        return static_cast<std::uint64_t>(minimalRowBytes(*findPixelLayout(layout.delivered), clip.width)) *
               h;
    }
    const std::uint64_t chroma = ((w + (1U << layout.shiftX) - 1) >> layout.shiftX) *
                                 ((h + (1U << layout.shiftY) - 1) >> layout.shiftY);
    const std::uint64_t samples = layout.planes == 1 ? w * h
                                  : layout.rgb       ? w * h * layout.planes
                                                     : w * h * (layout.planes - 2) + 2 * chroma;
    return samples * (layout.bits > 8 ? 2 : 1);
}

class Judgement {
 public:
    explicit Judgement(const ClipHashes& clip) : m_clip(clip) {}

    void add(FindingKind kind, std::int32_t track, std::uint64_t first, std::uint64_t count,
             std::int32_t result = 0, const std::string& note = {}) {
        if (!m_out.empty()) {
            VerifyFinding& last = m_out.back();
            if (last.kind == kind && last.track == track && last.result == result && last.note == note &&
                last.first + last.count == first) {
                last.count += count;
                last.length = seconds(track, last.count);
                return;
            }
        }
        m_out.push_back(
            {kind, track, first, count, result, note, seconds(track, first), seconds(track, count)});
    }

    std::vector<VerifyFinding> finish() {
        std::stable_sort(m_out.begin(), m_out.end(), [](const auto& a, const auto& b) {
            return a.track != b.track ? a.track < b.track : a.first < b.first;
        });
        return std::move(m_out);
    }

 private:
    double seconds(std::int32_t track, std::uint64_t place) const {
        const TrackHashes* sound = trackOf(m_clip, track);
        if (sound == nullptr) {
            return m_clip.secondsOfFrame(place);
        }
        return sound->rate == 0 ? 0.0 : static_cast<double>(place) / sound->rate;
    }

    const ClipHashes& m_clip;
    std::vector<VerifyFinding> m_out;
};

void judgeAlone(const ClipHashes& clip, Judgement& out) {
    for (std::size_t i = 0; i < clip.pictures.size(); ++i) {
        const ChunkState state = clip.states[i];
        const std::int32_t result = clip.pictures[i].result;
        if (state == ChunkState::kMissing) {
            out.add(FindingKind::kMissing, 0, i, 1, 0, "its data lies beyond the end of the file");
        } else if (result != 0 && state == ChunkState::kRepeated) {
            out.add(FindingKind::kMissing, 0, i, 1, 0, "it repeats a frame that is not there");
        } else if (result != 0 || !clip.pictures[i].done) {
            out.add(FindingKind::kUndecodable, 0, i, 1, result,
                    result == 0 ? "the plug-in gives no picture" : "");
        } else if (state == ChunkState::kRepeated) {
            out.add(FindingKind::kRepeated, 0, i, 1);
        }
    }
    if (clip.declared > clip.pictures.size()) {
        out.add(FindingKind::kMissing, 0, clip.pictures.size(), clip.declared - clip.pictures.size(), 0,
                "the header counts it, the index has it not");
    }
    for (const TrackHashes& track : clip.tracks) {
        if (!track.problem.empty()) {
            out.add(FindingKind::kUnheard, track.number, 0, 0, 0, track.problem);
            continue;
        }
        for (std::size_t i = 0; i < track.blocks.size(); ++i) {
            const SoundBlock& block = track.blocks[i];
            if (block.state == ChunkState::kMissing) {
                out.add(FindingKind::kMissing, track.number, block.first, block.count, 0,
                        "its data lies beyond the end of the file");
            } else if (track.hashes[i].result != 0 || !track.hashes[i].done) {
                const std::int32_t result = track.hashes[i].result;
                out.add(FindingKind::kUndecodable, track.number, block.first, block.count, result,
                        result == 0 ? "the plug-in gives no sound" : "");
            }
        }
        if (track.declared > track.sampleFrames) {
            out.add(FindingKind::kMissing, track.number, track.sampleFrames,
                    track.declared - track.sampleFrames, 0, "the header counts it, the index has it not");
        }
    }
}

void judgePicture(const ClipHashes& clip, const FrameMd5Line& line, const FrameMd5Stream& stream,
                  std::vector<bool>& listed, Judgement& out) {
    const std::int64_t frame = unitsOf(line.pts, stream, clip.rate, clip.scale);
    if (frame < 0 || static_cast<std::uint64_t>(frame) >= clip.pictures.size()) {
        out.add(FindingKind::kGone, 0, static_cast<std::uint64_t>(std::max<std::int64_t>(frame, 0)), 1);
        return;
    }
    const auto at = static_cast<std::size_t>(frame);
    listed[at] = true;
    // What failed is told as a failure. A repeated frame is the picture that it shows.
    const OneHash& found = clip.pictures[at];
    if (found.done && found.result == 0 && clip.states[at] != ChunkState::kMissing &&
        (found.hash != line.hash || found.size != line.size)) {
        out.add(FindingKind::kDifferent, 0, at, 1);
    }
}

void judgeSound(const TrackHashes& track, const FrameMd5File& list, std::size_t stream, Judgement& out) {
    std::size_t block = 0;
    for (const FrameMd5Line& line : list.lines) {
        if (line.stream != stream) {
            continue;
        }
        const std::int64_t first = unitsOf(line.pts, list.streams[stream], track.rate, 1);
        const std::int64_t count = unitsOf(line.duration, list.streams[stream], track.rate, 1);
        if (first < 0 || count <= 0) {
            continue;
        }
        const auto place = static_cast<std::uint64_t>(first);
        const auto length = static_cast<std::uint64_t>(count);
        if (block < track.blocks.size() && track.blocks[block].first == place) {
            const OneHash& found = track.hashes[block];
            const bool there =
                track.blocks[block].state == ChunkState::kThere && found.done && found.result == 0;
            if (there && (found.hash != line.hash || found.size != line.size)) {
                out.add(FindingKind::kDifferent, track.number, place, length);
            }
            ++block;
        } else {
            out.add(FindingKind::kGone, track.number, place, length);
        }
    }
    std::uint64_t covered = 0;
    for (const SoundBlock& known : track.blocks) {
        if (known.first > covered) {
            out.add(FindingKind::kUnlisted, track.number, covered, known.first - covered);
        }
        covered = std::max(covered, known.first + known.count);
    }
    if (covered < track.sampleFrames) {
        out.add(FindingKind::kUnlisted, track.number, covered, track.sampleFrames - covered);
    }
}

}  // namespace

FrameMd5File toFrameMd5(const ClipHashes& clip) {
    FrameMd5File out;
    const std::uint32_t common = std::max(std::gcd(clip.rate, clip.scale), 1U);
    FrameMd5Stream pictures;
    pictures.codec = "rawvideo";
    pictures.num = std::max(clip.scale / common, 1U);
    pictures.den = std::max(clip.rate / common, 1U);
    pictures.width = clip.width;
    pictures.height = clip.height;
    pictures.sarNum = clip.sarNum;
    pictures.sarDen = clip.sarDen;
    out.streams.push_back(pictures);
    for (std::size_t i = 0; i < clip.pictures.size(); ++i) {
        const OneHash& hash = clip.pictures[i];
        if (hash.done && hash.result == 0 && clip.states[i] == ChunkState::kThere) {
            out.lines.push_back({0, static_cast<std::int64_t>(i), 1, hash.size, hash.hash});
        }
    }
    for (const TrackHashes& track : clip.tracks) {
        if (!track.problem.empty()) {
            continue;
        }
        const auto number = static_cast<std::uint32_t>(out.streams.size());
        FrameMd5Stream sound;
        sound.sound = true;
        sound.codec = sampleKindName(track.kind);
        sound.num = 1;
        sound.den = sound.rate = track.rate;
        sound.layout = usualChannels(track.channels);
        out.streams.push_back(sound);
        for (std::size_t i = 0; i < track.blocks.size(); ++i) {
            if (track.hashes[i].done && track.hashes[i].result == 0 &&
                track.blocks[i].state == ChunkState::kThere) {
                out.lines.push_back({number, static_cast<std::int64_t>(track.blocks[i].first),
                                     track.blocks[i].count, track.hashes[i].size, track.hashes[i].hash});
            }
        }
    }
    return out;
}

std::vector<std::int32_t> matchStreams(const FrameMd5File& list, const std::string& listName,
                                       const ClipHashes& clip) {
    std::vector<std::int32_t> out;
    std::size_t track = 0;
    bool pictures = false;
    for (const FrameMd5Stream& stream : list.streams) {
        if (!stream.sound) {
            out.push_back(pictures ? -1 : 0);
            pictures = true;
            continue;
        }
        while (track < clip.tracks.size() && !clip.tracks[track].problem.empty()) {
            ++track;
        }
        out.push_back(track < clip.tracks.size() ? clip.tracks[track++].number : -1);
    }
    const std::uint64_t size = frameBytes(clip);
    for (std::size_t i = 0; i < list.streams.size(); ++i) {
        const FrameMd5Stream& stream = list.streams[i];
        const TrackHashes* sound = trackOf(clip, out[i]);
        const auto line = std::find_if(list.lines.begin(), list.lines.end(),
                                       [i](const FrameMd5Line& each) { return each.stream == i; });
        if (out[i] < 0 || line == list.lines.end()) {
            continue;
        }
        if (sound == nullptr && size != 0 && line->size != size) {
            refuseLayout(
                listName,
                "its frames have " + std::to_string(line->size) + " bytes, those of the clip have " +
                    std::to_string(size) + " (" + clip.layout.name + ")",
                clip.layout.asDelivered
                    ? "no layout of the host holds such pictures whole: only lists of importer_host fit"
                    : "make the list with \"-c:v rawvideo -pix_fmt " + clip.layout.name + "\"");
        }
        if (sound != nullptr && !stream.codec.empty() && stream.codec != sampleKindName(sound->kind)) {
            refuseLayout(listName,
                         "its sound is " + stream.codec + ", that of the clip is hashed as " +
                             sampleKindName(sound->kind),
                         std::string("make the list with \"-c:a ") + sampleKindName(sound->kind) + "\"");
        }
        if (sound != nullptr && stream.rate != 0 && stream.rate != sound->rate) {
            refuseLayout(listName,
                         "its sound has " + std::to_string(stream.rate) +
                             " sample frames a second, that of the "
                             "clip has " +
                             std::to_string(sound->rate),
                         "make the list without converting the sound");
        }
    }
    return out;
}

void takeBlocksOf(const FrameMd5File& list, const std::vector<std::int32_t>& tracks, ClipHashes& clip) {
    for (std::size_t i = 0; i < list.streams.size(); ++i) {
        if (tracks[i] < 1) {
            continue;
        }
        TrackHashes& track = clip.tracks[static_cast<std::size_t>(tracks[i] - 1)];
        const std::vector<SoundBlock> own = std::move(track.blocks);
        track.blocks.clear();
        auto chunk = own.begin();
        std::uint64_t last = 0;
        for (const FrameMd5Line& line : list.lines) {
            const std::int64_t first =
                line.stream == i ? unitsOf(line.pts, list.streams[i], track.rate, 1) : -1;
            const std::int64_t count = unitsOf(line.duration, list.streams[i], track.rate, 1);
            const auto place = static_cast<std::uint64_t>(first);
            const auto length = static_cast<std::uint64_t>(count);
            // In order, one behind the other, and inside the clip: what is not is told as gone.
            if (first < 0 || count <= 0 || place < last || place >= track.sampleFrames ||
                length > track.sampleFrames - place || length > UINT32_MAX) {
                continue;
            }
            last = place + length;
            SoundBlock block{place, static_cast<std::uint32_t>(length), ChunkState::kThere};
            while (chunk != own.end() && chunk->first + chunk->count <= place) {
                ++chunk;
            }
            for (auto at = chunk; at != own.end() && at->first < last; ++at) {
                block.state = at->state == ChunkState::kMissing ? ChunkState::kMissing : block.state;
            }
            track.blocks.push_back(block);
        }
        track.hashes.assign(track.blocks.size(), {});
    }
}

const char* findingName(FindingKind kind) noexcept {
    constexpr const char* kNames[] = {"repeated",    "unheard",   "uncompared", "missing",
                                      "undecodable", "different", "unlisted",   "gone"};
    return kNames[static_cast<int>(kind)];
}

bool isFault(FindingKind kind) noexcept {
    return kind > FindingKind::kUncompared;
}

std::vector<VerifyFinding> judge(const ClipHashes& clip, const FrameMd5File* list,
                                 const std::vector<std::int32_t>& tracks) {
    Judgement out(clip);
    judgeAlone(clip, out);
    if (list == nullptr) {
        return out.finish();
    }
    std::vector<bool> listed(clip.pictures.size());
    bool pictures = false;
    for (const FrameMd5Line& line : list->lines) {
        if (tracks[line.stream] == 0) {
            judgePicture(clip, line, list->streams[line.stream], listed, out);
        }
    }
    for (std::size_t i = 0; i < tracks.size(); ++i) {
        const TrackHashes* sound = trackOf(clip, tracks[i]);
        pictures = pictures || tracks[i] == 0;
        if (sound != nullptr) {
            judgeSound(*sound, *list, i, out);
        } else if (tracks[i] < 0) {
            out.add(FindingKind::kGone, -1, i, 1, 0,
                    "the clip has nothing like stream " + std::to_string(i) + " of the list");
        }
    }
    if (!pictures) {
        out.add(FindingKind::kUncompared, 0, 0, 0);
    }
    for (const TrackHashes& track : clip.tracks) {
        if (track.problem.empty() && std::ranges::find(tracks, track.number) == tracks.end()) {
            out.add(FindingKind::kUncompared, track.number, 0, 0);
        }
    }
    for (std::size_t i = 0; pictures && i < listed.size(); ++i) {
        if (!listed[i] && clip.states[i] == ChunkState::kThere && clip.pictures[i].result == 0) {
            out.add(FindingKind::kUnlisted, 0, i, 1);
        }
    }
    return out.finish();
}

}  // namespace simhost::tool
