// One run of the tool with a plug-in under a simulated host: loads, starts, and at the end shuts down and
// tells what the plug-in left behind. Main thread only.
#pragma once

#include <functional>
#include <memory>
#include <optional>
#include <string>
#include <vector>

#include "simhost/clip.h"
#include "simhost/host.h"
#include "simhost/importer.h"
#include "simhost/plugin.h"

namespace simhost::tool {

/// The options that every command has.
struct GlobalOptions {
    std::string plugin;       ///< empty: beside the program
    std::string codecFolder;  ///< searched for the codec library before the system's own places
    /// Without a codecFolder: ../standin of the program, if there is one.
    bool useStandin = true;
    std::string profile = "default";
    bool log = false;
    bool progress = false;
};

class HostedRun {
 public:
    /// Loads the plug-in and sends imInit. Throws ToolError.
    explicit HostedRun(const GlobalOptions& options, HostOptions watching = {});
    HostedRun(const HostedRun&) = delete;
    HostedRun& operator=(const HostedRun&) = delete;
    ~HostedRun();

    Host& host() noexcept { return *m_host; }
    const Importer& importer() const noexcept { return *m_importer; }
    const std::string& pluginPath() const noexcept { return m_plugin->path(); }
    const Answer<host::imImportInfoRec>& initAnswer() const noexcept { return m_init; }
    /// Throws ToolError unless the plug-in answered imInit with success.
    void requireStart() const;
    bool progress() const noexcept { return m_progress; }

    /// Opens a file and asks for the description of a stream. Throws ToolError when the plug-in refuses
    /// either.
    std::unique_ptr<Clip> open(const std::string& pathUtf8, std::int32_t streamIndex,
                               Answer<host::imFileInfoRec8>& info) const;

    /// The logs that were begun while this run had the log on, by it or by other programs; UTF-8 paths.
    std::vector<std::string> newLogs() const;

    /// imShutdown, and what is to be told on the error stream. `result` unless that was success and a rule
    /// was broken.
    int finish(int result);

 private:
    void shutDown();

    bool m_progress;
    std::unique_ptr<Host> m_host;
    std::unique_ptr<Plugin> m_plugin;
    std::optional<Importer> m_importer;
    Answer<host::imImportInfoRec> m_init;
    bool m_started = false;
    bool m_log = false;
    std::vector<std::string> m_logsBefore;
};

/// Runs `work` on a HostedRun whose imInit succeeded and gives the exit code; a ToolError is told on the
/// error stream before the plug-in is shut down.
int runHosted(const GlobalOptions& options, const std::function<int(HostedRun&)>& work,
              HostOptions watching = {});

/// The plug-in of these options, loaded. Throws ToolError.
std::unique_ptr<Plugin> loadPlugin(const GlobalOptions& options);

/// "imBadFile (2)".
std::string resultText(std::int32_t result);

}  // namespace simhost::tool
