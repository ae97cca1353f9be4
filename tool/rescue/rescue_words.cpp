#include "tool/rescue/rescue_words.h"

#include <algorithm>
#include <nlohmann/json.hpp>

#include "tool/shared/base/number_text.h"

namespace simhost::tool {
namespace {

constexpr std::size_t kMostLines = 20;

const char* kindText(ClipStream::Kind kind) {
    switch (kind) {
        case ClipStream::Kind::kVideo:
            return "pictures";
        case ClipStream::Kind::kAudio:
            return "sound";
        case ClipStream::Kind::kOther:
            break;
    }
    return "other data";
}

const char* indexText(StreamCheck::Index index) {
    switch (index) {
        case StreamCheck::Index::kOld:
            return "idx1";
        case StreamCheck::Index::kOpenDml:
            return "OpenDML";
        case StreamCheck::Index::kNone:
            break;
    }
    return "none";
}

const char* stretchKind(Stretch::Kind kind) {
    switch (kind) {
        case Stretch::Kind::kDamagedChunk:
            return "damaged-chunk";
        case Stretch::Kind::kCutChunk:
            return "cut-chunk";
        case Stretch::Kind::kCutOther:
            return "cut-other";
        case Stretch::Kind::kStrangeChunk:
            return "strange-chunk";
        case Stretch::Kind::kZeros:
            return "zeros";
        case Stretch::Kind::kUnreadable:
            return "unreadable";
        case Stretch::Kind::kNoChunks:
            break;
    }
    return "no-chunks";
}

std::string lastText(const ClipStream& stream, const StreamCheck& check) {
    if (!check.found) {
        return "";
    }
    return ", " + timeText(stream.seconds(check.length)) + "; the last one has " +
           counted(check.last.size(), "byte", "bytes") + " at " + std::to_string(check.last.offset());
}

std::string streamText(std::size_t number, const ClipStream& stream, const StreamCheck& check) {
    std::string out = "stream " + std::to_string(number) + " (" + kindText(stream.kind) + ", " +
                      stream.formatName() + "): " + counted(check.chunks, "whole chunk", "whole chunks");
    out += check.empty == 0 ? "" : ", " + std::to_string(check.empty) + " of them empty";
    out += lastText(stream, check) + "\n";
    out += std::string("  index: ") + indexText(check.index);
    if (check.index != StreamCheck::Index::kNone) {
        out += ", " + counted(check.entries, "entry", "entries");
    }
    out +=
        check.leftOut == 0 ? "" : "; it leaves out " + counted(check.leftOut, "whole chunk", "whole chunks");
    out += check.nowhere == 0
               ? ""
               : "; " + counted(check.nowhere, "entry leads", "entries lead") + " to no whole chunk";
    out += "\n";
    if (check.length != stream.header.dwLength) {
        out += "  length in the header: " + std::to_string(stream.header.dwLength) +
               ", found: " + std::to_string(check.length) + "\n";
    }
    return out;
}

}  // namespace

std::string stretchText(const Stretch& stretch) {
    const std::string chunk =
        "a chunk of stream " + std::to_string(stretch.stream) + " ('" + codeName(stretch.code) + "')";
    switch (stretch.kind) {
        case Stretch::Kind::kDamagedChunk:
            return chunk + " with damage in or behind it";
        case Stretch::Kind::kCutChunk:
            return chunk + " that the end of the file cuts off";
        case Stretch::Kind::kStrangeChunk:
            return "a chunk of no stream ('" + codeName(stretch.code) + "')";
        case Stretch::Kind::kCutOther:
            return "'" + codeName(stretch.code) + "' that the end of the file cuts off";
        case Stretch::Kind::kZeros:
            return "zeros up to the end of the file";
        case Stretch::Kind::kUnreadable:
            return chunk + " that the disk cannot read";
        case Stretch::Kind::kNoChunks:
            break;
    }
    return "no chunks";
}

std::string foundText(const ClipScan& scan, const IndexCheck& check) {
    std::string out = "size: " + bytesText(static_cast<double>(scan.fileSize)) + "\n";
    out += "headers: whole, " + counted(scan.headers.streams.size(), "stream", "streams") + ", " +
           counted(scan.forms.size(), "part (RIFF form)", "parts (RIFF forms)") + "\n";
    if (!check.refused.empty()) {
        out += "the plug-in cannot open the file: " + check.refused + "\n";
    }
    for (std::size_t i = 0; i < scan.headers.streams.size(); ++i) {
        out += streamText(i, scan.headers.streams[i], check.streams[i]);
    }
    if (scan.damagedCount == 0) {
        return out + "damage: none\n";
    }
    out += "damage: " + counted(scan.damagedCount, "stretch", "stretches") + ", " +
           bytesText(static_cast<double>(scan.damagedBytes)) + "\n";
    for (std::size_t i = 0; i < std::min(scan.damaged.size(), kMostLines); ++i) {
        const Stretch& stretch = scan.damaged[i];
        out += "  " + counted(stretch.place.bytes(), "byte", "bytes") + " at " +
               std::to_string(stretch.place.begin) + ": " + stretchText(stretch) + "\n";
    }
    if (scan.damagedCount > kMostLines) {
        out += "  and " + std::to_string(scan.damagedCount - kMostLines) + " more (--json lists up to " +
               std::to_string(ClipScan::kMostStretches) + ")\n";
    }
    return out;
}

std::string verdictText(const IndexCheck& check) {
    std::uint64_t chunks = 0;
    std::uint64_t leftOut = 0;
    std::uint64_t nowhere = 0;
    for (const StreamCheck& stream : check.streams) {
        chunks += stream.chunks;
        leftOut += stream.leftOut;
        nowhere += stream.nowhere;
    }
    if (chunks == 0) {
        return "There is nothing to rescue: the file holds no whole chunk.";
    }
    if (!check.gains()) {
        return "There is nothing to rescue: the index names every whole chunk, and no other.";
    }
    std::string out = "A rescue would gain: ";
    if (leftOut > 0) {
        out += counted(leftOut, "whole chunk that no index names comes back",
                       "whole chunks that no index names come back");
    }
    if (nowhere > 0) {
        out += (leftOut > 0 ? ", " : "") +
               counted(nowhere, "entry that leads nowhere goes", "entries that lead nowhere go");
    }
    return out + (leftOut + nowhere == 0 ? "the file can be opened again." : ".");
}

nlohmann::ordered_json foundJson(const ClipScan& scan, const IndexCheck& check) {
    using Json = nlohmann::ordered_json;
    Json out;
    out["size"] = scan.fileSize;
    out["refused"] = check.refused;
    out["forms"] = scan.forms.size();
    out["streams"] = Json::array();
    for (std::size_t i = 0; i < scan.headers.streams.size(); ++i) {
        const ClipStream& stream = scan.headers.streams[i];
        const StreamCheck& found = check.streams[i];
        Json row = {{"kind", kindText(stream.kind)},
                    {"format", stream.formatName()},
                    {"chunks", found.chunks},
                    {"empty", found.empty},
                    {"bytes", found.bytes},
                    {"length", found.length},
                    {"declaredLength", stream.header.dwLength},
                    {"seconds", stream.seconds(found.length)}};
        row["last"] =
            found.found ? Json({{"offset", found.last.offset()}, {"size", found.last.size()}}) : Json();
        row["index"] = {{"kind", indexText(found.index)},
                        {"entries", found.entries},
                        {"leftOut", found.leftOut},
                        {"nowhere", found.nowhere}};
        out["streams"].push_back(row);
    }
    out["damagedCount"] = scan.damagedCount;
    out["damagedBytes"] = scan.damagedBytes;
    out["damaged"] = Json::array();
    for (const Stretch& stretch : scan.damaged) {
        Json row = {{"offset", stretch.place.begin},
                    {"bytes", stretch.place.bytes()},
                    {"kind", stretchKind(stretch.kind)}};
        if (stretch.kind == Stretch::Kind::kCutChunk || stretch.kind == Stretch::Kind::kDamagedChunk ||
            stretch.kind == Stretch::Kind::kUnreadable) {
            row["stream"] = stretch.stream;
        }
        out["damaged"].push_back(row);
    }
    out["gains"] = check.gains();
    return out;
}

}  // namespace simhost::tool
