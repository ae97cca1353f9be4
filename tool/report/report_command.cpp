// report: everything about one file on one HTML page, with the diagnostic log of the run that made it.
#include <CLI/CLI.hpp>
#include <cstdio>
#include <filesystem>
#include <memory>
#include <string>
#include <system_error>

#include "tool/commands.h"
#include "tool/report/report_maker.h"
#include "tool/shared/base/doctor_platform.h"
#include "tool/shared/base/hosted_run.h"
#include "tool/shared/base/output_file.h"
#include "tool/shared/base/tool_error.h"

namespace simhost::tool {
namespace {

struct ReportOptions {
    std::string file;
    std::string folder;
    std::uint32_t frames = 24;
    bool noLog = false;
};

// The log is on the page now. It is kept for those who asked for it, or who have it on anyway.
void clearAway(const std::string& log, bool wanted) {
    if (wanted) {
        (void)std::fprintf(stderr, "log: %s\n", log.c_str());
    } else if (logSetting() == LogSetting::kOff) {
        // With the plug-in's two folders, if nothing else is in them: it has made them for this log.
        std::error_code error;
        std::filesystem::path path = pathFromUtf8(log);
        for (int level = 0; level < 3 && !error; ++level, path = path.parent_path()) {
            std::filesystem::remove(path, error);
        }
    }
}

int runReport(const GlobalOptions& global, const ReportOptions& options) {
    Report report = reportOnFile(options.file);
    makeFolder(options.folder);
    GlobalOptions logged = global;
    logged.log = !options.noLog;
    HostedRun hosted(logged);
    report.made = "Made by importer_host " ORVANTIS_VERSION " with " + hosted.pluginPath();
    int result = kSuccess;
    try {
        hosted.requireStart();
        addPluginsPart(hosted, options.frames, report);
    } catch (const ToolError& error) {
        report.failure = error.what();
        (void)std::fprintf(stderr, "importer_host: %s\n", error.what());
        result = error.code();
    }
    result = hosted.finish(result);
    if (const std::string log = addLog(hosted.newLogs(), report); !log.empty()) {
        clearAway(log, global.log);
    }
    const std::string target =
        pathToUtf8(pathFromUtf8(options.folder) / pathFromUtf8(report.fileName + ".html"));
    const std::string page = reportPage(report);
    writeFile(target, {reinterpret_cast<const std::uint8_t*>(page.data()), page.size()});
    std::printf("%s\n", target.c_str());
    return result;
}

}  // namespace

Command addReportCommand(CLI::App& app) {
    auto options = std::make_shared<ReportOptions>();
    CLI::App* parser = app.add_subcommand(
        "report",
        "Write one HTML page about a file: streams, frames, sound, data rate, index, oddities, log");
    parser->add_option("FILE", options->file, "AVI file")->required();
    parser->add_option("--out", options->folder, "Folder for the page")->required();
    parser->add_option("--frames", options->frames, "How many frames to show")
        ->capture_default_str()
        ->check(CLI::Range(0, 200));
    parser->add_flag("--no-log", options->noLog, "Leave the plug-in's log off");
    return {parser, [options](const GlobalOptions& global) { return runReport(global, *options); }};
}

}  // namespace simhost::tool
