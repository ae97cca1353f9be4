// What the doctor concludes from what it found: each check is one line for the user, with what to do about
// it. Pure functions; any thread.
#pragma once

#include <cstdint>
#include <nlohmann/json_fwd.hpp>
#include <optional>
#include <span>
#include <string>
#include <vector>

#include "tool/shared/run/doctor_platform.h"
#include "tool/shared/run/plugin_files.h"

namespace simhost::tool {

enum class CheckState { kGood, kWarning, kBad };

struct Check {
    CheckState state = CheckState::kGood;
    std::string name;    ///< what was looked at
    std::string found;   ///< and what it is like
    std::string advice;  ///< what to do; empty when nothing is to be done
};

enum class FolderSource {
    kRegistry,  ///< an installed host has registered it
    kUsual,     ///< hosts use it unless they say otherwise
    kGiven,     ///< on the command line
};

struct PluginFolder {
    std::string path;
    FolderSource source = FolderSource::kUsual;
    bool exists = false;
};

/// The functions that the plug-in takes from the codec library.
std::span<const char* const> codecFunctions() noexcept;

std::vector<Check> checkFolders(std::span<const PluginFolder> folders);
/// `toolVersion` is that of the plug-in which this tool came with, "1.2.3".
std::vector<Check> checkCopies(std::span<const LibraryFile> copies, std::span<const PluginFolder> folders,
                               const std::string& toolVersion);
/// A codec library in the folder of a copy, where the host's loader does not look.
std::vector<Check> checkCodecBeside(std::span<const std::string> codecsBeside, bool codecFound);

struct CodecSearch {
    std::vector<LibraryFile> found;  ///< in the order in which the loader would take them
    std::size_t folders = 0;         ///< searched
    std::string narrowPath;          ///< the one that 32-bit programs find; empty without
};
std::vector<Check> checkCodec(const CodecSearch& search);

Check checkLogSwitch(LogSetting setting);

/// How many checks are bad.
std::size_t badChecks(std::span<const Check> checks) noexcept;

/// For texts of several lines where there is room for one only.
std::string firstLine(const std::string& text);

/// One line, two with advice.
std::string checkText(const Check& check, bool colour);
/// `versions` comes first.
std::string checksJson(std::span<const Check> checks, const nlohmann::ordered_json& versions);

}  // namespace simhost::tool
