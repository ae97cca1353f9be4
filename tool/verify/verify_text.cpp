#include "tool/verify/verify_text.h"

#include <algorithm>
#include <nlohmann/json.hpp>

#include "tool/shared/base/number_text.h"
#include "tool/shared/media/sound_tracks.h"
#include "tool/shared/run/result_names.h"

namespace simhost::tool {
namespace {

using Json = nlohmann::ordered_json;

std::string placeText(const VerifyFinding& finding) {
    const bool sound = finding.track > 0;
    const std::uint64_t last = finding.first + finding.count - 1;
    const std::string times =
        finding.count == 1 || finding.length <= 0
            ? timeText(finding.seconds)
            : timeText(finding.seconds) + " to " + timeText(finding.seconds + finding.length);
    const std::string range =
        std::to_string(finding.first) + (finding.count > 1 ? "-" + std::to_string(last) : std::string());
    if (sound) {
        return soundTrackName(finding.track) + ", " + times + " (sample frames " + range + ")";
    }
    return (finding.count > 1 ? "frames " : "frame ") + range + " (" + times + ")";
}

std::string findingText(const VerifyFinding& finding) {
    const std::string note = finding.note.empty() ? "" : ": " + finding.note;
    switch (finding.kind) {
        case FindingKind::kRepeated:
            return "repeated: " + placeText(finding);
        case FindingKind::kUnheard:
            return "not verified: " + soundTrackName(finding.track) + " cannot be decoded" + note;
        case FindingKind::kUncompared:
            return "not compared: the list has no " +
                   (finding.track == 0 ? std::string("pictures") : soundTrackName(finding.track));
        case FindingKind::kMissing:
            return "MISSING: " + placeText(finding) + note;
        case FindingKind::kUndecodable:
            return "UNDECODABLE: " + placeText(finding) +
                   (note.empty() ? ": " + resultText(finding.result) : note);
        case FindingKind::kDifferent:
            return "DIFFERENT: " + placeText(finding);
        case FindingKind::kUnlisted:
            return "NOT IN THE LIST: " + placeText(finding);
        case FindingKind::kGone:
            return finding.track < 0 ? "GONE" + note : "GONE: " + placeText(finding) + " of the list";
    }
    return {};
}

std::uint64_t countOf(const VerifyAnswer& answer, FindingKind kind, bool sound) {
    std::uint64_t out = 0;
    for (const VerifyFinding& finding : answer.findings) {
        out += finding.kind == kind && (finding.track > 0) == sound ? finding.count : 0;
    }
    return out;
}

}  // namespace

bool VerifyAnswer::isWhole() const noexcept {
    return std::ranges::none_of(findings, [](const VerifyFinding& each) { return isFault(each.kind); });
}

std::string verifyText(const VerifyAnswer& answer) {
    const ClipHashes& clip = answer.clip;
    std::string out =
        answer.file + "\n  " + counted(clip.pictures.size(), "frame", "frames") + " as " + clip.layout.name;
    for (const TrackHashes& track : clip.tracks) {
        if (track.problem.empty()) {
            out += ", " + soundTrackName(track.number) + " as " + sampleKindName(track.kind);
        }
    }
    out += "\n";
    if (answer.resumed > 0) {
        out += "  " + counted(answer.resumed, "hash", "hashes") + " of an earlier run\n";
    }
    std::size_t told = 0;
    for (const VerifyFinding& finding : answer.findings) {
        if (told++ < kMostTold) {
            out += "  " + findingText(finding) + "\n";
        }
    }
    if (told > kMostTold) {
        out += "  and " + std::to_string(told - kMostTold) + " more, which --json lists\n";
    }
    if (answer.use == HashUse::kWritten) {
        out += "  hashes written to " + answer.list + "\n";
    }
    const std::string compared = answer.use == HashUse::kCompared ? ", equal to " + answer.list : "";
    return out + (answer.isWhole()                   ? "  whole" + compared + "\n"
                  : answer.use == HashUse::kCompared ? "  NOT as " + answer.list + " has it\n"
                                                     : "  NOT whole\n");
}

Json verifyJson(const VerifyAnswer& answer) {
    const ClipHashes& clip = answer.clip;
    constexpr const char* kUses[] = {"none", "written", "compared"};
    Json out = {{"file", answer.file},
                {"whole", answer.isWhole()},
                {"frames", clip.pictures.size()},
                {"layout", clip.layout.name},
                {"list", answer.list.empty() ? Json() : Json(answer.list)},
                {"use", kUses[static_cast<int>(answer.use)]},
                {"resumed", answer.resumed}};
    Json counts;
    for (const FindingKind kind : {FindingKind::kRepeated, FindingKind::kMissing, FindingKind::kUndecodable,
                                   FindingKind::kDifferent, FindingKind::kUnlisted, FindingKind::kGone}) {
        counts[findingName(kind)] = {{"frames", countOf(answer, kind, false)},
                                     {"sampleFrames", countOf(answer, kind, true)}};
    }
    out["counts"] = counts;
    out["findings"] = Json::array();
    for (const VerifyFinding& finding : answer.findings) {
        Json row = {{"kind", findingName(finding.kind)}, {"fault", isFault(finding.kind)}};
        row["soundTrack"] = finding.track > 0 ? Json(finding.track) : Json();
        row[finding.track > 0 ? "sampleFrame" : "frame"] = finding.first;
        row["count"] = finding.count;
        row["seconds"] = finding.seconds;
        row["result"] = finding.result == 0 ? Json() : Json(resultText(finding.result));
        row["text"] = findingText(finding);
        out["findings"].push_back(std::move(row));
    }
    Json pictures = Json::array();
    for (const OneHash& hash : clip.pictures) {
        pictures.push_back(hash.done && hash.result == 0 ? Json(hexText(hash.hash)) : Json());
    }
    out["pictures"] = std::move(pictures);
    out["sounds"] = Json::array();
    for (const TrackHashes& track : clip.tracks) {
        Json sound = {{"soundTrack", track.number},
                      {"problem", track.problem.empty() ? Json() : Json(track.problem)},
                      {"samples", track.problem.empty() ? Json(sampleKindName(track.kind)) : Json()},
                      {"channels", track.channels},
                      {"sampleRate", track.rate},
                      {"sampleFrames", track.sampleFrames},
                      {"blocks", Json::array()}};
        for (std::size_t i = 0; i < track.blocks.size(); ++i) {
            const OneHash& hash = track.hashes[i];
            const bool there = hash.done && hash.result == 0;
            sound["blocks"].push_back({{"sampleFrame", track.blocks[i].first},
                                       {"count", track.blocks[i].count},
                                       {"hash", there ? Json(hexText(hash.hash)) : Json()}});
        }
        out["sounds"].push_back(std::move(sound));
    }
    return out;
}

}  // namespace simhost::tool
