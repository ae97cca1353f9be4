// Changes a file where it lies so that a crash at any moment is harmless: first every byte that will change
// goes into an undo file that is on the disk before the clip is touched. The undo file stays until the user
// asks for the old bytes back, or removes it.
#pragma once

#include <string>

#include "tool/rescue/mending.h"
#include "tool/rescue/storage.h"

namespace simhost::tool {

/// Where the undo file of a clip lies.
std::string undoPathOf(const std::string& clipPath);

/// Does it. `clip` is the open file that `mending` was planned for; `part` a name for the unfinished undo
/// file. When a write fails, or the program is to end, the old bytes are put back before the failure is
/// passed on.
void applyMending(Disk& disk, Storage& clip, const std::string& undoPath, const std::string& part,
                  const Mending& mending);

/// Brings the old bytes back, whatever moment the change was ended at, and removes the undo file. Throws
/// ToolError, and changes nothing, when the undo file is not whole, or when the clip holds bytes at those
/// places that are neither the old nor the new ones.
void undoMending(Disk& disk, const std::string& clipPath, const std::string& undoPath);

}  // namespace simhost::tool
