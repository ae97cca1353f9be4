// Which versions a run had to do with: the first question about every report. Main thread only.
#pragma once

#include <nlohmann/json_fwd.hpp>
#include <string>

namespace simhost::tool {

struct GlobalOptions;

/// Files without a version have "unknown".
struct Versions {
    std::string tool;
    std::string plugin;
    std::string pluginPath;
    std::string codec;
    std::string codecPath;  ///< empty when it was not found
    std::string system;
    std::string profile;  ///< of the simulated host
};

/// As these options would have it; nothing is loaded.
Versions versionsOf(const GlobalOptions& options);
/// The same with this file as the plug-in.
Versions versionsOf(const GlobalOptions& options, const std::string& plugin);

/// Lines "plug-in 0.1.0.0 (path)", the tool first.
std::string versionText(const Versions& versions);
nlohmann::ordered_json versionJson(const Versions& versions);

}  // namespace simhost::tool
