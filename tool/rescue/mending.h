// What has to change in a damaged file so that it can be played from where it lies: new indexes at its end,
// and a few bytes in its headers. No data of a stream is moved or changed. Damaged stretches become JUNK
// chunks, so that programs which read from chunk to chunk get past them.
#pragma once

#include <cstdint>
#include <vector>

#include "tool/rescue/clip_scan.h"
#include "tool/rescue/index_bytes.h"
#include "tool/rescue/index_check.h"
#include "tool/rescue/storage.h"

namespace simhost::tool {

struct Patch {
    std::uint64_t at = 0;
    FileBytes bytes;
};

struct Mending {
    std::vector<Patch> patches;  ///< of bytes that the file has, none over another
    std::uint64_t appendAt = 0;  ///< where the new indexes begin: the file's end, or its tail of zeros
    FileBytes append;
    std::uint64_t oldSize = 0;
    std::uint64_t newSize = 0;  ///< smaller than before when a tail of zeros is given up
};

/// Looks at the file as it will be, and finds every chunk of `scan` there. Throws ToolError where it would
/// not, or when the file has no room for what would be needed; a new file can be written then.
Mending planMending(Storage& clip, const ClipScan& scan, const IndexCheck& check, const ScanStep& step = {});

}  // namespace simhost::tool
