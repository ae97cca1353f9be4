// Where the plug-in's reader and libavformat may differ on a plain file, and why: the only list of it. A
// difference that no row allows is a find. docs/fuzzing.md shows the rows.
#pragma once

#include <cstdint>
#include <span>
#include <vector>

#include "avi/avi_reader.h"
#include "avi/avi_stream.h"
#include "tests/fuzz/peer_avi.h"

namespace fuzz {

/// What is compared.
enum class Compared { kAcceptance, kStreamCount, kKind, kRate, kPicture, kSound, kEntries };

/// Whether a stream has an indx chunk, and whether that claims more entries than it has room for.
enum class OpenDml { kNone, kWhole, kClaimsMore };

struct Difference {
    Compared what;
    const orvantis::AviReader* file = nullptr;
    const orvantis::AviStream* ours = nullptr;  ///< null for the whole file
    const PeerStream* theirs = nullptr;
    std::uint64_t fileSize = 0;
    const std::vector<OpenDml>* openDml = nullptr;  ///< of each stream
};

struct AllowedDifference {
    const char* name;
    Compared what;
    const char* why;
    bool (*applies)(const Difference&);
};

std::span<const AllowedDifference> allowedDifferences();

}  // namespace fuzz
