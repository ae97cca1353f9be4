// What keeps a clip from being opened, told so that a user knows what to do: each case has a sentence of its
// own, and a kind for programs. Main thread only. Paths are UTF-8.
#pragma once

#include <cstdint>
#include <string>
#include <vector>

#include "tool/shared/base/tool_error.h"

namespace simhost::tool {

/// Throws unless there is a file at the path that can be read: kinds "empty-path", "missing-file", "folder",
/// "unreadable-file". The file is not written onto from now on.
void requireClipFile(const std::string& path);

/// Why the plug-in refused a file that can be read, as far as the file itself tells: "not-avi", "no-headers",
/// "no-pictures", "other-codec".
ToolError refusedClip(const std::string& path, std::int32_t result);

/// The files as they are, and in the place of a folder the AVI files in it and below, sorted. Throws when a
/// folder holds none, or cannot be read.
std::vector<std::string> clipFiles(const std::vector<std::string>& paths);

}  // namespace simhost::tool
