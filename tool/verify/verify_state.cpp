#include "tool/verify/verify_state.h"

#include <charconv>
#include <chrono>
#include <filesystem>
#include <optional>
#include <sstream>
#include <string_view>
#include <system_error>

#include "tool/shared/base/file_facts.h"
#include "tool/shared/base/output_file.h"
#include "tool/shared/base/tool_error.h"

namespace simhost::tool {
namespace {

constexpr std::string_view kFirstLine = "importer_host verify, what is done: 1";

// What tells a clip, and the way in which it is hashed, from others.
std::string clipLine(const std::string& path, const ClipHashes& clip) {
    std::error_code error;
    const auto file = pathFromUtf8(path);
    const std::uintmax_t size = std::filesystem::file_size(file, error);
    const auto whole = std::filesystem::absolute(file, error);
    return "file " + std::to_string(size) + " " + std::to_string(fileFacts(path).modified) + " " +
           clip.layout.name + " " + std::to_string(clip.pictures.size()) + " " + pathToUtf8(whole);
}

std::optional<Md5Digest> digestOf(std::string_view text) {
    Md5Digest out{};
    for (std::size_t i = 0; i < out.size(); ++i) {
        const char* at = text.data() + 2 * i;
        if (text.size() != 2 * out.size() || std::from_chars(at, at + 2, out[i], 16).ptr != at + 2) {
            return std::nullopt;
        }
    }
    return out;
}

// "TRACK FIRST COUNT SIZE HASH"; pictures are track 0 and count 1.
struct Kept {
    std::int32_t track = 0;
    std::uint64_t first = 0;
    std::uint32_t count = 0;
    std::uint32_t size = 0;
    Md5Digest hash{};
};
std::optional<Kept> parseKept(const std::string& line) {
    std::istringstream words(line);
    Kept out;
    std::string hash;
    if (!(words >> out.track >> out.first >> out.count >> out.size >> hash)) {
        return std::nullopt;
    }
    const auto digest = digestOf(hash);
    if (!digest) {
        return std::nullopt;
    }
    out.hash = *digest;
    return out;
}

}  // namespace

VerifyState::VerifyState(const std::string& pathUtf8) : m_path(pathUtf8) {
    if (m_path.empty()) {
        return;
    }
    checkOutput(m_path);
    std::string text;
    {
        std::ifstream stream(pathFromUtf8(m_path), std::ios::binary);
        text.assign(std::istreambuf_iterator<char>(stream), {});
    }
    // A run that was killed may have left half a line.
    text.resize(text.rfind('\n') == std::string::npos ? 0 : text.rfind('\n') + 1);
    std::istringstream lines(text);
    std::string line;
    if (std::getline(lines, line) && line != kFirstLine) {
        throw ToolError(kNoOutput, "'" + m_path + "' is not written: it is no list of what verify has done",
                        "name a file of its own with --resume");
    }
    std::vector<std::string>* clip = nullptr;
    while (std::getline(lines, line)) {
        if (line.starts_with("file ")) {
            clip = &m_known[line];
        } else if (clip != nullptr) {
            clip->push_back(line);
        }
    }
    std::string whole = std::string(kFirstLine) + "\n";
    for (const auto& [name, hashes] : m_known) {
        whole += name + "\n";
        for (const std::string& hash : hashes) {
            whole += hash + "\n";
        }
    }
    writeText(m_path, whole);
    m_file.open(pathFromUtf8(m_path), std::ios::binary | std::ios::app);
    if (!m_file) {
        throw ToolError(kNoOutput, "'" + m_path + "' cannot be written");
    }
}

std::uint64_t VerifyState::resume(const std::string& clipUtf8, ClipHashes& clip) {
    if (m_path.empty()) {
        return 0;
    }
    const std::string name = clipLine(clipUtf8, clip);
    std::map<std::pair<std::int32_t, std::uint64_t>, Kept> kept;
    for (const std::string& line : m_known[name]) {
        if (const auto one = parseKept(line)) {
            kept[{one->track, one->first}] = *one;
        }
    }
    std::uint64_t found = 0;
    const auto take = [&](std::int32_t track, std::uint64_t first, std::uint32_t count, OneHash& hash) {
        const auto at = kept.find({track, first});
        if (at != kept.end() && at->second.count == count) {
            hash = {at->second.hash, at->second.size, 0, true};
            ++found;
        }
    };
    for (std::size_t i = 0; i < clip.pictures.size(); ++i) {
        take(0, i, 1, clip.pictures[i]);
    }
    for (TrackHashes& track : clip.tracks) {
        for (std::size_t i = 0; i < track.blocks.size(); ++i) {
            take(track.number, track.blocks[i].first, track.blocks[i].count, track.hashes[i]);
        }
    }
    m_file << name << "\n";
    return found;
}

void VerifyState::keep(const ClipHashes& clip, HashDone done) {
    if (m_path.empty()) {
        return;
    }
    const TrackHashes* track =
        done.track == 0 ? nullptr : &clip.tracks[static_cast<std::size_t>(done.track - 1)];
    const OneHash& hash = track == nullptr ? clip.pictures[done.place] : track->hashes[done.place];
    if (!hash.done) {
        return;  // a failure is tried anew
    }
    m_file << done.track << ' ' << (track == nullptr ? done.place : track->blocks[done.place].first) << ' '
           << (track == nullptr ? 1 : track->blocks[done.place].count) << ' ' << hash.size << ' '
           << hexText(hash.hash) << '\n';
    // A run may be killed at any time.
    if (const auto now = std::chrono::steady_clock::now(); now >= m_nextFlush) {
        m_nextFlush = now + std::chrono::seconds(1);
        flush();
    }
}

void VerifyState::flush() {
    if (!m_path.empty() && !m_file.flush()) {
        throw ToolError(kNoOutput, "cannot write to '" + m_path + "'");
    }
}

void VerifyState::remove() {
    if (m_path.empty()) {
        return;
    }
    m_file.close();
    std::error_code ignored;
    std::filesystem::remove(pathFromUtf8(m_path), ignored);
}

}  // namespace simhost::tool
