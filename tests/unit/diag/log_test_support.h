// What the log tests share.
#pragma once

#include <filesystem>
#include <string>
#include <vector>

#include "tests/support/child_process.h"

namespace orvantis::test {

/// The lines that open each log of `program`, headers masked, followed by `more`.
inline std::vector<std::string> withOpening(const std::filesystem::path& program,
                                            std::vector<std::string> more) {
    more.insert(more.begin(), {"[T] [#] Log opened", "[T] [#] Application: " + program.string()});
    return more;
}

inline std::vector<std::string> withOpening(std::vector<std::string> more) {
    return withOpening(thisProgram(), std::move(more));
}

/// Another program of this build, which lies beside the running one.
inline std::filesystem::path siblingProgram(const char* name) {
    return (thisProgram().parent_path() / name).replace_extension(thisProgram().extension());
}

/// The time stamp in a log file's name: the 15 characters before "_NN.log".
inline std::string stampOf(const std::filesystem::path& file) {
    const std::string stem = file.stem().string();
    return stem.substr(stem.size() - 18, 15);
}

}  // namespace orvantis::test
