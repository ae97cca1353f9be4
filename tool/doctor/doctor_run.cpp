#include "tool/doctor/doctor_run.h"

#include "tool/doctor/doctor_clip.h"
#include "tool/doctor/doctor_dumps.h"
#include "tool/doctor/doctor_search.h"
#include "tool/shared/base/interruption.h"
#include "tool/shared/base/number_text.h"
#include "tool/shared/base/tool_error.h"
#include "tool/shared/base/tool_platform.h"
#include "tool/shared/logs/log_files.h"
#include "tool/shared/run/doctor_platform.h"

namespace simhost::tool {
namespace {

class Told {
 public:
    explicit Told(const std::function<void(const Check&)>& tell) : m_tell(tell) {}

    void add(const Check& check) { m_tell(check); }
    void add(const std::vector<Check>& checks) {
        for (const Check& check : checks) {
            add(check);
        }
    }

 private:
    const std::function<void(const Check&)>& m_tell;
};

Check checkNewestLog() {
    // A log of hours is long, and what is wrong now stands at its end.
    constexpr std::uint64_t kMostBytes = std::uint64_t{4} << 20;
    const std::string path = newestLog();
    LogSummary summary;
    const auto read =
        path.empty() ? LogPart::kNone
                     : readLogEnd(path, kMostBytes, [&summary](const LogItem& item) { summary.add(item); });
    if (read == LogPart::kNone) {
        return {CheckState::kGood, "newest log", "none so far", ""};
    }
    const std::string where = path + (read == LogPart::kEnd ? ", its end" : "");
    if (summary.failures == 0) {
        return {CheckState::kGood, "newest log", where + ", without failures", ""};
    }
    return {CheckState::kWarning, "newest log",
            where + ": " + counted(summary.failures, "failure", "failures") +
                ", the first: " + firstLine(summary.firstFailure->what),
            "\"importer_host log --failures\" explains them"};
}

// One after the other: what is wrong with one says nothing of the next.
void tryClips(const HostedRun& hosted, const std::vector<std::string>& clips, Told& findings) {
    for (const std::string& clip : clips) {
        throwIfInterrupted();
        std::vector<Check> checks = checkClip(hosted, clip);
        for (Check& check : checks) {
            check.name = clips.size() > 1 ? clip + ": " + check.name : check.name;
        }
        findings.add(checks);
    }
}

// Loads the plug-in as the host would, and opens the clips through it.
void tryPlugin(const GlobalOptions& global, const std::string& plugin, const std::vector<std::string>& clips,
               Told& findings) {
    if (!isFile(plugin)) {
        findings.add({CheckState::kBad, "loading", "there is no plug-in to try",
                      "install it, or name one with --plugin"});
        return;
    }
    GlobalOptions options = global;
    options.plugin = plugin;
    try {
        HostedRun hosted(options);
        findings.add({CheckState::kGood, "loading", plugin + " loads and has its entry point", ""});
        hosted.requireStart();
        findings.add({CheckState::kGood, "start", "the plug-in is ready", ""});
        tryClips(hosted, clips, findings);
        if (hosted.finish(kSuccess) != kSuccess) {
            findings.add(
                {CheckState::kBad, "end", "the plug-in broke a rule of the host", "please report it"});
        }
        for (const std::string& log : hosted.newLogs()) {
            findings.add({CheckState::kGood, "log of this run", log, ""});
        }
    } catch (const ToolError& error) {
        if (error.code() == kInterrupted) {
            throw;
        }
        findings.add({CheckState::kBad, "loading", error.what(), error.advice()});
    }
}

}  // namespace

void examine(const GlobalOptions& global, const DoctorQuestion& question,
             const std::function<void(const Versions&)>& tellVersions,
             const std::function<void(const Check&)>& tell) {
    Told findings(tell);
    const std::vector<PluginFolder> folders = findPluginFolders(question.folders);
    const std::vector<LibraryFile> copies = findCopies(folders);
    const std::string plugin = !global.plugin.empty() ? global.plugin
                               : copies.empty()       ? joinedPath(executableFolder(), kPluginFileName)
                                                      : copies.front().path;
    GlobalOptions hosts = global;
    hosts.useStandin = false;
    tellVersions(versionsOf(hosts, plugin));
    findings.add(checkFolders(folders));
    findings.add(checkCopies(copies, folders, ORVANTIS_VERSION));
    const CodecSearch codecs = findCodecs(global.codecFolder);
    findings.add(checkCodec(codecs));
    findings.add(checkCodecBeside(findCodecsBeside(copies), !codecs.found.empty()));
    findings.add(checkLogSwitch(logSetting()));
    findings.add(checkNewestLog());
    findings.add(checkDumps(findDumps()));
    tryPlugin(hosts, plugin, question.clips, findings);
}

}  // namespace simhost::tool
