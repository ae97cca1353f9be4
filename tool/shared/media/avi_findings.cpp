#include "tool/shared/media/avi_findings.h"

#include <algorithm>
#include <cmath>

#include "tool/shared/base/number_text.h"

namespace simhost::tool {
namespace {

using Kind = StreamFacts::Kind;

constexpr const char* kRemux =
    "Re-mux the file, e.g. with \"ffmpeg -i OLD.avi -map 0 -c copy NEW.avi\", or ask the maker of the "
    "program "
    "that wrote it.";
constexpr const char* kRescue =
    "Make a file that can be played with \"importer_host rescue OLD.avi --out NEW.avi\"; \"rescue OLD.avi\" "
    "alone says first "
    "what it would bring back.";
constexpr const char* kLook =
    "\"importer_host rescue FILE\" says whether something of it can be brought back.";
constexpr double kSameLength = 0.1;  // seconds

std::string secondsText(double value) {
    return decimalText(value, 3) + " s";
}

std::string nameOf(const StreamFacts& stream, std::size_t number) {
    const char* kind = stream.kind == Kind::kVideo   ? "pictures"
                       : stream.kind == Kind::kAudio ? "sound"
                                                     : "other data";
    return "Stream " + std::to_string(number) + " (" + kind + ")";
}

class Findings {
 public:
    explicit Findings(const AviFacts& facts) : m_facts(facts) {}

    std::vector<AviFinding> all() {
        if (!m_facts.usable) {
            std::string problem = m_facts.problems;
            problem.erase(problem.find_last_not_of('\n') + 1);
            return {{true, "The file is no AVI file that can be used: " + problem,
                     m_facts.fileSize == 0 ? "" : kLook}};
        }
        const bool noIndex = std::none_of(m_facts.streams.begin(), m_facts.streams.end(),
                                          [](const auto& s) { return s.index != IndexKind::kNone; });
        if (noIndex && !m_facts.streams.empty()) {
            bad("The file has no usable index, so nothing of it can be shown or heard. Recordings that were "
                "cut "
                "off, or not written to a file directly, are like this.",
                kRescue);
        }
        for (std::size_t i = 0; i < m_facts.streams.size(); ++i) {
            const StreamFacts& stream = m_facts.streams[i];
            const std::string name = nameOf(stream, i);
            if (stream.kind == Kind::kOther) {
                warn(name + " is neither pictures nor sound and is not used.");
            } else if (stream.kind == Kind::kVideo && m_video != nullptr) {
                warn(name + " is a further video stream; only the first one is played.");
            } else {
                m_video = stream.kind == Kind::kVideo ? &stream : m_video;
                if (stream.index != IndexKind::kNone) {
                    addIndexFindings(stream, name);
                    addLengthFinding(stream, name);
                } else if (!noIndex) {
                    add(stream.kind == Kind::kVideo,
                        name + " has no usable index, so nothing of it can be played.", kRescue);
                }
            }
        }
        addLengthsOfAll();
        addUnindexed();
        addGaps();
        if (!m_facts.problems.empty()) {
            std::string problems = m_facts.problems;
            problems.erase(problems.find_last_not_of('\n') + 1);
            warn("What the reader says: " + problems);
        }
        return std::move(m_out);
    }

 private:
    void add(bool isBad, std::string text, const char* advice) {
        m_out.push_back({isBad, std::move(text), advice});
    }
    void bad(std::string text, const char* advice) { add(true, std::move(text), advice); }
    void warn(std::string text, const char* advice = "") { add(false, std::move(text), advice); }

