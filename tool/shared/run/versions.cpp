#include "tool/shared/run/versions.h"

#include <nlohmann/json.hpp>

#include "tool/shared/base/tool_platform.h"
#include "tool/shared/run/hosted_run.h"
#include "tool/shared/run/plugin_files.h"

namespace simhost::tool {

Versions versionsOf(const GlobalOptions& options) {
    return versionsOf(options, pluginFile(options));
}

Versions versionsOf(const GlobalOptions& options, const std::string& plugin) {
    Versions out;
    out.tool = ORVANTIS_VERSION;
    out.pluginPath = plugin;
    out.plugin = fileVersion(plugin);
    out.codecPath = findCodecLibrary(codecFolder(options));
    out.codec = out.codecPath.empty() ? "not found" : fileVersion(out.codecPath);
    out.system = systemName();
    out.profile = options.profile;
    return out;
}

std::string versionText(const Versions& versions) {
    return "importer_host " + versions.tool + "\nplug-in " + versions.plugin + " (" + versions.pluginPath +
           ")\ncodec library " + versions.codec +
           (versions.codecPath.empty() ? "" : " (" + versions.codecPath + ")") + "\nsystem " +
           versions.system + "\nhost profile " + versions.profile + "\n";
}

nlohmann::ordered_json versionJson(const Versions& versions) {
    return {{"tool", versions.tool},
            {"plugin", {{"version", versions.plugin}, {"path", versions.pluginPath}}},
            {"codecLibrary", {{"version", versions.codec}, {"path", versions.codecPath}}},
            {"system", versions.system},
            {"hostProfile", versions.profile}};
}

}  // namespace simhost::tool
