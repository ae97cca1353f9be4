#include "tool/shared/run/hosted_run.h"

#include <algorithm>
#include <cstdio>
#include <filesystem>
#include <iterator>
#include <system_error>

#include "tool/shared/base/failure.h"
#include "tool/shared/base/output_file.h"
#include "tool/shared/base/tool_error.h"
#include "tool/shared/base/tool_platform.h"
#include "tool/shared/logs/log_files.h"
#include "tool/shared/run/clip_errors.h"
#include "tool/shared/run/plugin_files.h"
#include "tool/shared/run/result_names.h"

namespace simhost::tool {
namespace {

const HostProfile& profileNamed(const std::string& name) {
    const HostProfile* profile = findProfile(name);
    if (profile == nullptr) {
        std::string all;
        for (const HostProfile& known : builtinProfiles()) {
            all += (all.empty() ? "" : ", ") + known.name;
        }
        throw ToolError(kUsage, "there is no host profile '" + name + "'", "the profiles are " + all);
    }
    return *profile;
}

}  // namespace

std::string codecFolder(const GlobalOptions& options) {
    if (!options.codecFolder.empty() || !options.useStandin) {
        return options.codecFolder;
    }
    const std::string standin = executableFolder() + "/../standin";
    std::error_code error;
    return std::filesystem::is_directory(pathFromUtf8(standin), error) ? standin : std::string();
}

std::string pluginFile(const GlobalOptions& options) {
    return options.plugin.empty() ? executableFolder() + "/" + kPluginFileName : options.plugin;
}

std::unique_ptr<Plugin> loadPlugin(const GlobalOptions& options) {
    const std::string path = pluginFile(options);
    const std::string folder = codecFolder(options);
    protectInput(path);
    try {
        auto plugin = std::make_unique<Plugin>(path, folder);
        protectInput(loadedLibrary(codecLibraryName()));
        return plugin;
    } catch (const std::runtime_error& error) {
        throw unloadablePlugin(path, error.what(), codecIsFound(folder, error.what()));
    }
}

HostedRun::HostedRun(const GlobalOptions& options, HostOptions watching)
    : m_progress(options.progress || stderrIsTerminal()) {
    m_host = std::make_unique<Host>(profileNamed(options.profile), watching);
    m_plugin = loadPlugin(options);
    m_importer.emplace(*m_host, *m_plugin);
    initialise(options);
    m_started = true;
}

// The plug-in opens its log, if it has one, in imInit.
void HostedRun::initialise(const GlobalOptions& options) {
    const void* entry = reinterpret_cast<const void*>(m_plugin->entry());
    std::optional<LogSwitch> logSwitch;
    if (!options.log && options.runLog) {
        m_runFolder.emplace(makeTemporaryFolder());
        try {
            logSwitch.emplace(true, m_runFolder->path(), entry);
            m_logFolder = logFolderBelow(m_runFolder->path());
        } catch (const std::runtime_error&) {
            // Better no log than one among the user's.
            logSwitch.emplace(false);
        }
    } else {
        logSwitch.emplace(options.log);
        m_logFolder = options.log ? logFolder() : std::string();
    }
    m_logsBefore = logFiles(m_logFolder);
    m_init = m_importer->init();
}

void HostedRun::requireStart() const {
    if (m_init.result != host::imNoErr) {
        throw ToolError(kNoPlugin, "the plug-in answered imInit with " + resultText(m_init.result));
    }
}

HostedRun::~HostedRun() {
    shutDown();
}

void HostedRun::shutDown() {
    if (m_started) {
        m_started = false;
        (void)m_importer->shutdown();
    }
    if (m_plugin) {
        m_plugin->unload();
    }
}

std::unique_ptr<Clip> HostedRun::open(const std::string& pathUtf8, std::int32_t streamIndex,
                                      Answer<host::imFileInfoRec8>& info) const {
    requireClipFile(pathUtf8);
    std::error_code error;
    const std::filesystem::path path = std::filesystem::absolute(pathFromUtf8(pathUtf8), error);
    OpenOptions options;
    options.streamIndex = streamIndex;
    auto clip = std::make_unique<Clip>(*m_importer, error ? pathUtf8 : pathToUtf8(path), options);
    if (!clip->isOpen()) {
        throw refusedClip(pathUtf8, clip->openResult());
    }
    info = clip->getInfo(streamIndex);
    const bool described =
        info.result == host::imNoErr || info.result == host::imIterateStreams ||
        (info.result == host::imBadStreamIndex && (info.record.hasVideo == 1 || info.record.hasAudio == 1));
    if (!described) {
        throw refusedClip(pathUtf8, info.result);
    }
    return clip;
}

std::vector<std::string> HostedRun::newLogs() const {
    std::vector<std::string> out;
    if (!m_logFolder.empty()) {
        const std::vector<std::string> now = logFiles(m_logFolder);
        std::set_difference(now.begin(), now.end(), m_logsBefore.begin(), m_logsBefore.end(),
                            std::back_inserter(out));
    }
    return out;
}

int HostedRun::finish(int result) {
    shutDown();
    for (const HostEvent& event : m_host->events()) {
        (void)std::fprintf(stderr, "event of type %u: %s: %s\n", event.type, event.title.c_str(),
                           event.description.c_str());
    }
    const std::string report = m_host->report();
    if (report.empty()) {
        return result;
    }
    (void)std::fprintf(stderr, "the plug-in broke rules of the host:\n%s", report.c_str());
    return result == kSuccess ? kBrokenRule : result;
}

int runHosted(const GlobalOptions& options, const std::function<int(HostedRun&)>& work,
              HostOptions watching) {
    HostedRun run(options, watching);
    int result = kFailed;
    try {
        run.requireStart();
        result = work(run);
    } catch (const ToolError& error) {
        result = tellFailure(error, options.json);
    }
    result = run.finish(result);
    for (const std::string& file : run.newLogs()) {
        (void)std::fprintf(stderr, "log: %s\n", file.c_str());
    }
    return result;
}

}  // namespace simhost::tool
