// Which bytes of a file tell how it is built: everything that the plug-in, the report and other readers look
// at, and nothing of pictures and sound. Chunks are found by the plug-in's own walk through the headers, by
// going through the data lists chunk by chunk, and by every index. Main thread only.
#pragma once

#include <cstdint>
#include <functional>
#include <vector>

#include "fileio/file.h"

namespace simhost::tool {

struct FileRange {
    std::uint64_t begin = 0;
    std::uint64_t end = 0;
};

/// In order and apart. Of a file that is no AVI there is nothing but what it begins with. `step` is called
/// with the position that is looked at, ascending but for the odd one.
std::vector<FileRange> structureOf(fileio::File& file, const std::function<void(std::uint64_t)>& step);

}  // namespace simhost::tool