    void addIndexFindings(const StreamFacts& stream, const std::string& name) {
        const bool pictures = stream.kind == Kind::kVideo;
        const char* led =
            pictures ? " The plug-in looks for every frame in the wrong place, so there is noise, or nothing."
                     : " The plug-in looks for the sound in the wrong place, so there is noise.";
        if (stream.openDmlRefused) {
            warn(name +
                 ": its OpenDML index is damaged or of a kind that is not supported, so the older "
                 "index (idx1) is used. That one ends with the file's first part, at most 2 GiB.");
        }
        switch (stream.base) {
            case IndexBase::kRight:
                break;
            case IndexBase::kFileStart:
                bad(name +
                        ": its index (idx1) counts from the beginning of the file, as some programs write "
                        "it, "
                        "and not from the list of the data (movi), as it should." +
                        led,
                    kRescue);
                break;
            case IndexBase::kOther:
                bad(name + ": its index (idx1) counts from a place a few bytes beside the right one." + led,
                    kRescue);
                break;
            case IndexBase::kNowhere:
                bad(name + ": its index does not lead to the stream's chunks; index or data are damaged." +
                        led,
                    kRescue);
                break;
        }
        if (stream.chunksPastEnd > 0) {
            warn(name + ": " + std::to_string(stream.chunksPastEnd) + " of " + std::to_string(stream.chunks) +
                     " chunks lie behind the end of the file: it was cut off, and they cannot be read.",
                 kRescue);
        }
        if (pictures && stream.emptyChunks > 0) {
            warn(std::to_string(stream.emptyChunks) + " of " + std::to_string(stream.chunks) +
                 " frames hold no data (at most " + std::to_string(stream.longestEmptyRun) +
                 " in a row); each shows the picture before it.");
        }
    }

    // Pictures go by the index. Sound goes by its header, of which the host is told.
    void addLengthFinding(const StreamFacts& stream, const std::string& name) {
        const auto declared = static_cast<double>(stream.declaredLength);
        const auto held = static_cast<double>(stream.heldLength());
        if (stream.kind == Kind::kVideo) {
            if (stream.declaredLength != stream.chunks) {
                warn(name + ": the header tells " + std::to_string(stream.declaredLength) +
                     " frames, the index holds " + std::to_string(stream.chunks) +
                     "; the index is what counts.");
            }
            return;
        }
        const double rate = stream.samplesPerSecond;
        if (rate == 0 || stream.frameBytes == 0 || std::fabs(declared - held) <= kSameLength * rate) {
            return;
        }
        const std::string lengths = name + ": the header tells " + std::to_string(stream.declaredLength) +
                                    " sample frames (" + secondsText(declared / rate) +
                                    "), the index holds " + std::to_string(stream.heldLength()) + " (" +
                                    secondsText(held / rate) + "). The header is what the host is told, so ";
        if (declared < held) {
            warn(lengths + "the last " + secondsText((held - declared) / rate) + " are not heard.", kRemux);
        } else {
            warn(lengths + "the last " + secondsText((declared - held) / rate) + " are silence.");
        }
    }

    // Sound against pictures, where both have any length.
    void addLengthsOfAll() {
        constexpr double kMuchShorter = 0.9;
        const double pictures = m_video == nullptr ? 0.0 : m_video->seconds();
        for (std::size_t i = 0; pictures > 0 && i < m_facts.streams.size(); ++i) {
            const double sound = m_facts.streams[i].seconds();
            if (m_facts.streams[i].kind != Kind::kAudio || sound <= 0 ||
                std::fabs(sound - pictures) <= kSameLength) {
                continue;
            }
            const std::string number = std::to_string(i);
            if (sound < kMuchShorter * pictures) {
                warn("The sound of stream " + number + " is much shorter than the pictures: it ends after " +
                     secondsText(sound) + " of " + secondsText(pictures) + ", and the rest is silent.");
            } else {
                warn("The pictures last " + secondsText(pictures) + ", the sound of stream " + number + " " +
                     secondsText(sound) + "; where one is shorter, there is " +
                     (sound < pictures ? "silence." : "no picture."));
            }
        }
    }

    void addUnindexed() {
        const bool anyIndex = std::any_of(m_facts.streams.begin(), m_facts.streams.end(),
                                          [](const auto& s) { return s.index != IndexKind::kNone; });
        if (m_facts.unindexedChunks > 0 && anyIndex) {
            warn("The indexes leave out " + counted(m_facts.unindexedChunks, "chunk", "chunks") +
                     " or more that the file holds: they are not played.",
                 kRescue);
        }
    }

    void addGaps() {
        if (m_facts.gapCount > 0) {
            warn("The indexes leave out " +
                 (m_facts.gapCount == 1 ? "a stretch" : std::to_string(m_facts.gapCount) + " stretches") +
                 " of the file of 64 KiB or more: lost data, or data of no stream.");
        }
    }

    const AviFacts& m_facts;
    const StreamFacts* m_video = nullptr;
    std::vector<AviFinding> m_out;
};

}  // namespace

std::vector<AviFinding> aviFindings(const AviFacts& facts) {
    return Findings(facts).all();
}

}  // namespace simhost::tool
