// What a new file with holes needs of the operating system. Implemented by sparse_platform_win32.cpp and, for
// native builds, by a twin beside it. Paths are UTF-8. Main thread only.
#pragma once

#include <cstdint>
#include <cstdio>
#include <string>

namespace simhost::tool {

/// What is not written takes no room from now on, where the file system can do that.
void allowHoles(std::FILE* file) noexcept;
/// False with errno set.
bool seekTo(std::FILE* file, std::uint64_t position) noexcept;
/// Gives a file another name, which nothing has yet. The system's reason when that fails; empty when it is
/// done.
std::string renameToNew(const std::string& from, const std::string& to);
/// What a file takes of the disk; its length where that cannot be told.
std::uint64_t bytesOnDisk(const std::string& path);

}  // namespace simhost::tool
