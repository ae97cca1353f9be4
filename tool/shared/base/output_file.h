// The one door through which the tool writes files, by UTF-8 path. No file that the running command reads and
// no AVI file is ever written onto, whatever path leads to it. A file appears under its name when it is
// whole; until then, and after a failure, what was there before stays. Every failure is a ToolError with
// kNoOutput. Main thread only.
#pragma once

#include <cstdint>
#include <cstdio>
#include <filesystem>
#include <memory>
#include <optional>
#include <span>
#include <string>
#include <string_view>

#include "tool/shared/base/temporary_path.h"

namespace simhost::tool {

std::filesystem::path pathFromUtf8(const std::string& utf8);
std::string pathToUtf8(const std::filesystem::path& path);

/// Makes the folder and those above it.
void makeFolder(const std::string& folderUtf8);

/// From now on this file is not written onto. A path that leads nowhere protects nothing.
void protectInput(const std::string& pathUtf8);

/// Throws unless the path may be written to. Commands ask first thing, so that nobody waits for a result that
/// has no place; an empty path is none and passes.
void checkOutput(const std::string& pathUtf8);

/// Throws unless a new clip may be made at this path: its name ends with ".avi", its folder is there, and
/// nothing else is.
void requireFreeClip(const std::string& pathUtf8);

/// A binary file that is complete only after finish(); without that nothing is left of it.
class OutputFile {
 public:
    explicit OutputFile(const std::string& pathUtf8);
    void write(std::span<const std::uint8_t> bytes);
    void finish();

 private:
    struct Closing {
        void operator()(std::FILE* file) const noexcept { (void)std::fclose(file); }
    };
    [[noreturn]] void fail(const char* what, const std::string& reason) const;

    std::string m_path;                          // as the user knows it
    std::string m_target;                        // where it leads to
    std::optional<TemporaryPath> m_part;         // beside it; none for a device
    std::unique_ptr<std::FILE, Closing> m_file;  // closed before the part is removed
};

void writeFile(const std::string& pathUtf8, std::span<const std::uint8_t> bytes);
void writeText(const std::string& pathUtf8, std::string_view text);
/// To the file, or for an empty path to the standard output.
void writeAnswer(const std::string& pathUtf8, std::string_view text);

}  // namespace simhost::tool
