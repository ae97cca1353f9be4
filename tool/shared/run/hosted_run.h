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
#include "tool/shared/base/temporary_path.h"

namespace simhost::tool {

/// The options that every command has.
struct GlobalOptions {
    std::string plugin;       ///< empty: beside the program
    std::string codecFolder;  ///< searched for the codec library before the system's own places
    /// Without a codecFolder: ../standin of the program, if there is one.
    bool useStandin = true;
    std::string profile = "default";
    bool log = false;     ///< write the plug-in's log where the user's other logs are
    bool runLog = false;  ///< without `log`: write it into a folder that goes with the run
    bool progress = false;
    bool json = false;  ///< answer with a JSON object
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

    /// Opens a file and asks for the description of a stream. Throws a ToolError that says why when the
    /// plug-in refuses either. The file is not written onto from now on.
    std::unique_ptr<Clip> open(const std::string& pathUtf8, std::int32_t streamIndex,
                               Answer<host::imFileInfoRec8>& info) const;

    /// The logs that were begun while this run had the log on, by it or, among the user's logs, by other
    /// programs; UTF-8 paths. Those of `runLog` are there until this object goes.
    std::vector<std::string> newLogs() const;

    /// imShutdown, and what is to be told on the error stream. `result` unless that was success and a rule
    /// was broken.
    int finish(int result);

 private:
    void initialise(const GlobalOptions& options);
    void shutDown();

    bool m_progress;
    std::unique_ptr<Host> m_host;
    std::unique_ptr<Plugin> m_plugin;
    std::optional<Importer> m_importer;
    Answer<host::imImportInfoRec> m_init;
    bool m_started = false;
    std::optional<TemporaryPath> m_runFolder;
    std::string m_logFolder;  // empty with the log off
    std::vector<std::string> m_logsBefore;
};

/// Runs `work` on a HostedRun whose imInit succeeded and gives the exit code; a ToolError is told on the
/// error stream before the plug-in is shut down.
int runHosted(const GlobalOptions& options, const std::function<int(HostedRun&)>& work,
              HostOptions watching = {});

/// The plug-in of these options, loaded. Throws ToolError.
std::unique_ptr<Plugin> loadPlugin(const GlobalOptions& options);
/// Its file, as far as the options tell.
std::string pluginFile(const GlobalOptions& options);
/// The folder that is searched first for the codec library; empty for none.
std::string codecFolder(const GlobalOptions& options);

}  // namespace simhost::tool
