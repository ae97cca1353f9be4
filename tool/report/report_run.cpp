#include "tool/report/report_run.h"

#include <cstdio>

#include "tool/report/report_maker.h"
#include "tool/shared/base/failure.h"
#include "tool/shared/base/progress.h"
#include "tool/shared/base/tool_platform.h"
#include "tool/shared/run/clip_errors.h"
#include "tool/shared/run/versions.h"

namespace simhost::tool {
namespace {

// Without the log, which would have a line for every chunk of the file: hours of sound have millions.
void hearSounds(const GlobalOptions& global, Progress& progress, Report& report) {
    GlobalOptions quiet = global;
    quiet.log = quiet.runLog = false;
    HostedRun hosted(quiet);
    try {
        hosted.requireStart();
        addSounds(hosted, progress, report);
    } catch (const ToolError& error) {
        if (error.code() == kInterrupted) {
            throw;
        }
        return;  // the run for the pictures meets it too, and tells it
    }
}

std::vector<Fact> madeWith(const GlobalOptions& global, const HostedRun& hosted) {
    const Versions versions = versionsOf(global, hosted.pluginPath());
    const std::string codec = versions.codecPath.empty() ? "" : ", " + versions.codecPath;
    return {{"Tool", "importer_host " + versions.tool},
            {"Plug-in", versions.plugin + ", " + versions.pluginPath},
            {"Codec library", versions.codec + codec},
            {"System", versions.system},
            {"Host profile", versions.profile}};
}

}  // namespace

MadeReport makeReport(const std::string& file, const GlobalOptions& global, const ReportWish& wish) {
    MadeReport out;
    requireClipFile(file);
    out.report = reportOnFile(file);
    Report& report = out.report;
    GlobalOptions logged = global;
    logged.runLog = wish.log;
    report.logged = logged.log || logged.runLog;
    std::optional<Progress> progress;
    progress.emplace(global.progress || stderrIsTerminal(), "report", stepsOf(report, wish.frames));
    if (report.logged) {
        hearSounds(global, *progress, report);
    }
    HostedRun hosted(logged);
    const std::vector<Fact> versions = madeWith(global, hosted);
    report.made.insert(report.made.end(), versions.begin(), versions.end());
    try {
        hosted.requireStart();
        addPictures(hosted, wish.frames, *progress, report);
        if (report.logged) {
            repeatSounds(hosted, report);
        } else {
            addSounds(hosted, *progress, report);
        }
    } catch (const ToolError& error) {
        if (error.code() == kInterrupted) {
            throw;
        }
        report.failure = error.what();
        if (!report.failure.starts_with("the plug-in ")) {
            report.failure = "the plug-in refuses the file: " + report.failure;
        }
        out.result = tellFailure(error, false);
        out.failure = error;
    }
    progress.reset();
    out.result = hosted.finish(out.result);
    const std::string log = addLog(hosted.newLogs(), report);
    if (global.log && !log.empty()) {
        (void)std::fprintf(stderr, "log: %s\n", log.c_str());
    }
    return out;
}

}  // namespace simhost::tool
