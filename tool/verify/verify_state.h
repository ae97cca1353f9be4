// What is done of a long run, in a file of the user's choice, so that a run that was ended goes on where it
// was. The file grows while the run goes, and is removed by its end. Main thread only.
#pragma once

#include <chrono>
#include <cstdint>
#include <fstream>
#include <map>
#include <string>
#include <vector>

#include "tool/verify/clip_hashes.h"
#include "tool/verify/hash_run.h"

namespace simhost::tool {

class VerifyState {
 public:
    /// Does nothing for an empty path. Reads what is there. Throws ToolError when the file is something else,
    /// or cannot be written.
    explicit VerifyState(const std::string& pathUtf8);

    /// Fills in what an earlier run has hashed of this clip, if the file is the same by size and time and the
    /// clip is hashed in the same way. From now on keep() is about it. Gives the number of hashes.
    std::uint64_t resume(const std::string& clipUtf8, ClipHashes& clip);
    void keep(const ClipHashes& clip, HashDone done);
    /// What was kept is on its way to the disk.
    void flush();
    /// The run has come to its end.
    void remove();

 private:
    std::string m_path;
    std::map<std::string, std::vector<std::string>> m_known;  // clip's line, lines of its hashes
    std::ofstream m_file;
    std::chrono::steady_clock::time_point m_nextFlush;
};

}  // namespace simhost::tool
