// The hashes of a clip, and what is not as it should be: against the clip's own index and headers, and
// against a list of hashes made earlier. Pure data and functions; any thread.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "tool/shared/base/md5.h"
#include "tool/verify/clip_chunks.h"
#include "tool/verify/frame_layout.h"
#include "tool/verify/frame_md5_file.h"
#include "tool/verify/sample_layout.h"

namespace simhost::tool {

struct OneHash {
    Md5Digest hash{};
    std::uint32_t size = 0;   ///< bytes hashed
    std::int32_t result = 0;  ///< of the plug-in; anything but 0 is a failure, and there is no hash
    bool done = false;
};

struct TrackHashes {
    std::int32_t number = 1;  ///< as people count sound tracks
    std::string problem;      ///< why it cannot be heard, and has no hashes; empty when it can
    SampleKind kind = SampleKind::kS16;
    std::uint32_t channels = 0;
    std::uint32_t rate = 0;
    std::uint64_t sampleFrames = 0;  ///< that the index leads to
    std::uint64_t declared = 0;      ///< of the header
    std::vector<SoundBlock> blocks;
    std::vector<OneHash> hashes;  ///< one a block
};

struct ClipHashes {
    FrameLayout layout;
    std::int32_t width = 0;
    std::int32_t height = 0;
    std::uint32_t sarNum = 0;
    std::uint32_t sarDen = 1;
    std::uint32_t rate = 0;   ///< of the pictures: rate / scale a second
    std::uint32_t scale = 1;  ///<
    std::uint32_t declared = 0;
    std::vector<ChunkState> states;   ///< of the pictures
    std::vector<OneHash> pictures;    ///< one a frame
    std::vector<TrackHashes> tracks;  ///< all of the file

    double secondsOfFrame(std::uint64_t frame) const noexcept {
        return rate == 0 ? 0.0 : static_cast<double>(frame) * scale / rate;
    }
};

/// As a list: no line for a repeated frame, as ffmpeg has none, or for what there is no hash of.
FrameMd5File toFrameMd5(const ClipHashes& clip);

/// The track of the clip that belongs to each stream of a list: 0 for the pictures, the numbers of usable
/// tracks in turn, -1 for a stream that the clip has not. Throws ToolError "other-layout" where sizes and
/// names say that the list was made of other bytes of the same clip.
std::vector<std::int32_t> matchStreams(const FrameMd5File& list, const std::string& listName,
                                       const ClipHashes& clip);

/// Divides the sound as the list does. What the list leaves out has no blocks and becomes a finding.
void takeBlocksOf(const FrameMd5File& list, const std::vector<std::int32_t>& tracks, ClipHashes& clip);

enum class FindingKind {
    kRepeated,     ///< no fault
    kUnheard,      ///< a track that the plug-in cannot decode; no fault of the file's data
    kUncompared,   ///< a track that the list has not; no fault
    kMissing,      ///< the file has not the data
    kUndecodable,  ///< the plug-in refuses it
    kDifferent,    ///< from the list
    kUnlisted,     ///< in the clip, not in the list
    kGone,         ///< in the list, not in the clip
};
const char* findingName(FindingKind kind) noexcept;
bool isFault(FindingKind kind) noexcept;

/// Neighbours of one kind are one finding.
struct VerifyFinding {
    FindingKind kind = FindingKind::kRepeated;
    std::int32_t track = 0;   ///< 0: pictures; -1: a stream of the list that the clip has not
    std::uint64_t first = 0;  ///< frame, or sample frame
    std::uint64_t count = 0;
    std::int32_t result = 0;  ///< of kUndecodable
    std::string note;         ///<
    double seconds = 0;       ///< where it begins
    double length = 0;        ///< in seconds
};
/// `list` may be null. `tracks` are those of matchStreams.
std::vector<VerifyFinding> judge(const ClipHashes& clip, const FrameMd5File* list,
                                 const std::vector<std::int32_t>& tracks);

}  // namespace simhost::tool
